#include "plist/Key.h"

#include <ostream>

namespace plist {

const std::string& Key::emptyText()
{
    static const std::string empty;
    return empty;
}

std::ostream& operator<<(std::ostream& out, const Key& key)
{
    return out << key.view();
}

}  // namespace plist
