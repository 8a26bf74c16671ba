#pragma once
// Conversion of attribute values (QVariant) into file values.

#include "plist/Value.h"

#include <QMetaType>
#include <QVariant>

Q_DECLARE_METATYPE(plist::Value)

namespace quartz {

// Colours become {"alpha": 1, "blue", "green", "red"} single-precision
// dictionaries (exported colours are always opaque), images their TIFF
// representation, lists and maps containers; a plist::Value passes through.
plist::Value fileValueForVariant(const QVariant& value);

// TIFF bytes of an image, the form images take inside composition files:
// encoded once and then shared by every save, export and copy (TiffCodec.h).
QByteArray tiffRepresentation(const QImage& image);

}  // namespace quartz
