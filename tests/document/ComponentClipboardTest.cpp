#include "CommandsFixture.h"

#include "../support/ComponentFiles.h"

#include "document/ComponentArchive.h"
#include "document/ComponentClipboard.h"
#include "model/StandardComponents.h"

#include <QBuffer>
#include <QClipboard>
#include <QFile>
#include <QGuiApplication>
#include <QMimeData>
#include <QTemporaryDir>
#include <QUrl>

using document::ComponentClipboard;
using model::QuartzComponent;

class ComponentClipboardTest : public CommandsFixture {
protected:
    ComponentClipboardTest()
    {
        // Stand-ins for the standard files paste instantiates.
        testfiles::writeBoxComposition(QDir(standard.path()), QStringLiteral("TextComponent.qtz"),
                                       {{"QCStringPort", QStringLiteral("Text"), QStringLiteral("Text"), plist::Value("")}});
        testfiles::writeImageComposition(QDir(standard.path()), QStringLiteral("ImageComponent.qtz"));
        model::StandardComponents::setFolderForTesting(standard.path());
    }
    ~ComponentClipboardTest() override { model::StandardComponents::setFolderForTesting(QString()); }

    QStringList titles(const std::vector<QuartzComponent*>& components) const
    {
        QStringList result;
        for (const QuartzComponent* c : components) result.append(c->title());
        return result;
    }

    static QByteArray encoded(const QImage& image, const char* format)
    {
        QByteArray bytes;
        QBuffer buffer(&bytes);
        buffer.open(QIODevice::WriteOnly);
        image.save(&buffer, format);
        return bytes;
    }

    static QImage filled(QColor colour, QSize size = QSize(6, 4))
    {
        QImage image(size, QImage::Format_ARGB32);
        image.fill(colour);
        return image;
    }

    QTemporaryDir standard;
};

TEST_F(ComponentClipboardTest, CopyOffersTheSelectionInOneFormatAndNeedsASelection)
{
    QuartzComponent* a = addComponent(QStringLiteral("A"));
    addComponent(QStringLiteral("B"));
    QuartzComponent* c = addComponent(QStringLiteral("C"));
    composition->clearSelection();
    EXPECT_FALSE(ComponentClipboard::mimeDataForSelection(*composition));

    select({c, a});
    const std::unique_ptr<QMimeData> data = ComponentClipboard::mimeDataForSelection(*composition);
    ASSERT_TRUE(data);
    EXPECT_EQ(data->formats(), QStringList{QStringLiteral("application/x-velloran-component")});
    QList<QVariantMap> dictionaries;
    ASSERT_TRUE(document::ComponentArchive::unarchive(data->data(document::ComponentMimeType), dictionaries));
    QList<QVariantMap> expected;
    for (const QuartzComponent* x : composition->selectedComponents()) expected.append(x->dictionaryWithData());
    EXPECT_EQ(dictionaries, expected) << "every selected component, in selection order";
}

TEST_F(ComponentClipboardTest, PastedComponentsKeepTheirValuesAndGoOnTop)
{
    QuartzComponent* original = addComponent(QStringLiteral("Lower third"), QRectF(20, 30, 400, 80));
    model::Attribute* colour = addAttribute(original, QStringLiteral("Color"), model::kTypeColor, QColor(Qt::blue));
    colour->addTimepoint(1.0, QColor(Qt::red));
    colour->addTimepoint(3.0, QColor::fromRgbF(0.25f, 0.5f, 0.75f, 0.5f));
    addAttribute(original, QStringLiteral("Name"), model::kTypeString, QStringLiteral("Jane Doe"));
    original->setConstrainProportions(true);
    addComponent(QStringLiteral("Other"));
    select({original});
    const std::unique_ptr<QMimeData> data = ComponentClipboard::mimeDataForSelection(*composition);
    startCounting();

    const std::vector<QuartzComponent*> pasted = ComponentClipboard::paste(*composition, *data);
    ASSERT_EQ(pasted.size(), 1u);
    QuartzComponent* copy = pasted.front();
    EXPECT_NE(copy, original);
    EXPECT_EQ(copy->title(), QStringLiteral("Lower third"));
    EXPECT_TRUE(copy->constrainProportions());
    EXPECT_EQ(copy->drawingFrame(), QRectF(20, 30, 400, 80));
    EXPECT_EQ(copy->attributeForKey(QStringLiteral("Color"))->values(), colour->values());
    EXPECT_NE(copy->attributeForKey(QStringLiteral("Color")), colour) << "fresh attributes";
    EXPECT_EQ(copy->valueForKey(QStringLiteral("Name")).toString(), QStringLiteral("Jane Doe"));
    EXPECT_EQ(copy->zLevel(), 2u);
    EXPECT_EQ(composition->selectedComponents(), pasted);

    EXPECT_EQ(undoSteps(), 1u);
    undo();
    EXPECT_EQ(titles(composition->componentsSortedByZLevel()), (QStringList{"Lower third", "Other"}));
}

