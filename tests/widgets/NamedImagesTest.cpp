// The named images: every name the program refers to is drawn, at any size.

#include "widgets/NamedImages.h"
#include "widgets/ToolbarArtwork.h"

#include <QImage>

#include <gtest/gtest.h>

namespace {

const QStringList kNames = {
    "ToolbarAlignLeft",      "ToolbarAlignHCenter",      "ToolbarAlignRight",      "ToolbarAlignTop",
    "ToolbarAlignVCenter",   "ToolbarAlignBottom",       "ToolbarDistributeLeft",  "ToolbarDistributeHCenter",
    "ToolbarDistributeRight", "ToolbarDistributeTop",    "ToolbarDistributeVCenter", "ToolbarDistributeBottom",
    "TimelineZoomIn",        "TimelineZoomOut",          "TimelineStart",          "TimelineFrameBack",
    "TimelinePlay",          "TimelineStop",             "TimelineFrameForwards",  "TimelineEnd",
    "TimelineDiscloseClosed", "TimelineDiscloseOpen",    "TimelinePreviousKeyframe", "TimelineNextKeyframe",
    "TimelineAddKeyframe",   "TimelineRemoveKeyframe",   "TimelineAddStopFrame",   "TimelineRemoveStopFrame",
    "InspectorProperties",   "InspectorPermissions",     "InspectorDocument",      "InspectorTextLeft",
    "InspectorTextCenter",   "InspectorTextRight",       "InspectorTextJustified", "InspectorTextNatural",
};

int paintedPixels(const QPixmap& pixmap)
{
    const QImage image = pixmap.toImage().convertToFormat(QImage::Format_ARGB32);
    int count = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x) count += qAlpha(image.pixel(x, y)) > 0;
    return count;
}

}  // namespace

TEST(NamedImages, RegistersExactlyTheNamesTheProgramUses)
{
    EXPECT_EQ(widgets::NamedImages::names(), kNames);
}

TEST(NamedImages, EveryImageIsDrawnSmallAndLarge)
{
    for (const QString& name : kNames) {
        EXPECT_FALSE(widgets::NamedImages::imageNamed(name).isNull()) << name.toStdString();
        for (int size : {16, 64}) {
            const QPixmap pixmap = widgets::NamedImages::pixmapNamed(name, size);
            ASSERT_FALSE(pixmap.isNull()) << name.toStdString() << " at " << size;
            EXPECT_EQ(pixmap.size(), QSize(size, size)) << name.toStdString();
            EXPECT_GT(paintedPixels(pixmap), size * size / 40) << name.toStdString() << " at " << size;
        }
    }
}

TEST(NamedImages, LargeImagesAreDrawnAtTheirSizeNotScaledUp)
{
    // Drawn afresh at 64 pixels, the play triangle has a smooth slanted edge:
    // many more partly covered pixels than a 16-pixel image blown up 4 × 4.
    const QImage large = widgets::NamedImages::pixmapNamed(QStringLiteral("TimelinePlay"), 64).toImage();
    const QImage scaled = widgets::NamedImages::pixmapNamed(QStringLiteral("TimelinePlay"), 16).toImage().scaled(64, 64);
    EXPECT_NE(large.convertToFormat(QImage::Format_ARGB32), scaled.convertToFormat(QImage::Format_ARGB32));
    const QPixmap sharp = widgets::NamedImages::pixmapNamed(QStringLiteral("TimelinePlay"), 32, 2.0);
    EXPECT_EQ(sharp.deviceIndependentSize(), QSizeF(32, 32));
    EXPECT_EQ(sharp.size(), QSize(64, 64));
}

TEST(NamedImages, AnUnknownNameHasNoImage)
{
    EXPECT_TRUE(widgets::NamedImages::imageNamed(QStringLiteral("TimelineRewind")).isNull());
    EXPECT_TRUE(widgets::NamedImages::pixmapNamed(QStringLiteral("ToolbarAlign"), 16).isNull());
}

TEST(NamedImages, ToolbarNamesShowTheToolbarsDrawings)
{
    const QImage named = widgets::NamedImages::pixmapNamed(QStringLiteral("ToolbarAlignLeft"), 24).toImage();
    const QImage toolbar = widgets::ToolbarArtwork::toolbarImageWithName(QStringLiteral("Align Left")).pixmap(24, 24).toImage();
    EXPECT_EQ(named, toolbar);
}

TEST(NamedImages, DisabledImagesAreFainter)
{
    const QIcon icon = widgets::NamedImages::imageNamed(QStringLiteral("TimelineStop"));
    const QImage normal = icon.pixmap(QSize(32, 32), 1.0, QIcon::Normal).toImage();
    const QImage disabled = icon.pixmap(QSize(32, 32), 1.0, QIcon::Disabled).toImage();
    EXPECT_LT(qAlpha(disabled.pixel(16, 16)), qAlpha(normal.pixel(16, 16)));
}
