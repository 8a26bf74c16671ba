// Components made from composition files: which ports become attributes,
// their permissions, the standard attributes, size and place, wrapping.

#include "ModelFixture.h"
#include "../support/ComponentFiles.h"

#include "model/RichFontValue.h"
#include "runtime/Renderer.h"

#include <QFont>
#include <QImage>
#include <QStandardPaths>
#include <QTemporaryDir>

using model::Attribute;
using model::QuartzComponent;
using testfiles::Port;

namespace {

QStringList keysOf(const QuartzComponent* c)
{
    QStringList keys;
    for (const Attribute* a : c->attributes()) keys << a->key();
    keys.sort();
    return keys;
}

}  // namespace

class ComponentCreationTest : public ModelFixture {
protected:
    QTemporaryDir dir;
};

TEST_F(ComponentCreationTest, EligiblePortsBecomeTypedAttributes)
{
    const QString path = testfiles::writeBoxComposition(
        QDir(dir.path()), QStringLiteral("Lower Third.qtz"),
        {{"QCStringPort", QStringLiteral("CIText"), QStringLiteral("Name [2]"), plist::Value("Anna")},
         {"QCStringPort", QStringLiteral("Text"), QStringLiteral("Role (Details)"), plist::Value("Host")},
         {"QCStringPort", QStringLiteral("Title_Font_Name"), {}, plist::Value("DejaVuSans-Bold")},
         {"QCNumberPort", QStringLiteral("Title_Font_Size"), {}, plist::Value(36.0)},
         {"QCStringPort", QStringLiteral("Rich_Font_Name"), {}, plist::Value("DejaVuSans")},
         {"QCColorPort", QStringLiteral("Rich_Font_Color"), {}, plist::Value()}});
    QStringList warnings;
    QuartzComponent* c = QuartzComponent::initWithQuartzCompositionFile(path, composition, {}, &warnings);
    ASSERT_NE(c, nullptr);
    EXPECT_TRUE(warnings.isEmpty()) << warnings.join('\n').toStdString();
    EXPECT_EQ(c->title(), QStringLiteral("Lower Third"));
    EXPECT_EQ(c->compositionFilename(), path);
    EXPECT_FALSE(c->quartzCompositionData().isEmpty());

    // Width and height stand for the file's own size ports; font sizes and
    // rich-font members travel with their font.
    EXPECT_EQ(keysOf(c), QStringList({"CIText", "Color", "Rich_Font_Name", "Text", "Title_Font_Name", "inputHeight",
                                      "inputWidth", "marginX", "marginY", "opacity", "originX", "originY",
                                      "visibleInCompositionEditor", "zRotation"}));

    const Attribute* ciText = c->attributeForKey(QStringLiteral("CIText"));
    const Attribute* text = c->attributeForKey(QStringLiteral("Text"));
    EXPECT_TRUE(ciText->permissionToChange());
    EXPECT_FALSE(text->permissionToChange());
    EXPECT_EQ(ciText->currentValue().toString(), QStringLiteral("Anna"));
    EXPECT_EQ(ciText->label(), QStringLiteral("Name "));
    EXPECT_EQ(ciText->position(), 2u);
    EXPECT_EQ(text->category(), QStringLiteral("Details"));

    const Attribute* font = c->attributeForKey(QStringLiteral("Title_Font_Name"));
    EXPECT_EQ(font->type(), model::kTypeFont);
    EXPECT_EQ(font->currentValue().value<QFont>().family(), QStringLiteral("DejaVu Sans"));
    EXPECT_DOUBLE_EQ(font->currentValue().value<QFont>().pointSizeF(), 36.0);
    EXPECT_EQ(c->attributeForKey(QStringLiteral("Rich_Font_Name"))->type(), model::kTypeRichFont);
    EXPECT_EQ(c->attributeForKey(QStringLiteral("Color"))->type(), model::kTypeColor);

    for (const char* editorOnly : {"originX", "opacity", "marginY", "visibleInCompositionEditor"})
        EXPECT_FALSE(c->attributeForKey(QLatin1String(editorOnly))->quartzAttribute()) << editorOnly;
    EXPECT_TRUE(c->attributeForKey(QStringLiteral("inputWidth"))->quartzAttribute());
    EXPECT_TRUE(c->visibleInCompositionEditor());
    EXPECT_EQ(c->startTime(), 0.0);
    EXPECT_EQ(c->endTime(), composition->duration());
}

