#include "runtime/RowBands.h"

#include <algorithm>
#include <thread>
#include <vector>

namespace runtime {

namespace {

// Below about this many pixels a band is not worth a thread of its own.
constexpr qint64 kPixelsPerBand = 32768;
constexpr int kMaxBands = 8;

}  // namespace

int rowBandCount(int rows, qint64 pixels)
{
    if (rows < 2 || pixels < kPixelsPerBand * 2) return 1;
    const int cores = std::max(1, int(std::thread::hardware_concurrency()));
    return int(std::clamp<qint64>(std::min<qint64>(cores, pixels / kPixelsPerBand), 1, std::min(kMaxBands, rows)));
}

void forEachRowBand(int rows, qint64 pixels, const std::function<void(int band, int firstRow, int endRow)>& work)
{
    const int bands = rowBandCount(rows, pixels);
    std::vector<std::thread> threads;
    threads.reserve(std::size_t(bands - 1));
    for (int band = 1; band < bands; ++band)
        threads.emplace_back([&work, band, bands, rows] { work(band, int(qint64(rows) * band / bands), int(qint64(rows) * (band + 1) / bands)); });
    work(0, 0, rows / bands);
    for (std::thread& t : threads) t.join();
}

}  // namespace runtime
