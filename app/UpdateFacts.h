#pragma once

#include <optional>

#include "outcome/Request.h"
#include "outcome/ServiceAnswers.h"
#include "outcome/WriteWatch.h"

namespace kestrav {

/// What is known of one update when it is over.
struct UpdateFacts {
    bool isRegistryReached = true;  ///< the system told which devices are attached
    bool isAccessoryFound = true;   ///< the engine knew an accessory, attached or remembered
    bool isAccessoryThere = true;   ///< one is attached now
    bool hasDisk = true;            ///< that accessory has a disk
    bool isImageEmpty = false;      ///< there was nothing in the file
    Request request;                ///< the write; with its disk, its place and its length
    /// The exchange about the write; absent where nothing was handed over.
    std::optional<ServiceAnswers::Exchange> write;
    /// What the service's board says of a write whose answer did not come; absent before it was followed.
    std::optional<WriteWatch::End> board;

    /// Whether the board has to be followed before anything final can be said.
    bool mayGoOn() const;
};

}  // namespace kestrav
