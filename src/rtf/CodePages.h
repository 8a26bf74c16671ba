#pragma once
// The 8-bit code pages of RTF text: bytes written raw or as \'hh are
// characters of the document's code page (\ansicpgN, \mac, \pc, \pca) or of
// the current font's \fcharset.

#include <QByteArrayView>
#include <QString>
#include <QStringDecoder>

namespace rtf {

inline constexpr int kCodePageWindowsLatin1 = 1252;
inline constexpr int kCodePageMacRoman = 10000;

// The code page a font's \fcharsetN stands for; 0 when it names none (the
// document's code page applies then).
int codePageForCharset(int charset);

// Decodes with our own tables for 1252 and Mac Roman and with Qt's
// converters for other code pages (Windows, DOS, the East Asian double-byte
// ones and 65001, UTF-8); a code page Qt does not know is read as 1252.
// Keeps the last converter, since opening one costs far more than a short run.
class CodePageDecoder {
public:
    QString decode(QByteArrayView bytes, int codePage);

private:
    int m_codePage = 0;
    QStringDecoder m_converter;
};

// The code page 1252 byte for a character, or -1 when it has none.
int windows1252Byte(char16_t character);

}  // namespace rtf
