// libFuzzer target for the TIFF reader: any input must give an image or an
// error, never a crash, a hang or an outsized allocation. What it reads must
// survive our own writer unchanged.
#include "quartz/TiffCodec.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QByteArrayView bytes(reinterpret_cast<const char*>(data), qsizetype(size));
    QString error;
    const QImage image = quartz::tiff::decodeUncached(bytes, &error);
    if (image.isNull()) {
        if (error.isEmpty()) std::abort();  // every failure says why
        return 0;
    }
    if (qint64(image.width()) * image.height() > (1 << 20)) return 0;
    const QImage again = quartz::tiff::decodeUncached(quartz::tiff::encodeUncached(image));
    if (again != image) std::abort();
    return 0;
}
