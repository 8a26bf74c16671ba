#pragma once
// The payload behind a plist::legacy::Object, shared by the object model,
// the reader and the writer. Not part of the public interface.

#include "plist/LegacyArchiveObject.h"

#include <memory>
#include <string>
#include <vector>

namespace plist::legacy::detail {

// Class chains and encodings are shared between objects: a stream can name
// a long encoding once and then refer to it from many objects.
using ClassChain = std::shared_ptr<const std::vector<ArchivedClass>>;
using SharedText = std::shared_ptr<const std::string>;

struct Node {
    ObjectKind kind = ObjectKind::Nil;
    ClassChain chain;
    std::string text;                // String: UTF-8 bytes; Data: the bytes
    SharedText encoding;             // Number, Value
    std::vector<double> components;  // Number, Value, Color
    ColorKind colorKind = ColorKind::CalibratedRgba;
    std::vector<Object> elements;    // Array; named Color: catalog, name, fallback
    std::vector<Entry> entries;      // Dictionary
    std::vector<FieldGroup> groups;  // Opaque
};

}  // namespace plist::legacy::detail
