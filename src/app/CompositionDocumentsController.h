#pragma once
// Creates and opens documents, one window each: new documents at the
// preferred video mode or one chosen from the New Document menu, existing
// ones from a package path. A document already open is brought forward
// instead of being opened twice.

#include <QObject>
#include <QPointer>
#include <QString>

#include <vector>

class QMenu;
class QWidget;

namespace model {
class VideoResolution;
}

namespace app {

class VLWindowController;

class CompositionDocumentsController : public QObject {
    Q_OBJECT
public:
    explicit CompositionDocumentsController(QObject* parent = nullptr);

    // A new document at the default mode; null only when no mode is known.
    VLWindowController* newDocument();
    // A new document at the named mode, or the default for an unknown name.
    VLWindowController* newDocumentWithMode(const QString& broadcastMode);
    // Opens the package; on failure shows why over `parent` (when given)
    // and answers null. An error message goes to `error` too.
    VLWindowController* openDocument(const QString& packagePath, QWidget* parent = nullptr, QString* error = nullptr);
    // Asks for a package and opens it.
    void openDocumentWithPanel(QWidget* parent);
    // Fills a menu with one New item per offered video mode, grouped.
    void fillNewDocumentMenu(QMenu* menu);

    std::vector<VLWindowController*> windows() const;

private:
    VLWindowController* show(VLWindowController* window);
    QString nextUntitledName();

    std::vector<QPointer<VLWindowController>> windows_;
    int untitledCount_ = 0;
};

}  // namespace app
