#include "model/QuartzComponent.h"

#include "model/Composition.h"
#include "model/NotificationHelper.h"
#include "model/ObjectStore.h"
#include "runtime/Renderer.h"

#include <QLoggingCategory>

#include <algorithm>
#include <cmath>

namespace model {

Q_LOGGING_CATEGORY(lcComponent, "velloran.component")

namespace {
// The attribute keys of the geometry and their component keys.
const QString kOriginX = QStringLiteral("originX");
const QString kOriginY = QStringLiteral("originY");
const QString kWidth = QStringLiteral("inputWidth");
const QString kHeight = QStringLiteral("inputHeight");
const QString kOpacity = QStringLiteral("opacity");
const QString kZRotation = QStringLiteral("zRotation");
const QString kMarginX = QStringLiteral("marginX");
const QString kMarginY = QStringLiteral("marginY");
const QString kVisible = QStringLiteral("visibleInCompositionEditor");
}  // namespace

const EntityDescription& QuartzComponent::entityDescription()
{
    static const EntityDescription entity(
        QStringLiteral("Component"),
        {
            {QStringLiteral("title"), QString()},
            {QStringLiteral("compositionFilename"), QString()},
            {QStringLiteral("quartzCompositionData"), QByteArray()},
            {QStringLiteral("startTime"), 0.0},
            {QStringLiteral("endTime"), 10.0},
            {QStringLiteral("constrainProportions"), false},
            {QStringLiteral("zLevel"), 0u},
        },
        {{QStringLiteral("attributes"), QStringLiteral("component"), true, DeleteRule::Cascade},
         {QStringLiteral("composition"), QStringLiteral("components"), false, DeleteRule::Nullify}},
        {{QStringLiteral("duration"), {QStringLiteral("startTime"), QStringLiteral("endTime")}},
         {QStringLiteral("visible"), {QStringLiteral("startTime"), QStringLiteral("endTime")}},
         {QStringLiteral("opacityHumanReadable"), {QStringLiteral("opacity")}},
         {QStringLiteral("opacity"), {QStringLiteral("opacityHumanReadable")}},
         {QStringLiteral("width"), {QStringLiteral("inputWidth")}},
         {QStringLiteral("height"), {QStringLiteral("inputHeight")}}});
    return entity;
}

QuartzComponent::QuartzComponent(ObjectStore* store) : ManagedObject(store, entityDescription()) {}

QuartzComponent::~QuartzComponent() { removeAttributeObservers(); }

Composition* QuartzComponent::composition() const
{
    return static_cast<Composition*>(toOne(QStringLiteral("composition")));
}

std::vector<Attribute*> QuartzComponent::attributes() const
{
    std::vector<Attribute*> result;
    for (ManagedObject* o : toMany(QStringLiteral("attributes"))) result.push_back(static_cast<Attribute*>(o));
    return result;
}

void QuartzComponent::storedValueDidChange(const QString& key)
{
    if (key == QLatin1String("startTime") || key == QLatin1String("endTime")) needsUpdate_ = true;
}

// Timing -------------------------------------------------------------------

void QuartzComponent::setStartTime(double t) { setStoredValue(QStringLiteral("startTime"), t); }
void QuartzComponent::setEndTime(double t) { setStoredValue(QStringLiteral("endTime"), t); }

void QuartzComponent::setDuration(double d)
{
    if (d < 0) return;
    setEndTime(startTime() + d);
}

double QuartzComponent::renderTimepoint() const
{
    const Composition* owner = composition();
    return owner ? owner->editorTimepoint() : 0.0;
}

bool QuartzComponent::visible() const
{
    const double t = renderTimepoint();
    return t >= startTime() && t <= endTime();
}

double QuartzComponent::validateStartTime(double proposed) const
{
    const float value = float(proposed);
    return endTime() < value ? double(float(endTime())) : proposed;
}

double QuartzComponent::validateEndTime(double proposed) const
{
    return startTime() > proposed ? double(float(startTime())) : proposed;
}

double QuartzComponent::previousTimePoint(double t) const
{
    double best = 0.0;
    for (Attribute* a : attributes()) {
        if (!a->animateable()) continue;
        const double p = a->previousTimePoint(t);
        if (p >= best && p != kConstantTimepoint) best = p;
    }
    return best == t ? 0.0 : best;
}

double QuartzComponent::nextTimePoint(double t) const
{
    double best = kNoNextTimepoint;
    for (Attribute* a : attributes()) {
        if (!a->animateable()) continue;
        const double n = a->nextTimePoint(t);
        if (n <= best && n != kConstantTimepoint) best = n;
    }
    return best == t ? kNoNextTimepoint : best;
}

// Attributes -----------------------------------------------------------------

Attribute* QuartzComponent::attributeForKey(const QString& key) const
{
    for (ManagedObject* o : toMany(QStringLiteral("attributes"))) {
        auto* a = static_cast<Attribute*>(o);
        if (a->key() == key) return a;
    }
    return nullptr;
}

QVariant QuartzComponent::valueForKey(const QString& key) const
{
    const Attribute* a = attributeForKey(key);
    return a ? a->currentValue() : QVariant();
}

bool QuartzComponent::setValueForKey(const QString& key, const QVariant& value)
{
    Attribute* a = attributeForKey(key);
    if (!a) return false;
    // Width and height go through their setters, which keep the proportions
    // when the component is told to.
    if (a == width_ || a == height_) {
        bool ok = false;
        const double size = value.toDouble(&ok);
        if (!ok) return true;
        a == width_ ? setWidth(size) : setHeight(size);
    } else {
        a->setCurrentValue(value);
    }
    if (a->quartzAttribute()) needsUpdate_ = true;
    return true;
}

void QuartzComponent::attributeValueChanged(Attribute*)
{
    willChangeValueForKey(QStringLiteral("attributes"));
    didChangeValueForKey(QStringLiteral("attributes"));
}

void QuartzComponent::sendChangeNotificationForValues(bool onlyAnimated)
{
    for (Attribute* a : attributes()) {
        if (onlyAnimated && !a->animateable()) continue;
        willChangeValueForKey(a->key());
        didChangeValueForKey(a->key());
    }
}

std::vector<Attribute*> QuartzComponent::nonStandardAttributes() const
{
    std::vector<Attribute*> result = attributes();
    const Attribute* standard[] = {originX_, originY_, width_, height_, opacity_, zRotation_};
    result.erase(std::remove_if(result.begin(), result.end(),
                                [&](Attribute* a) { return std::find(std::begin(standard), std::end(standard), a) != std::end(standard); }),
                 result.end());
    return result;
}

std::vector<Attribute*> QuartzComponent::attributesSortedByTitle() const
{
    std::vector<Attribute*> result = attributes();
    std::stable_sort(result.begin(), result.end(),
                     [](const Attribute* a, const Attribute* b) { return Attribute::titleComparator(a, b) < 0; });
    return result;
}

std::vector<Attribute*> QuartzComponent::children() const
{
    std::vector<Attribute*> result = attributesSortedByTitle();
    result.erase(std::remove_if(result.begin(), result.end(), [](Attribute* a) { return !a->animationPossible(); }),
                 result.end());
    return result;
}

std::vector<Attribute*> QuartzComponent::attributesWithSelectedKeyframes() const
{
    std::vector<Attribute*> result;
    for (Attribute* a : attributes())
        if (!a->selectedTimepoints().isEmpty()) result.push_back(a);
    return result;
}

void QuartzComponent::deselectAllKeyFrames()
{
    for (Attribute* a : attributes()) a->deselectAllTimePoints();
}

int QuartzComponent::groupState(const std::vector<Attribute*>& group)
{
    if (group.empty()) return kGroupNone;
    std::size_t allowed = 0;
    for (const Attribute* a : group)
        if (a && a->permissionToChange()) ++allowed;
    return allowed == 0 ? kGroupNone : allowed == group.size() ? kGroupAll : kGroupSome;
}

void QuartzComponent::setGroup(const std::vector<Attribute*>& group, int state)
{
    for (Attribute* a : group)
        if (a) a->setPermissionToChange(state == kGroupAll);
}

int QuartzComponent::animateable() const
{
    const std::vector<Attribute*> all = attributes();
    if (all.empty()) return kGroupNone;
    const auto animated = std::count_if(all.begin(), all.end(), [](const Attribute* a) { return a->animateable(); });
    return animated == 0 ? kGroupNone : std::size_t(animated) == all.size() ? kGroupAll : kGroupSome;
}

void QuartzComponent::setAnimateable(int state)
{
    for (Attribute* a : attributes()) a->setAnimateable(state == kGroupAll);
}

int QuartzComponent::permissionToMove() const { return groupState({originX_, originY_}); }
void QuartzComponent::setPermissionToMove(int state) { setGroup({originX_, originY_}, state); }
int QuartzComponent::permissionToResize() const { return groupState({width_, height_}); }
void QuartzComponent::setPermissionToResize(int state) { setGroup({width_, height_}, state); }
int QuartzComponent::permissionToChangeAttributes() const { return groupState(nonStandardAttributes()); }
void QuartzComponent::setPermissionToChangeAttributes(int state) { setGroup(nonStandardAttributes(), state); }

// Geometry ----------------------------------------------------------------------

double QuartzComponent::standardValue(const QPointer<Attribute>& attribute) const
{
    return attribute ? double(attribute->currentValue().toFloat()) : 0.0;
}

void QuartzComponent::setStandardValue(const QPointer<Attribute>& attribute, double value)
{
    if (attribute) attribute->setCurrentValue(float(value));
}

bool QuartzComponent::visibleInCompositionEditor() const { return visible_ && visible_->currentValue().toBool(); }

void QuartzComponent::setVisibleInCompositionEditor(bool visible)
{
    if (visible_) visible_->setCurrentValue(visible);
    needsUpdate_ = true;
}

void QuartzComponent::setWidth(double w)
{
    if (w < 0) return;
    if (constrainProportions() && width() != 0) {
        // The partner dimension is rounded to whole units; the one set is not.
        const int partner = int(std::roundf(float(height() / width() * w)));
        if (partner < 0) return;
        willChangeValueForKey(QStringLiteral("height"));
        setStandardValue(height_, partner);
        didChangeValueForKey(QStringLiteral("height"));
    }
    setStandardValue(width_, w);
}

void QuartzComponent::setHeight(double h)
{
    if (h < 0) return;
    if (constrainProportions() && height() != 0) {
        const int partner = int(std::roundf(float(width() / height() * h)));
        if (partner < 0) return;
        willChangeValueForKey(QStringLiteral("width"));
        setStandardValue(width_, partner);
        didChangeValueForKey(QStringLiteral("width"));
    }
    setStandardValue(height_, h);
}

void QuartzComponent::moveBy(double dx, double dy)
{
    if (dx != 0) setOriginX(originX() + dx);
    if (dy != 0) setOriginY(originY() + dy);
}

// Selection and stacking -----------------------------------------------------------

void QuartzComponent::setSelected(bool selected)
{
    if (selected != selected_) {
        willChangeValueForKey(QStringLiteral("selected"));
        selected_ = selected;
        didChangeValueForKey(QStringLiteral("selected"));
        if (Composition* owner = composition()) owner->selectionDidChange();
    }
    needsUpdate_ = true;
}

void QuartzComponent::setExpanded(bool on)
{
    // Announced so the timeline lays its rows out again.
    if (on == expanded_) return;
    willChangeValueForKey(QStringLiteral("expanded"));
    expanded_ = on;
    didChangeValueForKey(QStringLiteral("expanded"));
}

void QuartzComponent::setZLevel(quint32 level)
{
    setStoredValue(QStringLiteral("zLevel"), level);
    needsUpdate_ = true;
}

int QuartzComponent::zLevelComparison(const QuartzComponent* a, const QuartzComponent* b)
{
    return a->zLevel() < b->zLevel() ? -1 : a->zLevel() > b->zLevel() ? 1 : 0;
}

// Standard attributes ----------------------------------------------------------------

void QuartzComponent::bindStandardAttributes()
{
    for (Attribute* a : attributes()) {
        const QString key = a->key();
        if (key == kOriginX) originX_ = a;
        else if (key == kOriginY) originY_ = a;
        else if (key == kWidth) width_ = a;
        else if (key == kHeight) height_ = a;
        else if (key == kOpacity) opacity_ = a;
        else if (key == kZRotation) zRotation_ = a;
        else if (key == kMarginX) marginX_ = a;
        else if (key == kMarginY) marginY_ = a;
        else if (key == kVisible) visible_ = a;
    }
}

void QuartzComponent::initializeAttributeObservers()
{
    if (!width_) bindStandardAttributes();
    ObjectStore* s = store();
    if (!marginX_ && s) {
        for (const QString& key : {kMarginX, kMarginY}) {
            Attribute* margin = Attribute::create(s, key, key == kMarginX ? QStringLiteral("Margin X") : QStringLiteral("Margin Y"),
                                                  kTypeNumber, 0.0f);
            margin->setQuartzAttribute(false);
            margin->setToOne(QStringLiteral("component"), this);
            (key == kMarginX ? marginX_ : marginY_) = margin;
        }
    }
    if (!visible_ && s) {
        Attribute* visible = Attribute::create(s, kVisible, kVisible, kTypeBoolean, 0.0f);
        visible->setQuartzAttribute(false);
        visible->setToOne(QStringLiteral("component"), this);
        visible_ = visible;
        visible->setCurrentValue(true);
    }
    removeAttributeObservers();
    const std::pair<QPointer<Attribute>*, QString> observed[] = {
        {&width_, QStringLiteral("width")},   {&height_, QStringLiteral("height")},
        {&originX_, QStringLiteral("originX")}, {&originY_, QStringLiteral("originY")},
        {&opacity_, QStringLiteral("opacity")}, {&zRotation_, QStringLiteral("zRotation")},
    };
    for (const auto& [attribute, componentKey] : observed) {
        if (!*attribute) continue;
        QPointer<QuartzComponent> self(this);
        const QString key = componentKey;
        const ObservationToken token = (*attribute)->observe(QStringLiteral("currentValue"), [self, key](ManagedObject*, const QString&) {
            if (!self) return;
            self->needsUpdate_ = true;
            self->willChangeValueForKey(key);
            self->didChangeValueForKey(key);
        });
        geometryObservations_.emplace_back(*attribute, token);
    }
}

void QuartzComponent::removeAttributeObservers()
{
    for (auto& [attribute, token] : geometryObservations_)
        if (attribute) attribute->removeObservation(token);
    geometryObservations_.clear();
}

// Dictionary forms ---------------------------------------------------------------------

QVariantMap QuartzComponent::dictionaryWithData() const
{
    QVariantList attributeDictionaries;
    for (const Attribute* a : attributes()) attributeDictionaries.append(a->dictionaryWithData());
    return {
        {QStringLiteral("animateable"), animateable()},
        {QStringLiteral("compositionFilename"), compositionFilename()},
        {QStringLiteral("endTime"), endTime()},
        {QStringLiteral("quartzCompositionData"), quartzCompositionData()},
        {QStringLiteral("startTime"), startTime()},
        {QStringLiteral("title"), title()},
        {QStringLiteral("attributes"), attributeDictionaries},
        {QStringLiteral("constrainProportions"), constrainProportions()},
    };
}

QuartzComponent* QuartzComponent::createFromDictionary(Composition* composition, const QVariantMap& dictionary)
{
    ObjectStore* s = composition->store();
    auto* c = s->insertNewObject<QuartzComponent>();
    QVariantMap rest = dictionary;
    const QVariantList attributeDictionaries = rest.take(QStringLiteral("attributes")).toList();
    for (auto it = rest.begin(); it != rest.end(); ++it) {
        if (it.key() == QLatin1String("animateable"))
            c->setAnimateable(it.value().toInt());  // no attributes yet: no effect, as before
        else if (c->entity().attributeIndex(it.key()) >= 0 && it.key() != QLatin1String("zLevel"))
            c->setStoredValue(it.key(), it.value());
    }
    for (const QVariant& d : attributeDictionaries)
        Attribute::createFromDictionary(s, d.toMap())->setToOne(QStringLiteral("component"), c);
    c->setToOne(QStringLiteral("composition"), composition);
    c->awakeFromFetch();
    return c;
}

QVariantMap QuartzComponent::componentInfo() const
{
    QVariantList infos;
    for (const Attribute* a : attributes()) infos.append(a->componentInfo());
    return {{QStringLiteral("title"), title()}, {QStringLiteral("attributes"), infos}};
}

}  // namespace model
