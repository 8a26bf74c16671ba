// The editor factory over the attribute-type table: which control each type
// code gets, and the two presentations of a menu.

#include "inspector/AttributeEditorFactory.h"
#include "inspector/MenuAttributeEditor.h"
#include "inspector/NumberAttributeEditor.h"

#include "widgets/VLSegmentedControl.h"

#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QPointer>
#include <QWidget>

#include <gtest/gtest.h>

#include <memory>

namespace {

// Takes the editor's widget (and so the editor) into a unique owner.
struct Made {
    explicit Made(inspector::AttributeEditor* e) : editor(e), widget(e ? e->widget() : nullptr) {}
    inspector::AttributeEditor* editor;
    std::unique_ptr<QWidget> widget;
};

Made make(int code, const QStringList& possibleValues = {})
{
    return Made(inspector::makeAttributeEditorForType(code, inspector::EditorOptions{QStringLiteral("Label"), possibleValues}));
}

}  // namespace

TEST(AttributeEditorFactory, EachTypeCodeGetsItsControl)
{
    const std::pair<int, const char*> table[] = {
        {model::kTypeString, "inspector::TextAttributeEditor"},
        {model::kTypeIndex, "inspector::NumberAttributeEditor"},
        {model::kTypeNumber, "inspector::NumberAttributeEditor"},
        {model::kTypeBoolean, "inspector::CheckboxAttributeEditor"},
        {model::kTypeIndexMenu, "inspector::MenuAttributeEditor"},
        {model::kTypeColor, "inspector::ColourAttributeEditor"},
        {model::kTypeImage, "inspector::ImageAttributeEditor"},
        {model::kTypeFont, "inspector::FontAttributeEditor"},
        {model::kTypeStyledText, "inspector::StyledTextAttributeEditor"},
        {model::kTypeFilePath, "inspector::FilePathAttributeEditor"},
        {model::kTypeOtherFilePath, "inspector::FilePathAttributeEditor"},
        {model::kTypeVideoInput, nullptr},
        {model::kTypeRichFont, nullptr},
        {13, nullptr},
        {-1, nullptr},
    };
    for (const auto& [code, className] : table) {
        const Made made = make(code);
        if (!className) {
            EXPECT_EQ(made.editor, nullptr) << "code " << code;
            continue;
        }
        ASSERT_NE(made.editor, nullptr) << "code " << code;
        EXPECT_STREQ(made.editor->metaObject()->className(), className) << "code " << code;
    }
}

TEST(AttributeEditorFactory, EveryEntryOfTheTableWithAnEditorKindIsCovered)
{
    // A type added to the table with an existing editor kind gets its
    // control without any change to the factory.
    for (const model::AttributeTypeInfo& type : model::attributeTypes()) {
        const bool noRow = type.editor == model::EditorKind::VideoPoster || type.editor == model::EditorKind::RichFont;
        const Made made = Made(inspector::makeAttributeEditor(type.editor, {}));
        EXPECT_EQ(made.editor == nullptr, noRow) << type.name;
    }
}

TEST(AttributeEditorFactory, IndicesAreWholeNumbersFromZeroAndNumbersAreNot)
{
    const Made index = make(model::kTypeIndex);
    auto* whole = qobject_cast<inspector::NumberAttributeEditor*>(index.editor);
    ASSERT_NE(whole, nullptr);
    EXPECT_TRUE(whole->wholeNumbers());
    EXPECT_EQ(whole->parse(QStringLiteral("-4")), 0.0);
    EXPECT_EQ(whole->parse(QStringLiteral("2.6")), 3.0);
    const Made number = make(model::kTypeNumber);
    auto* real = qobject_cast<inspector::NumberAttributeEditor*>(number.editor);
    ASSERT_NE(real, nullptr);
    EXPECT_FALSE(real->wholeNumbers());
    EXPECT_EQ(real->parse(QStringLiteral("-2.5")), -2.5);
    EXPECT_FALSE(real->parse(QStringLiteral("twelve")).has_value());
}

TEST(AttributeEditorFactory, ExactlyTheFiveJustificationsInOrderShowAlignmentIcons)
{
    const QStringList justifications{QStringLiteral("Left"), QStringLiteral("Center"), QStringLiteral("Right"),
                                     QStringLiteral("Justified"), QStringLiteral("Natural")};
    const Made aligned = make(model::kTypeIndexMenu, justifications);
    auto* menu = qobject_cast<inspector::MenuAttributeEditor*>(aligned.editor);
    ASSERT_NE(menu, nullptr);
    ASSERT_NE(menu->alignment(), nullptr);
    EXPECT_EQ(menu->popUp(), nullptr);

    QStringList reordered = justifications;
    reordered.swapItemsAt(0, 1);
    QStringList fewer = justifications;
    fewer.removeLast();
    for (const QStringList& other : {reordered, fewer, QStringList{QStringLiteral("Small"), QStringLiteral("Large")}}) {
        const Made popUp = make(model::kTypeIndexMenu, other);
        auto* m = qobject_cast<inspector::MenuAttributeEditor*>(popUp.editor);
        ASSERT_NE(m, nullptr);
        EXPECT_EQ(m->alignment(), nullptr) << other.join(QLatin1Char(',')).toStdString();
        ASSERT_NE(m->popUp(), nullptr);
        EXPECT_EQ(m->popUp()->count(), other.size());
    }
}

TEST(AttributeEditorFactory, TheEditorGoesWithItsWidget)
{
    Made made = make(model::kTypeNumber);
    QPointer<inspector::AttributeEditor> editor = made.editor;
    made.widget.reset();
    EXPECT_TRUE(editor.isNull());
}

TEST(AttributeEditorFactory, EditorsIncludeNoModelHeader)
{
    // Only the factory, which reads the type table, and the bindings and
    // panes that own the editors know the model.
    const QDir dir(QStringLiteral(VELLORAN_SOURCE_DIR "/src/inspector"));
    const QStringList editors = dir.entryList({QStringLiteral("*Editor.h"), QStringLiteral("*Editor.cpp"),
                                               QStringLiteral("ColourWell.*"), QStringLiteral("VLTextPanel.*")});
    ASSERT_GE(editors.size(), 24);
    for (const QString& name : editors) {
        QFile file(dir.filePath(name));
        ASSERT_TRUE(file.open(QIODevice::ReadOnly)) << name.toStdString();
        EXPECT_FALSE(file.readAll().contains("#include \"model/")) << name.toStdString();
    }
}
