#pragma once

#include <string>
#include <utility>

#include "services/asker/Asker.h"

namespace kestrav {

/// A connection to the system bus. Whether it is still there is seen by the service, which has the bus.
class BusAsker final : public Asker {
  public:
    /// `name` is the connection's unique name, `uid` whose it is and `process` the one that made it, all as the bus
    /// says; `mayBePrompted` is what the message allows.
    BusAsker(std::string name, uid_t uid, pid_t process, bool mayBePrompted)
        : name_(std::move(name)),
          uid_(uid),
          process_(process),
          mayBePrompted_(mayBePrompted) {}

    uid_t uid() const override { return uid_; }
    Outcome<ConsentSubject> subject() override { return ConsentSubject(AskingBusName{name_, process_}); }
    Outcome<void> couldDoItself(const ConsentSubject& subject) override;
    bool mayBePrompted() const override { return mayBePrompted_; }
    bool stillWants() override { return true; }
    bool mayBegin() override { return true; }

  private:
    std::string name_;
    uid_t uid_;
    pid_t process_;
    bool mayBePrompted_;
};

}  // namespace kestrav
