#include "psd/ImageAssembly.h"

#include <algorithm>

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

// Plain pages, no request for huge ones: on the virtual machines we run on
// a fresh process got its huge pages at up to 5 ms each (memory the host had
// taken back), 1-1.5 s of kernel time for a 4K document against a steady
// 0.25 s for small pages; the pages are faulted in by the decoding threads.
QImage allocateImage(int width, int height) { return QImage(width, height, QImage::Format_RGBA8888); }

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
