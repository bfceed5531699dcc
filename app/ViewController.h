#pragma once

#include <iosfwd>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "command/Authorization.h"
#include "device/LogSink.h"

namespace kestrav {

class ActivityIndicator;
class Button;
class CommandService;
class DeviceRegistry;
class DiskCalls;
class HelperInstallation;
class KestravDevice;
class LogBox;
class LogText;
class MainView;
class MountedVolumes;
class OpenPanel;
class UpdateObserver;

/// What an engine is made of. Nothing is owned.
struct EngineParts {
    DeviceRegistry& registry;
    MountedVolumes& volumes;
    DiskCalls& disks;
    CommandService& commands;
};

/// The controller of the only window: shows what the engine reports and runs its updates from two buttons.
///
/// Lives in a `std::shared_ptr`: once the view is loaded the engine holds the controller, as the controller holds the
/// engine. Whoever made it ends the circle with `driver()->setParent(nullptr)`. Used on the main thread, except `log`.
class ViewController final : public LogSink, public std::enable_shared_from_this<ViewController> {
  public:
    /// The references are not owned and outlive this object. Makes the engine. `console` takes the log's lines as long
    /// as there is no view for them.
    ViewController(MainView& view, const EngineParts& parts, HelperInstallation& installation, std::ostream& console);
    ~ViewController() override;

    std::shared_ptr<LogBox> logBox() const { return logBox_.lock(); }
    void setLogBox(const std::shared_ptr<LogBox>& value) { logBox_ = value; }
    const std::shared_ptr<LogText>& logText() const { return logText_; }
    void setLogText(std::shared_ptr<LogText> value) { logText_ = std::move(value); }
    std::shared_ptr<Button> processFirmwareBtn() const { return processFirmwareBtn_.lock(); }
    void setProcessFirmwareBtn(const std::shared_ptr<Button>& value) { processFirmwareBtn_ = value; }
    std::shared_ptr<Button> processIconBtn() const { return processIconBtn_.lock(); }
    void setProcessIconBtn(const std::shared_ptr<Button>& value) { processIconBtn_ = value; }
    const std::shared_ptr<KestravDevice>& driver() const { return driver_; }
    void setDriver(std::shared_ptr<KestravDevice> value) { driver_ = std::move(value); }
    std::shared_ptr<ActivityIndicator> loaderBar() const { return loaderBar_.lock(); }
    void setLoaderBar(const std::shared_ptr<ActivityIndicator>& value) { loaderBar_ = value; }
    const std::optional<std::string>& targetFilename() const { return targetFilename_; }
    void setTargetFilename(std::optional<std::string> value) { targetFilename_ = std::move(value); }
    bool authorized() const { return authorized_; }
    void setAuthorized(bool value) { authorized_ = value; }
    const std::optional<AuthorizationRef>& authRef() const { return authRef_; }
    void setAuthRef(std::optional<AuthorizationRef> value) { authRef_ = value; }
    bool bless() const { return bless_; }
    void setBless(bool value) { bless_ = value; }

    /// Who hears of updates beside the log; not owned, outlives this object or is taken away with null.
    void setObserver(UpdateObserver* observer) { observer_ = observer; }

    /// Called once, when the view and all that is in it exist.
    void viewDidLoad();

    /// Appends `line` to the log and brings it into view; before there is a log text it goes to the console. Called on
    /// the main thread, or on the one that the view runs an update on. Stops the process when the log can't be read.
    void log(std::string_view line) override;

    /// The action of both buttons: has an image chosen and written. Returns when the update is done. Stops the process
    /// when a button or the indicator is missing by then.
    void browseFile(const Button& sender);

    /// See `HelperInstallation::authorizeWithCmd`; the authorization goes into `authRef`.
    bool authorizeWithCmd(std::string_view cmd);

  private:
    struct Flow;
    static Flow flowOf(const Button& sender);
    std::unique_ptr<OpenPanel> panelFor(const Flow& flow);
    void process(const Flow& flow, const Button& sender);
    void setButtonsEnabled(bool enabled);

    MainView& view_;
    HelperInstallation& installation_;
    std::ostream& console_;
    UpdateObserver* observer_ = nullptr;

    std::weak_ptr<LogBox> logBox_;
    std::shared_ptr<LogText> logText_;
    std::weak_ptr<Button> processFirmwareBtn_;
    std::weak_ptr<Button> processIconBtn_;
    std::shared_ptr<KestravDevice> driver_;
    std::weak_ptr<ActivityIndicator> loaderBar_;
    std::optional<std::string> targetFilename_;
    // frozen: F67
    bool authorized_ = false;
    std::optional<AuthorizationRef> authRef_;
    // frozen: F67
    bool bless_ = false;
};

}  // namespace kestrav
