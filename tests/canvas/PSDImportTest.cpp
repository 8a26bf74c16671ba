// Photoshop files come onto the canvas through the import sheet: a preview,
// layers switched on and off, one flat picture or one component per layer.

#include "CanvasFixture.h"

#include "canvas/PSDImportSheet.h"
#include "canvas/PSDView.h"
#include "canvas/VLMainToolbar.h"
#include "document/DocumentCommands.h"
#include "model/Attribute.h"
#include "model/StandardComponents.h"
#include "psd/PSDLayerImporter.h"

#include <QCheckBox>
#include <QDropEvent>
#include <QListWidget>
#include <QMimeData>
#include <QPushButton>
#include <QUrl>

namespace {

const QString kFixtures = QStringLiteral(VELLORAN_SOURCE_DIR "/tests/fixtures/psd/");
// Eight layers (ag-psd): "Hidden" and "In hidden group" are off, "Half red"
// sits partly off the 24 × 16 canvas at 40 % opacity.
const QString kLayered = kFixtures + QStringLiteral("agpsd_rgb8_zip.psd");
const QString kLayeredName = QStringLiteral("agpsd_rgb8_zip");
// Two layers (ImageMagick), both visible.
const QString kAllVisible = kFixtures + QStringLiteral("im_gray8_rle.psd");

// The layers the way the import must see them, read independently of the canvas.
psd::PSDLayerImporter readFixture(const QString& path)
{
    std::string error;
    auto importer = psd::PSDLayerImporter::fromPath(path, false, &error);
    EXPECT_TRUE(importer) << error;
    return std::move(importer).value();  // a missing fixture fails the test through the exception
}

QStringList titles(const std::vector<model::QuartzComponent*>& components)
{
    QStringList list;
    for (const model::QuartzComponent* c : components) list << c->title();
    return list;
}

// Collects the warnings logged while it lives.
class LogCapture {
public:
    LogCapture() { previous_ = qInstallMessageHandler(&LogCapture::handler); }
    ~LogCapture() { qInstallMessageHandler(previous_); }
    static inline QStringList messages;

private:
    static void handler(QtMsgType type, const QMessageLogContext&, const QString& message)
    {
        if (type >= QtWarningMsg) messages << message;
    }
    QtMessageHandler previous_ = nullptr;
};

// Counts the paints a widget gets.
class PaintCounter : public QObject {
public:
    explicit PaintCounter(QWidget* widget) { widget->installEventFilter(this); }
    int paints = 0;

protected:
    bool eventFilter(QObject*, QEvent* event) override
    {
        if (event->type() == QEvent::Paint) ++paints;
        return false;
    }
};

}  // namespace

class PSDImportTest : public CanvasFixture {
protected:
    PSDImportTest() { imageFile = testfiles::writeImageComposition(QDir(dir.path()), QStringLiteral("Image.qtz")); }

    canvas::PSDImportSheet* sheet() const { return view.psdImportPanel(); }

    bool dropFile(const QString& path, Qt::KeyboardModifiers modifiers = {})
    {
        QMimeData data;
        data.setUrls({QUrl::fromLocalFile(path)});
        QDragEnterEvent enter(QPoint(700, 400), Qt::CopyAction, &data, Qt::LeftButton, modifiers);
        QCoreApplication::sendEvent(&view, &enter);
        QDropEvent drop(QPointF(700, 400), Qt::CopyAction, &data, Qt::LeftButton, modifiers);
        QCoreApplication::sendEvent(&view, &drop);
        return drop.isAccepted();
    }

    QString imageFile;
};

TEST_F(PSDImportTest, AFileWithEveryLayerVisibleStartsWithTheFlagCleared)
{
    view.importPSDFile(kAllVisible, imageFile);
    ASSERT_NE(view.psdImporter(), nullptr);
    EXPECT_FALSE(view.importAllPSDLayer());
    EXPECT_TRUE(view.importPSDLayersAsSeperateComponents());
    ASSERT_NE(sheet(), nullptr);
    EXPECT_TRUE(sheet()->isVisible());
    EXPECT_EQ(sheet()->windowModality(), Qt::WindowModal);
    EXPECT_FALSE(sheet()->importAllPSDLayerSwitch()->isChecked());
    EXPECT_TRUE(sheet()->separateComponentsSwitch()->isChecked());
    // The preview shows the running import's importer.
    ASSERT_NE(view.psdView(), nullptr);
    EXPECT_EQ(view.psdView()->importer().get(), view.psdImporter());
    ASSERT_EQ(sheet()->layerList()->count(), 2);
    EXPECT_EQ(sheet()->layerList()->item(0)->text(), QStringLiteral("Gray B"));  // topmost first
    EXPECT_EQ(sheet()->layerList()->item(1)->checkState(), Qt::Checked);
}

