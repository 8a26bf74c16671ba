#pragma once
// The character properties the writer carries over, resolved against the
// document's default font so that unset properties get their shown value.

#include <QColor>
#include <QString>

#include <optional>

class QTextCharFormat;
class QFont;

namespace rtf {

struct RunFormat {
    QString family;
    int halfPoints = 24;
    bool bold = false;
    bool italic = false;
    bool underline = false;
    bool strike = false;
    std::optional<QColor> colour;  // none: the automatic colour

    bool operator==(const RunFormat&) const = default;
};

RunFormat resolveRunFormat(const QTextCharFormat& format, const QFont& defaultFont);

}  // namespace rtf
