#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace kestrav {

/// What ends each line of the log's text.
inline constexpr std::string_view kLogLineEnd = "\r\n";

/// The text of the window's log, which only grows. May be used on any thread: a call returns when the text has changed
/// on the main one, which shows it then or a moment later.
class LogText {
  public:
    virtual ~LogText() = default;

    /// All of it, with the line ends it was given. Absent when there is no text to be read any more.
    virtual std::optional<std::string> string() const = 0;

    /// Puts `text` behind what is there; the cost is that of `text`, however long the log is already. False when the
    /// log can't be read any more.
    [[nodiscard]] virtual bool append(std::string_view text) = 0;

    /// Brings the newest line into view.
    virtual void scrollToEndOfDocument() = 0;
};

}  // namespace kestrav
