#pragma once
// The archived form of component dictionaries that copy and paste exchange:
// an XML document holding each dictionary in the store file's value
// encoding, so every attribute value (colours, images, fonts, keyframe
// tables, rich fonts) comes back as the same kind of value, bit for bit.

#include <QByteArray>
#include <QList>
#include <QString>
#include <QVariantMap>

namespace document {

class ComponentArchive {
public:
    static QByteArray archive(const QList<QVariantMap>& dictionaries);
    // False, with a reason, for data that is not an archive of components
    // or comes from a newer version of the program.
    static bool unarchive(const QByteArray& data, QList<QVariantMap>& dictionaries, QString* error = nullptr);
};

}  // namespace document
