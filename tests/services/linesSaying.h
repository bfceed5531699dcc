#pragma once

#include <cstddef>
#include <sstream>
#include <string>
#include <string_view>

namespace kestrav {

/// How many lines of a log hold `words`.
inline std::size_t linesSaying(const std::string& log, std::string_view words) {
    std::istringstream lines(log);
    std::size_t count = 0;
    for (std::string line; std::getline(lines, line);)
        count += line.find(words) != std::string::npos ? 1 : 0;
    return count;
}

}  // namespace kestrav
