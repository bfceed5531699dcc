#include "services/gate/shownCommandLine.h"

#include "base/shownText.h"

namespace kestrav {

std::string shownCommandLine(std::string start, std::string_view command, std::span<const std::string> arguments) {
    start += shownText(command, 40);
    for (const std::string& argument : arguments) {
        start += ' ' + shownText(argument);
        if (start.size() > 2000) return start + " ...";
    }
    return start;
}

}  // namespace kestrav