TEST_F(ComponentCreationTest, UnmarkedPortsAreNumberedInFileOrder)
{
    const QString path = testfiles::writeBoxComposition(
        QDir(dir.path()), QStringLiteral("Ports.qtz"),
        {{"QCStringPort", QStringLiteral("A"), QStringLiteral("First"), {}},
         {"QCStringPort", QStringLiteral("B"), QStringLiteral("Second [0]"), {}},
         {"QCStringPort", QStringLiteral("C"), QStringLiteral("Third"), {}}},
        QStringLiteral("Named In File"));
    QuartzComponent* c = QuartzComponent::initWithQuartzCompositionFile(path, composition, {}, nullptr);
    ASSERT_NE(c, nullptr);
    EXPECT_EQ(c->title(), QStringLiteral("Named In File"));
    // "Color" is the first published input, so it takes 0; the marked port
    // shares 0 with it, which is how unmarked and marked numbers mix.
    EXPECT_EQ(c->attributeForKey(QStringLiteral("Color"))->position(), 0u);
    EXPECT_EQ(c->attributeForKey(QStringLiteral("A"))->position(), 1u);
    EXPECT_EQ(c->attributeForKey(QStringLiteral("B"))->position(), 0u);
    EXPECT_EQ(c->attributeForKey(QStringLiteral("C"))->position(), 2u);
}

TEST_F(ComponentCreationTest, MissingFontsAreSubstitutedWithAWarning)
{
    const QString path = testfiles::writeBoxComposition(
        QDir(dir.path()), QStringLiteral("Font.qtz"),
        {{"QCStringPort", QStringLiteral("Title_Font_Name"), {}, plist::Value("NoSuchFont-Regular")},
         {"QCNumberPort", QStringLiteral("Title_Font_Size"), {}, plist::Value(20.0)}});
    QStringList warnings;
    QuartzComponent* c = QuartzComponent::initWithQuartzCompositionFile(path, composition, {}, &warnings);
    ASSERT_NE(c, nullptr);
    ASSERT_EQ(warnings.size(), 1);
    EXPECT_TRUE(warnings[0].startsWith(QStringLiteral("Could not find font \"NoSuchFont-Regular\", substituted with font \"")))
        << warnings[0].toStdString();
    EXPECT_DOUBLE_EQ(c->attributeForKey(QStringLiteral("Title_Font_Name"))->currentValue().value<QFont>().pointSizeF(), 20.0);
}

TEST_F(ComponentCreationTest, SizeComesFromTheFileThenIsCentred)
{
    // The render-in-image says 200 × 100; it has no natural size to fit to.
    const QString box = testfiles::writeBoxComposition(QDir(dir.path()), QStringLiteral("Box.qtz"), {});
    QuartzComponent* c = QuartzComponent::initWithQuartzCompositionFile(box, composition, {}, nullptr);
    ASSERT_NE(c, nullptr);
    EXPECT_TRUE(c->rootIsRenderInImage());
    EXPECT_EQ(c->width(), 200);
    EXPECT_EQ(c->height(), 100);
    EXPECT_EQ(c->originX(), 960 - 100);
    EXPECT_EQ(c->originY(), 540 - 50);
    EXPECT_EQ(c->renderer()->inputValue(QStringLiteral("inputWidth")).toDouble(), 200);
}

