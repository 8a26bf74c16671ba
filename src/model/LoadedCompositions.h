#pragma once
// Loaded compositions shared between components made from the same file.
// A document of many lower thirds or boxes holds the same bytes many times;
// a loaded composition is an immutable template, so one serves them all and
// opening the document parses each distinct file once.

#include <QByteArray>
#include <QString>

#include <memory>

namespace runtime {
class Composition;
}

namespace model {

// The composition of `data` (with file references resolved against
// `directory`), loaded now or taken from the recent ones; null with `error`
// set when it cannot be loaded.
std::shared_ptr<const runtime::Composition> loadSharedComposition(const QByteArray& data, const QString& directory,
                                                                  QString* error);

}  // namespace model
