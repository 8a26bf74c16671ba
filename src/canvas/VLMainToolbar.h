#pragma once
// The document window's toolbar ("MainToolbar"): one button or pull-down
// per entry of the toolbar components list, then align, distribute,
// stacking order, zoom, stop frame, poster frame and preview.

#include "canvas/ToolbarComponents.h"
#include "canvas/VLAlignmentController.h"

#include <QToolBar>

#include <functional>

class QComboBox;
class QFileDialog;

namespace document {
class DocumentCommands;
}

namespace widgets {
class VLSegmentedControl;
}

namespace canvas {

class CompositionView;

class VLMainToolbar : public QToolBar {
    Q_OBJECT
public:
    using CommandsProvider = std::function<document::DocumentCommands*()>;
    // Asks the user for the file an entry needs; empty when cancelled.
    using FileChooser = std::function<QString(const ToolbarComponentEntry&)>;

    VLMainToolbar(CompositionView* view, CommandsProvider commands,
                  const std::vector<ToolbarComponentEntry>& entries = ToolbarComponents::toolbarComponents(),
                  QWidget* parent = nullptr);

    const std::vector<ToolbarComponentEntry>& entries() const { return entries_; }
    // The item's widget by toolbar identifier (null for spaces and unknown ones).
    QWidget* itemWidget(const QString& identifier) const;
    QAction* itemAction(const QString& identifier) const;
    widgets::VLSegmentedControl* alignControl() const { return alignControl_; }
    widgets::VLSegmentedControl* distributeControl() const { return distributeControl_; }
    QComboBox* zoomButton() const { return zoomButton_; }

    void setFileChooser(FileChooser chooser) { fileChooser_ = std::move(chooser); }
    // Adds an entry's component, asking for a file first when it needs one.
    // An empty entry stands for any other sender: a composition file is
    // chosen from the components library folder and added as it is.
    void addToolbarComponent(const ToolbarComponentEntry& entry);
    void addComponentFile() { addToolbarComponent(ToolbarComponentEntry{}); }
    // The panel of Add Component File: composition files, opened in the
    // components library folder.
    static void prepareComponentFilePanel(QFileDialog& panel);
    // Align needs two selected components, distribute three.
    void updateActionButtons();

Q_SIGNALS:
    void previewRequested();

private:
    void addItem(const QString& identifier);
    void addComponentItem(const ToolbarComponentEntry& entry);
    void addStandardItem(const QString& identifier);
    QAction* addLabelledWidget(const QString& identifier, QWidget* widget);
    void syncZoomButton();
    static QString chooseFile(const ToolbarComponentEntry& entry, QWidget* parent);

    CompositionView* view_;
    CommandsProvider commands_;
    std::vector<ToolbarComponentEntry> entries_;
    VLAlignmentController alignment_;
    FileChooser fileChooser_;
    widgets::VLSegmentedControl* alignControl_ = nullptr;
    widgets::VLSegmentedControl* distributeControl_ = nullptr;
    QComboBox* zoomButton_ = nullptr;
    QHash<QString, QAction*> actions_;
};

}  // namespace canvas
