// The Photoshop import of the canvas: a file's layers come down in a sheet
// with a preview, the user switches layers on and off and picks between one
// flat picture and one component per layer, and the import runs when the
// sheet ends with code 1. The sheet is opened window-modal but never run in
// a local event loop, so everything goes through the ending step.

#include "canvas/CompositionView.h"
#include "canvas/PSDImportSheet.h"
#include "canvas/PSDView.h"

#include "document/ComponentDrop.h"
#include "document/CompositionDocument.h"
#include "model/Composition.h"
#include "model/ObjectStore.h"
#include "psd/PSDLayerImporter.h"
#include "widgets/WorkProgressDialog.h"

#include <QFileInfo>
#include <QLoggingCategory>

namespace canvas {

Q_LOGGING_CATEGORY(lcPSDImport, "velloran.psdimport")

namespace {
constexpr int kImportCode = 1;
constexpr int kCancelCode = 0;
}  // namespace

bool CompositionView::isPSDFile(const QString& path) { return document::isPSDFile(path); }

PSDImportSheet* CompositionView::psdImportPanel() const { return psdImportPanel_; }

PSDView* CompositionView::psdView() const { return psdImportPanel_ ? psdImportPanel_->psdView() : nullptr; }

void CompositionView::triggerPSDImport(const QStringList& paths)
{
    if (paths.size() < 2) return;
    importPSDFile(paths.at(0), paths.at(1));
}

PSDImportSheet* CompositionView::makePSDImportPanel()
{
    if (psdImportPanel_) return psdImportPanel_;
    auto* sheet = new PSDImportSheet(this);
    connect(sheet, &PSDImportSheet::importRequested, this, &CompositionView::doPSDImport);
    connect(sheet, &PSDImportSheet::cancelRequested, this, &CompositionView::cancelPSDImport);
    connect(sheet, &PSDImportSheet::layerSwitched, this, &CompositionView::switchPSDLayer);
    connect(sheet, &PSDImportSheet::importAllPSDLayerToggled, this,
            [this](bool on) { setImportAllPSDLayer(on ? QVariant(true) : QVariant()); });
    connect(sheet, &PSDImportSheet::importPSDLayersAsSeperateComponentsToggled, this,
            &CompositionView::setImportPSDLayersAsSeperateComponents);
    psdImportPanel_ = sheet;
    return sheet;
}

void CompositionView::syncPSDImportPanel()
{
    if (!psdImportPanel_) return;
    psdImportPanel_->setImportAllPSDLayer(importAllPSDLayer_);
    psdImportPanel_->setImportPSDLayersAsSeperateComponents(importPSDLayersAsSeperateComponents_);
}

void CompositionView::importPSDFile(const QString& psdPath, const QString& qtzFile)
{
    if (psdImporter_) {
        // One sheet per window at a time; this file's turn comes when it ends.
        waitingPSDImports_.push_back({psdPath, qtzFile});
        return;
    }
    setImportPSDLayersAsSeperateComponents(true);
    std::string error;
    // The sheet and the import draw the layers; the stored composite is not needed.
    psd::DecodeOptions decoding;
    decoding.composite = false;
    // A large file takes seconds: it decodes on a worker thread while a
    // dialog shows how far it got, and Cancel drops it (nothing has changed).
    std::optional<psd::PSDLayerImporter> importer;
    {
        widgets::WorkProgressDialog progress(window(), tr("Reading “%1”…").arg(QFileInfo(psdPath).fileName()), true);
        progress.runOnWorkerThread([&](const widgets::ProgressCallback& told) {
            decoding.progress = [&told](int64_t done, int64_t total) { return told(done, total); };
            importer = psd::PSDLayerImporter::fromPath(psdPath, false, &error, decoding);
        });
        if (progress.wasCancelled()) return;
    }
    if (!importer) {
        qCWarning(lcPSDImport).noquote() << "Unable to create PSD Importer";
        qCDebug(lcPSDImport).noquote() << QString::fromStdString(error);
        return;
    }
    importAllPSDLayer_ = !importer->allLayersVisible();
    psdImporter_ = std::make_shared<psd::PSDLayerImporter>(std::move(*importer));
    psdImportComponentFile_ = qtzFile;
    PSDImportSheet* sheet = makePSDImportPanel();
    sheet->setImporter(psdImporter_);
    syncPSDImportPanel();
    sheet->open();
}

void CompositionView::doPSDImport()
{
    if (psdImporter_) psdImportSheetDidEnd(kImportCode, psdImportComponentFile_);
}

void CompositionView::cancelPSDImport()
{
    if (psdImporter_) psdImportSheetDidEnd(kCancelCode, psdImportComponentFile_);
}

void CompositionView::setImportAllPSDLayer(const QVariant& value)
{
    // Present or absent is what counts, not the value itself: a switch
    // sending false still sets the flag. Only "no value" brings every
    // layer back.
    if (value.isValid()) {
        importAllPSDLayer_ = true;
    } else {
        if (psdImporter_)
            for (psd::PSDLayer& layer : psdImporter_->layers()) layer.setVisible(true);
        importAllPSDLayer_ = false;
    }
    syncPSDImportPanel();
}

void CompositionView::setImportPSDLayersAsSeperateComponents(bool on)
{
    importPSDLayersAsSeperateComponents_ = on;
    syncPSDImportPanel();
}

void CompositionView::switchPSDLayer(int layerIndex, bool on)
{
    if (!psdImporter_ || layerIndex < 0 || layerIndex >= psdImporter_->layerCount()) return;
    psdImporter_->layers()[std::size_t(layerIndex)].setVisible(on);
    if (!on) setImportAllPSDLayer(QVariant(true));
}

void CompositionView::psdImportSheetDidEnd(int returnCode, const QString& qtzFile)
{
    model::Composition* c = composition();
    if (returnCode == kImportCode && c && psdImporter_) {
        model::UndoGroup group(document_->store().undoManager(), tr("Import Photoshop File"));
        if (importPSDLayersAsSeperateComponents_) {
            widgets::WorkProgressDialog progress(window(), tr("Importing the layers of “%1”…").arg(psdImporter_->filename()),
                                                 true);
            document::importPSDLayers(*c, *psdImporter_, qtzFile, progress.callback());
            // Cancelled: the layers already added go again, and no step is left.
            if (progress.wasCancelled()) group.rollBack();
        } else {
            document::importCombinedPSDImage(*c, *psdImporter_, qtzFile);
        }
    }
    if (psdImportPanel_) psdImportPanel_->setImporter(nullptr);
    psdImporter_.reset();
    psdImportComponentFile_.clear();
    if (psdImportPanel_) psdImportPanel_->done(returnCode);
    if (!waitingPSDImports_.empty()) {
        // Let this sheet finish closing before the next one opens.
        QTimer::singleShot(0, this, [this] {
            // A file that cannot be read opens no sheet; go on to the next.
            while (!psdImporter_ && !waitingPSDImports_.empty()) {
                const QStringList next = waitingPSDImports_.front();
                waitingPSDImports_.pop_front();
                triggerPSDImport(next);
            }
        });
    }
}

}  // namespace canvas
