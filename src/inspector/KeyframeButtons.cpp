#include "inspector/KeyframeButtons.h"

#include "model/Attribute.h"
#include "model/Composition.h"
#include "model/KeyframeValues.h"
#include "model/NotificationHelper.h"
#include "model/UndoManager.h"
#include "widgets/NamedImages.h"

#include <QHBoxLayout>
#include <QToolButton>

namespace inspector {

namespace {

QToolButton* button(QWidget* parent, const char* image, const QString& tip, const QString& name)
{
    auto* b = new QToolButton(parent);
    b->setIcon(widgets::NamedImages::imageNamed(QLatin1String(image)));
    b->setIconSize(QSize(12, 12));
    b->setAutoRaise(true);
    b->setFixedSize(18, 18);
    b->setToolTip(tip);
    b->setObjectName(name);
    return b;
}

}  // namespace

KeyframeButtons::KeyframeButtons(model::Composition& composition, model::UndoManager& undo,
                                 const std::vector<model::Attribute*>& attributes, QWidget* parent)
    : QWidget(parent), composition_(&composition), undo_(undo)
{
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    previous_ = button(this, "TimelinePreviousKeyframe", QStringLiteral("Previous Keyframe"), QStringLiteral("previousKeyframe"));
    key_ = button(this, "TimelineAddKeyframe", QStringLiteral("Add Keyframe"), QStringLiteral("toggleKeyframe"));
    next_ = button(this, "TimelineNextKeyframe", QStringLiteral("Next Keyframe"), QStringLiteral("nextKeyframe"));
    layout->addWidget(previous_);
    layout->addWidget(key_);
    layout->addWidget(next_);
    connect(previous_, &QToolButton::clicked, this, &KeyframeButtons::goToPrevious);
    connect(key_, &QToolButton::clicked, this, &KeyframeButtons::toggleKeyframe);
    connect(next_, &QToolButton::clicked, this, &KeyframeButtons::goToNext);

    const auto changed = [this](model::ManagedObject*, const QString&) { updateFlags(); };
    for (model::Attribute* a : attributes) {
        attributes_.emplace_back(a);
        model::NotificationHelper::addObserver(this, a, QStringLiteral("values"), changed);
    }
    model::NotificationHelper::addObserver(this, &composition, QStringLiteral("editorTimepoint"), changed);
    updateFlags();
}

KeyframeButtons::~KeyframeButtons() { model::NotificationHelper::removeObserver(this); }

std::vector<model::Attribute*> KeyframeButtons::liveAttributes() const
{
    std::vector<model::Attribute*> live;
    for (const QPointer<model::Attribute>& a : attributes_)
        if (a && !a->isDeleted()) live.push_back(a);
    return live;
}

bool KeyframeButtons::keyframeAtPlayhead() const
{
    if (!composition_) return false;
    const double now = composition_->editorTimepoint();
    for (model::Attribute* a : liveAttributes())
        if (a->animateable() && a->hasKeyframeAtTimePoint(now)) return true;
    return false;
}

void KeyframeButtons::updateFlags()
{
    if (!composition_) return;
    const double now = composition_->editorTimepoint();
    bool before = false, after = false;
    for (model::Attribute* a : liveAttributes()) {
        if (!a->animateable()) continue;
        before = before || a->previousTimePoint(now) != model::kConstantTimepoint;
        after = after || a->nextTimePoint(now) != model::kConstantTimepoint;
    }
    previous_->setEnabled(before);
    next_->setEnabled(after);
    const bool keyed = keyframeAtPlayhead();
    key_->setIcon(widgets::NamedImages::imageNamed(keyed ? QStringLiteral("TimelineRemoveKeyframe")
                                                         : QStringLiteral("TimelineAddKeyframe")));
    key_->setToolTip(keyed ? QStringLiteral("Remove Keyframe") : QStringLiteral("Add Keyframe"));
    key_->setProperty("keyframed", keyed);
}

void KeyframeButtons::goToPrevious()
{
    if (!composition_) return;
    const double now = composition_->editorTimepoint();
    double best = model::kConstantTimepoint;
    for (model::Attribute* a : liveAttributes()) {
        if (!a->animateable()) continue;
        const double t = a->previousTimePoint(now);
        if (t != model::kConstantTimepoint && (best == model::kConstantTimepoint || t > best)) best = t;
    }
    if (best != model::kConstantTimepoint) composition_->setEditorTimepoint(best);
}

void KeyframeButtons::goToNext()
{
    if (!composition_) return;
    const double now = composition_->editorTimepoint();
    double best = model::kConstantTimepoint;
    for (model::Attribute* a : liveAttributes()) {
        if (!a->animateable()) continue;
        const double t = a->nextTimePoint(now);
        if (t != model::kConstantTimepoint && (best == model::kConstantTimepoint || t < best)) best = t;
    }
    if (best != model::kConstantTimepoint) composition_->setEditorTimepoint(best);
}

void KeyframeButtons::toggleKeyframe()
{
    if (!composition_) return;
    const double now = composition_->editorTimepoint();
    const bool remove = keyframeAtPlayhead();
    model::UndoGroup group(undo_, remove ? QStringLiteral("Remove Keyframe") : QStringLiteral("Add Keyframe"));
    for (model::Attribute* a : liveAttributes()) {
        if (remove) {
            if (a->animateable() && a->hasKeyframeAtTimePoint(now)) a->deleteTimepoint(now);
        } else if (a->animationPossible()) {
            // The keyframe holds what the attribute shows there now; the
            // first one also turns animation on.
            a->addTimepoint(now, a->valueAtTime(now));
        }
    }
    updateFlags();
}

}  // namespace inspector

