// Mesh Importer (QCCore3DLoader): a 3-D model file as a mesh, for a Mesh
// Renderer to draw. The path (input "inputPath", else the stored "path")
// is relative to the composition's folder or absolute.
//
// Files are read through the process-wide ModelCache: once per path, on a
// worker thread. A path stored in the file is read while the composition
// loads, so its errors are among the composition's problems and the first
// frame has the model. A path that arrives later is waited for at most
// kFirstFrameWait in the frame that asks; the output then stays empty and
// the patch looks again each frame until the model is there.

#include "runtime/CompositionResources.h"
#include "runtime/ExecutionContext.h"
#include "runtime/ModelLoader.h"
#include "runtime/RendererServices.h"
#include "runtime/patches/PatchFamilies.h"

#include <QDir>

#include <chrono>

namespace runtime {

namespace {

constexpr auto kFirstFrameWait = std::chrono::milliseconds(100);

QString resolved(const QString& path, const QString& directory)
{
    if (path.isEmpty() || QDir::isAbsolutePath(path)) return path;
    return QDir(directory.isEmpty() ? QDir::currentPath() : directory).absoluteFilePath(path);
}

class ModelImporterPatch : public Patch {
public:
    explicit ModelImporterPatch(const PatchSetup& setup) : Patch(setup)
    {
        const QString stored = stateString(setup, "path");
        path_ = &addInput(QStringLiteral("inputPath"), PortType::String, stored);
        mesh_ = &addOutput(QStringLiteral("outputMesh"), PortType::Mesh);
        const QString file = resolved(stored, setup.resources ? setup.resources->directory() : QString());
        if (!file.isEmpty()) {
            const LoadedModel& model = ModelCache::shared().request(file).get();
            if (!model.error.isEmpty()) setup.report(model.error);
        }
    }
    // Polls the worker only while a reading is under way.
    TimeMode timeMode() const override { return pending_.valid() ? TimeMode::Idle : TimeMode::None; }
    void reset() override
    {
        requested_.clear();
        pending_ = {};
    }
    void execute(ExecutionContext& context, double) override
    {
        const QString file = resolved(path_->value.toString(), context.services().compositionDirectory);
        if (file != requested_) {
            requested_ = file;
            pending_ = file.isEmpty() ? std::shared_future<LoadedModel>() : ModelCache::shared().request(file);
            if (file.isEmpty()) setOutput(*mesh_, Value());
            if (pending_.valid()) pending_.wait_for(kFirstFrameWait);
        }
        if (!pending_.valid() || pending_.wait_for(std::chrono::seconds(0)) != std::future_status::ready) return;
        const LoadedModel& model = pending_.get();
        if (!model.error.isEmpty()) context.services().logOnce(QStringLiteral("%1: %2").arg(path(), model.error));
        setOutput(*mesh_, model.mesh);
        pending_ = {};
    }

private:
    InputPort* path_;
    OutputPort* mesh_;
    QString requested_;
    std::shared_future<LoadedModel> pending_;
};

}  // namespace

void registerModelPatches(PatchRegistry& registry)
{
    registry.add(QStringLiteral("QCCore3DLoader"), factoryOf<ModelImporterPatch>());
}

}  // namespace runtime
