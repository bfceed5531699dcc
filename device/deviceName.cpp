#include "device/deviceName.h"

#include "base/utf8.h"

namespace kestrav {

namespace {

// The registry's name buffer has 128 bytes, and the last one is its NUL.
constexpr std::size_t longestName = 127;

}  // namespace

std::string deviceName(std::string_view reported) {
    std::string name = repairedUTF8(reported.substr(0, reported.find('\0')));
    if (name.size() > longestName) name.resize(validUTF8Length(std::string_view(name).substr(0, longestName)));
    return name;
}

}  // namespace kestrav
