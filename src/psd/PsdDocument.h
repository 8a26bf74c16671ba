#pragma once
// A decoded Photoshop document (PSD, or PSB, the large format): the canvas
// size, the pixel layers topmost first and the merged composite image.
//
// Pixels come out as straight (not premultiplied) QImage::Format_RGBA8888,
// 8 bits per channel; 16-bit files are reduced to 8 bits. Only RGB and
// Grayscale documents at 8 or 16 bits per channel are decoded; anything else
// is refused with an error that names what is not supported.

#include <QByteArray>
#include <QByteArrayView>
#include <QImage>
#include <QRect>
#include <QString>
#include <QStringList>

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace psd {

enum class ColorMode { Bitmap = 0, Grayscale = 1, Indexed = 2, RGB = 3, CMYK = 4, Multichannel = 7, Duotone = 8, Lab = 9 };

// "RGB", "Grayscale", "CMYK", ...; "mode N" for a number the format does not define.
QString colorModeName(int mode);

// Hostile-input limits: no real document comes near them.
inline constexpr int kMaxDimension = 300000;
inline constexpr int kMaxLayerCount = 10000;

struct Layer {
    QString name;                // the Unicode name when the file has one, else the Pascal name
    QRect bounds;                // document pixels, top-left origin, y down, as stored in the file
    QImage image;                // straight RGBA8888 of bounds.size(); null for an empty layer or when not decoded
    double opacity = 1.0;        // 0..1, the record's byte / 255
    bool visible = true;         // the layer's own eye (flags bit 1 clear)
    bool hiddenByGroup = false;  // some enclosing group is hidden
    bool clipping = false;       // clipped to the layer below
    QByteArray blendMode;        // four-character key such as "norm" or "mul "
    QStringList groupPath;       // enclosing group names, outermost first

    bool shownInDocument() const { return visible && !hiddenByGroup; }
    // Canvas coordinates of the editor: origin at the document's lower-left
    // corner, y up; the point is the layer's lower-left corner.
    int canvasX() const { return bounds.left(); }
    int canvasY(int documentHeight) const { return documentHeight - (bounds.top() + bounds.height()); }
};

struct Document {
    int width = 0;
    int height = 0;
    int bitsPerChannel = 8;
    ColorMode colorMode = ColorMode::RGB;
    bool largeFormat = false;   // PSB
    std::vector<Layer> layers;  // topmost first; group folder records are not layers
    QImage composite;           // the merged image stored in the file, straight RGBA8888
};

struct DecodeOptions {
    bool layerPixels = true;  // false: names, bounds and flags only
    bool composite = true;
    int threads = 0;  // 0: the cores' number (a small document on the calling thread alone); 1: the calling thread
    // Told how many pixel rows of the images are decoded, of how many, from
    // the decoding threads one call at a time; answering false stops the
    // decode, which then fails with "cancelled".
    std::function<bool(int64_t done, int64_t total)> progress;
};

// Never throws; bad input gives no value and an error naming what is wrong and where.
std::optional<Document> decode(QByteArrayView bytes, std::string* error = nullptr, const DecodeOptions& options = {});
std::optional<Document> decodeFile(const QString& path, std::string* error = nullptr, const DecodeOptions& options = {});

}  // namespace psd
