#include "app/VLLibraryModel.h"

#include <QDir>
#include <QFileInfo>
#include <QGuiApplication>
#include <QImageReader>
#include <QLocale>
#include <QMimeData>
#include <QPainter>
#include <QPalette>
#include <QUrl>

namespace app {

namespace {

// Every row gets a picture of this size, so names line up and rows are even.
constexpr QSize kThumbnailSize(36, 24);

// A file without a picture of its own: a card with its extension.
void drawTypeCard(QPainter& painter, const QString& type)
{
    const QPalette palette = QGuiApplication::palette();
    const QRectF card(6.5, 0.5, 23, 23);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(palette.color(QPalette::Mid), 1));
    painter.setBrush(palette.color(QPalette::Base));
    painter.drawRoundedRect(card, 3, 3);
    QFont font = painter.font();
    font.setPixelSize(7);
    font.setBold(true);
    painter.setFont(font);
    painter.setPen(palette.color(QPalette::Highlight));
    painter.drawText(card, Qt::AlignCenter, type.left(4).toUpper());
}

QString kindName(const QString& type)
{
    if (type == QLatin1String("qtz")) return VLLibraryModel::tr("Quartz Composition");
    if (type == QLatin1String("png")) return VLLibraryModel::tr("PNG Image");
    if (type == QLatin1String("jpg")) return VLLibraryModel::tr("JPEG Image");
    return VLLibraryModel::tr("Velloran Document");
}

}  // namespace

VLLibraryModel::VLLibraryModel(QObject* parent) : QAbstractTableModel(parent)
{
    connect(&watcher_, &QFileSystemWatcher::directoryChanged, this, &VLLibraryModel::reload);
}

QStringList VLLibraryModel::fileTypes()
{
    return {QStringLiteral("qtz"), QStringLiteral("png"), QStringLiteral("jpg"), QStringLiteral("composition")};
}

void VLLibraryModel::setFolder(const QString& folder)
{
    if (!watcher_.directories().isEmpty()) watcher_.removePaths(watcher_.directories());
    folder_ = folder;
    if (!folder_.isEmpty() && QFileInfo(folder_).isDir()) watcher_.addPath(folder_);
    reload();
}

void VLLibraryModel::reload()
{
    beginResetModel();
    entries_.clear();
    thumbnails_.clear();
    const QStringList types = fileTypes();
    const QFileInfoList found = folder_.isEmpty() ? QFileInfoList()
                                                  : QDir(folder_).entryInfoList(QDir::Files | QDir::Dirs | QDir::NoDotAndDotDot,
                                                                                QDir::Name | QDir::IgnoreCase);
    for (const QFileInfo& info : found) {
        const QString type = info.suffix().toLower();
        if (!types.contains(type)) continue;
        // A document is a folder; any other folder is not an item.
        if (info.isDir() && type != QLatin1String("composition")) continue;
        entries_.push_back({info.absoluteFilePath(), info.fileName(), type, info.isDir() ? -1 : info.size(),
                            info.lastModified()});
    }
    endResetModel();
}

QString VLLibraryModel::pathAt(const QModelIndex& index) const
{
    return index.isValid() && std::size_t(index.row()) < entries_.size() ? entries_[std::size_t(index.row())].path
                                                                          : QString();
}

QModelIndex VLLibraryModel::indexForPath(const QString& path) const
{
    const QString wanted = QFileInfo(path).absoluteFilePath();
    for (std::size_t row = 0; row < entries_.size(); ++row)
        if (entries_[row].path == wanted) return index(int(row), NameColumn);
    return {};
}

int VLLibraryModel::rowCount(const QModelIndex& parent) const { return parent.isValid() ? 0 : int(entries_.size()); }

int VLLibraryModel::columnCount(const QModelIndex& parent) const { return parent.isValid() ? 0 : ColumnCount; }

