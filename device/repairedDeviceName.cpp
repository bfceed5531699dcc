#include "device/repairedDeviceName.h"

#include "base/utf8.h"

namespace kestrav {

namespace {

// The registry's name buffer has 128 bytes, and the last one is its NUL.
constexpr std::size_t kLongestName = 127;

}  // namespace

std::string repairedDeviceName(std::string_view reported) {
    std::string name = repairedUTF8(reported.substr(0, reported.find('\0')));
    if (name.size() > kLongestName) name.resize(validUTF8Length(std::string_view(name).substr(0, kLongestName)));
    return name;
}

}  // namespace kestrav
