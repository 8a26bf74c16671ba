// Every type's control, worked as a user works it, writes the right value
// into the model, as one undo step.

#include "InspectorFixture.h"

#include "inspector/CheckboxAttributeEditor.h"
#include "inspector/ColourAttributeEditor.h"
#include "inspector/ColourWell.h"
#include "inspector/FilePathAttributeEditor.h"
#include "inspector/FontAttributeEditor.h"
#include "inspector/ImageAttributeEditor.h"
#include "inspector/MenuAttributeEditor.h"
#include "inspector/NumberAttributeEditor.h"
#include "inspector/StyledTextAttributeEditor.h"
#include "inspector/TextAttributeEditor.h"

#include "rtf/Rtf.h"
#include "widgets/VLSegmentedControl.h"

#include <QCheckBox>
#include <QComboBox>
#include <QImage>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTextDocument>
#include <QToolButton>

namespace {

const QStringList kJustifications{QStringLiteral("Left"), QStringLiteral("Center"), QStringLiteral("Right"),
                                  QStringLiteral("Justified"), QStringLiteral("Natural")};

}  // namespace

class AttributeEditors : public InspectorFixture {
protected:
    AttributeEditors()
    {
        QImage picture(4, 4, QImage::Format_ARGB32);
        picture.fill(Qt::green);
        box = addComponent(QStringLiteral("Box"), QStringLiteral("box.qtz"),
                           {{"Name", model::kTypeString, QStringLiteral("Hello")},
                            {"Count", model::kTypeIndex, 2.0f},
                            {"Size", model::kTypeNumber, 12.5f},
                            {"Shown", model::kTypeBoolean, false},
                            {"Mode", model::kTypeIndexMenu, 0.0f, {}, {"Small", "Medium", "Large"}},
                            {"Align", model::kTypeIndexMenu, 0.0f, {}, kJustifications},
                            {"Fill", model::kTypeColor, QColor(Qt::red)},
                            {"Picture", model::kTypeImage, picture},
                            {"Typeface", model::kTypeFont, QFont(QStringLiteral("DejaVu Sans"), 24)},
                            {"Body", model::kTypeStyledText, QString::fromLatin1(rtfOf(QStringLiteral("Styled")))},
                            {"Movie", model::kTypeFilePath, QStringLiteral("/tmp/a.mov")}});
        select({box});
        startCounting();
    }

    static QByteArray rtfOf(const QString& text)
    {
        QTextDocument document;
        document.setPlainText(text);
        return rtf::write(document);
    }

    // Replaces a field's text as typing would, and ends with Return.
    void expectOneStep() { EXPECT_EQ(undoManager().undoCount(), 1u); }

    model::QuartzComponent* box = nullptr;
};

TEST_F(AttributeEditors, StringFieldWritesWhileTypingAsOneStep)
{
    auto* text = editor<inspector::TextAttributeEditor>(QStringLiteral("Name"));
    text->field()->setFocus();
    text->field()->end(false);
    QTest::keyClicks(text->field(), QStringLiteral(" you"));
    // The canvas follows each key: the model already has the typed text.
    EXPECT_EQ(value(box, "Name").toString(), QStringLiteral("Hello you"));
    QTest::keyClick(text->field(), Qt::Key_Return);
    expectOneStep();
    undoManager().undo();
    EXPECT_EQ(value(box, "Name").toString(), QStringLiteral("Hello"));
    EXPECT_EQ(text->field()->text(), QStringLiteral("Hello"));
}

TEST_F(AttributeEditors, UndoKeysInAFieldEndTheTypingAndGoToTheDocument)
{
    auto* text = editor<inspector::TextAttributeEditor>(QStringLiteral("Name"));
    text->field()->setFocus();
    QTest::keyClicks(text->field(), QStringLiteral("!"));
    ASSERT_TRUE(text->isEditing());
    QKeyEvent undoKeys(QEvent::ShortcutOverride, Qt::Key_Z, Qt::ControlModifier);
    QCoreApplication::sendEvent(text->field(), &undoKeys);
    // Not taken by the field's own undo: the window's Undo gets the keys,
    // and finds the typing closed as one step.
    EXPECT_FALSE(undoKeys.isAccepted());
    EXPECT_FALSE(text->isEditing());
    expectOneStep();
    undoManager().undo();
    EXPECT_EQ(text->field()->text(), QStringLiteral("Hello"));
}

TEST_F(AttributeEditors, IndexFieldWritesWholeNumbers)
{
    retype(editor<inspector::NumberAttributeEditor>(QStringLiteral("Count"))->field(), QStringLiteral("7.4"));
    EXPECT_EQ(value(box, "Count").toDouble(), 7.0);
    expectOneStep();
}

