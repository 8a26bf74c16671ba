#include "canvas/AlertSheet.h"

#include "document/Alert.h"
#include "model/Settings.h"

#include <QCheckBox>
#include <QMessageBox>
#include <QPointer>

namespace canvas {

QMessageBox* showAlertSheet(QWidget* window, const document::Alert& alert, bool warning)
{
    const QString key = alert.suppressionKey;
    if (!key.isEmpty() && model::Settings::boolValue(key)) return nullptr;
    auto* box = new QMessageBox(window);
    box->setObjectName(alertSheetObjectName());
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setWindowModality(Qt::WindowModal);
    box->setIcon(warning ? QMessageBox::Warning : QMessageBox::Information);
    box->setWindowTitle(alert.title);
    box->setText(alert.title);
    box->setInformativeText(alert.text);
    box->addButton(QObject::tr("Ok"), QMessageBox::AcceptRole);
    if (!key.isEmpty()) {
        auto* suppress = new QCheckBox(QObject::tr("Do not show this message again"), box);
        box->setCheckBox(suppress);
        QObject::connect(suppress, &QCheckBox::toggled, box, [key](bool on) { model::Settings::setValue(key, on); });
    }
    box->open();
    return box;
}

}  // namespace canvas
