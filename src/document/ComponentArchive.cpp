#include "document/ComponentArchive.h"

#include "model/StoreValueCodec.h"

#include <QXmlStreamReader>
#include <QXmlStreamWriter>

namespace document {

namespace {
const QString kRoot = QStringLiteral("components");
constexpr int kVersion = 1;
}  // namespace

QByteArray ComponentArchive::archive(const QList<QVariantMap>& dictionaries)
{
    QByteArray bytes;
    QXmlStreamWriter xml(&bytes);
    xml.writeStartDocument();
    xml.writeStartElement(kRoot);
    xml.writeAttribute(QStringLiteral("version"), QString::number(kVersion));
    for (const QVariantMap& dictionary : dictionaries) model::storecodec::writeValue(xml, dictionary, QStringLiteral("component"));
    xml.writeEndElement();
    xml.writeEndDocument();
    return bytes;
}

bool ComponentArchive::unarchive(const QByteArray& data, QList<QVariantMap>& dictionaries, QString* error)
{
    auto fail = [&](const QString& message) {
        if (error) *error = message;
        return false;
    };
    QXmlStreamReader xml(data);
    if (!xml.readNextStartElement() || xml.name() != kRoot) return fail(QStringLiteral("not an archive of components"));
    bool numeric = false;
    const int version = xml.attributes().value(QLatin1String("version")).toInt(&numeric);
    // A newer program may have put things in we would drop without noticing.
    if (!numeric || version < 1 || version > kVersion)
        return fail(QStringLiteral("an archive of components of unknown version \"%1\"")
                        .arg(xml.attributes().value(QLatin1String("version"))));
    QList<QVariantMap> result;
    while (xml.readNextStartElement()) {
        QVariant value;
        QString reason;
        if (!model::storecodec::readValue(xml, value, reason))
            return fail(xml.hasError() ? xml.errorString() : reason);
        if (value.metaType().id() != QMetaType::QVariantMap) return fail(QStringLiteral("a component that is not a dictionary"));
        result.append(value.toMap());
    }
    if (xml.hasError()) return fail(xml.errorString());
    dictionaries = result;
    return true;
}

}  // namespace document
