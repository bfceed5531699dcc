#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>

namespace kestrav {

/// A folder of its own for one test, gone with it.
class TemporaryFolder {
  public:
    TemporaryFolder() {
        std::string pattern = std::filesystem::temp_directory_path() / "kestrav-test-XXXXXX";
        if (::mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("no temporary folder");
        path_ = pattern;
    }
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::filesystem::path& path() const { return path_; }

    /// Writes a file below the folder and returns its path.
    std::string file(std::string_view name, std::string_view contents) const {
        const auto path = path_ / name;
        std::ofstream(path, std::ios::binary) << contents;
        return path;
    }

  private:
    std::filesystem::path path_;
};

inline std::string contentsOf(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

/// `size` bytes in which no two blocks are alike; another `seed` gives others.
inline std::string patternOf(std::size_t size, unsigned seed = 1) {
    std::string bytes(size, '\0');
    unsigned state = seed * 2654435761U + 1;
    for (char& byte : bytes) {
        state = state * 1664525U + 1013904223U;
        byte = static_cast<char>(state >> 24U);
    }
    return bytes;
}

}  // namespace kestrav
