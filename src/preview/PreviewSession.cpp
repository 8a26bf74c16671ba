#include "preview/PreviewSession.h"

namespace preview {

PreviewSession::PreviewSession(QObject* parent) : QObject(parent) {}

PreviewSession::~PreviewSession()
{
    delete controller_.data();
}

VLPreviewController* PreviewSession::sharedController()
{
    if (controller_) return controller_;
    auto* made = new VLPreviewController;
    made->setDisplayNames(displayNames_);
    // Dropped once closed, after the close event has run to its end.
    connect(made, &VLPreviewController::closed, made, &QObject::deleteLater);
    controller_ = made;
    return made;
}

void PreviewSession::togglePreviewForCompositionDocument(Document document)
{
    VLPreviewController* c = sharedController();
    c->stopSlideshow();
    c->show();
    c->displayCompositionDocument(document);
}

void PreviewSession::runSlideshowForCompositions(std::vector<Document> documents)
{
    if (documents.empty()) return;
    sharedController()->displayCompositions(std::move(documents));
}

void PreviewSession::togglePreviewFullscreen(QScreen* screen)
{
    if (controller_) controller_->togglePreviewFullscreen(screen);
}

void PreviewSession::documentWillClose(Document document)
{
    if (controller_) controller_->documentWillClose(document);
}

void PreviewSession::setDisplayNames(VLPreviewController::DisplayNames names)
{
    displayNames_ = names;
    if (controller_) controller_->setDisplayNames(std::move(names));
}

}  // namespace preview
