#pragma once
// The base of every stored entity (composition, component, attribute, stop
// frame, ruler). An entity has stored attributes (QVariant values with
// defaults), relationships to other entities with inverses, and announces
// every change by key so that views can observe it. Writes of stored values
// and relationship changes are recorded on the store's undo manager.

#include <QHash>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QStringList>
#include <QVariant>

#include <functional>
#include <vector>

namespace model {

class ObjectStore;
class ManagedObject;

enum class DeleteRule { Nullify, Cascade };

struct AttributeDescription {
    QString name;
    QVariant defaultValue;
};

struct RelationshipDescription {
    QString name;
    QString inverse;   // the name of the inverse relationship on the target
    bool toMany = false;
    DeleteRule deleteRule = DeleteRule::Nullify;
};

// What an entity stores and how its derived keys depend on other keys.
class EntityDescription {
public:
    EntityDescription(QString name, std::vector<AttributeDescription> attributes,
                      std::vector<RelationshipDescription> relationships,
                      QHash<QString, QStringList> keyDependencies = {});

    const QString& name() const { return name_; }
    const std::vector<AttributeDescription>& attributes() const { return attributes_; }
    const std::vector<RelationshipDescription>& relationships() const { return relationships_; }
    int attributeIndex(const QString& key) const { return attributeIndexes_.value(key, -1); }
    const RelationshipDescription* relationship(const QString& key) const;
    int relationshipIndex(const QString& key) const;
    // The keys whose observers hear about a change of `key`: the key itself
    // and every derived key that depends on it, directly or not.
    const QStringList& keysAffectedBy(const QString& key) const;

private:
    QString name_;
    std::vector<AttributeDescription> attributes_;
    std::vector<RelationshipDescription> relationships_;
    QHash<QString, int> attributeIndexes_;
    QHash<QString, QStringList> affected_;
};

using ObservationToken = quint64;
using KeyObserver = std::function<void(ManagedObject* object, const QString& key)>;

class ManagedObject : public QObject {
    Q_OBJECT
public:
    ManagedObject(ObjectStore* store, const EntityDescription& entity);
    ~ManagedObject() override;

    const EntityDescription& entity() const { return entity_; }
    ObjectStore* store() const { return store_; }
    quint64 objectId() const { return objectId_; }
    bool isDeleted() const { return deleted_; }

    // Stored attributes. setStoredValue records undo and announces the key;
    // an unchanged value records and announces nothing.
    QVariant storedValue(const QString& key) const;
    // By the attribute's index in the entity: for hot paths.
    const QVariant& storedValueAt(int index) const { return values_[std::size_t(index)]; }
    void setStoredValue(const QString& key, const QVariant& value);
    // Without undo or notifications: for loading.
    void setPrimitiveValue(const QString& key, const QVariant& value);

    // Relationships.
    const std::vector<ManagedObject*>& toMany(const QString& key) const;
    ManagedObject* toOne(const QString& key) const;
    // Adding to a to-many also sets the target's to-one inverse, and the
    // other way round; each records its own undo.
    void addToMany(const QString& key, ManagedObject* target, int index = -1);
    void removeFromMany(const QString& key, ManagedObject* target);
    void setToOne(const QString& key, ManagedObject* target);
    // Links both sides without undo or notifications: for loading.
    void primitiveAddToMany(const QString& key, ManagedObject* target);
    // Makes the to-many exactly `targets`, inverses included, without undo
    // or notifications: for replaying a journal.
    void primitiveSetToMany(const QString& key, const std::vector<ManagedObject*>& targets);

    // Observation by key.
    ObservationToken observe(const QString& key, KeyObserver observer);
    void removeObservation(ObservationToken token);
    void willChangeValueForKey(const QString& key);
    void didChangeValueForKey(const QString& key);

    // Called once after insertion into a store (new object) or after loading.
    virtual void awakeFromInsert() {}
    virtual void awakeFromFetch() {}

protected:
    // Told after every stored write, also those made by undo and redo.
    virtual void storedValueDidChange(const QString& /*key*/) {}
    static bool valuesEqual(const QVariant& a, const QVariant& b);

private:
    friend class ObjectStore;
    void linkToMany(const QString& key, ManagedObject* target, int index);
    int unlinkToMany(const QString& key, ManagedObject* target);
    void linkToOne(const QString& key, ManagedObject* target);
    void announceToOne(const QString& key, ManagedObject* target);
    // Marks both sides updated and registers the undo of a relationship change.
    void recordRelationshipChange(ManagedObject* target, std::function<void(ManagedObject*, ManagedObject*)> undo);

    ObjectStore* store_;
    const EntityDescription& entity_;
    quint64 objectId_ = 0;
    bool deleted_ = false;
    std::vector<QVariant> values_;
    // One slot per relationship of the entity, in the entity's order.
    std::vector<std::vector<ManagedObject*>> toMany_;
    std::vector<ManagedObject*> toOne_;

    struct Observation {
        ObservationToken token;
        QString key;
        KeyObserver callback;
    };
    std::vector<Observation> observations_;
    int changeDepth_ = 0;
};

}  // namespace model
