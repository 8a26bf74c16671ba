#include "inspector/AttributeEditor.h"

namespace inspector {

QString mixedValuesPlaceholder() { return QStringLiteral("Multiple values"); }

}  // namespace inspector
