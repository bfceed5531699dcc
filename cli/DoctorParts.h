#pragma once

#include <filesystem>
#include <functional>
#include <string>

#include "cli/Console.h"

namespace kestrav {

class CommandService;
class KestravDevice;
class ServiceAnswers;
class WatchedRegistry;

/// What the examination looks at. Nothing is owned; all outlive the call.
struct DoctorParts {
    KestravDevice& device;
    const WatchedRegistry& registry;  ///< the one that `device` asks
    CommandService& service;
    const ServiceAnswers& answers;  ///< what `service` brings home
    /// Whether the system's bus has a program of that name, or can start one.
    std::function<bool(const std::string& name)> busHas;
    std::filesystem::path serviceProgram;   ///< as it is installed
    std::filesystem::path packagedHelper;   ///< the helper as it came with the package
    std::filesystem::path installedHelper;  ///< the one that runs
    Console console;
};

}  // namespace kestrav
