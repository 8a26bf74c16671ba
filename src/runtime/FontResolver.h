#pragma once
// Turns the PostScript font names stored in compositions
// ("LucidaGrande-Bold", "HelveticaNeue") into installed fonts. A font that
// is not installed is substituted through fontconfig's matching, and the
// substitution is logged once.

#include <QFont>
#include <QString>

namespace runtime {

struct ResolvedFont {
    QFont font;             // pixel size not set
    QString requested;      // the name as stored
    QString family;         // the family actually used
    bool substituted = false;
};

ResolvedFont resolveFont(const QString& postScriptName);

// "LucidaGrande-Bold" → family "Lucida Grande", bold.
QString familyFromPostScriptName(const QString& postScriptName);

}  // namespace runtime
