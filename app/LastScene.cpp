#include "app/LastScene.h"

#include <array>
#include <string_view>
#include <unistd.h>

namespace kestrav {
namespace {

constexpr const char* kProgram = "kestrav";
constexpr const char* kOption = "--last-words";
constexpr std::array kIsUpdating{"idle", "updating"};
constexpr std::array kMayBeWritten{"untouched", "maybe-written"};

/// Whether the word is the second one; nothing where it is neither.
std::optional<bool> meant(std::string_view word, const std::array<const char*, 2>& words) {
    if (word == words[0]) return false;
    if (word == words[1]) return true;
    return std::nullopt;
}

}  // namespace

void LastScene::handOver() const {
    // The program that runs, even if its file has been replaced since.
    ::execl("/proc/self/exe", kProgram, kOption, isUpdating ? kIsUpdating[1] : kIsUpdating[0],
            mayBeWritten ? kMayBeWritten[1] : kMayBeWritten[0], path.c_str(), nullptr);
}

std::optional<LastScene> LastScene::handedOver(std::span<char* const> arguments) {
    if (arguments.size() != 5 || std::string_view(arguments[1]) != kOption) return std::nullopt;
    const auto isUpdating = meant(arguments[2], kIsUpdating);
    const auto mayBeWritten = meant(arguments[3], kMayBeWritten);
    if (!isUpdating || !mayBeWritten) return std::nullopt;
    return LastScene{*isUpdating, *mayBeWritten, arguments[4]};
}

}  // namespace kestrav
