// Macro-capable classes: the plain macro, Render In Image, Iterator and
// Camera. Their children are built by the GraphBuilder.

#include "runtime/patches/MacroPatches.h"

#include "runtime/ExecutionContext.h"
#include "runtime/patches/PatchFamilies.h"

#include <algorithm>
#include <cmath>

namespace runtime {

namespace {
// Offscreen images larger than this are clamped: a stored size of 10^9
// must not allocate the machine away.
constexpr int kMaxImageSide = 8192;
// And no larger in area than an 8K UHD frame.
constexpr double kMaxImagePixels = 7680.0 * 4320.0;
}  // namespace

RenderInImagePatch::RenderInImagePatch(const PatchSetup& setup) : MacroPatch(setup)
{
    width_ = &addInput(QStringLiteral("inputWidth"), PortType::Index, stateNumber(setup, "width", 640));
    height_ = &addInput(QStringLiteral("inputHeight"), PortType::Index, stateNumber(setup, "height", 480));
    render_ = &addInput(QStringLiteral("inputRender"), PortType::Boolean, true);
    addInput(QStringLiteral("inputTarget"), PortType::Index, 0);
    addInput(QStringLiteral("inputMipmaps"), PortType::Boolean, false);
    image_ = &addOutput(QStringLiteral("outputImage"), PortType::Image);
}

void RenderInImagePatch::execute(ExecutionContext& context, double)
{
    if (!boolean(render_)) return;
    QSize size(index(width_), index(height_));
    if (size.width() <= 0 || size.height() <= 0) {
        // Zero means "the size of the destination" (as far as is known).
        size = context.target() ? context.target()->pixelSize() : QSize(640, 480);
    }
    size = size.boundedTo(QSize(kMaxImageSide, kMaxImageSide));
    const double area = double(size.width()) * size.height();
    if (area > kMaxImagePixels) size *= std::sqrt(kMaxImagePixels / area);
    // Nothing inside depends on time or the outside world and no input
    // changed: last frame's picture is this frame's too. The canvas draws
    // every component each repaint, and most of them stand still.
    if (!redraw_ && target_ && target_->pixelSize() == size && !inputsChanged() && contentIsStatic()) return;
    redraw_ = false;

    // The target is kept from frame to frame: a fresh one each frame costs an
    // allocation and the page faults of touching it, per component on the
    // canvas. Letting go of last frame's picture first means clearing it
    // does not copy it.
    setOutput(*image_, Value());
    if (!target_ || target_->pixelSize() != size)
        target_ = context.backend().makeTarget(size);
    else
        target_->clear(Color{0, 0, 0, 0});
    RenderTarget* target = target_.get();
    RenderTarget* previous = context.setTarget(target);
    const QMatrix4x4 savedTransform = context.modelView();
    context.modelView().setToIdentity();
    context.renderConsumers(*this);
    context.modelView() = savedTransform;
    context.setTarget(previous);
    setOutput(*image_, target->snapshot());
}

namespace {

// Whether what the children draw follows from the macro's inputs alone.
bool dependsOnInputsAlone(const MacroPatch& macro)
{
    for (const auto& child : macro.children()) {
        if (child->timebase() != Timebase::Parent) return false;
        const auto* nested = dynamic_cast<const MacroPatch*>(child.get());
        // A nested image renderer runs every frame by its nature, not because
        // of what it holds: look inside it instead.
        const bool imageRenderer = dynamic_cast<const RenderInImagePatch*>(child.get()) != nullptr;
        if (!imageRenderer && !child->readsOnlyTheDestinationSize() && child->timeMode() != TimeMode::None)
            return false;
        if (nested && !dependsOnInputsAlone(*nested)) return false;
    }
    return true;
}

}  // namespace

bool RenderInImagePatch::contentIsStatic()
{
    if (!contentIsStatic_) contentIsStatic_ = dependsOnInputsAlone(*this);
    return *contentIsStatic_;
}

IteratorPatch::IteratorPatch(const PatchSetup& setup) : MacroPatch(setup)
{
    count_ = &addInput(QStringLiteral("inputCount"), PortType::Index, 1);
}

void IteratorPatch::execute(ExecutionContext& context, double)
{
    // Very large counts are capped; each iteration is a full pass.
    const int count = std::min(index(count_), 10000);
    context.iterations().push_back({0, count});
    for (int i = 0; i < count; ++i) {
        context.iterations().back().index = i;
        context.newPass();
        context.renderConsumers(*this);
    }
    context.iterations().pop_back();
    context.newPass();
}

IteratorVariablesPatch::IteratorVariablesPatch(const PatchSetup& setup) : Patch(setup)
{
    index_ = &addOutput(QStringLiteral("outputIndex"), PortType::Index);
    count_ = &addOutput(QStringLiteral("outputCount"), PortType::Index);
    position_ = &addOutput(QStringLiteral("outputPosition"), PortType::Number);
}

void IteratorVariablesPatch::execute(ExecutionContext& context, double)
{
    if (context.iterations().empty()) {
        setOutput(*index_, 0);
        setOutput(*count_, 1);
        setOutput(*position_, 0.0);
        return;
    }
    const auto& iteration = context.iterations().back();
    setOutput(*index_, iteration.index);
    setOutput(*count_, iteration.count);
    setOutput(*position_, iteration.count > 1 ? double(iteration.index) / (iteration.count - 1) : 0.0);
}

CameraPatch::CameraPatch(const PatchSetup& setup) : MacroPatch(setup)
{
    for (const char* axis : {"X", "Y", "Z"}) {
        origin_.push_back(&addInput(QStringLiteral("inputOrigin") + QLatin1String(axis), PortType::Number, 0.0));
        rotate_.push_back(&addInput(QStringLiteral("inputRotate") + QLatin1String(axis), PortType::Number, 0.0));
        translate_.push_back(&addInput(QStringLiteral("inputTranslate") + QLatin1String(axis), PortType::Number, 0.0));
        scale_.push_back(&addInput(QStringLiteral("inputScale") + QLatin1String(axis), PortType::Number, 1.0));
    }
}

void CameraPatch::execute(ExecutionContext& context, double)
{
    const QMatrix4x4 saved = context.modelView();
    QMatrix4x4 m;
    // Translate, then rotate and scale about the origin point.
    m.translate(float(number(translate_[0])), float(number(translate_[1])), float(number(translate_[2])));
    const QVector3D origin(float(number(origin_[0])), float(number(origin_[1])), float(number(origin_[2])));
    m.translate(origin);
    m.rotate(float(number(rotate_[0])), 1, 0, 0);
    m.rotate(float(number(rotate_[1])), 0, 1, 0);
    m.rotate(float(number(rotate_[2])), 0, 0, 1);
    m.scale(float(number(scale_[0])), float(number(scale_[1])), float(number(scale_[2])));
    m.translate(-origin);
    context.modelView() = saved * m;
    context.renderConsumers(*this);
    context.modelView() = saved;
}

void registerMacroPatches(PatchRegistry& registry)
{
    registry.add(QStringLiteral("QCPatch"), factoryOf<MacroPatch>());
    registry.add(QStringLiteral("QCRenderInImage"), factoryOf<RenderInImagePatch>());
    registry.add(QStringLiteral("QCIterator"), factoryOf<IteratorPatch>());
    registry.add(QStringLiteral("QCIteratorVariables"), factoryOf<IteratorVariablesPatch>());
    registry.add(QStringLiteral("QCCamera"), factoryOf<CameraPatch>());
}

}  // namespace runtime
