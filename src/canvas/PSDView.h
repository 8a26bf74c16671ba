#pragma once
// The preview of a Photoshop import: the visible layers of the importer,
// scaled as one picture to fit the view without distortion. It redraws
// whenever a layer is switched on or off.
//
// The view does not own its importer. The canvas owns it for the length of
// one import; the view keeps a weak reference, so an importer that goes
// away simply leaves the view empty.

#include "canvas/PSDLayerWatch.h"

#include <QWidget>

#include <memory>

namespace canvas {

class PSDView : public QWidget {
    Q_OBJECT
public:
    explicit PSDView(QWidget* parent = nullptr);

    // Stops following the previous importer's layers, follows the new
    // one's (null for none) and redraws.
    void setImporter(const std::shared_ptr<psd::PSDLayerImporter>& importer);
    std::shared_ptr<psd::PSDLayerImporter> importer() const { return watch_.importer(); }

    // The factor from document pixels to view pixels: the smaller of the
    // two ratios, so the whole document fits; 0 without an importer.
    float drawingScale() const;

    QSize sizeHint() const override { return QSize(384, 216); }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    PSDLayerWatch watch_;
};

}  // namespace canvas
