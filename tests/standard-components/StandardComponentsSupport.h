#pragma once
// Shared helpers of the standard-component tests: where the committed files
// are, rendering a component as the editor does, and measuring pictures.

#include "quartz/QuartzComposition.h"
#include "runtime/Composition.h"
#include "runtime/Renderer.h"

#include <QColor>
#include <QImage>
#include <QPainter>
#include <QRect>
#include <QString>
#include <QVariantMap>

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <memory>

namespace stdtest {

inline plist::Value colourValue(double red, double green, double blue, double alpha = 1.0)
{
    plist::Value c = plist::Value::emptyDictionary();
    c.set("red", red);
    c.set("green", green);
    c.set("blue", blue);
    c.set("alpha", alpha);
    return c;
}

inline QString folder() { return QStringLiteral(VELLORAN_STANDARD_COMPONENTS_DIR); }
inline QString pathOf(const QString& fileName) { return folder() + QLatin1Char('/') + fileName; }

inline std::unique_ptr<QuartzComposition> loadModel(const QString& fileName)
{
    QString error;
    auto composition = QuartzComposition::compositionWithFile(pathOf(fileName), &error);
    EXPECT_TRUE(composition) << fileName.toStdString() << ": " << error.toStdString();
    return composition;
}

inline std::shared_ptr<const runtime::Composition> loadRuntime(const QString& fileName)
{
    QString error;
    auto composition = runtime::Composition::loadFile(pathOf(fileName), &error);
    EXPECT_TRUE(composition) << fileName.toStdString() << ": " << error.toStdString();
    return composition;
}

// The smallest rectangle holding every pixel that passes `test`; null when
// none does.
inline QRect boundsWhere(const QImage& image, const std::function<bool(QRgb)>& test)
{
    const QImage pixels = image.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    int left = pixels.width(), top = pixels.height(), right = -1, bottom = -1;
    for (int y = 0; y < pixels.height(); ++y) {
        const QRgb* line = reinterpret_cast<const QRgb*>(pixels.constScanLine(y));
        for (int x = 0; x < pixels.width(); ++x) {
            if (!test(line[x])) continue;
            left = std::min(left, x);
            right = std::max(right, x);
            top = std::min(top, y);
            bottom = std::max(bottom, y);
        }
    }
    return right < 0 ? QRect() : QRect(QPoint(left, top), QPoint(right, bottom));
}

// Pixels at least half covered.
inline QRect inkBounds(const QImage& image)
{
    return boundsWhere(image, [](QRgb p) { return qAlpha(p) >= 128; });
}

inline bool isBlank(const QImage& image)
{
    return boundsWhere(image, [](QRgb p) { return qAlpha(p) > 0; }).isNull();
}

// The colour at a pixel, un-premultiplied.
inline QColor colourAt(const QImage& image, int x, int y)
{
    return QColor::fromRgba(image.convertToFormat(QImage::Format_ARGB32).pixel(x, y));
}

inline bool near(const QColor& a, const QColor& b, int tolerance = 3)
{
    return std::abs(a.red() - b.red()) <= tolerance && std::abs(a.green() - b.green()) <= tolerance &&
           std::abs(a.blue() - b.blue()) <= tolerance && std::abs(a.alpha() - b.alpha()) <= tolerance;
}

// Renders a component file as the editor does: a sprite added to the root
// draws the first image output of a `componentSize` component, `frame`
// pixels large (its own size by default), centred on a transparent
// `destination`.
inline QImage renderComponent(const QString& fileName, QSize destination, QSize componentSize,
                              const QVariantMap& inputs = {}, double time = 0.0, QSizeF frame = QSizeF())
{
    if (frame.isEmpty()) frame = componentSize;
    auto composition = loadRuntime(fileName);
    if (!composition) return {};
    runtime::Renderer renderer(composition, destination);
    renderer.setInputValue(QStringLiteral("inputWidth"), double(componentSize.width()));
    renderer.setInputValue(QStringLiteral("inputHeight"), double(componentSize.height()));
    for (auto it = inputs.begin(); it != inputs.end(); ++it)
        EXPECT_TRUE(renderer.setInputValue(it.key(), it.value())) << it.key().toStdString();
    const auto image = renderer.firstImageOutput();
    EXPECT_TRUE(image) << fileName.toStdString() << " has no image output to draw";
    if (!image) return {};
    const QString sprite = renderer.addPatch(QStringLiteral("QCSprite"));
    EXPECT_TRUE(renderer.connect(image->node, image->port, sprite, QStringLiteral("inputImage")));
    const double unitsPerPixel = 2.0 / destination.width();
    renderer.setNodeInputValue(sprite, QStringLiteral("inputWidth"), frame.width() * unitsPerPixel);
    renderer.setNodeInputValue(sprite, QStringLiteral("inputHeight"), frame.height() * unitsPerPixel);
    renderer.render(time);
    return renderer.snapshot();
}

inline void savePicture(const QImage& image, const QString& name)
{
    // Set VELLORAN_SAVE_PICTURES to a folder to look at what the tests see.
    const QString dir = qEnvironmentVariable("VELLORAN_SAVE_PICTURES");
    if (dir.isEmpty()) return;
    // Over mid-grey, so that transparent parts show.
    QImage shown(image.size(), QImage::Format_ARGB32_Premultiplied);
    shown.fill(QColor(110, 110, 110));
    QPainter painter(&shown);
    painter.drawImage(0, 0, image);
    painter.end();
    shown.save(dir + QLatin1Char('/') + name + QStringLiteral(".png"));
}

}  // namespace stdtest
