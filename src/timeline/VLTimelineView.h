#pragma once
// The time axis of a document window: one row per component with its clip,
// the attribute rows of expanded components with their keyframes, the time
// ruler above (stop frames, the playhead) and the name column on the left.
// The view is the scroll view's document; the thin views around it (clip
// view, rulers) call back into it to draw and to hand over the mouse.
//
// It holds the observation of the model, the zoom and the one gesture of a
// press. Observation callbacks only mark the rows dirty and ask for a
// repaint; the row list is rebuilt when next needed. The playhead is the
// composition's editorTimepoint: the view owns no clock. The mouse on the
// rows and the keys are in VLTimelineViewEditing.cpp, the rulers' mouse,
// stop frames and the tooltip in VLTimelineViewRulers.cpp.

#include "timeline/TimelineDrag.h"
#include "timeline/TimelineGeometry.h"
#include "timeline/TimelineRows.h"
#include "timeline/TimelineStyle.h"
#include "timeline/VLTimelineControlButtons.h"

#include <QPointer>
#include <QWidget>

#include <functional>
#include <memory>
#include <optional>

namespace document {
class CompositionDocument;
class DocumentCommands;
}  // namespace document
namespace model {
class Composition;
class QuartzComponent;
class StopFrame;
class UndoGroup;
class UndoManager;
}  // namespace model

namespace timeline {

class VLTimelineRulerView;
class VLTimelineScrollView;
struct TimelineScene;

class VLTimelineView : public QWidget {
    Q_OBJECT
public:
    // The document's commands (jumps, play, stop frames, delete) as the
    // window holds them; asked each time, since the window remakes them.
    using CommandsSource = std::function<document::DocumentCommands*()>;

    explicit VLTimelineView(QWidget* parent = nullptr);
    ~VLTimelineView() override;

    void setDocument(document::CompositionDocument* document, CommandsSource commands = {});
    document::CompositionDocument* document() const { return document_; }
    model::Composition* composition() const;
    document::DocumentCommands* commands() const { return commands_ ? commands_() : nullptr; }
    // Removes every observation and ends a gesture; safe to call again.
    void cleanUp();

    // The scroll view around, which keeps the rulers and sizes the view.
    void setScrollView(VLTimelineScrollView* scrollView);
    VLTimelineScrollView* scrollView() const;

    // Zoom: the slider's value in [0, 1].
    double zoomValue() const { return zoom_; }
    void setZoomValue(double value);
    double unitWidth() const { return unitWidthForZoom(zoom_); }

    const TimelineMetrics& metrics() const { return metrics_; }
    const TimelineStyle& style() const { return style_; }
    // The geometry now; `visibleX` is where the visible rows begin.
    TimelineGeometry timelineGeometry() const;
    // The rows, rebuilt if anything changed them since the last call.
    const TimelineRows& rows() const;
    // The scrollable size: duration × unit width + 50, and the rows.
    QSize timeAxisSize() const;
    QSize sizeHint() const override { return timeAxisSize(); }

    // Drawing, called by the thin views with their own painter.
    void drawClipInView(QPainter& painter, QWidget* clipView, const QRect& rect);
    void drawRulerInView(QPainter& painter, VLTimelineRulerView* ruler, const QRect& rect);

    // The rulers hand over their mouse with a point in their own terms.
    void mouseDownInRuler(QMouseEvent* event, VLTimelineRulerView* ruler, const QPointF& point);
    void mouseDraggedInRuler(QMouseEvent* event, VLTimelineRulerView* ruler, const QPointF& point);
    void mouseUpInRuler(QMouseEvent* event, VLTimelineRulerView* ruler, const QPointF& point);
    void mouseMovedInRuler(QMouseEvent* event, VLTimelineRulerView* ruler, const QPointF& point);
    void mouseExitedRuler(VLTimelineRulerView* ruler);

