#pragma once
// The inspector of one document window: a tab strip ("Properties",
// "Permissions", "Document") over a column of collapsible groups, one per
// pane. It decides which groups show for the tab and the selection, rebuilds
// the panes when the selection changes (once per event loop turn, and never
// while a control is being edited), re-reads them after undo and redo, and
// closes the font and colour panels whenever the groups change.

#include "inspector/InspectorGroups.h"

#include <QPointer>
#include <QWidget>

#include <array>
#include <functional>

class QScrollArea;
class QTabBar;

namespace document {
class CompositionDocument;
class DocumentCommands;
}  // namespace document
namespace model {
class Composition;
}

namespace inspector {

class InspectorGroupView;
class VLInspectorViewContoller;
class VLInspectorAttributesController;
class VLInspectorPermissionsController;
class VLInspectorTitleController;
class VLInspectorTransformController;
class VLInspectorAppearanceController;
class VLInspectorTimingController;
class VLInspectorDocumentTimingController;
class VLInspectorBackgroundController;
class VLInspectorOverlaysController;

class VLInspectorController : public QWidget {
    Q_OBJECT
public:
    // The window's command set, asked for when a pane runs a command.
    using CommandsSource = std::function<document::DocumentCommands*()>;

    explicit VLInspectorController(QWidget* parent = nullptr);
    ~VLInspectorController() override;

    // Shows a document (null detaches).
    void setDocument(document::CompositionDocument* document, CommandsSource commands = {});
    document::CompositionDocument* document() const { return document_; }
    model::Composition* composition() const;
    document::DocumentCommands* commands() const;
    // Stops observing the document; called when the window closes.
    void cleanUp();

    QTabBar* tabBar() const { return tabBar_; }
    InspectorTab selectedTab() const;
    void setupForTab(InspectorTab tab);

    InspectorGroupView* groupView(InspectorGroup group) const;
    bool isGroupVisible(InspectorGroup group) const;
    QList<InspectorGroup> shownGroups() const;
    VLInspectorViewContoller* pane(InspectorGroup group) const;

    VLInspectorTitleController* titleController() const;
    VLInspectorTransformController* transformController() const;
    VLInspectorAppearanceController* appearanceController() const;
    VLInspectorTimingController* timingController() const;
    VLInspectorAttributesController* attributesController() const;
    VLInspectorPermissionsController* permissionsController() const;
    VLInspectorDocumentTimingController* documentTimingController() const;
    VLInspectorBackgroundController* backgroundController() const;
    VLInspectorOverlaysController* overlaysController() const;

    // Shows the groups for the tab and selection and rebuilds the visible
    // panes that are out of date.
    void updateGroups();
    // Runs a selection update that is waiting for the event loop (tests,
    // benchmarks).
    void updateIfNeeded();
    void updateAfterUndo();
    void updateAfterRedo() { updateAfterUndo(); }
    // Closes the colour and font panels the editors opened.
    void closePanels();

    // A control's gesture began or ended; rebuilding waits while one lasts.
    void editingChanged(bool editing);
    bool isEditing() const { return editing_ > 0; }

private:
    void selectionChanged();
    void markPanesStale(bool selectionPanesOnly);
    QStringList selectedCompositionFilenames() const;

    document::CompositionDocument* document_ = nullptr;
    CommandsSource commands_;
    QTabBar* tabBar_;
    QScrollArea* scroll_;
    std::array<VLInspectorViewContoller*, kInspectorGroupCount> panes_{};
    std::array<InspectorGroupView*, kInspectorGroupCount> groups_{};
    std::array<bool, kInspectorGroupCount> stale_{};
    QMetaObject::Connection undoConnection_, redoConnection_;
    bool updatePosted_ = false;
    bool updatePending_ = false;
    int editing_ = 0;
};

}  // namespace inspector
