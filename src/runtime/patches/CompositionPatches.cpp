// Patches about other compositions: Patch Renderer draws a composition file
// inside this one, Patch Info reads a file's attributes, Repository
// Compositions lists the system's composition repository, which does not
// exist here (an empty list). Repository identifiers ("/gradient") name no
// file either; a Patch Renderer given one draws nothing.

#include "runtime/ExecutionContext.h"
#include "runtime/PortType.h"
#include "runtime/Renderer.h"
#include "runtime/RendererServices.h"
#include "runtime/patches/PatchFamilies.h"

#include <QDir>
#include <QFileInfo>

namespace runtime {

namespace {

QString resolved(const QString& path, const RendererServices& services)
{
    if (path.isEmpty() || !QDir::isRelativePath(path) || services.compositionDirectory.isEmpty()) return path;
    return QDir(services.compositionDirectory).filePath(path);
}

// A repository identifier is a name with a leading slash and no file there.
std::shared_ptr<const Composition> loadComposition(const QString& path, QString* error)
{
    if (path.isEmpty()) return nullptr;
    if (!QFileInfo(path).isFile()) {
        *error = QStringLiteral("no composition file %1").arg(path);
        return nullptr;
    }
    return Composition::loadFile(path, error);
}

class PatchRendererPatch : public Patch {
public:
    explicit PatchRendererPatch(const PatchSetup& setup) : Patch(setup)
    {
        path_ = &addInput(QStringLiteral("inputPath"), PortType::String);
        // The inputs of the composition it renders, as the file lists them.
        if (const plist::Value* list = setup.state.find("compositionInputs"); list && list->isArray())
            for (const plist::Value& entry : list->array()) {
                const QString key = QString::fromStdString(entry.value("key").string());
                if (key.isEmpty() || input(key)) continue;
                const PortType type = portTypeFromPortClass(entry.value("class").string()).value_or(PortType::Virtual);
                InputPort& port = addInput(key, type);
                if (const plist::Value* value = entry.value("state").find("value")) port.setValue(Value::fromPlist(*value));
                forwarded_.push_back(&port);
            }
    }
    ExecutionMode executionMode() const override { return ExecutionMode::Consumer; }
    void reset() override { renderer_.reset(), loadedPath_.clear(); }
    void execute(ExecutionContext& context, double time) override
    {
        RenderTarget* target = context.target();
        if (!target) return;
        const QString path = resolved(path_->value.toString(), context.services());
        if (path != loadedPath_) {
            loadedPath_ = path;
            renderer_.reset();
            QString error;
            if (auto composition = loadComposition(path, &error))
                renderer_ = std::make_unique<Renderer>(composition, target->pixelSize(), BackendPreference::Raster);
            else if (!error.isEmpty())
                context.services().logOnce(QStringLiteral("%1: %2").arg(this->path(), error));
        }
        if (!renderer_) return;
        // A file that renders itself would nest without end.
        thread_local int nesting = 0;
        if (nesting >= kMaxNesting) return;
        ++nesting;
        // "_protocolInput_X" feeds the rendered composition's "X" (a
        // protocol's input), any other key the input of that name.
        for (InputPort* port : forwarded_) {
            QString key = port->key;
            if (key.startsWith(QLatin1String("_protocolInput_"))) key = key.mid(15);
            renderer_->setInputPortValue(key, port->value);
        }
        renderer_->render(time, *target);
        --nesting;
    }

private:
    static constexpr int kMaxNesting = 8;
    InputPort* path_;
    std::vector<InputPort*> forwarded_;
    QString loadedPath_;
    std::unique_ptr<Renderer> renderer_;
};

class PatchInfoPatch : public Patch {
public:
    explicit PatchInfoPatch(const PatchSetup& setup) : Patch(setup)
    {
        path_ = &addInput(QStringLiteral("inputPath"), PortType::String);
        metadata_ = &addOutput(QStringLiteral("outputMetadata"), PortType::Structure);
    }
    void execute(ExecutionContext& context, double) override
    {
        QString error;
        const auto composition = loadComposition(resolved(path_->value.toString(), context.services()), &error);
        std::vector<Structure::Member> members;
        if (composition) {
            members.push_back({QStringLiteral("path"), Value(path_->value.toString())});
            members.push_back({QStringLiteral("name"), Value(QFileInfo(path_->value.toString()).completeBaseName())});
            QStringList inputs = composition->inputKeys();
            std::vector<Structure::Member> keys;
            for (const QString& key : inputs) keys.push_back({QString(), Value(key)});
            members.push_back({QStringLiteral("inputKeys"), Value(std::make_shared<const Structure>(std::move(keys)))});
        }
        setOutput(*metadata_, Value(std::make_shared<const Structure>(std::move(members))));
    }

private:
    InputPort* path_;
    OutputPort* metadata_;
};

class RepositoryCompositionsPatch : public Patch {
public:
    explicit RepositoryCompositionsPatch(const PatchSetup& setup) : Patch(setup)
    {
        addInput(QStringLiteral("inputProtocol"), PortType::Index, 0);
        compositions_ = &addOutput(QStringLiteral("outputCompositions"), PortType::Structure);
    }
    void execute(ExecutionContext&, double) override
    {
        setOutput(*compositions_, Value(std::make_shared<const Structure>()));
    }

private:
    OutputPort* compositions_;
};

}  // namespace

void registerCompositionPatches(PatchRegistry& registry)
{
    registry.add(QStringLiteral("QCPatchRenderer"), factoryOf<PatchRendererPatch>());
    registry.add(QStringLiteral("QCPatchInfo"), factoryOf<PatchInfoPatch>());
    registry.add(QStringLiteral("QCRepositoryCompositions"), factoryOf<RepositoryCompositionsPatch>());
}

}  // namespace runtime