TEST_F(PSDImportTest, AHiddenLayerSetsTheFlagAndIsShownUnticked)
{
    view.importPSDFile(kLayered, imageFile);
    ASSERT_NE(view.psdImporter(), nullptr);
    EXPECT_TRUE(view.importAllPSDLayer());
    EXPECT_TRUE(sheet()->importAllPSDLayerSwitch()->isChecked());
    const auto& layers = view.psdImporter()->layers();
    ASSERT_EQ(sheet()->layerList()->count(), int(layers.size()));
    for (int i = 0; i < int(layers.size()); ++i)
        EXPECT_EQ(sheet()->layerList()->item(i)->checkState() == Qt::Checked, layers[std::size_t(i)].visible())
            << layers[std::size_t(i)].name().toStdString();
}

TEST_F(PSDImportTest, SeparateComponentsSkipHiddenLayersAndKeepTheStacking)
{
    const psd::PSDLayerImporter expected = readFixture(kLayered);
    view.importPSDFile(kLayered, imageFile);
    view.doPSDImport();

    const auto components = composition->componentsSortedByZLevel();  // bottom first
    const QString suffix = QStringLiteral(" - ") + kLayeredName;
    EXPECT_EQ(titles(components),
              (QStringList{QStringLiteral("Background") + suffix, QStringLiteral("Half red") + suffix,
                           QStringLiteral("Inside bottom") + suffix, QStringLiteral("Clipped") + suffix,
                           QStringLiteral("Masked") + suffix, QStringLiteral("Ünïcødé ✓ 日本") + suffix}));
    for (const model::QuartzComponent* c : components) {
        const psd::PSDLayer* layer = nullptr;
        for (const psd::PSDLayer& l : expected.layers())
            if (l.name() + suffix == c->title()) layer = &l;
        ASSERT_NE(layer, nullptr) << c->title().toStdString();
        EXPECT_EQ(QPointF(c->originX(), c->originY()), layer->origin()) << c->title().toStdString();
        // The component keeps opacity in single precision, as the file format does.
        EXPECT_FLOAT_EQ(float(c->opacity()), float(layer->opacity())) << c->title().toStdString();
        EXPECT_EQ(c->width(), layer->image().width()) << c->title().toStdString();
    }
    // Spot checks against the file itself: bounds (-4, -3)–(6, 5) on a
    // 16-pixel-high canvas, opacity 102/255.
    ASSERT_GE(components.size(), 2u);
    EXPECT_EQ(QPointF(components[1]->originX(), components[1]->originY()), QPointF(-4, 11));
    EXPECT_NEAR(components[1]->opacity(), 0.4, 0.003);
    EXPECT_EQ(QPointF(components[0]->originX(), components[0]->originY()), QPointF(0, 0));
}

TEST_F(PSDImportTest, TheSheetClosesAndLetsGoOfTheImporterWhenItEnds)
{
    view.importPSDFile(kLayered, imageFile);
    ASSERT_NE(view.psdView(), nullptr);
    std::weak_ptr<psd::PSDLayerImporter> importer = view.psdView()->importer();
    view.doPSDImport();
    EXPECT_EQ(view.psdImporter(), nullptr);
    EXPECT_EQ(view.psdView()->importer(), nullptr);
    EXPECT_TRUE(importer.expired());  // nobody keeps it alive
    EXPECT_FALSE(sheet()->isVisible());
    EXPECT_EQ(sheet()->result(), 1);
    EXPECT_EQ(sheet()->layerList()->count(), 0);
    // A second request without a running import does nothing.
    const std::size_t count = composition->componentArray().size();
    view.doPSDImport();
    EXPECT_EQ(composition->componentArray().size(), count);
}

