#include "canvas/CompositionView.h"

#include "canvas/CanvasHitRules.h"
#include "canvas/CanvasZoom.h"
#include "widgets/TwoToneOverlay.h"

#include "document/CompositionDocument.h"
#include "document/EventArguments.h"
#include "model/Composition.h"
#include "model/NotificationHelper.h"
#include "model/ObjectStore.h"
#include "model/QuartzComponent.h"
#include "model/Ruler.h"
#include "runtime/RasterBackend.h"

#include <QPaintEvent>
#include <QPainter>
#include <QResizeEvent>

#include <cmath>

namespace canvas {

namespace {
constexpr int kIdleRedrawMs = 1000;
// Keys of the canvas's composition observations.
const char* const kCompositionKeys[] = {
    "componentsSortedByInverseZLevel", "selectedComponents", "editorTimepoint", "playMode", "rulers",
    "showsRulers",  "showsSafeZones",   "backgroundMode",
};
// Keys announced by a component whose picture or overlay they change.
const char* const kComponentKeys[] = {"selected", "originX", "originY", "width", "height", "opacity", "zRotation",
                                      "attributes"};
}  // namespace

CompositionView::CompositionView(QWidget* parent)
    : QWidget(parent), backend_(std::make_unique<runtime::RasterBackend>())
{
    setObjectName(QStringLiteral("CompositionView"));
    setMouseTracking(true);
    setFocusPolicy(Qt::StrongFocus);
    setAcceptDrops(true);
    setAttribute(Qt::WA_OpaquePaintEvent);
    idleTimer_.setInterval(kIdleRedrawMs);
    // The canvas refreshes itself while idle so time-driven components
    // (a clock, a ticker) stay live; in play mode the playhead drives it.
    connect(&idleTimer_, &QTimer::timeout, this, [this] {
        if (model::Composition* c = composition(); c && c->playMode() == 0) update();
    });
    autoscrollTimer_.setInterval(kAutoscrollIntervalMs);
    connect(&autoscrollTimer_, &QTimer::timeout, this, &CompositionView::autoscrollTick);
}

CompositionView::~CompositionView() { cleanUp(); }

model::Composition* CompositionView::composition() const { return document_ ? document_->composition() : nullptr; }

void CompositionView::setDocument(document::CompositionDocument* document)
{
    endGesture(false);
    // A running Photoshop import belongs to the document it was dropped on.
    waitingPSDImports_.clear();
    cancelPSDImport();
    cleanUp();
    document_ = document;
    if (!document_) {
        update();
        return;
    }
    storeConnection_ = connect(&document_->store(), &model::ObjectStore::objectsDidChange, this, [this] { update(); });
    observeComposition();
    observeComponents();
    idleTimer_.start();
    Q_EMIT zoomChanged();
    Q_EMIT selectionChanged();
    update();
}

void CompositionView::cleanUp()
{
    idleTimer_.stop();
    model::NotificationHelper::removeObserver(this);
    if (storeConnection_) disconnect(storeConnection_);
    storeConnection_ = {};
}

void CompositionView::observeComposition()
{
    model::Composition* c = composition();
    for (const char* key : kCompositionKeys) {
        const QString name = QString::fromLatin1(key);
        model::NotificationHelper::addObserver(this, c, name, [this, name](model::ManagedObject*, const QString&) {
            if (name == QLatin1String("componentsSortedByInverseZLevel")) componentsChanged();
            else if (name == QLatin1String("selectedComponents")) {
                Q_EMIT selectionChanged();
                Q_EMIT readoutChanged();
            }
            else if (name == QLatin1String("editorTimepoint")) Q_EMIT editorTimepointChanged();
            update();
        });
    }
}

void CompositionView::observeComponents()
{
    // Adding an observation twice keeps one, so every component can simply
    // be observed again after each change of the list.
    for (model::QuartzComponent* component : composition()->componentArray())
        for (const char* key : kComponentKeys)
            model::NotificationHelper::addObserver(this, component, QString::fromLatin1(key),
                                                   [this](model::ManagedObject* object, const QString&) {
                                                       update();
                                                       const auto* c = static_cast<model::QuartzComponent*>(object);
                                                       if (c->selected()) Q_EMIT readoutChanged();
                                                   });
}

void CompositionView::componentsChanged()
{
    cancelGestureIfStale();
    observeComponents();
}

// Zoom --------------------------------------------------------------------------

int CompositionView::zoomMode() const
{
    const model::Composition* c = composition();
    return c ? c->zoomMode() : kZoomFit;
}

void CompositionView::setZoomMode(int mode)
{
    model::Composition* c = composition();
    if (!c || mode < 0) return;
    c->setZoomMode(mode == kZoomFit ? kZoomFit : clampZoomPercent(mode));
    Q_EMIT zoomChanged();
    update();
}

double CompositionView::zoomFactor() const
{
    const model::Composition* c = composition();
    if (!c) return 1.0;
    const QSize area = visibleArea_.isValid() ? visibleArea_ : size();
    return zoomFactorForMode(c->zoomMode(), area, c->size(), kRulerThickness, kRulerThickness);
}

QSizeF CompositionView::zoomedDocumentSize() const
{
    const model::Composition* c = composition();
    return c ? c->size() * zoomFactor() : QSizeF();
}

void CompositionView::setVisibleArea(QSize area)
{
    if (area == visibleArea_) return;
    visibleArea_ = area;
    if (zoomMode() == kZoomFit) update();
}

CanvasGeometry CompositionView::geometry() const
{
    const model::Composition* c = composition();
    return CanvasGeometry(c ? c->size() : QSizeF(), size(), zoomFactor());
}

void CompositionView::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    Q_EMIT layoutChanged();
}

