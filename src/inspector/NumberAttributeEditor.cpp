#include "inspector/NumberAttributeEditor.h"

#include <QEvent>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QMouseEvent>

#include <algorithm>
#include <cmath>

namespace inspector {

NumberAttributeEditor::NumberAttributeEditor(const EditorOptions& options, bool wholeNumbers)
    : AttributeEditor(options), wholeNumbers_(wholeNumbers)
{
    field_ = new QLineEdit;
    setParent(field_);
    routeUndoKeysToDocument(field_, this);
    field_->setAlignment(Qt::AlignRight);
    connect(field_, &QLineEdit::textEdited, this, &NumberAttributeEditor::typed);
    connect(field_, &QLineEdit::editingFinished, this, &NumberAttributeEditor::finishTyping);
}

QWidget* NumberAttributeEditor::widget() const { return field_; }

void NumberAttributeEditor::attachLabel(QLabel* label)
{
    label_ = label;
    label->setCursor(Qt::SizeHorCursor);
    label->installEventFilter(this);
}

QString NumberAttributeEditor::format(double value) const
{
    const QLocale locale;
    if (wholeNumbers_) return locale.toString(qlonglong(std::llround(value)));
    QString text = locale.toString(value, 'f', 2);
    // "#,##0.##": at most two decimals, none that are zero.
    const QChar point = locale.decimalPoint().at(0);
    if (text.contains(point)) {
        while (text.endsWith(QLatin1Char('0'))) text.chop(1);
        if (text.endsWith(point)) text.chop(1);
    }
    return text;
}

std::optional<double> NumberAttributeEditor::parse(const QString& text) const
{
    bool ok = false;
    double value = QLocale().toDouble(text.trimmed(), &ok);
    // A point typed in a locale with a decimal comma still means a point.
    if (!ok) value = QLocale::c().toDouble(text.trimmed(), &ok);
    if (!ok || !std::isfinite(value)) return std::nullopt;
    return clamp(wholeNumbers_ ? std::round(value) : value);
}

double NumberAttributeEditor::clamp(double value) const
{
    return std::clamp(value, options().minimum, options().maximum);
}

double NumberAttributeEditor::dragged(double start, double pixels, Qt::KeyboardModifiers modifiers) const
{
    double step = 1.0;
    if (modifiers & Qt::ShiftModifier) step = 10.0;
    if (modifiers & Qt::AltModifier) step = 0.1;
    return clamp(start + pixels * step);
}

void NumberAttributeEditor::showValue(const QVariant& value, bool mixed)
{
    rememberShown(value, mixed);
    const QSignalBlocker quiet(field_);
    field_->setPlaceholderText(mixed ? mixedValuesPlaceholder() : QString());
    const QString text = mixed || !value.isValid() ? QString() : format(value.toDouble());
    showTextFromStart(field_, text);
}

void NumberAttributeEditor::typed(const QString& text)
{
    // Half-typed numbers ("-", "1,") wait for the next key.
    const std::optional<double> value = parse(text);
    if (!value) return;
    beginEdit();
    Q_EMIT edited(*value);
}

void NumberAttributeEditor::finishTyping()
{
    if (const std::optional<double> value = parse(field_->text()); value && field_->isModified()) {
        beginEdit();
        Q_EMIT edited(*value);
    }
    field_->setModified(false);
    endEdit();
}

bool NumberAttributeEditor::eventFilter(QObject* watched, QEvent* event)
{
    if (watched != label_) return AttributeEditor::eventFilter(watched, event);
    switch (event->type()) {
    case QEvent::MouseButtonPress: {
        auto* mouse = static_cast<QMouseEvent*>(event);
        if (mouse->button() != Qt::LeftButton) break;
        const double start = shownMixed() ? 0.0 : shownValue().toDouble();
        drag_ = std::make_pair(mouse->globalPosition().x(), start);
        beginEdit();
        return true;
    }
    case QEvent::MouseMove: {
        if (!drag_) break;
        auto* mouse = static_cast<QMouseEvent*>(event);
        // Step by step, so that pressing or letting go of a modifier mid-drag
        // changes the speed from there on instead of jumping.
        const double x = mouse->globalPosition().x();
        drag_ = std::make_pair(x, dragged(drag_->second, x - drag_->first, mouse->modifiers()));
        const double value = wholeNumbers_ ? std::round(drag_->second) : drag_->second;
        {
            const QSignalBlocker quiet(field_);
            field_->setText(format(value));
        }
        Q_EMIT edited(value);
        return true;
    }
    case QEvent::MouseButtonRelease:
        if (!drag_) break;
        drag_.reset();
        endEdit();
        return true;
    default:
        break;
    }
    return AttributeEditor::eventFilter(watched, event);
}

}  // namespace inspector
