#pragma once

#include <QString>

#include "outcome/WriteState.h"

namespace kestrav {

/// How far a write has come, in two parts: what is being done, and how much of it is done where that is counted.
struct ProgressSentence {
    QString phase;
    QString share;
};

/// In the person's language and numbers.
ProgressSentence progressSentence(const WriteState& state);

}  // namespace kestrav
