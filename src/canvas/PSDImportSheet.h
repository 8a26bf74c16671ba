#pragma once
// The sheet that comes down over a document window before a Photoshop file
// is imported: a preview of the picture, the layers with a tick each to
// switch them on and off, the two choices of the import and the buttons
// to import or cancel.
//
// The sheet is only a view. The canvas owns the import (CompositionView,
// CompositionViewPSDImport.cpp): it tells the sheet what to show and acts
// on the signals; the sheet never changes a layer or a choice by itself.

#include "canvas/PSDLayerWatch.h"

#include <QDialog>

#include <memory>

class QCheckBox;
class QLabel;
class QListWidget;
class QListWidgetItem;
class QPushButton;

namespace canvas {

class PSDView;

class PSDImportSheet : public QDialog {
    Q_OBJECT
public:
    explicit PSDImportSheet(QWidget* parent = nullptr);

    // Shows the importer's picture and layers (topmost first, as Photoshop
    // lists them), following their switches; null empties the sheet.
    void setImporter(const std::shared_ptr<psd::PSDLayerImporter>& importer);

    // The choices as the canvas holds them; setting them sends no signal.
    void setImportAllPSDLayer(bool on);
    void setImportPSDLayersAsSeperateComponents(bool on);

    PSDView* psdView() const { return psdView_; }
    QListWidget* layerList() const { return layerList_; }
    QCheckBox* importAllPSDLayerSwitch() const { return importAllSwitch_; }
    QCheckBox* separateComponentsSwitch() const { return separateSwitch_; }
    QPushButton* importButton() const { return importButton_; }
    QPushButton* cancelButton() const { return cancelButton_; }

    // Escape and the window's close button ask to cancel; the canvas closes
    // the sheet when it has ended the import.
    void reject() override;

Q_SIGNALS:
    void importRequested();
    void cancelRequested();
    void layerSwitched(int layerIndex, bool on);
    void importAllPSDLayerToggled(bool on);
    void importPSDLayersAsSeperateComponentsToggled(bool on);

private:
    void fillLayerList();
    void showLayerVisible(int layerIndex, bool visible);
    void layerItemChanged(QListWidgetItem* item);

    PSDLayerWatch watch_;
    QLabel* summary_ = nullptr;
    PSDView* psdView_ = nullptr;
    QListWidget* layerList_ = nullptr;
    QCheckBox* importAllSwitch_ = nullptr;
    QCheckBox* separateSwitch_ = nullptr;
    QPushButton* importButton_ = nullptr;
    QPushButton* cancelButton_ = nullptr;
    bool showingState_ = false;  // ticks set from the layers, not by the user
};

}  // namespace canvas
