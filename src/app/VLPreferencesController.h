#pragma once
// The Preferences window: the format of new documents, the default font of
// text elements, the library's folder, the background of new compositions
// and the export options. Every control writes its setting at once; only
// Ctrl+N waits until the window closes before it moves to the newly
// preferred format, so the shortcut never changes under a menu in use.

#include <QDialog>

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QMenu;
class QPushButton;

namespace app {

class CompositionDocumentsController;

class VLPreferencesController : public QDialog {
    Q_OBJECT
public:
    explicit VLPreferencesController(CompositionDocumentsController* documents, QWidget* parent = nullptr);
    ~VLPreferencesController() override;

    QComboBox* formatPopup() const { return formatPopup_; }

    // Clears every shortcut in the New Document submenus and gives Ctrl+N to
    // the item titled with the preferred video mode's name, if there is one.
    void registerNewDocumentMenu();
    static void registerNewDocumentMenu(QMenu* menu);

    // Shows the font dialog at the current default font and stores the
    // chosen one.
    void setDefaultFontFromPanel();
    void setDefaultFont(const QFont& font);
    // Asks for the library folder; selectGraphicPath stores a chosen one.
    void chooseGraphicPath();
    void selectGraphicPath(const QString& path);
    void chooseBackgroundColor();

    // The window is going away: a changed format takes Ctrl+N now.
    void windowWillClose();

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    QWidget* makeDocumentsGroup();
    QWidget* makeFontGroup();
    QWidget* makeLibraryGroup();
    QWidget* makeExportGroup();
    void refresh();
    void settingChanged(const QString& key);

    CompositionDocumentsController* documents_;
    QComboBox* formatPopup_;
    QLabel* fontLabel_;
    QPushButton* fontButton_;
    QComboBox* backgroundMode_;
    QPushButton* backgroundColor_;
    QLineEdit* libraryPath_;
    QCheckBox* previewFPS_;
    QCheckBox* avoidSpaces_;
    bool refreshing_ = false;
};

}  // namespace app
