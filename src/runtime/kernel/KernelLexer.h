#pragma once
// Splits kernel source into tokens, dropping comments and keeping line
// numbers for error messages.

#include <QString>

#include <vector>

namespace runtime::kernel {

struct Token {
    enum class Kind { Identifier, Number, Symbol, End };
    Kind kind = Kind::End;
    QString text;
    bool isInteger = false;  // a number without point or exponent
    double number = 0;
    int line = 1;
};

// False with `error` set on a character that belongs to no token.
bool tokenize(const QString& source, std::vector<Token>& tokens, QString* error);

}  // namespace runtime::kernel
