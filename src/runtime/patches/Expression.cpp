#include "runtime/patches/Expression.h"

#include <cmath>
#include <numbers>

namespace runtime {

struct Expression::Node {
    enum class Kind { Number, Variable, Unary, Binary, Ternary, Call } kind = Kind::Number;
    double number = 0;
    int variable = 0;
    QString op;  // operator or function name
    std::vector<std::shared_ptr<const Node>> args;
};

namespace {

using NodePtr = std::shared_ptr<const Expression::Node>;
constexpr int kMaxNesting = 256;
// Operator chains build deep trees without nesting; this caps them so that
// evaluation (which recurses) stays shallow.
constexpr int kMaxNodes = 4096;
constexpr double kDegrees = std::numbers::pi / 180.0;

struct FunctionInfo {
    const char* name;
    int arity;
};
constexpr FunctionInfo kFunctions[] = {
    {"sin", 1},  {"cos", 1},   {"tan", 1},   {"asin", 1},  {"acos", 1},  {"atan", 1},  {"atan2", 2}, {"sinh", 1},
    {"cosh", 1}, {"tanh", 1},  {"exp", 1},   {"ln", 1},    {"log", 1},   {"abs", 1},   {"sqrt", 1},  {"ceil", 1},
    {"floor", 1}, {"min", 2},  {"max", 2},   {"rand", 0},  {"fmod", 2},  {"round", 1}, {"trunc", 1}, {"sign", 1},
    {"pow", 2},  {"log10", 1}, {"log2", 1},
};

const FunctionInfo* findFunction(const QString& name)
{
    for (const FunctionInfo& f : kFunctions)
        if (name == QLatin1String(f.name)) return &f;
    return nullptr;
}

}  // namespace

class ExpressionParser {
public:
    ExpressionParser(const QString& text, QStringList& variables) : text_(text), variables_(variables) {}

    NodePtr parseAll()
    {
        NodePtr node = ternary();
        skipSpace();
        if (node && pos_ < text_.size()) fail(QStringLiteral("unexpected \"%1\"").arg(text_[pos_]));
        return error_.isEmpty() ? node : nullptr;
    }
    const QString& error() const { return error_; }

private:
    void fail(const QString& message)
    {
        if (error_.isEmpty()) error_ = QStringLiteral("%1 at column %2").arg(message).arg(pos_ + 1);
    }
    void skipSpace()
    {
        while (pos_ < text_.size() && text_[pos_].isSpace()) ++pos_;
    }
    bool accept(const char* token)
    {
        skipSpace();
        const QLatin1String t(token);
        if (text_.mid(pos_, t.size()) != t) return false;
        pos_ += t.size();
        return true;
    }
    static NodePtr make(Expression::Node::Kind kind, QString op, std::vector<NodePtr> args)
    {
        auto n = std::make_shared<Expression::Node>();
        n->kind = kind;
        n->op = std::move(op);
        n->args = std::move(args);
        return n;
    }
    struct Depth {
        ExpressionParser& p;
        explicit Depth(ExpressionParser& parser) : p(parser) { ++p.depth_; }
        ~Depth() { --p.depth_; }
    };

