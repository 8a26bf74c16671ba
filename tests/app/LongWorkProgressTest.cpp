// Long work in a window shows a window-modal progress dialog: a large
// Photoshop file's reading and layer import (both can be cancelled, and a
// cancel leaves the document as it was, with no undo step), a save (which
// cannot be cancelled) and the text check. The dialog is asked to show at
// once here, so that a test of a few hundred milliseconds sees it.

#include "AppFixture.h"

#include "../psd/PsdTestBuilder.h"

#include "app/TextCheckDialog.h"
#include "canvas/CompositionView.h"
#include "document/CompositionDocument.h"
#include "model/Composition.h"
#include "model/ObjectStore.h"
#include "model/StandardComponents.h"
#include "widgets/WorkProgressDialog.h"

#include <QFile>
#include <QProgressDialog>
#include <QPushButton>
#include <QTimer>

namespace {

constexpr int kLayers = 8;

// Layers of full alpha with a different pattern each, so that nothing is
// trimmed and nothing compresses away.
QByteArray largeLayeredPsd(int width, int height)
{
    psdtest::Document d;
    d.width = width;
    d.height = height;
    d.layerCompression = psdtest::Rle;
    d.composite.assign(3, std::vector<uint8_t>(size_t(width) * size_t(height), 0));
    for (int i = 0; i < kLayers; ++i) {
        psdtest::Layer layer;
        layer.rect = QRect(i * 8, i * 4, width - i * 16, height - i * 8);
        layer.pascalName = QByteArray("Layer ") + QByteArray::number(i);
        const size_t pixels = size_t(layer.rect.width()) * size_t(layer.rect.height());
        for (int id : {-1, 0, 1, 2}) {
            psdtest::Channel channel{id, std::vector<uint8_t>(pixels)};
            for (size_t p = 0; p < pixels; ++p) channel.samples[p] = id < 0 ? 255 : uint8_t(p * unsigned(i + id + 1));
            layer.channels.push_back(std::move(channel));
        }
        d.layers.push_back(std::move(layer));
    }
    return psdtest::build(d);
}

}  // namespace

class LongWorkProgressTest : public AppFixture {
protected:
    LongWorkProgressTest()
    {
        widgets::WorkProgressDialog::setShowAfterForTests(0);
        psdPath = folder.filePath(QStringLiteral("Large.psd"));
        QFile file(psdPath);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(largeLayeredPsd(1920, 1080));
        file.close();
        imageComponent = model::StandardComponents::pathForComponent(QStringLiteral("ImageComponent"));
        view = window->compositionView();
        QCoreApplication::processEvents();
        undo().removeAllActions();
        // Watches for the dialog while the work runs (its events run between
        // steps) and presses Cancel when `cancelWhen` says so.
        QObject::connect(&watch, &QTimer::timeout, [this] {
            auto* dialog = window->findChild<QProgressDialog*>(widgets::WorkProgressDialog::dialogObjectName());
            if (!dialog || !dialog->isVisible()) return;
            seen = true;
            modal = dialog->windowModality() == Qt::WindowModal;
            hadCancelButton = dialog->findChild<QPushButton*>() != nullptr;
            if (cancelWhen && cancelWhen(*dialog)) dialog->cancel();
        });
        watch.start(0);
    }
    ~LongWorkProgressTest() override { widgets::WorkProgressDialog::setShowAfterForTests(widgets::WorkProgressDialog::kShowAfterMs); }

    model::UndoManager& undo() { return window->document()->store().undoManager(); }
    std::size_t componentCount() const { return window->document()->composition()->componentArray().size(); }

    QTemporaryDir folder;
    QString psdPath;
    QString imageComponent;
    canvas::CompositionView* view = nullptr;
    QTimer watch;
    std::function<bool(QProgressDialog&)> cancelWhen;
    bool seen = false;
    bool modal = false;
    bool hadCancelButton = false;
};

