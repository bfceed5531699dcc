#include "json/value/decodedText.h"

#include <memory>
#include <unicode/ucnv.h>
#include <unicode/unistr.h>

#include "base/utf8.h"

namespace kestrav::json {
namespace {

const char* nameOf(TextEncoding encoding) {
    switch (encoding) {
        case TextEncoding::ascii:
            return "US-ASCII";
        case TextEncoding::utf8:
            return "UTF-8";
        case TextEncoding::isoLatin1:
            return "ISO-8859-1";
        case TextEncoding::utf16BigEndian:
            return "UTF-16BE";
        case TextEncoding::utf16LittleEndian:
            return "UTF-16LE";
    }
    return "";
}

}  // namespace

std::optional<std::string> decodedText(std::string_view bytes, TextEncoding encoding) {
    if (encoding == TextEncoding::utf8) {
        return isValidUTF8(bytes) ? std::optional<std::string>(bytes) : std::nullopt;
    }
    if (bytes.size() > INT32_MAX) return std::nullopt;
    UErrorCode status = U_ZERO_ERROR;
    const std::unique_ptr<UConverter, decltype(&ucnv_close)> converter(ucnv_open(nameOf(encoding), &status),
                                                                       &ucnv_close);
    // Without this a byte that means nothing would silently become a replacement character.
    ucnv_setToUCallBack(converter.get(), UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
    const icu::UnicodeString decoded(bytes.data(), static_cast<std::int32_t>(bytes.size()), converter.get(), status);
    if (U_FAILURE(status)) return std::nullopt;
    std::string text;
    decoded.toUTF8String(text);
    return text;
}

}  // namespace kestrav::json
