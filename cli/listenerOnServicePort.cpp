#include "cli/listenerOnServicePort.h"

#include <algorithm>
#include <arpa/inet.h>
#include <filesystem>

#include "base/findTcpSocket.h"
#include "base/shownText.h"
#include "base/wholeFile.h"
#include "protocol/wire.h"

namespace kestrav {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kLongestName = 64;

bool holds(const fs::path& process, const std::string& socket) {
    std::error_code error;
    for (const auto& descriptor : fs::directory_iterator(process / "fd", error)) {
        std::error_code gone;
        if (fs::read_symlink(descriptor.path(), gone) == socket) return true;
    }
    return false;
}

/// The process that has it open, by its name. Only root sees into everybody's.
std::optional<std::string> processWith(std::uint32_t inode) {
    const std::string socket = "socket:[" + std::to_string(inode) + "]";
    std::error_code error;
    for (const auto& entry : fs::directory_iterator("/proc", error)) {
        const std::string number = entry.path().filename();
        if (!std::ranges::all_of(number, [](char c) { return c >= '0' && c <= '9'; })) continue;
        if (!holds(entry.path(), socket)) continue;
        auto name = readWholeFile(entry.path() / "comm", kLongestName);
        if (!name) continue;
        if (name.value().ends_with('\n')) name.value().pop_back();
        return shownText(name.value()) + " (process " + number + ")";
    }
    return std::nullopt;
}

}  // namespace

std::optional<std::string> listenerOnServicePort() {
    sockaddr_in service{};
    service.sin_family = AF_INET;
    service.sin_port = ::htons(kServicePort);
    service.sin_addr.s_addr = ::inet_addr(kServiceAddress);
    const SocketLook look = findListeningSocket(service);
    if (!look.socket) return std::nullopt;
    if (auto process = processWith(look.socket->inode)) return process;
    return "a program of user " + std::to_string(look.socket->uid);
}

}  // namespace kestrav