TEST_F(PSDImportTest, AFlatImportIsOnePictureTitledWithTheFileAtTheOrigin)
{
    const psd::PSDLayerImporter expected = readFixture(kLayered);
    view.importPSDFile(kLayered, imageFile);
    sheet()->separateComponentsSwitch()->click();
    EXPECT_FALSE(view.importPSDLayersAsSeperateComponents());
    view.doPSDImport();

    const auto components = composition->componentArray();
    ASSERT_EQ(components.size(), 1u);
    const model::QuartzComponent* c = components.front();
    EXPECT_EQ(c->title(), kLayeredName);
    EXPECT_EQ(c->originX(), 0);
    EXPECT_EQ(c->originY(), 0);
    EXPECT_EQ(QSizeF(c->width(), c->height()), QSizeF(24, 16));
    const model::Attribute* image = c->attributeForKey(QStringLiteral("Image"));
    ASSERT_NE(image, nullptr);
    const QImage picture = image->currentValue().value<QImage>().convertToFormat(QImage::Format_ARGB32);
    const QImage combined = expected.combinedImageOfVisibleLayers().convertToFormat(QImage::Format_ARGB32);
    ASSERT_EQ(picture.size(), combined.size());
    EXPECT_EQ(picture.pixel(10, 6), combined.pixel(10, 6));
    EXPECT_EQ(picture.pixel(3, 11), combined.pixel(3, 11));  // where the hidden layer would be
}

TEST_F(PSDImportTest, EachImportStartsWithSeparateComponents)
{
    view.importPSDFile(kAllVisible, imageFile);
    view.setImportPSDLayersAsSeperateComponents(false);
    EXPECT_FALSE(sheet()->separateComponentsSwitch()->isChecked());
    view.cancelPSDImport();
    view.importPSDFile(kAllVisible, imageFile);
    EXPECT_TRUE(view.importPSDLayersAsSeperateComponents());
    EXPECT_TRUE(sheet()->separateComponentsSwitch()->isChecked());
}

TEST_F(PSDImportTest, CancelAddsNothing)
{
    startCounting();
    view.importPSDFile(kLayered, imageFile);
    sheet()->cancelButton()->click();
    EXPECT_TRUE(composition->componentArray().empty());
    EXPECT_EQ(undoManager().undoCount(), 0u);
    EXPECT_EQ(view.psdImporter(), nullptr);
    EXPECT_FALSE(sheet()->isVisible());
    EXPECT_EQ(sheet()->result(), 0);
}

TEST_F(PSDImportTest, EscapeCancelsToo)
{
    view.importPSDFile(kAllVisible, imageFile);
    QTest::keyClick(sheet(), Qt::Key_Escape);
    EXPECT_EQ(view.psdImporter(), nullptr);
    EXPECT_FALSE(sheet()->isVisible());
    EXPECT_TRUE(composition->componentArray().empty());
}

TEST_F(PSDImportTest, TheImportButtonImportsAsOneUndoStep)
{
    startCounting();
    view.importPSDFile(kLayered, imageFile);
    sheet()->importButton()->click();
    EXPECT_EQ(composition->componentArray().size(), 6u);
    EXPECT_EQ(undoManager().undoCount(), 1u);
    undoManager().undo();
    EXPECT_TRUE(composition->componentArray().empty());
    undoManager().redo();
    EXPECT_EQ(composition->componentArray().size(), 6u);
}

TEST_F(PSDImportTest, AnyValueSetsTheFlagAndOnlyNoValueBringsEveryLayerBack)
{
    view.importPSDFile(kAllVisible, imageFile);
    view.setImportAllPSDLayer(QVariant(false));
    EXPECT_TRUE(view.importAllPSDLayer());
    EXPECT_TRUE(sheet()->importAllPSDLayerSwitch()->isChecked());
    view.cancelPSDImport();

    view.importPSDFile(kLayered, imageFile);
    view.setImportAllPSDLayer();
    EXPECT_FALSE(view.importAllPSDLayer());
    EXPECT_TRUE(view.psdImporter()->allLayersVisible());
    EXPECT_FALSE(sheet()->importAllPSDLayerSwitch()->isChecked());
    for (int i = 0; i < sheet()->layerList()->count(); ++i)
        EXPECT_EQ(sheet()->layerList()->item(i)->checkState(), Qt::Checked) << i;
    view.doPSDImport();
    EXPECT_EQ(composition->componentArray().size(), 8u);
}

