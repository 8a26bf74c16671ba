// A picture per stop frame: the frame at which playout holds at each one,
// written into the package on every save.

#include "document/CompositionDocument.h"
#include "document/Thumbnail.h"
#include "model/Attribute.h"
#include "model/Composition.h"
#include "model/QuartzComponent.h"
#include "model/StandardComponents.h"
#include "model/VideoResolution.h"

#include <QDir>
#include <QImage>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

// How far right the box is in a picture: the first column where red shows.
int boxLeft(const QImage& picture)
{
    const int y = picture.height() / 2;
    for (int x = 0; x < picture.width(); ++x) {
        const QColor c = picture.pixelColor(x, y);
        if (c.red() > 200 && c.green() < 80) return x;
    }
    return -1;
}

TEST(StepPictures, EachStopFrameGetsThePictureItHoldsAt)
{
    auto document = document::CompositionDocument::emptyDocumentWithResolution(model::VideoResolution(QStringLiteral("720p25 RGBA")));
    model::Composition& c = *document->composition();
    model::QuartzComponent* box = c.addComponenWithQuartzCompositionFile(model::StandardComponents::pathForComponent(QStringLiteral("Box")));
    ASSERT_NE(box, nullptr);
    box->setValueForKey(QStringLiteral("Color"), QColor(Qt::red));
    box->setOriginY(300);
    model::Attribute* x = box->attributeForKey(QStringLiteral("originX"));
    x->addTimepoint(0.0, 0.0f);
    x->addTimepoint(4.0, 800.0f);
    c.addStopFrame(1.0);
    c.addStopFrame(3.0);

    QTemporaryDir dir;
    const QString package = dir.filePath(QStringLiteral("Steps.composition"));
    QString error;
    ASSERT_TRUE(document->saveAs(package, &error)) << error.toStdString();
    const QDir quickLook(QDir(package).filePath(QStringLiteral("QuickLook")));
    const QImage first(quickLook.filePath(QStringLiteral("Step-01.jpg")));
    const QImage second(quickLook.filePath(QStringLiteral("Step-02.jpg")));
    const QImage thumbnail(quickLook.filePath(QStringLiteral("Thumbnail.jpg")));
    ASSERT_FALSE(first.isNull());
    ASSERT_FALSE(second.isNull());
    EXPECT_FALSE(quickLook.exists(QStringLiteral("Step-03.jpg")));
    // The export eases between keyframes: at 1 s the box is on its way, at
    // 3 s as far from the end as it was from the start at 1 s (a few pixels
    // of JPEG and frame rounding either way).
    EXPECT_NEAR(boxLeft(thumbnail), 0, 3);
    EXPECT_GT(boxLeft(first), 20);
    EXPECT_LT(boxLeft(first), 400);
    EXPECT_GT(boxLeft(second), 400);
    EXPECT_LT(boxLeft(second), 780);
    EXPECT_NEAR(boxLeft(first) + boxLeft(second), 800, 12);

    // A stop frame gone: its picture goes too.
    c.removeStopFrame(c.stopFrames().back());
    ASSERT_TRUE(document->save(&error)) << error.toStdString();
    EXPECT_TRUE(quickLook.exists(QStringLiteral("Step-01.jpg")));
    EXPECT_FALSE(quickLook.exists(QStringLiteral("Step-02.jpg")));
    c.removeStopFrame(c.stopFrames().back());
    ASSERT_TRUE(document->save(&error)) << error.toStdString();
    EXPECT_TRUE(quickLook.entryList({QStringLiteral("Step-*")}).isEmpty()) << "no stop frames, no step pictures";
}

}  // namespace