    // Keys and controls.
    void togglePlay();
    // The transport's segments: 0 beginning, 1 previous frame, 2 play, 3
    // next frame, 4 end.
    void controlAction(int segment);
    // Deletes the selected keyframes; with none selected the document
    // deletes the selected components instead. Backspace does the same.
    void deleteForward();
    bool hasSelectedKeyframes() const;
    std::optional<double> nextStopFrame() const;
    std::optional<double> previousStopFrame() const;
    void addStopFrame();
    void removeStopFrame();
    void setTime(double t, bool updateAttributes);

    // State for tests and the thin views.
    QRectF draggingKeyFrameRect() const { return gesture_.marquee; }
    bool isDragging() const { return gesture_.active; }
    bool markerSelected() const { return ruler_.markerSelected; }
    model::StopFrame* draggingStopFrame() const;
    int componentMouseOverRow() const { return mouseOverRow_; }
    // The cursor of a clip part: edges resize, the clip moves.
    static Qt::CursorShape cursorForDraggingPart(int part);

Q_SIGNALS:
    void zoomChanged(double value);
    void editorTimepointChanged(double time);
    void playModeChanged(bool playing);

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    bool event(QEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    // One press on the rows, from mouse-down to mouse-up.
    struct Gesture {
        bool active = false;
        QPointF clickedPoint;           // view coordinates
        double lastX = 0;               // for the movement of each event
        bool firstEventPending = false;  // the selection step has not run yet
        bool draggingComponent = false;
        int part = kPartNone;
        QPointer<model::QuartzComponent> component;  // the clip pressed
        bool draggingKeyFrames = false;
        double deltaX = 0;              // pixels short of a frame
        QRectF marquee;
        SavedKeyframeSelection savedSelection;
        std::unique_ptr<model::UndoGroup> undoGroup;
    };
    // One press in the time ruler.
    struct RulerGesture {
        bool active = false;
        bool markerSelected = false;
        QPointer<model::StopFrame> stopFrame;
        std::unique_ptr<model::UndoGroup> undoGroup;
    };

    // Observation (VLTimelineView.cpp).
    void observeComposition();
    void observeComponents();
    void rowsChanged();
    void scheduleSizeUpdate();
    void updateSize();
    void updateTimelineRuler();
    void updateComponentsRuler();
    void updateClipView();
    model::UndoManager* undoManager() const;
    TimelineScene scene(const TimelineGeometry& geometry, const TimelineRows& rows) const;

    // Rows (VLTimelineViewEditing.cpp).
    bool dragCheckFirstEvent(Qt::KeyboardModifiers modifiers);
    void selectionStep(const QPointF& point, Qt::KeyboardModifiers modifiers);
    double draggingDeltaTimeForEvent(double x);
    void updateDraggingMarquee(const QPointF& point, Qt::KeyboardModifiers modifiers);
    void dragClip(double delta);
    void dragKeyframes(double delta);
    void endGesture();
    void cancelGesture();
    void clearComponentSelection();
    void clearKeyFrameSelection();

    // Rulers (VLTimelineViewRulers.cpp).
    void updateTimelineRulerPoint(double x, bool waitForSecond);
    void nameColumnMouseUp(QMouseEvent* event, const QPointF& point);
    void keyframeButtonAction(model::Attribute* attribute, int action);
    int nameColumnRowAt(const QPointF& point) const;
    void endRulerGesture();

    // The time tooltip.
    void beginTooltip();
    // At x of the rows, above the pressed row, or above the time ruler
    // while a stop frame is dragged there.
    void showTooltip(double time, double x, bool visible = true);
    void finishTooltip();

    document::CompositionDocument* document_ = nullptr;
    CommandsSource commands_;
    QPointer<VLTimelineScrollView> scrollView_;
    QMetaObject::Connection storeConnection_;
    TimelineMetrics metrics_;
    TimelineStyle style_;
    VLTimelineControlButtons stopFrameButtons_;
    VLTimelineControlButtons keyframeButtons_;
    QPixmap discloseOpen_, discloseClosed_;
    double zoom_ = 0.1;
    mutable TimelineRows rows_;
    mutable bool rowsDirty_ = true;
    bool sizeUpdatePosted_ = false;
    int mouseOverRow_ = -1;
    int lastSelected_ = -1;
    Gesture gesture_;
    RulerGesture ruler_;
};

}  // namespace timeline
