// Parses kernel source (a subset of GLSL with Core Image's additions) and
// type-checks it into the executable tree (KernelExpressions.h,
// KernelStatements.h) in one pass.
// Like GLSL it needs functions declared before use, which also rules out
// recursion.

#include "runtime/kernel/KernelBuiltins.h"
#include "runtime/kernel/KernelLexer.h"
#include "runtime/kernel/KernelProgram.h"

#include <QHash>
#include <QSet>

#include <cmath>

namespace runtime::kernel {

namespace {

// Bounds that keep a hostile source from exhausting memory or the stack.
constexpr int kMaxSlots = 4096;
constexpr int kMaxNesting = 200;
constexpr std::size_t kMaxCallArguments = 32;
// Every node holds a block of values (half a kilobyte), so the length of a
// source bounds the memory its program takes.
constexpr std::size_t kMaxTokens = 20000;

struct CompileError {
    int line;
    QString message;
};

struct Symbol {
    Type type;
    int slot;
    bool isConst;
};

// Operators, lane by lane.
struct Add {
    float operator()(float a, float b) const { return a + b; }
};
struct Subtract {
    float operator()(float a, float b) const { return a - b; }
};
struct Multiply {
    float operator()(float a, float b) const { return a * b; }
};
struct Divide {
    float operator()(float a, float b) const { return a / b; }
};
// Integer division truncates; dividing by zero gives zero rather than a trap.
struct DivideInt {
    float operator()(float a, float b) const { return b == 0 ? 0.0f : std::trunc(a / b); }
};
struct Less {
    float operator()(float a, float b) const { return a < b ? 1.0f : 0.0f; }
};
struct Greater {
    float operator()(float a, float b) const { return a > b ? 1.0f : 0.0f; }
};
struct LessEqual {
    float operator()(float a, float b) const { return a <= b ? 1.0f : 0.0f; }
};
struct GreaterEqual {
    float operator()(float a, float b) const { return a >= b ? 1.0f : 0.0f; }
};
struct Xor {
    float operator()(float a, float b) const { return (a != 0) != (b != 0) ? 1.0f : 0.0f; }
};
struct Negate {
    float operator()(float a) const { return -a; }
};
struct Not {
    float operator()(float a) const { return a != 0 ? 0.0f : 1.0f; }
};

// Lane numbers of swizzle letters; -1 for a letter of no set.
int laneOfLetter(QChar c, int& set)
{
    static const char* const sets[] = {"xyzw", "rgba", "stpq"};
    for (int s = 0; s < 3; ++s)
        for (int i = 0; i < 4; ++i)
            if (c == QLatin1Char(sets[s][i])) {
                if (set >= 0 && set != s) return -1;
                set = s;
                return i;
            }
    return -1;
}

}  // namespace

class Parser {
public:
    Parser(std::vector<Token> tokens, KernelProgram& program) : tokens_(std::move(tokens)), program_(program) {}

    void parseProgram()
    {
        scopes_.emplace_back();  // file level
        while (!atEnd()) parseTopLevel();
        if (!program_.kernel_) fail(QStringLiteral("the source has no kernel function"));
        program_.slotCount_ = slotCount_;
    }

private:
    // --- Tokens ------------------------------------------------------------
    const Token& peek(int ahead = 0) const { return tokens_[std::min(pos_ + std::size_t(ahead), tokens_.size() - 1)]; }
    bool atEnd() const { return peek().kind == Token::Kind::End; }
    const Token& next()
    {
        const Token& t = peek();
        if (!atEnd()) ++pos_;
        return t;
    }
    bool isSymbol(const char* s, int ahead = 0) const
    {
        const Token& t = peek(ahead);
        return t.kind == Token::Kind::Symbol && t.text == QLatin1String(s);
    }
    bool isWord(const char* s, int ahead = 0) const
    {
        const Token& t = peek(ahead);
        return t.kind == Token::Kind::Identifier && t.text == QLatin1String(s);
    }
    bool accept(const char* s)
    {
        if (!isSymbol(s)) return false;
        next();
        return true;
    }
    void expect(const char* s)
    {
        if (!accept(s)) fail(QStringLiteral("expected '%1' %2").arg(QLatin1String(s), found()));
    }
    QString found() const
    {
        return atEnd() ? QStringLiteral("at the end of the source") : QStringLiteral("before '%1'").arg(peek().text);
    }
    QString identifier()
    {
        if (peek().kind != Token::Kind::Identifier || isTypeWord(0)) fail(QStringLiteral("expected a name %1").arg(found()));
        return next().text;
    }
    [[noreturn]] void fail(const QString& message) const { throw CompileError{peek().line, message}; }

