// Parses kernel source (a subset of GLSL with Core Image's additions) and
// type-checks it into the executable tree (KernelExpressions.h,
// KernelStatements.h) in one pass. Like GLSL it needs functions declared
// before use, which also rules out recursion.

#include "runtime/kernel/KernelParser.h"

namespace runtime::kernel {

namespace {

// Bounds that keep a hostile source from exhausting memory.
constexpr int kMaxSlots = 4096;
constexpr std::size_t kMaxCallArguments = 32;
// Every node holds a block of values (half a kilobyte), so the length of a
// source bounds the memory its program takes.
constexpr std::size_t kMaxTokens = 20000;

}  // namespace

void Parser::parseProgram()
{
    scopes_.emplace_back();  // file level
    while (!atEnd()) parseTopLevel();
    if (!program_.kernel_) fail(QStringLiteral("the source has no kernel function"));
    program_.slotCount_ = slotCount_;
}

const Token& Parser::next()
{
    const Token& t = peek();
    if (!atEnd()) ++pos_;
    return t;
}

bool Parser::isSymbol(const char* s, int ahead) const
{
    const Token& t = peek(ahead);
    return t.kind == Token::Kind::Symbol && t.text == QLatin1String(s);
}

bool Parser::isWord(const char* s, int ahead) const
{
    const Token& t = peek(ahead);
    return t.kind == Token::Kind::Identifier && t.text == QLatin1String(s);
}

bool Parser::accept(const char* s)
{
    if (!isSymbol(s)) return false;
    next();
    return true;
}

void Parser::expect(const char* s)
{
    if (!accept(s)) fail(QStringLiteral("expected '%1' %2").arg(QLatin1String(s), found()));
}

QString Parser::found() const
{
    return atEnd() ? QStringLiteral("at the end of the source") : QStringLiteral("before '%1'").arg(peek().text);
}

QString Parser::identifier()
{
    if (peek().kind != Token::Kind::Identifier || isTypeWord(0)) fail(QStringLiteral("expected a name %1").arg(found()));
    return next().text;
}

bool Parser::isTypeWord(int ahead) const
{
    static const char* const words[] = {"void", "float", "int", "bool", "vec2", "vec3", "vec4", "sampler", "__color", "__table",
                                        "mat2", "mat3", "mat4", "ivec2", "ivec3", "ivec4", "bvec2", "bvec3", "bvec4", "const"};
    for (const char* w : words)
        if (isWord(w, ahead)) return true;
    return false;
}

Parser::TypeSpec Parser::parseType()
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

int Parser::newSlot()
{
    if (slotCount_ >= kMaxSlots) fail(QStringLiteral("too many variables"));
    return slotCount_++;
}

const Symbol* Parser::lookup(const QString& name) const
{
    for (auto it = scopes_.rbegin(); it != scopes_.rend(); ++it) {
        const auto found = it->constFind(name);
        if (found != it->constEnd()) return &*found;
    }
    return nullptr;
}

int Parser::declare(const QString& name, Type type, bool isConst)
{
    if (scopes_.back().contains(name)) fail(QStringLiteral("'%1' is declared twice").arg(name));
    const int slot = newSlot();
    scopes_.back().insert(name, Symbol{type, slot, isConst});
    if (isConst) constSlots_.insert(slot);
    return slot;
}

void Parser::parseTopLevel()
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

void Parser::parseFunction(const TypeSpec& spec, const QString& name, bool isKernel, int line)
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

const Function* Parser::findFunction(const QString& name, const std::vector<Parameter>& params) const
{
    for (const auto& f : program_.functions_) {
        if (f->name != name || f->parameters.size() != params.size()) continue;
        bool same = true;
        for (std::size_t i = 0; i < params.size(); ++i) same = same && f->parameters[i].type == params[i].type;
        if (same) return f.get();
    }
    return nullptr;
}

StmtPtr Parser::parseBlock(bool newScope)
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

StmtPtr Parser::parseSingleStatement()
{
    std::vector<StmtPtr> body;
    scopes_.emplace_back();
    parseStatement(body);
    scopes_.pop_back();
    if (body.size() == 1) return std::move(body[0]);
    return std::make_unique<Block>(std::move(body));
}

void Parser::parseStatement(std::vector<StmtPtr>& out)
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

void Parser::parseDeclarators(const TypeSpec& spec, QString name, std::vector<StmtPtr>& out)
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
