#pragma once
// The library panel: one "Library" tab listing the template material in the
// folder chosen in the preferences ("imagesLibraryPath"). It follows changes
// of that setting while it is open; items drag onto the canvas, and a
// double-click asks the window to open the chosen documents.

#include <QWidget>

#include <functional>

class QLabel;
class QMenu;
class QTabWidget;
class QTreeView;

namespace app {

class VLLibraryModel;

class VLLibraryController : public QWidget {
    Q_OBJECT
public:
    explicit VLLibraryController(QWidget* parent = nullptr);
    ~VLLibraryController() override;

    // The folders the library shows: the one preference, as a list.
    static QStringList paths();
    // The folders the tab shows now.
    QStringList tabPaths() const;

    QTabWidget* tabs() const { return tabs_; }
    QTreeView* browser() const { return browser_; }
    VLLibraryModel* model() const { return model_; }
    // The paths of the selected items, in list order.
    QStringList selectedPaths() const;

    // Lists the folder again.
    void reload();

    // Why the list is empty ("does not exist", "is empty"), with a button
    // to choose another folder; hidden while there is something to show.
    QWidget* emptyNotice() const { return emptyNotice_; }
    QString emptyReason() const;
    // Asks for the folder the button sets as the preference; empty when
    // cancelled. Tests answer it themselves.
    using FolderChooser = std::function<QString(QWidget* parent)>;
    void setFolderChooser(FolderChooser chooser) { folderChooser_ = std::move(chooser); }
    void chooseFolder();
    // Stops following the preferences; safe to call more than once.
    void cleanUp();

Q_SIGNALS:
    void doubleClicked();

private:
    void userDefaultsChanged();
    void showContextMenu(const QPoint& position);
    void updateEmptyNotice();

    QTabWidget* tabs_;
    QTreeView* browser_;
    VLLibraryModel* model_;
    QWidget* emptyNotice_;
    QLabel* emptyLabel_;
    FolderChooser folderChooser_;
    QMetaObject::Connection userDefaultsNotification_;
};

}  // namespace app