    // --- Types -------------------------------------------------------------
    bool isTypeWord(int ahead) const
    {
        static const char* const words[] = {"void", "float", "int", "bool", "vec2", "vec3", "vec4", "sampler", "__color", "__table",
                                            "mat2", "mat3", "mat4", "ivec2", "ivec3", "ivec4", "bvec2", "bvec3", "bvec4", "const"};
        for (const char* w : words)
            if (isWord(w, ahead)) return true;
        return false;
    }
    struct TypeSpec {
        Type type;
        bool isColor;
        bool isConst;
    };
    TypeSpec parseType()
    {
        TypeSpec spec{Type::Void, false, false};
        if (isWord("const")) {
            next();
            spec.isConst = true;
        }
        if (isWord("__table")) next();  // a lookup table is an ordinary sampler here
        const QString word = peek().text;
        static const QHash<QString, Type> types = {{QStringLiteral("void"), Type::Void},   {QStringLiteral("float"), Type::Float},
                                                   {QStringLiteral("int"), Type::Int},     {QStringLiteral("bool"), Type::Bool},
                                                   {QStringLiteral("vec2"), Type::Vec2},   {QStringLiteral("vec3"), Type::Vec3},
                                                   {QStringLiteral("vec4"), Type::Vec4},   {QStringLiteral("sampler"), Type::Sampler},
                                                   {QStringLiteral("__color"), Type::Vec4}};
        const auto it = types.constFind(word);
        if (peek().kind != Token::Kind::Identifier || it == types.constEnd()) {
            if (isTypeWord(0)) fail(QStringLiteral("the type '%1' is not supported").arg(word));
            fail(QStringLiteral("expected a type %1").arg(found()));
        }
        next();
        spec.type = *it;
        spec.isColor = word == QLatin1String("__color");
        return spec;
    }

    // --- Scopes ------------------------------------------------------------
    int newSlot()
    {
        if (slotCount_ >= kMaxSlots) fail(QStringLiteral("too many variables"));
        return slotCount_++;
    }
    const Symbol* lookup(const QString& name) const
    {
        for (auto it = scopes_.rbegin(); it != scopes_.rend(); ++it) {
            const auto found = it->constFind(name);
            if (found != it->constEnd()) return &*found;
        }
        return nullptr;
    }
    int declare(const QString& name, Type type, bool isConst)
    {
        if (scopes_.back().contains(name)) fail(QStringLiteral("'%1' is declared twice").arg(name));
        const int slot = newSlot();
        scopes_.back().insert(name, Symbol{type, slot, isConst});
        if (isConst) constSlots_.insert(slot);
        return slot;
    }

    // --- File level --------------------------------------------------------
    void parseTopLevel()
    {
        const bool isKernel = isWord("kernel");
        if (isKernel) next();
        const int line = peek().line;
        const TypeSpec spec = parseType();
        const QString name = identifier();
        if (isSymbol("(")) {
            parseFunction(spec, name, isKernel, line);
            return;
        }
        if (isKernel) fail(QStringLiteral("expected '(' %1").arg(found()));
        parseDeclarators(spec, name, program_.globals_);
    }