TEST_F(ComponentClipboardTest, CutRemovesTheSelectionAsOneStepAndPastesBack)
{
    addComponent(QStringLiteral("A"));
    QuartzComponent* b = addComponent(QStringLiteral("B"));
    QuartzComponent* c = addComponent(QStringLiteral("C"));
    select({b, c});
    startCounting();

    const std::unique_ptr<QMimeData> data = ComponentClipboard::cut(*composition);
    ASSERT_TRUE(data);
    EXPECT_EQ(titles(composition->componentArray()), QStringList{"A"});
    EXPECT_EQ(undoSteps(), 1u);

    ComponentClipboard::paste(*composition, *data);
    EXPECT_EQ(titles(composition->componentsSortedByZLevel()), (QStringList{"A", "B", "C"}));

    undo();
    undo();
    EXPECT_EQ(titles(composition->componentsSortedByZLevel()), (QStringList{"A", "B", "C"}));

    composition->clearSelection();
    startCounting();
    EXPECT_FALSE(ComponentClipboard::cut(*composition));
    EXPECT_EQ(composition->componentArray().size(), 3u);
    EXPECT_EQ(undoSteps(), 0u);
}

TEST_F(ComponentClipboardTest, ValidPasteboardsOfferComponentsImagesOrPlainText)
{
    QMimeData empty;
    EXPECT_FALSE(ComponentClipboard::pasteboardIsValid(empty));

    QMimeData components;
    components.setData(document::ComponentMimeType, document::ComponentArchive::archive({}));
    EXPECT_TRUE(ComponentClipboard::pasteboardIsValid(components));

    QMimeData tiff;
    tiff.setData(QStringLiteral("image/tiff"), encoded(filled(Qt::red), "TIFF"));
    EXPECT_TRUE(ComponentClipboard::pasteboardIsValid(tiff));

    QMimeData png;
    png.setData(QStringLiteral("image/png"), encoded(filled(Qt::red), "PNG"));
    EXPECT_TRUE(ComponentClipboard::pasteboardIsValid(png));

    QMimeData imageValue;
    imageValue.setImageData(filled(Qt::red));
    EXPECT_TRUE(ComponentClipboard::pasteboardIsValid(imageValue));

    QMimeData text;
    text.setText(QStringLiteral("Breaking news"));
    EXPECT_TRUE(ComponentClipboard::pasteboardIsValid(text));

    QMimeData files;
    files.setUrls({QUrl::fromLocalFile(QStringLiteral("/tmp/logo.png"))});
    EXPECT_FALSE(ComponentClipboard::pasteboardIsValid(files)) << "file names are dropped, not pasted";
    EXPECT_TRUE(ComponentClipboard::paste(*composition, files).empty());

    QMimeData html;
    html.setHtml(QStringLiteral("<b>bold</b>"));
    EXPECT_FALSE(ComponentClipboard::pasteboardIsValid(html));
}

TEST_F(ComponentClipboardTest, PastingTextMakesATextComponentWithTheString)
{
    QMimeData data;
    data.setText(QStringLiteral("Breaking news — live"));
    startCounting();
    const std::vector<QuartzComponent*> pasted = ComponentClipboard::paste(*composition, data);
    ASSERT_EQ(pasted.size(), 1u);
    EXPECT_EQ(pasted.front()->valueForKey(QStringLiteral("Text")).toString(), QStringLiteral("Breaking news — live"));
    EXPECT_EQ(pasted.front()->compositionFilename(), standard.filePath(QStringLiteral("TextComponent.qtz")));
    EXPECT_TRUE(pasted.front()->selected());
    EXPECT_EQ(undoSteps(), 1u);
    undo();
    EXPECT_TRUE(composition->componentArray().empty());
}

TEST_F(ComponentClipboardTest, PastingAnImageMakesAnImageComponentPreferringTiff)
{
    QImage tiffImage = filled(Qt::blue, QSize(8, 5));
    tiffImage.setPixelColor(7, 4, Qt::yellow);
    QMimeData data;
    data.setData(QStringLiteral("image/png"), encoded(filled(Qt::red), "PNG"));
    data.setData(QStringLiteral("image/tiff"), encoded(tiffImage, "TIFF"));
    data.setText(QStringLiteral("not this"));

    const std::vector<QuartzComponent*> pasted = ComponentClipboard::paste(*composition, data);
    ASSERT_EQ(pasted.size(), 1u);
    EXPECT_EQ(pasted.front()->compositionFilename(), standard.filePath(QStringLiteral("ImageComponent.qtz")));
    const QImage image = pasted.front()->valueForKey(QStringLiteral("Image")).value<QImage>();
    ASSERT_EQ(image.size(), QSize(8, 5));
    EXPECT_EQ(image.pixelColor(0, 0), QColor(Qt::blue));
    EXPECT_EQ(image.pixelColor(7, 4), QColor(Qt::yellow));
}

