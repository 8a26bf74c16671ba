#include "psd/PSDLayerImporter.h"

#include "psd/LayerTrimming.h"
#include "psd/TaskRunner.h"

#include <QFile>
#include <QFileInfo>
#include <QPainter>

namespace psd {

PSDLayer::PSDLayer(QImage image, QString name, QPointF origin, double opacity, bool visible)
    : image_(std::move(image)), name_(std::move(name)), origin_(origin), opacity_(opacity), visible_(visible)
{
}

void PSDLayer::setVisible(bool visible)
{
    if (visible == visible_) return;
    visible_ = visible;
    visibleObservers_.notify(visible_);
}

QString PSDLayer::description() const
{
    return QStringLiteral("<PSDLayer: %1> name: %2, origin: {%3, %4}, opacity: %5 is visible: %6")
        .arg(quintptr(this), 0, 16)
        .arg(name_)
        .arg(origin_.x())
        .arg(origin_.y())
        .arg(opacity_, 4, 'f', 2)
        .arg(visible_ ? QStringLiteral("Yes") : QStringLiteral("No"));
}

std::optional<PSDLayerImporter> PSDLayerImporter::fromPath(const QString& path, bool flippedCoordinates,
                                                           std::string* error, const DecodeOptions& options)
{
    const QFileInfo info(path);
    if (!info.exists() || info.isDir()) {
        if (error) *error = path.toStdString() + (info.isDir() ? " is a folder" : " does not exist");
        return std::nullopt;
    }
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        if (error) *error = "cannot open " + path.toStdString() + ": " + file.errorString().toStdString();
        return std::nullopt;
    }
    // Decoding from a mapping spares a heap copy of the whole file; the
    // images own their pixels, so nothing refers to the mapping afterwards.
    const uchar* mapped = file.size() > 0 ? file.map(0, file.size()) : nullptr;
    const QByteArray bytes = mapped ? QByteArray() : file.readAll();
    const QByteArrayView data = mapped ? QByteArrayView(reinterpret_cast<const char*>(mapped), file.size())
                                       : QByteArrayView(bytes);
    auto importer = fromData(data, flippedCoordinates, error, options);
    if (importer) importer->path_ = path;
    return importer;
}

std::optional<PSDLayerImporter> PSDLayerImporter::fromData(QByteArrayView data, bool flippedCoordinates,
                                                           std::string* error, const DecodeOptions& options)
{
    if (data.isEmpty()) {
        if (error) *error = "no data";
        return std::nullopt;
    }
    PSDLayerImporter importer(flippedCoordinates);
    if (!importer.loadPSDFromData(data, error, options)) return std::nullopt;
    return importer;
}

bool PSDLayerImporter::loadPSDFromData(QByteArrayView data, std::string* error, const DecodeOptions& options)
{
    auto doc = decode(data, error, options);
    if (!doc) return false;
    imageSize_ = QSizeF(doc->width, doc->height);
    merged_ = std::move(doc->composite);
    layers_.clear();
    // Adjustment and other empty layers have nothing to show as an image component.
    std::erase_if(doc->layers, [](const Layer& layer) { return layer.bounds.isEmpty() || layer.image.isNull(); });
    // Each layer cut to what it shows and premultiplied, on every core: the
    // same picture at the same place, without its transparent margins.
    std::vector<QPoint> offsets(doc->layers.size());
    runTasks(int(doc->layers.size()), 0, [&](int i) {
        Layer& layer = doc->layers[size_t(i)];
        layer.image = trimmedPremultiplied(layer.image, &offsets[size_t(i)]);
        return true;
    });
    for (size_t i = 0; i < doc->layers.size(); ++i) {
        Layer& layer = doc->layers[i];
        const QRect shown(layer.bounds.topLeft() + offsets[i], layer.image.size());
        const QPointF origin = flipped_ ? QPointF(shown.topLeft()) : QPointF(shown.left(), doc->height - (shown.bottom() + 1));
        layers_.emplace_back(std::move(layer.image), layer.name, origin, layer.opacity, layer.shownInDocument());
    }
    return true;
}

QString PSDLayerImporter::filename() const { return QFileInfo(path_).completeBaseName(); }

bool PSDLayerImporter::allLayersVisible() const
{
    for (const PSDLayer& layer : layers_)
        if (!layer.visible()) return false;
    return true;
}

QImage PSDLayerImporter::combinedImageOfVisibleLayers() const
{
    QImage combined(imageSize_.toSize(), QImage::Format_ARGB32_Premultiplied);
    combined.fill(Qt::transparent);
    QPainter painter(&combined);
    for (auto it = layers_.rbegin(); it != layers_.rend(); ++it) {
        if (!it->visible()) continue;
        const QImage& image = it->image();
        // QImage rows run down; unflipped origins count from the bottom.
        const QPointF topLeft = flipped_ ? it->origin()
                                         : QPointF(it->origin().x(), imageSize_.height() - it->origin().y() - image.height());
        painter.setOpacity(it->opacity());
        painter.drawImage(topLeft, image);
    }
    painter.end();
    return combined;
}

QString PSDLayerImporter::description() const
{
    QStringList lines;
    for (const PSDLayer& layer : layers_) lines.append(layer.description());
    return QStringLiteral("<PSDLayerImporter: %1> path: %2, layer count: %3, layers:\n%4")
        .arg(quintptr(this), 0, 16)
        .arg(path_)
        .arg(layerCount())
        .arg(lines.join(QLatin1Char('\n')));
}

}  // namespace psd
