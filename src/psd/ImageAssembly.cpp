#include "psd/ImageAssembly.h"

#include <algorithm>
#include <cstdlib>

#ifdef __linux__
#include <sys/mman.h>
#endif

namespace psd::detail {
namespace {

void interleave(uint8_t* __restrict dst, const uint8_t* __restrict r, const uint8_t* __restrict g,
                const uint8_t* __restrict b, const uint8_t* __restrict a, int width)
{
    if (a) {
        for (int x = 0; x < width; ++x) {
            dst[4 * x] = r[x];
            dst[4 * x + 1] = g[x];
            dst[4 * x + 2] = b[x];
            dst[4 * x + 3] = a[x];
        }
    } else {
        for (int x = 0; x < width; ++x) {
            dst[4 * x] = r[x];
            dst[4 * x + 1] = g[x];
            dst[4 * x + 2] = b[x];
            dst[4 * x + 3] = 255;
        }
    }
}

inline uint8_t multiply(uint8_t a, uint8_t m) { return uint8_t((unsigned(a) * m + 127) / 255); }

void scaleAlpha(uint8_t* dst, int from, int to, uint8_t m)
{
    if (m == 255) return;
    for (int x = from; x < to; ++x) dst[4 * x + 3] = multiply(dst[4 * x + 3], m);
}

// Multiplies one image row's alpha by a mask; outside its rectangle the mask
// has its default colour.
bool applyMask(const MaskPlane& mask, uint8_t* dst, int documentY, int left, int width, std::string* error)
{
    const QRect& m = mask.rect;
    if (documentY < m.top() || documentY >= m.top() + m.height() || m.width() == 0) {
        scaleAlpha(dst, 0, width, mask.defaultColor);
        return true;
    }
    const uint8_t* row = mask.reader->row(documentY - m.top(), error);
    if (!row) return false;
    const int from = std::clamp(m.left() - left, 0, width);
    const int to = std::clamp(m.left() + m.width() - left, 0, width);
    scaleAlpha(dst, 0, from, mask.defaultColor);
    for (int x = from; x < to; ++x) dst[4 * x + 3] = multiply(dst[4 * x + 3], row[left + x - m.left()]);
    scaleAlpha(dst, to, width, mask.defaultColor);
    return true;
}

}  // namespace

// A 4K layer in 4 KiB pages costs some eight thousand page faults; where the
// system gives huge pages on request, large images ask for them.
QImage allocateImage(int width, int height)
{
    const qsizetype bytesPerLine = qsizetype(width) * 4;
#ifdef __linux__
    constexpr size_t kHugePage = size_t(2) << 20;
    const size_t bytes = size_t(bytesPerLine) * size_t(height);
    if (bytes >= 4 * kHugePage) {
        const size_t size = (bytes + kHugePage - 1) & ~(kHugePage - 1);
        void* memory = nullptr;
        if (posix_memalign(&memory, kHugePage, size) == 0) {
            madvise(memory, size, MADV_HUGEPAGE);
            return QImage(static_cast<uchar*>(memory), width, height, bytesPerLine, QImage::Format_RGBA8888,
                          [](void* p) { std::free(p); }, memory);
        }
    }
#endif
    return QImage(width, height, QImage::Format_RGBA8888);
}

bool assembleRows(const AssemblyInput& in, uchar* pixels, qsizetype bytesPerLine, int firstRow, int endRow,
                  std::string* error)
{
    for (int y = firstRow; y < endRow; ++y) {
        const uint8_t* c[3] = {};
        for (int i = 0; i < in.colorCount; ++i)
            if (!(c[i] = in.color[i]->row(y, error))) return false;
        if (in.colorCount == 1) c[1] = c[2] = c[0];
        const uint8_t* a = nullptr;
        if (in.alpha && !(a = in.alpha->row(y, error))) return false;
        uint8_t* dst = pixels + qsizetype(y) * bytesPerLine;
        interleave(dst, c[0], c[1], c[2], a, in.width);
        for (const MaskPlane& mask : in.masks)
            if (!applyMask(mask, dst, in.origin.y() + y, in.origin.x(), in.width, error)) return false;
    }
    return true;
}

}  // namespace psd::detail
