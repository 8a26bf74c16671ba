#pragma once
// Pixel work on a large raster shared among the cores: its rows are cut
// into one band per core, the calling thread taking the first. Rows must
// not depend on each other.

#include <QtGlobal>

#include <functional>

namespace runtime {

// How many bands `rows` rows of `pixels` pixels in all are cut into: one
// for small rasters, where starting a thread costs more than it saves.
int rowBandCount(int rows, qint64 pixels);

// Calls `work(band, firstRow, endRow)` once per band, concurrently, and
// returns when all have finished.
void forEachRowBand(int rows, qint64 pixels, const std::function<void(int band, int firstRow, int endRow)>& work);

}  // namespace runtime