    void parseFunction(const TypeSpec& spec, const QString& name, bool isKernel, int line)
    {
        auto function = std::make_unique<Function>();
        function->name = name;
        function->returnType = spec.type;
        function->isKernel = isKernel;
        if (isKernel && spec.type != Type::Vec4) fail(QStringLiteral("a kernel returns a vec4"));
        scopes_.emplace_back();
        expect("(");
        if (isWord("void") && isSymbol(")", 1)) next();
        if (!isSymbol(")")) {
            do {
                if (isWord("out") || isWord("inout")) fail(QStringLiteral("out parameters are not supported"));
                if (isWord("in")) next();
                const TypeSpec p = parseType();
                if (p.type == Type::Void) fail(QStringLiteral("a parameter cannot be void"));
                const QString pname = identifier();
                function->parameters.push_back(Parameter{pname, p.type, p.isColor, declare(pname, p.type, p.isConst)});
            } while (accept(","));
        }
        expect(")");
        if (!isKernel && function->parameters.size() > kMaxCallArguments) fail(QStringLiteral("too many parameters"));
        if (accept(";")) {  // a prototype: the definition must follow before use, which we do not track
            scopes_.pop_back();
            fail(QStringLiteral("function prototypes are not supported"));
        }
        if (findFunction(name, function->parameters)) {
            CompileError e{line, QStringLiteral("'%1' is defined twice").arg(name)};
            throw e;
        }
        currentReturn_ = spec.type;
        function->body = parseBlock(false);
        scopes_.pop_back();
        Function* raw = function.get();
        program_.functions_.push_back(std::move(function));
        if (isKernel && !program_.kernel_) program_.kernel_ = raw;
    }

    const Function* findFunction(const QString& name, const std::vector<Parameter>& params) const
    {
        for (const auto& f : program_.functions_) {
            if (f->name != name || f->parameters.size() != params.size()) continue;
            bool same = true;
            for (std::size_t i = 0; i < params.size(); ++i) same = same && f->parameters[i].type == params[i].type;
            if (same) return f.get();
        }
        return nullptr;
    }

    // --- Statements --------------------------------------------------------
    StmtPtr parseBlock(bool newScope)
    {
        expect("{");
        Depth depth(*this);
        if (newScope) scopes_.emplace_back();
        std::vector<StmtPtr> body;
        while (!isSymbol("}")) {
            if (atEnd()) fail(QStringLiteral("expected '}' at the end of the source"));
            parseStatement(body);
        }
        next();
        if (newScope) scopes_.pop_back();
        return std::make_unique<Block>(std::move(body));
    }

    StmtPtr parseSingleStatement()
    {
        std::vector<StmtPtr> body;
        scopes_.emplace_back();
        parseStatement(body);
        scopes_.pop_back();
        if (body.size() == 1) return std::move(body[0]);
        return std::make_unique<Block>(std::move(body));
    }

