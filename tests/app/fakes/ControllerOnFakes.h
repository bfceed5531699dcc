#pragma once

#include <memory>
#include <sstream>

#include "app/ViewController.h"
#include "command/CommandService.h"
#include "command/HelperInstallation.h"
#include "device/KestravDevice.h"
#include "tests/app/fakes/FakeMainView.h"
#include "tests/base/RecordingLog.h"
#include "tests/command/fakes/FakeAuthorization.h"
#include "tests/device/fakes/FakeDisks.h"
#include "tests/device/fakes/FakeRegistry.h"
#include "tests/device/fakes/FakeVolumes.h"

namespace kestrav {

/// A controller with the real engine and the real client of the command service; everything outside of the process is
/// held in memory. On port 1 nobody answers.
struct ControllerOnFakes {
    explicit ControllerOnFakes(std::int32_t commandPort = 1)
        : commands(systemLog, {.port = commandPort, .connectSeconds = 5, .readSeconds = 5}) {}
    ~ControllerOnFakes() { controller->driver()->setParent(nullptr); }
    ControllerOnFakes(const ControllerOnFakes&) = delete;
    ControllerOnFakes& operator=(const ControllerOnFakes&) = delete;

    /// Hands the controller the parts of the view, then tells it that they are there.
    void load() {
        controller->setLogBox(view.logBox);
        controller->setLogText(view.logText);
        controller->setProcessFirmwareBtn(view.firmwareButton);
        controller->setProcessIconBtn(view.iconButton);
        controller->setLoaderBar(view.indicator);
        controller->viewDidLoad();
    }
    void plugIn(std::string disk) { registry.plugIn({.id = 0x10002, .name = "Accessory", .disk = std::move(disk)}); }

    FakeMainView view;
    FakeRegistry registry;
    FakeVolumes volumes;
    FakeDisks disks;
    RecordingLog systemLog;
    CommandService commands;
    FakeAuthorization authorization;
    HelperInstallation installation{authorization, systemLog};
    std::ostringstream console;
    std::shared_ptr<ViewController> controller =
        std::make_shared<ViewController>(view, EngineParts{registry, volumes, disks, commands}, installation, console);
};

}  // namespace kestrav