TEST_F(PSDImportTest, UntickingTheSwitchBringsEveryLayerBack)
{
    view.importPSDFile(kLayered, imageFile);
    sheet()->importAllPSDLayerSwitch()->click();
    EXPECT_FALSE(view.importAllPSDLayer());
    EXPECT_TRUE(view.psdImporter()->allLayersVisible());
    sheet()->importAllPSDLayerSwitch()->click();  // choosing again keeps the layers as they are
    EXPECT_TRUE(view.importAllPSDLayer());
    EXPECT_TRUE(view.psdImporter()->allLayersVisible());
}

TEST_F(PSDImportTest, AnUntickedLayerIsLeftOut)
{
    view.importPSDFile(kAllVisible, imageFile);
    sheet()->layerList()->item(0)->setCheckState(Qt::Unchecked);  // "Gray B", the top layer
    EXPECT_FALSE(view.psdImporter()->layers()[0].visible());
    EXPECT_TRUE(view.importAllPSDLayer());
    EXPECT_TRUE(sheet()->importAllPSDLayerSwitch()->isChecked());
    view.doPSDImport();
    EXPECT_EQ(titles(composition->componentArray()), QStringList{QStringLiteral("Gray A - im_gray8_rle")});
}

TEST_F(PSDImportTest, AMissingFileLogsAndShowsNoSheet)
{
    LogCapture::messages.clear();
    {
        LogCapture capture;
        view.importPSDFile(QDir(dir.path()).filePath(QStringLiteral("Missing.psd")), imageFile);
        view.importPSDFile(dir.path(), imageFile);  // a folder
    }
    EXPECT_EQ(LogCapture::messages.count(QStringLiteral("Unable to create PSD Importer")), 2);
    EXPECT_EQ(view.psdImporter(), nullptr);
    EXPECT_TRUE(sheet() == nullptr || !sheet()->isVisible());
    view.doPSDImport();
    EXPECT_TRUE(composition->componentArray().empty());
}

TEST_F(PSDImportTest, OnlyTheLowerCaseExtensionCounts)
{
    EXPECT_TRUE(canvas::CompositionView::isPSDFile(QStringLiteral("/a/Poster.psd")));
    EXPECT_FALSE(canvas::CompositionView::isPSDFile(QStringLiteral("/a/Poster.PSD")));
    EXPECT_FALSE(canvas::CompositionView::isPSDFile(QStringLiteral("/a/Poster.psb")));
}

TEST_F(PSDImportTest, TriggerTakesThePhotoshopFileAndTheComponentFile)
{
    view.triggerPSDImport({kAllVisible});  // incomplete: ignored
    EXPECT_EQ(view.psdImporter(), nullptr);
    view.triggerPSDImport({kAllVisible, imageFile});
    ASSERT_NE(view.psdImporter(), nullptr);
    EXPECT_EQ(view.psdImporter()->path(), kAllVisible);
    view.doPSDImport();
    EXPECT_EQ(composition->componentArray().size(), 2u);
    EXPECT_EQ(composition->componentArray().front()->compositionFilename(), imageFile);
}

TEST_F(PSDImportTest, ADroppedFileOpensTheSheetOnceTheDropIsOver)
{
    startCounting();
    ASSERT_TRUE(dropFile(kAllVisible));
    EXPECT_EQ(view.psdImporter(), nullptr);  // deferred
    EXPECT_TRUE(composition->componentArray().empty());
    QCoreApplication::processEvents();
    ASSERT_NE(view.psdImporter(), nullptr);
    EXPECT_TRUE(sheet()->isVisible());
    EXPECT_EQ(undoManager().undoCount(), 0u);  // the drop itself added nothing
    view.doPSDImport();
    EXPECT_EQ(titles(composition->componentsSortedByZLevel()),
              (QStringList{QStringLiteral("Gray A - im_gray8_rle"), QStringLiteral("Gray B - im_gray8_rle")}));
    EXPECT_EQ(undoManager().undoCount(), 1u);
}

TEST_F(PSDImportTest, ControlKeepsADroppedFileFlatWithoutASheet)
{
    ASSERT_TRUE(dropFile(kLayered, Qt::ControlModifier));
    QCoreApplication::processEvents();
    EXPECT_EQ(view.psdImporter(), nullptr);
    EXPECT_TRUE(sheet() == nullptr || !sheet()->isVisible());
    const auto components = composition->componentArray();
    ASSERT_EQ(components.size(), 1u);
    EXPECT_EQ(QSizeF(components.front()->width(), components.front()->height()), QSizeF(24, 16));
}

