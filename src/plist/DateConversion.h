#pragma once
// Property-list dates are seconds since 2001-01-01 00:00:00 UTC; XML writes
// them as ISO 8601 "YYYY-MM-DDTHH:MM:SSZ".

#include <string>
#include <string_view>

namespace plist {

bool parseIso8601(std::string_view text, double& secondsSince2001);
std::string formatIso8601(double secondsSince2001);

}  // namespace plist
