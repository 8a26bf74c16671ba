#pragma once
// Splits RTF bytes into groups, control words, control symbols, \'hh bytes,
// \bin data and runs of plain text. It knows nothing about meaning; the
// reader gives the tokens their effect.

#include <QByteArrayView>

namespace rtf {

struct Token {
    enum class Kind {
        End,            // no more input
        GroupOpen,      // {
        GroupClose,     // }
        ControlWord,    // \name or \nameN; a delimiting space is consumed
        ControlSymbol,  // \ followed by one non-letter (\~ \- \* \\ \{ \} ...)
        HexByte,        // \'hh
        Text,           // plain bytes, never containing CR or LF (which RTF ignores)
        Binary,         // the N bytes after \binN
        Error,          // \binN runs past the end of the input
    };
    Kind kind = Kind::End;
    QByteArrayView bytes;  // the name of a control word, the text or the binary data
    int parameter = 0;     // clamped to ±kMaxParameter
    bool hasParameter = false;
    char symbol = 0;       // the character of a control symbol
    unsigned char byte = 0;  // the value of \'hh
};

class Tokenizer {
public:
    explicit Tokenizer(QByteArrayView input) : m_input(input) {}

    Token next();
    qsizetype position() const { return m_position; }

private:
    Token readControl();
    Token readControlWord();
    Token readText();
    bool atEnd() const { return m_position >= m_input.size(); }
    char peek() const { return m_input[m_position]; }

    QByteArrayView m_input;
    qsizetype m_position = 0;
};

}  // namespace rtf
