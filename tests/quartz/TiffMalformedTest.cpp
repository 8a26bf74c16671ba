// Damaged TIFF data gives a null image and a message: never a crash, a hang,
// an outsized allocation or text on the terminal.
#include "TiffTestSupport.h"

#include "quartz/TiffCodec.h"

using namespace tifftest;
namespace codec = quartz::tiff;

namespace {

QByteArray sample()
{
    static const QByteArray bytes = codec::encodeUncached(gradientWithNoise(300, 200, true));
    return bytes;
}

// Little-endian fields of the file, read and written with bounds checks.
uint32_t read(const QByteArray& bytes, qsizetype at, int size)
{
    uint32_t value = 0;
    if (at < 0 || at + size > bytes.size()) return 0;
    for (int k = size - 1; k >= 0; --k) value = value << 8 | uchar(bytes.at(at + k));
    return value;
}

void write32(QByteArray& bytes, qsizetype at, uint32_t value)
{
    if (at < 0 || at + 4 > bytes.size()) return;
    for (int k = 0; k < 4; ++k) bytes[at + k] = char(value >> (8 * k));
}

// The first directory's entries of a little-endian file, for surgery.
struct Entry {
    qsizetype at;  // offset of the 12-byte entry
    uint16_t tag;
};

std::vector<Entry> entries(const QByteArray& bytes)
{
    std::vector<Entry> result;
    const qsizetype ifd = read(bytes, 4, 4);
    const int count = int(read(bytes, ifd, 2));
    for (int i = 0; i < count; ++i) {
        const qsizetype at = ifd + 2 + 12 * i;
        result.push_back({at, uint16_t(read(bytes, at, 2))});
    }
    return result;
}

QByteArray withValue(QByteArray bytes, uint16_t tag, uint32_t value)
{
    for (const Entry& e : entries(bytes))
        if (e.tag == tag) write32(bytes, e.at + 8, value);
    return bytes;
}

void expectClearFailure(const QByteArray& bytes, const std::string& what)
{
    QString error;
    testing::internal::CaptureStderr();
    const QImage image = codec::decodeUncached(bytes, &error);
    const std::string printed = testing::internal::GetCapturedStderr();
    EXPECT_TRUE(image.isNull()) << what;
    EXPECT_FALSE(error.isEmpty()) << what;
    EXPECT_EQ(printed, "") << what << ": libtiff printed";
}

TEST(TiffMalformed, EveryTruncationFailsCleanly)
{
    const QByteArray bytes = sample();
    ASSERT_GT(bytes.size(), 1000);
    // The directory is at the end: most cuts lose it, the rest lose strips.
    for (qsizetype length : {qsizetype(0), qsizetype(3), qsizetype(4), qsizetype(8), qsizetype(9), bytes.size() / 4,
                             bytes.size() / 2, bytes.size() - 200, bytes.size() - 20, bytes.size() - 1})
        expectClearFailure(bytes.left(length), "cut at " + std::to_string(length));
}

TEST(TiffMalformed, StripsCutShortAreReported)
{
    // The directory survives; strip data is overwritten by garbage.
    QByteArray bytes = sample();
    const qsizetype ifd = read(bytes, 4, 4);
    for (qsizetype i = 8; i < ifd; ++i) bytes[i] = char(i * 31);
    expectClearFailure(bytes, "garbage strips");
}

TEST(TiffMalformed, HeadersThatLieAreRefused)
{
    expectClearFailure(QByteArray("not a tiff at all"), "not TIFF");
    expectClearFailure(QByteArray("II*\0\xff\xff\xff\x7f", 8), "directory beyond the end");
    expectClearFailure(withValue(sample(), TIFFTAG_IMAGEWIDTH, 200000), "200000 wide");
    expectClearFailure(withValue(sample(), TIFFTAG_IMAGELENGTH, 0), "no rows");
    expectClearFailure(withValue(sample(), TIFFTAG_BITSPERSAMPLE, 13), "13 bits");
    expectClearFailure(withValue(sample(), TIFFTAG_COMPRESSION, 60000), "unknown compression");
    expectClearFailure(withValue(sample(), TIFFTAG_PHOTOMETRIC, 99), "unknown photometric");
    expectClearFailure(withValue(sample(), TIFFTAG_STRIPOFFSETS, 0x7ffffff0), "strip offsets beyond the end");
}

TEST(TiffMalformed, HugeImagesAreRefusedBeforeAllocating)
{
    // 60000 x 60000 would be 14 GB of pixels; a hostile header costs nothing.
    const QByteArray huge = withValue(withValue(sample(), TIFFTAG_IMAGEWIDTH, 60000), TIFFTAG_IMAGELENGTH, 60000);
    QString error;
    EXPECT_TRUE(codec::decodeUncached(huge, &error).isNull());
    EXPECT_TRUE(error.contains(QLatin1String("too large"))) << error.toStdString();
}

TEST(TiffMalformed, ADirectoryPointingAtItselfEnds)
{
    QByteArray bytes = sample();
    const qsizetype ifd = read(bytes, 4, 4);
    const qsizetype count = read(bytes, ifd, 2);
    write32(bytes, ifd + 2 + 12 * count, uint32_t(ifd));  // next directory: itself
    QString error;
    const QImage image = codec::decodeUncached(bytes, &error);
    EXPECT_EQ(image.size(), QSize(300, 200)) << "the first image is whole: " << error.toStdString();
}

TEST(TiffMalformed, FlippedBytesNeverCrash)
{
    // Not a fuzzer (fuzz/fuzz_tiff.cpp is), but every header byte and a
    // sample of the rest, changed one at a time, must come back either way.
    const QByteArray bytes = codec::encodeUncached(gradientWithNoise(40, 30, true));
    int failures = 0;
    for (qsizetype i = 0; i < bytes.size(); i += (i < 16 || i > bytes.size() - 200) ? 1 : 7) {
        QByteArray damaged = bytes;
        damaged[i] = char(damaged[i] ^ 0x5a);
        QString error;
        const QImage image = codec::decodeUncached(damaged, &error);
        if (image.isNull()) {
            ++failures;
            EXPECT_FALSE(error.isEmpty()) << "byte " << i;
        }
    }
    EXPECT_GT(failures, 0);
}

}  // namespace
