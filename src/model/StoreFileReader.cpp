#include "model/StoreFileReader.h"

#include "model/Attribute.h"
#include "model/Composition.h"
#include "model/EntityFactory.h"
#include "model/QuartzComponent.h"
#include "model/Ruler.h"
#include "model/StopFrame.h"
#include "model/StoreValueCodec.h"

#include <QHash>
#include <QXmlStreamReader>

#include <algorithm>
#include <functional>

namespace model {

namespace {

// Reading stops at the first problem; the message carries the line.
struct StoreError {
    QString message;
};

// Blank as QByteArray::trimmed() sees it, without copying the whole file.
bool isBlank(QByteArrayView bytes)
{
    return std::all_of(bytes.begin(), bytes.end(), [](char c) { return c == ' ' || (c >= '\t' && c <= '\r'); });
}

// An object as messages name it: entity and id, and its key or title when
// they have been read.
QString describe(const ManagedObject* object)
{
    const QString name = QStringLiteral("%1 %2").arg(object->entity().name()).arg(object->objectId());
    for (const QString& key : {QStringLiteral("key"), QStringLiteral("title")}) {
        if (object->entity().attributeIndex(key) < 0) continue;
        const QString value = object->storedValue(key).toString();
        if (!value.isEmpty()) return QStringLiteral("%1 \"%2\"").arg(name, value);
    }
    return name;
}

// The to-one side that ties an object to its owner, for those that need one.
const char* ownerKey(const ManagedObject* object)
{
    const QString& entity = object->entity().name();
    if (entity == QLatin1String("Attribute")) return "component";
    if (entity == QLatin1String("Composition")) return nullptr;
    return "composition";
}

class StoreReader {
public:
    StoreReader(const QByteArray& bytes, StoreFileTextRuns* runs, StoreReadMode mode, const StoreResources* resources)
        : bytes_(bytes), xml_(bytes), runs_(runs), resources_(resources), repairing_(mode == StoreReadMode::DropUnreadable)
    {
    }

    LoadedStore read()
    {
        auto store = std::make_unique<ObjectStore>();
        store_ = store.get();
        UndoRegistrationPause pause(store_->undoManager());
        try {
            readHeader();
            readObjects();
            linkObjects();
            findComposition();
            if (repairing_) dropOrphans();
        } catch (const StoreError& e) {
            result_.error = e.message;
            return std::move(result_);
        }
        result_.store = std::move(store);
        return std::move(result_);
    }

private:
    QString here() const { return QStringLiteral("line %1: ").arg(xml_.lineNumber()); }
    [[noreturn]] void fail(const QString& message) const { throw StoreError{here() + message}; }
    // A repairing read notes what it leaves out and goes on; a strict one stops.
    void dropOrFail(const QString& message)
    {
        if (!repairing_) fail(message);
        result_.dropped.append(here() + message);
    }

    void readHeader()
    {
        if (isBlank(bytes_)) fail(QStringLiteral("the file is empty"));
        if (!xml_.readNextStartElement()) fail(xml_.hasError() ? xml_.errorString() : QStringLiteral("the file holds no store"));
        if (xml_.name() != QLatin1String("store")) fail(QStringLiteral("not a Velloran store (root element <%1>)").arg(xml_.name()));
        bool versionOk = false;
        const int version = xml_.attributes().value(QLatin1String("version")).toInt(&versionOk);
        if (!versionOk) fail(QStringLiteral("the store has no version"));
        // Never repaired: what a newer version wrote is not ours to drop.
        if (version > StoreFile::kVersion)
            fail(QStringLiteral("the store was written by a newer version of Velloran (format %1; this one reads %2)")
                     .arg(version)
                     .arg(StoreFile::kVersion));
    }

    void readObjects()
    {
        while (!damaged_ && xml_.readNextStartElement()) {
            if (xml_.name() != QLatin1String("object")) {
                result_.warnings.append(here() + QStringLiteral("unknown element <%1> skipped").arg(xml_.name()));
                xml_.skipCurrentElement();
                continue;
            }
            readObject();
        }
        if (xml_.hasError()) noteDamage();
    }

