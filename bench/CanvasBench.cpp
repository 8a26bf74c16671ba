// Canvas speed with the raster backend, on the offscreen platform:
//  - BM_CanvasRedrawDemo: one full repaint of the demo document on a
//    1920×1080 canvas at fit zoom, the playhead moving a frame each time as
//    while playing; the target is a median under 16 ms.
//  - BM_CanvasDragStep100: one step of dragging a component in a document of
//    100 components: the mouse move (model change, undoable) and the repaint
//    it causes; the target is under 16 ms a step.
//  - BM_CanvasZoomStep/N, BM_CanvasPanStep/N: the demo in a 1600×900 scroll
//    view at N %: one Ctrl+wheel notch in or out around a point, or one pan
//    of 40 points, and the repaint of what is visible. The target is under
//    16 ms at every zoom: only the exposed part of the canvas is drawn.
#include "BenchTools.h"
#include "DemoDocument.h"

#include "canvas/VLZoomScrollView.h"

#include <algorithm>

#include "canvas/CompositionView.h"
#include "document/CompositionDocument.h"
#include "model/Composition.h"
#include "model/ObjectStore.h"
#include "model/QuartzComponent.h"
#include "model/StandardComponents.h"
#include "model/VideoResolution.h"

#include <QCoreApplication>
#include <QImage>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>

#include <benchmark/benchmark.h>

namespace {

constexpr QSize kCanvasSize(1920, 1080);

// Paints the whole widget once, as an expose of the window would.
void repaint(canvas::CompositionView& view, QImage& image)
{
    QPainter painter(&image);
    view.render(&painter);
}

void BM_CanvasRedrawDemo(benchmark::State& state)
{
    auto document = bench::openDemo(state);
    if (!document) return;
    canvas::CompositionView view;
    view.resize(kCanvasSize);
    view.setDocument(document.get());
    view.setZoomMode(0);
    QImage image(kCanvasSize, QImage::Format_ARGB32_Premultiplied);
    model::Composition& composition = *document->composition();
    const double duration = std::max(composition.duration(), 1.0);
    double t = 0;
    repaint(view, image);
    for (auto _ : state) {
        t = t + 0.04 < duration ? t + 0.04 : 0;
        composition.setEditorTimepoint(t);
        repaint(view, image);
        benchmark::DoNotOptimize(image.constBits());
    }
}
BENCHMARK(BM_CanvasRedrawDemo)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_CanvasDragStep100(benchmark::State& state)
{
    bench::ensureApplication();
    auto document = document::CompositionDocument::emptyDocumentWithResolution(
        model::VideoResolution::defaultVideoResolution());
    model::Composition& composition = *document->composition();
    {
        model::UndoRegistrationPause quiet(document->store().undoManager());
        const QString files[] = {QStringLiteral("Box"), QStringLiteral("Text"), QStringLiteral("LowerThird"),
                                 QStringLiteral("Clock")};
        for (int i = 0; i < 100; ++i) {
            model::QuartzComponent* c =
                composition.addComponenWithQuartzCompositionFile(model::StandardComponents::pathForComponent(files[i % 4]));
            if (!c) continue;
            c->setOriginX(i * 17 % 1600);
            c->setOriginY(i * 29 % 800);
        }
        document->store().processPendingChanges();
    }
    canvas::CompositionView view;
    view.resize(kCanvasSize);
    view.setDocument(document.get());
    view.setZoomMode(0);
    QImage image(kCanvasSize, QImage::Format_ARGB32_Premultiplied);

    // The top component, grabbed in its middle.
    model::QuartzComponent* top = composition.componentsSortedByInverseZLevel().front();
    const QPointF grab(top->originX() + top->width() / 2, top->originY() + top->height() / 2);
    QPointF at = view.viewPointFromComposition(grab);
    auto send = [&view](QEvent::Type type, QPointF point, Qt::MouseButton button, Qt::MouseButtons buttons) {
        QMouseEvent event(type, point, view.mapToGlobal(point), button, buttons, Qt::NoModifier);
        QCoreApplication::sendEvent(&view, &event);
    };
    send(QEvent::MouseButtonPress, at, Qt::LeftButton, Qt::LeftButton);
    repaint(view, image);
    int step = 0;
    for (auto _ : state) {
        // Back and forth over 40 points so the component stays on the canvas.
        const double dx = (step / 20) % 2 ? -2 : 2;
        at += QPointF(dx, 1 - step % 3);
        ++step;
        send(QEvent::MouseMove, at, Qt::NoButton, Qt::LeftButton);
        QCoreApplication::processEvents();
        repaint(view, image);
        benchmark::DoNotOptimize(image.constBits());
    }
    send(QEvent::MouseButtonRelease, at, Qt::LeftButton, Qt::NoButton);
    if (!top->selected()) state.SkipWithError("the drag did not select the component");
}
BENCHMARK(BM_CanvasDragStep100)->Unit(benchmark::kMillisecond)->UseRealTime();

// The demo in a scroll view at a zoom, looking at the page's middle.
struct ScrolledDemo {
    std::unique_ptr<document::CompositionDocument> document;
    canvas::VLZoomScrollView scroll;
    canvas::CompositionView* view = new canvas::CompositionView;
    QImage image{QSize(1600, 900), QImage::Format_ARGB32_Premultiplied};

