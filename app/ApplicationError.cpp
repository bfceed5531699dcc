#include "app/ApplicationError.h"

#include <system_error>

namespace kestrav {

ApplicationError systemError(int number, const std::string& doing) {
    return {kSystemErrorDomain, number, "Could not " + doing + ": " + std::generic_category().message(number) + ".",
            std::nullopt, nullptr};
}

}  // namespace kestrav
