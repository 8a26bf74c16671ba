// Geometry: crops, transforms, scales and tilings. Angles are shown in
// degrees and turn counter-clockwise in image space (y up).

#include "runtime/patches/ImageOps.h"
#include "runtime/patches/ImageSampling.h"
#include "runtime/patches/filters/FilterDefinition.h"

#include <cmath>
#include <numbers>

namespace runtime {

namespace {

Image crop(const FilterInputs& in)
{
    const QRectF r(in.number("inputRectangle_X"), in.number("inputRectangle_Y"), in.number("inputRectangle_Z"),
                   in.number("inputRectangle_W"));
    if (!(r.width() > 0 && r.height() > 0) || r.width() > 1e7 || r.height() > 1e7 || std::abs(r.x()) > 1e7 ||
        std::abs(r.y()) > 1e7)
        return {};
    return cropImage(in.image(), r.toRect());
}

// Quartz Composer splits an affine transform into these ports.
QTransform transformFromPorts(const FilterInputs& in)
{
    const double ox = in.number("inputTransform_OriginX"), oy = in.number("inputTransform_OriginY");
    QTransform t;
    // Row-vector order: scale and rotate about the origin, then translate.
    t.translate(-ox, -oy);
    t *= QTransform().scale(in.number("inputTransform_ScaleX"), in.number("inputTransform_ScaleY"));
    t *= QTransform().rotate(in.number("inputTransform_Rotate"));
    t *= QTransform::fromTranslate(ox + in.number("inputTransform_TranslateX"), oy + in.number("inputTransform_TranslateY"));
    return t;
}

std::vector<FilterPort> transformPorts()
{
    return {imagePort(),
            numberPort("inputTransform_OriginX", 0),
            numberPort("inputTransform_OriginY", 0),
            numberPort("inputTransform_ScaleX", 1),
            numberPort("inputTransform_ScaleY", 1),
            numberPort("inputTransform_Rotate", 0),
            numberPort("inputTransform_TranslateX", 0),
            numberPort("inputTransform_TranslateY", 0)};
}

Image affineTransform(const FilterInputs& in)
{
    return transformImage(in.image(), transformFromPorts(in));
}

// The image repeated without end, then transformed.
Image affineTile(const FilterInputs& in)
{
    const Image image = in.image();
    const QTransform t = transformFromPorts(in);
    if (image.isNull() || !t.isInvertible()) return {};
    if (image.isInfinite()) return transformImage(image, t);
    const QTransform toSource = t.inverted();
    return shadeImage(SourcePixels::tiled(image), std::nullopt, [toSource](const SourcePixels& tile, double x, double y) {
        const QPointF s = toSource.map(QPointF(x, y));
        return tile.at(s.x(), s.y());
    });
}

// The image's edge pixels repeated outward without end, then transformed
// (what a blur of an image needs so that it does not fade at the edges).
Image affineClamp(const FilterInputs& in)
{
    const Image image = in.image();
    const QTransform t = transformFromPorts(in);
    if (image.isNull() || !t.isInvertible()) return {};
    if (image.isInfinite()) return transformImage(image, t);
    const QRect extent = image.extent();
    const QTransform toSource = t.inverted();
    return shadeImage(SourcePixels::of(image, QRectF(extent)), std::nullopt, [toSource, extent](const SourcePixels& source, double x, double y) {
        const QPointF s = toSource.map(QPointF(x, y));
        // Pixel centres lie half a pixel inside the extent.
        const double cx = std::clamp(s.x(), extent.left() + 0.5, extent.left() + extent.width() - 0.5);
        const double cy = std::clamp(s.y(), extent.top() + 0.5, extent.top() + extent.height() - 0.5);
        return source.at(cx, cy);
    });
}

// Scale, then the aspect ratio stretches x. Qt's smooth scaling stands in
// for the Lanczos kernel.
Image lanczosScale(const FilterInputs& in)
{
    const Image image = in.image();
    const double sy = in.number("inputScale"), sx = sy * in.number("inputAspectRatio");
    if (image.isNull() || !(sx > 0 && sy > 0)) return {};
    if (image.isInfinite()) return transformImage(image, QTransform::fromScale(sx, sy));
    const QRectF scaled(image.origin().x() * sx, image.origin().y() * sy, image.pixelSize().width() * sx, image.pixelSize().height() * sy);
    if (!(std::abs(scaled.left()) < 1e7 && std::abs(scaled.right()) < 1e7 && std::abs(scaled.top()) < 1e7 &&
          std::abs(scaled.bottom()) < 1e7))
        return {};
    const QRect target = scaled.toAlignedRect();
    // Larger than the limit: only the part that is kept is drawn.
    if (clampedRect(target) != target) return transformImage(image, QTransform::fromScale(sx, sy));
    return Image::fromRaster(image.raster().scaled(target.size(), Qt::IgnoreAspectRatio, Qt::SmoothTransformation), target.topLeft());
}

// Maps a point into the triangle (0, 0), (1, 0), (½, √3/2) by the mirrors
// of its sides, which tile the plane with reflected copies of it.
QPointF foldIntoTriangle(QPointF q)
{
    constexpr double h = std::numbers::sqrt3 / 2;
    // The mirrors' translations form a lattice of (0, √3) and (3/2, √3/2);
    // moving into its cell first leaves only a few reflections.
    const double b = std::floor(q.x() / 1.5);
    const double a = std::floor((q.y() - (q.x() / 1.5) * h) / std::numbers::sqrt3);
    q -= QPointF(1.5 * b, std::numbers::sqrt3 * a + h * b);
    const QPointF n1(h, -0.5), n2(-h, -0.5), corner(1, 0);
    for (int i = 0; i < 16; ++i) {
        if (q.y() < 0) {
            q.setY(-q.y());
        } else if (const double d = QPointF::dotProduct(q, n1); d < 0) {
            q -= 2 * d * n1;
        } else if (const double e = QPointF::dotProduct(q - corner, n2); e < 0) {
            q -= 2 * e * n2;
        } else {
            break;
        }
    }
    return q;
}

// The triangle of the given side with a corner at the centre, reflected
// across its sides over the whole plane.
Image triangleTile(const FilterInputs& in)
{
    const QPointF c = in.point("inputCenter");
    const double width = std::max(std::abs(in.number("inputWidth", -1e6, 1e6)), 1e-3);
    const QTransform toLocal = QTransform::fromTranslate(-c.x(), -c.y()) * QTransform().rotateRadians(-in.angle("inputAngle")) *
                               QTransform::fromScale(1 / width, 1 / width);
    const QTransform toSource = toLocal.inverted();
    const QRectF triangle = toSource.map(QPolygonF({QPointF(0, 0), QPointF(1, 0), QPointF(0.5, std::numbers::sqrt3 / 2)})).boundingRect();
    return remapImage(
        in.image(), std::nullopt, [triangle](const QRect&) { return triangle; },
        [toLocal, toSource](double x, double y) { return toSource.map(foldIntoTriangle(toLocal.map(QPointF(x, y)))); });
}

// Twice `count` wedges about the centre, each the mirror image of its
// neighbours; the first starts at the angle. Infinite, as tile effects are.
Image kaleidoscope(const FilterInputs& in)
{
    const QPointF c = in.point("inputCenter");
    const double angle = in.angle("inputAngle");
    const double wedge = std::numbers::pi / std::round(in.number("inputCount", 1, 256));
    const auto toSource = [=](double x, double y) {
        const double d = std::hypot(x - c.x(), y - c.y());
        double u = std::atan2(y - c.y(), x - c.x()) - angle;
        u -= 2 * wedge * std::floor(u / (2 * wedge));
        if (u > wedge) u = 2 * wedge - u;
        return c + d * QPointF(std::cos(u + angle), std::sin(u + angle));
    };
    // Every point keeps its distance from the centre.
    const auto area = [c](const QRect& r) {
        double far = 0;
        for (const QPointF& p : {QPointF(r.left(), r.top()), QPointF(r.right() + 1, r.top()), QPointF(r.left(), r.bottom() + 1),
                                 QPointF(r.right() + 1, r.bottom() + 1)})
            far = std::max(far, std::hypot(p.x() - c.x(), p.y() - c.y()));
        return QRectF(c.x() - far, c.y() - far, 2 * far, 2 * far);
    };
    return remapImage(in.image(), std::nullopt, area, toSource);
}

}  // namespace

const std::vector<FilterDefinition>& geometryFilters()
{
    static const std::vector<FilterDefinition> all = {
        {"CICrop",
         {imagePort(), numberPort("inputRectangle_X", 0), numberPort("inputRectangle_Y", 0), numberPort("inputRectangle_Z", 300),
          numberPort("inputRectangle_W", 300)},
         crop},
        {"CIAffineTransform", transformPorts(), affineTransform},
        {"CIAffineTile", transformPorts(), affineTile},
        {"CIAffineClamp", transformPorts(), affineClamp},
        {"CILanczosScaleTransform", {imagePort(), numberPort("inputScale", 1), numberPort("inputAspectRatio", 1)}, lanczosScale},
        {"CITriangleTile",
         {imagePort(), numberPort("inputCenter_X", 150), numberPort("inputCenter_Y", 150), numberPort("inputAngle", 0),
          numberPort("inputWidth", 100)},
         triangleTile},
        {"CIKaleidoscope",
         {imagePort(), numberPort("inputCount", 6), numberPort("inputCenter_X", 150), numberPort("inputCenter_Y", 150),
          numberPort("inputAngle", 0)},
         kaleidoscope},
    };
    return all;
}

}  // namespace runtime