TEST_F(LongWorkProgressTest, ALargePhotoshopFileImportsUnderAProgressDialog)
{
    view->importPSDFile(psdPath, imageComponent);
    ASSERT_NE(view->psdImporter(), nullptr) << "the sheet is open";
    EXPECT_TRUE(seen) << "reading showed the dialog";
    EXPECT_TRUE(modal);
    EXPECT_TRUE(hadCancelButton);
    seen = false;
    view->doPSDImport();
    EXPECT_TRUE(seen) << "the layer import showed the dialog";
    EXPECT_EQ(componentCount(), std::size_t(kLayers));
    EXPECT_EQ(undo().undoCount(), 1u) << "one step for the whole import";
    EXPECT_EQ(window->findChild<QProgressDialog*>(widgets::WorkProgressDialog::dialogObjectName()), nullptr)
        << "the dialog goes with the work";
}

TEST_F(LongWorkProgressTest, CancellingTheReadingOpensNoSheetAndChangesNothing)
{
    cancelWhen = [](QProgressDialog&) { return true; };
    view->importPSDFile(psdPath, imageComponent);
    EXPECT_TRUE(seen);
    EXPECT_EQ(view->psdImporter(), nullptr);
    EXPECT_EQ(componentCount(), 0u);
    EXPECT_FALSE(undo().canUndo());
}

TEST_F(LongWorkProgressTest, CancellingTheLayerImportTakesBackTheLayersAlreadyAdded)
{
    view->importPSDFile(psdPath, imageComponent);
    ASSERT_NE(view->psdImporter(), nullptr);
    int layersWhenCancelled = 0;
    cancelWhen = [&](QProgressDialog& dialog) {
        layersWhenCancelled = dialog.value();
        return dialog.value() >= 3;
    };
    view->doPSDImport();
    EXPECT_GE(layersWhenCancelled, 3) << "cancelled half way, not before the first layer";
    EXPECT_EQ(componentCount(), 0u);
    EXPECT_FALSE(undo().canUndo()) << "no step is left";
    EXPECT_FALSE(undo().canRedo());
    EXPECT_EQ(view->psdImporter(), nullptr) << "the sheet has ended";

    // The document still takes an import after a cancelled one.
    cancelWhen = {};
    view->importPSDFile(psdPath, imageComponent);
    view->doPSDImport();
    EXPECT_EQ(componentCount(), std::size_t(kLayers));
}

TEST_F(LongWorkProgressTest, ASaveShowsProgressButCannotBeCancelled)
{
    cancelWhen = [](QProgressDialog&) { return true; };
    const QString package = folder.filePath(QStringLiteral("Saved.composition"));
    ASSERT_TRUE(window->saveDocumentTo(package));
    EXPECT_TRUE(seen);
    EXPECT_FALSE(hadCancelButton);
    EXPECT_TRUE(QFile::exists(package + QStringLiteral("/data.xml")));
    EXPECT_TRUE(QFile::exists(package + QStringLiteral("/QuickLook/Thumbnail.jpg"))) << "pressing Esc did not stop it";
}

TEST_F(LongWorkProgressTest, TheTextCheckCanBeCancelledAndThenShowsNoResults)
{
    for (int i = 0; i < 3; ++i)
        window->document()->composition()->addComponenWithQuartzCompositionFile(
            model::StandardComponents::pathForComponent(QStringLiteral("Text")));
    QAction* check = window->findChild<QAction*>(QStringLiteral("checkTextFields"));
    ASSERT_NE(check, nullptr);
    const auto results = [this] { return window->findChild<QDialog*>(app::TextCheckDialog::objectNameForTests()); };

    cancelWhen = [](QProgressDialog&) { return true; };
    check->trigger();
    EXPECT_TRUE(seen);
    EXPECT_TRUE(hadCancelButton);
    EXPECT_EQ(results(), nullptr);

    cancelWhen = {};
    seen = false;
    check->trigger();
    EXPECT_TRUE(seen);
    ASSERT_NE(results(), nullptr) << "checked to the end";
    results()->close();
}
