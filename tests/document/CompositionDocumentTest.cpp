// Saving, opening, Save As, revert and move of composition packages.

#include "../support/ComponentFiles.h"

#include "document/CompositionDocument.h"
#include "model/Composition.h"
#include "model/QuartzComponent.h"
#include "model/VideoModeCatalogue.h"
#include "model/VideoResolution.h"
#include "plist/PropertyList.h"

#include <QDir>
#include <QFile>
#include <QImage>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using document::CompositionDocument;
using document::SaveOperation;

class CompositionDocumentTest : public ::testing::Test {
protected:
    CompositionDocumentTest()
        : document(CompositionDocument::emptyDocumentWithResolution(model::VideoResolution::defaultVideoResolution()))
    {
        QFile::remove(CompositionDocument::previewPath());
    }

    model::Composition& composition() { return *document->composition(); }

    // A red box at (100, 100), 200 × 100, visible from 0 s.
    model::QuartzComponent* addBox()
    {
        const QString path = testfiles::writeBoxComposition(QDir(dir.path()), QStringLiteral("Box.qtz"), {});
        model::QuartzComponent* c = composition().addComponenWithQuartzCompositionFile(path);
        c->attributeForKey(QStringLiteral("Color"))->setCurrentValue(QColor(Qt::red));
        c->setOriginX(100);
        c->setOriginY(100);
        return c;
    }

    QString package(const QString& name = QStringLiteral("Template.composition")) const { return dir.filePath(name); }

    QTemporaryDir dir;
    std::unique_ptr<CompositionDocument> document;
};

TEST_F(CompositionDocumentTest, ANewDocumentLeavesNoUndoSteps)
{
    EXPECT_FALSE(document->store().undoManager().canUndo());
    EXPECT_TRUE(document->fileURL().isEmpty());
    EXPECT_EQ(composition().broadcastMode(), QStringLiteral("1080i25 RGBA"));
    QString error;
    EXPECT_FALSE(document->save(&error));
    EXPECT_FALSE(error.isEmpty());
}

TEST_F(CompositionDocumentTest, TheFirstSaveWritesTheWholePackage)
{
    addBox();
    composition().addStopFrame(1.0, QStringLiteral("Hold"));
    QString error;
    ASSERT_TRUE(document->saveAs(package(), &error)) << error.toStdString();
    const QDir p(package());
    for (const char* file : {"data.xml", "Composition.qtz", "CompositionInfo.xml", "QuickLook/Thumbnail.jpg"})
        EXPECT_TRUE(p.exists(QLatin1String(file))) << file;
    EXPECT_TRUE(QFile::exists(CompositionDocument::previewPath()));
    EXPECT_EQ(document->fileURL(), package());
    EXPECT_EQ(document->quartzCompositionURL(), p.filePath(QStringLiteral("Composition.qtz")));
    EXPECT_EQ(composition().fileURL().toLocalFile(), document->quartzCompositionURL());

    auto info = plist::readFile(p.filePath(QStringLiteral("CompositionInfo.xml")).toStdString());
    ASSERT_TRUE(info);
    EXPECT_TRUE(info->isDictionary());

    const QImage thumbnail(p.filePath(QStringLiteral("QuickLook/Thumbnail.jpg")));
    EXPECT_EQ(thumbnail.size(), QSize(1920, 1080));
    const QColor box = thumbnail.pixelColor(200, 1080 - 150);
    EXPECT_GT(box.red(), 200);
    EXPECT_LT(box.green(), 60);
}

TEST_F(CompositionDocumentTest, OpeningGivesBackTheSavedModel)
{
    addBox()->setTitle(QStringLiteral("Lower third"));
    composition().setDuration(12);
    ASSERT_TRUE(document->saveAs(package(), nullptr));

    QString error;
    auto reopened = CompositionDocument::open(package(), &error);
    ASSERT_TRUE(reopened) << error.toStdString();
    EXPECT_FALSE(reopened->store().undoManager().canUndo());
    model::Composition* c = reopened->composition();
    ASSERT_TRUE(c);
    EXPECT_EQ(c->duration(), 12);
    ASSERT_EQ(c->componentArray().size(), 1u);
    EXPECT_EQ(c->componentArray().front()->title(), QStringLiteral("Lower third"));
    EXPECT_EQ(c->componentArray().front()->originX(), 100);
    EXPECT_EQ(c->fileURL().toLocalFile(), reopened->quartzCompositionURL());
}

TEST_F(CompositionDocumentTest, SaveAsOntoItselfWritesNothing)
{
    ASSERT_TRUE(document->saveAs(package(), nullptr));
    QFile::remove(QDir(package()).filePath(QStringLiteral("Composition.qtz")));
    EXPECT_TRUE(document->writeSafelyToURL(package(), SaveOperation::SaveAs, nullptr));
    EXPECT_FALSE(QDir(package()).exists(QStringLiteral("Composition.qtz")));
    // A plain save writes again.
    EXPECT_TRUE(document->save(nullptr));
    EXPECT_TRUE(QDir(package()).exists(QStringLiteral("Composition.qtz")));
}

