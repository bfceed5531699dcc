#pragma once

#include <sstream>

#include "command/CommandService.h"
#include "device/KestravDevice.h"
#include "device/LogSink.h"
#include "tests/base/RecordingLog.h"
#include "tests/device/fakes/FakeDisks.h"
#include "tests/device/fakes/FakeRegistry.h"
#include "tests/device/fakes/FakeVolumes.h"

namespace kestrav {

/// Keeps the engine's lines.
class LogLines final : public LogSink {
  public:
    std::vector<std::string> lines;

    void log(std::string_view line) override { lines.emplace_back(line); }
};

/// An engine whose platform is held in memory, with a real client of the command service. Port 1 answers nobody.
struct EngineOnFakes {
    explicit EngineOnFakes(std::int32_t commandPort = 1)
        : commands(systemLog, {.port = commandPort, .connectSeconds = 5, .readSeconds = 5}),
          engine(registry, volumes, disks, commands, console) {
        engine.setParent(log);
    }

    /// Plugs an accessory in whose disk is called `disk`.
    void plugIn(std::optional<std::string> disk) {
        registry.plugIn({.id = 0x10002, .name = "Accessory", .disk = std::move(disk)});
    }
    const std::vector<std::string>& lines() const { return log->lines; }

    FakeRegistry registry;
    FakeVolumes volumes;
    FakeDisks disks;
    RecordingLog systemLog;
    CommandService commands;
    std::ostringstream console;
    std::shared_ptr<LogLines> log = std::make_shared<LogLines>();
    KestravDevice engine;
};

}  // namespace kestrav
