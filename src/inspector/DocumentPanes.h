#pragma once
// The panes of the Document tab: the document's duration and stop frames,
// its background and poster frame, and the overlays of the canvas (rulers,
// safe zones, guides). They follow the document, not the selection.

#include "inspector/VLInspectorViewContoller.h"

#include <optional>

class QPushButton;
class QTableWidget;

namespace model {
class ManagedObject;
}

namespace inspector {

class TimecodeEditor;

// A table of the document's items (stop frames, guides) that is filled again,
// once per event loop turn, whenever the list or one of its items changes.
class DocumentListPane : public VLInspectorViewContoller {
    Q_OBJECT
public:
    using VLInspectorViewContoller::VLInspectorViewContoller;
    QTableWidget* table() const { return table_; }
    // Fills the table now if a change is waiting.
    void refillIfNeeded();
    void cleanUp() override;

protected:
    // Makes the table and its add and remove buttons under the form.
    void buildList(const QStringList& headers, const QString& addTitle, const QString& removeTitle);
    // Observes the composition's list key and each item's keys.
    void observeList(const QString& listKey, const std::vector<model::ManagedObject*>& items, const QStringList& itemKeys);
    void scheduleRefill();
    virtual void refill() = 0;
    virtual void addItem() = 0;
    virtual void removeSelectedItems() = 0;
    // The user typed into a cell.
    virtual void cellEdited(int row, int column, const QString& text) = 0;
    bool filling() const { return filling_; }
    void setFilling(bool on) { filling_ = on; }

private:
    QTableWidget* table_ = nullptr;
    bool refillPosted_ = false;
    bool refillPending_ = false;
    bool filling_ = false;
};

class VLInspectorDocumentTimingController : public DocumentListPane {
    Q_OBJECT
public:
    explicit VLInspectorDocumentTimingController(VLInspectorController* inspectorController);
    void rebuild() override;
    // The document's addStopFrame: a stop frame at the playhead.
    void addStopFrame();

protected:
    void refill() override;
    void addItem() override { addStopFrame(); }
    void removeSelectedItems() override;
    void cellEdited(int row, int column, const QString& text) override;
};

class VLInspectorBackgroundController : public VLInspectorViewContoller {
    Q_OBJECT
public:
    explicit VLInspectorBackgroundController(VLInspectorController* inspectorController);
    void rebuild() override;

    TimecodeEditor* posterFrameField() const { return posterFrame_; }
    // The poster frame to the playhead (the document's togglePosterframe).
    void setPosterFrame();
    // The poster frame from timecode text in the document's rate; false for
    // text that is no timecode.
    bool setPosterFrameTime(const QString& text);

private:
    TimecodeEditor* posterFrame_ = nullptr;
};

class VLInspectorOverlaysController : public DocumentListPane {
    Q_OBJECT
public:
    explicit VLInspectorOverlaysController(VLInspectorController* inspectorController);
    void rebuild() override;
    // A vertical guide at position 0.
    void addRuler();

protected:
    void refill() override;
    void addItem() override { addRuler(); }
    void removeSelectedItems() override;
    void cellEdited(int row, int column, const QString& text) override;
};

}  // namespace inspector
