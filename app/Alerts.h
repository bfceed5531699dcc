#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace kestrav {

struct ApplicationError;

/// A message that has to be answered. Texts are UTF-8 and shown as they are.
struct Alert {
    std::string messageText;
    std::string informativeText;
    std::vector<std::string> buttons;  ///< in their order; with none there is the toolkit's own single one
};

/// Shows messages and waits for the answer. Used on the main thread.
class Alerts {
  public:
    /// The response for the first button; the following buttons' are the numbers that follow.
    static constexpr std::int32_t kFirstButtonReturn = 1000;

    virtual ~Alerts() = default;

    /// `text` in the person's language, if it is translated, and as it is otherwise. It is found by `context`, the
    /// place where it is used, and by `comment`, which tells translators what it is.
    virtual std::string translate(const char* context, const char* text, const char* comment) const = 0;

    virtual std::int32_t runModal(const Alert& alert) = 0;

    /// Tells the person about `error`. True when that has put the matter right.
    virtual bool presentError(const ApplicationError& error) = 0;
};

}  // namespace kestrav
