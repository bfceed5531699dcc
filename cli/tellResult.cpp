#include "cli/tellResult.h"

#include <ostream>

#include "base/shownText.h"
#include "cli/complain.h"

namespace kestrav {

ExitCode tellResult(const UpdateResult& result, const Console& console) {
    if (result.status != ExitCode::success) {
        complain(console, result.lastLine());
    } else if (!result.lastLine().empty()) {
        console.out << escapedForTerminal(result.lastLine()) << std::endl;
    }
    return result.status;
}

}  // namespace kestrav
