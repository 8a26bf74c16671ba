#include "ModelFixture.h"

#include "model/VideoResolution.h"

#include "model/Ruler.h"
#include "model/PathUtilities.h"
#include "model/StopFrame.h"

#include <QFile>
#include <QTemporaryDir>
#include <QUrl>

#include <QCoreApplication>
#include <QElapsedTimer>

using namespace model;

class CompositionTest : public ModelFixture {
protected:
    std::vector<quint32> levels(const std::vector<QuartzComponent*>& components)
    {
        std::vector<quint32> result;
        for (auto* c : components) result.push_back(c->zLevel());
        return result;
    }
};

TEST_F(CompositionTest, NewCompositionsTakeTheDefaults)
{
    EXPECT_EQ(composition->broadcastMode(), QStringLiteral("1080i25 RGBA"));
    EXPECT_EQ(composition->width(), 1920);
    EXPECT_EQ(composition->height(), 1080);
    EXPECT_EQ(composition->ticksPerSecond(), 25u);
    EXPECT_EQ(composition->posterFrameMode(), 1);
    EXPECT_TRUE(composition->solidColorBackgroundMode() == (composition->backgroundMode() == 1));
}

TEST_F(CompositionTest, PlayheadIsClampedAndSnapped)
{
    composition->setDuration(10);
    composition->setEditorTimepoint(-1);
    EXPECT_EQ(composition->editorTimepoint(), 0.0);
    composition->setEditorTimepoint(20);
    EXPECT_EQ(composition->editorTimepoint(), 10.0);
    composition->setEditorTimepointForNearestTick(1.03);
    EXPECT_DOUBLE_EQ(composition->editorTimepoint(), 1.04);
    composition->setEditorTimepointForNearestTick(1.01);
    EXPECT_DOUBLE_EQ(composition->editorTimepoint(), 1.0);
    double t = 1.0;
    EXPECT_FALSE(composition->validateEditorTimepoint(t)) << "the current playhead would not move";
    t = 11;
    EXPECT_TRUE(composition->validateEditorTimepoint(t));
    EXPECT_EQ(t, 10.0);
}

TEST_F(CompositionTest, TimesCompareToTheHundredth)
{
    EXPECT_EQ(Composition::compareTimeInterval(1.001, 1.004), 0);
    EXPECT_EQ(Composition::compareTimeInterval(1.004, 1.006), -1);
    EXPECT_EQ(Composition::compareTimeInterval(2.0, 1.5f), 1);
}

TEST_F(CompositionTest, AddingStacksOnTopAndSelects)
{
    QuartzComponent* a = addComponent(QStringLiteral("A"));
    QuartzComponent* b = addComponent(QStringLiteral("B"));
    EXPECT_EQ(a->zLevel(), 0u);
    EXPECT_EQ(b->zLevel(), 1u);
    EXPECT_EQ(composition->selectedComponents(), std::vector<QuartzComponent*>{b});
    EXPECT_EQ(composition->componentsSortedByInverseZLevel().front(), b);
}

TEST_F(CompositionTest, MovingByLevelClampsAndRenumbers)
{
    std::vector<QuartzComponent*> c;
    for (const char* name : {"A", "B", "C", "D"}) c.push_back(addComponent(QString::fromLatin1(name)));
    composition->moveComponentsByLevel({c[0]}, -5);
    EXPECT_EQ(c[0]->zLevel(), 0u);
    composition->moveComponentsByLevel({c[0]}, 100);
    EXPECT_EQ(c[0]->zLevel(), 3u);
    EXPECT_EQ(levels(composition->componentsSortedByZLevel()), (std::vector<quint32>{0, 1, 2, 3}));
}

TEST_F(CompositionTest, BringToFrontKeepsTheSelectionAsABlock)
{
    std::vector<QuartzComponent*> c;
    for (const char* name : {"A", "B", "C", "D"}) c.push_back(addComponent(QString::fromLatin1(name)));
    composition->clearSelection();
    c[0]->setSelected(true);
    c[2]->setSelected(true);
    composition->bringSelectionToFront();
    EXPECT_EQ(c[1]->zLevel(), 0u);
    EXPECT_EQ(c[3]->zLevel(), 1u);
    EXPECT_EQ(c[0]->zLevel(), 2u);
    EXPECT_EQ(c[2]->zLevel(), 3u);
    composition->sendSelectionToBack();
    EXPECT_EQ(c[0]->zLevel(), 0u);
    EXPECT_EQ(c[2]->zLevel(), 1u);
}

