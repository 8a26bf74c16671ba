// Directory Scanner: the files of a folder (relative to the composition's
// folder), listed off the rendering thread; until the list arrives the
// output keeps its value and a frame never waits. Each file is a structure
// with "url" (a file URL), "path" and "name"; `fileType` public.image,
// public.movie, public.audio keep those kinds by extension, anything else
// keeps every file.

#include "runtime/ExecutionContext.h"
#include "runtime/RendererServices.h"
#include "runtime/patches/PatchFamilies.h"

#include <QDir>
#include <QDirIterator>
#include <QUrl>

#include <chrono>
#include <future>

namespace runtime {

namespace {

constexpr int kMaxFiles = 10000;

QStringList extensionsFor(const QString& fileType)
{
    if (fileType == QLatin1String("public.image"))
        return {"png", "jpg", "jpeg", "tif", "tiff", "gif", "bmp", "webp", "heic", "psd", "tga", "jp2", "exr"};
    if (fileType == QLatin1String("public.movie")) return {"mov", "mp4", "m4v", "avi", "mkv", "mpg", "mpeg"};
    if (fileType == QLatin1String("public.audio")) return {"aif", "aiff", "wav", "mp3", "m4a", "aac", "flac", "ogg"};
    return {};
}

std::vector<Structure::Member> scan(const QString& folder, const QStringList& extensions, bool recursive)
{
    std::vector<Structure::Member> files;
    QDirIterator it(folder, QDir::Files | QDir::Readable, recursive ? QDirIterator::Subdirectories : QDirIterator::NoIteratorFlags);
    QStringList paths;
    while (it.hasNext() && paths.size() < kMaxFiles) {
        const QString path = it.next();
        if (extensions.isEmpty() || extensions.contains(it.fileInfo().suffix().toLower())) paths << path;
    }
    paths.sort();  // the order directories list in is not stable
    for (const QString& path : paths)
        files.push_back({QString(), Value(std::make_shared<const Structure>(std::vector<Structure::Member>{
                                        {QStringLiteral("url"), Value(QUrl::fromLocalFile(path).toString())},
                                        {QStringLiteral("path"), Value(path)},
                                        {QStringLiteral("name"), Value(QFileInfo(path).fileName())}}))});
    return files;
}

class DirectoryScannerPatch : public Patch {
public:
    explicit DirectoryScannerPatch(const PatchSetup& setup)
        : Patch(setup),
          extensions_(extensionsFor(stateString(setup, "fileType"))),
          recursive_(stateBool(setup, "recursive", false))
    {
        folder_ = &addInput(QStringLiteral("inputPath"), PortType::String);
        signal_ = &addInput(QStringLiteral("inputSignal"), PortType::Boolean, false);
        files_ = &addOutput(QStringLiteral("outputFiles"), PortType::Structure);
        arrived_ = &addOutput(QStringLiteral("outputSignal"), PortType::Boolean);
    }
    TimeMode timeMode() const override { return TimeMode::Idle; }
    void reset() override
    {
        scanned_.reset();
        lastSignal_ = false;
    }
    void execute(ExecutionContext& context, double) override
    {
        QString folder = folder_->value.toString();
        if (QDir::isRelativePath(folder) && !folder.isEmpty() && !context.services().compositionDirectory.isEmpty())
            folder = QDir(context.services().compositionDirectory).filePath(folder);
        const bool signal = boolean(signal_);
        if (!scanning_.valid() && !folder.isEmpty() && (!scanned_ || *scanned_ != folder || (signal && !lastSignal_))) {
            scanned_ = folder;
            scanning_ = std::async(std::launch::async, scan, folder, extensions_, recursive_);
        }
        lastSignal_ = signal;
        const bool ready = scanning_.valid() && scanning_.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
        setOutput(*arrived_, ready);
        if (ready) setOutput(*files_, Value(std::make_shared<const Structure>(scanning_.get())));
    }

private:
    QStringList extensions_;
    bool recursive_;
    InputPort* folder_;
    InputPort* signal_;
    OutputPort* files_;
    OutputPort* arrived_;
    std::optional<QString> scanned_;
    bool lastSignal_ = false;
    std::future<std::vector<Structure::Member>> scanning_;
};

}  // namespace

void registerFilePatches(PatchRegistry& registry)
{
    registry.add(QStringLiteral("QCDirectoryScanner"), factoryOf<DirectoryScannerPatch>());
}

}  // namespace runtime
