// Files dropped on the canvas become components.

#include "CanvasFixture.h"

#include <QDropEvent>
#include <QMimeData>
#include <QUrl>

class CanvasDropTest : public CanvasFixture {
protected:
    // Sends enter and drop as the window system would; answers whether the
    // canvas took the drop.
    bool dropFiles(const QStringList& paths, Qt::KeyboardModifiers modifiers = {})
    {
        QMimeData data;
        QList<QUrl> urls;
        for (const QString& path : paths) urls << QUrl::fromLocalFile(path);
        data.setUrls(urls);
        const QPointF point(700, 400);
        QDragEnterEvent enter(point.toPoint(), Qt::CopyAction, &data, Qt::LeftButton, modifiers);
        QCoreApplication::sendEvent(&view, &enter);
        if (!enter.isAccepted()) return false;
        QDropEvent drop(point, Qt::CopyAction, &data, Qt::LeftButton, modifiers);
        QCoreApplication::sendEvent(&view, &drop);
        return drop.isAccepted();
    }
};

TEST_F(CanvasDropTest, ADroppedCompositionFileBecomesASelectedComponentInOneStep)
{
    startCounting();
    const QString box = testfiles::writeBoxComposition(QDir(dir.path()), QStringLiteral("Box.qtz"), {});
    ASSERT_TRUE(dropFiles({box}));
    const auto components = composition->componentArray();
    ASSERT_EQ(components.size(), 1u);
    EXPECT_TRUE(components.front()->selected());
    EXPECT_EQ(undoManager().undoCount(), 1u);
    undoManager().undo();
    EXPECT_TRUE(composition->componentArray().empty());
}

TEST_F(CanvasDropTest, FilesAreAddedInOrderAndUnreadableOnesAreSkipped)
{
    const QString box = testfiles::writeBoxComposition(QDir(dir.path()), QStringLiteral("Box.qtz"), {});
    const QString broken = QDir(dir.path()).filePath(QStringLiteral("Broken.qtz"));
    QFile file(broken);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("not a composition");
    file.close();
    QImage picture(40, 30, QImage::Format_RGB32);
    picture.fill(Qt::green);
    const QString png = QDir(dir.path()).filePath(QStringLiteral("Picture.png"));
    ASSERT_TRUE(picture.save(png));

    ASSERT_TRUE(dropFiles({box, broken, png}));
    const auto components = composition->componentsSortedByZLevel();
    ASSERT_EQ(components.size(), 2u);
    EXPECT_EQ(components[0]->compositionFilename(), box);
    EXPECT_EQ(components[1]->width(), 40);  // the image component takes the picture's size
}

TEST_F(CanvasDropTest, DragsWithoutFilesAreRefused)
{
    QMimeData data;
    data.setText(QStringLiteral("hello"));
    QDragEnterEvent enter(QPoint(700, 400), Qt::CopyAction, &data, Qt::LeftButton, {});
    QCoreApplication::sendEvent(&view, &enter);
    EXPECT_FALSE(enter.isAccepted());
}