    // A file that is not well-formed XML from some point on: a repairing
    // read keeps what came before.
    void noteDamage()
    {
        if (damaged_) return;
        damaged_ = true;
        if (!repairing_) fail(xml_.errorString());
        result_.dropped.append(here() + QStringLiteral("%1; everything from here on was dropped").arg(xml_.errorString()));
    }

    void readObject()
    {
        const QXmlStreamAttributes attributes = xml_.attributes();
        const QString entity = attributes.value(QLatin1String("entity")).toString();
        bool idOk = false;
        const quint64 id = attributes.value(QLatin1String("id")).toULongLong(&idOk);
        QString refusal;
        std::unique_ptr<ManagedObject> made = makeEntityObject(entity, store_);
        if (!made)
            refusal = QStringLiteral("unknown entity \"%1\"").arg(entity);
        else if (!idOk || id == 0)
            refusal = QStringLiteral("an object without a valid id");
        else if (store_->objectWithId(id))
            refusal = QStringLiteral("the id %1 is used twice").arg(id);
        if (!refusal.isEmpty()) {
            dropOrFail(refusal + QStringLiteral("; the object was dropped"));
            xml_.skipCurrentElement();
            return;
        }
        ManagedObject* object = store_->insertObject(std::move(made), id);
        while (!damaged_ && xml_.readNextStartElement()) {
            const QString name = xml_.attributes().value(QLatin1String("name")).toString();
            if (xml_.name() == QLatin1String("attribute")) {
                readStoredValue(object, name);
            } else if (xml_.name() == QLatin1String("relationship")) {
                readRelationship(object, name);
            } else {
                result_.warnings.append(here() + QStringLiteral("unknown element <%1> skipped").arg(xml_.name()));
                xml_.skipCurrentElement();
            }
        }
        if (xml_.hasError()) noteDamage();
    }

    void readStoredValue(ManagedObject* object, const QString& name)
    {
        QVariant value;
        QString error;
        if (!storecodec::readValue(xml_, value, error, runs_, resources_)) {
            if (xml_.hasError()) {
                noteDamage();
                return;
            }
            // The message's line is where the value went wrong.
            const QString message = QStringLiteral("%1 (%2, stored value \"%3\")").arg(error, describe(object), name);
            if (!repairing_) throw StoreError{message};
            result_.dropped.append(message + QStringLiteral("; it keeps its default"));
            skipToEndOfStoredValue();
            return;
        }
        if (object->entity().attributeIndex(name) < 0)
            result_.warnings.append(here() + QStringLiteral("%1 has no stored value \"%2\"; it was not loaded").arg(object->entity().name(), name));
        else
            object->setPrimitiveValue(name, value);
    }

    // After a value that could not be understood the reader stands somewhere
    // inside it; values nest as <value>, so the next </attribute> ends it.
    void skipToEndOfStoredValue()
    {
        if (xml_.isEndElement() && xml_.name() == QLatin1String("attribute")) return;
        while (!xml_.atEnd()) {
            xml_.readNext();
            if (xml_.isEndElement() && xml_.name() == QLatin1String("attribute")) return;
        }
        if (xml_.hasError()) noteDamage();
    }

    void readRelationship(ManagedObject* object, const QString& name)
    {
        const qint64 line = xml_.lineNumber();
        const QString text = xml_.readElementText();
        if (xml_.hasError()) {
            noteDamage();
            return;
        }
        const RelationshipDescription* relation = object->entity().relationship(name);
        if (!relation || !relation->toMany) {
            dropOrFail(QStringLiteral("%1 has no to-many relationship \"%2\"; it was dropped").arg(object->entity().name(), name));
            return;
        }
        QList<quint64> targets;
        for (QStringView id : QStringView(text).tokenize(u' ', Qt::SkipEmptyParts)) {
            bool ok = false;
            const quint64 target = id.toULongLong(&ok);
            if (ok) targets.append(target);
            else dropOrFail(QStringLiteral("invalid object id \"%1\" in relationship \"%2\"; it was dropped").arg(id).arg(name));
        }
        links_.push_back({object, name, targets, line});
    }

