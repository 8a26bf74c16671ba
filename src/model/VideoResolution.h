#pragma once
// The canvas size and frame rate of a composition, resolved from the
// broadcast-mode name a document stores. Immutable once made; an unknown name
// gives an empty resolution (null title, zero size) that callers must cope with.

#include <QString>

namespace model {

class VideoResolution {
public:
    VideoResolution() = default;
    explicit VideoResolution(const QString& broadcastMode);

    static VideoResolution videoResolutionForBroadcastMode(const QString& name) { return VideoResolution(name); }
    // The mode stored under "defaultDocumentMode" in the settings.
    static VideoResolution defaultVideoResolution();

    const QString& title() const { return title_; }
    int frameRate() const { return frameRate_; }  // the rate code 0–7, 8 when unknown
    int compositionWidth() const { return width_; }
    int compositionHeight() const { return height_; }
    int width() const { return width_; }
    int height() const { return height_; }
    double aspectRatio() const { return 1.0; }
    bool isValid() const { return !title_.isNull(); }

private:
    QString title_;
    int frameRate_ = 0;
    int width_ = 0;
    int height_ = 0;
};

}  // namespace model
