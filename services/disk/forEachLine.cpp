#include "services/disk/forEachLine.h"

#include <array>
#include <cstddef>
#include <fcntl.h>
#include <unistd.h>

#include "base/UniqueFd.h"
#include "base/retry.h"

namespace kestrav {
namespace {

constexpr std::size_t kLongestLine = 16384;
constexpr std::size_t kLongestFile = std::size_t{16} << 20U;

/// Puts lines together from pieces of a file.
class Lines {
  public:
    explicit Lines(const std::function<bool(std::string_view)>& take) : take_(take) {}

    /// False once no more lines are wanted.
    bool add(std::string_view piece) {
        for (std::size_t end = 0; (end = piece.find('\n')) != std::string_view::npos; piece.remove_prefix(end + 1)) {
            keep(piece.substr(0, end));
            if (!take_(line_)) return false;
            line_.clear();
        }
        keep(piece);
        return true;
    }
    void finish() {
        if (!line_.empty()) take_(line_);
    }

  private:
    void keep(std::string_view text) { line_ += text.substr(0, kLongestLine - line_.size()); }

    const std::function<bool(std::string_view)>& take_;
    std::string line_;
};

}  // namespace

void forEachLine(const std::string& file, const std::function<bool(std::string_view line)>& take) {
    const UniqueFd fd(::open(file.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    if (!fd) return;
    Lines lines(take);
    std::array<char, kLongestLine> piece;  // NOLINT: only what read() wrote is looked at
    for (std::size_t all = 0; all < kLongestFile;) {
        const ssize_t got = retry([&] { return ::read(fd.get(), piece.data(), piece.size()); });
        if (got <= 0) return lines.finish();
        all += static_cast<std::size_t>(got);
        if (!lines.add({piece.data(), static_cast<std::size_t>(got)})) return;
    }
}

}  // namespace kestrav
