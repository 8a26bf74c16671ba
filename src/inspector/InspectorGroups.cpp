#include "inspector/InspectorGroups.h"

#include <QSet>

namespace inspector {

bool isSingleKind(const QStringList& compositionFilenames)
{
    if (compositionFilenames.isEmpty()) return false;
    if (compositionFilenames.size() == 1) return true;
    return QSet<QString>(compositionFilenames.begin(), compositionFilenames.end()).size() == 1;
}

QList<InspectorGroup> visibleGroups(const QStringList& compositionFilenames, InspectorTab tab)
{
    switch (tab) {
    case InspectorTab::Properties: {
        if (compositionFilenames.isEmpty()) return {};
        QList<InspectorGroup> groups{InspectorGroup::Title, InspectorGroup::Transform, InspectorGroup::Appearance,
                                     InspectorGroup::Timing};
        // Components of different files have different attributes: a mixed
        // selection edits only what every component has.
        if (isSingleKind(compositionFilenames)) groups.append(InspectorGroup::Attributes);
        return groups;
    }
    case InspectorTab::Permissions:
        return {InspectorGroup::Permissions};
    case InspectorTab::Document:
        return {InspectorGroup::DocumentTiming, InspectorGroup::Background, InspectorGroup::Overlays};
    }
    return {};
}

QString groupTitle(InspectorGroup group)
{
    switch (group) {
    case InspectorGroup::Title: return QStringLiteral("Title");
    case InspectorGroup::Transform: return QStringLiteral("Transform");
    case InspectorGroup::Appearance: return QStringLiteral("Appearance");
    case InspectorGroup::Timing: return QStringLiteral("Timing");
    case InspectorGroup::Attributes: return QStringLiteral("Attributes");
    case InspectorGroup::Permissions: return QStringLiteral("Permissions");
    case InspectorGroup::DocumentTiming: return QStringLiteral("Document Timing");
    case InspectorGroup::Background: return QStringLiteral("Background");
    case InspectorGroup::Overlays: return QStringLiteral("Overlays");
    }
    return {};
}

}  // namespace inspector
