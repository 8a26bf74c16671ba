#include "model/StoreFile.h"

#include "model/Attribute.h"
#include "model/Composition.h"
#include "model/QuartzComponent.h"
#include "model/Ruler.h"
#include "model/StopFrame.h"
#include "model/StoreFileReader.h"
#include "model/StoreFileTextRuns.h"
#include "model/StoreResources.h"
#include "model/StoreValueCodec.h"

#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QSaveFile>
#include <QXmlStreamReader>
#include <QXmlStreamWriter>

#include <algorithm>
#include <functional>

namespace model {

QByteArray StoreFile::write(const ObjectStore& store, StoreResources* resources)
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
            storecodec::writeValue(xml, object->storedValue(attribute.name), QStringLiteral("attribute"), name, resources);
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
    StoreResources resources(QFileInfo(path).absolutePath());
    const QByteArray bytes = write(store, &resources);
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.commit()) {
        if (error) *error = file.errorString();
        return false;
    }
    // Only now, with the new store in place, are the old pictures unused.
    resources.removeUnused();
    return true;
}

LoadedStore StoreFile::read(const QByteArray& bytes, StoreReadMode mode, const StoreResources* resources)
{
    // Long base64 texts are read beside the XML (see StoreFileTextRuns.h).
    // When the cut XML could mean anything else than the file, or fails,
    // the file is read as it is, so its meaning and messages never change.
    StoreFileTextRuns runs(bytes);
    LoadedStore loaded;
    if (!runs.isEmpty()) {
        loaded = readStoreObjects(runs.xml(), &runs, mode, resources);
        // A repair that dropped anything is redone on the file as it is, so
        // the list of what was dropped speaks of the file's own lines.
        if (loaded && (!runs.allTaken() || !loaded.dropped.isEmpty())) loaded = {};
    }
    if (!loaded) loaded = readStoreObjects(bytes, nullptr, mode, resources);
    if (loaded) setUpStoreObjects(loaded);
    return loaded;
}

LoadedStore StoreFile::readFile(const QString& path, StoreReadMode mode)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        LoadedStore result;
        result.error = QStringLiteral("%1: %2").arg(path, file.errorString());
        return result;
    }
    const StoreResources resources(QFileInfo(path).absolutePath());
    return read(file.readAll(), mode, &resources);
}

}  // namespace model
