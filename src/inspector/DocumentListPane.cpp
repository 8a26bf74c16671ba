#include "inspector/DocumentPanes.h"

#include "model/Composition.h"
#include "model/NotificationHelper.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

namespace inspector {

void DocumentListPane::buildList(const QStringList& headers, const QString& addTitle, const QString& removeTitle)
{
    table_ = new QTableWidget(0, int(headers.size()));
    table_->setObjectName(QStringLiteral("itemTable"));
    table_->setHorizontalHeaderLabels(headers);
    table_->verticalHeader()->hide();
    table_->horizontalHeader()->setStretchLastSection(true);
    table_->setSelectionBehavior(QAbstractItemView::SelectRows);
    table_->setMinimumHeight(110);
    table_->setMaximumHeight(160);
    connect(table_, &QTableWidget::itemChanged, this, [this](QTableWidgetItem* item) {
        if (!filling_) cellEdited(item->row(), item->column(), item->text());
    });
    auto* buttons = new QWidget;
    auto* layout = new QHBoxLayout(buttons);
    layout->setContentsMargins(0, 0, 0, 0);
    auto* add = new QPushButton(addTitle, buttons);
    add->setObjectName(QStringLiteral("addButton"));
    auto* remove = new QPushButton(removeTitle, buttons);
    remove->setObjectName(QStringLiteral("removeButton"));
    layout->addWidget(add);
    layout->addWidget(remove);
    layout->addStretch(1);
    connect(add, &QPushButton::clicked, this, [this] { addItem(); });
    connect(remove, &QPushButton::clicked, this, [this] { removeSelectedItems(); });
    form()->addUnlabelledRow(table_);
    form()->addUnlabelledRow(buttons);
}

void DocumentListPane::observeList(const QString& listKey, const std::vector<model::ManagedObject*>& items,
                                   const QStringList& itemKeys)
{
    const auto changed = [this](model::ManagedObject*, const QString&) { scheduleRefill(); };
    model::NotificationHelper::addObserver(this, composition(), listKey, changed);
    for (model::ManagedObject* item : items)
        for (const QString& key : itemKeys) model::NotificationHelper::addObserver(this, item, key, changed);
}

void DocumentListPane::scheduleRefill()
{
    // A rename typed into the table changes the item under the table's own
    // signal: the table is filled again afterwards, never inside it.
    refillPending_ = true;
    if (refillPosted_) return;
    refillPosted_ = true;
    QMetaObject::invokeMethod(
        this,
        [this] {
            refillPosted_ = false;
            refillIfNeeded();
        },
        Qt::QueuedConnection);
}

void DocumentListPane::refillIfNeeded()
{
    if (!refillPending_ || !table_ || !composition()) return;
    refillPending_ = false;
    refill();
}

void DocumentListPane::cleanUp()
{
    model::NotificationHelper::removeObserver(this);
    refillPending_ = false;
    table_ = nullptr;
    VLInspectorViewContoller::cleanUp();
}

}  // namespace inspector
