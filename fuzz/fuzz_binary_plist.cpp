// libFuzzer target for the binary property-list reader: any input gives a
// value or an error; a value must write in both formats and read back equal.
#include "PlistRoundTripCheck.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    std::string error;
    const auto value = plist::readBinary(std::string_view(reinterpret_cast<const char*>(data), size), &error);
    if (!value) {
        if (error.empty()) fuzz::mismatch("readBinary failed without an error message");
        return 0;
    }
    fuzz::checkRoundTrips(*value);
    return 0;
}
