#include "runtime/kernel/KernelLexer.h"

namespace runtime::kernel {

namespace {

bool isIdentifierStart(QChar c) { return c.isLetter() || c == QLatin1Char('_'); }
bool isIdentifierPart(QChar c) { return c.isLetterOrNumber() || c == QLatin1Char('_'); }

const char* const kSymbols[] = {"<<=", ">>=", "++", "--", "+=", "-=", "*=", "/=", "%=", "==", "!=", "<=", ">=", "&&", "||", "^^",
                                "(",   ")",   "{",  "}",  "[",  "]",  ";",  ",",  ".",  "+",  "-",  "*",  "/",  "%",  "<",  ">",
                                "=",   "!",   "?",  ":",  "&",  "|",  "^",  "~"};

}  // namespace

bool tokenize(const QString& source, std::vector<Token>& tokens, QString* error)
{
    int line = 1;
    const qsizetype n = source.size();
    qsizetype i = 0;
    const auto fail = [&](const QString& message) {
        if (error) *error = QStringLiteral("line %1: %2").arg(line).arg(message);
        return false;
    };
    while (i < n) {
        const QChar c = source[i];
        if (c == QLatin1Char('\n')) {
            ++line;
            ++i;
            continue;
        }
        if (c.isSpace()) {
            ++i;
            continue;
        }
        if (c == QLatin1Char('/') && i + 1 < n && source[i + 1] == QLatin1Char('/')) {
            while (i < n && source[i] != QLatin1Char('\n')) ++i;
            continue;
        }
        if (c == QLatin1Char('/') && i + 1 < n && source[i + 1] == QLatin1Char('*')) {
            const int startLine = line;
            i += 2;
            while (i + 1 < n && !(source[i] == QLatin1Char('*') && source[i + 1] == QLatin1Char('/'))) {
                if (source[i] == QLatin1Char('\n')) ++line;
                ++i;
            }
            if (i + 1 >= n) {
                line = startLine;
                return fail(QStringLiteral("unterminated comment"));
            }
            i += 2;
            continue;
        }
        if (c == QLatin1Char('#')) return fail(QStringLiteral("preprocessor directives are not supported"));
        Token t;
        t.line = line;
        if (isIdentifierStart(c)) {
            const qsizetype start = i;
            while (i < n && isIdentifierPart(source[i])) ++i;
            t.kind = Token::Kind::Identifier;
            t.text = source.mid(start, i - start);
        } else if (c.isDigit() || (c == QLatin1Char('.') && i + 1 < n && source[i + 1].isDigit())) {
            const qsizetype start = i;
            bool integer = true;
            while (i < n && source[i].isDigit()) ++i;
            if (i < n && source[i] == QLatin1Char('.')) {
                integer = false;
                ++i;
                while (i < n && source[i].isDigit()) ++i;
            }
            if (i < n && (source[i] == QLatin1Char('e') || source[i] == QLatin1Char('E'))) {
                qsizetype j = i + 1;
                if (j < n && (source[j] == QLatin1Char('+') || source[j] == QLatin1Char('-'))) ++j;
                if (j < n && source[j].isDigit()) {
                    integer = false;
                    i = j;
                    while (i < n && source[i].isDigit()) ++i;
                }
            }
            t.kind = Token::Kind::Number;
            t.text = source.mid(start, i - start);
            t.isInteger = integer;
            bool ok = false;
            t.number = t.text.toDouble(&ok);
            if (!ok) return fail(QStringLiteral("bad number '%1'").arg(t.text));
            if (i < n && (source[i] == QLatin1Char('f') || source[i] == QLatin1Char('F'))) {
                t.isInteger = false;
                ++i;
            }
            if (i < n && isIdentifierPart(source[i])) return fail(QStringLiteral("bad number '%1'").arg(t.text + source[i]));
        } else {
            for (const char* symbol : kSymbols) {
                const QLatin1StringView s(symbol);
                if (QStringView(source).mid(i).startsWith(s)) {
                    t.kind = Token::Kind::Symbol;
                    t.text = s;
                    i += s.size();
                    break;
                }
            }
            if (t.kind != Token::Kind::Symbol) return fail(QStringLiteral("unexpected character '%1'").arg(c));
        }
        tokens.push_back(std::move(t));
    }
    Token end;
    end.line = line;
    tokens.push_back(end);
    return true;
}

}  // namespace runtime::kernel
