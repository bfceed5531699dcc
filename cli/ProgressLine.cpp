#include "cli/ProgressLine.h"

#include <algorithm>
#include <span>
#include <string>
#include <sys/ioctl.h>

#include "base/wholeFile.h"

namespace kestrav {
namespace {

constexpr std::string_view kBackAndErased = "\r\x1b[K";
constexpr std::size_t kUsualColumns = 80;

std::size_t columnsOf(int terminal) {
    winsize size{};
    return ::ioctl(terminal, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : kUsualColumns;
}

/// A terminal that has gone is nobody's loss.
void put(int terminal, std::string_view text) {
    (void)writeAll(terminal, std::as_bytes(std::span(text)));
}

}  // namespace

void ProgressLine::show(std::string_view line) {
    const std::scoped_lock lock(mutex_);
    // In one piece, so that nothing flickers.
    put(terminal_, std::string(kBackAndErased).append(line.substr(0, columnsOf(terminal_) - 1)));
    isShown_ = true;
}

void ProgressLine::clear() {
    const std::scoped_lock lock(mutex_);
    if (isShown_) put(terminal_, kBackAndErased);
    isShown_ = false;
}

}  // namespace kestrav
