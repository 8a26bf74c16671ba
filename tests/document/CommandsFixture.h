#pragma once
// A composition without files and the commands of its document, with undo
// steps counted from a clean start.

#include "../model/ModelFixture.h"

#include "document/DocumentCommands.h"
#include "model/StoreFile.h"

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
    // Every undo is checked against its redo: redo gives back exactly the
    // state undo left, and undoing again the state before it.
    void undo()
    {
        const QByteArray after = snapshot();
        store.undoManager().undo();
        const QByteArray before = snapshot();
        store.undoManager().redo();
        EXPECT_EQ(snapshot(), after) << "redo restores what undo took back";
        store.undoManager().undo();
        EXPECT_EQ(snapshot(), before) << "undo after redo";
    }
    QByteArray snapshot()
    {
        store.processPendingChanges();
        return model::StoreFile::write(store);
    }

    document::DocumentCommands commands{*composition};
};
