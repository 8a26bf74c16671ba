#include "app/VLLibraryController.h"

#include "app/VLLibraryModel.h"
#include "model/Settings.h"

#include <QDesktopServices>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QLabel>
#include <QPushButton>
#include <QHeaderView>
#include <QMenu>
#include <QTabWidget>
#include <QTreeView>
#include <QUrl>
#include <QVBoxLayout>

namespace app {

VLLibraryController::VLLibraryController(QWidget* parent)
    : QWidget(parent),
      tabs_(new QTabWidget(this)),
      browser_(new QTreeView),
      model_(new VLLibraryModel(this)),
      emptyNotice_(new QWidget(this)),
      emptyLabel_(new QLabel(emptyNotice_)),
      folderChooser_([](QWidget* parent) {
          return QFileDialog::getExistingDirectory(parent, tr("Library Folder"),
                                                   model::Settings::stringValue(model::Settings::kImagesLibraryPath));
      })
{
    setObjectName(QStringLiteral("Library"));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(tabs_);
    // An empty list says why, and offers the way out.
    emptyNotice_->setObjectName(QStringLiteral("LibraryEmptyNotice"));
    auto* noticeLayout = new QVBoxLayout(emptyNotice_);
    emptyLabel_->setObjectName(QStringLiteral("LibraryEmptyReason"));
    emptyLabel_->setWordWrap(true);
    emptyLabel_->setAlignment(Qt::AlignCenter);
    auto* choose = new QPushButton(tr("Choose Folder…"), emptyNotice_);
    choose->setObjectName(QStringLiteral("LibraryChooseFolder"));
    connect(choose, &QPushButton::clicked, this, &VLLibraryController::chooseFolder);
    noticeLayout->addWidget(emptyLabel_);
    noticeLayout->addWidget(choose, 0, Qt::AlignHCenter);
    layout->addWidget(emptyNotice_);
    connect(model_, &VLLibraryModel::modelReset, this, &VLLibraryController::updateEmptyNotice);
    connect(model_, &VLLibraryModel::rowsInserted, this, &VLLibraryController::updateEmptyNotice);
    connect(model_, &VLLibraryModel::rowsRemoved, this, &VLLibraryController::updateEmptyNotice);
    tabs_->setDocumentMode(true);

    browser_->setObjectName(QStringLiteral("LibraryBrowser"));
    browser_->setModel(model_);
    browser_->setRootIsDecorated(false);
    browser_->setUniformRowHeights(true);
    browser_->setIconSize(QSize(36, 24));
    browser_->setSelectionMode(QAbstractItemView::ExtendedSelection);
    browser_->setSelectionBehavior(QAbstractItemView::SelectRows);
    browser_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    // Items only leave the library: dragged onto a canvas, never rearranged.
    browser_->setDragEnabled(true);
    browser_->setDragDropMode(QAbstractItemView::DragOnly);
    browser_->setDefaultDropAction(Qt::CopyAction);
    // The panel is narrow: the name takes the room, the size fits itself,
    // and the header's menu shows the other columns on demand.
    QHeaderView* header = browser_->header();
    header->setStretchLastSection(false);
    header->setSectionResizeMode(QHeaderView::ResizeToContents);
    header->setSectionResizeMode(VLLibraryModel::NameColumn, QHeaderView::Stretch);
    header->setSectionHidden(VLLibraryModel::KindColumn, true);
    header->setSectionHidden(VLLibraryModel::ModifiedColumn, true);
    header->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(header, &QHeaderView::customContextMenuRequested, this, [this, header](const QPoint& position) {
        QMenu menu(this);
        for (int column = VLLibraryModel::NameColumn + 1; column < VLLibraryModel::ColumnCount; ++column) {
            QAction* item = menu.addAction(model_->headerData(column, Qt::Horizontal, Qt::DisplayRole).toString());
            item->setCheckable(true);
            item->setChecked(!header->isSectionHidden(column));
            connect(item, &QAction::toggled, header, [header, column](bool on) { header->setSectionHidden(column, !on); });
        }
        menu.exec(header->mapToGlobal(position));
    });
    browser_->setContextMenuPolicy(Qt::CustomContextMenu);
    tabs_->addTab(browser_, tr("Library"));

    connect(browser_, &QTreeView::doubleClicked, this, [this](const QModelIndex& index) {
        if (index.isValid()) Q_EMIT doubleClicked();
    });
    connect(browser_, &QTreeView::customContextMenuRequested, this, &VLLibraryController::showContextMenu);

    reload();
    userDefaultsNotification_ = connect(model::Settings::notifier(), &model::SettingsNotifier::valueChanged, this,
                                        &VLLibraryController::userDefaultsChanged);
}

VLLibraryController::~VLLibraryController() { cleanUp(); }

QStringList VLLibraryController::paths()
{
    return {model::Settings::stringValue(model::Settings::kImagesLibraryPath)};
}

QStringList VLLibraryController::tabPaths() const
{
    return model_->folder().isEmpty() ? QStringList() : QStringList{model_->folder()};
}

void VLLibraryController::reload()
{
    const QStringList wanted = paths();
    model_->setFolder(wanted.value(0));
    tabs_->setTabToolTip(0, wanted.value(0));
    updateEmptyNotice();
}

QString VLLibraryController::emptyReason() const
{
    if (model_->rowCount() > 0) return {};
    const QString folder = paths().value(0);
    if (folder.isEmpty()) return tr("No library folder is chosen.");
    const QFileInfo info(folder);
    const QString name = QDir::toNativeSeparators(folder);
    if (!info.exists()) return tr("The library folder “%1” does not exist.").arg(name);
    if (!info.isDir()) return tr("“%1” is a file, not a folder.").arg(name);
    if (!info.isReadable()) return tr("The library folder “%1” cannot be read.").arg(name);
    return tr("The library folder “%1” holds no compositions, images or movies.").arg(name);
}

void VLLibraryController::updateEmptyNotice()
{
    const QString reason = emptyReason();
    emptyLabel_->setText(reason);
    emptyNotice_->setVisible(!reason.isEmpty());
}

void VLLibraryController::chooseFolder()
{
    const QString folder = folderChooser_ ? folderChooser_(this) : QString();
    // Setting the preference makes the library follow, as the preferences do.
    if (!folder.isEmpty()) model::Settings::setValue(model::Settings::kImagesLibraryPath, folder);
}

void VLLibraryController::userDefaultsChanged()
{
    // Any preference may have changed; list again only when the folder did.
    if (tabPaths().isEmpty() || tabPaths() != paths()) reload();
}

QStringList VLLibraryController::selectedPaths() const
{
    QModelIndexList rows = browser_->selectionModel()->selectedRows(VLLibraryModel::NameColumn);
    std::sort(rows.begin(), rows.end(), [](const QModelIndex& a, const QModelIndex& b) { return a.row() < b.row(); });
    QStringList result;
    for (const QModelIndex& row : rows) result << model_->pathAt(row);
    return result;
}

void VLLibraryController::showContextMenu(const QPoint& position)
{
    const QString path = model_->pathAt(browser_->indexAt(position));
    if (path.isEmpty()) return;
    QMenu menu(this);
    menu.addAction(tr("Reveal in File Manager"), this, [path] {
        QDesktopServices::openUrl(QUrl::fromLocalFile(QFileInfo(path).absolutePath()));
    });
    menu.addAction(tr("Open"), this, [path] { QDesktopServices::openUrl(QUrl::fromLocalFile(path)); });
    menu.exec(browser_->viewport()->mapToGlobal(position));
}

void VLLibraryController::cleanUp()
{
    if (userDefaultsNotification_) disconnect(userDefaultsNotification_);
    userDefaultsNotification_ = {};
}

}  // namespace app
