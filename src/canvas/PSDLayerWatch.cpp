#include "canvas/PSDLayerWatch.h"

namespace canvas {

void PSDLayerWatch::watch(const std::shared_ptr<psd::PSDLayerImporter>& importer)
{
    stop();
    importer_ = importer;
    if (!importer) return;
    auto& layers = importer->layers();
    for (int i = 0; i < int(layers.size()); ++i) {
        psd::PSDLayer& layer = layers[std::size_t(i)];
        tokens_.push_back(layer.addVisibleObserver([this, i](bool visible) { callback_(i, visible); }));
    }
}

void PSDLayerWatch::stop()
{
    if (const auto importer = importer_.lock()) {
        auto& layers = importer->layers();
        for (std::size_t i = 0; i < tokens_.size() && i < layers.size(); ++i)
            layers[i].removeVisibleObserver(tokens_[i]);
    }
    tokens_.clear();
    importer_.reset();
}

}  // namespace canvas
