#include "model/StoreJournal.h"

#include "model/EntityFactory.h"
#include "model/ManagedObject.h"
#include "model/ObjectStore.h"
#include "model/StoreValueCodec.h"

#include <QJsonDocument>
#include <QMetaObject>
#include <QXmlStreamReader>
#include <QXmlStreamWriter>

#include <zlib.h>

#include <algorithm>
#include <cstring>

#include <unistd.h>

namespace model {

namespace {

const QString kIdKey = QStringLiteral("id");
const QString kNameKey = QStringLiteral("name");

QString idText(quint64 id) { return QString::number(id); }

void writeRelationship(QXmlStreamWriter& xml, const ManagedObject* owner, const QString& key)
{
    QStringList ids;
    for (const ManagedObject* target : owner->toMany(key)) ids.append(idText(target->objectId()));
    xml.writeStartElement(QStringLiteral("relationship"));
    xml.writeAttribute(kIdKey, idText(owner->objectId()));
    xml.writeAttribute(kNameKey, key);
    xml.writeCharacters(ids.join(QLatin1Char(' ')));
    xml.writeEndElement();
}

void writeInsert(QXmlStreamWriter& xml, const ManagedObject* object)
{
    xml.writeStartElement(QStringLiteral("insert"));
    xml.writeAttribute(QStringLiteral("entity"), object->entity().name());
    xml.writeAttribute(kIdKey, idText(object->objectId()));
    for (const AttributeDescription& attribute : object->entity().attributes()) {
        QXmlStreamAttributes name;
        name.append(kNameKey, attribute.name);
        storecodec::writeValue(xml, object->storedValue(attribute.name), QStringLiteral("attribute"), name);
    }
    xml.writeEndElement();
}

std::vector<const ManagedObject*> sortedById(std::vector<const ManagedObject*> objects)
{
    std::sort(objects.begin(), objects.end(), [](auto a, auto b) { return a->objectId() < b->objectId(); });
    return objects;
}

}  // namespace

// Recording ----------------------------------------------------------------------

JournalRecorder::JournalRecorder(ObjectStore& store, QObject* parent) : QObject(parent), store_(store)
{
    store_.setChangeListener(this);
    // An undo step is recorded when its outermost group closes.
    connect(&store_.undoManager(), &UndoManager::didCloseUndoGroup, this, [this] {
        if (store_.undoManager().groupingLevel() == 0) scheduleFlush();
    });
}

JournalRecorder::~JournalRecorder()
{
    if (store_.changeListener() == this) store_.setChangeListener(nullptr);
}

void JournalRecorder::objectInserted(ManagedObject* object)
{
    const quint64 id = object->objectId();
    // Deleted and brought back (undo) in one step: recorded whole again.
    deleted_.remove(id);
    inserted_.insert(id);
    scheduleFlush();
}

void JournalRecorder::objectDeleted(quint64 objectId)
{
    inserted_.remove(objectId);
    values_.remove(objectId);
    relationships_.remove(objectId);
    deleted_.insert(objectId);
    scheduleFlush();
}

void JournalRecorder::storedValueChanged(ManagedObject* object, int attributeIndex)
{
    values_[object->objectId()].insert(attributeIndex);
    scheduleFlush();
}

void JournalRecorder::relationshipChanged(ManagedObject* owner, const QString& toManyKey)
{
    relationships_[owner->objectId()].insert(toManyKey);
    scheduleFlush();
}

void JournalRecorder::scheduleFlush()
{
    if (flushPosted_) return;
    flushPosted_ = true;
    QMetaObject::invokeMethod(
        this,
        [this] {
            flushPosted_ = false;
            flush();
        },
        Qt::QueuedConnection);
}

void JournalRecorder::flush()
{
    if (store_.undoManager().groupingLevel() > 0) return;
    if (inserted_.isEmpty() && deleted_.isEmpty() && values_.isEmpty() && relationships_.isEmpty()) return;
    QByteArray payload;
    QXmlStreamWriter xml(&payload);
    xml.writeStartElement(QStringLiteral("step"));
    // Inserted objects first, whole; then values and relationships of the
    // others (an inserted object's relationships among them); deletes last.
    std::vector<const ManagedObject*> inserted;
    for (quint64 id : std::as_const(inserted_))
        if (const ManagedObject* o = store_.objectWithId(id)) inserted.push_back(o);
    for (const ManagedObject* o : sortedById(inserted)) {
        writeInsert(xml, o);
        for (const RelationshipDescription& r : o->entity().relationships())
            if (r.toMany) relationships_[o->objectId()].insert(r.name);
    }
    QList<quint64> changed = values_.keys();
    std::sort(changed.begin(), changed.end());
    for (quint64 id : changed) {
        const ManagedObject* o = store_.objectWithId(id);
        if (!o || inserted_.contains(id)) continue;
        QList<int> indexes = values_.value(id).values();
        std::sort(indexes.begin(), indexes.end());
        for (int index : indexes) {
            QXmlStreamAttributes where;
            where.append(kIdKey, idText(id));
            where.append(kNameKey, o->entity().attributes()[size_t(index)].name);
            storecodec::writeValue(xml, o->storedValueAt(index), QStringLiteral("set"), where);
        }
    }
    QList<quint64> owners = relationships_.keys();
    std::sort(owners.begin(), owners.end());
    for (quint64 id : owners) {
        const ManagedObject* o = store_.objectWithId(id);
        if (!o) continue;
        QStringList keys = relationships_.value(id).values();
        keys.sort();
        for (const QString& key : keys) writeRelationship(xml, o, key);
    }
    QList<quint64> gone = deleted_.values();
    std::sort(gone.begin(), gone.end());
    for (quint64 id : gone) {
        xml.writeEmptyElement(QStringLiteral("delete"));
        xml.writeAttribute(kIdKey, idText(id));
    }
    xml.writeEndElement();
    inserted_.clear();
    deleted_.clear();
    values_.clear();
    relationships_.clear();
    Q_EMIT recordReady(payload);
}

QByteArray JournalRecorder::snapshotRecord() const
{
    QByteArray payload;
    QXmlStreamWriter xml(&payload);
    xml.writeStartElement(QStringLiteral("step"));
    std::vector<const ManagedObject*> all;
    for (const ManagedObject* o : store_.registeredObjects()) all.push_back(o);
    all = sortedById(all);
    for (const ManagedObject* o : all) writeInsert(xml, o);
    for (const ManagedObject* o : all)
        for (const RelationshipDescription& r : o->entity().relationships())
            if (r.toMany) writeRelationship(xml, o, r.name);
    xml.writeEndElement();
    return payload;
}

// Replaying ----------------------------------------------------------------------

bool replayJournalRecord(ObjectStore& store, const QByteArray& payload, QString* error)
{
    UndoRegistrationPause pause(store.undoManager());
    QXmlStreamReader xml(payload);
    auto fail = [&](const QString& why) {
        if (error) *error = why;
        return false;
    };
    auto objectNamed = [&](const QXmlStreamAttributes& a) { return store.objectWithId(a.value(kIdKey).toULongLong()); };
    if (!xml.readNextStartElement() || xml.name() != QLatin1String("step")) return fail(QStringLiteral("a record that is no step"));
    while (xml.readNextStartElement()) {
        const QXmlStreamAttributes a = xml.attributes();
        if (xml.name() == QLatin1String("insert")) {
            const quint64 id = a.value(kIdKey).toULongLong();
            std::unique_ptr<ManagedObject> made = makeEntityObject(a.value(QLatin1String("entity")).toString(), &store);
            if (!made || id == 0) return fail(QStringLiteral("an insert of an unknown entity or without an id"));
            if (ManagedObject* old = store.objectWithId(id)) store.deleteObject(old);  // replayed twice
            ManagedObject* object = store.insertObject(std::move(made), id);
            while (xml.readNextStartElement()) {
                QVariant value;
                QString why;
                const QString name = xml.attributes().value(kNameKey).toString();
                if (!storecodec::readValue(xml, value, why)) return fail(why);
                object->setPrimitiveValue(name, value);
            }
        } else if (xml.name() == QLatin1String("set")) {
            ManagedObject* object = objectNamed(a);
            QVariant value;
            QString why;
            if (!storecodec::readValue(xml, value, why)) return fail(why);
            if (!object) return fail(QStringLiteral("a value of the missing object %1").arg(a.value(kIdKey)));
            object->setPrimitiveValue(a.value(kNameKey).toString(), value);
        } else if (xml.name() == QLatin1String("relationship")) {
            ManagedObject* owner = objectNamed(a);
            const QString key = a.value(kNameKey).toString();
            std::vector<ManagedObject*> targets;
            const QString ids = xml.readElementText();
            for (QStringView id : QStringView(ids).tokenize(u' ', Qt::SkipEmptyParts)) {
                ManagedObject* target = store.objectWithId(id.toULongLong());
                if (!target) return fail(QStringLiteral("relationship \"%1\" names the missing object %2").arg(key).arg(id));
                targets.push_back(target);
            }
            if (!owner) return fail(QStringLiteral("a relationship of the missing object %1").arg(a.value(kIdKey)));
            owner->primitiveSetToMany(key, targets);
        } else if (xml.name() == QLatin1String("delete")) {
            if (ManagedObject* object = objectNamed(a)) store.deleteObject(object);
            xml.skipCurrentElement();
        } else {
            xml.skipCurrentElement();
        }
    }
    if (xml.hasError()) return fail(xml.errorString());
    return true;
}

// The file -----------------------------------------------------------------------

namespace {

void putLittleEndian(char* out, quint32 v)
{
    for (int i = 0; i < 4; ++i) out[i] = char((v >> (8 * i)) & 0xff);
}

quint32 getLittleEndian(const char* in)
{
    quint32 v = 0;
    for (int i = 0; i < 4; ++i) v |= quint32(uchar(in[i])) << (8 * i);
    return v;
}

quint32 checksum(QByteArrayView bytes) { return quint32(crc32(0, reinterpret_cast<const Bytef*>(bytes.data()), uInt(bytes.size()))); }

// Records past this are damage, not records.
constexpr quint32 kLargestRecord = 512u * 1024u * 1024u;

}  // namespace

bool JournalFile::create(const QString& path, const QJsonObject& header, QString* error)
{
    close();
    path_ = path;
    file_.setFileName(path);
    if (!file_.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Unbuffered)) {
        if (error) *error = file_.errorString();
        return false;
    }
    QByteArray head(kMagic);
    head += ' ' + QJsonDocument(header).toJson(QJsonDocument::Compact) + '\n';
    if (file_.write(head) != head.size()) {
        if (error) *error = file_.errorString();
        close();
        return false;
    }
    sync();
    return true;
}