TEST_F(CompositionTest, SwapNeedsExactlyTwo)
{
    QuartzComponent* a = addComponent(QStringLiteral("A"));
    QuartzComponent* b = addComponent(QStringLiteral("B"));
    EXPECT_FALSE(composition->swapSelected());
    a->setSelected(true);
    EXPECT_TRUE(composition->swapSelected());
    EXPECT_EQ(a->zLevel(), 1u);
    EXPECT_EQ(b->zLevel(), 0u);
}

TEST_F(CompositionTest, SoloTogglesAndSelectionIndexesFollow)
{
    QuartzComponent* a = addComponent(QStringLiteral("A"));
    QuartzComponent* b = addComponent(QStringLiteral("B"));
    composition->soloSelectedComponents();
    EXPECT_FALSE(a->visibleInCompositionEditor());
    EXPECT_TRUE(b->visibleInCompositionEditor());
    composition->soloSelectedComponents();
    EXPECT_TRUE(a->visibleInCompositionEditor()) << "soloing twice shows everything";

    EXPECT_EQ(composition->selectionIndexPaths(), QList<int>{0});
    composition->setSelectionIndexPaths({1});
    EXPECT_TRUE(a->selected());
    EXPECT_FALSE(b->selected());
    EXPECT_EQ(composition->selectedComponentsIndexesSortedByZLevel(), QList<int>{1});

    QStringList heard;
    composition->observe(QStringLiteral("validSelection"), [&](ManagedObject*, const QString& k) { heard << k; });
    composition->clearSelection();
    EXPECT_FALSE(heard.isEmpty());
    EXPECT_FALSE(composition->validSelection());
}

TEST_F(CompositionTest, RemovingKeepsGapsUntilTheNextReorderAndUndoes)
{
    QuartzComponent* a = addComponent(QStringLiteral("A"));
    QuartzComponent* b = addComponent(QStringLiteral("B"));
    QuartzComponent* c = addComponent(QStringLiteral("C"));
    store.undoManager().removeAllActions();
    composition->removeComponents({b});
    EXPECT_EQ(levels(composition->componentsSortedByZLevel()), (std::vector<quint32>{0, 2}));
    EXPECT_EQ(store.undoManager().undoCount(), 1u);
    store.undoManager().undo();
    EXPECT_EQ(composition->componentArray().size(), 3u);
    EXPECT_EQ(b->composition(), composition);
    EXPECT_NE(b->attributeForKey(QStringLiteral("originX")), nullptr) << "its attributes come back too";
    (void)a;
    (void)c;
}

TEST_F(CompositionTest, StopFramesAndRulers)
{
    composition->addStopFrame(3.0, QStringLiteral("Intro"));
    composition->addStopFrame(1.5);
    EXPECT_EQ(composition->stopFrameTimepoints(), (std::vector<double>{1.5, 3.0}));
    const QVariantList dictionaries = composition->stopFrameDictionaries();
    ASSERT_EQ(dictionaries.size(), 2);
    EXPECT_EQ(dictionaries[0].toMap().value(QStringLiteral("name")).toString(), QStringLiteral("Stopframe"));
    EXPECT_EQ(dictionaries[1].toMap().value(QStringLiteral("name")).toString(), QStringLiteral("Intro"));
    EXPECT_TRUE(composition->stopFrames()[1]->isTimepoint(1.504));
    EXPECT_FALSE(composition->stopFrames()[1]->isTimepoint(1.506));

    composition->setShowsRulers(false);
    Ruler* ruler = composition->addRulerAtPosition(120.6, true);
    EXPECT_TRUE(composition->showsRulers());
    EXPECT_EQ(ruler->position(), 121.0);
    composition->removeRuler(ruler);
    EXPECT_TRUE(composition->rulers().empty());

    const QVariantMap info = composition->compositionInfo();
    EXPECT_EQ(info.value(QStringLiteral("width")).toInt(), 1920);
    const QVariantList stops = info.value(QStringLiteral("stopframes")).toList();
    ASSERT_EQ(stops.size(), 2);
    EXPECT_FALSE(stops[1].toMap().contains(QStringLiteral("title"))) << "a stop frame without a name has no title";
}

