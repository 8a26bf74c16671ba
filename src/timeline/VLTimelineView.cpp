#include "timeline/VLTimelineView.h"

#include "document/CompositionDocument.h"
#include "model/Attribute.h"
#include "model/Composition.h"
#include "model/NotificationHelper.h"
#include "model/ObjectStore.h"
#include "model/QuartzComponent.h"
#include "timeline/TimelinePainter.h"
#include "timeline/VLTimelineRulerView.h"
#include "timeline/VLTimelineScrollView.h"
#include "widgets/TimelineArtwork.h"

#include <QApplication>
#include <QPaintEvent>
#include <QPainter>

#include <cmath>

namespace timeline {

namespace {

constexpr int kDisclosureSize = 12;

// Keys of the composition the timeline follows.
const char* const kCompositionKeys[] = {"stopFrames", "editorTimepoint", "duration", "componentsSortedByInverseZLevel",
                                        "playMode"};
// Keys of a component that change its rows.
const char* const kComponentKeys[] = {"startTime", "endTime", "expanded", "selected", "attributes"};

}  // namespace

VLTimelineView::VLTimelineView(QWidget* parent)
    : QWidget(parent),
      stopFrameButtons_(VLTimelineControlButtons::stopFrameButtons(devicePixelRatioF(), metrics_.buttonSpacing)),
      keyframeButtons_(VLTimelineControlButtons::keyframeButtons(devicePixelRatioF(), metrics_.buttonSpacing))
{
    setObjectName(QStringLiteral("VLTimelineView"));
    setMouseTracking(true);
    setFocusPolicy(Qt::StrongFocus);
    style_ = TimelineStyle::fromPalette(palette(), font());
    discloseOpen_ = widgets::TimelineArtwork::timelineImageWithName(QStringLiteral("DiscloseOpen"))
                        .pixmap(QSize(kDisclosureSize, kDisclosureSize), devicePixelRatioF());
    discloseClosed_ = widgets::TimelineArtwork::timelineImageWithName(QStringLiteral("DiscloseClosed"))
                          .pixmap(QSize(kDisclosureSize, kDisclosureSize), devicePixelRatioF());
}

VLTimelineView::~VLTimelineView() { cleanUp(); }

model::Composition* VLTimelineView::composition() const { return document_ ? document_->composition() : nullptr; }

model::UndoManager* VLTimelineView::undoManager() const
{
    return document_ ? &document_->store().undoManager() : nullptr;
}

void VLTimelineView::setDocument(document::CompositionDocument* document, CommandsSource commands)
{
    cleanUp();
    document_ = document;
    commands_ = std::move(commands);
    lastSelected_ = -1;
    mouseOverRow_ = -1;
    rowsDirty_ = true;
    if (document_) {
        // Anything stored that changed (undo and redo included) is redrawn.
        storeConnection_ = connect(&document_->store(), &model::ObjectStore::objectsDidChange, this, [this] {
            updateClipView();
            updateTimelineRuler();
            updateComponentsRuler();
        });
        observeComposition();
        observeComponents();
        Q_EMIT editorTimepointChanged(composition()->editorTimepoint());
        Q_EMIT playModeChanged(composition()->playMode() != 0);
    }
    updateSize();
    updateClipView();
}

void VLTimelineView::cleanUp()
{
    cancelGesture();
    model::NotificationHelper::removeObserver(this);
    if (storeConnection_) disconnect(storeConnection_);
    storeConnection_ = {};
}

void VLTimelineView::setScrollView(VLTimelineScrollView* scrollView) { scrollView_ = scrollView; }

VLTimelineScrollView* VLTimelineView::scrollView() const { return scrollView_; }

// Observation -------------------------------------------------------------------

void VLTimelineView::observeComposition()
{
    model::Composition* c = composition();
    for (const char* key : kCompositionKeys) {
        const QString name = QString::fromLatin1(key);
        model::NotificationHelper::addObserver(this, c, name, [this, name](model::ManagedObject*, const QString&) {
            if (name == QLatin1String("componentsSortedByInverseZLevel")) {
                rowsChanged();
                observeComponents();
            } else if (name == QLatin1String("duration")) {
                scheduleSizeUpdate();
            } else if (name == QLatin1String("editorTimepoint")) {
                updateComponentsRuler();  // the keyframe buttons' flags
                if (model::Composition* now = composition()) {
                    Q_EMIT editorTimepointChanged(now->editorTimepoint());
                    // Playing, jumping or stepping, the playhead stays in view;
                    // dragged in the ruler it is under the mouse anyway.
                    if (scrollView_ && !ruler_.active) scrollView_->followPlayhead();
                }
            } else if (name == QLatin1String("playMode")) {
                if (model::Composition* now = composition()) Q_EMIT playModeChanged(now->playMode() != 0);
            }
            updateTimelineRuler();
            updateClipView();
        });
    }
}

void VLTimelineView::observeComponents()
{
    // Observing again is harmless (the registry keeps one), so every
    // component and attribute is simply observed after each change of the list.
    const auto rowKeysChanged = [this](model::ManagedObject*, const QString& key) {
        if (key == QLatin1String("expanded") || key == QLatin1String("attributes")) rowsChanged();
        if (key == QLatin1String("selected") || key == QLatin1String("expanded")) updateComponentsRuler();
        updateClipView();
    };
    const auto valuesChanged = [this](model::ManagedObject*, const QString&) {
        updateClipView();
        updateComponentsRuler();
    };
    for (model::QuartzComponent* component : composition()->componentArray()) {
        for (const char* key : kComponentKeys)
            model::NotificationHelper::addObserver(this, component, QString::fromLatin1(key), rowKeysChanged);
        for (model::Attribute* attribute : component->attributes())
            model::NotificationHelper::addObserver(this, attribute, QStringLiteral("values"), valuesChanged);
    }
}

void VLTimelineView::rowsChanged()
{
    rowsDirty_ = true;
    // A clip that went away mid-drag ends the drag.
    if (gesture_.active && gesture_.draggingComponent && (!gesture_.component || gesture_.component->isDeleted()))
        cancelGesture();
    scheduleSizeUpdate();
    updateComponentsRuler();
    updateClipView();
}

void VLTimelineView::scheduleSizeUpdate()
{
    if (sizeUpdatePosted_) return;
    sizeUpdatePosted_ = true;
    QMetaObject::invokeMethod(this, [this] { updateSize(); }, Qt::QueuedConnection);
}

void VLTimelineView::updateSize()
{
    sizeUpdatePosted_ = false;
    if (scrollView_)
        scrollView_->updateDocumentView();
    else if (size() != timeAxisSize())
        resize(timeAxisSize());
    updateTimelineRuler();
    updateComponentsRuler();
    updateClipView();
}

void VLTimelineView::updateTimelineRuler()
{
    if (scrollView_) scrollView_->horizontalRuler()->needsDisplay();
}

void VLTimelineView::updateComponentsRuler()
{
    if (scrollView_) scrollView_->verticalRuler()->needsDisplay();
}

void VLTimelineView::updateClipView()
{
    // The clip view draws behind the rows; repainting it repaints them too.
    if (parentWidget())
        parentWidget()->update();
    else
        update();
}

// Zoom and size -----------------------------------------------------------------

void VLTimelineView::setZoomValue(double value)
{
    value = std::clamp(value, 0.0, 1.0);
    if (value == zoom_) return;
    zoom_ = value;
    updateSize();
    Q_EMIT zoomChanged(zoom_);
}

TimelineGeometry VLTimelineView::timelineGeometry() const
{
    const model::Composition* c = composition();
    // The ruler starts at the name column's left edge; the rows at x() < 0
    // once scrolled.
    const double visibleX = -x() - metrics_.componentsWidth;
    return TimelineGeometry(unitWidth(), c ? c->videoResolution().frameRate() : 2, metrics_, visibleX);
}

const TimelineRows& VLTimelineView::rows() const
{
    if (rowsDirty_) {
        const model::Composition* c = composition();
        rows_ = c ? TimelineRows::build(*c) : TimelineRows();
        rowsDirty_ = false;
    }
    return rows_;
}

QSize VLTimelineView::timeAxisSize() const
{
    const model::Composition* c = composition();
    const QSizeF size = timelineGeometry().timeAxisSize(c ? c->duration() : 0.0, rows().count());
    return QSize(int(std::ceil(size.width())), int(std::ceil(size.height())));
}

// Drawing -----------------------------------------------------------------------

TimelineScene VLTimelineView::scene(const TimelineGeometry& geometry, const TimelineRows& rows) const
{
    TimelineScene scene{geometry, rows, style_};
    if (const model::Composition* c = composition()) {
        scene.duration = c->duration();
        scene.ticksPerSecond = int(c->ticksPerSecond());
        scene.editorTime = c->editorTimepoint();
        scene.stopFrameTimes = c->stopFrameTimepoints();
    }
    return scene;
}

void VLTimelineView::paintEvent(QPaintEvent* event)
{
    if (!composition()) return;
    QPainter painter(this);
    const TimelineGeometry g = timelineGeometry();
    const TimelineScene s = scene(g, rows());
    TimelinePainter(s).paintRows(painter, event->rect(), rect());
}

void VLTimelineView::drawClipInView(QPainter& painter, QWidget* clipView, const QRect& rect)
{
    if (!composition()) {
        painter.fillRect(rect, style_.rowsBackgroundColor);
        return;
    }
    const TimelineGeometry g = timelineGeometry();
    const TimelineScene s = scene(g, rows());
    TimelinePainter(s).paintClipBackground(painter, rect, clipView->rect(), mapTo(clipView, QPoint(0, 0)),
                                           gesture_.marquee);
}

void VLTimelineView::drawRulerInView(QPainter& painter, VLTimelineRulerView* ruler, const QRect& rect)
{
    const QRectF bounds = ruler->rect();
    if (!composition()) {
        painter.fillRect(rect, style_.rulerBackgroundColor);
        return;
    }
    const TimelineGeometry g = timelineGeometry();
    const TimelineScene s = scene(g, rows());
    if (ruler->orientation() == Qt::Horizontal)
        TimelinePainter(s).paintTimeRuler(painter, rect, bounds, stopFrameButtons_);
    else
        TimelinePainter(s).paintNameColumn(painter, rect, bounds, -y(), mouseOverRow_, discloseOpen_, discloseClosed_,
                                           keyframeButtons_);
}

void VLTimelineView::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::PaletteChange || event->type() == QEvent::FontChange) {
        style_ = TimelineStyle::fromPalette(palette(), font());
        updateClipView();
        updateTimelineRuler();
        updateComponentsRuler();
    }
    QWidget::changeEvent(event);
}

Qt::CursorShape VLTimelineView::cursorForDraggingPart(int part)
{
    switch (part) {
    case kPartStart:
    case kPartEnd: return Qt::SizeHorCursor;
    case kPartWhole: return Qt::PointingHandCursor;
    default: return Qt::ArrowCursor;
    }
}

}  // namespace timeline
