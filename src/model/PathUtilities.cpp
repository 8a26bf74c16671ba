#include "model/PathUtilities.h"

#include <QStringList>

namespace model {

namespace {
// Components as the platform splits them: a leading "/" is a component of its own.
QStringList components(const QString& path)
{
    QStringList parts;
    if (path.startsWith(QLatin1Char('/'))) parts.append(QStringLiteral("/"));
    for (const QString& part : path.split(QLatin1Char('/'), Qt::SkipEmptyParts)) parts.append(part);
    return parts;
}
}  // namespace

QString pathRelativeTo(const QString& target, const QString& base)
{
    const QStringList b = components(base);
    const QStringList t = components(target);
    if (b.isEmpty() || b.first() != QLatin1String("/") || t.isEmpty() || t.first() != QLatin1String("/")) return target;
    const int shorter = int(std::min(b.size(), t.size()));
    int common = 0;
    while (common < shorter && b[common] == t[common]) ++common;
    if (common == 0) return target;
    // Two volumes under /Volumes share only that folder: no relative path between them.
    if (common == 2 && b.size() > 1 && b[1] == QLatin1String("Volumes")) return target;
    QStringList relative;
    for (int i = 0; i < int(b.size()) - common - 1; ++i) relative.append(QStringLiteral(".."));
    for (int i = common; i < int(t.size()); ++i) relative.append(t[i]);
    return relative.join(QLatin1Char('/'));
}

}  // namespace model
