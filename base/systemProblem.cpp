#include "base/systemProblem.h"

#include "base/systemWords.h"

namespace kestrav {

Problem systemProblem(const std::string& what, int errorNumber) {
    return failed(what + ": " + systemWords(errorNumber) + ".", {errorNumber, std::generic_category()});
}

Problem systemProblem(int errorNumber) {
    return failed(systemWords(errorNumber) + ".", {errorNumber, std::generic_category()});
}

}  // namespace kestrav
