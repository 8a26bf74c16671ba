// The library panel lists the template material of the preferred folder,
// follows the preference and the folder, drags file URLs and opens
// documents on double-click.

#include "AppFixture.h"

#include "app/VLLibraryController.h"
#include "app/VLLibraryModel.h"
#include "document/CompositionDocument.h"
#include "model/VideoResolution.h"

#include <QDir>
#include <QFile>
#include <QImage>
#include <QMimeData>
#include <QPushButton>
#include <QTabWidget>
#include <QTest>
#include <QTreeView>
#include <QUrl>

using model::Settings;

class LibraryTest : public AppFixture {
protected:
    static void touch(const QString& path)
    {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    }
    static QStringList names(const app::VLLibraryModel* model)
    {
        QStringList result;
        for (int row = 0; row < model->rowCount(); ++row)
            result << model->data(model->index(row, app::VLLibraryModel::NameColumn), Qt::DisplayRole).toString();
        return result;
    }
    QString saveDocument(const QString& name)
    {
        auto document = document::CompositionDocument::emptyDocumentWithResolution(
            model::VideoResolution(QStringLiteral("720p25 RGBA")));
        const QString path = dir.filePath(name);
        QString error;
        EXPECT_TRUE(document->saveAs(path, &error)) << error.toStdString();
        return path;
    }
    // A double-click on the row of the path in a window's library.
    static void doubleClick(app::VLWindowController* w, const QString& path)
    {
        ASSERT_TRUE(QTest::qWaitForWindowExposed(w));
        QCoreApplication::processEvents();
        QTreeView* browser = w->library()->browser();
        const QModelIndex index = w->library()->model()->indexForPath(path);
        ASSERT_TRUE(index.isValid());
        browser->scrollTo(index);
        const QPoint centre = browser->visualRect(index).center();
        // As from a mouse: the first click of the pair arrives on its own.
        QTest::mouseClick(browser->viewport(), Qt::LeftButton, {}, centre);
        QTest::mouseDClick(browser->viewport(), Qt::LeftButton, {}, centre);
    }
};

TEST_F(LibraryTest, ListsTemplateMaterialWhateverTheCaseOfItsExtension)
{
    for (const char* name : {"a.qtz", "B.PNG", "c.jpg", "d.JPG", "notes.txt", "e.jpeg", "f.tiff"})
        touch(dir.filePath(QLatin1String(name)));
    ASSERT_TRUE(QDir(dir.path()).mkdir(QStringLiteral("Folder")));
    ASSERT_TRUE(QDir(dir.path()).mkdir(QStringLiteral("Pictures.png")));
    saveDocument(QStringLiteral("Show.composition"));
    Settings::setValue(Settings::kImagesLibraryPath, dir.path());
    app::VLLibraryController library;
    EXPECT_EQ(names(library.model()), QStringList({QStringLiteral("a.qtz"), QStringLiteral("B.PNG"),
                                                   QStringLiteral("c.jpg"), QStringLiteral("d.JPG"),
                                                   QStringLiteral("Show.composition")}));
    EXPECT_EQ(library.tabs()->count(), 1);
    EXPECT_EQ(library.tabs()->tabText(0), QStringLiteral("Library"));
}

TEST_F(LibraryTest, PathsIsTheOnePreference)
{
    Settings::setValue(Settings::kImagesLibraryPath, dir.path());
    EXPECT_EQ(app::VLLibraryController::paths(), QStringList{dir.path()});
    Settings::remove(Settings::kImagesLibraryPath);
    EXPECT_EQ(app::VLLibraryController::paths(), QStringList{QDir::homePath() + QStringLiteral("/Pictures")});
}

TEST_F(LibraryTest, FollowsAChangeOfTheFolderPreference)
{
    QTemporaryDir other;
    touch(dir.filePath(QStringLiteral("first.png")));
    touch(other.filePath(QStringLiteral("second.qtz")));
    Settings::setValue(Settings::kImagesLibraryPath, dir.path());
    app::VLLibraryController library;
    EXPECT_EQ(names(library.model()), QStringList{QStringLiteral("first.png")});
    controller.preferencesController()->selectGraphicPath(other.path());
    EXPECT_EQ(library.tabPaths(), QStringList{other.path()});
    EXPECT_EQ(names(library.model()), QStringList{QStringLiteral("second.qtz")});
    // After clean-up it no longer follows.
    library.cleanUp();
    Settings::setValue(Settings::kImagesLibraryPath, dir.path());
    EXPECT_EQ(library.tabPaths(), QStringList{other.path()});
}

TEST_F(LibraryTest, FollowsFilesAddedToTheFolder)
{
    Settings::setValue(Settings::kImagesLibraryPath, dir.path());
    app::VLLibraryController library;
    EXPECT_EQ(library.model()->rowCount(), 0);
    touch(dir.filePath(QStringLiteral("late.png")));
    EXPECT_TRUE(QTest::qWaitFor([&] { return library.model()->rowCount() == 1; }, 5000));
}

