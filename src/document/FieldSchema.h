#pragma once
// The fields an operator may fill in, as a Graphics Data Definition (GDD):
// a JSON Schema whose properties are the attributes with "operator may
// change" on, so that a control application builds its fill-in form from
// it. Written by `velloran-cli doc schema`, "File > Export Field Schema…"
// and into every saved package as "Fields.gdd.json".

#include <QHash>
#include <QJsonObject>
#include <QString>

namespace model {
class Attribute;
class Composition;
}

namespace document {

QString fieldSchemaFileName();  // "Fields.gdd.json"

// The id of every field (attribute the operator may change): title and key
// as the export's key factory joins them, made unique by numbering.
QHash<const model::Attribute*, QString> fieldIds(const model::Composition& composition);

// `title`: the template's name (the package's name without extension).
QJsonObject fieldSchema(const model::Composition& composition, const QString& title);

// The schema as indented JSON, written atomically.
bool writeFieldSchema(const model::Composition& composition, const QString& title, const QString& path,
                      QString* error = nullptr);

}  // namespace document
