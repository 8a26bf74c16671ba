// The expressions of the kernel language: precedence, operator types,
// swizzles, constructors and calls.

#include "runtime/kernel/KernelBuiltins.h"
#include "runtime/kernel/KernelParser.h"

#include <cmath>

namespace runtime::kernel {

namespace {

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

ExprPtr Parser::condition_(ExprPtr e)
{
    if (e->type() != Type::Bool) fail(QStringLiteral("a condition must be a bool, not a %1").arg(typeName(e->type())));
    return e;
}

ExprPtr Parser::converted(ExprPtr value, Type target, const QString& what)
{
    const Type from = value->type();
    if (from == target) return value;
    if (target == Type::Float && from == Type::Int) return value;
    if (isFloatVector(target) && (from == Type::Float || from == Type::Int)) return std::make_unique<Broadcast>(target, std::move(value));
    fail(QStringLiteral("%1 must be a %2, not a %3").arg(what, typeName(target), typeName(from)));
}

ExprPtr Parser::parseAssignment()
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

std::unique_ptr<LValue> Parser::asTarget(ExprPtr e)
{
    auto* target = dynamic_cast<LValue*>(e.get());
    if (!target) fail(QStringLiteral("this cannot be assigned to"));
    if (constSlots_.contains(target->slot())) fail(QStringLiteral("a constant cannot be changed"));
    e.release();
    return std::unique_ptr<LValue>(target);
}

ExprPtr Parser::parseConditional()
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

Type Parser::combined(Type a, Type b) const
{
    try {
        return combinedType(a, b);
    } catch (const QString& message) {
        fail(message);
    }
}


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

}  // namespace runtime::kernel
