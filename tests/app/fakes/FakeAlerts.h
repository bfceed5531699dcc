#pragma once

#include <iostream>
#include <map>
#include <string>
#include <vector>

#include "app/Alerts.h"
#include "app/ApplicationError.h"

namespace kestrav {

/// Alerts that are answered as the test says. They are also written to standard error, where a test of a process that
/// ends finds them.
class FakeAlerts final : public Alerts {
  public:
    std::int32_t response = kFirstButtonReturn;
    bool putsErrorsRight = false;

    std::vector<Alert> alerts;
    std::vector<ApplicationError> errors;
    mutable std::map<std::string, std::string> comments;  ///< of each text that was to be translated

    std::string translate(const char* /*context*/, const char* text, const char* comment) const override {
        comments[text] = comment;
        return text;
    }

    std::int32_t runModal(const Alert& alert) override {
        alerts.push_back(alert);
        std::cerr << "alert: " << alert.messageText << std::endl;
        return response;
    }

    bool presentError(const ApplicationError& error) override {
        errors.push_back(error);
        std::cerr << "error: " << error.domain << ' ' << error.code << ": " << error.localizedDescription << '|'
                  << error.failureReason.value_or("no reason") << '|'
                  << (error.underlying ? error.underlying->localizedDescription : "no cause") << std::endl;
        return putsErrorsRight;
    }
};

}  // namespace kestrav
