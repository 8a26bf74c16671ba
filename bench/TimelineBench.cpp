// Timeline speed on the offscreen platform, over a 60-second document of
// 200 components made without files (the timeline reads only times, titles
// and keyframes):
//  - BM_TimelineRepaint200: one full repaint of the timeline (rows, grid,
//    time ruler, name column) with 20 components expanded and 4,000
//    keyframes, rows 1600 × 400 points, the playhead moving a frame each
//    time; the target is a median under 4 ms.
//  - BM_TimelineKeyframeDragStep500: one mouse step of dragging 500
//    selected keyframes by a frame, with the repaint it causes; target
//    under 8 ms.
//  - BM_TimelineUndoClipDrag200x10: undo of a 200-event drag of 10 clips
//    with keyframes; target under 20 ms, and the counter "entriesPerKey"
//    (undo entries per dragged object and key) at most 2.
#include "BenchTools.h"

#include "document/CompositionDocument.h"
#include "model/Attribute.h"
#include "model/Composition.h"
#include "model/ObjectStore.h"
#include "model/QuartzComponent.h"
#include "model/VideoResolution.h"
#include "timeline/TimelinePanel.h"
#include "timeline/VLTimelineScrollView.h"

#include <QCoreApplication>
#include <QImage>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>

#include <benchmark/benchmark.h>

#include <memory>

