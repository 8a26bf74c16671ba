#include "document/ExportKeyFactory.h"

#include "model/QuartzComponent.h"

#include <QFileInfo>

namespace document {

QString exportKeyFactory(const model::QuartzComponent& component, const QString& separator, const QString& portKey)
{
    // The playout system fills the scroller's string list itself and finds
    // that input only by this fixed name, whatever the component is called.
    if (QFileInfo(component.compositionFilename()).completeBaseName() == QLatin1String("TextScroller") &&
        portKey == QLatin1String("Strings_1Input"))
        return QStringLiteral("EAS_TRANSLATION");
    return component.title() + separator + portKey;
}

}  // namespace document
