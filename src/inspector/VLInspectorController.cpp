#include "inspector/VLInspectorController.h"

#include "inspector/ColourAttributeEditor.h"
#include "inspector/DocumentPanes.h"
#include "inspector/FontAttributeEditor.h"
#include "inspector/InspectorGroupView.h"
#include "inspector/PropertyPanes.h"
#include "inspector/VLInspectorAttributesController.h"
#include "inspector/VLInspectorPermissionsController.h"

#include "document/CompositionDocument.h"
#include "model/Composition.h"
#include "model/NotificationHelper.h"
#include "model/ObjectStore.h"
#include "model/QuartzComponent.h"
#include "widgets/NamedImages.h"

#include <QColorDialog>
#include <QFontDialog>
#include <QScrollArea>
#include <QTabBar>
#include <QVBoxLayout>

namespace inspector {

namespace {

std::size_t slot(InspectorGroup group) { return std::size_t(group); }

// The panes that show the selection, as opposed to the document.
bool followsSelection(InspectorGroup group)
{
    return group != InspectorGroup::DocumentTiming && group != InspectorGroup::Background &&
           group != InspectorGroup::Overlays;
}

}  // namespace

VLInspectorController::VLInspectorController(QWidget* parent) : QWidget(parent)
{
    setObjectName(QStringLiteral("inspector"));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);

    tabBar_ = new QTabBar(this);
    tabBar_->setObjectName(QStringLiteral("inspectorTabs"));
    tabBar_->setExpanding(true);
    tabBar_->setDocumentMode(true);
    tabBar_->setIconSize(QSize(18, 18));
    tabBar_->setUsesScrollButtons(false);
    tabBar_->setElideMode(Qt::ElideRight);
    const std::pair<const char*, const char*> tabs[] = {
        {"Properties", "InspectorProperties"}, {"Permissions", "InspectorPermissions"}, {"Document", "InspectorDocument"}};
    for (const auto& [title, icon] : tabs)
        tabBar_->addTab(widgets::NamedImages::imageNamed(QLatin1String(icon)), QLatin1String(title));
    layout->addWidget(tabBar_);

    scroll_ = new QScrollArea(this);
    scroll_->setWidgetResizable(true);
    scroll_->setFrameShape(QFrame::NoFrame);
    scroll_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    auto* column = new QWidget;
    column->setObjectName(QStringLiteral("inspectorColumn"));
    auto* columnLayout = new QVBoxLayout(column);
    columnLayout->setContentsMargins(0, 0, 0, 0);
    columnLayout->setSpacing(0);

    // The panes, in the order of the column.
    panes_[slot(InspectorGroup::Title)] = new VLInspectorTitleController(this);
    panes_[slot(InspectorGroup::Transform)] = new VLInspectorTransformController(this);
    panes_[slot(InspectorGroup::Appearance)] = new VLInspectorAppearanceController(this);
    panes_[slot(InspectorGroup::Timing)] = new VLInspectorTimingController(this);
    panes_[slot(InspectorGroup::Attributes)] = new VLInspectorAttributesController(this);
    panes_[slot(InspectorGroup::Permissions)] = new VLInspectorPermissionsController(this);
    panes_[slot(InspectorGroup::DocumentTiming)] = new VLInspectorDocumentTimingController(this);
    panes_[slot(InspectorGroup::Background)] = new VLInspectorBackgroundController(this);
    panes_[slot(InspectorGroup::Overlays)] = new VLInspectorOverlaysController(this);
    for (int i = 0; i < kInspectorGroupCount; ++i) {
        const auto group = InspectorGroup(i);
        groups_[std::size_t(i)] = new InspectorGroupView(groupTitle(group), panes_[std::size_t(i)], column);
        groups_[std::size_t(i)]->setObjectName(QStringLiteral("group") + groupTitle(group).remove(QLatin1Char(' ')));
        groups_[std::size_t(i)]->hide();
        columnLayout->addWidget(groups_[std::size_t(i)]);
        stale_[std::size_t(i)] = true;
    }
    columnLayout->addStretch(1);
    scroll_->setWidget(column);
    layout->addWidget(scroll_, 1);

