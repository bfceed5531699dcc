#include "cli/complain.h"

#include <ostream>

#include "base/shownText.h"

namespace kestrav {

void complain(const Console& console, std::string_view sentence) {
    console.err << "kestravctl: " << escapedForTerminal(sentence) << std::endl;
}

ExitCode wrongCall(const Console& console, std::string_view sentence) {
    complain(console, sentence);
    return ExitCode::wrongCall;
}

}  // namespace kestrav
