#pragma once
// "Composition > Check Text Fields…": the worst-case text check's results,
// one row per field and sample, with a small picture of each text that does
// not fit.

#include "document/TextCheck.h"

#include <QDialog>

namespace app {

class TextCheckDialog : public QDialog {
    Q_OBJECT
public:
    TextCheckDialog(const QList<document::TextCheckResult>& results, QWidget* parent = nullptr);

    static QString objectNameForTests() { return QStringLiteral("textCheckDialog"); }
};

}  // namespace app