    connect(tabBar_, &QTabBar::currentChanged, this, [this](int index) { setupForTab(InspectorTab(index)); });
    setMinimumWidth(280);
}

VLInspectorController::~VLInspectorController() { cleanUp(); }

void VLInspectorController::setDocument(document::CompositionDocument* document, CommandsSource commands)
{
    cleanUp();
    document_ = document;
    commands_ = std::move(commands);
    if (document_) {
        model::Composition* c = document_->composition();
        const auto changed = [this](model::ManagedObject*, const QString&) { selectionChanged(); };
        // The selection, and the component list (a selected component deleted).
        model::NotificationHelper::addObserver(this, c, QStringLiteral("selectedComponents"), changed);
        model::NotificationHelper::addObserver(this, c, QStringLiteral("components"), changed);
        model::UndoManager& undo = document_->store().undoManager();
        undoConnection_ = connect(&undo, &model::UndoManager::didUndo, this, &VLInspectorController::updateAfterUndo);
        redoConnection_ = connect(&undo, &model::UndoManager::didRedo, this, &VLInspectorController::updateAfterRedo);
    }
    markPanesStale(false);
    updateGroups();
}

void VLInspectorController::cleanUp()
{
    model::NotificationHelper::removeObserver(this);
    if (undoConnection_) disconnect(undoConnection_);
    if (redoConnection_) disconnect(redoConnection_);
    undoConnection_ = redoConnection_ = {};
    closePanels();
    for (VLInspectorViewContoller* pane : panes_)
        if (pane) pane->cleanUp();
    editing_ = 0;
    updatePending_ = false;
    document_ = nullptr;
}

model::Composition* VLInspectorController::composition() const { return document_ ? document_->composition() : nullptr; }

document::DocumentCommands* VLInspectorController::commands() const { return commands_ ? commands_() : nullptr; }

InspectorTab VLInspectorController::selectedTab() const { return InspectorTab(std::max(0, tabBar_->currentIndex())); }

void VLInspectorController::setupForTab(InspectorTab tab)
{
    if (tabBar_->currentIndex() != int(tab)) {
        tabBar_->setCurrentIndex(int(tab));  // comes back here through currentChanged
        return;
    }
    updateGroups();
}

InspectorGroupView* VLInspectorController::groupView(InspectorGroup group) const { return groups_[slot(group)]; }

bool VLInspectorController::isGroupVisible(InspectorGroup group) const { return !groups_[slot(group)]->isHidden(); }

QList<InspectorGroup> VLInspectorController::shownGroups() const
{
    QList<InspectorGroup> shown;
    for (int i = 0; i < kInspectorGroupCount; ++i)
        if (isGroupVisible(InspectorGroup(i))) shown.append(InspectorGroup(i));
    return shown;
}

VLInspectorViewContoller* VLInspectorController::pane(InspectorGroup group) const { return panes_[slot(group)]; }

VLInspectorTitleController* VLInspectorController::titleController() const
{
    return static_cast<VLInspectorTitleController*>(pane(InspectorGroup::Title));
}
VLInspectorTransformController* VLInspectorController::transformController() const
{
    return static_cast<VLInspectorTransformController*>(pane(InspectorGroup::Transform));
}
VLInspectorAppearanceController* VLInspectorController::appearanceController() const
{
    return static_cast<VLInspectorAppearanceController*>(pane(InspectorGroup::Appearance));
}
VLInspectorTimingController* VLInspectorController::timingController() const
{
    return static_cast<VLInspectorTimingController*>(pane(InspectorGroup::Timing));
}
VLInspectorAttributesController* VLInspectorController::attributesController() const
{
    return static_cast<VLInspectorAttributesController*>(pane(InspectorGroup::Attributes));
}
VLInspectorPermissionsController* VLInspectorController::permissionsController() const
{
    return static_cast<VLInspectorPermissionsController*>(pane(InspectorGroup::Permissions));
}
VLInspectorDocumentTimingController* VLInspectorController::documentTimingController() const
{
    return static_cast<VLInspectorDocumentTimingController*>(pane(InspectorGroup::DocumentTiming));
}
VLInspectorBackgroundController* VLInspectorController::backgroundController() const
{
    return static_cast<VLInspectorBackgroundController*>(pane(InspectorGroup::Background));
}
VLInspectorOverlaysController* VLInspectorController::overlaysController() const
{
    return static_cast<VLInspectorOverlaysController*>(pane(InspectorGroup::Overlays));
}

