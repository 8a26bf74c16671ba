#pragma once
// Follows the "visible" switch of every layer of one importer for a widget
// of the import sheet. The importer is held weakly: when it goes away the
// watch has nothing left to undo. Removing the observations on destruction
// keeps a dead widget from ever being called back.

#include "psd/PSDLayerImporter.h"

#include <functional>
#include <memory>
#include <vector>

namespace canvas {

class PSDLayerWatch {
public:
    using Callback = std::function<void(int layerIndex, bool visible)>;

    explicit PSDLayerWatch(Callback callback) : callback_(std::move(callback)) {}
    ~PSDLayerWatch() { stop(); }
    PSDLayerWatch(const PSDLayerWatch&) = delete;
    PSDLayerWatch& operator=(const PSDLayerWatch&) = delete;

    // Stops following the previous importer and follows this one (null for none).
    void watch(const std::shared_ptr<psd::PSDLayerImporter>& importer);
    void stop();
    std::shared_ptr<psd::PSDLayerImporter> importer() const { return importer_.lock(); }

private:
    Callback callback_;
    std::weak_ptr<psd::PSDLayerImporter> importer_;
    std::vector<int> tokens_;  // one per layer, in layer order
};

}  // namespace canvas
