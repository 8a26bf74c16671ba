#include "preview/VLPreviewController.h"

#include "document/CompositionDocument.h"
#include "playout/PlayoutTemplate.h"
#include "preview/QCViewWithVideo.h"

#include <QCloseEvent>
#include <QFileInfo>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLoggingCategory>
#include <QPushButton>
#include <QScreen>
#include <QVBoxLayout>
#include <QWindow>

namespace preview {

Q_DECLARE_LOGGING_CATEGORY(lcPreviewView)

VLPreviewController::VLPreviewController(QWidget* parent)
    : QWidget(parent, Qt::Window | Qt::WindowStaysOnTopHint), compositionView_(new QCViewWithVideo(this)),
      statusBar_(new QWidget(this)), reloadButton_(new QPushButton(tr("Reload"), statusBar_)),
      triggerButton_(new QPushButton(tr("Trigger"), statusBar_)), statusTextField_(new QLabel(statusBar_))
{
    setWindowTitle(tr("Preview"));
    setObjectName(QStringLiteral("Preview"));
    // The keys belong to the window: a focused button would take the space
    // bar for itself.
    setFocusPolicy(Qt::StrongFocus);
    for (QPushButton* button : {reloadButton_, triggerButton_}) button->setFocusPolicy(Qt::NoFocus);
    reloadButton_->setToolTip(tr("Play the template again from its start (R)"));
    triggerButton_->setToolTip(tr("Release the stop frame (Space)"));
    triggerButton_->hide();
    statusTextField_->setObjectName(QStringLiteral("statusTextField"));

    statusBar_->setFixedHeight(kStatusHeight);
    auto* bar = new QHBoxLayout(statusBar_);
    bar->setContentsMargins(6, 2, 6, 2);
    bar->addWidget(reloadButton_);
    bar->addWidget(statusTextField_, 1);
    bar->addWidget(triggerButton_);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(compositionView_, 1);
    layout->addWidget(statusBar_);

    connect(reloadButton_, &QPushButton::clicked, this, &VLPreviewController::reloadComposition);
    connect(triggerButton_, &QPushButton::clicked, this, &VLPreviewController::sendTrigger);
    playout::Player& player = compositionView_->player();
    connect(&player, &playout::Player::activeChanged, this, &VLPreviewController::activeChanged);
    connect(&player, &playout::Player::waitingForTriggerChanged, this, &VLPreviewController::waitingForTriggerChanged);
}

VLPreviewController::~VLPreviewController() = default;

QString VLPreviewController::displayName(Document document) const
{
    if (!document) return {};
    if (displayNames_) return displayNames_(*document);
    return document->fileURL().isEmpty() ? tr("Untitled") : QFileInfo(document->fileURL()).completeBaseName();
}

void VLPreviewController::displayCompositionDocument(Document document)
{
    compositionView_->unloadComposition();
    QString error;
    // The export is written to "VelloranPreview.qtz" in the temporary
    // folder, read back and deleted.
    auto played = document ? playout::exportForPlayout(*document, playout::ExportRequest{true, {}}, &error) : std::nullopt;
    if (played) {
        currentDocument_ = document;
        currentName_ = displayName(document);
        const QSize content = fittedContentSize(played->size);
        compositionView_->loadComposition(std::move(*played));
        triggerButton_->hide();
        if (!fullScreen_) resize(content.width(), content.height() + kStatusHeight);
        updateStatusField();
        compositionView_->startRendering();
    } else if (document) {
        qCWarning(lcPreviewView).noquote() << error;
    }
    show();
    raise();
    activateWindow();
}

QSize VLPreviewController::fittedContentSize(QSize composition) const
{
    // The status line and its button must stay on the screen: a template
    // larger than the screen is shown smaller, keeping its shape.
    const QScreen* s = screen() ? screen() : QGuiApplication::primaryScreen();
    if (!s) return composition;
    const QSize room = s->availableGeometry().size() - QSize(0, kStatusHeight + kWindowFrameAllowance);
    if (composition.width() <= room.width() && composition.height() <= room.height()) return composition;
    return composition.scaled(room, Qt::KeepAspectRatio);
}

void VLPreviewController::displayCompositions(std::vector<Document> documents)
{
    slideshow_.start(std::move(documents));
    if (slideshow_.isRunning()) displayCompositionDocument(slideshow_.current());
}

void VLPreviewController::showNextComposition()
{
    if (Document next = slideshow_.next()) displayCompositionDocument(next);
}

void VLPreviewController::documentWillClose(Document document)
{
    slideshow_.remove(document);
    if (document != currentDocument_) return;
    // The picture may stay, but nothing may reach the document any more.
    currentDocument_ = nullptr;
}

void VLPreviewController::updateStatusField()
{
    if (!triggerButton_->isHidden())
        statusTextField_->setText(tr("Waiting for Trigger"));
    else if (compositionView_->player().isActive())
        statusTextField_->setText(tr("Playing %1").arg(currentName_));
    else
        statusTextField_->setText(tr("Playout finished"));
}

bool VLPreviewController::isWaitingForTrigger() const
{
    return compositionView_->player().isWaitingForTrigger();
}

bool VLPreviewController::setTrigger()
{
    return compositionView_->player().setTrigger();
}

void VLPreviewController::releaseTrigger()
{
    compositionView_->player().releaseTrigger();
}

bool VLPreviewController::sendTrigger()
{
    return compositionView_->player().sendTrigger();
}

void VLPreviewController::reloadComposition()
{
    compositionView_->stopRendering();
    if (compositionView_->hasComposition()) compositionView_->startRendering();
    triggerButton_->hide();
    updateStatusField();
}

void VLPreviewController::togglePreviewFullscreen(QScreen* screen)
{
    if (fullScreen_) {
        fullScreen_ = false;
        statusBar_->show();
        showNormal();
        if (normalGeometry_.isValid()) setGeometry(normalGeometry_);
        return;
    }
    if (!screen) screen = QGuiApplication::screens().value(0);
    if (!screen) return;
    fullScreen_ = true;
    normalGeometry_ = geometry();
    statusBar_->hide();
    setGeometry(screen->geometry());
    if (QWindow* window = windowHandle()) window->setScreen(screen);
    showFullScreen();
    activateWindow();
}

void VLPreviewController::showPlayedTo(double seconds)
{
    compositionView_->stopRendering();
    playout::Player& player = compositionView_->player();
    if (!player.isLoaded()) return;
    const playout::VideoTiming& timing = player.timing();
    const qint64 last = timing.stepAtOrBefore(seconds);
    player.reload();
    // Released at every stop frame before the moment, not at the one it
    // arrives at.
    player.setUnattended(true);
    while (player.nextStep() < last) player.renderStep(player.nextStep());
    player.setUnattended(false);
    player.renderStep(last);
    // Held at a stop frame, an interlaced picture shows the hold in both
    // fields, as it does a field later on air.
    if (timing.interlaced() && player.isWaitingForTrigger()) player.renderStep(last + 1);
    // A still shows the picture at its own size, whatever the screen.
    if (!fullScreen_) resize(player.frameSize().width(), player.frameSize().height() + kStatusHeight);
    triggerButton_->setVisible(player.isWaitingForTrigger());
    updateStatusField();
    compositionView_->update();
}

void VLPreviewController::activeChanged(bool active)
{
    if (!compositionView_->isRendering()) return;
    // Not from inside the player's step: the next document is exported and
    // loaded into this same player.
    if (!active && slideshow_.isRunning())
        QMetaObject::invokeMethod(this, &VLPreviewController::showNextComposition, Qt::QueuedConnection);
    updateStatusField();
}

void VLPreviewController::waitingForTriggerChanged(bool waiting)
{
    if (!compositionView_->isRendering()) return;
    triggerButton_->setVisible(waiting);
    updateStatusField();
}

void VLPreviewController::keyPressEvent(QKeyEvent* event)
{
    // Holding the space bar holds the trigger; the keyboard's repeats are
    // not new presses.
    if (event->key() == Qt::Key_Space) {
        if (!event->isAutoRepeat()) setTrigger();
    } else if (event->key() == Qt::Key_R && !event->isAutoRepeat()) {
        reloadComposition();
    } else if (event->key() == Qt::Key_Escape && fullScreen_) {
        togglePreviewFullscreen();
    } else {
        QWidget::keyPressEvent(event);
        return;
    }
    event->accept();
}

void VLPreviewController::keyReleaseEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Space) {
        if (!event->isAutoRepeat()) releaseTrigger();
        event->accept();
        return;
    }
    QWidget::keyReleaseEvent(event);
}

void VLPreviewController::closeEvent(QCloseEvent* event)
{
    disconnect(&compositionView_->player(), nullptr, this, nullptr);
    compositionView_->stopRendering();
    slideshow_.stop();
    hide();
    event->accept();
    Q_EMIT closed();
}

}  // namespace preview
