#pragma once
// The editor's menu commands on one composition, free of any window: the
// transport, stop frames and the poster frame, stacking order, visibility
// and selection, alignment and distribution, and the maintenance commands.
// The document owns one, calls it from its menu and shows the alerts it
// answers. Every command that changes what the document stores is one undo
// step; the playhead, playback and the selection are editor state and leave
// no step behind.

#include "document/Alert.h"

#include <QList>
#include <QStringList>
#include <QVariantMap>

#include <functional>
#include <optional>
#include <utility>

namespace model {
class Composition;
class UndoManager;
}  // namespace model

namespace document {

// The modes of doAlignComponents: 0–5 line edges or centres up with a
// reference, 6–11 spread the components evenly between the outer two.
// Canvas coordinates have y up, so "top" is the greater y.
enum AlignMode : int {
    kAlignLeft = 0,
    kAlignCenterH = 1,
    kAlignRight = 2,
    kAlignTop = 3,
    kAlignCenterV = 4,
    kAlignBottom = 5,
    kDistributeLeft = 6,
    kDistributeCenterH = 7,
    kDistributeRight = 8,
    kDistributeTop = 9,
    kDistributeCenterV = 10,
    kDistributeBottom = 11,
};

class DocumentCommands {
public:
    // Keeps the copy orders {"source", "dest"} for the next save and saves
    // at once; false when the save failed (the document reports that itself).
    using SaveWithResources = std::function<bool(const QList<QVariantMap>& copies)>;

    explicit DocumentCommands(model::Composition& composition, SaveWithResources saveWithResources = {});

    model::Composition& composition() const { return composition_; }
    void setSaveWithResources(SaveWithResources save) { saveWithResources_ = std::move(save); }

    // Transport.
    void jumpToBeginning();
    void jumpToEnd();
    void play();
    // Next goes to the nearest keyframe after the playhead among the selected
    // components and stays put when there is none; previous goes to the
    // latest one before it, or to 0 (also with nothing selected).
    void jumpToNextKeyframe();
    void jumpToPreviousKeyframe();
    void jumpToNextFrame();
    void jumpToPreviousFrame();
    // The space bar (a Qt::Key) toggles playback; true when the key was used.
    bool keyDown(int key);

    // Stop frames and the poster frame, at the playhead.
    void addStopFrame();
    void toggleStopframe();
    void togglePosterframe();

    // Stacking order, visibility and selection, forwarded to the composition.
    void sizeToFit();
    void sendForward();
    void sendBackward();
    void bringToFront();
    void sendToBack();
    // The alert to show unless exactly two components are selected.
    std::optional<Alert> swapSelected();
    void soloComponents();
    void showAllComponents();
    void selectAll();
    void deleteForward();
    void deleteBackward();

    // `mode` is an AlignMode; other values do nothing. With the anchor flag
    // the first selected component is the reference and stays where it is.
    void doAlignComponents(int mode, bool anchorToFirstSelected);

    // Maintenance. Each answers the alert that reports its result; the last
    // two refuse (with a "Save Document" alert) until the document has a
    // file location.
    Alert upgradeComposition();
    Alert makePathsRelative();
    Alert embedResources();
    bool hasFileLocation() const;

    // The commands by their menu names, for scripting: the names of
    // performCommand, in the order the menus list them.
    static const QStringList& commandNames();
    // Runs the named command; "alignComponents" takes `mode` and `anchor`.
    // False for an unknown name. `alert` receives the command's alert, if any.
    bool performCommand(const QString& name, int mode = 0, bool anchor = false,
                        std::optional<Alert>* alert = nullptr);

private:
    model::UndoManager& undoManager() const;
    void stepFrame(int direction);
    void align(int mode, bool anchorToFirstSelected);
    void distribute(int mode);

    model::Composition& composition_;
    SaveWithResources saveWithResources_;
};

}  // namespace document