QStringList VLInspectorController::selectedCompositionFilenames() const
{
    QStringList names;
    if (model::Composition* c = composition())
        for (model::QuartzComponent* component : c->selectedComponents()) names << component->compositionFilename();
    return names;
}

void VLInspectorController::updateGroups()
{
    // No panel stays attached to an editor that may be about to go.
    closePanels();
    const QList<InspectorGroup> visible =
        document_ ? visibleGroups(selectedCompositionFilenames(), selectedTab()) : QList<InspectorGroup>();
    for (int i = 0; i < kInspectorGroupCount; ++i) {
        const auto group = InspectorGroup(i);
        const bool show = visible.contains(group);
        if (show && stale_[std::size_t(i)] && !isEditing()) {
            panes_[std::size_t(i)]->rebuild();
            stale_[std::size_t(i)] = false;
        }
        groups_[std::size_t(i)]->setVisible(show);
    }
}

void VLInspectorController::markPanesStale(bool selectionPanesOnly)
{
    for (int i = 0; i < kInspectorGroupCount; ++i)
        if (!selectionPanesOnly || followsSelection(InspectorGroup(i))) stale_[std::size_t(i)] = true;
}

void VLInspectorController::selectionChanged()
{
    // Selecting several components announces each one: the rebuild waits
    // for the event loop, so it happens once.
    updatePending_ = true;
    if (updatePosted_) return;
    updatePosted_ = true;
    QMetaObject::invokeMethod(
        this,
        [this] {
            updatePosted_ = false;
            updateIfNeeded();
        },
        Qt::QueuedConnection);
}

void VLInspectorController::updateIfNeeded()
{
    if (!updatePending_) return;
    // Closing the panels ends their gestures; a drag or typing still going
    // on keeps its rows until it ends (editingChanged comes back here).
    closePanels();
    if (isEditing()) return;
    updatePending_ = false;
    markPanesStale(true);
    updateGroups();
}

void VLInspectorController::updateAfterUndo()
{
    // Every attribute editor re-reads its values.
    if (model::Composition* c = composition()) c->sendChangeNotificationForValues(false);
    for (VLInspectorViewContoller* pane : panes_) pane->refreshBindings();
}

void VLInspectorController::closePanels()
{
    const auto close = [](QDialog* panel) {
        // Closing keeps what the panel set: it is the user's last choice.
        panel->done(QDialog::Accepted);
    };
    for (QColorDialog* panel : findChildren<QColorDialog*>(ColourAttributeEditor::panelObjectName())) close(panel);
    for (QFontDialog* panel : findChildren<QFontDialog*>(FontAttributeEditor::panelObjectName())) close(panel);
}

void VLInspectorController::editingChanged(bool editing)
{
    editing_ = std::max(0, editing_ + (editing ? 1 : -1));
    if (editing_ > 0) return;
    // What waited for the gesture (a new selection, a tab's panes) is done
    // now, after the gesture's own signal has returned.
    QMetaObject::invokeMethod(
        this,
        [this] {
            if (isEditing()) return;
            if (updatePending_) updateIfNeeded();
            else updateGroups();
        },
        Qt::QueuedConnection);
}

}  // namespace inspector
