// Encode once: the cache by image identity, and the codec's use of it.
#include "TiffTestSupport.h"

#include "quartz/EncodedImageCache.h"
#include "quartz/TiffCodec.h"

#include <QBuffer>

#include <thread>

using namespace tifftest;
namespace codec = quartz::tiff;
using codec::EncodedImageCache;

namespace {

QByteArray bytesOf(qsizetype size, char fill) { return QByteArray(size, fill); }

TEST(EncodedImageCache, KeepsTheMostRecentlyUsedWithinItsBound)
{
    EncodedImageCache cache(100);
    cache.insert(1, bytesOf(40, 'a'));
    cache.insert(2, bytesOf(40, 'b'));
    EXPECT_EQ(cache.find(1), bytesOf(40, 'a'));  // 1 is now the more recent
    cache.insert(3, bytesOf(40, 'c'));           // 120 bytes: the least recent (2) goes
    EXPECT_TRUE(cache.find(2).isEmpty());
    EXPECT_EQ(cache.find(1), bytesOf(40, 'a'));
    EXPECT_EQ(cache.find(3), bytesOf(40, 'c'));
    const auto stats = cache.statistics();
    EXPECT_EQ(stats.bytes, 80);
    EXPECT_EQ(stats.entries, 2);
    EXPECT_EQ(stats.hits, 3u);
    EXPECT_EQ(stats.misses, 1u);
}

TEST(EncodedImageCache, ReplacingAKeyCountsItsBytesOnce)
{
    EncodedImageCache cache(100);
    cache.insert(7, bytesOf(60, 'a'));
    cache.insert(7, bytesOf(30, 'b'));
    EXPECT_EQ(cache.statistics().bytes, 30);
    EXPECT_EQ(cache.find(7), bytesOf(30, 'b'));
}

TEST(EncodedImageCache, BytesLargerThanTheBoundAreNotKept)
{
    EncodedImageCache cache(100);
    cache.insert(1, bytesOf(50, 'a'));
    cache.insert(2, bytesOf(101, 'b'));
    EXPECT_TRUE(cache.find(2).isEmpty());
    EXPECT_EQ(cache.find(1), bytesOf(50, 'a')) << "nothing was evicted for bytes that could not fit";
    cache.setCapacity(10);
    EXPECT_EQ(cache.statistics().entries, 0);
}

TEST(EncodedImageCache, ManyThreadsAtOnceKeepItConsistent)
{
    EncodedImageCache cache(64 * 100);
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([&cache, t] {
            for (int i = 0; i < 2000; ++i) {
                const qint64 key = (i * 7 + t) % 300;
                cache.insert(key, bytesOf(64, char('a' + key % 26)));
                const QByteArray found = cache.find((key * 3) % 300);
                if (!found.isEmpty()) {
                    EXPECT_EQ(found, bytesOf(64, char('a' + (key * 3) % 300 % 26)));
                }
            }
        });
    for (std::thread& thread : threads) thread.join();
    const auto stats = cache.statistics();
    EXPECT_LE(stats.bytes, 64 * 100);
    EXPECT_EQ(stats.bytes, stats.entries * 64);
}

// The shared cache, through the codec.
class EncodeOnce : public testing::Test {
protected:
    void SetUp() override { EncodedImageCache::shared().clear(); }
    void TearDown() override { EncodedImageCache::shared().clear(); }
};

TEST_F(EncodeOnce, TheSameImageIsEncodedOnce)
{
    const QImage image = gradientWithNoise(200, 100, true);
    const QByteArray first = codec::encode(image);
    const QImage copy = image;  // shares the pixels and so the key
    const QByteArray second = codec::encode(copy);
    EXPECT_EQ(first.constData(), second.constData()) << "the second call returns the first call's bytes";
    const auto stats = EncodedImageCache::shared().statistics();
    EXPECT_EQ(stats.misses, 1u);
    EXPECT_EQ(stats.hits, 1u);
}

TEST_F(EncodeOnce, AChangedImageIsEncodedAgain)
{
    QImage image = gradientWithNoise(200, 100, true);
    const QByteArray before = codec::encode(image);
    image.setPixel(10, 10, qRgba(1, 2, 3, 255));
    const QByteArray after = codec::encode(image);
    EXPECT_NE(before.constData(), after.constData());
    EXPECT_NE(before, after);
    EXPECT_EQ(codec::decodeUncached(after).pixel(10, 10), qRgba(1, 2, 3, 255));
}

TEST_F(EncodeOnce, DecodedImagesAreSavedAsTheBytesTheyCameFrom)
{
    // Another program's file: re-encoding would give other bytes.
    const QImage picture = gradientWithNoise(64, 48, true);
    const QByteArray foreign = [&] {
        QByteArray bytes;
        QBuffer buffer(&bytes);
        buffer.open(QIODevice::WriteOnly);
        picture.save(&buffer, "TIFF");
        return bytes;
    }();
    ASSERT_FALSE(foreign.isEmpty());
    ASSERT_NE(foreign, codec::encodeUncached(picture));
    const QImage decoded = codec::decode(foreign);
    ASSERT_FALSE(decoded.isNull());
    const QByteArray saved = codec::encode(decoded);
    EXPECT_EQ(saved.constData(), foreign.constData()) << "the very bytes, shared, not a copy";
}

TEST_F(EncodeOnce, DecodingRawDataKeepsACopy)
{
    QByteArray bytes = codec::encodeUncached(gradientWithNoise(30, 20, false));
    const QImage decoded = codec::decode(QByteArray::fromRawData(bytes.constData(), bytes.size()));
    const QByteArray cached = codec::encode(decoded);
    EXPECT_NE(cached.constData(), bytes.constData());
    EXPECT_EQ(cached, bytes);
    bytes.fill('x');  // the raw data's owner overwrites its memory
    EXPECT_TRUE(codec::isTiff(codec::encode(decoded)));
}

TEST_F(EncodeOnce, FailedDecodesLeaveNothingBehind)
{
    QString error;
    EXPECT_TRUE(codec::decode(QByteArray("II*\0garbage", 11), &error).isNull());
    EXPECT_FALSE(error.isEmpty());
    EXPECT_EQ(EncodedImageCache::shared().statistics().entries, 0);
}

}  // namespace

