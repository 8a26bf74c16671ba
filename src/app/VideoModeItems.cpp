#include "app/VideoModeItems.h"

#include "model/VideoModeCatalogue.h"

#include <QComboBox>
#include <QMenu>

namespace app {

std::vector<OfferedVideoMode> offeredVideoModes()
{
    std::vector<OfferedVideoMode> result;
    QString group;
    for (const model::VideoMode& mode : model::VideoModeCatalogue::modes()) {
        if (mode.pixelFormat != QLatin1String("rgba") || (mode.offered != 0 && mode.offered != 1)) continue;
        result.push_back({mode.name, !result.empty() && mode.group != group});
        group = mode.group;
    }
    return result;
}

void addVideoModeItems(QMenu* menu, const std::function<void(QAction*, const QString& name)>& configure)
{
    for (const OfferedVideoMode& mode : offeredVideoModes()) {
        if (mode.startsGroup) menu->addSeparator();
        QAction* action = menu->addAction(mode.name);
        if (configure) configure(action, mode.name);
    }
}

void addVideoModeItems(QComboBox* popup)
{
    for (const OfferedVideoMode& mode : offeredVideoModes()) {
        if (mode.startsGroup) popup->insertSeparator(popup->count());
        popup->addItem(mode.name);
    }
}

}  // namespace app
