#include "model/NotificationHelper.h"
#include "model/ObjectStore.h"

#include <QCoreApplication>

#include <gtest/gtest.h>

using namespace model;

namespace {

const EntityDescription& parentEntity()
{
    static const EntityDescription e(QStringLiteral("Parent"),
                                     {{QStringLiteral("title"), QString()}, {QStringLiteral("mode"), 0}},
                                     {{QStringLiteral("children"), QStringLiteral("parent"), true, DeleteRule::Cascade},
                                      {QStringLiteral("friends"), QStringLiteral("buddy"), true, DeleteRule::Nullify}},
                                     {{QStringLiteral("isSolid"), {QStringLiteral("mode")}},
                                      {QStringLiteral("summary"), {QStringLiteral("isSolid"), QStringLiteral("title")}}});
    return e;
}

const EntityDescription& childEntity()
{
    static const EntityDescription e(QStringLiteral("Child"), {{QStringLiteral("value"), 0.0}},
                                     {{QStringLiteral("parent"), QStringLiteral("children"), false, DeleteRule::Nullify},
                                      {QStringLiteral("buddy"), QStringLiteral("friends"), false, DeleteRule::Nullify}});
    return e;
}

struct Parent : ManagedObject {
    explicit Parent(ObjectStore* s) : ManagedObject(s, parentEntity()) {}
};
struct Child : ManagedObject {
    explicit Child(ObjectStore* s) : ManagedObject(s, childEntity()) {}
};

struct ChangeLog {
    QList<ManagedObject*> inserted, updated, deleted;
    int announcements = 0;
};

ChangeLog& listen(ObjectStore& store, ChangeLog& log)
{
    QObject::connect(&store, &ObjectStore::objectsDidChange,
                     [&log](const QList<ManagedObject*>& i, const QList<ManagedObject*>& u, const QList<ManagedObject*>& d) {
                         log.inserted = i;
                         log.updated = u;
                         log.deleted = d;
                         ++log.announcements;
                     });
    return log;
}

}  // namespace

TEST(UndoManager, GroupsNestAndUndoRunsNewestFirst)
{
    UndoManager undo;
    undo.setGroupsByEvent(false);
    QStringList trace;
    {
        UndoGroup outer(undo, QStringLiteral("Move"));
        undo.registerUndo([&] { trace << QStringLiteral("a"); });
        {
            UndoGroup inner(undo);
            undo.registerUndo([&] { trace << QStringLiteral("b"); });
        }
        EXPECT_EQ(undo.groupingLevel(), 1);
        undo.registerUndo([&] { trace << QStringLiteral("c"); });
    }
    EXPECT_EQ(undo.undoCount(), 1u) << "a nested group is part of its parent";
    EXPECT_EQ(undo.undoActionName(), QStringLiteral("Move"));
    undo.undo();
    EXPECT_EQ(trace, (QStringList{QStringLiteral("c"), QStringLiteral("b"), QStringLiteral("a")}));
    EXPECT_FALSE(undo.canUndo());
}

TEST(UndoManager, RedoReplaysWhatUndoRegisteredAndNewWorkClearsIt)
{
    UndoManager undo;
    undo.setGroupsByEvent(false);
    int value = 0;
    std::function<void(int)> set = [&](int v) {
        const int old = value;
        value = v;
        undo.registerUndo([&set, old] { set(old); });
    };
    set(5);
    set(7);
    undo.undo();
    EXPECT_EQ(value, 5);
    undo.undo();
    EXPECT_EQ(value, 0);
    EXPECT_TRUE(undo.canRedo());
    undo.redo();
    EXPECT_EQ(value, 5);
    EXPECT_TRUE(undo.canUndo());
    set(9);
    EXPECT_FALSE(undo.canRedo()) << "new work drops the redo steps";
    undo.undo();
    EXPECT_EQ(value, 5);
}

TEST(UndoManager, DisabledRegistrationAndEmptyGroupsLeaveNoSteps)
{
    UndoManager undo;
    undo.setGroupsByEvent(false);
    {
        UndoRegistrationPause pause(undo);
        undo.registerUndo([] {});
    }
    { UndoGroup empty(undo); }
    EXPECT_FALSE(undo.canUndo());
}

TEST(UndoManager, EverythingOneEventDoesIsOneStep)
{
    UndoManager undo;
    int value = 0;
    for (int i = 1; i <= 3; ++i) {
        const int old = value;
        value = i;
        undo.registerUndo([&value, old] { value = old; });
    }
    QCoreApplication::processEvents();  // the event ends: the automatic group closes
    const int old = value;
    value = 10;
    undo.registerUndo([&value, old] { value = old; });
    QCoreApplication::processEvents();
    EXPECT_EQ(undo.undoCount(), 2u);
    undo.undo();
    EXPECT_EQ(value, 3);
    undo.undo();
    EXPECT_EQ(value, 0);
}

TEST(ObjectStore, StoredWritesAreUndoableAndNoOpsAreNotRecorded)
{
    ObjectStore store;
    store.undoManager().setGroupsByEvent(false);
    auto* p = store.insertNewObject<Parent>();
    store.undoManager().removeAllActions();
    p->setStoredValue(QStringLiteral("title"), QStringLiteral("Logo"));
    p->setStoredValue(QStringLiteral("title"), QStringLiteral("Logo"));
    EXPECT_EQ(store.undoManager().undoCount(), 1u) << "a write of the same value is no change";
    p->setStoredValue(QStringLiteral("title"), QStringLiteral("Ticker"));
    store.undoManager().undo();
    EXPECT_EQ(p->storedValue(QStringLiteral("title")).toString(), QStringLiteral("Logo"));
    store.undoManager().redo();
    EXPECT_EQ(p->storedValue(QStringLiteral("title")).toString(), QStringLiteral("Ticker"));
}