TEST(EncodedImageCache, FindsImagesByTheirBytesWithinTheImageBound)
{
    QImage a(100, 100, QImage::Format_ARGB32_Premultiplied);  // 40000 bytes
    a.fill(Qt::red);
    QImage b = a.copy();
    b.fill(Qt::blue);
    EncodedImageCache cache(1000, 60000);
    cache.insert(1, bytesOf(40, 'a'), a);
    EXPECT_EQ(cache.findImage(bytesOf(40, 'a')), a) << "equal bytes anywhere in memory";
    EXPECT_TRUE(cache.findImage(bytesOf(40, 'b')).isNull());
    EXPECT_TRUE(cache.findImage(bytesOf(41, 'a')).isNull());
    cache.insert(2, bytesOf(40, 'b'), b);  // 80000 bytes of pixels: a lets go of its image
    EXPECT_TRUE(cache.findImage(bytesOf(40, 'a')).isNull());
    EXPECT_EQ(cache.find(1), bytesOf(40, 'a')) << "and keeps its bytes";
    EXPECT_EQ(cache.findImage(bytesOf(40, 'b')), b);
    EXPECT_EQ(cache.statistics().imageBytes, b.sizeInBytes());
    cache.insert(2, bytesOf(40, 'c'));
    EXPECT_TRUE(cache.findImage(bytesOf(40, 'b')).isNull()) << "replaced bytes no longer lead anywhere";
    EXPECT_EQ(cache.statistics().imageBytes, 0);
}

TEST_F(EncodeOnce, DecodingBytesOfAPremultipliedImageGivesThatImage)
{
    const QImage image = gradientWithNoise(120, 80, true);
    const QByteArray bytes = codec::encode(image);
    const QImage decoded = codec::decode(QByteArray(bytes.constData(), bytes.size()));
    EXPECT_EQ(decoded.cacheKey(), image.cacheKey()) << "no decoding: the very image";
    const QImage straight = image.convertToFormat(QImage::Format_ARGB32);
    const QImage fromStraight = codec::decode(codec::encode(straight));
    EXPECT_NE(fromStraight.cacheKey(), straight.cacheKey()) << "a straight image is not what decoding gives";
    EXPECT_EQ(fromStraight.format(), QImage::Format_ARGB32_Premultiplied);
    EXPECT_EQ(fromStraight, image);
}

TEST(EncodedImageCache, LetsGoOfImagesNobodyElseHolds)
{
    EncodedImageCache cache(1000, qsizetype(1) << 30);
    auto image = std::make_unique<QImage>(50, 50, QImage::Format_ARGB32_Premultiplied);
    image->fill(Qt::green);
    cache.insert(1, bytesOf(40, 'a'), *image);
    EXPECT_FALSE(cache.findImage(bytesOf(40, 'a')).isNull());
    image.reset();  // the document let go of it
    EXPECT_TRUE(cache.findImage(bytesOf(40, 'a')).isNull()) << "found only while held elsewhere";
    cache.insert(2, bytesOf(40, 'b'));
    EXPECT_EQ(cache.statistics().imageBytes, 0) << "its pixels are freed at the next insert";
    EXPECT_EQ(cache.find(1), bytesOf(40, 'a'));
}
