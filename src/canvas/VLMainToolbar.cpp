#include "canvas/VLMainToolbar.h"

#include "canvas/CompositionView.h"
#include "widgets/ToolbarArtwork.h"
#include "widgets/VLSegmentedControl.h"
#include "document/DocumentCommands.h"
#include "model/Composition.h"
#include "model/Settings.h"
#include "model/StandardComponents.h"

#include <QComboBox>
#include <QFileDialog>
#include <QLabel>
#include <QMenu>
#include <QTimer>
#include <QToolButton>
#include <QVBoxLayout>
#include <QWidgetAction>

namespace canvas {

namespace {

constexpr int kZoomModes[] = {200, 150, 100, 50, kZoomFit};

QWidget* space(QWidget* parent, bool flexible)
{
    auto* widget = new QWidget(parent);
    if (flexible)
        widget->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    else
        widget->setFixedWidth(16);
    return widget;
}

}  // namespace

VLMainToolbar::VLMainToolbar(CompositionView* view, CommandsProvider commands,
                             const std::vector<ToolbarComponentEntry>& entries, QWidget* parent)
    : QToolBar(tr("Toolbar"), parent),
      view_(view),
      commands_(std::move(commands)),
      entries_(entries),
      alignment_(commands_),
      fileChooser_([this](const ToolbarComponentEntry& entry) { return chooseFile(entry, window()); })
{
    setObjectName(QStringLiteral("MainToolbar"));
    setMovable(false);
    setFloatable(false);
    setIconSize(QSize(24, 24));
    setToolButtonStyle(Qt::ToolButtonTextUnderIcon);
    for (const QString& identifier : ToolbarComponents::allIdentifiers(entries_)) addItem(identifier);
    connect(view_, &CompositionView::selectionChanged, this, &VLMainToolbar::updateActionButtons);
    connect(view_, &CompositionView::zoomChanged, this, &VLMainToolbar::syncZoomButton);
    updateActionButtons();
    syncZoomButton();
}

QWidget* VLMainToolbar::itemWidget(const QString& identifier) const
{
    QAction* action = actions_.value(identifier);
    return action ? widgetForAction(action) : nullptr;
}

QAction* VLMainToolbar::itemAction(const QString& identifier) const { return actions_.value(identifier); }

void VLMainToolbar::addItem(const QString& identifier)
{
    if (identifier == ToolbarComponents::flexibleSpaceIdentifier()) {
        addWidget(space(this, true));
        return;
    }
    if (identifier == ToolbarComponents::spaceIdentifier()) {
        addWidget(space(this, false));
        return;
    }
    for (const ToolbarComponentEntry& entry : entries_) {
        if (entry.identifier == identifier) {
            addComponentItem(entry);
            return;
        }
    }
    addStandardItem(identifier);
}

void VLMainToolbar::addComponentItem(const ToolbarComponentEntry& entry)
{
    auto* action = new QAction(widgets::ToolbarArtwork::toolbarImageWithName(entry.icon), entry.title, this);
    action->setToolTip(entry.title);
    action->setObjectName(entry.identifier);
    if (entry.hasSubcomponents()) {
        auto* menu = new QMenu(this);
        for (const ToolbarComponentEntry& sub : entry.subcomponents) {
            if (sub.separator) {
                menu->addSeparator();
                continue;
            }
            QAction* item = menu->addAction(widgets::ToolbarArtwork::toolbarImageWithName(sub.icon), sub.title);
            item->setObjectName(sub.identifier);
            connect(item, &QAction::triggered, this, [this, sub] { addToolbarComponent(sub); });
        }
        action->setMenu(menu);
    } else {
        connect(action, &QAction::triggered, this, [this, entry] { addToolbarComponent(entry); });
    }
    addAction(action);
    if (auto* button = qobject_cast<QToolButton*>(widgetForAction(action))) {
        button->setObjectName(entry.identifier);
        if (entry.hasSubcomponents()) {
            button->setPopupMode(QToolButton::InstantPopup);
            button->setMinimumWidth(entry.buttonWidth());
        }
    }
    actions_.insert(entry.identifier, action);
}

QAction* VLMainToolbar::addLabelledWidget(const QString& identifier, QWidget* widget)
{
    // A caption under the control, like the labels under the buttons.
    auto* box = new QWidget(this);
    auto* layout = new QVBoxLayout(box);
    layout->setContentsMargins(2, 0, 2, 0);
    layout->setSpacing(1);
    layout->addWidget(widget, 0, Qt::AlignHCenter);
    auto* caption = new QLabel(identifier, box);
    caption->setAlignment(Qt::AlignHCenter);
    caption->setEnabled(widget->isEnabled());
    layout->addWidget(caption, 0, Qt::AlignHCenter);
    box->setObjectName(identifier);
    box->setToolTip(identifier);
    QAction* action = addWidget(box);
    action->setObjectName(identifier);
    actions_.insert(identifier, action);
    return action;
}

void VLMainToolbar::addStandardItem(const QString& identifier)
{
    auto commandAction = [this, &identifier](auto slot) {
        auto* action = new QAction(widgets::ToolbarArtwork::toolbarImageWithName(identifier), identifier, this);
        action->setToolTip(identifier);
        action->setObjectName(identifier);
        connect(action, &QAction::triggered, this, slot);
        addAction(action);
        if (QWidget* button = widgetForAction(action)) button->setObjectName(identifier);
        actions_.insert(identifier, action);
        return action;
    };
    if (identifier == QLatin1String("Align") || identifier == QLatin1String("Distribute")) {
        const bool distributes = identifier == QLatin1String("Distribute");
        std::vector<widgets::VLSegmentedControl::Segment> segments;
        for (const AlignmentItem& item : VLAlignmentController::items())
            if (item.distributes == distributes)
                segments.push_back({item.tag, widgets::ToolbarArtwork::toolbarImageWithName(item.imageName), item.title});
        auto* control = new widgets::VLSegmentedControl(segments);
        connect(control, &widgets::VLSegmentedControl::segmentTriggered, this, [this](int tag) { alignment_.executeTag(tag); });
        (distributes ? distributeControl_ : alignControl_) = control;
        addLabelledWidget(identifier, control);
    } else if (identifier == QLatin1String("Workbench Size")) {
        zoomButton_ = new QComboBox;
        for (int mode : kZoomModes)
            zoomButton_->addItem(mode == kZoomFit ? tr("Fit") : QStringLiteral("%1%").arg(mode), mode);
        connect(zoomButton_, &QComboBox::activated, this,
                [this](int index) { view_->setZoomMode(zoomButton_->itemData(index).toInt()); });
        addLabelledWidget(identifier, zoomButton_);
    } else if (identifier == QLatin1String("Backward")) {
        commandAction([this] { view_->moveSelectedComponentsBackward(); });
    } else if (identifier == QLatin1String("Forward")) {
        commandAction([this] { view_->moveSelectedComponentsForward(); });
    } else if (identifier == QLatin1String("Stop Frame")) {
        commandAction([this] {
            if (document::DocumentCommands* c = commands_()) c->toggleStopframe();
        });
    } else if (identifier == QLatin1String("Poster Frame")) {
        commandAction([this] {
            if (document::DocumentCommands* c = commands_()) c->togglePosterframe();
        });
    } else if (identifier == QLatin1String("Preview")) {
        commandAction([this] { Q_EMIT previewRequested(); });
    }
}

void VLMainToolbar::updateActionButtons()
{
    const model::Composition* c = view_->composition();
    const std::size_t selected = c ? c->selectedComponents().size() : 0;
    if (alignControl_) alignControl_->setEnabled(selected >= 2);
    if (distributeControl_) distributeControl_->setEnabled(selected >= 3);
}

void VLMainToolbar::syncZoomButton()
{
    if (!zoomButton_) return;
    // A zoom off the listed modes (the wheel, Ctrl+=) shows as one more item.
    while (zoomButton_->count() > int(std::size(kZoomModes))) zoomButton_->removeItem(zoomButton_->count() - 1);
    const int mode = view_->zoomMode();
    int index = zoomButton_->findData(mode);
    if (index < 0) {
        zoomButton_->addItem(QStringLiteral("%1%").arg(mode), mode);
        index = zoomButton_->count() - 1;
    }
    zoomButton_->setCurrentIndex(index);
}

void VLMainToolbar::addToolbarComponent(const ToolbarComponentEntry& entry)
{
    model::Composition* c = view_->composition();
    if (!c) return;
    QString chosen;
    if (entry.component.isEmpty() && !entry.asksForFile()) {
        chosen = fileChooser_ ? fileChooser_(entry) : QString();
        if (!chosen.isEmpty()) view_->addComponentsFromPaths({chosen}, false);
        return;
    }
    if (entry.asksForFile()) {
        chosen = fileChooser_ ? fileChooser_(entry) : QString();
        if (chosen.isEmpty()) return;
        if (entry.inputKey() == QLatin1String("Image") && CompositionView::isPSDFile(chosen)) {
            // The layers go through the canvas's import sheet, opened once
            // the file panel has gone.
            const QString qtz = model::StandardComponents::pathForComponent(entry.component);
            if (!qtz.isEmpty()) {
                QTimer::singleShot(0, view_, [view = view_, chosen, qtz] { view->triggerPSDImport({chosen, qtz}); });
                return;
            }
        }
    }
    view_->addPlacedComponents([&] { canvas::addToolbarComponent(*c, entry, chosen); });
}

void VLMainToolbar::prepareComponentFilePanel(QFileDialog& panel)
{
    panel.setWindowTitle(tr("Add Component File"));
    panel.setOption(QFileDialog::DontUseNativeDialog);
    panel.setDirectory(QDir(model::Settings::stringValue(model::Settings::kComponentsLibraryPath)));
    panel.setNameFilter(tr("Quartz Composer Composition (*.qtz)"));
}

QString VLMainToolbar::chooseFile(const ToolbarComponentEntry& entry, QWidget* parent)
{
    const bool movie = entry.type == QLatin1String("MOVIE_PATH");
    QFileDialog dialog(parent, entry.title);
    dialog.setFileMode(QFileDialog::ExistingFile);
    dialog.setLabelText(QFileDialog::Accept, tr("Choose"));
    if (!entry.asksForFile()) {
        prepareComponentFilePanel(dialog);
        if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) return {};
        return dialog.selectedFiles().constFirst();
    }
    dialog.setDirectory(QDir(model::Settings::stringValue(movie ? model::Settings::kMoviesLibraryPath
                                                                : model::Settings::kImagesLibraryPath)));
    dialog.setNameFilter(movie ? tr("Movies (*.mov *.mp4 *.m4v *.avi *.mkv)")
                               : tr("Images (*.png *.jpg *.jpeg *.tif *.tiff *.bmp *.gif *.psd)"));
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) return {};
    return dialog.selectedFiles().constFirst();
}

}  // namespace canvas