    NodePtr ternary()
    {
        Depth d(*this);
        if (depth_ > kMaxNesting) {
            fail(QStringLiteral("expression nested too deeply"));
            return nullptr;
        }
        NodePtr condition = logicalOr();
        if (!condition || !accept("?")) return condition;
        NodePtr a = ternary();
        if (!accept(":")) {
            fail(QStringLiteral("\":\" expected"));
            return nullptr;
        }
        NodePtr b = ternary();
        if (!a || !b) return nullptr;
        return make(Expression::Node::Kind::Ternary, {}, {condition, a, b});
    }
    NodePtr logicalOr()
    {
        NodePtr left = logicalAnd();
        while (left && accept("||")) left = binary(QStringLiteral("||"), left, logicalAnd());
        return left;
    }
    NodePtr logicalAnd()
    {
        NodePtr left = comparison();
        while (left && accept("&&")) left = binary(QStringLiteral("&&"), left, comparison());
        return left;
    }
    NodePtr comparison()
    {
        NodePtr left = additive();
        while (left) {
            const char* op = nullptr;
            for (const char* candidate : {"==", "!=", "<=", ">=", "<", ">"})
                if (accept(candidate)) {
                    op = candidate;
                    break;
                }
            if (!op) break;
            left = binary(QString::fromLatin1(op), left, additive());
        }
        return left;
    }
    NodePtr additive()
    {
        NodePtr left = multiplicative();
        while (left) {
            if (accept("+")) left = binary(QStringLiteral("+"), left, multiplicative());
            else if (accept("-")) left = binary(QStringLiteral("-"), left, multiplicative());
            else break;
        }
        return left;
    }
    NodePtr multiplicative()
    {
        NodePtr left = unary();
        while (left) {
            if (accept("*")) left = binary(QStringLiteral("*"), left, unary());
            else if (accept("/")) left = binary(QStringLiteral("/"), left, unary());
            else if (accept("%")) left = binary(QStringLiteral("%"), left, unary());
            else break;
        }
        return left;
    }
    NodePtr unary()
    {
        Depth d(*this);
        if (depth_ > kMaxNesting) {
            fail(QStringLiteral("expression nested too deeply"));
            return nullptr;
        }
        if (accept("-")) return unaryOf(QStringLiteral("-"), unary());
        if (accept("+")) return unary();
        if (accept("!")) return unaryOf(QStringLiteral("!"), unary());
        return power();
    }
    NodePtr power()
    {
        NodePtr base = primary();
        if (base && accept("^")) return binary(QStringLiteral("^"), base, unary());  // right-associative
        return base;
    }
    NodePtr primary()
    {
        skipSpace();
        if (pos_ >= text_.size()) {
            fail(QStringLiteral("value expected"));
            return nullptr;
        }
        const QChar c = text_[pos_];
        if (c == QLatin1Char('(')) {
            ++pos_;
            NodePtr inner = ternary();
            if (!accept(")")) {
                fail(QStringLiteral("\")\" expected"));
                return nullptr;
            }
            return inner;
        }
        if (c.isDigit() || c == QLatin1Char('.')) return numberLiteral();
        if (c.isLetter() || c == QLatin1Char('_')) return identifier();
        fail(QStringLiteral("unexpected \"%1\"").arg(c));
        return nullptr;
    }
    NodePtr numberLiteral()
    {
        const int start = pos_;
        while (pos_ < text_.size() && (text_[pos_].isDigit() || text_[pos_] == QLatin1Char('.'))) ++pos_;
        if (pos_ < text_.size() && (text_[pos_] == QLatin1Char('e') || text_[pos_] == QLatin1Char('E'))) {
            int p = pos_ + 1;
            if (p < text_.size() && (text_[p] == QLatin1Char('+') || text_[p] == QLatin1Char('-'))) ++p;
            if (p < text_.size() && text_[p].isDigit()) {
                pos_ = p;
                while (pos_ < text_.size() && text_[pos_].isDigit()) ++pos_;
            }
        }
        bool ok = false;
        const double v = text_.mid(start, pos_ - start).toDouble(&ok);
        if (!ok) {
            fail(QStringLiteral("bad number"));
            return nullptr;
        }
        auto n = std::make_shared<Expression::Node>();
        n->number = v;
        return n;
    }
    NodePtr identifier()
    {
        const int start = pos_;
        while (pos_ < text_.size() && (text_[pos_].isLetterOrNumber() || text_[pos_] == QLatin1Char('_'))) ++pos_;
        const QString name = text_.mid(start, pos_ - start);
        skipSpace();
        if (pos_ < text_.size() && text_[pos_] == QLatin1Char('(')) return call(name);
        auto n = std::make_shared<Expression::Node>();
        if (name == QLatin1String("true")) n->number = 1;
        else if (name == QLatin1String("false")) n->number = 0;
        else if (name == QLatin1String("PI") || name == QLatin1String("pi")) n->number = std::numbers::pi;
        else {
            n->kind = Expression::Node::Kind::Variable;
            int index = int(variables_.indexOf(name));
            if (index < 0) {
                index = int(variables_.size());
                variables_ << name;
            }
            n->variable = index;
        }
        return n;
    }
    NodePtr call(const QString& name)
    {
        const FunctionInfo* f = findFunction(name);
        if (!f) {
            fail(QStringLiteral("unknown function \"%1\"").arg(name));
            return nullptr;
        }
        ++pos_;  // "("
        std::vector<NodePtr> args;
        if (!accept(")")) {
            do {
                NodePtr a = ternary();
                if (!a) return nullptr;
                args.push_back(a);
            } while (accept(","));
            if (!accept(")")) {
                fail(QStringLiteral("\")\" expected"));
                return nullptr;
            }
        }
        if (int(args.size()) != f->arity) {
            fail(QStringLiteral("%1 takes %2 argument(s)").arg(name).arg(f->arity));
            return nullptr;
        }
        return make(Expression::Node::Kind::Call, name, std::move(args));
    }
    NodePtr binary(const QString& op, NodePtr left, NodePtr right)
    {
        if (!left || !right) return nullptr;
        if (++nodes_ > kMaxNodes) {
            fail(QStringLiteral("expression too long"));
            return nullptr;
        }
        return make(Expression::Node::Kind::Binary, op, {left, right});
    }
    NodePtr unaryOf(const QString& op, NodePtr operand)
    {
        if (!operand) return nullptr;
        return make(Expression::Node::Kind::Unary, op, {operand});
    }

