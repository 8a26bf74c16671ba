#pragma once
// The files of one folder that can go into a template: composition files,
// PNG and JPEG images and Velloran documents (packages, which are folders),
// matched by extension whatever its case. Items drag out as file URLs
// (text/uri-list), which the canvas takes as a drop. The list follows the
// folder's contents while it is shown.

#include <QAbstractTableModel>
#include <QDateTime>
#include <QFileSystemWatcher>
#include <QHash>
#include <QIcon>

#include <vector>

namespace app {

class VLLibraryModel : public QAbstractTableModel {
    Q_OBJECT
public:
    enum Column { NameColumn, KindColumn, SizeColumn, ModifiedColumn, ColumnCount };

    explicit VLLibraryModel(QObject* parent = nullptr);

    static QStringList fileTypes();

    QString folder() const { return folder_; }
    // Lists the folder (a missing folder lists nothing).
    void setFolder(const QString& folder);
    void reload();

    QString pathAt(const QModelIndex& index) const;
    QModelIndex indexForPath(const QString& path) const;

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    QStringList mimeTypes() const override;
    QMimeData* mimeData(const QModelIndexList& indexes) const override;
    Qt::DropActions supportedDragActions() const override;

private:
    struct Entry {
        QString path;
        QString name;
        QString type;  // the lower-case extension
        qint64 size = -1;  // none for a package
        QDateTime modified;
    };
    QIcon thumbnail(const Entry& entry) const;

    QString folder_;
    std::vector<Entry> entries_;
    QFileSystemWatcher watcher_;
    mutable QHash<QString, QIcon> thumbnails_;
};

}  // namespace app
