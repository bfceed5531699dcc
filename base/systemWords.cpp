#include "base/systemWords.h"

#include <system_error>

namespace kestrav {

std::string systemWords(int errorNumber) {
    return std::generic_category().message(errorNumber);
}

}  // namespace kestrav
