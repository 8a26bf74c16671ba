#pragma once
// The scroll view around the canvas, with a ruler on the top and the left.
// The canvas is as large as the visible area, or 50 points larger than the
// zoomed drawing area on an axis where that does not fit.

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

protected:
    void resizeEvent(QResizeEvent* event) override;
    bool viewportEvent(QEvent* event) override;

private:
    void zoomChanged();
    void layoutRulers();
    void updateRulers();

    CompositionView* view_ = nullptr;
    VLRulerView* horizontalRuler_;
    VLRulerView* verticalRuler_;
    QWidget* corner_;
};

}  // namespace canvas
