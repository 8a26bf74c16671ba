#pragma once
// The headless player: an exported template in a renderer of its own,
// played step by step as a playout system plays it. A step is one field of
// an interlaced mode (woven into the frame in the mode's field order),
// otherwise one frame. Who calls renderStep decides the clock: the wall
// clock on screen (RealTimePlayback), exact steps for files (PlayoutRender).
//
// Triggers follow the published ports of the export: "waitingForTrigger"
// tells whether the template holds at a stop frame, "trigger" releases it
// on its rising edge, "active" turns false when the template has played
// to its end. A template without stop frames has neither trigger port and
// ignores triggers.

#include "playout/PlayoutTemplate.h"

#include <QImage>
#include <QObject>
#include <QStringList>

#include <memory>
#include <optional>

namespace runtime {
class Backend;
class RenderTarget;
class Renderer;
}  // namespace runtime

namespace document {
class UnattendedTrigger;
}

namespace playout {

struct PlayerOptions {
    // "clear_enable": off for keyed playout, where what is not drawn stays
    // transparent; each step then starts from a transparent picture.
    bool clear = true;
    // The picture size; empty for the composition's own.
    QSize size;
    // Nobody at the trigger: every stop frame is released after one step,
    // as the thumbnail is made.
    bool unattended = false;
};

class Player : public QObject {
    Q_OBJECT
public:
    // How long the trigger button holds the trigger.
    static constexpr double kTriggerPulse = 0.1;

    explicit Player(QObject* parent = nullptr);
    ~Player() override;

    void load(PlayoutTemplate played, const PlayerOptions& options = {});
    void unload();
    bool isLoaded() const { return renderer_ != nullptr; }
    const PlayoutTemplate& playoutTemplate() const { return template_; }
    const VideoTiming& timing() const { return template_.timing; }
    QSize frameSize() const { return size_; }
    runtime::Renderer* renderer() const { return renderer_.get(); }
    // Published input keys that contain "videoInput".
    QStringList videoInputKeys() const;

    // Stepping ---------------------------------------------------------
    // Renders the step at its time with the playing event values, then
    // weaves it into frame(). A step before the next one starts over.
    void renderStep(qint64 step);
    qint64 nextStep() const { return nextStep_; }
    // Every step before `time`, then one step at exactly `time`: the
    // template as it stands at that moment, having played up to it.
    void playTo(double time);
    // Renders the frame's steps (those before it first, if needed) and
    // answers the woven frame.
    const QImage& renderFrame(qint64 frame);
    double time() const { return time_; }
    // The picture to show: the last step, or the last two fields woven.
    const QImage& frame() const { return interlacedFrame_.isNull() ? stepImage_ : interlacedFrame_; }
    // The whole picture of the last step, fields not woven.
    const QImage& stepImage() const { return stepImage_; }

    // Triggers -----------------------------------------------------------
    bool hasTrigger() const;
    // As of the last step; false for a template without the output.
    bool isWaitingForTrigger() const;
    bool isActive() const { return active_; }
    // Sets "trigger" only while the template waits; answers whether it did.
    bool setTrigger();
    // Sets "trigger" to false whenever the template has it; a trigger set
    // since the last step is released only after the next step has seen it.
    void releaseTrigger();
    // setTrigger, released kTriggerPulse seconds of play later.
    bool sendTrigger();
    // From the beginning: patch state forgotten, trigger released, the
    // next step is step 0.
    void reload();
    // Whether every stop frame is released after one step (PlayerOptions).
    void setUnattended(bool unattended);
    bool isUnattended() const { return unattended_ != nullptr; }

Q_SIGNALS:
    void activeChanged(bool active);
    void waitingForTriggerChanged(bool waiting);

private:
    void observeOutputs();

    PlayoutTemplate template_;
    PlayerOptions options_;
    QSize size_;
    std::unique_ptr<runtime::Renderer> renderer_;
    std::unique_ptr<runtime::Backend> backend_;
    std::unique_ptr<runtime::RenderTarget> target_;
    std::unique_ptr<document::UnattendedTrigger> unattended_;
    QImage stepImage_;         // what target_ paints into
    QImage interlacedFrame_;   // null for progressive modes
    qint64 nextStep_ = 0;
    double time_ = 0;
    std::optional<double> releaseAt_;
    bool triggerUnseen_ = false;     // set since the last step
    bool releaseAfterStep_ = false;  // released before any step saw it
    bool active_ = true;
    bool waiting_ = false;
};

}  // namespace playout
