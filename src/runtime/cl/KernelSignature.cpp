#include "runtime/cl/KernelSignature.h"

#include <QRegularExpression>
#include <QStringList>

namespace runtime::cl {

namespace {

QString withoutComments(const QString& source)
{
    QString out;
    out.reserve(source.size());
    for (qsizetype i = 0; i < source.size(); ++i) {
        if (source[i] == QLatin1Char('/') && i + 1 < source.size() && source[i + 1] == QLatin1Char('/')) {
            while (i < source.size() && source[i] != QLatin1Char('\n')) ++i;
            out += QLatin1Char('\n');
        } else if (source[i] == QLatin1Char('/') && i + 1 < source.size() && source[i + 1] == QLatin1Char('*')) {
            const qsizetype end = source.indexOf(QLatin1String("*/"), i + 2);
            i = end < 0 ? source.size() : end + 1;
            out += QLatin1Char(' ');
        } else {
            out += source[i];
        }
    }
    return out;
}

bool isOneOf(const QString& word, std::initializer_list<const char*> names)
{
    for (const char* n : names)
        if (word == QLatin1String(n)) return true;
    return false;
}

// One parameter's text ("__global const float4 *points").
std::optional<KernelParameter> readParameter(const QString& text, QString* error)
{
    static const QRegularExpression tokenPattern(QStringLiteral("[A-Za-z_][A-Za-z0-9_]*|\\*|\\S"));
    QStringList words;
    int pointers = 0;
    for (auto it = tokenPattern.globalMatch(text); it.hasNext();) {
        const QString token = it.next().captured();
        if (token == QLatin1String("*")) ++pointers;
        else words << token;
    }
    if (words.size() < 2) {
        *error = QStringLiteral("cannot read the kernel parameter \"%1\"").arg(text.simplified());
        return std::nullopt;
    }
    KernelParameter p;
    p.name = words.takeLast();
    bool global = false, constant = false, isConst = false, writeOnly = false, unsignedWord = false;
    QString type;
    for (const QString& w : std::as_const(words)) {
        if (isOneOf(w, {"__global", "global"})) global = true;
        else if (isOneOf(w, {"__constant", "constant"})) constant = true;
        else if (w == QLatin1String("const")) isConst = true;
        else if (isOneOf(w, {"__write_only", "write_only", "__read_write", "read_write"})) writeOnly = true;
        else if (isOneOf(w, {"__read_only", "read_only", "volatile", "restrict", "__restrict", "__private", "private"})) continue;
        else if (isOneOf(w, {"__local", "local"})) {
            *error = QStringLiteral("the kernel parameter \"%1\" is in local memory, which the patch cannot size").arg(p.name);
            return std::nullopt;
        } else if (w == QLatin1String("unsigned")) unsignedWord = true;
        else type = w;
    }
    if (unsignedWord && (type.isEmpty() || type == QLatin1String("int"))) type = QStringLiteral("uint");

    if (type == QLatin1String("image2d_t") && pointers == 0) {
        p.kind = writeOnly ? KernelParameter::Kind::OutputImage : KernelParameter::Kind::InputImage;
        return p;
    }
    static const QRegularExpression typePattern(QStringLiteral("^(float|int|uint)([234]?)$"));
    const auto match = typePattern.match(type);
    if (!match.hasMatch() || pointers > 1) {
        *error = QStringLiteral("the kernel parameter \"%1\" has the type %2%3, which the patch cannot feed")
                     .arg(p.name, type, QString(pointers, QLatin1Char('*')));
        return std::nullopt;
    }
    const QString base = match.captured(1);
    p.element = base == QLatin1String("float") ? ElementType::Float : base == QLatin1String("int") ? ElementType::Int : ElementType::UInt;
    p.components = match.captured(2).isEmpty() ? 1 : match.captured(2).toInt();
    if (pointers == 0) {
        p.kind = KernelParameter::Kind::Value;
    } else if (!global && !constant) {
        *error = QStringLiteral("the kernel parameter \"%1\" points to private memory").arg(p.name);
        return std::nullopt;
    } else {
        p.kind = constant || isConst ? KernelParameter::Kind::InputBuffer : KernelParameter::Kind::OutputBuffer;
    }
    return p;
}

}  // namespace

std::optional<KernelSignature> readKernelSignature(const QString& source, QString* error)
{
    // Kernels are a page or two; a megabyte is a damaged or hostile file,
    // and would keep the compiler busy at load.
    if (source.size() > kMaxKernelSourceLength) {
        *error = QStringLiteral("the source is longer than %1 characters").arg(kMaxKernelSourceLength);
        return std::nullopt;
    }
    const QString text = withoutComments(source);
    static const QRegularExpression head(
        QStringLiteral("\\b(?:__kernel|kernel)\\s+(?:__attribute__\\s*\\(\\(.*?\\)\\)\\s*)?void\\s+([A-Za-z_][A-Za-z0-9_]*)\\s*\\("),
        QRegularExpression::DotMatchesEverythingOption);
    const auto match = head.match(text);
    if (!match.hasMatch()) {
        *error = QStringLiteral("the source has no kernel function");
        return std::nullopt;
    }
    KernelSignature signature;
    signature.name = match.captured(1);
    const qsizetype open = match.capturedEnd(0);
    int depth = 0;
    qsizetype close = -1;
    for (qsizetype i = open; i < text.size(); ++i) {
        if (text[i] == QLatin1Char('(')) ++depth;
        else if (text[i] == QLatin1Char(')') && depth-- == 0) {
            close = i;
            break;
        }
    }
    if (close < 0) {
        *error = QStringLiteral("the kernel %1 has no end to its parameter list").arg(signature.name);
        return std::nullopt;
    }
    const QString list = text.mid(open, close - open).trimmed();
    if (list.isEmpty() || list == QLatin1String("void")) return signature;
    for (const QString& part : list.split(QLatin1Char(','))) {
        auto parameter = readParameter(part, error);
        if (!parameter) return std::nullopt;
        for (const KernelParameter& other : signature.parameters)
            if (other.name == parameter->name) {
                *error = QStringLiteral("the kernel parameter \"%1\" appears twice").arg(other.name);
                return std::nullopt;
            }
        signature.parameters.push_back(*parameter);
    }
    return signature;
}

}  // namespace runtime::cl
