#pragma once
// The reader's state machine: walks the tokens, keeps the group stack and
// the font and colour tables, and hands text to the DocumentBuilder.

#include "rtf/CodePages.h"
#include "rtf/ColourTable.h"
#include "rtf/DocumentBuilder.h"
#include "rtf/FontTable.h"
#include "rtf/ReaderState.h"
#include "rtf/Tokenizer.h"

#include <QByteArray>
#include <QTextCharFormat>

#include <memory>
#include <vector>

namespace rtf {

class Reader {
public:
    explicit Reader(QByteArrayView input) : m_tokens(input) {}

    std::unique_ptr<QTextDocument> read(QString* error);

private:
    bool readHeader();
    bool openGroup();
    void closeGroup();  // never the outermost one
    void handleWord(const Token& token);
    void handleSymbol(char symbol);
    void handleText(QByteArrayView bytes);
    bool skipFallback(const Token& token);

    void appendBytes(QByteArrayView bytes);
    void flushBytes();
    void appendCharacter(char16_t character);
    void appendText(const QString& text);
    int codePage() const;
    QTextCharFormat characterFormat();

    GroupState& state() { return m_stack.back(); }

    Tokenizer m_tokens;
    std::vector<GroupState> m_stack;
    DocumentBuilder m_builder;
    FontTable m_fonts;
    ColourTable m_colours;
    CodePageDecoder m_decoder;

    int m_documentCodePage = kCodePageWindowsLatin1;
    int m_defaultFont = 0;
    QByteArray m_pendingBytes;  // code-page bytes not yet decoded
    int m_fallbackToSkip = 0;   // characters left to skip after \uN
    bool m_nextIsIgnorable = false;  // a \* was seen: the next word opens an optional destination

    // The format of the last run, rebuilt only when the state or a table changes.
    CharacterState m_formatState;
    QTextCharFormat m_format;
    bool m_formatValid = false;
};

}  // namespace rtf
