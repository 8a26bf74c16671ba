// A desktop opens a document by handing over any path inside its package
// (a file manager's double-click gives the info file); every such path opens
// the one package, once.

#include "AppFixture.h"

#include "document/CompositionDocument.h"
#include "model/VideoResolution.h"

#include <QFileInfo>

class OpenFromDesktopTest : public AppFixture {
protected:
    OpenFromDesktopTest()
    {
        package = folder.filePath(QStringLiteral("Weather.composition"));
        auto document = document::CompositionDocument::emptyDocumentWithResolution(model::VideoResolution(QStringLiteral("720p25 RGBA")));
        QString error;
        EXPECT_TRUE(document->saveAs(package, &error)) << error.toStdString();
    }

    QTemporaryDir folder;
    QString package;
};

TEST_F(OpenFromDesktopTest, TheInfoFileOrAPictureInsideOpensThePackage)
{
    const auto before = controller.windows().size();
    QString error;
    app::VLWindowController* w = controller.openDocument(package + QStringLiteral("/CompositionInfo.xml"), nullptr, &error);
    ASSERT_NE(w, nullptr) << error.toStdString();
    EXPECT_EQ(QFileInfo(w->document()->fileURL()), QFileInfo(package));
    EXPECT_EQ(controller.windows().size(), before + 1);

    // The same package by another path is the same window.
    EXPECT_EQ(controller.openDocument(package + QStringLiteral("/QuickLook/Thumbnail.jpg"), nullptr, &error), w);
    EXPECT_EQ(controller.openDocument(package, nullptr, &error), w);
    EXPECT_EQ(controller.windows().size(), before + 1);
}

TEST_F(OpenFromDesktopTest, AFileOutsideAnyPackageIsRefusedWithAReason)
{
    QFile stray(folder.filePath(QStringLiteral("notes.txt")));
    ASSERT_TRUE(stray.open(QIODevice::WriteOnly));
    stray.close();
    QString error;
    EXPECT_EQ(controller.openDocument(stray.fileName(), nullptr, &error), nullptr);
    EXPECT_FALSE(error.isEmpty());
}