TEST_F(LibraryTest, ItemsDragAsFileUrls)
{
    const QString path = dir.filePath(QStringLiteral("logo.png"));
    QImage(8, 8, QImage::Format_ARGB32).save(path);
    Settings::setValue(Settings::kImagesLibraryPath, dir.path());
    app::VLLibraryController library;
    const QModelIndex index = library.model()->indexForPath(path);
    ASSERT_TRUE(index.isValid());
    EXPECT_TRUE(library.model()->flags(index) & Qt::ItemIsDragEnabled);
    EXPECT_EQ(library.browser()->dragDropMode(), QAbstractItemView::DragOnly);
    // A whole row is one index per column, and still one file.
    QModelIndexList row;
    for (int column = 0; column < library.model()->columnCount(); ++column) row << index.siblingAtColumn(column);
    std::unique_ptr<QMimeData> data(library.model()->mimeData(row));
    ASSERT_TRUE(data);
    EXPECT_TRUE(data->hasFormat(QStringLiteral("text/uri-list")));
    EXPECT_EQ(data->urls(), QList<QUrl>{QUrl::fromLocalFile(path)});
}

TEST_F(LibraryTest, EveryWindowHasTheLibraryOfThePreferredFolder)
{
    touch(dir.filePath(QStringLiteral("a.qtz")));
    Settings::setValue(Settings::kImagesLibraryPath, dir.path());
    ASSERT_TRUE(window->library());
    EXPECT_EQ(names(window->library()->model()), QStringList{QStringLiteral("a.qtz")});
}

TEST_F(LibraryTest, DoubleClickingADocumentOpensItInAWindow)
{
    const QString path = saveDocument(QStringLiteral("Other.composition"));
    Settings::setValue(Settings::kImagesLibraryPath, dir.path());
    doubleClick(window, path);
    ASSERT_EQ(controller.windows().size(), 2u);
    app::VLWindowController* opened = controller.windows().back();
    EXPECT_EQ(QFileInfo(opened->document()->fileURL()), QFileInfo(path));
    EXPECT_EQ(opened->windowTitle(), QStringLiteral("Other - 720p25 RGBA"));
}

TEST_F(LibraryTest, DoubleClickingAnImageOpensNothing)
{
    const QString path = dir.filePath(QStringLiteral("logo.png"));
    QImage(8, 8, QImage::Format_ARGB32).save(path);
    Settings::setValue(Settings::kImagesLibraryPath, dir.path());
    int doubleClicks = 0;
    QObject::connect(window->library(), &app::VLLibraryController::doubleClicked, [&] { ++doubleClicks; });
    doubleClick(window, path);
    EXPECT_EQ(doubleClicks, 1);
    EXPECT_EQ(window->library()->selectedPaths(), QStringList{path});
    EXPECT_EQ(controller.windows().size(), 1u);
}

TEST_F(LibraryTest, AnEmptyLibrarySaysWhyAndOffersToChooseAFolder)
{
    Settings::setValue(Settings::kImagesLibraryPath, dir.filePath(QStringLiteral("Gone")));
    app::VLLibraryController library;
    library.show();
    EXPECT_TRUE(library.emptyNotice()->isVisible());
    EXPECT_TRUE(library.emptyReason().contains(QStringLiteral("does not exist"))) << library.emptyReason().toStdString();

    QDir(dir.path()).mkdir(QStringLiteral("Empty"));
    Settings::setValue(Settings::kImagesLibraryPath, dir.filePath(QStringLiteral("Empty")));
    EXPECT_TRUE(library.emptyReason().contains(QStringLiteral("holds no"))) << library.emptyReason().toStdString();

    // The button's folder becomes the preference and the list follows it.
    touch(dir.filePath(QStringLiteral("logo.png")));
    library.setFolderChooser([this](QWidget*) { return dir.path(); });
    auto* choose = library.findChild<QPushButton*>(QStringLiteral("LibraryChooseFolder"));
    ASSERT_TRUE(choose);
    QTest::mouseClick(choose, Qt::LeftButton);
    EXPECT_EQ(Settings::stringValue(Settings::kImagesLibraryPath), dir.path());
    EXPECT_EQ(names(library.model()), QStringList{QStringLiteral("logo.png")});
    EXPECT_FALSE(library.emptyNotice()->isVisible());
    EXPECT_TRUE(library.emptyReason().isEmpty());

    // Cancelling the chooser changes nothing.
    library.setFolderChooser([](QWidget*) { return QString(); });
    library.chooseFolder();
    EXPECT_EQ(Settings::stringValue(Settings::kImagesLibraryPath), dir.path());
}
