#pragma once

#include <optional>
#include <string>
#include <sys/types.h>

#include "tests/childrenOf.h"
#include "tests/eventually.h"
#include "tests/sandbox/ChildProcess.h"
#include "tests/services/CommandDaemon.h"
#include "tests/services/ServiceRoom.h"

namespace kestrav {

inline const std::string kAskedFor = "dd if=/run/image.fds of=/dev/rsdzz seek=1536 bs=512: ";

/// The real service as root on a free port, with the real polkitd, beside a simulated accessory.
class CommandsOfAUser : public ServiceRoom {
  protected:
    void start(const std::string& decision = {}) {
        daemons_.start(decision);
        daemon_.emplace();
    }

    UserProcess writeAs(uid_t uid) const {
        return UserProcess(uid, [port = daemon_->port()] {
            const Client client(port);
            client.send(requestFor("dd", {std::string("if=") + kImage, "of=/dev/rsdzz", "seek=1536", "bs=512"}));
            return client.readOnce(60);
        });
    }

    void expectOneRefusal(uid_t uid, const std::string& words) const {
        ServiceRoom::expectOneRefusal("kestrav-commandd", daemon_->log(), uid,
                                      "user " + std::to_string(uid) + ": " + words);
    }
    bool hasNoChildren() const {
        return eventually([this] { return childrenOf(daemon_->pid()).empty(); });
    }

    std::optional<CommandDaemon> daemon_;
};

}  // namespace kestrav
