#pragma once

#include <chrono>
#include <cstdint>
#include <string>

#include "cli/ExitCode.h"

namespace kestrav {

/// What came of one request to the command service. Whatever is said of it, on a terminal or to a program, is made from
/// this, so that it can't be said in two ways.
struct UpdateResult {
    ExitCode status = ExitCode::failure;
    std::string sentence;                   ///< what came of it; empty where that needs no words
    std::string remedy;                     ///< what to do next; empty where nothing has to be done
    std::string disk;                       ///< the kernel's name of the accessory's; empty without one
    std::string serial;                     ///< the accessory's serial number; empty where it has none
    std::string port;                       ///< the USB port it is plugged into, such as "1-2.3"
    std::int64_t firstBlock = 0;            ///< of the place on the disk, in blocks of 512 bytes
    std::int64_t bytes = 0;                 ///< of the image, or of the blocks that were asked for
    bool verified = false;                  ///< the service has read it back from the disk itself, and it is equal
    std::chrono::duration<double> taken{};  ///< from the call to its end
    std::string answer;                     ///< the service's last, as it came; empty when none came that is text

    /// The whole line that a person reads last.
    std::string lastLine() const { return remedy.empty() ? sentence : sentence + " " + remedy; }

    /// The same result with another end.
    UpdateResult endedWith(ExitCode code, std::string what, std::string whatToDo = {}) const {
        UpdateResult ended = *this;
        ended.status = code;
        ended.sentence = std::move(what);
        ended.remedy = std::move(whatToDo);
        return ended;
    }
};

}  // namespace kestrav