bool JournalFile::openForAppend(const QString& path, QString* error)
{
    close();
    const Contents contents = read(path);
    if (!contents.exists || contents.header.isEmpty()) {
        if (error) *error = contents.problem.isEmpty() ? QStringLiteral("no journal") : contents.problem;
        return false;
    }
    path_ = path;
    file_.setFileName(path);
    if (!file_.open(QIODevice::ReadWrite | QIODevice::Unbuffered)) {
        if (error) *error = file_.errorString();
        return false;
    }
    // Whatever follows the intact records (a torn end) is cut off first.
    qint64 end = file_.readLine().size();
    for (const QByteArray& record : contents.records) end += 8 + record.size();
    file_.resize(end);
    file_.seek(end);
    return true;
}

bool JournalFile::append(const QByteArray& payload)
{
    if (!file_.isOpen()) return false;
    QByteArray record(8, Qt::Uninitialized);
    putLittleEndian(record.data(), quint32(payload.size()));
    putLittleEndian(record.data() + 4, checksum(payload));
    record += payload;
    // One write: a crash leaves the record whole or torn, and a torn one is
    // recognised and dropped.
    if (file_.write(record) != record.size()) return false;
    if (!unsynced_) {
        unsynced_ = true;
        if (!syncTimer_.isActive()) {
            syncTimer_.setSingleShot(true);
            QObject::connect(&syncTimer_, &QTimer::timeout, &syncTimer_, [this] { sync(); }, Qt::UniqueConnection);
            syncTimer_.start(1000);
        }
    }
    return true;
}