    void parseStatement(std::vector<StmtPtr>& out)
    {
        Depth depth(*this);
        if (isSymbol("{")) {
            out.push_back(parseBlock(true));
        } else if (accept(";")) {
        } else if (isWord("if")) {
            next();
            expect("(");
            ExprPtr condition = condition_(parseExpression());
            expect(")");
            StmtPtr yes = parseSingleStatement();
            StmtPtr no;
            if (isWord("else")) {
                next();
                no = parseSingleStatement();
            }
            out.push_back(std::make_unique<If>(std::move(condition), std::move(yes), std::move(no)));
        } else if (isWord("for")) {
            next();
            expect("(");
            scopes_.emplace_back();
            std::vector<StmtPtr> init;
            if (!accept(";")) {
                if (isTypeWord(0)) {
                    const TypeSpec spec = parseType();
                    parseDeclarators(spec, identifier(), init);
                } else {
                    init.push_back(std::make_unique<ExprStmt>(parseExpression()));
                    expect(";");
                }
            }
            ExprPtr condition = isSymbol(";") ? nullptr : condition_(parseExpression());
            expect(";");
            ExprPtr step = isSymbol(")") ? nullptr : parseExpression();
            expect(")");
            ++loopDepth_;
            StmtPtr body = parseSingleStatement();
            --loopDepth_;
            scopes_.pop_back();
            out.push_back(std::make_unique<Loop>(std::make_unique<Block>(std::move(init)), std::move(condition), std::move(step),
                                                 std::move(body), false));
        } else if (isWord("while")) {
            next();
            expect("(");
            ExprPtr condition = condition_(parseExpression());
            expect(")");
            ++loopDepth_;
            StmtPtr body = parseSingleStatement();
            --loopDepth_;
            out.push_back(std::make_unique<Loop>(nullptr, std::move(condition), nullptr, std::move(body), false));
        } else if (isWord("do")) {
            next();
            ++loopDepth_;
            StmtPtr body = parseSingleStatement();
            --loopDepth_;
            if (!isWord("while")) fail(QStringLiteral("expected 'while' %1").arg(found()));
            next();
            expect("(");
            ExprPtr condition = condition_(parseExpression());
            expect(")");
            expect(";");
            out.push_back(std::make_unique<Loop>(nullptr, std::move(condition), nullptr, std::move(body), true));
        } else if (isWord("break") || isWord("continue")) {
            const bool isBreak = isWord("break");
            if (loopDepth_ == 0) fail(QStringLiteral("'%1' outside a loop").arg(peek().text));
            next();
            expect(";");
            out.push_back(std::make_unique<Jump>(isBreak));
        } else if (isWord("return")) {
            next();
            ExprPtr value;
            if (!isSymbol(";")) value = converted(parseExpression(), currentReturn_, QStringLiteral("return value"));
            else if (currentReturn_ != Type::Void) fail(QStringLiteral("return needs a %1").arg(typeName(currentReturn_)));
            expect(";");
            out.push_back(std::make_unique<Return>(std::move(value)));
        } else if (isTypeWord(0)) {
            const TypeSpec spec = parseType();
            parseDeclarators(spec, identifier(), out);
        } else {
            out.push_back(std::make_unique<ExprStmt>(parseExpression()));
            expect(";");
        }
    }

    // `type a = 1, b;` after the type and the first name. A variable without
    // a value starts at zero, so no pixel sees what the last one left.
    void parseDeclarators(const TypeSpec& spec, QString name, std::vector<StmtPtr>& out)
    {
        if (spec.type == Type::Void || spec.type == Type::Sampler)
            fail(QStringLiteral("a variable cannot be a %1").arg(typeName(spec.type)));
        for (;;) {
            ExprPtr value = accept("=") ? converted(parseAssignment(), spec.type, QStringLiteral("'%1'").arg(name))
                                        : std::make_unique<Constant>(spec.type, Vec{});
            const int slot = declare(name, spec.type, spec.isConst);
            out.push_back(std::make_unique<ExprStmt>(
                std::make_unique<Assign>(spec.type, std::make_unique<Variable>(spec.type, slot), std::move(value))));
            if (!accept(",")) break;
            name = identifier();
        }
        expect(";");
    }

    // --- Expressions -------------------------------------------------------
    ExprPtr condition_(ExprPtr e)
    {
        if (e->type() != Type::Bool) fail(QStringLiteral("a condition must be a bool, not a %1").arg(typeName(e->type())));
        return e;
    }

    // `value` as a `target`-typed value: ints widen to floats and a scalar
    // spreads over a vector (every lane already holds it).
    ExprPtr converted(ExprPtr value, Type target, const QString& what)
    {
        const Type from = value->type();
        if (from == target) return value;
        if (target == Type::Float && from == Type::Int) return value;
        if (isFloatVector(target) && (from == Type::Float || from == Type::Int)) return std::make_unique<Broadcast>(target, std::move(value));
        fail(QStringLiteral("%1 must be a %2, not a %3").arg(what, typeName(target), typeName(from)));
    }

