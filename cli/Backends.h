#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <system_error>

#include "command/BoardReader.h"
#include "command/CommandService.h"

namespace kestrav {

class DeviceRegistry;
class DiskCalls;
class MountedVolumes;
class SystemLog;

/// What kestravctl needs of the system. Nothing is owned. May be used on several threads at once.
struct Backends {
    DeviceRegistry& registry;
    MountedVolumes& volumes;
    DiskCalls& disks;
    SystemLog& log;              ///< takes what the command service answers
    CommandEndpoint endpoint{};  ///< where the command service listens
    BoardReader board{};         ///< what it says of a write beside its answer
    /// Whether there is a node of that name.
    std::function<bool(const std::string& path)> exists = [](const std::string& path) {
        std::error_code error;
        return std::filesystem::exists(path, error);
    };
};

}  // namespace kestrav
