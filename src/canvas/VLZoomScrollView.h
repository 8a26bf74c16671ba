#pragma once
// The scroll view around the canvas, with a ruler on the top and the left.
// The canvas is the zoomed drawing area with a work area of half a page on
// every side (never smaller than the visible area), so components parked
// off the page for their entrances can be reached. Zooming keeps the point
// under the mouse (or the middle) where it was; Space-drag, the middle
// button and the wheel pan; a drag held at the edge scrolls.

#include <QPoint>
#include <QScrollArea>

namespace canvas {

class CompositionView;
class VLRulerView;

class VLZoomScrollView : public QScrollArea {
    Q_OBJECT
public:
    explicit VLZoomScrollView(QWidget* parent = nullptr);

    void setCompositionView(CompositionView* view);
    CompositionView* compositionView() const { return view_; }
    VLRulerView* horizontalRuler() const { return horizontalRuler_; }
    VLRulerView* verticalRuler() const { return verticalRuler_; }

    // Resizes the canvas for the current zoom and visible area.
    void updateDocumentView();

    // Sets the zoom mode (a percentage, 0 fit) keeping the composition
    // point under `viewportPoint` in place; without one, the middle.
    void zoomTo(int mode, QPointF viewportPoint);
    void zoomTo(int mode);
    // The View menu's steps: the next of the standard steps.
    void zoomIn();
    void zoomOut();
    // Scrolls so the drawing area's middle is in the middle.
    void centreDrawingArea();
    bool isPanning() const { return panning_; }

Q_SIGNALS:
    // Space pressed and let go over the canvas without panning: it keeps
    // its meaning of Play / Stop.
    void spaceTapped();

protected:
    void resizeEvent(QResizeEvent* event) override;
    bool viewportEvent(QEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void zoomChanged();
    void layoutRulers();
    void updateRulers();
    void scrollBy(QPoint step);
    bool handleCanvasEvent(QEvent* event);

    CompositionView* view_ = nullptr;
    VLRulerView* horizontalRuler_;
    VLRulerView* verticalRuler_;
    QWidget* corner_;
    bool zooming_ = false;     // zoomTo places the scroll itself
    bool spaceHeld_ = false;
    bool panning_ = false;
    bool spacePanned_ = false;
    QPoint panLast_;           // global
    bool centred_ = false;     // the first layout shows the page in the middle
};

}  // namespace canvas
