// The crash journal: records of what each step changed, replayed on the
// state as last saved, give back the state before the crash exactly; a torn
// or damaged end is dropped, never applied in part.

#include "ModelFixture.h"

#include "model/StopFrame.h"
#include "model/StoreFile.h"
#include "model/StoreJournal.h"

#include <QCoreApplication>
#include <QFile>
#include <QTemporaryDir>

using namespace model;

class StoreJournalTest : public ModelFixture {
protected:
    StoreJournalTest()
    {
        addComponent(QStringLiteral("Name strap"), QRectF(100, 100, 600, 120));
        addComponent(QStringLiteral("Logo"), QRectF(1600, 900, 200, 100));
        store.processPendingChanges();
        saved = StoreFile::write(store);
        recorder = std::make_unique<JournalRecorder>(store);
        QObject::connect(recorder.get(), &JournalRecorder::recordReady, [this](const QByteArray& r) { records.append(r); });
    }

    // What a crash would leave: the saved state with the records replayed.
    QByteArray recovered(int count = -1)
    {
        LoadedStore base = StoreFile::read(saved);
        EXPECT_TRUE(base) << base.error.toStdString();
        for (int i = 0; i < (count < 0 ? records.size() : count); ++i) {
            QString error;
            EXPECT_TRUE(replayJournalRecord(*base.store, records[i], &error)) << error.toStdString();
        }
        return StoreFile::write(*base.store);
    }
    void step() { QCoreApplication::processEvents(); }
    QByteArray now()
    {
        store.processPendingChanges();
        return StoreFile::write(store);
    }

    QByteArray saved;
    std::unique_ptr<JournalRecorder> recorder;
    QList<QByteArray> records;
};

TEST_F(StoreJournalTest, ReplayingEveryRecordGivesBackTheStateBeforeTheCrash)
{
    QuartzComponent* strap = composition->componentsSortedByZLevel()[0];
    QuartzComponent* logo = composition->componentsSortedByZLevel()[1];
    std::vector<QByteArray> states{saved};
    auto edit = [&](auto&& change) {
        change();
        step();
        states.push_back(now());
    };
    edit([&] { strap->setTitle(QStringLiteral("Lower third")); });
    edit([&] {
        UndoGroup drag(store.undoManager());
        for (int i = 0; i < 20; ++i) strap->moveBy(3, 1);
    });
    edit([&] { strap->attributeForKey(QStringLiteral("originX"))->addTimepoint(2.0, 400.0f); });
    edit([&] { addComponent(QStringLiteral("Ticker"), QRectF(0, 0, 1920, 80)); });
    edit([&] { composition->addStopFrame(3.5, QStringLiteral("Hold")); });
    edit([&] { composition->removeComponents({logo}); });
    edit([&] { store.undoManager().undo(); });  // the logo comes back
    edit([&] {
        strap->setSelected(true);
        composition->bringSelectionToFront();
    });
    edit([&] { store.undoManager().undo(); });
    edit([&] { store.undoManager().redo(); });
    ASSERT_EQ(records.size(), int(states.size()) - 1) << "one record per step";
    for (int i = 0; i <= records.size(); ++i) EXPECT_EQ(recovered(i), states[size_t(i)]) << "after " << i << " records";
}

TEST_F(StoreJournalTest, AnUndoStepIsOneRecordWrittenWhenItsGroupCloses)
{
    QuartzComponent* strap = composition->componentsSortedByZLevel()[0];
    {
        UndoGroup drag(store.undoManager());
        strap->moveBy(10, 0);
        step();
        EXPECT_TRUE(records.isEmpty()) << "nothing while the gesture goes on";
        strap->moveBy(10, 0);
    }
    step();
    EXPECT_EQ(records.size(), 1);
    EXPECT_EQ(recovered(), now());
}

TEST_F(StoreJournalTest, ASnapshotRecordMakesTheWholeStore)
{
    const QByteArray snapshot = recorder->snapshotRecord();
    ObjectStore empty;
    QString error;
    ASSERT_TRUE(replayJournalRecord(empty, snapshot, &error)) << error.toStdString();
    EXPECT_EQ(StoreFile::write(empty), now());
}

TEST(JournalFile, RecordsComeBackAndATornOrDamagedEndIsDropped)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("a.journal"));
    JournalFile journal;
    QString error;
    ASSERT_TRUE(journal.create(path, QJsonObject{{"document", "/x/Show.composition"}}, &error)) << error.toStdString();
    for (const char* r : {"<step>1</step>", "<step>2</step>", "<step>3</step>"}) ASSERT_TRUE(journal.append(r));
    journal.close();
    JournalFile::Contents contents = JournalFile::read(path);
    EXPECT_EQ(contents.header.value(QLatin1String("document")).toString(), QStringLiteral("/x/Show.composition"));
    EXPECT_EQ(contents.records, (QList<QByteArray>{"<step>1</step>", "<step>2</step>", "<step>3</step>"}));
    EXPECT_TRUE(contents.problem.isEmpty());

    QFile file(path);
    const qint64 whole = file.size();
    ASSERT_TRUE(file.resize(whole - 3));  // torn while writing the last record
    contents = JournalFile::read(path);
    EXPECT_EQ(contents.records.size(), 2);
    EXPECT_TRUE(contents.problem.contains(QLatin1String("cut off")));

    // Appending after a torn end cuts it off first.
    ASSERT_TRUE(journal.openForAppend(path, &error)) << error.toStdString();
    ASSERT_TRUE(journal.append("<step>4</step>"));
    journal.close();
    contents = JournalFile::read(path);
    EXPECT_EQ(contents.records, (QList<QByteArray>{"<step>1</step>", "<step>2</step>", "<step>4</step>"}));

    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    file.seek(file.size() - 5);
    file.write("X");  // a flipped byte in the last record
    file.close();
    contents = JournalFile::read(path);
    EXPECT_EQ(contents.records.size(), 2);
    EXPECT_TRUE(contents.problem.contains(QLatin1String("damaged")));

    QFile junk(dir.filePath(QStringLiteral("junk")));
    ASSERT_TRUE(junk.open(QIODevice::WriteOnly));
    junk.write("hello");
    junk.close();
    EXPECT_FALSE(JournalFile::read(junk.fileName()).problem.isEmpty());
    EXPECT_FALSE(JournalFile::read(dir.filePath(QStringLiteral("none"))).exists);
}
