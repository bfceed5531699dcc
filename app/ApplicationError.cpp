#include "app/ApplicationError.h"

namespace kestrav {

ApplicationError applicationError(const Problem& problem) {
    return {kSystemErrorDomain, problem.cause.value(), problem.sentence, std::nullopt, nullptr};
}

}  // namespace kestrav
