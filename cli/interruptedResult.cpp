#include "cli/interruptedResult.h"

namespace kestrav {

UpdateResult interruptedResult(const WriteState& state) {
    UpdateResult result;
    result.disk = state.disk;
    if (state.phase == WritePhase::asking) {
        return result.endedWith(ExitCode::interrupted, "The request was given up.",
                                "'journalctl -t kestrav-commandd' tells whether it was begun all the same.");
    }
    return result.endedWith(ExitCode::interrupted, "The service goes on writing.",
                            "Don't unplug; journalctl -t kestrav-commandd tells the end.");
}

}  // namespace kestrav
