#include "runtime/FontResolver.h"

#include "runtime/RendererServices.h"

#include <QFontDatabase>
#include <QFontInfo>
#include <QHash>

#include <mutex>

namespace runtime {

QString familyFromPostScriptName(const QString& postScriptName)
{
    QString base = postScriptName.section(QLatin1Char('-'), 0, 0).trimmed();
    if (base.contains(QLatin1Char(' '))) return base;
    // Split camel case: "HelveticaNeue" → "Helvetica Neue", "ArialMT" → "Arial MT".
    QString family;
    for (int i = 0; i < base.size(); ++i) {
        const QChar c = base[i];
        if (i > 0 && c.isUpper() && base[i - 1].isLower()) family += QLatin1Char(' ');
        family += c;
    }
    if (family.endsWith(QLatin1String(" MT"))) family.chop(3);
    return family;
}

namespace {

void applyStyle(QFont& font, const QString& style)
{
    const QString s = style.toLower();
    if (s.contains(QLatin1String("bold"))) font.setWeight(QFont::Bold);
    else if (s.contains(QLatin1String("black")) || s.contains(QLatin1String("heavy"))) font.setWeight(QFont::Black);
    else if (s.contains(QLatin1String("semibold")) || s.contains(QLatin1String("demi"))) font.setWeight(QFont::DemiBold);
    else if (s.contains(QLatin1String("medium"))) font.setWeight(QFont::Medium);
    else if (s.contains(QLatin1String("ultralight")) || s.contains(QLatin1String("thin"))) font.setWeight(QFont::Thin);
    else if (s.contains(QLatin1String("light"))) font.setWeight(QFont::Light);
    if (s.contains(QLatin1String("italic")) || s.contains(QLatin1String("oblique"))) font.setItalic(true);
    if (s.contains(QLatin1String("condensed"))) font.setStretch(QFont::Condensed);
}

QString fallbackFamily(const QString& family)
{
    const QString f = family.toLower();
    for (const char* mono : {"mono", "courier", "monaco", "menlo", "consol", "andale"})
        if (f.contains(QLatin1String(mono))) return QStringLiteral("Liberation Mono");
    for (const char* serif : {"times", "georgia", "palatino", "garamond", "serif", "baskerville", "didot", "cochin",
                              "hoefler", "bodoni", "book"})
        if (f.contains(QLatin1String(serif)) && !f.contains(QLatin1String("sans"))) return QStringLiteral("Liberation Serif");
    for (const char* metricSans : {"helvetica", "arial"})
        if (f.contains(QLatin1String(metricSans))) return QStringLiteral("Liberation Sans");
    return QStringLiteral("DejaVu Sans");
}

QString squeezed(const QString& s)
{
    QString out = s.toLower();
    out.remove(QLatin1Char(' '));
    return out;
}

ResolvedFont resolveUncached(const QString& name)
{
    ResolvedFont result;
    result.requested = name;
    const QStringList families = QFontDatabase::families();
    // A full family name ("Andale Mono", "DejaVu Sans") is tried as given
    // first; then the PostScript base name against installed families
    // without their blanks ("DejaVuSans" is "DejaVu Sans").
    QString family = name;
    QString style;
    if (!families.contains(name, Qt::CaseInsensitive)) {
        family = familyFromPostScriptName(name);
        style = name.section(QLatin1Char('-'), 1);
        const QString base = squeezed(name.section(QLatin1Char('-'), 0, 0));
        for (const QString& installed : families) {
            if (squeezed(installed) == base) {
                family = installed;
                break;
            }
        }
    }
    result.substituted = !families.contains(family, Qt::CaseInsensitive);
    if (result.substituted) {
        // Our own choice among the fonts the project installs, so that a
        // missing font looks the same on every machine.
        const QString fallback = fallbackFamily(family);
        if (families.contains(fallback, Qt::CaseInsensitive)) family = fallback;
    }
    QFont font(family);
    font.setStyleStrategy(QFont::PreferAntialias);
    applyStyle(font, style);
    result.family = QFontInfo(font).family();
    result.font = font;
    return result;
}

}  // namespace

ResolvedFont resolveFont(const QString& postScriptName)
{
    static std::mutex mutex;
    static QHash<QString, ResolvedFont> cache;
    std::lock_guard lock(mutex);
    auto it = cache.constFind(postScriptName);
    if (it != cache.constEnd()) return *it;
    ResolvedFont resolved = resolveUncached(postScriptName.isEmpty() ? QStringLiteral("LucidaGrande") : postScriptName);
    if (resolved.substituted)
        qCInfo(lcRuntime).noquote() << QStringLiteral("font \"%1\" is not installed; using \"%2\"")
                                           .arg(resolved.requested, resolved.family);
    cache.insert(postScriptName, resolved);
    return resolved;
}

}  // namespace runtime
