#include "inspector/VLTextPanel.h"

#include <QDialogButtonBox>
#include <QKeyEvent>
#include <QPushButton>
#include <QVBoxLayout>

namespace inspector {

void VLTextPanelView::keyPressEvent(QKeyEvent* event)
{
    // Return confirms rather than breaking the line: a template's text
    // fields are one line on air, and operators expect Return to finish.
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        Q_EMIT stopModalWithResponse(1);
        return;
    }
    if (event->key() == Qt::Key_Escape) {
        Q_EMIT stopModalWithResponse(0);
        return;
    }
    QPlainTextEdit::keyPressEvent(event);
}

VLTextPanel::VLTextPanel(QWidget* parent) : QDialog(parent)
{
    setObjectName(QStringLiteral("textPanel"));
    setWindowModality(Qt::WindowModal);
    auto* layout = new QVBoxLayout(this);
    textView_ = new VLTextPanelView(this);
    textView_->setObjectName(QStringLiteral("textView"));
    layout->addWidget(textView_);
    auto* buttons = new QDialogButtonBox(this);
    okButton_ = buttons->addButton(QStringLiteral("OK"), QDialogButtonBox::AcceptRole);
    cancelButton_ = buttons->addButton(QStringLiteral("Cancel"), QDialogButtonBox::RejectRole);
    okButton_->setAutoDefault(false);
    cancelButton_->setAutoDefault(false);
    layout->addWidget(buttons);
    connect(okButton_, &QPushButton::clicked, this, [this] { stopModalWithResponse(1); });
    connect(cancelButton_, &QPushButton::clicked, this, [this] { stopModalWithResponse(0); });
    connect(textView_, &VLTextPanelView::stopModalWithResponse, this, &VLTextPanel::stopModalWithResponse);
    connect(textView_, &QPlainTextEdit::textChanged, this, [this] { Q_EMIT textPanelDidChange(stringValue()); });
    resize(420, 220);
}

QString VLTextPanel::stringValue() const { return textView_->toPlainText(); }

void VLTextPanel::setStringValue(const QVariant& value)
{
    const QSignalBlocker quiet(textView_);
    textView_->setPlainText(value.typeId() == QMetaType::QString ? value.toString() : QString());
}

void VLTextPanel::stopModalWithResponse(int response) { done(response == 1 ? QDialog::Accepted : QDialog::Rejected); }

}  // namespace inspector
