#pragma once

#include <cstdint>
#include <map>
#include <stdexcept>
#include <string>
#include <string_view>

namespace kestrav {

inline constexpr std::string_view ErrorDomain = "JSONErrorDomain";

inline constexpr std::int64_t ErrorUnsupportedType = 999;
inline constexpr std::int64_t ErrorIndexOutOfBounds = 900;
inline constexpr std::int64_t ErrorWrongType = 901;
inline constexpr std::int64_t ErrorNotExist = 500;
inline constexpr std::int64_t ErrorInvalidJSON = 490;

/// The domain and code of what the reader reports; the message says what is wrong and at which byte.
inline constexpr std::string_view ReadingErrorDomain = "JSONReadingErrorDomain";
inline constexpr std::int64_t ErrorUnreadable = 3840;

/// The entry of `userInfo` that holds the message for people.
inline constexpr std::string_view LocalizedDescriptionKey = "NSLocalizedDescription";

/// What went wrong with a JSON value. A plain value.
struct JSONError {
    std::string domain;
    std::int64_t code = 0;
    std::map<std::string, std::string, std::less<>> userInfo;

    /// The message, empty when there is none.
    std::string localizedDescription() const;

    friend bool operator==(const JSONError&, const JSONError&) = default;
};

/// An error of this folder's own, with the message in its `userInfo`.
JSONError makeJSONError(std::int64_t code, std::string_view message);

/// The raised form, for writing to bytes.
class JSONException : public std::runtime_error {
  public:
    explicit JSONException(JSONError error)
        : std::runtime_error(error.localizedDescription()),
          error_(std::move(error)) {}
    const JSONError& error() const noexcept { return error_; }

  private:
    JSONError error_;
};

}  // namespace kestrav
