#include "app/ViewController.h"

#include <array>
#include <ostream>

#include "app/ActivityIndicator.h"
#include "app/Button.h"
#include "app/LogText.h"
#include "app/MainView.h"
#include "app/OpenPanel.h"
#include "app/UpdateObserver.h"
#include "base/stopProcess.h"
#include "command/HelperInstallation.h"
#include "device/KestravDevice.h"

namespace kestrav {
namespace {

constexpr std::string_view kFirmwareButton = "firmwareBtn";

/// Stops the process when a part of the window is missing: the window was then put together wrongly, and going on could
/// leave a button enabled during a write.
template <typename Outlet>
std::shared_ptr<Outlet> present(std::shared_ptr<Outlet> outlet) {
    // frozen: F66
    require(outlet != nullptr);
    return outlet;
}

}  // namespace

/// What the two buttons do differently. The texts are what people and scripts look for, word for word.
struct ViewController::Flow {
    std::string_view fileType;
    std::string_view title;
    std::string_view beginning;
    std::string_view end;
    bool (KestravDevice::*update)(std::string_view path);
};

ViewController::ViewController(MainView& view, const EngineParts& parts, HelperInstallation& installation,
                               std::ostream& console)
    : view_(view),
      installation_(installation),
      console_(console),
      driver_(std::make_shared<KestravDevice>(parts.registry, parts.volumes, parts.disks, parts.commands, console)) {}

ViewController::~ViewController() = default;

void ViewController::viewDidLoad() {
    view_.setPreferredContentSize(480, 270);
    present(driver_)->setParent(shared_from_this());
}

void ViewController::log(std::string_view line) {
    if (!logText_) {
        console_ << line << '\n' << std::flush;
        return;
    }
    std::string text(line);
    // frozen: F64
    text += kLogLineEnd;
    require(logText_->append(text));
    logText_->scrollToEndOfDocument();
}

ViewController::Flow ViewController::flowOf(const Button& sender) {
    // frozen: F62
    if (sender.identifier() == kFirmwareButton) {
        return {"fds", "Choose a firmware image", "Preparing to process firmware.", "End firmware processing.",
                &KestravDevice::firmwareUpdate};
    }
    // frozen: F61
    return {"fif", "Choose a icon image", "Preparing to process icon.", "End icon processing.",
            &KestravDevice::iconUpdate};
}

std::unique_ptr<OpenPanel> ViewController::panelFor(const Flow& flow) {
    std::unique_ptr<OpenPanel> panel = view_.makeOpenPanel();
    panel->setAllowedFileTypes(std::array{flow.fileType});
    panel->setTitle(flow.title);
    panel->setShowsResizeIndicator(true);
    panel->setShowsHiddenFiles(false);
    // frozen: F63
    panel->setCanChooseDirectories(true);
    panel->setCanCreateDirectories(true);
    panel->setAllowsMultipleSelection(false);
    return panel;
}

void ViewController::browseFile(const Button& sender) {
    const std::unique_ptr<OpenPanel> panel = panelFor(flowOf(sender));
    targetFilename_ = "";
    if (panel->runModal() != OpenPanel::kResponseOK) {
        targetFilename_ = "";
        return;
    }
    std::optional<std::string> path = panel->path();
    require(path.has_value());
    targetFilename_ = std::move(path);
    // The button is asked a second time because its identifier may have changed while the chooser was open.
    process(flowOf(sender), sender);
}

void ViewController::process(const Flow& flow, const Button& sender) {
    if (observer_ != nullptr) observer_->updateBegins(sender, targetFilename_.value_or(""));
    setButtonsEnabled(false);
    present(loaderBar())->startAnimation(sender);
    log(flow.beginning);
    require(targetFilename_.has_value());
    view_.whileBusy([&driver = *present(driver_), &flow, path = *targetFilename_] { (driver.*flow.update)(path); });
    // frozen: F65
    log(flow.end);
    setButtonsEnabled(true);
    present(loaderBar())->stopAnimation(sender);
    if (observer_ != nullptr) observer_->updateEnded(sender, targetFilename_.value_or(""));
}

void ViewController::setButtonsEnabled(bool enabled) {
    present(processFirmwareBtn())->setEnabled(enabled);
    present(processIconBtn())->setEnabled(enabled);
}

bool ViewController::authorizeWithCmd(std::string_view cmd) {
    return installation_.authorizeWithCmd(cmd, authRef_);
}

}  // namespace kestrav
