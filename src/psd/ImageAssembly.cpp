#include "psd/ImageAssembly.h"

#include <algorithm>

#ifdef __linux__
#include <sys/mman.h>
#include <unistd.h>
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

// Under AddressSanitizer images stay on the heap it watches.
#if defined(__linux__) && !defined(__SANITIZE_ADDRESS__)
#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define VELLORAN_HEAP_IMAGES_ONLY
#endif
#endif
#if !defined(VELLORAN_HEAP_IMAGES_ONLY)
#define VELLORAN_OWN_IMAGE_PAGES
#endif
#endif

#ifdef VELLORAN_OWN_IMAGE_PAGES
namespace {

// Images at least this large get pages of their own, which the decoding
// threads fill in ahead of their rows.
constexpr size_t kOwnPagesBytes = size_t(1) << 20;

struct Mapping {
    void* address;
    size_t bytes;
};

}  // namespace
#endif

// Small pages, no request for huge ones: on the virtual machines we run on a
// fresh process got its huge pages at up to 5 ms each (memory the host had
// taken back), 1-1.5 s of kernel time for a 4K document against a steady
// 0.25 s for small pages.
QImage allocateImage(int width, int height)
{
#ifdef VELLORAN_OWN_IMAGE_PAGES
    const qsizetype bytesPerLine = qsizetype(width) * 4;
    const size_t bytes = size_t(bytesPerLine) * size_t(height);
    if (bytes >= kOwnPagesBytes) {
        void* address = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (address != MAP_FAILED) {
            auto* mapping = new Mapping{address, bytes};
            return QImage(
                static_cast<uchar*>(address), width, height, bytesPerLine, QImage::Format_RGBA8888,
                [](void* info) {
                    auto* m = static_cast<Mapping*>(info);
                    munmap(m->address, m->bytes);
                    delete m;
                },
                mapping);
        }
    }
#endif
    return QImage(width, height, QImage::Format_RGBA8888);
}

void prefaultRows(uchar* pixels, qsizetype bytesPerLine, int firstRow, int endRow)
{
#if defined(VELLORAN_OWN_IMAGE_PAGES) && defined(MADV_POPULATE_WRITE)
    const size_t bytes = size_t(bytesPerLine) * size_t(endRow - firstRow);
    if (bytes < kOwnPagesBytes) return;
    // One call fills the range's pages in a batch, about a third cheaper on
    // our virtual machines than a fault per page; kernels before 5.14 refuse
    // and the pages fault in as they are written.
    const uintptr_t page = uintptr_t(sysconf(_SC_PAGESIZE));
    const uintptr_t begin = uintptr_t(pixels + qsizetype(firstRow) * bytesPerLine) & ~(page - 1);
    const uintptr_t end = uintptr_t(pixels + qsizetype(endRow) * bytesPerLine);
    madvise(reinterpret_cast<void*>(begin), end - begin, MADV_POPULATE_WRITE);
#else
    Q_UNUSED(pixels);
    Q_UNUSED(bytesPerLine);
    Q_UNUSED(firstRow);
    Q_UNUSED(endRow);
#endif
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
