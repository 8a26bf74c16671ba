#pragma once
// The timeline as the document window places it: the scroll view with the
// rows and rulers, and under it the five-segment transport control, the
// timecode field of the playhead and the zoom slider with its two buttons.

#include "timeline/VLTimelineView.h"

#include <QWidget>

class QLineEdit;
class QSlider;
class QToolButton;

namespace document {
class CompositionDocument;
}
namespace model {
class Composition;
class QuartzComponent;
}  // namespace model
namespace widgets {
class VLSegmentedControl;
}

namespace timeline {

class VLTimelineScrollView;

// Opens in the timeline the front-most component that has keyframes, so a
// document opens with animation in view without a large template's rows
// flooding the timeline. Answers it, or null. `expanded` is editor state
// and is not stored; docs/decisions.md says why.
model::QuartzComponent* expandFirstAnimatedComponent(model::Composition& composition);

class TimelinePanel : public QWidget {
    Q_OBJECT
public:
    explicit TimelinePanel(QWidget* parent = nullptr);

    // Shows a document (null detaches) with its first animated component open.
    void setDocument(document::CompositionDocument* document, VLTimelineView::CommandsSource commands = {});

    VLTimelineView* timelineView() const { return view_; }
    VLTimelineScrollView* scrollView() const { return scrollView_; }
    widgets::VLSegmentedControl* controlsControl() const { return controls_; }
    QLineEdit* timecodeField() const { return timecode_; }
    QSlider* zoomSlider() const { return zoom_; }

    QSize sizeHint() const override { return QSize(600, 300); }

private:
    void updateTimecode(double time);
    void timecodeEdited();
    void zoomFromSlider(int value);
    void updatePlayButton(bool playing);

    VLTimelineView* view_;
    VLTimelineScrollView* scrollView_;
    widgets::VLSegmentedControl* controls_;
    QLineEdit* timecode_;
    QSlider* zoom_;
};

}  // namespace timeline