QVariant VLLibraryModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || std::size_t(index.row()) >= entries_.size()) return {};
    const Entry& entry = entries_[std::size_t(index.row())];
    if (role == Qt::DisplayRole) {
        switch (index.column()) {
        case NameColumn: return entry.name;
        case KindColumn: return kindName(entry.type);
        case SizeColumn: return entry.size < 0 ? QString() : QLocale().formattedDataSize(entry.size);
        case ModifiedColumn: return QLocale().toString(entry.modified, QLocale::ShortFormat);
        default: return {};
        }
    }
    if (role == Qt::DecorationRole && index.column() == NameColumn) return thumbnail(entry);
    if (role == Qt::ToolTipRole) return QDir::toNativeSeparators(entry.path);
    if (role == Qt::TextAlignmentRole && index.column() == SizeColumn) return int(Qt::AlignRight | Qt::AlignVCenter);
    return {};
}

QIcon VLLibraryModel::thumbnail(const Entry& entry) const
{
    // Images show themselves, documents the thumbnail saved in the package.
    // Read at thumbnail size and only for rows on screen, so a large photo
    // folder stays quick.
    const auto cached = thumbnails_.constFind(entry.path);
    if (cached != thumbnails_.constEnd()) return *cached;
    QString source;
    if (entry.type == QLatin1String("png") || entry.type == QLatin1String("jpg")) source = entry.path;
    if (entry.type == QLatin1String("composition")) source = entry.path + QStringLiteral("/QuickLook/Thumbnail.jpg");
    // Read and drawn at the screen's pixel density, so that a thumbnail is
    // as sharp as the text beside it.
    const qreal ratio = qGuiApp->devicePixelRatio();
    const QSize pixels = (QSizeF(kThumbnailSize) * ratio).toSize();
    QImage image;
    if (!source.isEmpty()) {
        QImageReader reader(source);
        const QSize size = reader.size();
        if (size.isValid()) reader.setScaledSize(size.scaled(pixels, Qt::KeepAspectRatio));
        image = reader.read();
        image.setDevicePixelRatio(ratio);
    }
    QPixmap picture(pixels);
    picture.setDevicePixelRatio(ratio);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    if (image.isNull()) {
        drawTypeCard(painter, entry.type);
    } else {
        const QSize fitted = image.deviceIndependentSize().toSize().scaled(kThumbnailSize, Qt::KeepAspectRatio);
        const QRect place(QPoint((kThumbnailSize.width() - fitted.width()) / 2, (kThumbnailSize.height() - fitted.height()) / 2),
                          fitted);
        painter.setRenderHint(QPainter::SmoothPixmapTransform);
        painter.drawImage(place, image);
    }
    painter.end();
    const QIcon icon(picture);
    thumbnails_.insert(entry.path, icon);
    return icon;
}

QVariant VLLibraryModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole) return {};
    switch (section) {
    case NameColumn: return tr("Name");
    case KindColumn: return tr("Kind");
    case SizeColumn: return tr("Size");
    case ModifiedColumn: return tr("Date Modified");
    default: return {};
    }
}

Qt::ItemFlags VLLibraryModel::flags(const QModelIndex& index) const
{
    if (!index.isValid()) return Qt::NoItemFlags;
    return Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsDragEnabled | Qt::ItemNeverHasChildren;
}

QStringList VLLibraryModel::mimeTypes() const { return {QStringLiteral("text/uri-list")}; }

QMimeData* VLLibraryModel::mimeData(const QModelIndexList& indexes) const
{
    QList<QUrl> urls;
    for (const QModelIndex& index : indexes) {
        const QUrl url = QUrl::fromLocalFile(pathAt(index));
        // A selected row brings one index per column.
        if (!url.isEmpty() && !urls.contains(url)) urls << url;
    }
    if (urls.isEmpty()) return nullptr;
    auto* data = new QMimeData;
    data->setUrls(urls);
    return data;
}

Qt::DropActions VLLibraryModel::supportedDragActions() const { return Qt::CopyAction; }

}  // namespace app
