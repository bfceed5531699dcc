#pragma once

#include <QString>

namespace kestrav {

struct LastScene;

/// What a person has to know when the program has stopped in the middle of that.
QString lastWordsOn(const LastScene& scene);

/// Shows them in a message of its own and returns when it was read. Needs an application object.
void showLastWords(const LastScene& scene);

}  // namespace kestrav
