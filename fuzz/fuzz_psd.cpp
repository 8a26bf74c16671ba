// libFuzzer target for the Photoshop decoder: any input must give a document
// or an error, never a crash, a hang or an outsized allocation.
#include "psd/PSDLayerImporter.h"
#include "psd/PsdDocument.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QByteArrayView bytes(reinterpret_cast<const char*>(data), qsizetype(size));
    std::string error;
    psd::DecodeOptions recordsOnly;
    recordsOnly.layerPixels = false;
    recordsOnly.composite = false;
    psd::decode(bytes, &error, recordsOnly);
    if (auto importer = psd::PSDLayerImporter::fromData(bytes, false, &error)) {
        // Documents can be large in area yet cheap in bytes; draw only small ones.
        if (importer->PSDImageSize().width() * importer->PSDImageSize().height() <= 1 << 20)
            importer->combinedImageOfVisibleLayers();
    }
    return 0;
}