TEST_F(CompositionTest, PosterFrameMode)
{
    composition->setPosterFrameMode(1);
    EXPECT_EQ(composition->posterFrameTimepoint(), -1.0);
    EXPECT_EQ(composition->posterFrameMode(), 1);
    composition->setEditorTimepoint(3.5);
    composition->setPosterFrameMode(0);
    EXPECT_EQ(composition->posterFrameTimepoint(), 3.5);
    EXPECT_EQ(composition->posterFrameMode(), 0);
}

TEST_F(CompositionTest, AnUnknownModeNameIsNotKept)
{
    composition->setBroadcastMode(QStringLiteral("1080p24 Mystery"));
    composition->setVideoResolution(VideoResolution(composition->broadcastMode()));
    EXPECT_TRUE(composition->broadcastMode().isEmpty());
    EXPECT_EQ(composition->width(), 0);
    composition->setVideoResolution(VideoResolution(QStringLiteral("HD 1080i25")));
    EXPECT_EQ(composition->broadcastMode(), QStringLiteral("1080i25 RGBA")) << "an old name is rewritten with the current one";
}

TEST_F(CompositionTest, PlaybackStopsAtTheEndAndReturnsToZero)
{
    composition->setDuration(0.2);
    composition->setPlayMode(1);
    QElapsedTimer timer;
    timer.start();
    while (composition->playMode() != 0 && timer.elapsed() < 3000) QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
    // The step that sees the stop snaps to the nearest tick.
    for (int i = 0; i < 10; ++i) QCoreApplication::processEvents(QEventLoop::AllEvents, 30);
    EXPECT_EQ(composition->playMode(), 0);
    EXPECT_EQ(composition->editorTimepoint(), 0.0);
}

TEST(PathRelativeTo, FollowsTheDocumentsFolder)
{
    EXPECT_EQ(model::pathRelativeTo(QStringLiteral("/a/c/img.png"), QStringLiteral("/a/b/doc")), QStringLiteral("../c/img.png"));
    EXPECT_EQ(model::pathRelativeTo(QStringLiteral("/Volumes/X/f.png"), QStringLiteral("/Volumes/Y/doc")), QStringLiteral("/Volumes/X/f.png"));
    EXPECT_EQ(model::pathRelativeTo(QStringLiteral("/Volumes/X/f.png"), QStringLiteral("/Users/u/doc")), QStringLiteral("../../Volumes/X/f.png"));
    EXPECT_EQ(model::pathRelativeTo(QStringLiteral("rel/f.png"), QStringLiteral("/a/doc")), QStringLiteral("rel/f.png"));
    EXPECT_EQ(model::pathRelativeTo(QStringLiteral("/a/f.png"), QStringLiteral("relative/doc")), QStringLiteral("/a/f.png"));
    EXPECT_EQ(model::pathRelativeTo(QStringLiteral("/a/b/f.png"), QStringLiteral("/a/b/doc.composition")), QStringLiteral("f.png"));
}

TEST_F(CompositionTest, MaintenanceCommandsNeedASavedDocument)
{
    QuartzComponent* c = addComponent(QStringLiteral("Logo"));
    QTemporaryDir dir;
    const QString image = dir.filePath(QStringLiteral("logo.png"));
    QFile(image).open(QIODevice::WriteOnly);
    addAttribute(c, QStringLiteral("Logo_File"), kTypeFilePath, image);
    addAttribute(c, QStringLiteral("Folder_File"), kTypeFilePath, dir.path());
    EXPECT_TRUE(composition->makePathsRelative().isEmpty());
    EXPECT_TRUE(composition->embedResources().isEmpty());
    EXPECT_EQ(c->valueForKey(QStringLiteral("Logo_File")).toString(), image) << "a never-saved document changes nothing";

    composition->setFileURL(QUrl::fromLocalFile(dir.filePath(QStringLiteral("out/Template.composition"))));
    const QList<QVariantMap> copies = composition->embedResources();
    ASSERT_EQ(copies.size(), 1) << "folders are skipped";
    EXPECT_EQ(copies[0].value(QStringLiteral("dest")).toString(), dir.filePath(QStringLiteral("out/logo.png")));
    EXPECT_EQ(c->valueForKey(QStringLiteral("Logo_File")).toString(), QStringLiteral("logo.png"));

    c->setValueForKey(QStringLiteral("Logo_File"), image);
    const QStringList old = composition->makePathsRelative();
    EXPECT_EQ(old.size(), 2);
    EXPECT_EQ(c->valueForKey(QStringLiteral("Logo_File")).toString(), QStringLiteral("../logo.png"));
}