TEST_F(ComponentCreationTest, AnImageTakesItsOwnSize)
{
    const QString path = testfiles::writeImageComposition(QDir(dir.path()), QStringLiteral("Image.qtz"));
    QImage picture(64, 32, QImage::Format_ARGB32_Premultiplied);
    picture.fill(Qt::red);
    QuartzComponent* c =
        QuartzComponent::initWithQuartzCompositionFile(path, composition, {{QStringLiteral("Image"), picture}}, nullptr);
    ASSERT_NE(c, nullptr);
    EXPECT_FALSE(c->rootIsRenderInImage());
    EXPECT_EQ(c->width(), 64);
    EXPECT_EQ(c->height(), 32);
    EXPECT_EQ(c->attributeForKey(QStringLiteral("Image"))->currentValue().value<QImage>().size(), QSize(64, 32));

    // Without an image nothing has a size: 0 × 0 becomes the canvas width
    // both ways, centred for that size.
    QuartzComponent* empty = QuartzComponent::initWithQuartzCompositionFile(path, composition, {}, nullptr);
    ASSERT_NE(empty, nullptr);
    EXPECT_EQ(empty->width(), 200);
    EXPECT_EQ(empty->height(), 200);
}

TEST_F(ComponentCreationTest, ScreenCompositionsAreWrappedIntoAnImage)
{
    const QString path = testfiles::writeScreenComposition(QDir(dir.path()), QStringLiteral("Hand Made.qtz"));
    QuartzComponent* c = QuartzComponent::initWithQuartzCompositionFile(path, composition, {}, nullptr);
    ASSERT_NE(c, nullptr);
    EXPECT_EQ(c->compositionFilename(), QuartzComponent::cacheFolder() + QStringLiteral("/Hand Made-Wrapped.qtz"));
    EXPECT_TRUE(c->rootIsRenderInImage());
    EXPECT_EQ(c->title(), QStringLiteral("Hand Made-Wrapped"));
    auto stored = QuartzComposition::compositionWithData(c->quartzCompositionData());
    ASSERT_TRUE(stored);
    ASSERT_EQ(stored->rootPatch().nodes().size(), 1u);
    const QuartzPatch& wrapper = *stored->rootPatch().nodes().front();
    EXPECT_EQ(wrapper.patchClass(), QStringLiteral("QCRenderInImage"));
    ASSERT_EQ(wrapper.nodes().size(), 1u);
    EXPECT_EQ(wrapper.nodes().front()->patchClass(), QStringLiteral("QCSprite"));
    EXPECT_EQ(c->width(), 200);
    EXPECT_EQ(c->height(), 200);
}

TEST_F(ComponentCreationTest, UnusableFilesGiveAWarningAndNoComponent)
{
    QStringList warnings;
    const QString missing = dir.filePath(QStringLiteral("missing.qtz"));
    EXPECT_EQ(QuartzComponent::initWithQuartzCompositionFile(missing, composition, {}, &warnings), nullptr);
    EXPECT_EQ(warnings, QStringList{QStringLiteral("Could not load composition \"%1\"").arg(missing)});
    EXPECT_TRUE(composition->componentArray().empty());
    EXPECT_EQ(composition->addComponenWithQuartzCompositionFile(missing), nullptr);
}

TEST_F(ComponentCreationTest, AddingFromAFileStacksAndSelects)
{
    const QString box = testfiles::writeBoxComposition(QDir(dir.path()), QStringLiteral("Box.qtz"), {});
    QuartzComponent* first = composition->addComponenWithQuartzCompositionFile(box);
    QuartzComponent* second = nullptr;
    {
        model::UndoGroup drop(store.undoManager());
        second = composition->addComponenWithQuartzCompositionFile(box);
    }
    ASSERT_TRUE(first && second);
    EXPECT_EQ(second->zLevel(), first->zLevel() + 1);
    EXPECT_TRUE(second->selected());
    EXPECT_FALSE(first->selected());
    // The drop is one undo step that takes the component away again.
    store.undoManager().undo();
    store.processPendingChanges();
    EXPECT_EQ(composition->componentArray().size(), 1u);
}
