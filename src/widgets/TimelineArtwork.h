#pragma once
// The timeline's transport and zoom buttons, drawn in code like the
// toolbar's icons: "ZoomIn", "ZoomOut", "Start", "FrameBack", "Play",
// "Stop", "FrameForwards", "End"; the rows' "DiscloseClosed" and
// "DiscloseOpen"; and the control buttons' "PreviousKeyframe",
// "NextKeyframe", "AddKeyframe", "RemoveKeyframe", "AddStopFrame",
// "RemoveStopFrame" (hollow: add one, filled: there is one to remove).

#include <QIcon>
#include <QString>
#include <QStringList>

namespace widgets {

class TimelineArtwork {
public:
    static QStringList names();
    // A null icon when there is no drawing of that name.
    static QIcon timelineImageWithName(const QString& name);
};

}  // namespace widgets
