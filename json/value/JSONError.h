#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "json/value/TextPlace.h"

namespace kestrav {

namespace json {

/// The domain of the errors that this folder makes.
inline constexpr std::string_view ErrorDomain = "JSONErrorDomain";

/// A value was given an object that JSON has no form for.
inline constexpr std::int64_t ErrorUnsupportedType = 999;
/// A list has no element of that index.
inline constexpr std::int64_t ErrorIndexOutOfBounds = 900;
/// An index for what is no list, or a key for what is no dictionary.
inline constexpr std::int64_t ErrorWrongType = 901;
/// A dictionary has no member of that key.
inline constexpr std::int64_t ErrorNotExist = 500;
/// Something was to be written that JSON can't express.
inline constexpr std::int64_t ErrorInvalidJSON = 490;

/// The domain of what the reader reports.
inline constexpr std::string_view ReadingErrorDomain = "JSONReadingErrorDomain";
/// The code of what the reader reports; the message says what is wrong and at which byte.
inline constexpr std::int64_t ErrorUnreadable = 3840;

/// The entry of `userInfo` that holds the message for people.
inline constexpr std::string_view LocalizedDescriptionKey = "NSLocalizedDescription";

}  // namespace json

/// What went wrong with a JSON value. A plain value.
struct JSONError {
    std::string domain;     ///< whose codes these are: json::ErrorDomain or json::ReadingErrorDomain
    std::int64_t code = 0;  ///< one of those above; 0 while nothing went wrong
    std::map<std::string, std::string, std::less<>> userInfo;  ///< the message, under json::LocalizedDescriptionKey
    std::optional<json::TextPlace> place{};                    ///< where a document could not be read any further

    /// The message, empty when there is none.
    std::string localizedDescription() const;

    /// Equal in every part.
    friend bool operator==(const JSONError&, const JSONError&) = default;
};

/// An error of json::ErrorDomain, with the message in its `userInfo`.
JSONError makeJSONError(std::int64_t code, std::string_view message);

}  // namespace kestrav
