#pragma once

#include <string>
#include <vector>

namespace kestrav {

/// `words` in the form that execve(2) and its kind take arguments and an environment: pointers into `words`, which has
/// to outlive them, and a null pointer behind the last one. None of those functions writes through them.
inline std::vector<char*> wordPointers(const std::vector<std::string>& words) {
    std::vector<char*> pointers;
    pointers.reserve(words.size() + 1);
    for (const std::string& word : words)
        pointers.push_back(const_cast<char*>(word.c_str()));
    pointers.push_back(nullptr);
    return pointers;
}

}  // namespace kestrav
