#pragma once
// The application's one preview window: made on first use, let go of when
// the user closes it (the next preview makes a new one). The application
// owns the session; nothing here is static.

#include "preview/VLPreviewController.h"

#include <QObject>
#include <QPointer>

namespace preview {

class PreviewSession : public QObject {
    Q_OBJECT
public:
    using Document = VLPreviewController::Document;

    explicit PreviewSession(QObject* parent = nullptr);
    ~PreviewSession() override;

    // The window, or null while there is none.
    VLPreviewController* controller() const { return controller_; }
    // The window, made if there is none.
    VLPreviewController* sharedController();

    // Shows the window and plays the document in it (a running slideshow
    // stops: the user asked for this one). It never hides the window.
    void togglePreviewForCompositionDocument(Document document);
    void runSlideshowForCompositions(std::vector<Document> documents);
    // Full screen on `screen` (the first when none) or back; nothing when
    // there is no window.
    void togglePreviewFullscreen(QScreen* screen = nullptr);
    // Call before a document goes away.
    void documentWillClose(Document document);

    void setDisplayNames(VLPreviewController::DisplayNames names);

private:
    QPointer<VLPreviewController> controller_;
    VLPreviewController::DisplayNames displayNames_;
};

}  // namespace preview
