#include "runtime/Renderer.h"

#include "runtime/CompositionResources.h"
#include "runtime/ExecutionContext.h"
#include "runtime/GraphBuilder.h"
#include "runtime/MacroPatch.h"
#include "runtime/PatchRegistry.h"
#include "runtime/RasterBackend.h"
#include "runtime/RendererServices.h"

namespace runtime {

namespace {

void forgetState(Patch& patch)
{
    patch.evaluation = Patch::Evaluation();
    patch.reset();
    if (MacroPatch* macro = patch.asMacro())
        for (const auto& child : macro->children()) forgetState(*child);
}

bool carriesImages(PortType type)
{
    return type == PortType::Image || type == PortType::Virtual;
}

}  // namespace

Renderer::Renderer(std::shared_ptr<const Composition> composition, QSize size, BackendPreference backend)
    : composition_(std::move(composition)), services_(std::make_unique<RendererServices>())
{
    MadeBackend made = makeBackend(backend);
    backend_ = std::move(made.backend);
    backendKind_ = made.kind;
    context_ = std::make_unique<ExecutionContext>(*backend_, *services_);
    services_->compositionDirectory = composition_->directory();
    root_ = GraphBuilder(composition_->document(), composition_->resources(), nullptr).buildRoot();
    setSize(size);
}

Renderer::~Renderer() = default;

QStringList Renderer::inputKeys() const
{
    return composition_->inputKeys();
}

QStringList Renderer::outputKeys() const
{
    return composition_->outputKeys();
}

bool Renderer::setInputValue(const QString& key, const QVariant& value)
{
    return setInputPortValue(key, Value::fromVariant(value));
}

bool Renderer::setInputPortValue(const QString& key, const Value& value)
{
    InputPort* port = root_->input(key);
    if (!port) return false;
    port->setValue(value);
    return true;
}

QVariant Renderer::inputValue(const QString& key) const
{
    InputPort* port = root_->input(key);
    return port ? port->value.toVariant() : QVariant();
}

QVariant Renderer::outputValue(const QString& key) const
{
    return outputPortValue(key).toVariant();
}

Value Renderer::outputPortValue(const QString& key) const
{
    OutputPort* port = root_->output(key);
    return port ? port->value : Value();
}

void Renderer::render(double time, const QVariantMap& arguments)
{
    renderInto(time, ownTarget(), arguments);
}

void Renderer::render(double time, QImage& target, const QVariantMap& arguments, const QTransform& view)
{
    if (target.isNull()) return;
    auto wrapped = backend_->wrapImage(&target, view);
    renderInto(time, *wrapped, arguments);
}

void Renderer::render(double time, RenderTarget& target, const QVariantMap& arguments)
{
    renderInto(time, target, arguments);
}

void Renderer::renderInto(double time, RenderTarget& target, const QVariantMap& arguments)
{
    context_->beginFrame(time, &target, &arguments);
    context_->renderConsumer(*root_);
    // Published outputs are evaluated every frame, whether or not a
    // renderer pulled them.
    for (const auto& out : root_->outputs()) context_->ensure(*out);
    context_->endFrame();
    target.finish();
}

QSize Renderer::size() const
{
    return size_;
}

void Renderer::setSize(QSize size)
{
    size_ = size.expandedTo(QSize(1, 1));
    ownTarget_.reset();
}

// Made on first use: a renderer that only ever draws into its caller's
// target (each component on the canvas) never needs an image of its own, and
// at 4K that image would be 32 MB a component.
RenderTarget& Renderer::ownTarget() const
{
    if (!ownTarget_) ownTarget_ = backend_->makeTarget(size_);
    return *ownTarget_;
}

// Shares the pixels: the next frame paints on a copy while this one is held.
QImage Renderer::snapshot() const
{
    return ownTarget().snapshot().raster();
}

QVariantMap& Renderer::userInfo()
{
    return services_->userInfo;
}

void Renderer::reset()
{
    forgetState(*root_);
}

QString Renderer::addPatch(const QString& className, const plist::Value& state, QString* error)
{
    plist::Value node = plist::Value::emptyDictionary();
    QString storedClass = className;
    if (className.startsWith(QLatin1String("QLN"))) {
        // Our own plug-ins are stored as plug-in nodes.
        storedClass = QStringLiteral("QCPlugInPatch");
        node.set("identifier", className.toStdString());
    }
    if (!PatchRegistry::standard().supports(storedClass, className == storedClass ? QString() : className)) {
        if (error) *error = QStringLiteral("unknown patch class %1").arg(className);
        return {};
    }
    node.set("class", storedClass.toStdString());
    const QString key = root_->uniqueChildKey(storedClass == className ? className : storedClass);
    node.set("key", key.toStdString());
    node.set("state", state.isDictionary() ? state : plist::Value::emptyDictionary());
    QStringList problems;
    std::unique_ptr<Patch> patch =
        GraphBuilder(composition_->document(), composition_->resources(), &problems).buildNode(node, QString());
    root_->addChild(std::move(patch));
    return key;
}

bool Renderer::connect(const QString& sourceNode, const QString& sourcePort, const QString& destinationNode,
                       const QString& destinationPort, QString* error)
{
    Patch* source = root_->child(sourceNode);
    Patch* destination = root_->child(destinationNode);
    OutputPort* out = source ? source->output(sourcePort) : nullptr;
    InputPort* in = destination ? destination->input(destinationPort) : nullptr;
    if (!out || !in) {
        if (error)
            *error = QStringLiteral("no port %1.%2").arg(out ? destinationNode : sourceNode, out ? destinationPort : sourcePort);
        return false;
    }
    if (!canConnect(sourceNode, sourcePort, destinationNode, destinationPort)) {
        if (error) *error = QStringLiteral("%1.%2 cannot feed %3.%4").arg(sourceNode, sourcePort, destinationNode, destinationPort);
        return false;
    }
    return root_->connect(*out, *in, error);
}

bool Renderer::canConnect(const QString& sourceNode, const QString& sourcePort, const QString& destinationNode,
                          const QString& destinationPort) const
{
    Patch* source = root_->child(sourceNode);
    Patch* destination = root_->child(destinationNode);
    OutputPort* out = source ? source->output(sourcePort) : nullptr;
    InputPort* in = destination ? destination->input(destinationPort) : nullptr;
    if (!out || !in || source == destination) return false;
    // Images only travel between image (or untyped) ports.
    const bool outImage = out->type == PortType::Image, inImage = in->type == PortType::Image;
    if (outImage && !carriesImages(in->type)) return false;
    if (inImage && !carriesImages(out->type)) return false;
    return true;
}

bool Renderer::removeNode(const QString& key)
{
    return root_->removeChild(key);
}

QStringList Renderer::nodeKeys() const
{
    QStringList keys;
    for (const auto& child : root_->children()) keys << child->key();
    return keys;
}

QString Renderer::nodeClassName(const QString& key) const
{
    Patch* node = root_->child(key);
    return node ? node->className() : QString();
}

std::optional<Renderer::NodePort> Renderer::firstImageOutput() const
{
    for (const auto& child : root_->children()) {
        OutputPort* out = child->output(u"outputImage");
        if (out && carriesImages(out->type)) return NodePort{child->key(), out->key, child->className()};
    }
    return std::nullopt;
}

int Renderer::disableClearPatches()
{
    int count = 0;
    for (const auto& child : root_->children()) {
        if (child->className() != QLatin1String("QCClear")) continue;
        InputPort& enable = child->enableInput();
        enable.connection = nullptr;
        enable.published = nullptr;
        enable.setValue(false);
        ++count;
    }
    return count;
}

Patch* Renderer::nodeAt(const QString& path) const
{
    // The canvas sets a component's ports by path several times a repaint:
    // a plain key is looked up without splitting it into a new list.
    if (!path.contains(QLatin1Char('/'))) return path.isEmpty() ? nullptr : root_->child(path);
    Patch* node = root_.get();
    for (const QString& key : path.split(QLatin1Char('/'), Qt::SkipEmptyParts)) {
        MacroPatch* macro = node ? node->asMacro() : nullptr;
        node = macro ? macro->child(key) : nullptr;
    }
    return node == root_.get() ? nullptr : node;
}

bool Renderer::setNodeInputValue(const QString& nodePath, const QString& port, const QVariant& value)
{
    Patch* node = nodeAt(nodePath);
    InputPort* in = node ? node->input(port) : nullptr;
    if (!in) return false;
    in->setValue(Value::fromVariant(value));
    // A Render In Image around the node would otherwise keep its picture.
    if (MacroPatch* parent = node->parent()) parent->contentsChangedBelow();
    return true;
}

QVariant Renderer::nodeInputValue(const QString& nodePath, const QString& port) const
{
    Patch* node = nodeAt(nodePath);
    InputPort* in = node ? node->input(port) : nullptr;
    return in ? in->value.toVariant() : QVariant();
}

QVariant Renderer::nodeOutputValue(const QString& nodePath, const QString& port) const
{
    Patch* node = nodeAt(nodePath);
    OutputPort* out = node ? node->output(port) : nullptr;
    return out ? out->value.toVariant() : QVariant();
}

}  // namespace runtime