TEST_F(CompositionDocumentTest, SaveAsElsewhereLeavesTheOldPackageAlone)
{
    composition().setDuration(8);
    ASSERT_TRUE(document->saveAs(package(), nullptr));
    composition().setDuration(20);
    ASSERT_TRUE(document->saveAs(package(QStringLiteral("Copy.composition")), nullptr));
    EXPECT_EQ(CompositionDocument::open(package(), nullptr)->composition()->duration(), 8);
    EXPECT_EQ(CompositionDocument::open(package(QStringLiteral("Copy.composition")), nullptr)->composition()->duration(), 20);
    // Later saves go to the new package.
    composition().setDuration(30);
    ASSERT_TRUE(document->save(nullptr));
    EXPECT_EQ(CompositionDocument::open(package(QStringLiteral("Copy.composition")), nullptr)->composition()->duration(), 30);
    EXPECT_EQ(CompositionDocument::open(package(), nullptr)->composition()->duration(), 8);
}

TEST_F(CompositionDocumentTest, RevertReadsThePackageAgain)
{
    composition().setDuration(8);
    ASSERT_TRUE(document->saveAs(package(), nullptr));
    composition().setDuration(99);
    ASSERT_TRUE(document->revertToContentsOfURL(package(), nullptr));
    EXPECT_EQ(document->composition()->duration(), 8);
    EXPECT_FALSE(document->store().undoManager().canUndo());
}

TEST_F(CompositionDocumentTest, MovingKeepsTheStoreWithThePackage)
{
    ASSERT_TRUE(document->saveAs(package(), nullptr));
    const QString moved = package(QStringLiteral("Renamed.composition"));
    ASSERT_TRUE(QDir().rename(package(), moved));
    document->setFileURL(moved);
    EXPECT_EQ(document->storePath(), QDir(moved).filePath(QStringLiteral("data.xml")));
    EXPECT_EQ(composition().fileURL().toLocalFile(), QDir(moved).filePath(QStringLiteral("Composition.qtz")));
    composition().setDuration(15);
    ASSERT_TRUE(document->save(nullptr));
    EXPECT_FALSE(QDir(package()).exists());
    EXPECT_EQ(CompositionDocument::open(moved, nullptr)->composition()->duration(), 15);
}

TEST_F(CompositionDocumentTest, BadPackagesGiveAClearErrorAndChangeNothing)
{
    QString error;
    EXPECT_FALSE(CompositionDocument::open(dir.filePath(QStringLiteral("missing.composition")), &error));
    EXPECT_TRUE(error.contains(QStringLiteral("data.xml"))) << error.toStdString();

    ASSERT_TRUE(document->saveAs(package(), nullptr));
    QFile store(QDir(package()).filePath(QStringLiteral("data.xml")));
    ASSERT_TRUE(store.open(QIODevice::WriteOnly));
    store.write("<store version=\"1\"><object");
    store.close();
    error.clear();
    EXPECT_FALSE(CompositionDocument::open(package(), &error));
    EXPECT_FALSE(error.isEmpty());
    // A revert that cannot read keeps the document as it is.
    composition().setDuration(42);
    EXPECT_FALSE(document->revertToContentsOfURL(package(), nullptr));
    EXPECT_EQ(document->composition()->duration(), 42);
}

TEST_F(CompositionDocumentTest, AReadOnlyFolderFailsTheSaveAndKeepsTheModel)
{
    const QString locked = dir.filePath(QStringLiteral("locked"));
    ASSERT_TRUE(QDir().mkpath(locked));
    QFile::setPermissions(locked, QFile::ReadOwner | QFile::ExeOwner);
    if (QFileInfo(locked).isWritable()) GTEST_SKIP() << "running as a user who can write anywhere";
    composition().setDuration(7);
    QString error;
    EXPECT_FALSE(document->saveAs(QDir(locked).filePath(QStringLiteral("T.composition")), &error));
    EXPECT_FALSE(error.isEmpty());
    EXPECT_TRUE(document->fileURL().isEmpty());
    EXPECT_EQ(composition().duration(), 7);
    QFile::setPermissions(locked, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
}

TEST_F(CompositionDocumentTest, ASaveWhereNoPackageCanBeMadeFailsAndKeepsTheModel)
{
    // A file where the package's folder should be: fails for every user,
    // unlike a read-only folder, which root may write to anyway.
    QFile blocker(dir.filePath(QStringLiteral("blocker")));
    ASSERT_TRUE(blocker.open(QIODevice::WriteOnly));
    blocker.close();
    ASSERT_TRUE(document->saveAs(package(), nullptr));
    composition().setDuration(7);
    QString error;
    EXPECT_FALSE(document->saveAs(dir.filePath(QStringLiteral("blocker/T.composition")), &error));
    EXPECT_FALSE(error.isEmpty());
    EXPECT_EQ(document->fileURL(), package()) << "still the document it was";
    EXPECT_EQ(composition().duration(), 7);
    EXPECT_TRUE(document->save(nullptr)) << "and it can still be saved where it lives";
}

TEST_F(CompositionDocumentTest, ThePosterFrameIsReachedThroughStopFrames)
{
    // The box appears at 2 s; a stop frame at 1 s holds the template until
    // triggered, so the thumbnail at a 3 s poster frame needs the trigger.
    model::QuartzComponent* c = addBox();
    c->setStartTime(2);
    composition().addStopFrame(1.0, QString());
    composition().setPosterFrameTimepoint(3.0);
    ASSERT_TRUE(document->saveAs(package(), nullptr));
    QImage shot = document->thumbnail();
    EXPECT_GT(shot.pixelColor(200, 1080 - 150).red(), 200);

    composition().setPosterFrameTimepoint(1.5);
    ASSERT_TRUE(document->save(nullptr));
    shot = document->thumbnail();
    EXPECT_LT(shot.pixelColor(200, 1080 - 150).red(), 60);
}
