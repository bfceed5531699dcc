#include "services/asker/Consent.h"

#include <system_error>

namespace kestrav {

Problem givenUpBeforeConsent() {
    return refused("the request was given up before consent was given.");
}

Problem deniedByAPerson() {
    return refused("an administrator did not agree.", std::make_error_code(std::errc::operation_not_permitted));
}

bool isDecisionOfAPerson(const Problem& problem) {
    return problem.cause == std::errc::operation_not_permitted;
}

}  // namespace kestrav
