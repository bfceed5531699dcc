#include "socket/firstAddressOf.h"

#include <arpa/inet.h>
#include <cerrno>
#include <cstring>
#include <netdb.h>
#include <string_view>
#include <vector>

namespace kestrav {

namespace {

/// Whether gethostbyname(3) takes a text for an address and never for a name.
bool isNumeric(std::string_view text) {
    return !text.empty() && text.front() != '.' && text.back() != '.' &&
           text.find_first_not_of("0123456789.") == std::string_view::npos;
}

std::optional<in_addr> addressFromEntry(const hostent* entry) {
    in_addr address{};
    const bool usable = entry != nullptr && entry->h_addrtype == AF_INET && entry->h_length == sizeof address &&
                        entry->h_addr_list[0] != nullptr;
    if (!usable) return std::nullopt;
    std::memcpy(&address, entry->h_addr_list[0], sizeof address);
    return address;
}

std::optional<in_addr> addressByName(const char* host) {
    constexpr std::size_t kEnoughForAnyAnswer = 1U << 20U;
    for (std::vector<char> storage(1024); storage.size() <= kEnoughForAnyAnswer; storage.resize(storage.size() * 2)) {
        hostent entry{};
        hostent* found = nullptr;
        int reason = 0;
        const int status = ::gethostbyname_r(host, &entry, storage.data(), storage.size(), &found, &reason);
        if (status != ERANGE) return addressFromEntry(status == 0 ? found : nullptr);
    }
    return std::nullopt;
}

}  // namespace

std::optional<in_addr> firstAddressOf(const char* host) {
    if (!isNumeric(host)) return addressByName(host);
    // gethostbyname_r would give the same answer, but only after reading the resolver's configuration.
    in_addr address{};
    if (::inet_aton(host, &address) == 0) return std::nullopt;
    return address;
}

}  // namespace kestrav
