// The timeline in the document window: it shows the window's document,
// Delete there reaches the document unless keyframes are selected, and a
// document opens with its first animated component expanded.

#include "AppFixture.h"

#include "document/CompositionDocument.h"
#include "model/Attribute.h"
#include "model/Composition.h"
#include "model/ObjectStore.h"
#include "model/QuartzComponent.h"
#include "timeline/TimelinePanel.h"
#include "timeline/VLTimelineScrollView.h"

#include <QTest>

class TimelineWindowTest : public AppFixture {
protected:
    model::Composition* composition() const { return window->document()->composition(); }

    // A component without a file, with one number input, on top.
    model::QuartzComponent* addComponent(const QString& title)
    {
        model::ObjectStore& store = window->document()->store();
        auto* c = store.insertNewObject<model::QuartzComponent>();
        c->setTitle(title);
        model::Attribute* x = model::Attribute::create(&store, QStringLiteral("originX"), QStringLiteral("X"),
                                                       model::kTypeNumber, 0.0f);
        x->setToOne(QStringLiteral("component"), c);
        c->initializeAttributeObservers();
        composition()->addComponent(c);
        return c;
    }

    timeline::VLTimelineView* timelineView() const { return window->timelinePanel()->timelineView(); }
};

TEST_F(TimelineWindowTest, TheTimelineShowsTheWindowsDocument)
{
    EXPECT_EQ(timelineView()->document(), window->document());
    EXPECT_EQ(timelineView()->commands(), window->commands());
    addComponent(QStringLiteral("A"));
    QCoreApplication::processEvents();
    EXPECT_EQ(timelineView()->rows().count(), 1);
}

TEST_F(TimelineWindowTest, DeleteInTheTimelineReachesTheDocumentUnlessKeyframesAreSelected)
{
    window->show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(window));
    model::QuartzComponent* a = addComponent(QStringLiteral("A"));
    model::QuartzComponent* b = addComponent(QStringLiteral("B"));
    model::Attribute* x = b->attributeForKey(QStringLiteral("originX"));
    x->addTimepoint(1, 5.0f);
    x->addTimepoint(2, 6.0f);
    x->setTimePointSelected(2, true);
    window->activateWindow();
    timelineView()->setFocus();
    QCoreApplication::processEvents();

    QTest::keyClick(timelineView(), Qt::Key_Delete);
    EXPECT_EQ(x->keyframes().keys(), QList<float>{1}) << "the selected keyframe is deleted";
    EXPECT_EQ(composition()->componentArray().size(), 2u) << "and no component";

    composition()->clearSelection();
    a->setSelected(true);
    QTest::keyClick(timelineView(), Qt::Key_Delete);
    QCoreApplication::processEvents();
    const auto left = composition()->componentArray();
    ASSERT_EQ(left.size(), 1u) << "with no keyframe selected the window's Delete removes the component";
    EXPECT_EQ(left.front(), b);
}

TEST_F(TimelineWindowTest, AnOpenedDocumentShowsItsFirstAnimatedComponentExpanded)
{
    QString error;
    app::VLWindowController* demo =
        controller.openDocument(QStringLiteral(VELLORAN_SOURCE_DIR "/resources/demo/Demo.composition"), nullptr, &error);
    ASSERT_TRUE(demo) << error.toStdString();
    demo->setCloseQuestion(dontSave);
    std::vector<const model::QuartzComponent*> expanded;
    bool animatedSeen = false;
    for (const model::QuartzComponent* c : demo->document()->composition()->componentsSortedByInverseZLevel()) {
        bool animated = false;
        for (const model::Attribute* a : c->attributes()) animated = animated || (a->animateable() && !a->keyframes().isEmpty());
        EXPECT_EQ(c->expanded(), animated && !animatedSeen) << c->title().toStdString();
        animatedSeen = animatedSeen || animated;
        if (c->expanded()) expanded.push_back(c);
    }
    ASSERT_EQ(expanded.size(), 1u) << "the demo opens one component with keyframes";
    EXPECT_EQ(demo->timelinePanel()->timelineView()->rows().count(),
              int(demo->document()->composition()->componentArray().size() + expanded.front()->children().size()));
}
