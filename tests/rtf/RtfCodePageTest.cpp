// Our code page tables: the writer's 1252 encoding must agree with the
// reader's decoding byte for byte, and converters must not carry state over.
#include "rtf/CodePages.h"

#include <gtest/gtest.h>

TEST(RtfCodePages, Windows1252EncodesExactlyWhatItDecodes)
{
    rtf::CodePageDecoder decoder;
    for (int byte = 0; byte < 256; ++byte) {
        const char c = char(byte);
        const QString decoded = decoder.decode(QByteArrayView(&c, 1), rtf::kCodePageWindowsLatin1);
        ASSERT_EQ(decoded.size(), 1);
        EXPECT_EQ(rtf::windows1252Byte(decoded[0].unicode()), byte) << "byte " << byte;
    }
    EXPECT_EQ(rtf::windows1252Byte(0x0100), -1);
}

TEST(RtfCodePages, ConvertersStartFreshForEachRun)
{
    rtf::CodePageDecoder decoder;
    EXPECT_EQ(decoder.decode("\x82", 932).size(), 0);  // a lead byte cut off at the end of a run
    EXPECT_EQ(decoder.decode("a", 932), QStringLiteral("a"));
    EXPECT_EQ(decoder.decode("\xe9", 1251), QString::fromUtf8("й"));
    EXPECT_EQ(decoder.decode("\xc3\xa9", 65001), QString::fromUtf8("é"));
}