TEST(ObjectStore, RelationshipsKeepTheirInverses)
{
    ObjectStore store;
    auto* a = store.insertNewObject<Parent>();
    auto* b = store.insertNewObject<Parent>();
    auto* c = store.insertNewObject<Child>();
    c->setToOne(QStringLiteral("parent"), a);
    EXPECT_EQ(a->toMany(QStringLiteral("children")), std::vector<ManagedObject*>{c});
    b->addToMany(QStringLiteral("children"), c);
    EXPECT_TRUE(a->toMany(QStringLiteral("children")).empty()) << "moving a child removes it from its old owner";
    EXPECT_EQ(c->toOne(QStringLiteral("parent")), b);
    c->setToOne(QStringLiteral("parent"), nullptr);
    EXPECT_TRUE(b->toMany(QStringLiteral("children")).empty());
}

TEST(ObjectStore, DeleteCascadesNullifiesAndUndoRestoresEverything)
{
    ObjectStore store;
    store.undoManager().setGroupsByEvent(false);
    ChangeLog log;
    listen(store, log);
    auto* p = store.insertNewObject<Parent>();
    auto* other = store.insertNewObject<Parent>();
    auto* c1 = store.insertNewObject<Child>();
    auto* c2 = store.insertNewObject<Child>();
    auto* buddy = store.insertNewObject<Child>();
    p->addToMany(QStringLiteral("children"), c1);
    p->addToMany(QStringLiteral("children"), c2);
    buddy->setToOne(QStringLiteral("buddy"), p);
    c1->setToOne(QStringLiteral("buddy"), other);
    store.processPendingChanges();
    EXPECT_EQ(log.inserted.size(), 5);
    store.undoManager().removeAllActions();

    QPointer<ManagedObject> watched(c1);
    {
        UndoGroup group(store.undoManager());
        store.deleteObject(p);
    }
    store.processPendingChanges();
    EXPECT_EQ(log.deleted.size(), 3) << "the parent and the two children it owns";
    EXPECT_TRUE(watched) << "deleted objects live on in the undo record";
    EXPECT_TRUE(c1->isDeleted());
    EXPECT_EQ(buddy->toOne(QStringLiteral("buddy")), nullptr) << "a nullify rule forgets the deleted object";
    EXPECT_TRUE(other->toMany(QStringLiteral("friends")).empty());
    EXPECT_EQ(store.objectsOfEntity(QStringLiteral("Child")).size(), 1u);

    store.undoManager().undo();
    store.processPendingChanges();
    EXPECT_EQ(log.inserted.size(), 3);
    EXPECT_FALSE(p->isDeleted());
    EXPECT_EQ(p->toMany(QStringLiteral("children")), (std::vector<ManagedObject*>{c1, c2})) << "order is restored";
    EXPECT_EQ(buddy->toOne(QStringLiteral("buddy")), p);
    EXPECT_EQ(c1->toOne(QStringLiteral("buddy")), other);

    store.undoManager().redo();
    store.processPendingChanges();
    EXPECT_TRUE(p->isDeleted());
    store.undoManager().removeAllActions();
    EXPECT_FALSE(watched) << "dropping the undo record frees what it owned";
}

TEST(ObjectStore, InsertThenDeleteBeforeAnnouncingIsNoChange)
{
    ObjectStore store;
    ChangeLog log;
    listen(store, log);
    auto* p = store.insertNewObject<Parent>();
    store.deleteObject(p);
    store.processPendingChanges();
    EXPECT_EQ(log.announcements, 0);
}

TEST(ObjectStore, DerivedKeysAreAnnouncedThroughTheirDependencies)
{
    ObjectStore store;
    auto* p = store.insertNewObject<Parent>();
    QStringList heard;
    p->observe(QStringLiteral("summary"), [&](ManagedObject*, const QString& key) { heard << key; });
    const ObservationToken solid =
        p->observe(QStringLiteral("isSolid"), [&](ManagedObject*, const QString& key) { heard << key; });
    p->setStoredValue(QStringLiteral("mode"), 1);
    EXPECT_EQ(heard, (QStringList{QStringLiteral("isSolid"), QStringLiteral("summary")}));
    heard.clear();
    p->removeObservation(solid);
    p->setStoredValue(QStringLiteral("title"), QStringLiteral("x"));
    EXPECT_EQ(heard, QStringList{QStringLiteral("summary")});
}

TEST(NotificationHelper, AddsOnceAndRemovesSafely)
{
    ObjectStore store;
    auto* p = store.insertNewObject<Parent>();
    int calls = 0;
    int observer = 0;
    NotificationHelper::addObserver(&observer, p, QStringLiteral("title"), [&](ManagedObject*, const QString&) { ++calls; });
    NotificationHelper::addObserver(&observer, p, QStringLiteral("title"), [&](ManagedObject*, const QString&) { ++calls; });
    p->setStoredValue(QStringLiteral("title"), QStringLiteral("a"));
    EXPECT_EQ(calls, 1) << "the second identical registration is ignored";
    NotificationHelper::removeObserver(&observer, p, QStringLiteral("mode"));  // never added: nothing happens
    NotificationHelper::removeObserver(&observer);
    NotificationHelper::removeObserver(&observer);
    p->setStoredValue(QStringLiteral("title"), QStringLiteral("b"));
    EXPECT_EQ(calls, 1);
    EXPECT_FALSE(NotificationHelper::isObserving(&observer, p, QStringLiteral("title")));
}
