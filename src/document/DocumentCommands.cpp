#include "document/DocumentCommands.h"

#include "model/Composition.h"
#include "model/ObjectStore.h"

#include <map>

namespace document {

DocumentCommands::DocumentCommands(model::Composition& composition, SaveWithResources saveWithResources)
    : composition_(composition), saveWithResources_(std::move(saveWithResources))
{
}

model::UndoManager& DocumentCommands::undoManager() const { return composition_.store()->undoManager(); }

const QStringList& DocumentCommands::commandNames()
{
    static const QStringList names{
        QStringLiteral("jumpToBeginning"),     QStringLiteral("jumpToEnd"),          QStringLiteral("play"),
        QStringLiteral("jumpToNextKeyframe"),  QStringLiteral("jumpToPreviousKeyframe"),
        QStringLiteral("jumpToNextFrame"),     QStringLiteral("jumpToPreviousFrame"),
        QStringLiteral("addStopFrame"),        QStringLiteral("toggleStopframe"),    QStringLiteral("togglePosterframe"),
        QStringLiteral("sizeToFit"),           QStringLiteral("sendForward"),        QStringLiteral("sendBackward"),
        QStringLiteral("bringToFront"),        QStringLiteral("sendToBack"),         QStringLiteral("swapSelected"),
        QStringLiteral("soloComponents"),      QStringLiteral("showAllComponents"),  QStringLiteral("selectAll"),
        QStringLiteral("deleteForward"),       QStringLiteral("deleteBackward"),     QStringLiteral("alignComponents"),
        QStringLiteral("upgradeComposition"),  QStringLiteral("makePathsRelative"),  QStringLiteral("embedResources"),
    };
    return names;
}

bool DocumentCommands::performCommand(const QString& name, int mode, bool anchor, std::optional<Alert>* alert)
{
    using Command = std::function<std::optional<Alert>(DocumentCommands&)>;
    auto plain = [](void (DocumentCommands::*command)()) -> Command {
        return [command](DocumentCommands& self) -> std::optional<Alert> {
            (self.*command)();
            return std::nullopt;
        };
    };
    auto reporting = [](Alert (DocumentCommands::*command)()) -> Command {
        return [command](DocumentCommands& self) -> std::optional<Alert> { return (self.*command)(); };
    };
    static const std::map<QString, Command> commands{
        {QStringLiteral("jumpToBeginning"), plain(&DocumentCommands::jumpToBeginning)},
        {QStringLiteral("jumpToEnd"), plain(&DocumentCommands::jumpToEnd)},
        {QStringLiteral("play"), plain(&DocumentCommands::play)},
        {QStringLiteral("jumpToNextKeyframe"), plain(&DocumentCommands::jumpToNextKeyframe)},
        {QStringLiteral("jumpToPreviousKeyframe"), plain(&DocumentCommands::jumpToPreviousKeyframe)},
        {QStringLiteral("jumpToNextFrame"), plain(&DocumentCommands::jumpToNextFrame)},
        {QStringLiteral("jumpToPreviousFrame"), plain(&DocumentCommands::jumpToPreviousFrame)},
        {QStringLiteral("addStopFrame"), plain(&DocumentCommands::addStopFrame)},
        {QStringLiteral("toggleStopframe"), plain(&DocumentCommands::toggleStopframe)},
        {QStringLiteral("togglePosterframe"), plain(&DocumentCommands::togglePosterframe)},
        {QStringLiteral("sizeToFit"), plain(&DocumentCommands::sizeToFit)},
        {QStringLiteral("sendForward"), plain(&DocumentCommands::sendForward)},
        {QStringLiteral("sendBackward"), plain(&DocumentCommands::sendBackward)},
        {QStringLiteral("bringToFront"), plain(&DocumentCommands::bringToFront)},
        {QStringLiteral("sendToBack"), plain(&DocumentCommands::sendToBack)},
        {QStringLiteral("swapSelected"), [](DocumentCommands& self) { return self.swapSelected(); }},
        {QStringLiteral("soloComponents"), plain(&DocumentCommands::soloComponents)},
        {QStringLiteral("showAllComponents"), plain(&DocumentCommands::showAllComponents)},
        {QStringLiteral("selectAll"), plain(&DocumentCommands::selectAll)},
        {QStringLiteral("deleteForward"), plain(&DocumentCommands::deleteForward)},
        {QStringLiteral("deleteBackward"), plain(&DocumentCommands::deleteBackward)},
        {QStringLiteral("upgradeComposition"), reporting(&DocumentCommands::upgradeComposition)},
        {QStringLiteral("makePathsRelative"), reporting(&DocumentCommands::makePathsRelative)},
        {QStringLiteral("embedResources"), reporting(&DocumentCommands::embedResources)},
    };
    std::optional<Alert> result;
    if (name == QLatin1String("alignComponents")) {
        doAlignComponents(mode, anchor);
    } else {
        const auto found = commands.find(name);
        if (found == commands.end()) return false;
        result = found->second(*this);
    }
    if (alert) *alert = std::move(result);
    return true;
}

}  // namespace document
