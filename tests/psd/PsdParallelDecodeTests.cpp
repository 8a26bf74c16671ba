// Decoding on several threads: the same pixels and the same first error as
// on one, for documents large enough to be shared out and cut into bands.
#include "PsdTestBuilder.h"
#include "psd/PsdDocument.h"

#include <gtest/gtest.h>

#include <atomic>

using namespace psdtest;

namespace {

// Samples that change from pixel to pixel and row to row, never zero.
int sample(int id, int x, int y) { return 1 + (x * 7 + y * 13 + id * 31 + (x * y) % 11) % 255; }

Layer bigLayer(const QByteArray& name, QRect rect)
{
    Layer l;
    l.rect = rect;
    l.pascalName = name;
    for (int id : {0, 1, 2, -1})
        l.channels.push_back({id, plane(rect.width(), rect.height(), [&](int x, int y) { return sample(id, x, y); })});
    return l;
}

// Two layers, one over a million pixels (two bands), one with a mask, and a composite.
Document largeDocument(Compression compression)
{
    Document d;
    d.width = 1100;
    d.height = 1000;
    d.layerCompression = compression;
    d.compositeCompression = compression;
    d.layers.push_back(bigLayer("Big", QRect(-20, 0, 1100, 1000)));
    Layer masked = bigLayer("Masked", QRect(100, 50, 300, 200));
    masked.mask = Mask{QRect(150, 40, 100, 100), 255, 0};
    masked.channels.push_back({-2, plane(100, 100, [](int x, int y) { return (x * 3 + y) % 256; })});
    d.layers.push_back(masked);
    for (int c = 0; c < 3; ++c) d.composite.push_back(plane(1100, 1000, [&](int x, int y) { return sample(c, y, x); }));
    return d;
}

psd::DecodeOptions onThreads(int threads)
{
    psd::DecodeOptions options;
    options.threads = threads;
    return options;
}

TEST(PsdParallelDecode, ThreadCountDoesNotChangeThePixels)
{
    for (Compression c : {Raw, Rle, Zip, ZipPredicted}) {
        const QByteArray bytes = build(largeDocument(c));
        std::string error;
        const auto single = psd::decode(bytes, &error, onThreads(1));
        ASSERT_TRUE(single) << error;
        ASSERT_EQ(single->layers.size(), 2u);
        // The bottom layer as written, corner to corner.
        const QImage& big = single->layers[1].image;
        EXPECT_EQ(big.pixel(0, 0), qRgba(sample(0, 0, 0), sample(1, 0, 0), sample(2, 0, 0), sample(-1, 0, 0)));
        EXPECT_EQ(big.pixel(1099, 999),
                  qRgba(sample(0, 1099, 999), sample(1, 1099, 999), sample(2, 1099, 999), sample(-1, 1099, 999)));
        for (int threads : {0, 2, 5}) {
            const auto shared = psd::decode(bytes, &error, onThreads(threads));
            ASSERT_TRUE(shared) << error;
            for (size_t i = 0; i < shared->layers.size(); ++i)
                EXPECT_TRUE(shared->layers[i].image == single->layers[i].image)
                    << "compression " << c << ", " << threads << " threads, layer " << i;
            EXPECT_TRUE(shared->composite == single->composite) << "compression " << c << ", " << threads << " threads";
        }
    }
}

// Turns every PackBits header before 128 zero samples into a no-op, so that
// the rows of zeros come up short when decoded (their lengths stay valid).
QByteArray shortenZeroRows(QByteArray bytes)
{
    const QByteArray packet = QByteArray(1, '\x7f') + QByteArray(128, '\0');
    for (qsizetype at = bytes.indexOf(packet); at >= 0; at = bytes.indexOf(packet, at + 1)) bytes[at] = char(0x80);
    return bytes;
}

Document documentWithZeroRows(const std::vector<int>& bigRows, const std::vector<int>& topRows)
{
    Document d;
    d.width = 1100;
    d.height = 1000;
    Layer big = bigLayer("Big", QRect(0, 0, 1100, 1000));
    Layer top = bigLayer("Top", QRect(0, 0, 512, 64));
    for (int y : bigRows) std::fill_n(big.channels[0].samples.begin() + qsizetype(y) * 1100, 1100, 0);
    for (int y : topRows) std::fill_n(top.channels[0].samples.begin() + qsizetype(y) * 512, 512, 0);
    d.layers = {big, top};
    for (int c = 0; c < 3; ++c) d.composite.push_back(plane(1100, 1000, [&](int x, int y) { return sample(c, x, y); }));
    return d;
}

TEST(PsdParallelDecode, TheFirstDamagedRowIsReportedWhateverTheThreads)
{
    struct Case {
        std::vector<int> bigRows, topRows;
        const char* expected;
    };
    const Case cases[] = {
        {{300, 900}, {40}, "layer record 1 (\"Top\") channel 0 RLE row 40"},  // the topmost layer comes first
        {{300, 900}, {}, "layer record 0 (\"Big\") channel 0 RLE row 300"},   // then the rows in order
        {{900}, {}, "layer record 0 (\"Big\") channel 0 RLE row 900"},
    };
    for (const Case& c : cases) {
        const QByteArray bytes = shortenZeroRows(build(documentWithZeroRows(c.bigRows, c.topRows)));
        std::string first;
        ASSERT_FALSE(psd::decode(bytes, &first, onThreads(1)));
        EXPECT_EQ(first.rfind(c.expected, 0), 0u) << first;
        EXPECT_NE(first.find("ends before the row is full"), std::string::npos) << first;
        for (int round = 0; round < 8; ++round) {
            for (int threads : {2, 4}) {
                std::string error;
                EXPECT_FALSE(psd::decode(bytes, &error, onThreads(threads)));
                EXPECT_EQ(error, first) << threads << " threads, round " << round;
            }
        }
    }
}

}  // namespace

// Progress counts rows up to the total whatever the threads, one call at a
// time; a false answer stops the decode with a clear error.
TEST(PsdDecodeProgress, RowsCountUpToTheTotalAndAFalseAnswerStops)
{
    const QByteArray file = build(largeDocument(Rle));
    for (int threads : {1, 4}) {
        psd::DecodeOptions options = onThreads(threads);
        std::vector<std::pair<int64_t, int64_t>> calls;
        std::atomic<int> inside{0};
        bool overlapped = false;
        options.progress = [&](int64_t done, int64_t total) {
            overlapped = overlapped || inside.fetch_add(1) != 0;
            calls.emplace_back(done, total);
            inside.fetch_sub(1);
            return true;
        };
        std::string error;
        ASSERT_TRUE(psd::decode(file, &error, options)) << error;
        ASSERT_FALSE(calls.empty());
        EXPECT_FALSE(overlapped) << threads << " threads";
        // Both layers and the composite: 1000 + 200 + 1000 rows.
        EXPECT_EQ(calls.back(), std::make_pair(int64_t(2200), int64_t(2200))) << threads << " threads";
        for (size_t i = 1; i < calls.size(); ++i) EXPECT_LT(calls[i - 1].first, calls[i].first);
    }

    psd::DecodeOptions stopping = onThreads(4);
    int told = 0;
    stopping.progress = [&](int64_t, int64_t) { return ++told < 2; };
    std::string error;
    EXPECT_FALSE(psd::decode(file, &error, stopping));
    EXPECT_EQ(error, "cancelled");
}
