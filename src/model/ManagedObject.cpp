#include "model/ManagedObject.h"

#include "model/ObjectStore.h"

#include <QImage>
#include <QLoggingCategory>

#include <algorithm>
#include <cmath>

namespace model {

Q_LOGGING_CATEGORY(lcStore, "velloran.store")

EntityDescription::EntityDescription(QString name, std::vector<AttributeDescription> attributes,
                                     std::vector<RelationshipDescription> relationships,
                                     QHash<QString, QStringList> keyDependencies)
    : name_(std::move(name)), attributes_(std::move(attributes)), relationships_(std::move(relationships))
{
    for (int i = 0; i < int(attributes_.size()); ++i) attributeIndexes_.insert(attributes_[std::size_t(i)].name, i);

    // Invert "derived key depends on keys" into "key affects derived keys",
    // following chains (a depends on b depends on c: c affects b and a).
    QHash<QString, QStringList> direct;
    for (auto it = keyDependencies.begin(); it != keyDependencies.end(); ++it)
        for (const QString& source : it.value()) direct[source].append(it.key());
    QStringList allKeys = direct.keys();
    for (const QString& key : std::as_const(allKeys)) {
        QStringList closure{key};
        for (int i = 0; i < closure.size(); ++i) {
            for (const QString& next : direct.value(closure[i]))
                if (!closure.contains(next)) closure.append(next);
        }
        affected_.insert(key, closure);
    }
}

const RelationshipDescription* EntityDescription::relationship(const QString& key) const
{
    const int index = relationshipIndex(key);
    return index < 0 ? nullptr : &relationships_[std::size_t(index)];
}

int EntityDescription::relationshipIndex(const QString& key) const
{
    // An entity has a handful of relationships: a scan beats hashing.
    for (std::size_t i = 0; i < relationships_.size(); ++i)
        if (relationships_[i].name == key) return int(i);
    return -1;
}

const QStringList& EntityDescription::keysAffectedBy(const QString& key) const
{
    auto it = affected_.constFind(key);
    if (it != affected_.constEnd()) return it.value();
    // Keys without dependants affect only themselves; cache the one-element list.
    static thread_local QHash<QString, QStringList> single;
    auto found = single.find(key);
    if (found == single.end()) found = single.insert(key, QStringList{key});
    return found.value();
}

ManagedObject::ManagedObject(ObjectStore* store, const EntityDescription& entity) : store_(store), entity_(entity)
{
    values_.reserve(entity.attributes().size());
    toMany_.resize(entity.relationships().size());
    toOne_.resize(entity.relationships().size(), nullptr);
    for (const auto& attribute : entity.attributes()) values_.push_back(attribute.defaultValue);
}

ManagedObject::~ManagedObject() = default;

bool ManagedObject::valuesEqual(const QVariant& a, const QVariant& b)
{
    if (a.metaType() != b.metaType()) return a.isValid() == b.isValid() && !a.isValid();
    if (a.metaType().id() == QMetaType::Double) {
        const double x = a.toDouble(), y = b.toDouble();
        return x == y || (std::isnan(x) && std::isnan(y));
    }
    if (a.metaType().id() == QMetaType::QImage) return a.value<QImage>().cacheKey() == b.value<QImage>().cacheKey() || a == b;
    return a == b;
}

QVariant ManagedObject::storedValue(const QString& key) const
{
    const int index = entity_.attributeIndex(key);
    if (index < 0) {
        qCWarning(lcStore) << entity_.name() << "has no stored attribute" << key;
        return {};
    }
    return values_[std::size_t(index)];
}

void ManagedObject::setPrimitiveValue(const QString& key, const QVariant& value)
{
    const int index = entity_.attributeIndex(key);
    if (index >= 0) values_[std::size_t(index)] = value;
}

void ManagedObject::setStoredValue(const QString& key, const QVariant& value)
{
    const int index = entity_.attributeIndex(key);
    if (index < 0) {
        qCWarning(lcStore) << entity_.name() << "has no stored attribute" << key;
        return;
    }
    QVariant& slot = values_[std::size_t(index)];
    if (valuesEqual(slot, value)) return;  // a change whose before equals its after is no change
    QVariant old = slot;
    willChangeValueForKey(key);
    slot = value;
    didChangeValueForKey(key);
    storedValueDidChange(key);
    if (store_) {
        store_->noteUpdated(this);
        if (StoreChangeListener* listener = store_->changeListener()) listener->storedValueChanged(this, index);
        QPointer<ManagedObject> self(this);
        store_->undoManager().registerUndoForWrite(
            this, key, [self, key, old] {
                if (self) self->setStoredValue(key, old);
            },
            [self, index, old] { return self && !valuesEqual(self->values_[std::size_t(index)], old); });
    }
}

const std::vector<ManagedObject*>& ManagedObject::toMany(const QString& key) const
{
    static const std::vector<ManagedObject*> none;
    const int index = entity_.relationshipIndex(key);
    return index < 0 ? none : toMany_[std::size_t(index)];
}

ManagedObject* ManagedObject::toOne(const QString& key) const
{
    const int index = entity_.relationshipIndex(key);
    return index < 0 ? nullptr : toOne_[std::size_t(index)];
}

void ManagedObject::linkToMany(const QString& key, ManagedObject* target, int index)
{
    auto& list = toMany_[std::size_t(entity_.relationshipIndex(key))];
    if (index < 0 || index > int(list.size())) index = int(list.size());
    list.insert(list.begin() + index, target);
}

int ManagedObject::unlinkToMany(const QString& key, ManagedObject* target)
{
    auto& list = toMany_[std::size_t(entity_.relationshipIndex(key))];
    auto it = std::find(list.begin(), list.end(), target);
    if (it == list.end()) return -1;
    const int index = int(it - list.begin());
    list.erase(it);
    return index;
}

void ManagedObject::linkToOne(const QString& key, ManagedObject* target)
{
    const int index = entity_.relationshipIndex(key);
    if (index >= 0) toOne_[std::size_t(index)] = target;
}

void ManagedObject::addToMany(const QString& key, ManagedObject* target, int index)
{
    const RelationshipDescription* relation = entity_.relationship(key);
    if (!relation || !relation->toMany || !target) return;
    const auto& list = toMany(key);
    if (std::find(list.begin(), list.end(), target) != list.end()) return;

    if (!relation->inverse.isEmpty()) {
        ManagedObject* previousOwner = target->toOne(relation->inverse);
        if (previousOwner && previousOwner != this) previousOwner->removeFromMany(key, target);
    }
    willChangeValueForKey(key);
    linkToMany(key, target, index);
    if (!relation->inverse.isEmpty()) target->announceToOne(relation->inverse, this);
    didChangeValueForKey(key);
    if (store_ && store_->changeListener()) store_->changeListener()->relationshipChanged(this, key);
    recordRelationshipChange(target, [key](ManagedObject* self, ManagedObject* other) { self->removeFromMany(key, other); });
}

void ManagedObject::announceToOne(const QString& key, ManagedObject* target)
{
    willChangeValueForKey(key);
    linkToOne(key, target);
    didChangeValueForKey(key);
}

void ManagedObject::recordRelationshipChange(ManagedObject* target, std::function<void(ManagedObject*, ManagedObject*)> undo)
{
    if (!store_) return;
    store_->noteUpdated(this);
    store_->noteUpdated(target);
    QPointer<ManagedObject> self(this), other(target);
    store_->undoManager().registerUndo([self, other, undo = std::move(undo)] {
        if (self && other) undo(self, other);
    });
}

void ManagedObject::primitiveAddToMany(const QString& key, ManagedObject* target)
{
    const RelationshipDescription* relation = entity_.relationship(key);
    if (!relation || !relation->toMany || !target) return;
    linkToMany(key, target, -1);
    if (!relation->inverse.isEmpty()) target->linkToOne(relation->inverse, this);
}

void ManagedObject::primitiveSetToMany(const QString& key, const std::vector<ManagedObject*>& targets)
{
    const RelationshipDescription* relation = entity_.relationship(key);
    if (!relation || !relation->toMany) return;
    auto& list = toMany_[std::size_t(entity_.relationshipIndex(key))];
    for (ManagedObject* old : list)
        if (!relation->inverse.isEmpty() && old->toOne(relation->inverse) == this) old->linkToOne(relation->inverse, nullptr);
    list.clear();
    for (ManagedObject* target : targets) {
        if (!relation->inverse.isEmpty()) {
            // A target moves here from wherever it was.
            if (ManagedObject* previous = target->toOne(relation->inverse); previous && previous != this)
                previous->unlinkToMany(key, target);
            target->linkToOne(relation->inverse, this);
        }
        list.push_back(target);
    }
}

void ManagedObject::removeFromMany(const QString& key, ManagedObject* target)
{
    const RelationshipDescription* relation = entity_.relationship(key);
    if (!relation || !relation->toMany || !target) return;
    const auto& list = toMany(key);
    if (std::find(list.begin(), list.end(), target) == list.end()) return;

    willChangeValueForKey(key);
    const int index = unlinkToMany(key, target);
    if (!relation->inverse.isEmpty() && target->toOne(relation->inverse) == this) target->announceToOne(relation->inverse, nullptr);
    didChangeValueForKey(key);
    if (store_ && store_->changeListener()) store_->changeListener()->relationshipChanged(this, key);
    recordRelationshipChange(target, [key, index](ManagedObject* self, ManagedObject* other) { self->addToMany(key, other, index); });
}

void ManagedObject::setToOne(const QString& key, ManagedObject* target)
{
    const RelationshipDescription* relation = entity_.relationship(key);
    if (!relation || relation->toMany) return;
    ManagedObject* current = toOne(key);
    if (current == target) return;
    // To-one sides are kept through their to-many inverse, which records undo.
    if (current) current->removeFromMany(relation->inverse, this);
    if (target) target->addToMany(relation->inverse, this);
}

ObservationToken ManagedObject::observe(const QString& key, KeyObserver observer)
{
    static ObservationToken next = 0;
    const ObservationToken token = ++next;
    observations_.push_back({token, key, std::move(observer)});
    return token;
}

void ManagedObject::removeObservation(ObservationToken token)
{
    observations_.erase(std::remove_if(observations_.begin(), observations_.end(),
                                       [token](const Observation& o) { return o.token == token; }),
                        observations_.end());
}

void ManagedObject::willChangeValueForKey(const QString&) { ++changeDepth_; }

void ManagedObject::didChangeValueForKey(const QString& key)
{
    if (changeDepth_ > 0) --changeDepth_;
    if (observations_.empty()) return;
    const QStringList& affected = entity_.keysAffectedBy(key);
    // Observers may add or remove observations while being told.
    const std::vector<Observation> snapshot = observations_;
    for (const QString& changed : affected) {
        for (const Observation& o : snapshot) {
            if (o.key != changed) continue;
            const bool stillRegistered = std::any_of(observations_.begin(), observations_.end(),
                                                     [&](const Observation& current) { return current.token == o.token; });
            if (stillRegistered) o.callback(this, changed);
        }
    }
}

}  // namespace model
