#pragma once

#include <string>

#include "tests/sandbox/ChildProcess.h"

namespace kestrav {

/// The real system bus and the real polkitd, started inside of a Sandbox. Each can be killed and started again.
class SystemDaemons {
  public:
    /// Both. `decision`: what polkit is to say about running commands, such as "YES"; empty for the action's own
    /// defaults.
    void start(const std::string& decision = {});
    void startBus();
    void killBus();
    void startPolkitd();
    void killPolkitd() { polkitd_.end(); }
    /// Keeps its name on the bus and answers nobody any more.
    void stopPolkitd() const;

    /// A rule of the administrator's, in polkit's JavaScript. Before polkitd is started.
    static void addRule(const std::string& javascript);
    /// The project's own actions, with the installer at `blessProgram`. Before polkitd is started.
    static void addActions(const std::string& blessProgram);

  private:
    ChildProcess bus_;
    ChildProcess polkitd_;
};

/// A person with an account and the password "secret". `admin`: may administer this computer.
void addAccount(const std::string& name, uid_t uid, bool admin);

}  // namespace kestrav