    void linkObjects()
    {
        for (const PendingLinks& link : links_) {
            for (quint64 id : link.targets) {
                ManagedObject* target = store_->objectWithId(id);
                if (!target) {
                    const QString message = QStringLiteral("line %1: relationship \"%2\" of %3 names the missing object %4")
                                                .arg(link.line)
                                                .arg(link.relation, describe(link.object))
                                                .arg(id);
                    if (!repairing_) throw StoreError{message};
                    result_.dropped.append(message + QStringLiteral("; the link was dropped"));
                    continue;
                }
                const std::vector<ManagedObject*>& linked = link.object->toMany(link.relation);
                if (std::find(linked.begin(), linked.end(), target) != linked.end()) continue;
                link.object->primitiveAddToMany(link.relation, target);
            }
        }
    }

    void findComposition()
    {
        auto compositions = store_->objectsOfEntity(QStringLiteral("Composition"));
        if (compositions.size() != 1 && !repairing_)
            throw StoreError{QStringLiteral("the store holds %1 compositions instead of one").arg(compositions.size())};
        if (compositions.empty()) {
            result_.dropped.append(QStringLiteral("the store held no composition; a new one holds what was found"));
            Composition* fresh = static_cast<Composition*>(store_->insertObject(std::make_unique<Composition>(store_)));
            for (const QString& entity : {QStringLiteral("Component"), QStringLiteral("StopFrame"), QStringLiteral("Ruler")}) {
                const QString relation = entity == QLatin1String("Component") ? QStringLiteral("components")
                                         : entity == QLatin1String("StopFrame") ? QStringLiteral("stopFrames")
                                                                                 : QStringLiteral("rulers");
                for (ManagedObject* o : store_->objectsOfEntity(entity))
                    if (!o->toOne(QStringLiteral("composition"))) fresh->primitiveAddToMany(relation, o);
            }
            compositions = {fresh};
        }
        // Of several, the one with the most components stays; the rest go,
        // and what they own with them.
        auto size = [](ManagedObject* c) { return c->toMany(QStringLiteral("components")).size(); };
        std::stable_sort(compositions.begin(), compositions.end(), [&](ManagedObject* a, ManagedObject* b) { return size(a) > size(b); });
        for (size_t i = 1; i < compositions.size(); ++i) {
            result_.dropped.append(QStringLiteral("%1, a second composition, was dropped with its %2 components")
                                       .arg(describe(compositions[i]))
                                       .arg(size(compositions[i])));
            store_->deleteObject(compositions[i]);
        }
        result_.composition = static_cast<Composition*>(compositions.front());
    }

    // Objects whose owner was dropped would be saved again but shown nowhere.
    void dropOrphans()
    {
        bool again = true;
        while (again) {
            again = false;
            for (ManagedObject* object : store_->registeredObjects()) {
                const char* owner = ownerKey(object);
                if (!owner || object->toOne(QLatin1String(owner))) continue;
                result_.dropped.append(QStringLiteral("%1 belonged to nothing and was dropped").arg(describe(object)));
                store_->deleteObject(object);
                again = true;  // a cascade may have removed others: list afresh
                break;
            }
        }
    }

    struct PendingLinks {
        ManagedObject* object;
        QString relation;
        QList<quint64> targets;
        qint64 line;
    };

    const QByteArray& bytes_;
    QXmlStreamReader xml_;
    StoreFileTextRuns* runs_;
    const StoreResources* resources_;
    const bool repairing_;
    bool damaged_ = false;
    ObjectStore* store_ = nullptr;
    std::vector<PendingLinks> links_;
    LoadedStore result_;
};

}  // namespace

LoadedStore readStoreObjects(const QByteArray& bytes, StoreFileTextRuns* runs, StoreReadMode mode,
                             const StoreResources* resources)
{
    return StoreReader(bytes, runs, mode, resources).read();
}

// Everything is in place: let the objects set themselves up, the composition
// first so components find their time and resolution.
void setUpStoreObjects(LoadedStore& loaded)
{
    ObjectStore& store = *loaded.store;
    UndoRegistrationPause pause(store.undoManager());
    loaded.composition->awakeFromFetch();
    for (ManagedObject* object : store.registeredObjects())
        if (object != loaded.composition) object->awakeFromFetch();
    store.processPendingChanges();
}

}  // namespace model
