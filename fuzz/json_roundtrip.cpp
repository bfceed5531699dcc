// Whatever the reader accepts, the writer writes so that the reader gives the same tree again, and writing that gives
// the same text again. A rejected document says at which byte it went wrong.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "base/stopProcess.h"
#include "base/utf8.h"
#include "json/tree/dataWithJSONObject.h"
#include "json/tree/readJSON.h"

namespace kestrav {
namespace {

void checkRoundTrip(const Tree& tree) {
    require(isValidJSONObject(tree));
    const std::string written = dataWithJSONObject(tree);
    require(isValidUTF8(written));
    const auto again = readJSON(written);
    require(std::holds_alternative<Tree>(again));
    require(std::get<Tree>(again) == tree);
    require(dataWithJSONObject(std::get<Tree>(again)) == written);
    const auto fromPretty = readJSON(dataWithJSONObject(tree, WritingOptions::prettyPrinted));
    require(std::holds_alternative<Tree>(fromPretty) && std::get<Tree>(fromPretty) == tree);
}

void check(std::string_view bytes) {
    const auto result = readJSON(bytes, ReadingOptions::allowFragments);
    if (const auto* error = std::get_if<ReadError>(&result)) {
        require(error->offset <= bytes.size());
        return;
    }
    // A fragment is put where it may be written.
    Tree list = Tree::list();
    list.append(std::get<Tree>(result));
    require(isValidUTF8(bytes));
    const bool mayBeTooDeep = bytes.size() >= 2 * kMaxReadingDepth;
    if (!mayBeTooDeep) checkRoundTrip(list);
}

}  // namespace
}  // namespace kestrav

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    kestrav::check({reinterpret_cast<const char*>(data), size});
    return 0;
}
