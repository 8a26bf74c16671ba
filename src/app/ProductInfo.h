#pragma once
// What the program says about itself: the page "Velloran Help" opens and
// the text of the About box, kept in one place for a release to change.

#include <QCoreApplication>
#include <QString>
#include <QUrl>

namespace app::product {

inline QUrl helpPageUrl() { return QUrl(QStringLiteral("https://velloran.org/help/")); }

inline QString aboutText()
{
    return QCoreApplication::translate("Velloran",
                                       "<h3>Velloran %1</h3>"
                                       "<p>The editor for broadcast graphics templates.</p>"
                                       "<p>Templates are saved as .composition documents and export to "
                                       "Quartz Composer compositions for playout.</p>")
        .arg(QCoreApplication::applicationVersion());
}

}  // namespace app::product
