#include "app/TextCheckDialog.h"

#include <QDialogButtonBox>
#include <QHeaderView>
#include <QLabel>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <algorithm>

namespace app {

namespace {

QString verdict(const document::TextCheckResult& r)
{
    QStringList problems;
    if (!r.insideComponent)
        problems << QObject::tr("%1 × %2 px for %3 × %4").arg(qRound(r.measuredWidth)).arg(qRound(r.measuredHeight)).arg(r.room).arg(r.roomHeight);
    if (!r.insideTitleSafe) problems << QObject::tr("outside the title-safe area");
    if (r.fallbackGlyph) problems << QObject::tr("glyphs from another font");
    return problems.isEmpty() ? QObject::tr("Fits") : problems.join(QStringLiteral("; "));
}

}  // namespace

TextCheckDialog::TextCheckDialog(const QList<document::TextCheckResult>& results, QWidget* parent) : QDialog(parent)
{
    setObjectName(objectNameForTests());
    setWindowTitle(tr("Check Text Fields"));
    auto* layout = new QVBoxLayout(this);
    int failures = 0;
    for (const document::TextCheckResult& r : results) failures += r.fits() ? 0 : 1;
    layout->addWidget(new QLabel(results.isEmpty() ? tr("The template has no text field the operator may change.")
                                 : failures == 0   ? tr("Every text field fits with every sample.")
                                 : failures == 1   ? tr("One sample does not fit.")
                                                   : tr("%1 samples do not fit.").arg(failures),
                                 this));
    auto* list = new QTreeWidget(this);
    list->setColumnCount(4);
    list->setHeaderLabels({tr("Field"), tr("Sample"), tr("Result"), tr("Picture")});
    list->setIconSize(QSize(200, 60));
    list->setRootIsDecorated(false);
    // What does not fit comes first, where the designer looks.
    QList<document::TextCheckResult> ordered = results;
    std::stable_sort(ordered.begin(), ordered.end(), [](const auto& a, const auto& b) { return !a.fits() && b.fits(); });
    for (const document::TextCheckResult& r : ordered) {
        const QString result = verdict(r);
        auto* row = new QTreeWidgetItem(list, {QStringLiteral("%1 — %2").arg(r.component, r.key), r.sample, result});
        row->setToolTip(1, r.sample);
        row->setToolTip(2, result);
        if (!r.fits() && !r.picture.isNull())
            row->setIcon(3, QIcon(QPixmap::fromImage(r.picture.scaled(list->iconSize(), Qt::KeepAspectRatio, Qt::SmoothTransformation))));
    }
    list->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
    layout->addWidget(list);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    layout->addWidget(buttons);
    resize(1100, 460);
}

}  // namespace app
