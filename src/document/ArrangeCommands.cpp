// Stacking order, visibility, selection and deletion: the composition does
// the work; each command here is one undo step with a name for the menu.

#include "document/DocumentCommands.h"

#include "model/Composition.h"
#include "model/ObjectStore.h"

namespace document {

void DocumentCommands::sizeToFit()
{
    model::UndoGroup group(undoManager(), QStringLiteral("Size to Fit"));
    composition_.sizeToFitSelection();
}

void DocumentCommands::sendForward()
{
    model::UndoGroup group(undoManager(), QStringLiteral("Send Forward"));
    composition_.moveSelectionByLevel(1);
}

void DocumentCommands::sendBackward()
{
    model::UndoGroup group(undoManager(), QStringLiteral("Send Backward"));
    composition_.moveSelectionByLevel(-1);
}

void DocumentCommands::bringToFront()
{
    model::UndoGroup group(undoManager(), QStringLiteral("Bring to Front"));
    composition_.bringSelectionToFront();
}

void DocumentCommands::sendToBack()
{
    model::UndoGroup group(undoManager(), QStringLiteral("Send to Back"));
    composition_.sendSelectionToBack();
}

std::optional<Alert> DocumentCommands::swapSelected()
{
    model::UndoGroup group(undoManager(), QStringLiteral("Swap"));
    if (composition_.swapSelected()) return std::nullopt;
    return Alert{model::Composition::swapSelectedAlertTitle(), model::Composition::swapSelectedAlertText(), {}};
}

void DocumentCommands::soloComponents()
{
    model::UndoGroup group(undoManager(), QStringLiteral("Solo"));
    composition_.soloSelectedComponents();
}

void DocumentCommands::showAllComponents()
{
    model::UndoGroup group(undoManager(), QStringLiteral("Show All"));
    composition_.showAllComponents();
}

void DocumentCommands::selectAll()
{
    // Selecting is not an edit: no undo step.
    composition_.selectAllComponents();
}

void DocumentCommands::deleteForward()
{
    model::UndoGroup group(undoManager(), QStringLiteral("Delete"));
    composition_.removeComponents(composition_.selectedComponents());
}

void DocumentCommands::deleteBackward() { deleteForward(); }

}  // namespace document