TEST_F(AttributeEditors, NumberFieldWritesTheTypedNumber)
{
    auto* number = editor<inspector::NumberAttributeEditor>(QStringLiteral("Size"));
    EXPECT_EQ(number->field()->text(), number->format(12.5));
    retype(number->field(), QStringLiteral("3.25"));
    EXPECT_FLOAT_EQ(value(box, "Size").toFloat(), 3.25f);
    expectOneStep();
}

TEST_F(AttributeEditors, NumberFieldIgnoresTextThatIsNoNumber)
{
    retype(editor<inspector::NumberAttributeEditor>(QStringLiteral("Size"))->field(), QStringLiteral("abc"));
    EXPECT_FLOAT_EQ(value(box, "Size").toFloat(), 12.5f);
    EXPECT_EQ(undoManager().undoCount(), 0u);
    EXPECT_FALSE(inspector.isEditing());
}

TEST_F(AttributeEditors, DraggingTheLabelStepsTheNumberAsOneUndoStep)
{
    auto* number = editor<inspector::NumberAttributeEditor>(QStringLiteral("Size"));
    QLabel* label = nullptr;
    for (QLabel* l : attributes()->findChildren<QLabel*>(QStringLiteral("rowLabel")))
        if (l->text() == QLatin1String("Size")) label = l;
    ASSERT_NE(label, nullptr);
    const auto send = [label](QEvent::Type type, int x, Qt::KeyboardModifiers modifiers = {}) {
        const QPointF local(x, 5);
        QMouseEvent event(type, local, label->mapToGlobal(local), type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton,
                          type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::MouseButtons(Qt::LeftButton), modifiers);
        QCoreApplication::sendEvent(label, &event);
    };
    send(QEvent::MouseButtonPress, 10);
    send(QEvent::MouseMove, 14);  // +4
    EXPECT_FLOAT_EQ(value(box, "Size").toFloat(), 16.5f);
    send(QEvent::MouseMove, 16, Qt::ShiftModifier);  // +2 × 10
    EXPECT_FLOAT_EQ(value(box, "Size").toFloat(), 36.5f);
    send(QEvent::MouseMove, 21, Qt::AltModifier);  // +5 × 0.1
    EXPECT_FLOAT_EQ(value(box, "Size").toFloat(), 37.0f);
    EXPECT_TRUE(number->isEditing());
    send(QEvent::MouseButtonRelease, 21);
    EXPECT_FALSE(number->isEditing());
    expectOneStep();
    undoManager().undo();
    EXPECT_FLOAT_EQ(value(box, "Size").toFloat(), 12.5f);
}

TEST_F(AttributeEditors, CheckBoxWritesABoolean)
{
    editor<inspector::CheckboxAttributeEditor>(QStringLiteral("Shown"))->checkBox()->click();
    EXPECT_TRUE(value(box, "Shown").toBool());
    expectOneStep();
}

TEST_F(AttributeEditors, PopUpWritesTheChosenIndex)
{
    QComboBox* popUp = editor<inspector::MenuAttributeEditor>(QStringLiteral("Mode"))->popUp();
    ASSERT_NE(popUp, nullptr);
    EXPECT_EQ(popUp->currentText(), QStringLiteral("Small"));
    popUp->setFocus();
    QTest::keyClick(popUp, Qt::Key_Down);
    QTest::keyClick(popUp, Qt::Key_Down);
    EXPECT_EQ(value(box, "Mode").toInt(), 2);
    EXPECT_EQ(undoManager().undoCount(), 2u);  // two choices, two steps
}

TEST_F(AttributeEditors, AlignmentSegmentsWriteTheirIndex)
{
    widgets::VLSegmentedControl* segments = editor<inspector::MenuAttributeEditor>(QStringLiteral("Align"))->alignment();
    ASSERT_NE(segments, nullptr);
    EXPECT_TRUE(segments->buttonForTag(0)->isChecked());
    segments->buttonForTag(3)->click();
    EXPECT_EQ(value(box, "Align").toInt(), 3);
    EXPECT_TRUE(segments->buttonForTag(3)->isChecked());
    EXPECT_FALSE(segments->buttonForTag(0)->isChecked());
    expectOneStep();
}

