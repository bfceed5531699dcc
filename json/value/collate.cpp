#include "json/value/collate.h"

#include <memory>
#include <unicode/coll.h>

#include "base/stopProcess.h"

namespace kestrav::json {
namespace {

icu::StringPiece piece(std::string_view text) {
    require(text.size() <= INT32_MAX);
    return {text.data(), static_cast<std::int32_t>(text.size())};
}

/// Made once, as it costs much, and only read from then on.
const icu::Collator* collator() {
    static const std::unique_ptr<const icu::Collator> made = [] {
        UErrorCode status = U_ZERO_ERROR;
        std::unique_ptr<icu::Collator> root(icu::Collator::createInstance(icu::Locale::getRoot(), status));
        if (U_FAILURE(status)) root.reset();
        return root;
    }();
    return made.get();
}

}  // namespace

std::strong_ordering collate(std::string_view left, std::string_view right) {
    if (left == right) return std::strong_ordering::equal;
    UErrorCode status = U_ZERO_ERROR;
    UCollationResult result = UCOL_EQUAL;
    if (const icu::Collator* order = collator()) result = order->compareUTF8(piece(left), piece(right), status);
    if (U_SUCCESS(status) && result != UCOL_EQUAL) {
        return result == UCOL_LESS ? std::strong_ordering::less : std::strong_ordering::greater;
    }
    return left.compare(right) <=> 0;
}

}  // namespace kestrav::json
