#pragma once
// The kernel parser: its state and rules. KernelParser.cpp holds the file
// level and the statements, KernelParserExpressions.cpp the expressions.

#include "runtime/kernel/KernelLexer.h"
#include "runtime/kernel/KernelProgram.h"

#include <QHash>
#include <QSet>

#include <algorithm>

namespace runtime::kernel {

// Deeper nesting than this is refused rather than allowed to exhaust the
// stack.
constexpr int kMaxParserNesting = 200;

struct CompileError {
    int line;
    QString message;
};

struct Symbol {
    Type type;
    int slot;
    bool isConst;
};

class Parser {
public:
    Parser(std::vector<Token> tokens, KernelProgram& program) : tokens_(std::move(tokens)), program_(program) {}

    void parseProgram();

private:
    // --- Tokens ------------------------------------------------------------
    const Token& peek(int ahead = 0) const { return tokens_[std::min(pos_ + std::size_t(ahead), tokens_.size() - 1)]; }
    bool atEnd() const { return peek().kind == Token::Kind::End; }
    const Token& next();
    bool isSymbol(const char* s, int ahead = 0) const;
    bool isWord(const char* s, int ahead = 0) const;
    bool accept(const char* s);
    void expect(const char* s);
    QString found() const;
    QString identifier();
    [[noreturn]] void fail(const QString& message) const { throw CompileError{peek().line, message}; }

    // --- Types -------------------------------------------------------------
    bool isTypeWord(int ahead) const;
    struct TypeSpec {
        Type type;
        bool isColor;
        bool isConst;
    };
    TypeSpec parseType();

    // --- Scopes ------------------------------------------------------------
    int newSlot();
    const Symbol* lookup(const QString& name) const;
    int declare(const QString& name, Type type, bool isConst);

    // --- File level --------------------------------------------------------
    void parseTopLevel();
    void parseFunction(const TypeSpec& spec, const QString& name, bool isKernel, int line);

    const Function* findFunction(const QString& name, const std::vector<Parameter>& params) const;

    // --- Statements --------------------------------------------------------
    StmtPtr parseBlock(bool newScope);
    StmtPtr parseSingleStatement();
    void parseStatement(std::vector<StmtPtr>& out);

    // `type a = 1, b;` after the type and the first name. A variable without
    // a value starts at zero, so no pixel sees what the last one left.
    void parseDeclarators(const TypeSpec& spec, QString name, std::vector<StmtPtr>& out);

    // --- Expressions -------------------------------------------------------
    ExprPtr condition_(ExprPtr e);

    // `value` as a `target`-typed value: ints widen to floats and a scalar
    // spreads over a vector.
    ExprPtr converted(ExprPtr value, Type target, const QString& what);
    ExprPtr parseExpression() { return parseAssignment(); }

    ExprPtr parseAssignment();
    std::unique_ptr<LValue> asTarget(ExprPtr e);
    ExprPtr parseConditional();

    Type combined(Type a, Type b) const;
    ExprPtr parseBinary(int level);
    ExprPtr parseUnary();
    ExprPtr parsePostfix(ExprPtr base);
    ExprPtr parsePrimary();
    ExprPtr parseCall(const QString& name);
    ExprPtr construct(Type type, std::vector<ExprPtr> args);
    ExprPtr parseSwizzle(ExprPtr base, const QString& letters);
    ExprPtr arithmetic(char op, ExprPtr a, ExprPtr b);
    ExprPtr comparison(const QString& op, ExprPtr a, ExprPtr b);
    std::vector<ExprPtr> parseArguments();

    // Guards the recursion of the parser against absurdly deep nesting.
    struct Depth {
        explicit Depth(Parser& p) : parser(p)
        {
            if (++parser.depth_ > kMaxParserNesting) parser.fail(QStringLiteral("nesting too deep"));
        }
        ~Depth() { --parser.depth_; }
        Parser& parser;
    };

    std::vector<Token> tokens_;
    std::size_t pos_ = 0;
    KernelProgram& program_;
    std::vector<QHash<QString, Symbol>> scopes_;
    QSet<int> constSlots_;
    int slotCount_ = 0;
    int loopDepth_ = 0;
    int depth_ = 0;
    Type currentReturn_ = Type::Void;
};

}  // namespace runtime::kernel
