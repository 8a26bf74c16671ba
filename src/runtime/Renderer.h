#pragma once
// A running instance of a composition: its own port values and patch state
// over a shared, immutable template. Many renderers may share one
// Composition. A renderer is used from one thread at a time.

#include "runtime/BackendFactory.h"
#include "runtime/Composition.h"

#include <QImage>
#include <QSize>
#include <QTransform>
#include <QVariantMap>

#include <memory>
#include <optional>

namespace runtime {

class ExecutionContext;
class MacroPatch;
class Patch;
class RendererServices;
class RenderTarget;

class Renderer {
public:
    // `size`: the pixel size of the renderer's own offscreen image.
    // The backend is OpenGL or raster as `backend` asks (falling back to
    // raster where no OpenGL context can be made).
    explicit Renderer(std::shared_ptr<const Composition> composition, QSize size = QSize(640, 480),
                      BackendPreference backend = defaultBackendPreference());
    ~Renderer();
    Renderer(const Renderer&) = delete;
    Renderer& operator=(const Renderer&) = delete;

    const Composition& composition() const { return *composition_; }
    BackendKind backendKind() const { return backendKind_; }

    // Published ports of the root patch.
    QStringList inputKeys() const;
    QStringList outputKeys() const;
    // False when the root publishes no input of that key.
    bool setInputValue(const QString& key, const QVariant& value);
    bool setInputPortValue(const QString& key, const Value& value);
    QVariant inputValue(const QString& key) const;
    // Output values as of the last render.
    QVariant outputValue(const QString& key) const;
    Value outputPortValue(const QString& key) const;

    // Renders one frame into the renderer's own image (which is not cleared
    // first: a composition without a Clear patch draws over the last frame).
    void render(double time, const QVariantMap& arguments = {});
    // Renders into the caller's image, e.g. a canvas shared by many
    // renderers; `view` maps destination units before the pixel mapping.
    void render(double time, QImage& target, const QVariantMap& arguments = {}, const QTransform& view = {});
    // Renders into any target of a backend (the canvas's, a GL surface).
    void render(double time, RenderTarget& target, const QVariantMap& arguments = {});
    QSize size() const;
    void setSize(QSize size);  // a new, transparent image
    QImage snapshot() const;   // the renderer's own image

    QVariantMap& userInfo();
    // Forgets patch state (held values, stop frames, local times) as if
    // the composition had just been loaded; port values stay.
    void reset();

    // Graph surgery on the root patch of this instance.
    // Adds a patch by class name ("QCSprite"; "QLN..." names a plug-in of
    // ours) and returns its key ("Sprite_1"), or an empty string on failure.
    QString addPatch(const QString& className, const plist::Value& state = {}, QString* error = nullptr);
    bool connect(const QString& sourceNode, const QString& sourcePort, const QString& destinationNode,
                 const QString& destinationPort, QString* error = nullptr);
    bool canConnect(const QString& sourceNode, const QString& sourcePort, const QString& destinationNode,
                    const QString& destinationPort) const;
    bool removeNode(const QString& key);
    QStringList nodeKeys() const;  // the root's children, in layer order
    QString nodeClassName(const QString& key) const;

    struct NodePort {
        QString node;
        QString port;
        QString className;
    };
    // The first child of the root (in layer order) with an image output
    // named "outputImage" that can feed an image input.
    std::optional<NodePort> firstImageOutput() const;
    // Sets "_enable" of every QCClear at the root to false; returns how many.
    int disableClearPatches();

    // Ports of a node by path ("Sprite_1" or "Patch_1/Sprite_2").
    bool setNodeInputValue(const QString& nodePath, const QString& port, const QVariant& value);
    QVariant nodeInputValue(const QString& nodePath, const QString& port) const;
    QVariant nodeOutputValue(const QString& nodePath, const QString& port) const;

private:
    Patch* nodeAt(const QString& path) const;
    void renderInto(double time, RenderTarget& target, const QVariantMap& arguments);

    std::shared_ptr<const Composition> composition_;
    std::unique_ptr<RendererServices> services_;
    std::unique_ptr<Backend> backend_;
    BackendKind backendKind_ = BackendKind::Raster;
    std::unique_ptr<ExecutionContext> context_;
    std::unique_ptr<MacroPatch> root_;
    RenderTarget& ownTarget() const;

    QSize size_;
    // The renderer's own image, made on first use and kept, painter and
    // all, from frame to frame.
    mutable std::unique_ptr<RenderTarget> ownTarget_;
};

}  // namespace runtime
