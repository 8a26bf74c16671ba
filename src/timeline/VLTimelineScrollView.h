#pragma once
// The scroll view around the timeline: its viewport is the clip view that
// draws the grid behind the rows, the time ruler runs along the top over
// the whole width (its left part is the corner with the stop-frame
// buttons) and the name column down the left. The timeline view is its
// document, at least as large as what is visible so every press on the rows
// reaches it.

#include <QScrollArea>

namespace timeline {

class VLTimelineView;
class VLTimelineRulerView;

class VLTimelineScrollView : public QScrollArea {
    Q_OBJECT
public:
    explicit VLTimelineScrollView(QWidget* parent = nullptr);

    void setTimelineView(VLTimelineView* view);
    VLTimelineView* timelineView() const { return view_; }
    VLTimelineRulerView* horizontalRuler() const { return horizontalRuler_; }
    VLTimelineRulerView* verticalRuler() const { return verticalRuler_; }
    // How far the rows are scrolled.
    QPoint scrollOffset() const;

    // Sizes the view for its rows, zoom and the visible area.
    void updateDocumentView();
    // Zooms keeping the time under `viewportX` where it is.
    void zoomAround(double value, double viewportX);
    // Pages the rows so the playhead stays in view when it leaves it.
    void followPlayhead();

protected:
    void resizeEvent(QResizeEvent* event) override;
    bool viewportEvent(QEvent* event) override;

private:
    void layoutRulers();
    void updateRulers();

    VLTimelineView* view_ = nullptr;
    VLTimelineRulerView* horizontalRuler_;
    VLTimelineRulerView* verticalRuler_;
};

}  // namespace timeline
