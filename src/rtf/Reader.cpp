#include "rtf/Reader.h"

#include "rtf/ControlWords.h"
#include "rtf/Rtf.h"

#include <QFont>

#include <algorithm>

namespace rtf {

namespace {

constexpr int kMaxUnicodeSkip = 255;

bool isBlank(QByteArrayView bytes)
{
    return std::all_of(bytes.begin(), bytes.end(), [](char c) { return c == ' ' || c == '\t'; });
}

// Control characters other than tab have no place in the text (a stray CR or
// LF would even split the paragraph in QTextDocument); an object replacement
// character would stand for an object we never make.
bool isDropped(char16_t c) { return (c < 0x20 && c != u'\t') || c == 0x7F || c == QChar::ObjectReplacementCharacter; }

}  // namespace

std::unique_ptr<QTextDocument> read(const QByteArray& rtf, QString* error)
{
    return Reader(rtf).read(error);
}

std::unique_ptr<QTextDocument> Reader::read(QString* error)
{
    const auto fail = [error](const QString& message) -> std::unique_ptr<QTextDocument> {
        if (error) *error = message;
        return nullptr;
    };
    if (!readHeader()) return fail(QStringLiteral("not RTF: the data does not start with {\\rtf"));

    for (;;) {
        const Token token = m_tokens.next();
        if (token.kind == Token::Kind::End) break;  // missing closing braces: keep what was read
        if (token.kind == Token::Kind::Error)
            return fail(QStringLiteral("\\bin data runs past the end of the input"));
        if (skipFallback(token)) continue;

        switch (token.kind) {
        case Token::Kind::GroupOpen:
            if (!openGroup())
                return fail(QStringLiteral("groups nested deeper than %1 at byte %2")
                                .arg(kMaxGroupDepth)
                                .arg(m_tokens.position()));
            break;
        case Token::Kind::GroupClose:
            if (m_stack.size() == 1) {  // the end of the document; anything after it is ignored
                flushBytes();
                return m_builder.finish(state().alignment);
            }
            closeGroup();
            break;
        case Token::Kind::ControlWord:
            handleWord(token);
            break;
        case Token::Kind::ControlSymbol:
            handleSymbol(token.symbol);
            break;
        case Token::Kind::HexByte: {
            const char byte = char(token.byte);
            appendBytes(QByteArrayView(&byte, 1));
            break;
        }
        case Token::Kind::Text:
            handleText(token.bytes);
            break;
        case Token::Kind::Binary:  // picture and object data we do not show
        case Token::Kind::End:
        case Token::Kind::Error:
            break;
        }
    }
    flushBytes();
    return m_builder.finish(state().alignment);
}

bool Reader::readHeader()
{
    Token token = m_tokens.next();
    // Leading blanks and a UTF-8 byte order mark do not make it another format.
    if (token.kind == Token::Kind::Text) {
        QByteArrayView lead = token.bytes;
        if (lead.startsWith("\xEF\xBB\xBF")) lead = lead.sliced(3);
        if (!isBlank(lead)) return false;
        token = m_tokens.next();
    }
    if (token.kind != Token::Kind::GroupOpen) return false;
    token = m_tokens.next();
    if (token.kind != Token::Kind::ControlWord || token.bytes != "rtf") return false;
    m_stack.push_back(GroupState{});
    return true;
}

bool Reader::skipFallback(const Token& token)
{
    if (m_fallbackToSkip == 0) return false;
    switch (token.kind) {
    case Token::Kind::Text: {
        // Part of the run may be fallback, the rest is text again.
        const qsizetype skipped = std::min<qsizetype>(m_fallbackToSkip, token.bytes.size());
        m_fallbackToSkip -= int(skipped);
        if (skipped < token.bytes.size()) handleText(token.bytes.sliced(skipped));
        return true;
    }
    case Token::Kind::ControlWord:
    case Token::Kind::ControlSymbol:
    case Token::Kind::HexByte:
    case Token::Kind::Binary:
        --m_fallbackToSkip;
        return true;
    default:
        // A brace ends the fallback early.
        m_fallbackToSkip = 0;
        return false;
    }
}

bool Reader::openGroup()
{
    flushBytes();
    if (int(m_stack.size()) >= kMaxGroupDepth) return false;
    m_stack.push_back(m_stack.back());
    m_nextIsIgnorable = false;
    return true;
}

void Reader::closeGroup()
{
    flushBytes();
    if (state().destination == Destination::FontTable) m_fonts.finish();  // an entry without its ';'
    const Destination closed = state().destination;
    m_stack.pop_back();
    if (closed != state().destination) m_formatValid = false;  // a table may have grown
    m_nextIsIgnorable = false;
}

void Reader::handleWord(const Token& token)
{
    flushBytes();
    const Word word = lookupWord(token.bytes);
    const int parameter = token.parameter;
    const bool on = !token.hasParameter || parameter != 0;
    GroupState& group = state();

    if (m_nextIsIgnorable) {
        // {\*\name ...}: only destinations we know are read; all others dropped.
        m_nextIsIgnorable = false;
        if (word != Word::FontTable && word != Word::ColourTable) {
            group.destination = Destination::Skip;
            return;
        }
    }
    if (group.destination == Destination::Skip) return;

    switch (word) {
    case Word::FontTable:
        group.destination = Destination::FontTable;
        return;
    case Word::ColourTable:
        group.destination = Destination::ColourTable;
        return;
    case Word::SkippedDestination:
        group.destination = Destination::Skip;
        return;
    case Word::Unicode: {
        if (!token.hasParameter) return;  // a bare \u says nothing, not even that a fallback follows
        // \uN is a signed 16-bit value, negative for the upper half; some
        // writers use the unsigned form.
        if (parameter >= -0x8000 && parameter <= 0xFFFF) appendCharacter(char16_t(parameter & 0xFFFF));
        m_fallbackToSkip = group.unicodeSkip;
        return;
    }
    case Word::UnicodeSkip:
        group.unicodeSkip = std::clamp(parameter, 0, kMaxUnicodeSkip);
        return;
    case Word::Ansi: m_documentCodePage = kCodePageWindowsLatin1; return;
    case Word::Mac: m_documentCodePage = kCodePageMacRoman; return;
    case Word::Pc: m_documentCodePage = 437; return;
    case Word::Pca: m_documentCodePage = 850; return;
    case Word::AnsiCodePage:
        if (parameter > 0) m_documentCodePage = parameter;
        return;
    case Word::DefaultFont:
        m_defaultFont = parameter;
        m_formatValid = false;
        return;
    default:
        break;
    }

    if (group.destination == Destination::FontTable) {
        if (word == Word::Font) m_fonts.begin(parameter);
        if (word == Word::FontCharset && codePageForCharset(parameter) != 0)
            m_fonts.setCodePage(codePageForCharset(parameter));
        if (word == Word::FontCodePage && parameter > 0) m_fonts.setCodePage(parameter);
        return;
    }
    if (group.destination == Destination::ColourTable) {
        if (word == Word::Red) m_colours.setRed(parameter);
        if (word == Word::Green) m_colours.setGreen(parameter);
        if (word == Word::Blue) m_colours.setBlue(parameter);
        return;
    }

    CharacterState& character = group.character;
    switch (word) {
    case Word::Par: m_builder.breakParagraph(group.alignment); break;
    case Word::Pard: group.alignment = Qt::AlignLeft; break;
    case Word::AlignLeft: group.alignment = Qt::AlignLeft; break;
    case Word::AlignCentre: group.alignment = Qt::AlignHCenter; break;
    case Word::AlignRight: group.alignment = Qt::AlignRight; break;
    case Word::AlignJustify: group.alignment = Qt::AlignJustify; break;
    case Word::Line: appendCharacter(QChar::LineSeparator); break;
    case Word::Tab:
    case Word::Cell: appendCharacter(u'\t'); break;
    case Word::Symbol: appendCharacter(symbolCharacter(token.bytes)); break;
    case Word::Plain: character = CharacterState{}; break;
    case Word::Bold: character.bold = on; break;
    case Word::Italic: character.italic = on; break;
    case Word::Underline: character.underline = on; break;
    case Word::UnderlineNone: character.underline = false; break;
    case Word::Strike: character.strike = on; break;
    case Word::Hidden: character.hidden = on; break;
    case Word::Font: character.font = parameter; break;
    case Word::Colour: character.colour = parameter; break;
    case Word::FontSize:
        character.halfPoints = token.hasParameter
            ? std::clamp(parameter, int(kMinPointSize * 2), int(kMaxPointSize * 2))
            : CharacterState{}.halfPoints;
        break;
    default:
        break;  // unknown words, and table words outside their tables
    }
}

void Reader::handleSymbol(char symbol)
{
    flushBytes();
    if (symbol == '*') {
        m_nextIsIgnorable = true;
        return;
    }
    m_nextIsIgnorable = false;
    if (symbol == '\n') {  // "\" at the end of a line, as Cocoa writes its paragraph breaks
        if (state().destination == Destination::Body) m_builder.breakParagraph(state().alignment);
        return;
    }
    if (const char16_t character = controlSymbolCharacter(symbol)) appendCharacter(character);
}

void Reader::handleText(QByteArrayView bytes)
{
    m_nextIsIgnorable = false;
    switch (state().destination) {
    case Destination::Skip:
        return;
    case Destination::Body:
        appendBytes(bytes);
        return;
    case Destination::FontTable:
    case Destination::ColourTable:
        // Entries end at ';'.
        for (qsizetype start = 0; start <= bytes.size();) {
            const qsizetype semicolon = bytes.indexOf(';', start);
            const qsizetype end = semicolon < 0 ? bytes.size() : semicolon;
            if (state().destination == Destination::FontTable) appendBytes(bytes.sliced(start, end - start));
            if (semicolon < 0) break;
            flushBytes();
            if (state().destination == Destination::FontTable)
                m_fonts.finish();
            else
                m_colours.finish();
            start = semicolon + 1;
        }
        return;
    }
}

void Reader::appendBytes(QByteArrayView bytes)
{
    if (state().destination == Destination::Skip) return;
    m_pendingBytes.append(bytes);
}

void Reader::flushBytes()
{
    if (m_pendingBytes.isEmpty()) return;
    const QString text = m_decoder.decode(m_pendingBytes, codePage());
    m_pendingBytes.clear();
    appendText(text);
}

void Reader::appendCharacter(char16_t character)
{
    flushBytes();
    appendText(QString(QChar(character)));
}

void Reader::appendText(const QString& text)
{
    switch (state().destination) {
    case Destination::FontTable:
        m_fonts.appendName(text);
        return;
    case Destination::Body:
        break;
    default:
        return;
    }
    if (state().character.hidden) return;
    QString shown = text;
    shown.removeIf([](QChar c) { return isDropped(c.unicode()); });
    m_builder.appendText(shown, characterFormat(), state().alignment);
}

int Reader::codePage() const
{
    const GroupState& group = m_stack.back();
    if (group.destination == Destination::FontTable && m_fonts.currentCodePage() != 0)
        return m_fonts.currentCodePage();
    const int number = group.character.font >= 0 ? group.character.font : m_defaultFont;
    const FontEntry* font = m_fonts.find(number);
    return font && font->codePage != 0 ? font->codePage : m_documentCodePage;
}

QTextCharFormat Reader::characterFormat()
{
    const CharacterState& character = state().character;
    if (m_formatValid && character == m_formatState) return m_format;

    QTextCharFormat format;
    const FontEntry* font = m_fonts.find(character.font >= 0 ? character.font : m_defaultFont);
    if (font && !font->family.isEmpty()) format.setFontFamilies(QStringList{font->family});
    format.setFontPointSize(character.halfPoints / 2.0);
    const bool bold = character.bold || (font && font->impliesBold);
    format.setFontWeight(bold ? QFont::Bold : QFont::Normal);
    format.setFontItalic(character.italic || (font && font->impliesItalic));
    format.setFontUnderline(character.underline);
    format.setFontStrikeOut(character.strike);
    if (const auto colour = m_colours.find(character.colour)) format.setForeground(*colour);

    m_format = format;
    m_formatState = character;
    m_formatValid = true;
    return format;
}

}  // namespace rtf