TEST_F(AttributeEditors, ColourPanelWritesLiveAndCancelPutsTheColourBack)
{
    auto* colour = editor<inspector::ColourAttributeEditor>(QStringLiteral("Fill"));
    colour->well()->click();
    ASSERT_NE(colour->colourPanel(), nullptr);
    colour->colourPanel()->setCurrentColor(QColor(0, 0, 255, 128));
    EXPECT_EQ(value(box, "Fill").value<QColor>(), QColor(0, 0, 255, 128));
    colour->colourPanel()->setCurrentColor(QColor(Qt::yellow));
    colour->colourPanel()->accept();
    EXPECT_EQ(value(box, "Fill").value<QColor>(), QColor(Qt::yellow));
    expectOneStep();

    colour->showColourPanel();
    colour->colourPanel()->setCurrentColor(QColor(Qt::cyan));
    colour->colourPanel()->reject();
    EXPECT_EQ(value(box, "Fill").value<QColor>(), QColor(Qt::yellow));
}

TEST_F(AttributeEditors, ImageWellTakesAnImageFileAndRefusesOthers)
{
    QTemporaryDir dir;
    QImage image(30, 20, QImage::Format_ARGB32);
    image.fill(Qt::blue);
    const QString png = dir.filePath(QStringLiteral("picture.png"));
    ASSERT_TRUE(image.save(png));
    const QString text = dir.filePath(QStringLiteral("notes.png"));
    QFile notes(text);
    ASSERT_TRUE(notes.open(QIODevice::WriteOnly));
    notes.write("not an image");
    notes.close();

    auto* well = editor<inspector::ImageAttributeEditor>(QStringLiteral("Picture"));
    EXPECT_FALSE(well->takeImageFile(text));
    EXPECT_FALSE(well->takeImageFile(dir.filePath(QStringLiteral("missing.png"))));
    EXPECT_EQ(value(box, "Picture").value<QImage>().size(), QSize(4, 4));
    EXPECT_TRUE(well->takeImageFile(png));
    EXPECT_EQ(value(box, "Picture").value<QImage>().size(), QSize(30, 20));
    expectOneStep();
}

TEST_F(AttributeEditors, FontPanelWritesTheChosenFont)
{
    auto* font = editor<inspector::FontAttributeEditor>(QStringLiteral("Typeface"));
    EXPECT_TRUE(font->fontLabel()->text().startsWith(QStringLiteral("DejaVu Sans")));
    font->chooseButton()->click();
    ASSERT_NE(font->fontPanel(), nullptr);
    font->fontPanel()->setCurrentFont(QFont(QStringLiteral("DejaVu Serif"), 30));
    font->fontPanel()->accept();
    const QFont written = value(box, "Typeface").value<QFont>();
    EXPECT_EQ(written.family(), QStringLiteral("DejaVu Serif"));
    EXPECT_EQ(written.pointSize(), 30);
    expectOneStep();
}

TEST_F(AttributeEditors, StyledTextWritesRtfAsTheUserTypes)
{
    auto* styled = editor<inspector::StyledTextAttributeEditor>(QStringLiteral("Body"));
    EXPECT_EQ(styled->textView()->toPlainText(), QStringLiteral("Styled"));
    styled->textView()->setFocus();
    styled->textView()->moveCursor(QTextCursor::End);
    QTest::keyClicks(styled->textView(), QStringLiteral(" text"));
    const QString rtf = value(box, "Body").toString();
    EXPECT_TRUE(rtf.startsWith(QStringLiteral("{\\rtf")));
    const auto read = rtf::read(rtf.toLatin1());
    ASSERT_TRUE(read);
    EXPECT_EQ(read->toPlainText(), QStringLiteral("Styled text"));
    styled->textView()->clearFocus();
    expectOneStep();
}

TEST_F(AttributeEditors, FilePathFieldAndChooserWriteThePath)
{
    auto* path = editor<inspector::FilePathAttributeEditor>(QStringLiteral("Movie"));
    retype(path->field(), QStringLiteral("/tmp/b.mov"));
    EXPECT_EQ(value(box, "Movie").toString(), QStringLiteral("/tmp/b.mov"));

    QTemporaryDir dir;
    const QString chosen = dir.filePath(QStringLiteral("clip.mov"));
    QFile file(chosen);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.close();
    path->chooseButton()->click();
    ASSERT_NE(path->fileDialog(), nullptr);
    EXPECT_EQ(path->fileDialog()->windowModality(), Qt::WindowModal);
    Q_EMIT path->fileDialog()->fileSelected(chosen);
    EXPECT_EQ(value(box, "Movie").toString(), chosen);
    path->fileDialog()->reject();
    EXPECT_EQ(undoManager().undoCount(), 2u);
}
