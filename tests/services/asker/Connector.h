#pragma once

#include <csignal>
#include <functional>
#include <stdexcept>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/services/CommandDaemon.h"
#include "tests/signalOne.h"

namespace kestrav {

/// A process of some user's that has made a connection to `listener` and waits for its end.
class Connector {
  public:
    Connector(
        std::uint16_t port, uid_t uid, const std::function<void(Client&)>& afterwards = [](Client&) {}) {
        int ready[2];
        if (::pipe(ready) != 0) throw std::runtime_error("no pipe");
        pid_ = ::fork();
        if (pid_ == 0) {
            ::prctl(PR_SET_PDEATHSIG, SIGKILL);
            if (uid != ::getuid() && ::setresuid(uid, uid, uid) != 0) ::_exit(2);
            Client client(port);
            afterwards(client);
            if (::write(ready[1], "!", 1) != 1) ::_exit(3);
            ::pause();
            ::_exit(0);
        }
        ::close(ready[1]);
        char byte = 0;
        const bool isReady = ::read(ready[0], &byte, 1) == 1;
        ::close(ready[0]);
        if (!isReady) throw std::runtime_error("no connection");
    }
    ~Connector() { end(); }
    Connector(const Connector&) = delete;
    Connector& operator=(const Connector&) = delete;

    pid_t pid() const { return pid_; }
    void end() {
        if (pid_ <= 0) return;
        signalOne(pid_, SIGKILL);
        ::waitpid(pid_, nullptr, 0);
        pid_ = -1;
    }

  private:
    pid_t pid_ = -1;
};

}  // namespace kestrav
