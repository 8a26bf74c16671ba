#include "runtime/GlslDeclarations.h"

#include <QRegularExpression>
#include <QSet>

#include <optional>

namespace runtime {

QString withoutComments(const QString& source)
{
    QString out;
    out.reserve(source.size());
    for (qsizetype i = 0; i < source.size(); ++i) {
        const QChar c = source[i], next = i + 1 < source.size() ? source[i + 1] : QChar();
        if (c == u'/' && next == u'/') {
            while (i < source.size() && source[i] != u'\n') ++i;
            if (i < source.size()) out += u'\n';
        } else if (c == u'/' && next == u'*') {
            out += u' ';
            for (i += 2; i < source.size() && !(source[i] == u'*' && i + 1 < source.size() && source[i + 1] == u'/'); ++i)
                if (source[i] == u'\n') out += u'\n';
            ++i;  // the closing slash (or past the end of an unclosed comment)
        } else {
            out += c;
        }
    }
    return out;
}

namespace {

std::optional<UniformKind> kindOf(QStringView type)
{
    if (type == u"float") return UniformKind::Float;
    if (type == u"vec2") return UniformKind::Vec2;
    if (type == u"vec3") return UniformKind::Vec3;
    if (type == u"vec4") return UniformKind::Vec4;
    if (type == u"int") return UniformKind::Int;
    if (type == u"bool") return UniformKind::Bool;
    if (type == u"sampler2D") return UniformKind::Sampler;
    return std::nullopt;
}

// "a = vec2(1.0, 2.0), b" → "a = vec2(1.0, 2.0)", " b": commas inside an
// initialiser's parentheses do not start an item.
QStringList topLevelItems(const QString& declarators)
{
    QStringList items;
    int depth = 0;
    qsizetype start = 0;
    for (qsizetype i = 0; i < declarators.size(); ++i) {
        const QChar c = declarators[i];
        if (c == u'(' || c == u'[') ++depth;
        else if ((c == u')' || c == u']') && depth > 0) --depth;
        else if (c == u',' && depth == 0) {
            items << declarators.mid(start, i - start);
            start = i + 1;
        }
    }
    items << declarators.mid(start);
    return items;
}

}  // namespace

std::vector<UniformDeclaration> declaredUniforms(const QStringList& sources)
{
    // "uniform [precision] type name [= …], name2[N];" — a declaration runs
    // to its semicolon; each comma-separated item starts with its name.
    static const QRegularExpression declaration(
        QStringLiteral(R"(\buniform\s+(?:(?:lowp|mediump|highp)\s+)?([A-Za-z_]\w*)\s+([^;{}]*);)"));
    static const QRegularExpression item(QStringLiteral(R"(^\s*([A-Za-z_]\w*)\s*(\[)?)"));
    std::vector<UniformDeclaration> uniforms;
    QSet<QString> seen;
    for (const QString& source : sources) {
        const QString code = withoutComments(source);
        for (auto it = declaration.globalMatch(code); it.hasNext();) {
            const auto match = it.next();
            const auto kind = kindOf(match.capturedView(1));
            if (!kind) continue;
            for (const QString& part : topLevelItems(match.captured(2))) {
                const auto name = item.match(part);
                if (!name.hasMatch() || name.hasCaptured(2)) continue;  // arrays have no port
                const QString key = name.captured(1);
                if (key.startsWith(QLatin1String("gl_")) || seen.contains(key)) continue;
                seen.insert(key);
                uniforms.push_back({key, *kind});
            }
        }
    }
    return uniforms;
}

}  // namespace runtime
