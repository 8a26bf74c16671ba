#include "model/Attribute.h"

#include "model/Composition.h"
#include "model/ObjectStore.h"
#include "model/QuartzComponent.h"

#include <QColor>

#include <algorithm>

namespace model {

namespace {

using KeyIterator = KeyframeValues::const_iterator;

// Keys are single-precision and times double: the map is searched with the
// rounded time, then the answer is corrected by at most a key either way.
KeyIterator firstKeyNotBefore(const KeyframeValues& v, double t)
{
    auto it = v.lowerBound(roundedTimepoint(t));
    while (it != v.constBegin() && double(std::prev(it).key()) >= t) --it;
    while (it != v.constEnd() && double(it.key()) < t) ++it;
    return it;
}

KeyIterator firstKeyAfter(const KeyframeValues& v, double t)
{
    auto it = v.upperBound(roundedTimepoint(t));
    while (it != v.constBegin() && double(std::prev(it).key()) > t) --it;
    while (it != v.constEnd() && double(it.key()) <= t) ++it;
    return it;
}

// The first key at t on the 1/100 s grain of time comparisons.
KeyIterator keyAtGrain(const KeyframeValues& v, double t)
{
    for (auto it = firstKeyNotBefore(v, t - 0.02); it != v.constEnd() && double(it.key()) <= t + 0.02; ++it)
        if (Composition::compareTimeInterval(t, it.key()) == 0) return it;
    return v.constEnd();
}

}  // namespace

const EntityDescription& Attribute::entityDescription()
{
    static const EntityDescription entity(
        QStringLiteral("Attribute"),
        {
            {QStringLiteral("key"), QString()},
            {QStringLiteral("label"), QString()},
            {QStringLiteral("quartzAttribute"), true},
            {QStringLiteral("animateable"), false},
            {QStringLiteral("permissionToChange"), false},
            {QStringLiteral("type"), int(kTypeString)},
            {QStringLiteral("possibleValues"), QStringList()},
            {QStringLiteral("values"), QVariant::fromValue(KeyframeValues())},
        },
        {{QStringLiteral("component"), QStringLiteral("attributes"), false, DeleteRule::Nullify}},
        {{QStringLiteral("currentValue"), {QStringLiteral("values"), QStringLiteral("animateable")}},
         {QStringLiteral("title"), {QStringLiteral("label")}}});
    return entity;
}

Attribute::Attribute(ObjectStore* store) : ManagedObject(store, entityDescription()) {}

int Attribute::valuesIndex()
{
    static const int index = entityDescription().attributeIndex(QStringLiteral("values"));
    return index;
}

int Attribute::animateableIndex()
{
    static const int index = entityDescription().attributeIndex(QStringLiteral("animateable"));
    return index;
}

int Attribute::typeIndex()
{
    static const int index = entityDescription().attributeIndex(QStringLiteral("type"));
    return index;
}

const KeyframeValues& Attribute::keyframes() const
{
    static const KeyframeValues none;
    const QVariant& stored = storedValueAt(valuesIndex());
    if (stored.metaType() != QMetaType::fromType<KeyframeValues>()) return none;
    return *static_cast<const KeyframeValues*>(stored.constData());
}

QuartzComponent* Attribute::component() const
{
    return static_cast<QuartzComponent*>(toOne(QStringLiteral("component")));
}

void Attribute::setValues(const KeyframeValues& values)
{
    setStoredValue(QStringLiteral("values"), QVariant::fromValue(values));
}

double Attribute::renderTimepoint() const
{
    const QuartzComponent* owner = component();
    return owner ? owner->renderTimepoint() : 0.0;
}

void Attribute::storedValueDidChange(const QString& key)
{
    // Every change of the value, undo and redo included, reaches the picture.
    if (key == QLatin1String("values") || key == QLatin1String("animateable")) pushValueToRenderer();
}

void Attribute::commonInit()
{
    // Fonts are never animated, even when a stored document says so.
    if (animateable() && type() == kTypeFont) {
        QVariant v = currentValue();
        const KeyframeValues stored = values();
        if (!v.isValid() && !stored.isEmpty()) v = stored.first();
        setPrimitiveValue(QStringLiteral("animateable"), false);
        if (v.isValid()) setPrimitiveValue(QStringLiteral("values"), QVariant::fromValue(KeyframeValues{{roundedTimepoint(kConstantTimepoint), v}}));
    }
}

Attribute* Attribute::create(ObjectStore* store, const QString& key, const QString& label, int type, const QVariant& value)
{
    Attribute* a = store->insertNewObject<Attribute>();
    a->setKey(key);
    a->setLabel(label);
    a->setType(type);
    a->setDefaultCurrentValue(value);
    a->commonInit();
    return a;
}

Attribute* Attribute::createFromDictionary(ObjectStore* store, const QVariantMap& dictionary)
{
    Attribute* a = store->insertNewObject<Attribute>();
    for (auto it = dictionary.begin(); it != dictionary.end(); ++it) {
        if (it.key() == QLatin1String("category"))
            a->category_ = it.value().toString();
        else if (it.key() == QLatin1String("position"))
            a->position_ = it.value().toULongLong();
        else if (a->entity().attributeIndex(it.key()) >= 0 && it.key() != QLatin1String("values"))
            a->setStoredValue(it.key(), it.value());
    }
    a->setStoredValue(QStringLiteral("values"), dictionary.value(QStringLiteral("values")));
    a->commonInit();
    return a;
}

bool Attribute::animationPossible() const
{
    const QString k = key();
    if (k == QLatin1String("marginX") || k == QLatin1String("marginY") || k == QLatin1String("visibleInCompositionEditor"))
        return false;
    return typeInfo().animates;
}

void Attribute::setAnimateable(bool on)
{
    if (on == animateable()) return;
    const QVariant shown = currentValue();
    setStoredValue(QStringLiteral("animateable"), on);
    setValues(KeyframeValues());
    QuartzComponent* owner = component();
    if (on) {
        if (owner) owner->attributeValueChanged(this);
        // An animated value is never the operator's to change.
        setPermissionToChange(false);
    } else {
        setDefaultCurrentValue(shown);
        if (owner) owner->attributeValueChanged(this);
    }
}

QVariant Attribute::currentValue() const { return valueAtTime(renderTimepoint()); }

QVariant Attribute::valueAtTime(double t) const
{
    const KeyframeValues& v = keyframes();
    if (!animateable()) return v.value(roundedTimepoint(kConstantTimepoint));
    if (auto exact = v.constFind(roundedTimepoint(t)); exact != v.constEnd() && exact.value().isValid()) return exact.value();
    const auto next = firstKeyAfter(v, t);
    const auto previous = firstKeyNotBefore(v, t);
    const bool hasPrevious = previous != v.constBegin();
    const bool hasNext = next != v.constEnd() && double(next.key()) < 1e11;
    if (!hasPrevious) return hasNext ? next.value() : QVariant();  // before the first keyframe: its value
    const auto before = std::prev(previous);
    if (hasNext) return interpolateBetween(before.value(), before.key(), next.value(), next.key(), t);
    return before.value();  // after the last keyframe: held
}

void Attribute::setCurrentValue(const QVariant& value)
{
    QuartzComponent* owner = component();
    if (animateable()) {
        setValueForTimepoint(value, renderTimepoint());
        if (owner) owner->attributeValueChanged(this);
    } else {
        setDefaultCurrentValue(value);
    }
}

void Attribute::setValueForTimepoint(const QVariant& value, double t)
{
    KeyframeValues v = values();
    v.insert(roundedTimepoint(t), value);
    setValues(v);
}

QVariant Attribute::valueForTimepoint(double t) const
{
    const KeyframeValues v = values();
    return v.value(roundedTimepoint(t));
}

QVariant Attribute::marginAdjustedValueForTimepoint(double t) const
{
    const QVariant v = valueForTimepoint(t);
    const QuartzComponent* owner = component();
    if (type() != kTypeNumber || !owner || !v.isValid()) return v;
    if (key() == QLatin1String("originX") && owner->marginX() > 0) return QVariant(float(v.toDouble() - owner->marginX()));
    if (key() == QLatin1String("originY") && owner->marginY() > 0) return QVariant(float(v.toDouble() - owner->marginY()));
    return v;
}

double Attribute::interpolateFloat(double a, double t0, double b, double t1, double t)
{
    return a + (b - a) / (t1 - t0) * (t - t0);
}

QVariant Attribute::interpolateValue(double startTime, double endTime, double time) const
{
    const float t0 = roundedTimepoint(startTime), t1 = roundedTimepoint(endTime);
    return interpolateBetween(valueForTimepoint(t0), t0, valueForTimepoint(t1), t1, time);
}

QVariant Attribute::interpolateBetween(const QVariant& a, float t0, const QVariant& b, float t1, double time) const
{
    if (!a.isValid() || !b.isValid()) return {};
    switch (typeInfo().interpolation) {
    case Interpolation::Linear: return QVariant(float(interpolateFloat(a.toFloat(), t0, b.toFloat(), t1, time)));
    case Interpolation::LinearPerChannel: {
        const QColor ca = a.value<QColor>().toRgb(), cb = b.value<QColor>().toRgb();
        auto channel = [&](double x, double y) { return std::clamp(interpolateFloat(float(x), t0, float(y), t1, time), 0.0, 1.0); };
        return QColor::fromRgbF(float(channel(ca.redF(), cb.redF())), float(channel(ca.greenF(), cb.greenF())),
                                float(channel(ca.blueF(), cb.blueF())), float(channel(ca.alphaF(), cb.alphaF())));
    }
    case Interpolation::Hold: break;
    }
    return a;  // held until the next keyframe
}

void Attribute::addTimepoint(double t, const QVariant& value)
{
    if (!animateable()) setAnimateable(true);
    setValueForTimepoint(value, t);
}

bool Attribute::hasKeyframeAtTimePoint(double t) const { return keyAtGrain(keyframes(), t) != keyframes().constEnd(); }

void Attribute::deleteTimepoint(double t)
{
    const auto found = keyAtGrain(keyframes(), t);
    if (found == keyframes().constEnd()) return;
    const float key = found.key();
    const QVariant kept = found.value();
    KeyframeValues v = values();
    v.remove(key);
    setValues(v);
    setTimePointSelected(t, false);
    if (v.isEmpty()) {
        // The last keyframe gone: the attribute is a constant of its value.
        setDefaultCurrentValue(kept);
        setAnimateable(false);
        setCurrentValue(kept);
    }
}

void Attribute::deleteSelectedTimepoints()
{
    const QList<float> selected = selectedTimepoints_;
    for (float t : selected) deleteTimepoint(t);
}

double Attribute::adjustTimepointsBy(double delta, bool onlySelected)
{
    QList<float> keys = sortedKeyFrames();
    if (onlySelected) keys.removeIf([this](float k) { return !isTimePointSelected(k); });
    if (keys.isEmpty()) return 0.0;
    if (const QuartzComponent* owner = component()) {
        if (keys.first() + delta < owner->startTime())
            delta = owner->startTime() - keys.first();
        else if (keys.last() + delta > owner->endTime())
            delta = owner->endTime() - keys.last();
    }
    if (delta != 0) {
        KeyframeValues v = values();
        KeyframeValues shifted;
        QList<float> newSelection;
        for (float k : std::as_const(keys)) {
            const float moved = roundedTimepoint(k + delta);
            shifted.insert(moved, v.value(k));
            if (isTimePointSelected(k)) newSelection.append(moved);
        }
        for (float k : std::as_const(keys)) v.remove(k);
        for (auto it = shifted.begin(); it != shifted.end(); ++it) v.insert(it.key(), it.value());
        // The selection follows the keyframes, also when the move is undone
        // or redone.
        QList<float> selection = selectedTimepoints_;
        for (float k : std::as_const(keys)) selection.removeAll(k);
        selection.append(newSelection);
        restoreSelectedTimepoints(selection);
        setValues(v);
    }
    QList<float> after = sortedKeyFrames();
    if (onlySelected) after.removeIf([this](float k) { return !isTimePointSelected(k); });
    return after.isEmpty() ? 0.0 : double(after.first());
}

void Attribute::restoreSelectedTimepoints(const QList<float>& selection)
{
    if (store()) {
        // Restoring registers the way back, so undo and redo both carry it.
        QPointer<Attribute> self(this);
        store()->undoManager().registerUndoForWrite(this, QStringLiteral("selectedTimepoints"),
                                                    [self, old = selectedTimepoints_] {
                                                        if (self) self->restoreSelectedTimepoints(old);
                                                    });
    }
    selectedTimepoints_ = selection;
}

double Attribute::previousTimePoint(double t) const
{
    const KeyframeValues& v = keyframes();
    const auto it = firstKeyNotBefore(v, t);
    return it == v.constBegin() ? kConstantTimepoint : double(std::prev(it).key());
}

double Attribute::nextTimePoint(double t) const
{
    const KeyframeValues& v = keyframes();
    const auto it = firstKeyAfter(v, t);
    // Keys from 1e11 on count as none.
    return it == v.constEnd() || double(it.key()) >= 1e11 ? kConstantTimepoint : double(it.key());
}

QList<float> Attribute::keyframeTimesInRange(double from, double to) const
{
    const KeyframeValues& v = keyframes();
    QList<float> times;
    for (auto it = firstKeyNotBefore(v, from); it != v.constEnd() && double(it.key()) <= to; ++it) times.append(it.key());
    return times;
}

bool Attribute::isTimePointSelected(double t) const { return selectedTimepoints_.contains(roundedTimepoint(t)); }

void Attribute::setTimePointSelected(double t, bool selected)
{
    if (selected)
        selectedTimepoints_.append(roundedTimepoint(t));
    else
        selectedTimepoints_.removeAll(roundedTimepoint(t));
}

QVariantMap Attribute::dictionaryWithData() const
{
    return {
        {QStringLiteral("key"), key()},
        {QStringLiteral("label"), label()},
        {QStringLiteral("quartzAttribute"), quartzAttribute()},
        {QStringLiteral("animateable"), animateable()},
        {QStringLiteral("permissionToChange"), permissionToChange()},
        {QStringLiteral("type"), type()},
        {QStringLiteral("possibleValues"), possibleValues()},
        {QStringLiteral("values"), storedValue(QStringLiteral("values"))},
        {QStringLiteral("category"), category_},
        {QStringLiteral("position"), position_},
    };
}

QVariantMap Attribute::componentInfo() const
{
    return {{QStringLiteral("label"), label()},
            {QStringLiteral("key"), key()},
            {QStringLiteral("permissionToChange"), permissionToChange()},
            {QStringLiteral("animateable"), animateable()}};
}

int Attribute::positionComparator(const Attribute* a, const Attribute* b)
{
    return a->position_ < b->position_ ? -1 : a->position_ > b->position_ ? 1 : 0;
}

int Attribute::titleComparator(const Attribute* a, const Attribute* b)
{
    const int c = QString::compare(a->title(), b->title());
    return c < 0 ? -1 : c > 0 ? 1 : 0;
}

}  // namespace model