    ExprPtr parseExpression() { return parseAssignment(); }

    ExprPtr parseAssignment()
    {
        Depth depth(*this);
        ExprPtr left = parseConditional();
        static const char* const ops[] = {"=", "+=", "-=", "*=", "/="};
        for (const char* op : ops) {
            if (!isSymbol(op)) continue;
            next();
            std::unique_ptr<LValue> target = asTarget(std::move(left));
            ExprPtr right = parseAssignment();
            const Type type = target->type();
            ExprPtr value;
            if (op[0] == '=') {
                value = converted(std::move(right), type, QStringLiteral("the assigned value"));
            } else {
                value = arithmetic(op[0], std::make_unique<LValueRead>(target.get()), std::move(right));
                value = converted(std::move(value), type, QStringLiteral("the result"));
            }
            return std::make_unique<Assign>(type, std::move(target), std::move(value));
        }
        return left;
    }

    std::unique_ptr<LValue> asTarget(ExprPtr e)
    {
        auto* target = dynamic_cast<LValue*>(e.get());
        if (!target) fail(QStringLiteral("this cannot be assigned to"));
        if (constSlots_.contains(target->slot())) fail(QStringLiteral("a constant cannot be changed"));
        e.release();
        return std::unique_ptr<LValue>(target);
    }

    ExprPtr parseConditional()
    {
        ExprPtr condition = parseBinary(0);
        if (!accept("?")) return condition;
        condition = condition_(std::move(condition));
        ExprPtr yes = parseExpression();
        expect(":");
        ExprPtr no = parseAssignment();
        Type type = yes->type();
        if (no->type() != type) {
            if (!isNumeric(type) || !isNumeric(no->type()))
                fail(QStringLiteral("the two sides of '?:' differ: %1 and %2").arg(typeName(type), typeName(no->type())));
            type = combined(type, no->type());
            yes = converted(std::move(yes), type, QStringLiteral("'?:'"));
            no = converted(std::move(no), type, QStringLiteral("'?:'"));
        }
        return std::make_unique<Conditional>(type, std::move(condition), std::move(yes), std::move(no));
    }

