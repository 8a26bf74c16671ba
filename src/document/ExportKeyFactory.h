#pragma once
// The labels a document gives the published inputs of its exported file.

#include <QString>

namespace model {
class QuartzComponent;
}

namespace document {

// The component's title, the separator and the port key joined, except for
// the scroller's string list, which playout systems look up by the fixed
// name "EAS_TRANSLATION".
QString exportKeyFactory(const model::QuartzComponent& component, const QString& separator, const QString& portKey);

}  // namespace document