namespace {

constexpr int kComponents = 200;
constexpr int kExpanded = 20;
constexpr int kAnimatedPerExpanded = 4;
constexpr int kKeyframesPerAttribute = 50;  // 20 × 4 × 50 = 4,000
constexpr double kDuration = 60;
const QSize kRows(1600, 400);

struct BenchDocument {
    std::unique_ptr<document::CompositionDocument> document;
    model::Composition* composition = nullptr;
    std::vector<model::QuartzComponent*> topFirst;
};

model::QuartzComponent* addComponent(BenchDocument& d, int index)
{
    model::ObjectStore& store = d.document->store();
    auto* c = store.insertNewObject<model::QuartzComponent>();
    c->setTitle(QStringLiteral("Component %1").arg(index));
    for (const char* key : {"originX", "originY", "inputWidth", "inputHeight", "opacity", "zRotation"}) {
        model::Attribute* a = model::Attribute::create(&store, QString::fromLatin1(key), QString::fromLatin1(key),
                                                       model::kTypeNumber, 0.0f);
        a->setToOne(QStringLiteral("component"), c);
    }
    c->initializeAttributeObservers();
    d.composition->addComponent(c);
    c->setStartTime(0);
    c->setEndTime(kDuration);
    return c;
}

// 200 components; the front-most of every ten is expanded with four
// attributes of 50 keyframes each, spread over the minute.
BenchDocument makeDocument()
{
    BenchDocument d;
    d.document = document::CompositionDocument::emptyDocumentWithResolution(model::VideoResolution::defaultVideoResolution());
    d.composition = d.document->composition();
    model::UndoRegistrationPause quiet(d.document->store().undoManager());
    d.composition->setDuration(kDuration);
    for (int i = 0; i < kComponents; ++i) addComponent(d, i);
    d.topFirst = d.composition->componentsSortedByInverseZLevel();
    for (int i = 0; i < kExpanded; ++i) {
        model::QuartzComponent* c = d.topFirst[std::size_t(i * (kComponents / kExpanded))];
        const std::vector<model::Attribute*> attributes = c->children();
        for (int a = 0; a < kAnimatedPerExpanded; ++a)
            for (int k = 0; k < kKeyframesPerAttribute; ++k)
                attributes[std::size_t(a)]->addTimepoint(1.0 + k * (kDuration - 2) / kKeyframesPerAttribute, float(k));
        c->setExpanded(true);
    }
    d.composition->clearSelection();
    d.document->store().processPendingChanges();
    d.document->store().undoManager().removeAllActions();
    return d;
}

// A panel whose rows show kRows, laid out and shown.
std::unique_ptr<timeline::TimelinePanel> makePanel(BenchDocument& d)
{
    auto panel = std::make_unique<timeline::TimelinePanel>();
    panel->setDocument(d.document.get());
    // setDocument opened the first animated component; all 20 stay open.
    panel->resize(kRows + QSize(300, 100));
    panel->show();
    QCoreApplication::processEvents();
    const QSize missing = kRows - panel->scrollView()->viewport()->size();
    panel->resize(panel->size() + missing);
    QCoreApplication::processEvents();
    return panel;
}

// Keeps only the keyframes up to `last` seconds.
void keepKeyframesUpTo(model::Attribute* a, double last)
{
    model::KeyframeValues kept;
    for (float key : a->keyframeTimesInRange(0, last)) kept.insert(key, a->keyframes().value(key));
    a->setValues(kept);
}

void BM_TimelineRepaint200(benchmark::State& state)
{
    bench::ensureApplication();
    BenchDocument d = makeDocument();
    auto panel = makePanel(d);
    timeline::VLTimelineScrollView* scroll = panel->scrollView();
    QImage image(scroll->size(), QImage::Format_ARGB32_Premultiplied);
    double t = 0;
    for (auto _ : state) {
        t = t + 0.04 < 30 ? t + 0.04 : 0;
        d.composition->setEditorTimepoint(t);
        QPainter painter(&image);
        scroll->render(&painter);
        painter.end();
        benchmark::DoNotOptimize(image.constBits());
    }
    state.counters["rows"] = panel->timelineView()->rows().count();
    state.counters["viewportWidth"] = scroll->viewport()->width();
    state.counters["viewportHeight"] = scroll->viewport()->height();
}
BENCHMARK(BM_TimelineRepaint200)->Unit(benchmark::kMillisecond)->UseRealTime();

void sendMouse(QWidget* target, QEvent::Type type, QPointF p)
{
    const Qt::MouseButton button = type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton;
    const Qt::MouseButtons buttons = type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::MouseButtons(Qt::LeftButton);
    QMouseEvent event(type, p, target->mapToGlobal(p), button, buttons, Qt::NoModifier);
    QCoreApplication::sendEvent(target, &event);
}

void BM_TimelineKeyframeDragStep500(benchmark::State& state)
{
    bench::ensureApplication();
    BenchDocument d = makeDocument();
    auto panel = makePanel(d);
    timeline::VLTimelineView* view = panel->timelineView();
    timeline::VLTimelineScrollView* scroll = panel->scrollView();
    // Every keyframe of the first ten keyed rows between 10 s and 40 s:
    // 10 rows × 25 keyframes… and more rows until there are 500.
    int selected = 0;
    model::Attribute* grabbed = nullptr;
    float grabbedKey = 0;
    for (const timeline::TimelineRow& row : view->rows().rows()) {
        if (!row.attribute || !row.attribute->animateable() || row.attribute->keyframes().isEmpty()) continue;
        for (float key : row.attribute->keyframeTimesInRange(10, 40)) {
            if (selected == 500) break;
            row.attribute->setTimePointSelected(key, true);
            if (!grabbed) {
                grabbed = row.attribute;
                grabbedKey = key;
            }
            ++selected;
        }
    }
    if (selected < 500 || !grabbed) {
        state.SkipWithError("fewer than 500 keyframes to select");
        return;
    }
    const timeline::TimelineGeometry g = view->timelineGeometry();
    const int row = [&] {
        for (int i = 0; i < view->rows().count(); ++i)
            if (view->rows().row(i)->attribute == grabbed) return i;
        return 0;
    }();
    QPointF at(g.xPositionAtTime(grabbedKey, false), g.rowTop(row) + g.rowHeight() / 2);
    scroll->horizontalScrollBar()->setValue(int(at.x()) - 200);
    QImage image(scroll->size(), QImage::Format_ARGB32_Premultiplied);
    sendMouse(view, QEvent::MouseButtonPress, at);
    const double frame = g.xPositionAtTime(0.04) + 0.01;
    int step = 0;
    for (auto _ : state) {
        // Back and forth a frame at a time, inside the clips.
        at += QPointF((step / 10) % 2 ? -frame : frame, 0);
        ++step;
        sendMouse(view, QEvent::MouseMove, at);
        QCoreApplication::processEvents();
        QPainter painter(&image);
        scroll->render(&painter);
        painter.end();
        benchmark::DoNotOptimize(image.constBits());
    }
    sendMouse(view, QEvent::MouseButtonRelease, at);
    state.counters["selected"] = selected;
}
BENCHMARK(BM_TimelineKeyframeDragStep500)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_TimelineUndoClipDrag200x10(benchmark::State& state)
{
    bench::ensureApplication();
    BenchDocument d = makeDocument();
    auto panel = makePanel(d);
    timeline::VLTimelineView* view = panel->timelineView();
    model::UndoManager& undo = d.document->store().undoManager();
    // Ten clips of 20 seconds, each with its keyframes, all selected.
    std::vector<model::QuartzComponent*> dragged;
    {
        model::UndoRegistrationPause quiet(undo);
        for (int i = 0; i < 10; ++i) {
            model::QuartzComponent* c = d.topFirst[std::size_t(i * (kComponents / kExpanded))];
            c->setEndTime(20);
            for (model::Attribute* a : c->attributes())
                if (a->animateable()) keepKeyframesUpTo(a, 19);
            c->setSelected(true);
            dragged.push_back(c);
        }
    }
    QCoreApplication::processEvents();
    undo.removeAllActions();
    // Each (object, key) the drag writes: start and end of every clip, the
    // keyframes and their selection of every animated attribute.
    int keys = 0;
    for (model::QuartzComponent* c : dragged) {
        keys += 2;
        for (model::Attribute* a : c->attributes()) keys += a->animateable() ? 2 : 0;
    }
    const timeline::TimelineGeometry g = view->timelineGeometry();
    const int row = view->rows().rowOfComponent(dragged.front());
    const double frame = g.xPositionAtTime(0.04) + 0.01;
    double entriesPerKey = 0;
    for (auto _ : state) {
        state.PauseTiming();
        QPointF at(g.xPositionAtTime(10, false), g.rowTop(row) + g.rowHeight() / 2);
        sendMouse(view, QEvent::MouseButtonPress, at);
        for (int i = 0; i < 200; ++i) {
            at += QPointF(frame, 0);
            sendMouse(view, QEvent::MouseMove, at);
        }
        sendMouse(view, QEvent::MouseButtonRelease, at);
        entriesPerKey = double(undo.actionCountOfUndoStep()) / keys;
        if (undo.undoCount() != 1) state.SkipWithError("the drag was not one undo step");
        state.ResumeTiming();
        undo.undo();
        d.document->store().processPendingChanges();
    }
    state.counters["entriesPerKey"] = entriesPerKey;
    state.counters["draggedKeys"] = keys;
}
// Each timed undo needs an untimed drag of 200 events first: a fixed count
// keeps the run short.
BENCHMARK(BM_TimelineUndoClipDrag200x10)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(40);

}  // namespace
