#include "cli/tellResult.h"

#include <ostream>

#include "base/shownText.h"
#include "cli/complain.h"
#include "cli/resultObject.h"
#include "json/tree/dataWithJSONObject.h"

namespace kestrav {

ExitCode tellResult(const UpdateResult& result, bool json, const Console& console) {
    if (json) console.out << dataWithJSONObject(resultObject(result)) << std::endl;
    if (result.status != ExitCode::success) {
        complain(console, result.lastLine());
    } else if (!json && !result.lastLine().empty()) {
        console.out << escapedForTerminal(result.lastLine()) << std::endl;
    }
    return result.status;
}

}  // namespace kestrav
