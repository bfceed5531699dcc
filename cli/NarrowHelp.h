#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace kestrav {

/// The help with no line of more than 80 columns. A line that is longer goes on below where its last column began.
class NarrowHelp final : public CLI::Formatter {
  public:
    NarrowHelp();

    std::string make_help(const CLI::App* app, std::string name, CLI::AppFormatMode mode) const override;
};

}  // namespace kestrav