TEST_F(PSDImportTest, AnImageToolbarEntryHandsAChosenFileToTheSheet)
{
    document::DocumentCommands commands{*composition};
    canvas::ToolbarComponentEntry entry;
    entry.identifier = entry.title = QStringLiteral("Image");
    entry.component = QStringLiteral("ImageComponent");
    entry.type = QStringLiteral("IMAGE");
    canvas::VLMainToolbar toolbar(&view, [&] { return &commands; }, {entry});
    toolbar.setFileChooser([](const canvas::ToolbarComponentEntry&) { return kLayered; });
    toolbar.addToolbarComponent(entry);
    EXPECT_EQ(view.psdImporter(), nullptr);  // after the file panel has gone
    QCoreApplication::processEvents();
    ASSERT_NE(view.psdImporter(), nullptr);
    view.doPSDImport();
    const auto components = composition->componentArray();
    ASSERT_EQ(components.size(), 6u);
    EXPECT_EQ(components.front()->compositionFilename(),
              model::StandardComponents::pathForComponent(QStringLiteral("ImageComponent")));
}

TEST_F(PSDImportTest, AFileHandedOverDuringAnImportWaitsForIt)
{
    view.importPSDFile(kAllVisible, imageFile);
    view.importPSDFile(QDir(dir.path()).filePath(QStringLiteral("Missing.psd")), imageFile);
    view.importPSDFile(kLayered, imageFile);
    EXPECT_EQ(view.psdImporter()->path(), kAllVisible);
    view.cancelPSDImport();
    QCoreApplication::processEvents();
    // The missing file is skipped; the next one gets the sheet.
    ASSERT_NE(view.psdImporter(), nullptr);
    EXPECT_EQ(view.psdImporter()->path(), kLayered);
    EXPECT_TRUE(sheet()->isVisible());
}

TEST_F(PSDImportTest, ChangingTheDocumentCancelsTheImport)
{
    view.importPSDFile(kAllVisible, imageFile);
    view.setDocument(nullptr);
    EXPECT_EQ(view.psdImporter(), nullptr);
    EXPECT_FALSE(sheet()->isVisible());
    EXPECT_TRUE(composition->componentArray().empty());
}

// The preview --------------------------------------------------------------------

class PSDViewTest : public ::testing::Test {
protected:
    PSDViewTest() : importer(std::make_shared<psd::PSDLayerImporter>(readFixture(kLayered))) {}

    // Leaves only the named layer switched on.
    const psd::PSDLayer& showOnly(const QString& name)
    {
        const psd::PSDLayer* shown = nullptr;
        for (psd::PSDLayer& layer : importer->layers()) {
            layer.setVisible(layer.name() == name);
            if (layer.name() == name) shown = &layer;
        }
        EXPECT_NE(shown, nullptr) << name.toStdString();
        return *shown;
    }

    QImage grab(QSize size)
    {
        view.resize(size);
        return view.grab().toImage().convertToFormat(QImage::Format_ARGB32);
    }

    // The same view with nothing to draw.
    QImage emptyGrab(QSize size)
    {
        canvas::PSDView empty;
        empty.resize(size);
        return empty.grab().toImage().convertToFormat(QImage::Format_ARGB32);
    }

    std::shared_ptr<psd::PSDLayerImporter> importer;
    canvas::PSDView view;
};

TEST_F(PSDViewTest, TwiceAsWideAndAsHighDrawsAtScaleOne)
{
    const psd::PSDLayer& background = showOnly(QStringLiteral("Background"));
    view.setImporter(importer);
    const QImage shot = grab(QSize(48, 16));
    EXPECT_FLOAT_EQ(view.drawingScale(), 1.0f);
    const QImage layer = background.image().convertToFormat(QImage::Format_ARGB32);
    ASSERT_EQ(layer.size(), QSize(24, 16));
    int mismatches = 0;
    for (int y = 0; y < 16; ++y)
        for (int x = 0; x < 24; ++x)
            if (shot.pixel(x, y) != layer.pixel(x, y) && mismatches++ < 5)
                ADD_FAILURE() << "pixel " << x << ", " << y;
    EXPECT_EQ(mismatches, 0);
    // Nothing drawn beyond the document's width.
    const QImage empty = emptyGrab(QSize(48, 16));
    EXPECT_EQ(shot.copy(24, 0, 24, 16), empty.copy(24, 0, 24, 16));
    EXPECT_NE(shot.copy(0, 0, 24, 16), empty.copy(0, 0, 24, 16));
}

