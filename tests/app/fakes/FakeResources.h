#pragma once

#include <map>

#include "app/Resources.h"

namespace kestrav {

/// A program with the resources that a test puts in, by file name.
class FakeResources final : public Resources {
  public:
    std::map<std::string, std::string> files{{"Kestrav.momd", R"(<?xml version="1.0"?><model name="Kestrav"/>)"}};

    std::optional<std::string> resource(std::string_view name, std::string_view extension) const override {
        const auto found = files.find(std::string(name) + "." + std::string(extension));
        return found == files.end() ? std::nullopt : std::optional(found->second);
    }
};

}  // namespace kestrav