    const QString& text_;
    QStringList& variables_;
    int pos_ = 0;
    int depth_ = 0;
    int nodes_ = 0;
    QString error_;
};

std::optional<Expression> Expression::parse(const QString& text, QString* error)
{
    Expression expression;
    ExpressionParser parser(text, expression.variables_);
    NodePtr root = parser.parseAll();
    if (!root) {
        if (error) *error = parser.error();
        return std::nullopt;
    }
    expression.root_ = root;
    return expression;
}

namespace {

double callFunction(const QString& name, const double* a)
{
    // The editor's language works in degrees.
    if (name == QLatin1String("sin")) return std::sin(a[0] * kDegrees);
    if (name == QLatin1String("cos")) return std::cos(a[0] * kDegrees);
    if (name == QLatin1String("tan")) return std::tan(a[0] * kDegrees);
    if (name == QLatin1String("asin")) return std::asin(a[0]) / kDegrees;
    if (name == QLatin1String("acos")) return std::acos(a[0]) / kDegrees;
    if (name == QLatin1String("atan")) return std::atan(a[0]) / kDegrees;
    if (name == QLatin1String("atan2")) return std::atan2(a[0], a[1]) / kDegrees;
    if (name == QLatin1String("sinh")) return std::sinh(a[0]);
    if (name == QLatin1String("cosh")) return std::cosh(a[0]);
    if (name == QLatin1String("tanh")) return std::tanh(a[0]);
    if (name == QLatin1String("exp")) return std::exp(a[0]);
    if (name == QLatin1String("ln")) return std::log(a[0]);
    if (name == QLatin1String("log") || name == QLatin1String("log10")) return std::log10(a[0]);
    if (name == QLatin1String("log2")) return std::log2(a[0]);
    if (name == QLatin1String("abs")) return std::abs(a[0]);
    if (name == QLatin1String("sqrt")) return std::sqrt(a[0]);
    if (name == QLatin1String("ceil")) return std::ceil(a[0]);
    if (name == QLatin1String("floor")) return std::floor(a[0]);
    if (name == QLatin1String("round")) return std::round(a[0]);
    if (name == QLatin1String("trunc")) return std::trunc(a[0]);
    if (name == QLatin1String("sign")) return a[0] > 0 ? 1.0 : a[0] < 0 ? -1.0 : 0.0;
    if (name == QLatin1String("min")) return std::min(a[0], a[1]);
    if (name == QLatin1String("max")) return std::max(a[0], a[1]);
    if (name == QLatin1String("fmod")) return std::fmod(a[0], a[1]);
    if (name == QLatin1String("pow")) return std::pow(a[0], a[1]);
    if (name == QLatin1String("rand")) return double(std::rand()) / RAND_MAX;
    return 0;
}

double evaluateNode(const Expression::Node& n, const std::vector<double>& values)
{
    using Kind = Expression::Node::Kind;
    switch (n.kind) {
    case Kind::Number: return n.number;
    case Kind::Variable: return std::size_t(n.variable) < values.size() ? values[std::size_t(n.variable)] : 0.0;
    case Kind::Unary: {
        const double v = evaluateNode(*n.args[0], values);
        return n.op == QLatin1String("-") ? -v : (v == 0.0 ? 1.0 : 0.0);
    }
    case Kind::Ternary:
        return evaluateNode(*n.args[0], values) != 0.0 ? evaluateNode(*n.args[1], values)
                                                       : evaluateNode(*n.args[2], values);
    case Kind::Call: {
        double a[2] = {0, 0};
        for (std::size_t i = 0; i < n.args.size() && i < 2; ++i) a[i] = evaluateNode(*n.args[i], values);
        return callFunction(n.op, a);
    }
    case Kind::Binary: {
        const double a = evaluateNode(*n.args[0], values);
        const double b = evaluateNode(*n.args[1], values);
        const QString& op = n.op;
        if (op == QLatin1String("+")) return a + b;
        if (op == QLatin1String("-")) return a - b;
        if (op == QLatin1String("*")) return a * b;
        if (op == QLatin1String("/")) return a / b;
        if (op == QLatin1String("%")) return std::fmod(a, b);
        if (op == QLatin1String("^")) return std::pow(a, b);
        if (op == QLatin1String("==")) return a == b;
        if (op == QLatin1String("!=")) return a != b;
        if (op == QLatin1String("<")) return a < b;
        if (op == QLatin1String(">")) return a > b;
        if (op == QLatin1String("<=")) return a <= b;
        if (op == QLatin1String(">=")) return a >= b;
        if (op == QLatin1String("&&")) return a != 0.0 && b != 0.0;
        if (op == QLatin1String("||")) return a != 0.0 || b != 0.0;
        return 0;
    }
    }
    return 0;
}

}  // namespace

double Expression::evaluate(const std::vector<double>& values) const
{
    return root_ ? evaluateNode(*root_, values) : 0.0;
}

}  // namespace runtime
