#pragma once
// Lossless text forms of the values the store holds: scalars, strings,
// colours, images (TIFF; older stores have PNG), fonts, keyframe tables,
// rich fonts and nested lists and maps. Each value is one <value type="...">
// element.

#include <QVariant>
#include <QXmlStreamReader>
#include <QXmlStreamWriter>

namespace model {
class StoreFileTextRuns;
class StoreResources;
}

namespace model::storecodec {

// With `resources`, large pictures become files beside the store.
void writeValue(QXmlStreamWriter& xml, const QVariant& value, const QString& element = QStringLiteral("value"),
                const QXmlStreamAttributes& extra = {}, StoreResources* resources = nullptr);

// Reads the value of the element the reader stands on (a start element with
// a "type" attribute) and leaves the reader on its end element. On failure
// returns false with a message; the reader's own errors take precedence.
// With `runs`, a value's text may start with a run cut out before parsing.
// With `resources`, values kept in files beside the store can be read.
bool readValue(QXmlStreamReader& xml, QVariant& value, QString& error, StoreFileTextRuns* runs = nullptr,
               const StoreResources* resources = nullptr);

}  // namespace model::storecodec