    Type combined(Type a, Type b) const
    {
        try {
            return combinedType(a, b);
        } catch (const QString& message) {
            fail(message);
        }
    }

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
            if (++parser.depth_ > kMaxNesting) parser.fail(QStringLiteral("nesting too deep"));
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


// Precedence levels from loosest: || ^^ && (== !=) (< > <= >=) (+ -) (* /).
ExprPtr Parser::parseBinary(int level)
{
    static const std::vector<std::vector<const char*>> levels = {{"||"}, {"^^"}, {"&&"}, {"==", "!="}, {"<", ">", "<=", ">="}, {"+", "-"}, {"*", "/", "%"}};
    if (level == int(levels.size())) return parseUnary();
    Depth depth(*this);
    ExprPtr left = parseBinary(level + 1);
    for (;;) {
        const char* op = nullptr;
        for (const char* candidate : levels[std::size_t(level)])
            if (isSymbol(candidate)) op = candidate;
        if (!op) return left;
        next();
        if (op[0] == '%') fail(QStringLiteral("'%' is not supported; use mod()"));
        ExprPtr right = parseBinary(level + 1);
        const QString o = QLatin1String(op);
        if (o == QLatin1String("||") || o == QLatin1String("&&") || o == QLatin1String("^^")) {
            ExprPtr a = condition_(std::move(left));
            ExprPtr b = condition_(std::move(right));
            if (o == QLatin1String("^^")) left = std::make_unique<Map2<Xor>>(Type::Bool, std::move(a), std::move(b));
            else left = std::make_unique<LogicalAnd>(std::move(a), std::move(b), o == QLatin1String("||"));
            continue;
        }
        if (o == QLatin1String("+") || o == QLatin1String("-") || o == QLatin1String("*") || o == QLatin1String("/"))
            left = arithmetic(op[0], std::move(left), std::move(right));
        else
            left = comparison(o, std::move(left), std::move(right));
    }
}

ExprPtr Parser::arithmetic(char op, ExprPtr a, ExprPtr b)
{
    if (!isNumeric(a->type()) || !isNumeric(b->type()))
        fail(QStringLiteral("'%1' needs numbers, not a %2 and a %3").arg(QLatin1Char(op)).arg(typeName(a->type()), typeName(b->type())));
    const Type type = combined(a->type(), b->type());
    switch (op) {
    case '+': return std::make_unique<Map2<Add>>(type, std::move(a), std::move(b));
    case '-': return std::make_unique<Map2<Subtract>>(type, std::move(a), std::move(b));
    case '*': return std::make_unique<Map2<Multiply>>(type, std::move(a), std::move(b));
    default:
        if (type == Type::Int) return std::make_unique<Map2<DivideInt>>(type, std::move(a), std::move(b));
        return std::make_unique<Map2<Divide>>(type, std::move(a), std::move(b));
    }
}

ExprPtr Parser::comparison(const QString& op, ExprPtr a, ExprPtr b)
{
    const Type ta = a->type(), tb = b->type();
    if (op == QLatin1String("==") || op == QLatin1String("!=")) {
        const bool comparable = ta == tb || (isNumeric(ta) && isNumeric(tb) && laneCount(ta) == laneCount(tb));
        if (!comparable || ta == Type::Sampler)
            fail(QStringLiteral("cannot compare a %1 with a %2").arg(typeName(ta), typeName(tb)));
        return std::make_unique<Equality>(std::move(a), std::move(b), laneCount(ta), op == QLatin1String("=="));
    }
    if (!(ta == Type::Float || ta == Type::Int) || !(tb == Type::Float || tb == Type::Int))
        fail(QStringLiteral("'%1' compares numbers, not a %2 and a %3").arg(op, typeName(ta), typeName(tb)));
    if (op == QLatin1String("<")) return std::make_unique<Map2<Less>>(Type::Bool, std::move(a), std::move(b));
    if (op == QLatin1String(">")) return std::make_unique<Map2<Greater>>(Type::Bool, std::move(a), std::move(b));
    if (op == QLatin1String("<=")) return std::make_unique<Map2<LessEqual>>(Type::Bool, std::move(a), std::move(b));
    return std::make_unique<Map2<GreaterEqual>>(Type::Bool, std::move(a), std::move(b));
}

ExprPtr Parser::parseUnary()
{
    Depth depth(*this);
    if (accept("+")) {
        ExprPtr e = parseUnary();
        if (!isNumeric(e->type())) fail(QStringLiteral("'+' needs a number"));
        return e;
    }
    if (accept("-")) {
        ExprPtr e = parseUnary();
        if (!isNumeric(e->type())) fail(QStringLiteral("'-' needs a number, not a %1").arg(typeName(e->type())));
        const Type type = e->type();
        return std::make_unique<Map1<Negate>>(type, std::move(e));
    }
    if (accept("!")) return std::make_unique<Map1<Not>>(Type::Bool, condition_(parseUnary()));
    if (isSymbol("++") || isSymbol("--")) {
        const char op = next().text[0].toLatin1();
        std::unique_ptr<LValue> target = asTarget(parseUnary());
        if (!isNumeric(target->type())) fail(QStringLiteral("'%1%1' needs a number").arg(QLatin1Char(op)));
        const Type type = target->type();
        ExprPtr value = arithmetic(op, std::make_unique<LValueRead>(target.get()), std::make_unique<Constant>(Type::Int, Vec::splat(1)));
        return std::make_unique<Assign>(type, std::move(target), std::move(value));
    }
    return parsePostfix(parsePrimary());
}

ExprPtr Parser::parsePostfix(ExprPtr base)
{
    for (;;) {
        if (accept(".")) {
            base = parseSwizzle(std::move(base), identifier());
        } else if (accept("[")) {
            ExprPtr index = parseExpression();
            expect("]");
            if (!isFloatVector(base->type())) fail(QStringLiteral("only vectors can be indexed"));
            if (index->type() != Type::Int && index->type() != Type::Float) fail(QStringLiteral("an index must be a number"));
            const int lanes = laneCount(base->type());
            if (auto* constant = dynamic_cast<Constant*>(index.get())) {
                const float i = constant->value().v[0];
                if (!(i >= 0 && i < float(lanes))) fail(QStringLiteral("index %1 is outside a %2").arg(double(i)).arg(typeName(base->type())));
                base = parseSwizzle(std::move(base), QString(QLatin1Char("xyzw"[int(i)])));
            } else if (auto* variable = dynamic_cast<Variable*>(base.get())) {
                base = std::make_unique<DynamicIndex>(variable->slot(), lanes, std::move(index));
            } else {
                fail(QStringLiteral("a computed vector can only be indexed by a constant"));
            }
        } else if (isSymbol("++") || isSymbol("--")) {
            const char op = next().text[0].toLatin1();
            std::unique_ptr<LValue> target = asTarget(std::move(base));
            if (!isNumeric(target->type())) fail(QStringLiteral("'%1%1' needs a number").arg(QLatin1Char(op)));
            const Type type = target->type();
            ExprPtr value = arithmetic(op, std::make_unique<LValueRead>(target.get()), std::make_unique<Constant>(Type::Int, Vec::splat(1)));
            base = std::make_unique<Assign>(type, std::move(target), std::move(value), true);
        } else {
            return base;
        }
    }
}

ExprPtr Parser::parseSwizzle(ExprPtr base, const QString& letters)
{
    const Type type = base->type();
    if (!isFloatVector(type) && type != Type::Float)
        fail(QStringLiteral("a %1 has no components").arg(typeName(type)));
    if (letters.size() > 4) fail(QStringLiteral("'.%1' picks more than four components").arg(letters));
    int lanes[4] = {0, 0, 0, 0};
    int set = -1;
    bool repeats = false;
    for (qsizetype i = 0; i < letters.size(); ++i) {
        lanes[i] = laneOfLetter(letters[i], set);
        if (lanes[i] < 0 || lanes[i] >= laneCount(type))
            fail(QStringLiteral("'.%1' does not fit a %2").arg(letters, typeName(type)));
        for (qsizetype j = 0; j < i; ++j) repeats = repeats || lanes[j] == lanes[i];
    }
    const int count = int(letters.size());
    const Type result = floatType(count);
    if (auto* variable = dynamic_cast<Variable*>(base.get()); variable && !repeats)
        return std::make_unique<Swizzle>(result, variable->slot(), lanes, count);
    return std::make_unique<RvalueSwizzle>(result, std::move(base), lanes, count);
}

std::vector<ExprPtr> Parser::parseArguments()
{
    std::vector<ExprPtr> args;
    expect("(");
    if (!isSymbol(")")) {
        do {
            args.push_back(parseAssignment());
            if (args.size() > 64) fail(QStringLiteral("too many arguments"));
        } while (accept(","));
    }
    expect(")");
    return args;
}

ExprPtr Parser::parsePrimary()
{
    Depth depth(*this);
    const Token& t = peek();
    if (t.kind == Token::Kind::Number) {
        next();
        const float value = float(t.number);
        if (!std::isfinite(value)) fail(QStringLiteral("the number %1 is too large").arg(t.text));
        return std::make_unique<Constant>(t.isInteger ? Type::Int : Type::Float, Vec::splat(value));
    }
    if (accept("(")) {
        ExprPtr e = parseExpression();
        expect(")");
        return e;
    }
    if (t.kind != Token::Kind::Identifier) fail(QStringLiteral("expected a value %1").arg(found()));
    if (isWord("true") || isWord("false")) {
        const bool value = isWord("true");
        next();
        return std::make_unique<Constant>(Type::Bool, Vec::splat(value ? 1.0f : 0.0f));
    }
    if (isTypeWord(0) && isSymbol("(", 1)) {
        const TypeSpec spec = parseType();
        std::vector<ExprPtr> args = parseArguments();
        return construct(spec.type, std::move(args));
    }
    const QString name = next().text;
    if (isSymbol("(")) return parseCall(name);
    const Symbol* symbol = lookup(name);
    if (!symbol) fail(QStringLiteral("'%1' is not declared").arg(name));
    return std::make_unique<Variable>(symbol->type, symbol->slot);
}

ExprPtr Parser::construct(Type type, std::vector<ExprPtr> args)
{
    const QString name = typeName(type);
    if (type == Type::Void || type == Type::Sampler) fail(QStringLiteral("a %1 cannot be constructed").arg(name));
    for (const ExprPtr& a : args)
        if (a->type() == Type::Sampler || a->type() == Type::Void) fail(QStringLiteral("%1() needs numbers").arg(name));
    if (args.empty()) fail(QStringLiteral("%1() needs a value").arg(name));
    if (isScalar(type)) {
        if (args.size() != 1) fail(QStringLiteral("%1() takes one value").arg(name));
        if (args[0]->type() == type) return std::move(args[0]);
        return std::make_unique<Convert>(type, std::move(args[0]));
    }
    const int wanted = laneCount(type);
    int have = 0;
    for (const ExprPtr& a : args) {
        if (have >= wanted) fail(QStringLiteral("%1() has too many values").arg(name));
        have += a->lanes();
    }
    if (have < wanted && !(args.size() == 1 && args[0]->lanes() == 1))
        fail(QStringLiteral("%1() needs %2 values, not %3").arg(name).arg(wanted).arg(have));
    return std::make_unique<Construct>(type, std::move(args));
}

ExprPtr Parser::parseCall(const QString& name)
{
    std::vector<ExprPtr> args = parseArguments();
    bool named = false;
    for (const auto& f : program_.functions_) {
        if (f->name != name) continue;
        named = true;
        if (f->isKernel) fail(QStringLiteral("a kernel cannot be called"));
        if (f->parameters.size() != args.size()) continue;
        bool fits = true;
        for (std::size_t i = 0; i < args.size(); ++i) {
            const Type want = f->parameters[i].type, have = args[i]->type();
            fits = fits && (want == have || (want == Type::Float && have == Type::Int));
        }
        if (fits) return std::make_unique<Call>(f->returnType, f.get(), std::move(args));
    }
    if (named) fail(QStringLiteral("no '%1' takes these arguments").arg(name));
    ExprPtr builtin;
    try {
        builtin = makeBuiltinCall(name, args);
    } catch (const QString& message) {
        fail(message);
    }
    if (!builtin) fail(QStringLiteral("unknown function '%1'").arg(name));
    return builtin;
}

std::shared_ptr<const KernelProgram> KernelProgram::compile(const QString& source, QString* error)
{
    std::vector<Token> tokens;
    if (!tokenize(source, tokens, error)) return nullptr;
    if (tokens.size() > kMaxTokens) {
        if (error) *error = QStringLiteral("the kernel is too long");
        return nullptr;
    }
    std::shared_ptr<KernelProgram> program(new KernelProgram);
    program->source_ = source;
    try {
        Parser(std::move(tokens), *program).parseProgram();
    } catch (const CompileError& e) {
        if (error) *error = QStringLiteral("line %1: %2").arg(e.line).arg(e.message);
        return nullptr;
    }
    return program;
}

}  // namespace runtime::kernel
