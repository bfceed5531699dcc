#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace kestrav {

/// The files that are part of the program.
class Resources {
  public:
    virtual ~Resources() = default;

    /// The content of the file NAME.EXTENSION; absent when there is none.
    virtual std::optional<std::string> resource(std::string_view name, std::string_view extension) const = 0;
};

}  // namespace kestrav
