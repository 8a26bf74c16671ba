#include "cli/Command.h"
#include "psd/PsdDocument.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace cli {

// psd layers FILE: the layer records in the editor's canvas coordinates
// (origin lower-left, y up). Pixels are not decoded.
int runPsdCommand(const QStringList& args, Streams& io)
{
    if (args.size() != 2 || args[0] != QLatin1String("layers")) {
        io.err << "usage: velloran-cli psd layers FILE.psd\n";
        return kUsage;
    }
    std::string error;
    psd::DecodeOptions options;
    options.layerPixels = false;
    options.composite = false;
    const auto doc = psd::decodeFile(args[1], &error, options);
    if (!doc) {
        io.err << "velloran-cli: cannot read " << args[1] << ": " << QString::fromStdString(error) << "\n";
        return kFailure;
    }
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

}  // namespace cli
