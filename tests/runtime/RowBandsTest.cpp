// Rows shared among the cores: every row exactly once, whatever the count.

#include "runtime/RowBands.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <mutex>
#include <set>

namespace {

TEST(RowBands, EveryRowIsWorkedOnceAndSmallRastersStayOnOneThread)
{
    EXPECT_EQ(runtime::rowBandCount(1080, 100), 1);
    EXPECT_EQ(runtime::rowBandCount(1, qint64(1) << 30), 1);
    for (int rows : {1, 2, 3, 7, 1080, 4321}) {
        const qint64 pixels = qint64(rows) * 1920;
        const auto visits = std::make_unique<std::atomic<int>[]>(std::size_t(rows));
        std::mutex lock;
        std::set<int> bands;
        runtime::forEachRowBand(rows, pixels, [&](int band, int firstRow, int endRow) {
            for (int row = firstRow; row < endRow; ++row) ++visits[std::size_t(row)];
            const std::lock_guard<std::mutex> guard(lock);
            EXPECT_TRUE(bands.insert(band).second) << "band " << band << " ran twice";
        });
        for (int row = 0; row < rows; ++row) ASSERT_EQ(visits[std::size_t(row)], 1) << "row " << row << " of " << rows;
        EXPECT_EQ(int(bands.size()), runtime::rowBandCount(rows, pixels));
    }
}

}  // namespace
