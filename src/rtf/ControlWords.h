#pragma once
// The control words the reader acts on. Everything else is skipped, as RTF
// asks of readers that meet words they do not know.

#include <QByteArrayView>

namespace rtf {

enum class Word {
    Unknown,
    // Document
    Ansi, Mac, Pc, Pca, AnsiCodePage, DefaultFont, UnicodeSkip, Unicode,
    // Destinations we read; SkippedDestination covers the ones we drop
    FontTable, ColourTable, SkippedDestination,
    // Font and colour tables
    Font, FontCharset, FontCodePage, Red, Green, Blue,
    // Paragraphs and breaks
    Par, Pard, AlignLeft, AlignCentre, AlignRight, AlignJustify, Line, Tab, Cell,
    // Character formatting
    Plain, Bold, Italic, Underline, UnderlineNone, Strike, FontSize, Colour, Hidden,
    // Words standing for one character (see symbolCharacter)
    Symbol,
};

Word lookupWord(QByteArrayView name);

// The character of a Word::Symbol word (\emdash → U+2014, ...).
char16_t symbolCharacter(QByteArrayView name);

// The character of a control symbol (\~ → no-break space, ...), 0 for none.
char16_t controlSymbolCharacter(char symbol);

}  // namespace rtf
