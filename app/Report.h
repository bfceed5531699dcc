#pragma once

namespace kestrav {

/// What is said of an update that is over. The texts are English and fixed; a translation is looked up in the context
/// "Report" where they are shown.
struct Report {
    /// What counts, at one glance.
    enum class Kind {
        success,      ///< the image is on the accessory
        notWritten,   ///< it is not, or not whole, and that is known
        nobodyKnows,  ///< it may be
    };

    Kind kind;
    const char* headline;  ///< what came of it
    const char* remedy;    ///< what to do next
    bool canBeSentAgain;   ///< the same image, once an accessory is there
};

}  // namespace kestrav