TEST_F(PSDViewTest, ALayerAppearsTheRightWayUpAtItsPlace)
{
    // "Inside bottom": 6 × 5 pixels whose top-left corner is (8, 4) in the file.
    const psd::PSDLayer& layer = showOnly(QStringLiteral("Inside bottom"));
    view.setImporter(importer);
    const QImage shot = grab(QSize(24, 16));
    const QImage empty = emptyGrab(QSize(24, 16));
    const QImage pixels = layer.image().convertToFormat(QImage::Format_ARGB32);
    EXPECT_EQ(shot.pixel(8, 4), pixels.pixel(0, 0));
    EXPECT_EQ(shot.pixel(13, 8), pixels.pixel(5, 4));
    EXPECT_NE(pixels.pixel(0, 0), pixels.pixel(0, 4));  // the layer's rows differ, so a flip would show
    EXPECT_EQ(shot.pixel(7, 4), empty.pixel(7, 4));
    EXPECT_EQ(shot.pixel(8, 3), empty.pixel(8, 3));
    EXPECT_EQ(shot.pixel(8, 9), empty.pixel(8, 9));
}

TEST_F(PSDViewTest, TheDocumentIsAnchoredAtTheLowerLeftCorner)
{
    const psd::PSDLayer& background = showOnly(QStringLiteral("Background"));
    view.setImporter(importer);
    const QImage shot = grab(QSize(24, 40));  // scale 1, 24 rows to spare
    EXPECT_FLOAT_EQ(view.drawingScale(), 1.0f);
    const QImage layer = background.image().convertToFormat(QImage::Format_ARGB32);
    EXPECT_EQ(shot.pixel(0, 24), layer.pixel(0, 0));
    EXPECT_EQ(shot.pixel(23, 39), layer.pixel(23, 15));
    const QImage empty = emptyGrab(QSize(24, 40));
    EXPECT_EQ(shot.copy(0, 0, 24, 24), empty.copy(0, 0, 24, 24));
}

TEST_F(PSDViewTest, TheScaleIsTheSmallerRatio)
{
    view.setImporter(importer);
    view.resize(48, 48);
    EXPECT_FLOAT_EQ(view.drawingScale(), 2.0f);
    view.resize(12, 16);
    EXPECT_FLOAT_EQ(view.drawingScale(), 0.5f);
    view.setImporter(nullptr);
    EXPECT_FLOAT_EQ(view.drawingScale(), 0.0f);
}

TEST_F(PSDViewTest, SwitchingALayerRedrawsTheView)
{
    view.setImporter(importer);
    view.resize(48, 32);
    view.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&view));
    QCoreApplication::processEvents();
    PaintCounter counter(&view);
    importer->layers()[0].setVisible(!importer->layers()[0].visible());
    QCoreApplication::processEvents();
    EXPECT_GT(counter.paints, 0);

    // A view that no longer shows the importer is left alone.
    view.setImporter(nullptr);
    QCoreApplication::processEvents();
    counter.paints = 0;
    importer->layers()[0].setVisible(!importer->layers()[0].visible());
    QCoreApplication::processEvents();
    EXPECT_EQ(counter.paints, 0);
}

TEST_F(PSDViewTest, TheViewHoldsItsImporterWeakly)
{
    {
        canvas::PSDView other;
        other.setImporter(importer);
        view.setImporter(importer);
        for (const psd::PSDLayer& layer : importer->layers()) EXPECT_EQ(layer.visibleObserverCount(), 2);
    }
    // The destroyed view stopped observing; the live one still does.
    for (const psd::PSDLayer& layer : importer->layers()) EXPECT_EQ(layer.visibleObserverCount(), 1);
    importer.reset();
    EXPECT_EQ(view.importer(), nullptr);
    EXPECT_FLOAT_EQ(view.drawingScale(), 0.0f);
    view.setImporter(nullptr);  // nothing left to stop observing
}
