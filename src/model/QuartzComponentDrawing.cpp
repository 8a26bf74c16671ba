// Drawing a component on a canvas: a sprite injected into the component's
// own composition places the composition's picture at the component's
// frame, so the file itself never needs to know about the layout.

#include "model/Attribute.h"
#include "model/QuartzComponent.h"
#include "runtime/Backend.h"
#include "runtime/Renderer.h"

#include <QColor>

namespace model {

namespace {
const QString kSpriteKey = QStringLiteral("Sprite_1");
const QString kOutputImage = QStringLiteral("outputImage");
}  // namespace

QTransform QuartzComponent::viewTransformForCompositionSize(const QSizeF& size)
{
    // Composition pixels (origin lower-left, y up) to destination units
    // (2 wide, centred), for a destination of the composition's aspect.
    if (size.width() <= 0) return {};
    const double scale = 2.0 / size.width();
    return QTransform(scale, 0, 0, scale, -1.0, -size.height() / size.width());
}

void QuartzComponent::setupRenderer()
{
    spriteKey_.clear();
    if (renderer_) {
        // A sprite from an earlier setup is replaced, never doubled.
        renderer_->removeNode(kSpriteKey);
        if (renderer_->nodeKeys().contains(kSpriteKey)) {
            spriteKey_ = kSpriteKey;
            renderer_->setNodeInputValue(spriteKey_, QStringLiteral("inputBlending"), 1);
        } else {
            spriteKey_ = renderer_->addPatch(QStringLiteral("QCSprite"));
        }
        if (!spriteKey_.isEmpty()) {
            portImageNode_.clear();
            for (const QString& node : renderer_->nodeKeys()) {
                if (node == spriteKey_) continue;
                portImageNode_ = node;
                if (renderer_->canConnect(node, kOutputImage, spriteKey_, QStringLiteral("inputImage"))) {
                    renderer_->connect(node, kOutputImage, spriteKey_, QStringLiteral("inputImage"));
                    rootIsRenderInImage_ = renderer_->nodeClassName(node) == QLatin1String("QCRenderInImage");
                    break;
                }
            }
        }
        // A component never clears what lies beneath it.
        renderer_->disableClearPatches();
    }
    updateFileURL();
    setAttributeValuesOnQuartzComposition();
}

void QuartzComponent::setSpriteInput(const QString& port, const QVariant& value)
{
    if (!spriteKey_.isEmpty()) renderer_->setNodeInputValue(spriteKey_, port, value);
}

void QuartzComponent::renderForView(const void* context, runtime::RenderTarget& target, double time,
                                    const QVariantMap& arguments)
{
    if (!loadedComposition_) return;
    if (renderContext_ != context) {
        renderer_.reset();
        renderContext_ = context;
        setRenderer(std::make_unique<runtime::Renderer>(loadedComposition_, target.pixelSize()));
        setupRenderer();
        if (!renderer_) return;
    }
    for (Attribute* a : attributes())
        if (a->animateable() && a->quartzAttribute()) a->pushValueToRenderer();

    const QRectF frame = drawingFrame();
    setSpriteInput(QStringLiteral("inputX"), frame.center().x());
    setSpriteInput(QStringLiteral("inputY"), frame.center().y());
    setSpriteInput(QStringLiteral("inputWidth"), width());
    setSpriteInput(QStringLiteral("inputHeight"), height());
    setSpriteInput(QStringLiteral("inputRZ"), zRotation());
    if (!spriteKey_.isEmpty()) {
        QColor color = renderer_->nodeInputValue(spriteKey_, QStringLiteral("inputColor")).value<QColor>();
        if (!color.isValid()) color = Qt::white;
        color.setAlphaF(float(opacity()));
        setSpriteInput(QStringLiteral("inputColor"), color);
    }
    if (visible()) {
        const bool shown = visibleInCompositionEditor();
        setSpriteInput(QStringLiteral("_enable"), shown);
        // The composition always sees time 0 at the component's start.
        if (shown) renderer_->render(std::max(time - startTime(), 0.0), target, arguments);
    } else {
        setSpriteInput(QStringLiteral("_enable"), false);
    }
}

void QuartzComponent::renderOverlaysForView(runtime::RenderTarget& target, double lineWidth, const QColor& colour) const
{
    if (!selected_ || !visible() || !visibleInCompositionEditor()) return;
    const std::array<QRectF, 9> rects = handleRects();
    const QPointF centre = rects[0].center();
    QMatrix4x4 transform;
    transform.translate(float(centre.x()), float(centre.y()));
    transform.rotate(float(zRotation()), 0, 0, 1);  // the overlay turns with the layer

    runtime::QuadDraw quad;
    quad.transform = transform;
    quad.color = runtime::Color{colour.redF(), colour.greenF(), colour.blueF(), colour.alphaF()};
    quad.blend = runtime::BlendMode::Over;
    auto fill = [&](const QRectF& r) {
        quad.rect = r.translated(-centre);
        target.drawQuad(quad);
    };
    const QRectF body = rects[0];
    const double w = lineWidth;
    fill(QRectF(body.left(), body.top(), body.width(), w));
    fill(QRectF(body.left(), body.bottom() - w, body.width(), w));
    fill(QRectF(body.left(), body.top() + w, w, body.height() - 2 * w));
    fill(QRectF(body.right() - w, body.top() + w, w, body.height() - 2 * w));
    for (int i = 1; i < 9; ++i) fill(rects[size_t(i)]);
}

}  // namespace model
