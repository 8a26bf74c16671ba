#include "rtf/RtfEmitter.h"

#include "rtf/CodePages.h"

#include <QChar>

namespace rtf {

void RtfEmitter::word(const char* name)
{
    m_out += '\\';
    m_out += name;
    m_afterWord = true;
}

void RtfEmitter::word(const char* name, int parameter)
{
    word(name);
    m_out += QByteArray::number(parameter);
}

void RtfEmitter::openGroup()
{
    m_out += '{';
    m_afterWord = false;
}

void RtfEmitter::closeGroup()
{
    m_out += '}';
    m_afterWord = false;
}

void RtfEmitter::newline()
{
    m_out += '\n';
    m_afterWord = false;  // a line break ends a control word as well as a space does
}

void RtfEmitter::text(QStringView text)
{
    for (const QChar c : text) character(c.unicode());
}

void RtfEmitter::literal(char c)
{
    // Only these would run into the word (as more of its name or parameter) or be
    // eaten as its delimiter; anything else ends it by itself: "\colortbl;".
    const bool joinsWord = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == ' ' || c == '-';
    if (m_afterWord && joinsWord) m_out += ' ';
    m_out += c;
    m_afterWord = false;
}

void RtfEmitter::character(char16_t c)
{
    switch (c) {
    case u'\\':
    case u'{':
    case u'}':
        m_out += '\\';
        m_out += char(c);
        m_afterWord = false;
        return;
    case u'\t': word("tab"); return;
    case QChar::LineSeparator: word("line"); return;
    case QChar::Nbsp: m_out += "\\~"; m_afterWord = false; return;
    case QChar::SoftHyphen: m_out += "\\-"; m_afterWord = false; return;
    case 0x2011: m_out += "\\_"; m_afterWord = false; return;  // no-break hyphen
    case QChar::ObjectReplacementCharacter: return;  // an image or object we do not write
    default: break;
    }
    if (c < 0x20 || c == 0x7F) return;  // control characters are not text
    if (c < 0x80) {
        literal(char(c));
        return;
    }
    if (const int byte = windows1252Byte(c); byte >= 0) {
        static constexpr char kHex[] = "0123456789abcdef";
        m_out += "\\'";
        m_out += kHex[byte >> 4];
        m_out += kHex[byte & 15];
        m_afterWord = false;
        return;
    }
    // \uN takes a signed 16-bit N; "?" is the fallback for readers without Unicode.
    word("u", c > 0x7FFF ? int(c) - 0x10000 : int(c));
    m_out += '?';
    m_afterWord = false;
}

}  // namespace rtf
