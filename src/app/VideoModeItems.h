#pragma once
// The video modes offered for new documents, in catalogue order and grouped
// ("SD", "HD 720", ...). The New Document submenu and the preferences'
// format pop-up list them the same way: one item per mode titled with its
// name, a separator where a new group starts.

#include <QString>

#include <functional>
#include <vector>

class QAction;
class QComboBox;
class QMenu;

namespace app {

struct OfferedVideoMode {
    QString name;
    bool startsGroup = false;  // a separator goes before it
};

// Modes in the "rgba" pixel format whose offered flag is 0 or 1.
std::vector<OfferedVideoMode> offeredVideoModes();

// Adds one item per offered mode; `configure` connects each new item.
void addVideoModeItems(QMenu* menu, const std::function<void(QAction*, const QString& name)>& configure);
void addVideoModeItems(QComboBox* popup);

}  // namespace app
