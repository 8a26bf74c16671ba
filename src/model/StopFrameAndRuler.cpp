#include "model/Composition.h"
#include "model/Ruler.h"
#include "model/StopFrame.h"

namespace model {

namespace {
// Changes of a stop frame or ruler are also announced as a change of the
// owner's list, so views that watch the list redraw.
template <class Change> void announcingOwnerList(ManagedObject* owner, const QString& list, Change change)
{
    if (owner) owner->willChangeValueForKey(list);
    change();
    if (owner) owner->didChangeValueForKey(list);
}
}  // namespace

const EntityDescription& StopFrame::entityDescription()
{
    static const EntityDescription entity(
        QStringLiteral("StopFrame"),
        {{QStringLiteral("timepoint"), 0.0}, {QStringLiteral("triggerInformation"), QString()}},
        {{QStringLiteral("composition"), QStringLiteral("stopFrames"), false, DeleteRule::Nullify}});
    return entity;
}

Composition* StopFrame::composition() const { return static_cast<Composition*>(toOne(QStringLiteral("composition"))); }

void StopFrame::setTimepoint(double t)
{
    announcingOwnerList(composition(), QStringLiteral("stopFrames"), [&] { setStoredValue(QStringLiteral("timepoint"), t); });
}

void StopFrame::setTriggerInformation(const QString& name)
{
    announcingOwnerList(composition(), QStringLiteral("stopFrames"),
                        [&] { setStoredValue(QStringLiteral("triggerInformation"), name); });
}

bool StopFrame::isTimepoint(double t) const { return Composition::compareTimeInterval(t, timepoint()) == 0; }

QVariantMap StopFrame::dictionary() const
{
    const QString name = triggerInformation();
    return {{QStringLiteral("name"), name.isEmpty() ? QStringLiteral("Stopframe") : name},
            {QStringLiteral("time"), timepoint()}};
}

const EntityDescription& Ruler::entityDescription()
{
    static const EntityDescription entity(
        QStringLiteral("Ruler"), {{QStringLiteral("position"), 0.0f}, {QStringLiteral("horizontal"), false}},
        {{QStringLiteral("composition"), QStringLiteral("rulers"), false, DeleteRule::Nullify}});
    return entity;
}

Composition* Ruler::composition() const { return static_cast<Composition*>(toOne(QStringLiteral("composition"))); }

void Ruler::setPosition(double position)
{
    announcingOwnerList(composition(), QStringLiteral("rulers"),
                        [&] { setStoredValue(QStringLiteral("position"), float(position)); });
}

void Ruler::setHorizontal(bool horizontal)
{
    announcingOwnerList(composition(), QStringLiteral("rulers"), [&] { setStoredValue(QStringLiteral("horizontal"), horizontal); });
}

}  // namespace model
