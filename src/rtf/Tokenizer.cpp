#include "rtf/Tokenizer.h"

#include "rtf/Rtf.h"

namespace rtf {

namespace {

bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
bool isDigit(char c) { return c >= '0' && c <= '9'; }

int hexValue(char c)
{
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

}  // namespace

Token Tokenizer::next()
{
    // Raw line breaks only make the file readable; they are not text.
    while (!atEnd() && (peek() == '\r' || peek() == '\n')) ++m_position;
    if (atEnd()) return {};
    switch (peek()) {
    case '{':
        ++m_position;
        return {Token::Kind::GroupOpen};
    case '}':
        ++m_position;
        return {Token::Kind::GroupClose};
    case '\\':
        ++m_position;
        return readControl();
    default:
        return readText();
    }
}

Token Tokenizer::readControl()
{
    if (atEnd()) return {};  // a lone backslash at the very end means nothing
    const char c = peek();
    if (isLetter(c)) return readControlWord();
    ++m_position;
    if (c == '\'') {
        Token token{Token::Kind::HexByte};
        const int high = atEnd() ? -1 : hexValue(peek());
        const int low = m_position + 1 < m_input.size() ? hexValue(m_input[m_position + 1]) : -1;
        if (high < 0 || low < 0) {
            // A broken escape is dropped; the characters after it stay text.
            return {Token::Kind::ControlSymbol, {}, 0, false, '\''};
        }
        m_position += 2;
        token.byte = static_cast<unsigned char>(high * 16 + low);
        return token;
    }
    // "\" + CR or LF is the old spelling of \par; report both as '\n'.
    Token token{Token::Kind::ControlSymbol};
    token.symbol = c == '\r' ? '\n' : c;
    return token;
}

Token Tokenizer::readControlWord()
{
    const qsizetype start = m_position;
    while (!atEnd() && isLetter(peek())) ++m_position;
    Token token{Token::Kind::ControlWord};
    token.bytes = m_input.sliced(start, m_position - start);

    bool negative = false;
    if (!atEnd() && peek() == '-' && m_position + 1 < m_input.size() && isDigit(m_input[m_position + 1])) {
        negative = true;
        ++m_position;
    }
    if (!atEnd() && isDigit(peek())) {
        token.hasParameter = true;
        long long value = 0;
        while (!atEnd() && isDigit(peek())) {
            // Keep reading every digit, but stop the value from growing past the clamp.
            if (value <= kMaxParameter) value = value * 10 + (peek() - '0');
            ++m_position;
        }
        if (value > kMaxParameter) value = kMaxParameter;
        token.parameter = static_cast<int>(negative ? -value : value);
    }
    if (!atEnd() && peek() == ' ') ++m_position;

    if (token.bytes == "bin") {
        const qsizetype length = token.parameter > 0 ? token.parameter : 0;
        if (length > m_input.size() - m_position) {
            m_position = m_input.size();
            return {Token::Kind::Error};
        }
        Token data{Token::Kind::Binary};
        data.bytes = m_input.sliced(m_position, length);
        m_position += length;
        return data;
    }
    return token;
}

Token Tokenizer::readText()
{
    const qsizetype start = m_position;
    while (!atEnd()) {
        const char c = peek();
        if (c == '{' || c == '}' || c == '\\' || c == '\r' || c == '\n') break;
        ++m_position;
    }
    Token token{Token::Kind::Text};
    token.bytes = m_input.sliced(start, m_position - start);
    return token;
}

}  // namespace rtf
