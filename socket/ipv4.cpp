#include "socket/ipv4.h"

#include <arpa/inet.h>
#include <array>
#include <cerrno>
#include <cstring>
#include <netdb.h>
#include <sys/socket.h>
#include <vector>

namespace kestrav {

std::optional<in_addr> firstAddressOf(const char* host) {
    constexpr std::size_t enoughForAnyAnswer = 1U << 20U;
    for (std::vector<char> storage(1024); storage.size() <= enoughForAnyAnswer; storage.resize(storage.size() * 2)) {
        hostent entry{};
        hostent* found = nullptr;
        int reason = 0;
        const int status = ::gethostbyname_r(host, &entry, storage.data(), storage.size(), &found, &reason);
        if (status == ERANGE) continue;
        in_addr address{};
        const bool usable = status == 0 && found != nullptr && found->h_addrtype == AF_INET &&
                            found->h_length == sizeof address && found->h_addr_list[0] != nullptr;
        if (!usable) return std::nullopt;
        std::memcpy(&address, found->h_addr_list[0], sizeof address);
        return address;
    }
    return std::nullopt;
}

sockaddr_in ipv4Endpoint(in_addr address, std::int32_t port) {
    sockaddr_in endpoint{};
    endpoint.sin_family = AF_INET;
    endpoint.sin_port = htons(static_cast<std::uint16_t>(port));
    endpoint.sin_addr = address;
    return endpoint;
}

in_addr addressFromText(const char* text) {
    return in_addr{::inet_addr(text)};
}

void copyAddressText(in_addr address, char* text) {
    std::array<char, INET_ADDRSTRLEN> dotted{};
    ::inet_ntop(AF_INET, &address, dotted.data(), dotted.size());
    std::memcpy(text, dotted.data(), std::strlen(dotted.data()));
}

int switchOn(int fd, int option) {
    const std::int32_t on = 1;
    return ::setsockopt(fd, SOL_SOCKET, option, &on, sizeof on);
}

}  // namespace kestrav
