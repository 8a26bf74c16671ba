#include "cli/Command.h"
#include "psd/PngEncoder.h"
#include "psd/PsdDocument.h"
#include "psd/TaskRunner.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>

#include <vector>

namespace cli {
namespace {

constexpr const char* kUsageText = "usage: velloran-cli psd layers FILE.psd\n"
                                   "       velloran-cli psd export FILE.psd DIR\n";

// Names longer than this many UTF-8 bytes are cut, so that "NNN-", the name
// and ".png" stay well inside the usual 255-byte limit of a file name.
constexpr int kMaxNameBytes = 100;

// The layer name made safe as part of a file name on any common file system.
QString safeFileName(const QString& name)
{
    static const QString unsafe = QStringLiteral("/\\:*?\"<>|");
    QString safe;
    for (const QChar c : name) safe.append(c.category() == QChar::Other_Control || unsafe.contains(c) ? QChar('_') : c);
    // Cut at a character boundary, never between the halves of a surrogate pair.
    int bytes = 0, end = 0;
    while (end < safe.size()) {
        const int step = safe[end].isHighSurrogate() && end + 1 < safe.size() ? 2 : 1;
        const int size = int(safe.mid(end, step).toUtf8().size());
        if (bytes + size > kMaxNameBytes) break;
        bytes += size;
        end += step;
    }
    safe.truncate(end);
    // A leading dot hides a file; trailing dots and spaces are dropped by some systems.
    for (int i = 0; i < safe.size() && safe[i] == QLatin1Char('.'); ++i) safe[i] = QLatin1Char('_');
    for (int i = int(safe.size()) - 1; i >= 0 && (safe[i] == QLatin1Char('.') || safe[i] == QLatin1Char(' ')); --i)
        safe[i] = QLatin1Char('_');
    return safe.isEmpty() ? QStringLiteral("layer") : safe;
}

QJsonArray toJson(const QStringList& list)
{
    QJsonArray array;
    for (const QString& s : list) array.append(s);
    return array;
}

std::optional<psd::Document> readDocument(const QString& path, bool pixels, Streams& io)
{
    std::string error;
    psd::DecodeOptions options;
    options.layerPixels = pixels;
    options.composite = false;
    auto doc = psd::decodeFile(path, &error, options);
    if (!doc) io.err << "velloran-cli: cannot read " << path << ": " << QString::fromStdString(error) << "\n";
    return doc;
}

// psd layers FILE: the layer records in the editor's canvas coordinates
// (origin lower-left, y up). Pixels are not decoded.
int listLayers(const QString& path, Streams& io)
{
    const auto doc = readDocument(path, false, io);
    if (!doc) return kFailure;
    QJsonArray layers;
    for (const psd::Layer& layer : doc->layers) {
        layers.append(QJsonObject{
            {"name", layer.name},
            {"x", layer.canvasX()},
            {"y", layer.canvasY(doc->height)},
            {"width", layer.bounds.width()},
            {"height", layer.bounds.height()},
            {"opacity", layer.opacity},
            {"visible", layer.shownInDocument()},
        });
    }
    const QJsonObject root{{"width", doc->width}, {"height", doc->height}, {"layers", layers}};
    io.out << QString::fromUtf8(QJsonDocument(root).toJson(QJsonDocument::Indented));
    return kSuccess;
}

// psd export FILE DIR: every layer as NNN-<name>.png, bottom first, and index.json.
int exportLayers(const QString& path, const QString& dirPath, Streams& io)
{
    const auto doc = readDocument(path, true, io);
    if (!doc) return kFailure;
    QDir dir(dirPath);
    if (!QDir().mkpath(dirPath) || !QFileInfo(dirPath).isDir()) {
        io.err << "velloran-cli: cannot create the folder " << dirPath << "\n";
        return kFailure;
    }

    struct Output {
        const psd::Layer* layer;
        QString file;  // empty for a layer without pixels
        QString path;  // made here, so the writing threads share nothing but what they read
    };
    std::vector<Output> outputs;
    QJsonArray layers;
    for (auto it = doc->layers.rbegin(); it != doc->layers.rend(); ++it) {
        const int index = int(outputs.size());
        const QString file = it->image.isNull()
                                 ? QString()
                                 : QStringLiteral("%1-%2.png").arg(index, 3, 10, QLatin1Char('0')).arg(safeFileName(it->name));
        outputs.push_back({&*it, file, file.isEmpty() ? QString() : dir.filePath(file)});
        layers.append(QJsonObject{
            {"index", index},
            {"name", it->name},
            {"file", file.isEmpty() ? QJsonValue(QJsonValue::Null) : QJsonValue(file)},
            {"x", it->canvasX()},
            {"y", it->canvasY(doc->height)},
            {"width", it->bounds.width()},
            {"height", it->bounds.height()},
            {"opacity", it->opacity},
            {"visible", it->shownInDocument()},
            {"blendMode", QString::fromLatin1(it->blendMode)},
            {"groupPath", toJson(it->groupPath)},
        });
    }

    // The encoding is most of the work: one layer per core at a time.
    std::vector<std::string> errors(outputs.size());
    psd::runTasks(int(outputs.size()), 0, [&](int i) {
        const Output& output = outputs[size_t(i)];
        if (output.file.isEmpty()) return true;
        return psd::savePng(output.layer->image, output.path, &errors[size_t(i)]);
    });
    for (size_t i = 0; i < outputs.size(); ++i) {
        if (errors[i].empty()) continue;
        io.err << "velloran-cli: cannot write " << outputs[i].path << ": "
               << QString::fromStdString(errors[i]) << "\n";
        return kFailure;
    }

    const QJsonObject root{{"width", doc->width}, {"height", doc->height}, {"layers", layers}};
    const QByteArray json = QJsonDocument(root).toJson(QJsonDocument::Indented);
    QSaveFile index(dir.filePath(QStringLiteral("index.json")));
    if (!index.open(QIODevice::WriteOnly) || index.write(json) != json.size() || !index.commit()) {
        io.err << "velloran-cli: cannot write " << index.fileName() << ": " << index.errorString() << "\n";
        return kFailure;
    }
    return kSuccess;
}

}  // namespace

int runPsdCommand(const QStringList& args, Streams& io)
{
    if (args.size() == 2 && args[0] == QLatin1String("layers")) return listLayers(args[1], io);
    if (args.size() == 3 && args[0] == QLatin1String("export")) return exportLayers(args[1], args[2], io);
    io.err << kUsageText;
    return kUsage;
}

}  // namespace cli