    bool open(benchmark::State& state, int zoom)
    {
        document = bench::openDemo(state);
        if (!document) return false;
        // The transparency chessboard, the default and the costliest backdrop.
        document->composition()->setBackgroundMode(model::kBackgroundNone);
        view->setDocument(document.get());
        scroll.setCompositionView(view);
        scroll.resize(image.size());
        scroll.setAttribute(Qt::WA_DontShowOnScreen);
        scroll.show();
        scroll.zoomTo(zoom);
        // Looking at the top component, so the zoomed view has it to draw.
        const auto components = document->composition()->componentsSortedByZLevel();
        if (components.empty()) {
            state.SkipWithError("the demo has no components");
            return false;
        }
        const QPointF middle = view->viewPointFromComposition(components.back()->drawingFrame().center());
        scroll.horizontalScrollBar()->setValue(int(middle.x()) - scroll.viewport()->width() / 2);
        scroll.verticalScrollBar()->setValue(int(middle.y()) - scroll.viewport()->height() / 2);
        return true;
    }
    void repaint()
    {
        QPainter painter(&image);
        scroll.viewport()->render(&painter);
    }
};

void BM_CanvasZoomStep(benchmark::State& state)
{
    bench::ensureApplication();
    ScrolledDemo demo;
    const int zoom = int(state.range(0));
    if (!demo.open(state, zoom)) return;
    const QPointF mouse(demo.scroll.viewport()->rect().center());
    demo.repaint();
    int step = 0;
    for (auto _ : state) {
        // One notch in, one out: the zoom stays around N %.
        const int percent = step++ % 2 ? zoom : int(zoom * 1.2);
        demo.scroll.zoomTo(std::min(percent, 1600), mouse);
        demo.repaint();
        benchmark::DoNotOptimize(demo.image.constBits());
    }
}
BENCHMARK(BM_CanvasZoomStep)->Arg(25)->Arg(100)->Arg(400)->Arg(1600)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_CanvasPanStep(benchmark::State& state)
{
    bench::ensureApplication();
    ScrolledDemo demo;
    if (!demo.open(state, int(state.range(0)))) return;
    QScrollBar* bar = demo.scroll.horizontalScrollBar();
    demo.repaint();
    int step = 0;
    for (auto _ : state) {
        bar->setValue(bar->value() + ((step++ / 10) % 2 ? -40 : 40));
        demo.repaint();
        benchmark::DoNotOptimize(demo.image.constBits());
    }
}
BENCHMARK(BM_CanvasPanStep)->Arg(25)->Arg(100)->Arg(400)->Arg(1600)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
