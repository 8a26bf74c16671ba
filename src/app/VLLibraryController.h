#pragma once
// The library panel: one "Library" tab listing the template material in the
// folder chosen in the preferences ("imagesLibraryPath"). It follows changes
// of that setting while it is open; items drag onto the canvas, and a
// double-click asks the window to open the chosen documents.

#include <QWidget>

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
    // Stops following the preferences; safe to call more than once.
    void cleanUp();

Q_SIGNALS:
    void doubleClicked();

private:
    void userDefaultsChanged();
    void showContextMenu(const QPoint& position);

    QTabWidget* tabs_;
    QTreeView* browser_;
    VLLibraryModel* model_;
    QMetaObject::Connection userDefaultsNotification_;
};

}  // namespace app
