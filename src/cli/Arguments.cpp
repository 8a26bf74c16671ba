#include "cli/Arguments.h"

#include <QRegularExpression>

namespace cli {

std::optional<QString> takeOption(QStringList& args, const QString& flag, bool* missingValue)
{
    *missingValue = false;
    const qsizetype at = args.indexOf(flag);
    if (at < 0) return std::nullopt;
    if (at + 1 >= args.size()) {
        *missingValue = true;
        return std::nullopt;
    }
    const QString value = args[at + 1];
    args.remove(at, 2);
    return value;
}

QString readFrameSize(const QString& text, QSize* size)
{
    // Larger pictures than this are refused before any memory is asked for.
    constexpr int kMaxSide = 16384;
    static const QRegularExpression re(QStringLiteral("^(\\d{1,5})x(\\d{1,5})$"));
    const QRegularExpressionMatch m = re.match(text);
    if (!m.hasMatch()) return QStringLiteral("--size needs WIDTHxHEIGHT");
    const QSize read(m.captured(1).toInt(), m.captured(2).toInt());
    if (read.isEmpty() || read.width() > kMaxSide || read.height() > kMaxSide)
        return QStringLiteral("--size must be between 1x1 and %1x%1").arg(kMaxSide);
    *size = read;
    return {};
}

}  // namespace cli