void JournalFile::sync()
{
    syncTimer_.stop();
    unsynced_ = false;
    if (file_.isOpen()) ::fsync(file_.handle());
}

void JournalFile::close()
{
    if (!file_.isOpen()) return;
    sync();
    file_.close();
}

JournalFile::Contents JournalFile::read(const QString& path)
{
    Contents contents;
    QFile file(path);
    if (!file.exists()) return contents;
    contents.exists = true;
    if (!file.open(QIODevice::ReadOnly)) {
        contents.problem = file.errorString();
        return contents;
    }
    const QByteArray bytes = file.readAll();
    const qsizetype lineEnd = bytes.indexOf('\n');
    const QByteArray magic(kMagic);
    if (lineEnd < 0 || !bytes.startsWith(magic + ' ')) {
        contents.problem = QStringLiteral("not a Velloran journal");
        return contents;
    }
    contents.header = QJsonDocument::fromJson(bytes.mid(magic.size() + 1, lineEnd - magic.size() - 1)).object();
    qsizetype at = lineEnd + 1;
    while (at < bytes.size()) {
        if (bytes.size() - at < 8) {
            contents.problem = QStringLiteral("the last record is cut off");
            break;
        }
        const quint32 length = getLittleEndian(bytes.constData() + at);
        const quint32 sum = getLittleEndian(bytes.constData() + at + 4);
        if (length > kLargestRecord || qsizetype(length) > bytes.size() - at - 8) {
            contents.problem = QStringLiteral("the last record is cut off");
            break;
        }
        const QByteArray payload = bytes.mid(at + 8, length);
        if (checksum(payload) != sum) {
            contents.problem = QStringLiteral("record %1 is damaged").arg(contents.records.size() + 1);
            break;
        }
        contents.records.append(payload);
        at += 8 + length;
    }
    return contents;
}

}  // namespace model
