#include "canvas/PSDImportSheet.h"

#include "canvas/PSDView.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QScopedValueRollback>
#include <QSignalBlocker>
#include <QVBoxLayout>

namespace canvas {

PSDImportSheet::PSDImportSheet(QWidget* parent)
    : QDialog(parent), watch_([this](int layerIndex, bool visible) { showLayerVisible(layerIndex, visible); })
{
    setObjectName(QStringLiteral("PSDImportSheet"));
    setWindowTitle(tr("Import Photoshop File"));
    setWindowModality(Qt::WindowModal);

    summary_ = new QLabel(this);
    summary_->setObjectName(QStringLiteral("psdSummary"));

    psdView_ = new PSDView(this);
    psdView_->setMinimumSize(256, 144);
    psdView_->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);

    layerList_ = new QListWidget(this);
    layerList_->setObjectName(QStringLiteral("psdLayerList"));
    layerList_->setSelectionMode(QAbstractItemView::NoSelection);
    layerList_->setMinimumWidth(180);
    connect(layerList_, &QListWidget::itemChanged, this, &PSDImportSheet::layerItemChanged);

    // The flag is set while the user picks layers (and from the start when
    // the file has hidden layers); clearing it switches every layer back on.
    importAllSwitch_ = new QCheckBox(tr("Import only the ticked layers"), this);
    importAllSwitch_->setObjectName(QStringLiteral("importAllPSDLayer"));
    importAllSwitch_->setToolTip(tr("Untick to bring back every layer of the file, hidden ones included"));
    connect(importAllSwitch_, &QCheckBox::toggled, this, &PSDImportSheet::importAllPSDLayerToggled);

    separateSwitch_ = new QCheckBox(tr("Import each layer as its own component"), this);
    separateSwitch_->setObjectName(QStringLiteral("importPSDLayersAsSeperateComponents"));
    separateSwitch_->setToolTip(tr("Otherwise the ticked layers become one flat picture"));
    connect(separateSwitch_, &QCheckBox::toggled, this,
            &PSDImportSheet::importPSDLayersAsSeperateComponentsToggled);

    auto* buttons = new QDialogButtonBox(this);
    importButton_ = buttons->addButton(tr("Import"), QDialogButtonBox::AcceptRole);
    importButton_->setObjectName(QStringLiteral("doPSDImport"));
    importButton_->setDefault(true);
    cancelButton_ = buttons->addButton(tr("Cancel"), QDialogButtonBox::RejectRole);
    cancelButton_->setObjectName(QStringLiteral("cancelPSDImport"));
    // The buttons only ask; QDialogButtonBox's accepted/rejected would close
    // the sheet before the canvas has done anything.
    connect(importButton_, &QPushButton::clicked, this, &PSDImportSheet::importRequested);
    connect(cancelButton_, &QPushButton::clicked, this, &PSDImportSheet::cancelRequested);

    auto* content = new QHBoxLayout;
    content->addWidget(psdView_, 3);
    content->addWidget(layerList_, 1);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(summary_);
    layout->addLayout(content, 1);
    layout->addWidget(importAllSwitch_);
    layout->addWidget(separateSwitch_);
    layout->addWidget(buttons);
}

void PSDImportSheet::setImporter(const std::shared_ptr<psd::PSDLayerImporter>& importer)
{
    watch_.watch(importer);
    psdView_->setImporter(importer);
    if (importer) {
        const QSizeF size = importer->PSDImageSize();
        summary_->setText(tr("“%1”, %2 × %3 pixels, %n layer(s)", nullptr, importer->layerCount())
                              .arg(importer->filename())
                              .arg(size.width())
                              .arg(size.height()));
    } else {
        summary_->clear();
    }
    fillLayerList();
}

void PSDImportSheet::fillLayerList()
{
    const QScopedValueRollback<bool> showing(showingState_, true);
    layerList_->clear();
    const auto importer = watch_.importer();
    if (!importer) return;
    for (const psd::PSDLayer& layer : importer->layers()) {
        auto* item = new QListWidgetItem(layer.name(), layerList_);
        item->setFlags(Qt::ItemIsEnabled | Qt::ItemIsUserCheckable);
        item->setCheckState(layer.visible() ? Qt::Checked : Qt::Unchecked);
        item->setToolTip(tr("%1 × %2 pixels at %3, %4; opacity %5 %")
                             .arg(layer.image().width())
                             .arg(layer.image().height())
                             .arg(layer.origin().x())
                             .arg(layer.origin().y())
                             .arg(qRound(layer.opacity() * 100)));
    }
}

void PSDImportSheet::showLayerVisible(int layerIndex, bool visible)
{
    QListWidgetItem* item = layerList_->item(layerIndex);
    if (!item) return;
    const QScopedValueRollback<bool> showing(showingState_, true);
    item->setCheckState(visible ? Qt::Checked : Qt::Unchecked);
}

void PSDImportSheet::layerItemChanged(QListWidgetItem* item)
{
    if (showingState_) return;
    Q_EMIT layerSwitched(layerList_->row(item), item->checkState() == Qt::Checked);
}

void PSDImportSheet::setImportAllPSDLayer(bool on)
{
    const QSignalBlocker quiet(importAllSwitch_);
    importAllSwitch_->setChecked(on);
}

void PSDImportSheet::setImportPSDLayersAsSeperateComponents(bool on)
{
    const QSignalBlocker quiet(separateSwitch_);
    separateSwitch_->setChecked(on);
}

void PSDImportSheet::reject() { Q_EMIT cancelRequested(); }

}  // namespace canvas
