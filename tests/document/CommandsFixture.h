#pragma once
// A composition without files and the commands of its document, with undo
// steps counted from a clean start.

#include "../model/ModelFixture.h"

#include "document/DocumentCommands.h"

#include <initializer_list>

class CommandsFixture : public ModelFixture {
protected:
    // Exactly these components become selected.
    void select(std::initializer_list<model::QuartzComponent*> chosen)
    {
        composition->clearSelection();
        for (model::QuartzComponent* c : chosen) c->setSelected(true);
    }

    // Forgets the steps of the set-up, so a test sees only its own.
    void startCounting() { store.undoManager().removeAllActions(); }
    std::size_t undoSteps() { return store.undoManager().undoCount(); }
    void undo() { store.undoManager().undo(); }

    document::DocumentCommands commands{*composition};
};
