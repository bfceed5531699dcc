#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace kestrav {

/// A file chooser that is set up, then run once. Used on the main thread.
class OpenPanel {
  public:
    /// What `runModal` gives when the choice was confirmed; anything else means that it was not.
    static constexpr std::int32_t kResponseOK = 1;

    virtual ~OpenPanel() = default;

    /// File name endings without the dot; files of other types can't be chosen.
    virtual void setAllowedFileTypes(std::span<const std::string_view> types) = 0;
    virtual void setTitle(std::string_view title) = 0;
    virtual void setShowsResizeIndicator(bool value) = 0;
    virtual void setShowsHiddenFiles(bool value) = 0;
    virtual void setCanChooseDirectories(bool value) = 0;
    virtual void setCanCreateDirectories(bool value) = 0;
    virtual void setAllowsMultipleSelection(bool value) = 0;

    /// Shows the chooser, waits for the person and returns the response.
    virtual std::int32_t runModal() = 0;

    /// The path of what was chosen; present after a confirmed choice.
    virtual std::optional<std::string> path() const = 0;
};

}  // namespace kestrav
