#include "model/StoreFile.h"

#include "model/Attribute.h"
#include "model/Composition.h"
#include "model/QuartzComponent.h"
#include "model/Ruler.h"
#include "model/StopFrame.h"
#include "model/StoreFileTextRuns.h"
#include "model/StoreValueCodec.h"

#include <QFile>
#include <QHash>
#include <QSaveFile>
#include <QXmlStreamReader>
#include <QXmlStreamWriter>

#include <algorithm>
#include <functional>

namespace model {

namespace {

using Factory = std::function<std::unique_ptr<ManagedObject>(ObjectStore*)>;

const QHash<QString, Factory>& factories()
{
    static const QHash<QString, Factory> all = {
        {QStringLiteral("Composition"), [](ObjectStore* s) { return std::make_unique<Composition>(s); }},
        {QStringLiteral("Component"), [](ObjectStore* s) { return std::make_unique<QuartzComponent>(s); }},
        {QStringLiteral("Attribute"), [](ObjectStore* s) { return std::make_unique<Attribute>(s); }},
        {QStringLiteral("StopFrame"), [](ObjectStore* s) { return std::make_unique<StopFrame>(s); }},
        {QStringLiteral("Ruler"), [](ObjectStore* s) { return std::make_unique<Ruler>(s); }},
    };
    return all;
}

// Parsing stops at the first problem; the message carries the line.
struct StoreError {
    QString message;
};

}  // namespace

QByteArray StoreFile::write(const ObjectStore& store)
{
    QByteArray bytes;
    QXmlStreamWriter xml(&bytes);
    xml.setAutoFormatting(true);
    xml.setAutoFormattingIndent(1);
    xml.writeStartDocument();
    xml.writeStartElement(QStringLiteral("store"));
    xml.writeAttribute(QStringLiteral("version"), QString::number(kVersion));
    for (const ManagedObject* object : store.registeredObjects()) {
        const EntityDescription& entity = object->entity();
        xml.writeStartElement(QStringLiteral("object"));
        xml.writeAttribute(QStringLiteral("entity"), entity.name());
        xml.writeAttribute(QStringLiteral("id"), QString::number(object->objectId()));
        for (const AttributeDescription& attribute : entity.attributes()) {
            QXmlStreamAttributes name;
            name.append(QStringLiteral("name"), attribute.name);
            storecodec::writeValue(xml, object->storedValue(attribute.name), QStringLiteral("attribute"), name);
        }
        // To-many sides only: every inverse is rebuilt from them on reading.
        for (const RelationshipDescription& relation : entity.relationships()) {
            if (!relation.toMany) continue;
            QStringList ids;
            for (const ManagedObject* target : object->toMany(relation.name)) ids.append(QString::number(target->objectId()));
            xml.writeStartElement(QStringLiteral("relationship"));
            xml.writeAttribute(QStringLiteral("name"), relation.name);
            xml.writeCharacters(ids.join(QLatin1Char(' ')));
            xml.writeEndElement();
        }
        xml.writeEndElement();
    }
    xml.writeEndElement();
    xml.writeEndDocument();
    return bytes;
}

bool StoreFile::writeToFile(const ObjectStore& store, const QString& path, QString* error)
{
    const QByteArray bytes = write(store);
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.commit()) {
        if (error) *error = file.errorString();
        return false;
    }
    return true;
}

