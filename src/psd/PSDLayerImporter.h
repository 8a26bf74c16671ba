#pragma once
// The Photoshop import's model-free half: a document's layers as the import
// sheet and the canvas use them (image, name, origin, opacity, visibility).
// The sheet, its preview view and the component creation live with the canvas.

#include "psd/PsdDocument.h"
#include "psd/ValueObservers.h"

#include <QImage>
#include <QPointF>
#include <QSizeF>
#include <QString>

#include <optional>
#include <string>
#include <vector>

namespace psd {

class PSDLayer {
public:
    PSDLayer(QImage image, QString name, QPointF origin, double opacity, bool visible);

    const QImage& image() const { return image_; }  // straight RGBA8888
    const QString& name() const { return name_; }
    QPointF origin() const { return origin_; }      // lower-left corner, in the importer's coordinates
    double opacity() const { return opacity_; }     // 0..1
    bool visible() const { return visible_; }       // whether the layer takes part in the import
    // Tells the visibility observers when the value actually changes.
    void setVisible(bool visible);

    // The import sheet's preview and layer list follow the switch through
    // these; the token removes the observer again.
    int addVisibleObserver(ValueObservers<bool>::Callback callback)
    {
        return visibleObservers_.add(std::move(callback));
    }
    void removeVisibleObserver(int token) { visibleObservers_.remove(token); }
    int visibleObserverCount() const { return visibleObservers_.count(); }

    QString description() const;

private:
    QImage image_;
    QString name_;
    QPointF origin_;
    double opacity_;
    bool visible_;
    ValueObservers<bool> visibleObservers_;
};

class PSDLayerImporter {
public:
    // None when the path is missing, is a folder or does not decode.
    // `options` say what to decode: a layer import needs no composite, a
    // flat one no layer pixels.
    static std::optional<PSDLayerImporter> fromPath(const QString& path, bool flippedCoordinates,
                                                    std::string* error = nullptr, const DecodeOptions& options = {});
    // None for empty data or data that does not decode.
    static std::optional<PSDLayerImporter> fromData(QByteArrayView data, bool flippedCoordinates,
                                                    std::string* error = nullptr, const DecodeOptions& options = {});

    // Replaces the layers and canvas size with those of the given file data.
    // Each layer's picture is cut to what it shows (its origin moving with
    // it) and premultiplied.
    bool loadPSDFromData(QByteArrayView data, std::string* error = nullptr, const DecodeOptions& options = {});

    const QString& path() const { return path_; }
    std::vector<PSDLayer>& layers() { return layers_; }  // topmost first
    const std::vector<PSDLayer>& layers() const { return layers_; }
    QSizeF PSDImageSize() const { return imageSize_; }
    // Unflipped (what the import asks for): canvas coordinates, origin at the
    // document's lower-left, y up, a layer's origin being its lower-left corner.
    // Flipped: top-left origin, y down, a layer's origin being its top-left corner.
    bool flippedCoordinates() const { return flipped_; }
    const QImage& mergedImage() const { return merged_; }  // the composite stored in the file

    QString filename() const;  // the path's last component without its extension
    int layerCount() const { return int(layers_.size()); }
    bool allLayersVisible() const;
    // The visible layers drawn bottom to top, source-over with their opacity,
    // into a premultiplied ARGB32 image of the canvas size.
    QImage combinedImageOfVisibleLayers() const;

    QString description() const;

private:
    explicit PSDLayerImporter(bool flipped) : flipped_(flipped) {}

    QString path_;
    bool flipped_ = false;
    QSizeF imageSize_;
    std::vector<PSDLayer> layers_;
    QImage merged_;
};

}  // namespace psd
