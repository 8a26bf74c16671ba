#pragma once
// The preview window: a document's template played as air plays it, with
// its background, in a window that floats above the document windows. A
// status line says whether it plays, waits at a stop frame or has
// finished; the trigger button (shown only while the template waits) and
// the space bar release stop frames, R plays it again from the start, Esc
// leaves full screen. A slideshow plays several documents in turn, moving
// on whenever one finishes, for as long as the window stays open.
//
// One window serves the whole application; PreviewSession owns it.

#include "playout/Slideshow.h"

#include <QWidget>

#include <functional>

class QLabel;
class QPushButton;
class QScreen;

namespace document {
class CompositionDocument;
}

namespace preview {

class QCViewWithVideo;

class VLPreviewController : public QWidget {
    Q_OBJECT
public:
    using Document = const document::CompositionDocument*;
    // The name the status line gives a document ("Playing %1").
    using DisplayNames = std::function<QString(const document::CompositionDocument&)>;

    static constexpr int kStatusHeight = 32;
    // Room left on the screen for the window's title bar and borders.
    static constexpr int kWindowFrameAllowance = 40;

    explicit VLPreviewController(QWidget* parent = nullptr);
    ~VLPreviewController() override;

    QCViewWithVideo* compositionView() const { return compositionView_; }
    QPushButton* reloadButton() const { return reloadButton_; }
    QPushButton* triggerButton() const { return triggerButton_; }
    QLabel* statusTextField() const { return statusTextField_; }
    Document currentDocument() const { return currentDocument_; }
    const playout::Slideshow& slideshow() const { return slideshow_; }

    void setDisplayNames(DisplayNames names) { displayNames_ = std::move(names); }

    // Exports the document with its background, plays it from the start
    // and shows the window, sized to the composition plus the status line.
    // A failed export leaves the view empty.
    void displayCompositionDocument(Document document);
    // Plays each in turn, starting over after the last.
    void displayCompositions(std::vector<Document> documents);
    void showNextComposition();
    void stopSlideshow() { slideshow_.stop(); }
    // Drops a document that is going away from the slideshow, and from the
    // view if it is the one showing.
    void documentWillClose(Document document);

    void updateStatusField();
    bool isWaitingForTrigger() const;
    bool setTrigger();
    void releaseTrigger();
    // The trigger button: a pulse of a tenth of a second.
    bool sendTrigger();
    // Stops and starts the view: the template plays from its beginning.
    void reloadComposition();
    // Full screen on `screen` (the first screen when none), or back.
    void togglePreviewFullscreen(QScreen* screen = nullptr);
    bool isPreviewFullScreen() const { return fullScreen_; }

    // Stops the wall clock and plays the template in exact steps up to the
    // step at `seconds`, released at every stop frame before it: a still for
    // documentation and tests (`velloran --preview DOC --screenshot OUT`).
    void showPlayedTo(double seconds);

Q_SIGNALS:
    // The window was closed; its owner lets go of it.
    void closed();

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    void activeChanged(bool active);
    void waitingForTriggerChanged(bool waiting);
    QString displayName(Document document) const;
    QSize fittedContentSize(QSize composition) const;

    QCViewWithVideo* compositionView_;
    QWidget* statusBar_;
    QPushButton* reloadButton_;
    QPushButton* triggerButton_;
    QLabel* statusTextField_;
    Document currentDocument_ = nullptr;
    QString currentName_;
    playout::Slideshow slideshow_;
    DisplayNames displayNames_;
    bool fullScreen_ = false;
    QRect normalGeometry_;
};

}  // namespace preview
