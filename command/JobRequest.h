#pragma once

#include <string>
#include <tuple>
#include <vector>

#include "json/record/JSONField.h"

namespace kestrav {

/// What is sent to the command service: {"command":"dd","arguments":["bs=512"]}.
struct JobRequest {
    std::string command;                 ///< program or command word, such as "dd"
    std::vector<std::string> arguments;  ///< in order, each one element without any shell quoting

    /// The table that it is written by.
    static constexpr auto JSONFields() {
        return std::tuple(JSONField{"command", &JobRequest::command}, JSONField{"arguments", &JobRequest::arguments});
    }
};

}  // namespace kestrav
