#pragma once
// The two rulers of the timeline: the time ruler along the top (horizontal)
// and the name column down the left (vertical). Each is a background with
// one content view filling it; the content view draws by asking the
// timeline view and hands its mouse to it, with points in its own terms.

#include <QPointer>
#include <QWidget>

namespace timeline {

class VLTimelineRulerContentView;
class VLTimelineScrollView;
class VLTimelineView;

class VLTimelineRulerView : public QWidget {
    Q_OBJECT
public:
    VLTimelineRulerView(Qt::Orientation orientation, VLTimelineScrollView* scrollView);

    Qt::Orientation orientation() const { return orientation_; }
    VLTimelineScrollView* scrollView() const { return scrollView_; }
    VLTimelineRulerContentView* contentView() const { return contentView_; }
    VLTimelineView* timelineView() const;
    // Asks the content view to draw again.
    void needsDisplay();

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    Qt::Orientation orientation_;
    QPointer<VLTimelineScrollView> scrollView_;
    VLTimelineRulerContentView* contentView_;
};

class VLTimelineRulerContentView : public QWidget {
    Q_OBJECT
public:
    explicit VLTimelineRulerContentView(VLTimelineRulerView* rulerView);

    VLTimelineRulerView* rulerView() const { return rulerView_; }
    VLTimelineView* timelineView() const { return rulerView_->timelineView(); }

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;

private:
    VLTimelineRulerView* rulerView_;
};

// The viewport of the scroll view: draws the background of the rows (the
// grid, the playhead, the marquee) and passes a press that misses the
// timeline view on to it.
class VLTimelneClipView : public QWidget {
    Q_OBJECT
public:
    explicit VLTimelneClipView(VLTimelineScrollView* scrollView);
    VLTimelineView* documentView() const;

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    void forward(QMouseEvent* event);
    QPointer<VLTimelineScrollView> scrollView_;
};

}  // namespace timeline