TEST_F(ComponentClipboardTest, ComponentsWinOverOtherFormsAndBrokenDataAddsNothing)
{
    QuartzComponent* a = addComponent(QStringLiteral("A"));
    select({a});
    std::unique_ptr<QMimeData> data = ComponentClipboard::mimeDataForSelection(*composition);
    data->setText(QStringLiteral("text too"));
    EXPECT_EQ(titles(ComponentClipboard::paste(*composition, *data)), QStringList{"A"});

    QMimeData broken;
    broken.setData(document::ComponentMimeType, "not an archive");
    broken.setText(QStringLiteral("fallback"));
    startCounting();
    EXPECT_TRUE(ComponentClipboard::paste(*composition, broken).empty());
    EXPECT_EQ(composition->componentArray().size(), 2u);
    EXPECT_EQ(undoSteps(), 0u);

    model::StandardComponents::setFolderForTesting(standard.filePath(QStringLiteral("missing")));
    QMimeData text;
    text.setText(QStringLiteral("no text component installed"));
    EXPECT_TRUE(ComponentClipboard::paste(*composition, text).empty());
    EXPECT_EQ(composition->componentArray().size(), 2u);
}

TEST_F(ComponentClipboardTest, CopyAndPasteThroughTheApplicationClipboard)
{
    QClipboard* clipboard = QGuiApplication::clipboard();
    ASSERT_NE(clipboard, nullptr);
    clipboard->setText(QStringLiteral("left alone"));
    composition->clearSelection();
    EXPECT_FALSE(ComponentClipboard::copy(*composition, *clipboard));
    EXPECT_EQ(clipboard->text(), QStringLiteral("left alone")) << "copying nothing keeps the clipboard";

    QuartzComponent* a = addComponent(QStringLiteral("A"));
    select({a});
    ASSERT_TRUE(ComponentClipboard::copy(*composition, *clipboard));
    EXPECT_TRUE(ComponentClipboard::pasteboardIsValid(*clipboard));
    EXPECT_EQ(titles(ComponentClipboard::paste(*composition, *clipboard)), QStringList{"A"});

    ASSERT_TRUE(ComponentClipboard::cut(*composition, *clipboard));
    EXPECT_EQ(composition->componentArray().size(), 1u);
    EXPECT_EQ(titles(ComponentClipboard::paste(*composition, *clipboard)), QStringList{"A"});
}

TEST_F(ComponentClipboardTest, PastedTiffIsReadByTheCodecAndCopiedAsItCame)
{
    // Another program's TIFF whose rows are stored turned: Qt's reader alone
    // would give it lying on its side.
    QFile file(QStringLiteral(VELLORAN_SOURCE_DIR "/tests/fixtures/tiff/rgba8_zip_orientation6.tif"));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QByteArray tiff = file.readAll();
    QMimeData data;
    data.setData(QStringLiteral("image/tiff"), tiff);
    const std::vector<QuartzComponent*> pasted = ComponentClipboard::paste(*composition, data);
    ASSERT_EQ(pasted.size(), 1u);
    const QImage image = pasted.front()->valueForKey(QStringLiteral("Image")).value<QImage>();
    const QImage expected(QStringLiteral(VELLORAN_SOURCE_DIR "/tests/fixtures/tiff/expected/rgba8_zip_orientation6.png"));
    ASSERT_EQ(image.size(), QSize(21, 37));
    // Pixel by pixel: the PNG carries a colour space, which QImage::operator== compares too.
    const QImage want = expected.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    int differing = 0;
    for (int y = 0; y < want.height(); ++y)
        for (int x = 0; x < want.width(); ++x) differing += image.pixel(x, y) != want.pixel(x, y);
    EXPECT_EQ(differing, 0);

    // Copying it again hands on the bytes that came in, not a new encoding.
    select({pasted.front()});
    const std::unique_ptr<QMimeData> copied = ComponentClipboard::mimeDataForSelection(*composition);
    ASSERT_TRUE(copied);
    EXPECT_TRUE(copied->data(document::ComponentMimeType).contains(tiff.toBase64()));
}
