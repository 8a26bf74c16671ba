#pragma once
// Which groups of the inspector show for a tab and a selection: a pure rule
// of the tab and the composition files of the selected components, so that
// it is tested as a table without any window.

#include <QList>
#include <QString>
#include <QStringList>

namespace inspector {

// The tabs, by their tags.
enum class InspectorTab : int { Properties = 0, Permissions = 1, Document = 2 };

// The groups, in the order the column shows them.
enum class InspectorGroup : int {
    Title,
    Transform,
    Appearance,
    Timing,
    Attributes,
    Permissions,
    DocumentTiming,
    Background,
    Overlays,
};

inline constexpr int kInspectorGroupCount = 9;

// One component, or several made from one composition file; false for none.
bool isSingleKind(const QStringList& compositionFilenames);

// The groups visible on `tab` when the selected components come from these
// composition files (one entry per selected component), in column order.
QList<InspectorGroup> visibleGroups(const QStringList& compositionFilenames, InspectorTab tab);

// The group's title as the column shows it.
QString groupTitle(InspectorGroup group);

}  // namespace inspector
