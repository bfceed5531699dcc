#pragma once

#include <string>

namespace kestrav {

/// One thing that an update depends on, or that is good to know when one does not work.
struct Finding {
    std::string name;  ///< one word, for programs
    bool isGood = false;
    bool isNeeded = true;  ///< without it no update can work
    std::string sentence;  ///< what was found
    std::string remedy;    ///< what to do about it; empty when it is good
};

}  // namespace kestrav