QVariantMap CompositionView::argumentsAtTime(double time, bool playing)
{
    return document::eventArgumentsAtTime(time, playing);
}

// Painting ----------------------------------------------------------------------

std::vector<model::Ruler*> CompositionView::rulers() const
{
    const model::Composition* c = composition();
    return c ? c->rulers() : std::vector<model::Ruler*>{};
}

std::vector<Guide> CompositionView::guides() const
{
    std::vector<Guide> result;
    for (const model::Ruler* r : rulers()) result.push_back(Guide{r->position(), r->horizontal()});
    return result;
}

void CompositionView::paintEvent(QPaintEvent* event)
{
    QPainter painter(this);
    painter.fillRect(event->rect(), palette().color(QPalette::Dark));
    model::Composition* c = composition();
    if (!c || c->size().isEmpty()) return;
    const CanvasGeometry g = geometry();
    drawingArea_.paint(painter, g, *c);
    renderComponents(painter, event->rect());
    selectionLayer_.paint(painter, g, c->componentsSortedByZLevel());
    safeAreas_.paint(painter, g, c->showsSafeZones(), c->showsRulers() ? guides() : std::vector<Guide>{});
    paintGuideLabel(painter);
    rubberBand_.paint(painter);
}

void CompositionView::paintGuideLabel(QPainter& painter)
{
    const model::Ruler* ruler = gesture_.ruler;
    if (gesture_.kind != GestureKind::Guide || !gesture_.started || !ruler || ruler->isDeleted()) return;
    const QPointF at = mapFromGlobal(gesture_.lastGlobal.toPoint());
    const Guide guide{ruler->position(), ruler->horizontal()};
    const QRect shown = visibleRegion().boundingRect();
    widgets::drawTwoToneLabel(painter, at, guideLabelText(guide, gesture_.removeRuler),
                              QRectF(shown.isEmpty() ? rect() : shown));
}

// How many components from the bottom stay as they are for the rest of the
// running move or resize: those under the lowest one it changes.
std::size_t CompositionView::componentsStillDuringGesture(const std::vector<model::QuartzComponent*>& bottomFirst) const
{
    const bool changing = (gesture_.kind == GestureKind::Move || gesture_.kind == GestureKind::Resize) && gesture_.started;
    if (!changing) return 0;
    for (std::size_t i = 0; i < bottomFirst.size(); ++i)
        for (const auto& moving : gesture_.components)
            if (moving == bottomFirst[i]) return i;
    return 0;
}