namespace {

// Blank as QByteArray::trimmed() sees it, without copying the whole file.
bool isBlank(QByteArrayView bytes)
{
    return std::all_of(bytes.begin(), bytes.end(), [](char c) { return c == ' ' || (c >= '\t' && c <= '\r'); });
}

// Builds the objects and links them; they are not set up yet. With `runs`,
// `bytes` is the XML they were cut from.
LoadedStore readObjects(const QByteArray& bytes, StoreFileTextRuns* runs)
{
    LoadedStore result;
    auto store = std::make_unique<ObjectStore>();
    UndoRegistrationPause pause(store->undoManager());
    QXmlStreamReader xml(bytes);
    struct PendingLinks {
        ManagedObject* object;
        QString relation;
        QList<quint64> targets;
        qint64 line;
    };
    std::vector<PendingLinks> links;
    try {
        auto fail = [&](const QString& message) { throw StoreError{QStringLiteral("line %1: %2").arg(xml.lineNumber()).arg(message)}; };
        if (isBlank(bytes)) fail(QStringLiteral("the file is empty"));
        if (!xml.readNextStartElement()) fail(xml.hasError() ? xml.errorString() : QStringLiteral("the file holds no store"));
        if (xml.name() != QLatin1String("store")) fail(QStringLiteral("not a Velloran store (root element <%1>)").arg(xml.name()));
        bool versionOk = false;
        const int version = xml.attributes().value(QLatin1String("version")).toInt(&versionOk);
        if (!versionOk) fail(QStringLiteral("the store has no version"));
        if (version > StoreFile::kVersion)
            fail(QStringLiteral("the store was written by a newer version of Velloran (format %1; this one reads %2)").arg(version).arg(StoreFile::kVersion));
        while (xml.readNextStartElement()) {
            if (xml.name() != QLatin1String("object")) {
                result.warnings.append(QStringLiteral("line %1: unknown element <%2> skipped").arg(xml.lineNumber()).arg(xml.name()));
                xml.skipCurrentElement();
                continue;
            }
            const QXmlStreamAttributes objectAttributes = xml.attributes();
            const QString entity = objectAttributes.value(QLatin1String("entity")).toString();
            bool idOk = false;
            const quint64 id = objectAttributes.value(QLatin1String("id")).toULongLong(&idOk);
            const auto factory = factories().constFind(entity);
            if (factory == factories().constEnd()) fail(QStringLiteral("unknown entity \"%1\"").arg(entity));
            if (!idOk || id == 0) fail(QStringLiteral("an object without a valid id"));
            if (store->objectWithId(id)) fail(QStringLiteral("the id %1 is used twice").arg(id));
            ManagedObject* object = store->insertObject(factory.value()(store.get()), id);
            while (xml.readNextStartElement()) {
                const QString name = xml.attributes().value(QLatin1String("name")).toString();
                if (xml.name() == QLatin1String("attribute")) {
                    QVariant value;
                    QString error;
                    if (!storecodec::readValue(xml, value, error, runs)) fail(xml.hasError() ? xml.errorString() : error);
                    if (object->entity().attributeIndex(name) < 0)
                        result.warnings.append(QStringLiteral("line %1: %2 has no stored value \"%3\"; it was not loaded").arg(xml.lineNumber()).arg(entity, name));
                    else
                        object->setPrimitiveValue(name, value);
                } else if (xml.name() == QLatin1String("relationship")) {
                    const qint64 line = xml.lineNumber();
                    const QString text = xml.readElementText();
                    const RelationshipDescription* relation = object->entity().relationship(name);
                    if (!relation || !relation->toMany) fail(QStringLiteral("%1 has no to-many relationship \"%2\"").arg(entity, name));
                    QList<quint64> targets;
                    for (QStringView id : QStringView(text).tokenize(u' ', Qt::SkipEmptyParts)) {
                        bool ok = false;
                        targets.append(id.toULongLong(&ok));
                        if (!ok) fail(QStringLiteral("invalid object id \"%1\"").arg(id));
                    }
                    links.push_back({object, name, targets, line});
                } else {
                    result.warnings.append(QStringLiteral("line %1: unknown element <%2> skipped").arg(xml.lineNumber()).arg(xml.name()));
                    xml.skipCurrentElement();
                }
            }
            if (xml.hasError()) fail(xml.errorString());
        }
        if (xml.hasError()) fail(xml.errorString());
        for (const PendingLinks& link : links) {
            for (quint64 id : link.targets) {
                ManagedObject* target = store->objectWithId(id);
                if (!target) throw StoreError{QStringLiteral("line %1: relationship \"%2\" names the missing object %3").arg(link.line).arg(link.relation).arg(id)};
                const std::vector<ManagedObject*>& linked = link.object->toMany(link.relation);
                if (std::find(linked.begin(), linked.end(), target) != linked.end()) continue;
                link.object->primitiveAddToMany(link.relation, target);
            }
        }
        const auto compositions = store->objectsOfEntity(QStringLiteral("Composition"));
        if (compositions.size() != 1)
            throw StoreError{QStringLiteral("the store holds %1 compositions instead of one").arg(compositions.size())};
        result.composition = static_cast<Composition*>(compositions.front());
    } catch (const StoreError& e) {
        result.error = e.message;
        return result;
    }
    result.store = std::move(store);
    return result;
}

// Everything is in place: let the objects set themselves up, the composition
// first so components find their time and resolution.
void setUpObjects(LoadedStore& loaded)
{
    ObjectStore& store = *loaded.store;
    UndoRegistrationPause pause(store.undoManager());
    loaded.composition->awakeFromFetch();
    for (ManagedObject* object : store.registeredObjects())
        if (object != loaded.composition) object->awakeFromFetch();
    store.processPendingChanges();
}

}  // namespace

LoadedStore StoreFile::read(const QByteArray& bytes)
{
    // Long base64 texts are read beside the XML (see StoreFileTextRuns.h).
    // When the cut XML could mean anything else than the file, or fails,
    // the file is read as it is, so its meaning and messages never change.
    StoreFileTextRuns runs(bytes);
    LoadedStore loaded;
    if (!runs.isEmpty()) {
        loaded = readObjects(runs.xml(), &runs);
        if (loaded && !runs.allTaken()) loaded = {};
    }
    if (!loaded) loaded = readObjects(bytes, nullptr);
    if (loaded) setUpObjects(loaded);
    return loaded;
}

LoadedStore StoreFile::readFile(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        LoadedStore result;
        result.error = QStringLiteral("%1: %2").arg(path, file.errorString());
        return result;
    }
    return read(file.readAll());
}

}  // namespace model
