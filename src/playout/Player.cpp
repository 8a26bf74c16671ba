#include "playout/Player.h"

#include "document/CompositionExport.h"
#include "document/EventArguments.h"
#include "document/UnattendedTrigger.h"
#include "model/QuartzComponent.h"
#include "playout/FieldWeaving.h"
#include "runtime/BackendFactory.h"
#include "runtime/Renderer.h"

#include <cmath>

namespace playout {

using document::CompositionExport;

namespace {
// A pulse ends on the first step at or after its end; a time a rounding
// error short of it counts as reached.
constexpr double kTimeSlack = 1e-9;
}  // namespace

Player::Player(QObject* parent) : QObject(parent) {}

Player::~Player() = default;

void Player::load(PlayoutTemplate played, const PlayerOptions& options)
{
    unload();
    template_ = std::move(played);
    options_ = options;
    if (!template_.composition) return;
    size_ = options.size.isEmpty() ? template_.size : options.size;
    size_ = size_.expandedTo(QSize(1, 1));
    renderer_ = std::make_unique<runtime::Renderer>(template_.composition, size_);
    if (!template_.compositionFile.isEmpty())
        renderer_->userInfo().insert(model::QuartzComponent::documentURLKey(), template_.compositionFile);
    if (!options.clear) renderer_->setInputValue(CompositionExport::clearEnableKey(), false);
    stepImage_ = QImage(size_, QImage::Format_ARGB32_Premultiplied);
    stepImage_.fill(Qt::transparent);
    if (template_.timing.interlaced()) interlacedFrame_ = stepImage_.copy();
    backend_ = runtime::makeBackend().backend;
    target_ = backend_->wrapImage(&stepImage_);
    if (options.unattended) unattended_ = std::make_unique<document::UnattendedTrigger>(*renderer_);
    nextStep_ = 0;
    time_ = 0;
    active_ = true;
    waiting_ = false;
}

void Player::unload()
{
    // The target paints into stepImage_ and must go before it changes.
    target_.reset();
    unattended_.reset();
    renderer_.reset();
    backend_.reset();
    template_ = {};
    stepImage_ = QImage();
    interlacedFrame_ = QImage();
    releaseAt_.reset();
    triggerUnseen_ = false;
    releaseAfterStep_ = false;
    nextStep_ = 0;
    time_ = 0;
}

QStringList Player::videoInputKeys() const
{
    QStringList keys;
    if (!renderer_) return keys;
    for (const QString& key : renderer_->inputKeys())
        if (key.contains(QLatin1String("videoInput"))) keys << key;
    return keys;
}

void Player::renderStep(qint64 step)
{
    if (!renderer_) return;
    if (step < nextStep_) reload();
    const double time = template_.timing.stepTime(step);
    if (releaseAt_ && time + kTimeSlack >= *releaseAt_) {
        releaseTrigger();
        releaseAt_.reset();
    }
    // Without the clear patch nothing wipes the last picture: keyed output
    // starts every step from transparent, as the playout mixer sees it.
    if (!options_.clear) target_->clear(runtime::Color::transparentBlack());
    renderer_->render(time, *target_, document::eventArgumentsAtTime(time, true));
    triggerUnseen_ = false;
    if (releaseAfterStep_) {
        releaseAfterStep_ = false;
        releaseTrigger();
    }
    if (template_.timing.interlaced()) weaveField(stepImage_, interlacedFrame_, template_.timing.fieldParity(step));
    time_ = time;
    nextStep_ = step + 1;
    if (unattended_) unattended_->afterStep();
    observeOutputs();
}

void Player::playTo(double time)
{
    if (!renderer_) return;
    const qint64 last = template_.timing.stepAtOrBefore(time);
    if (last < nextStep_) reload();
    while (nextStep_ <= last) renderStep(nextStep_);
    // A time between two steps is rendered once more at itself, as the
    // template stands there.
    if (std::abs(template_.timing.stepTime(last) - time) > 1e-6) {
        if (!options_.clear) target_->clear(runtime::Color::transparentBlack());
        renderer_->render(time, *target_, document::eventArgumentsAtTime(time, true));
        time_ = time;
        observeOutputs();
    }
}

const QImage& Player::renderFrame(qint64 frame)
{
    const qint64 first = frame * template_.timing.stepsPerFrame();
    const qint64 last = first + template_.timing.stepsPerFrame() - 1;
    if (first < nextStep_) reload();
    while (renderer_ && nextStep_ <= last) renderStep(nextStep_);
    return this->frame();
}

bool Player::hasTrigger() const
{
    return renderer_ && renderer_->composition().input(CompositionExport::triggerKey());
}

bool Player::isWaitingForTrigger() const
{
    return waiting_;
}

bool Player::setTrigger()
{
    if (!isWaitingForTrigger()) return false;
    renderer_->setInputValue(CompositionExport::triggerKey(), true);
    triggerUnseen_ = true;
    releaseAfterStep_ = false;
    return true;
}

void Player::releaseTrigger()
{
    // A tap of the space bar quicker than a field would otherwise come and
    // go between two steps, and the template would never see it.
    if (triggerUnseen_) {
        releaseAfterStep_ = true;
        return;
    }
    if (hasTrigger()) renderer_->setInputValue(CompositionExport::triggerKey(), false);
}

bool Player::sendTrigger()
{
    if (!setTrigger()) return false;
    releaseAt_ = time_ + kTriggerPulse;
    return true;
}

void Player::reload()
{
    if (!renderer_) return;
    renderer_->reset();
    triggerUnseen_ = false;
    releaseAfterStep_ = false;
    releaseTrigger();
    releaseAt_.reset();
    if (unattended_) unattended_->reset();
    nextStep_ = 0;
    time_ = 0;
    if (!active_) {
        active_ = true;
        Q_EMIT activeChanged(true);
    }
    if (waiting_) {
        waiting_ = false;
        Q_EMIT waitingForTriggerChanged(false);
    }
}

void Player::setUnattended(bool unattended)
{
    options_.unattended = unattended;
    if (!unattended)
        unattended_.reset();
    else if (renderer_ && !unattended_)
        unattended_ = std::make_unique<document::UnattendedTrigger>(*renderer_);
}

void Player::observeOutputs()
{
    const QVariant activeValue = renderer_->outputValue(CompositionExport::activeKey());
    const bool active = activeValue.isValid() ? activeValue.toBool() : true;
    const QString waitingKey = CompositionExport::waitingForTriggerKey();
    const bool waiting =
        renderer_->composition().output(waitingKey) && renderer_->outputValue(waitingKey).toBool();
    if (active != active_) {
        active_ = active;
        Q_EMIT activeChanged(active);
    }
    if (waiting != waiting_) {
        waiting_ = waiting;
        Q_EMIT waitingForTriggerChanged(waiting);
    }
}

}  // namespace playout