void CompositionView::renderComponents(QPainter& painter, const QRect& area)
{
    model::Composition* c = composition();
    const double dpr = devicePixelRatioF();
    const QSize pixelSize = (QSizeF(area.size()) * dpr).toSize();
    if (pixelSize.isEmpty()) return;

    const double editorTime = c->editorTimepoint();
    double time = editorTime;
    // Renderers that cache by time would show a stale frame on an idle
    // redraw; a time that differs by a hair every other redraw forces them on.
    if (c->playMode() == 0 && (updateIndex_++ % 2) == 0) time += 0.00001;
    const QVariantMap arguments = argumentsAtTime(time, true);

    const CanvasGeometry g = geometry();
    const QTransform transform = g.renderTransform(area, dpr);
    const std::vector<model::QuartzComponent*> components = c->componentsSortedByZLevel();
    const std::size_t still = componentsStillDuringGesture(components);
    const std::vector<model::QuartzComponent*> below(components.begin(), components.begin() + std::ptrdiff_t(still));

    QImage image;
    std::size_t first = 0;
    if (still > 0 && stillBelow_.area == area && stillBelow_.transform == transform &&
        stillBelow_.time == editorTime && stillBelow_.components == below) {
        image = stillBelow_.image;  // shared until first drawn on
        first = still;
    } else {
        image = QImage(pixelSize, QImage::Format_ARGB32_Premultiplied);
        if (image.isNull()) return;
        image.fill(Qt::transparent);
    }
    const std::unique_ptr<runtime::RasterTarget> target = backend_->wrap(&image, transform);
    for (std::size_t i = first; i < components.size(); ++i) {
        if (i == still && still > 0 && first == 0) stillBelow_ = {image.copy(), area, transform, editorTime, below};
        components[i]->renderForView(this, *target, time, arguments);
    }
    if (still == 0) stillBelow_ = {};
    // The selection is drawn over the picture by SelectionLayer, at a
    // constant screen size. Only now: the target draws in image pixels,
    // ignoring the ratio.
    image.setDevicePixelRatio(dpr);
    painter.drawImage(area.topLeft(), image);
}

// Actions -----------------------------------------------------------------------

void CompositionView::moveSelectedComponentsBy(double dx, double dy)
{
    model::Composition* c = composition();
    if (!c) return;
    for (model::QuartzComponent* component : c->selectedComponents()) component->moveBy(dx, dy);
}

void CompositionView::moveSelectedComponentsBackward()
{
    if (model::Composition* c = composition()) c->moveSelectionByLevel(-1);
}

void CompositionView::moveSelectedComponentsForward()
{
    if (model::Composition* c = composition()) c->moveSelectionByLevel(1);
}

void CompositionView::removeSelectedComponents()
{
    if (model::Composition* c = composition()) c->removeComponents(c->selectedComponents());
}

void CompositionView::togglePlay()
{
    if (model::Composition* c = composition()) c->setPlayMode(c->playMode() == 0 ? 1 : 0);
}

void CompositionView::addGuide(double position, bool horizontal)
{
    if (model::Composition* c = composition()) c->addRulerAtPosition(position, horizontal);
}

model::Ruler* CompositionView::rulerAt(const QPointF& p) const
{
    const std::vector<model::Ruler*> all = rulers();
    const int index = guideIndexAt(p, guides(), guideGrabTolerance(zoomFactor()));
    return index >= 0 ? all[std::size_t(index)] : nullptr;
}

int CompositionView::handleAt(const model::QuartzComponent& component, const QPointF& p) const
{
    if (!component.selected() || !component.visible() || !component.visibleInCompositionEditor())
        return component.handleIndexForLocation(p);
    return handleIndexAt(component.handleRects(), component.zRotation(), p, zoomFactor());
}

}  // namespace canvas
