#pragma once

#include <filesystem>
#include <string>
#include <sys/types.h>

namespace kestrav {

/// A real dbus-daemon of the test's own, in a folder of its own, without the system's configuration.
/// It can be killed and started again at the same address.
class PrivateBus {
  public:
    /// `policy` is what stands inside of the configuration's `busconfig`; everything is allowed by default.
    explicit PrivateBus(const std::string& policy = kAllowEverything);
    ~PrivateBus();
    PrivateBus(const PrivateBus&) = delete;
    PrivateBus& operator=(const PrivateBus&) = delete;

    void start();
    void kill();

    const std::string& address() const { return address_; }
    const std::filesystem::path& folder() const { return folder_; }
    pid_t pid() const { return pid_; }

    /// Makes `name` startable by running `command` as the daemon's user.
    void addActivatable(const std::string& name, const std::string& command) const;

    static constexpr const char* kAllowEverything =
        R"(<policy context="default"><allow send_destination="*" eavesdrop="true"/><allow eavesdrop="true"/>)"
        R"(<allow own="*"/></policy>)";

  private:
    std::filesystem::path folder_;
    std::string address_;
    pid_t pid_ = -1;
};

}  // namespace kestrav
