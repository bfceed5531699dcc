#pragma once

#include <string>

#include "base/SdBusPointers.h"
#include "services/asker/BusAsker.h"
#include "services/helper/readCall.h"
#include "services/jobs/Request.h"

namespace kestrav {

/// A call of runWithCmd from its arrival to its answer.
class HelperCall final : public Request {
  public:
    enum class Caller { isKnown, isUnknown, isLostInAFlood };

    /// The service that it arrived at, which outlives it.
    class Service {
      public:
        virtual ~Service() = default;

        /// It is there, and it is no longer there.
        virtual void enter(HelperCall& call) = 0;
        virtual void leave(HelperCall& call) noexcept = 0;
        /// The bus has answered the question who calls. Called from within libsystemd, which must see no exception.
        virtual void proceed(HelperCall& call, sd_bus_message* answer) noexcept = 0;
        virtual void answer(const HelperCall& call, const RequestEnd& end) = 0;
        /// In a process that was forked off: gives the connection to the bus up.
        virtual void leaveBus() = 0;
    };

    HelperCall(Service& service, sd_bus_message* received);
    ~HelperCall() override;
    HelperCall(const HelperCall&) = delete;
    HelperCall& operator=(const HelperCall&) = delete;

    /// Asks the bus who calls, without waiting for it: that would take in whatever strangers have sent meanwhile. The
    /// bus knows it from the socket; nothing in the message is believed. False when it can't be asked.
    bool askWhoCalls();
    /// What it has answered; from now on uid() and asker() are known.
    Caller learnCaller(sd_bus_message* answer);

    /// Answers with a text. False when that can't be sent.
    bool reply(const std::string& text) const;
    /// Answers with an error.
    void refuse(const char* errorName, const std::string& words) const;
    /// Lets the message go, which may be long, and keeps the error to answer it with.
    void keepRefusalAlone(const char* errorName, const std::string& words);

    Asker& asker() override { return asker_; }
    /// RequestLog::kUnknown before that is known.
    uid_t uid() const { return asker_.uid(); }
    const std::string& sender() const { return sender_; }
    const CallText& text() const { return text_; }
    Outcome<CommandLine> read() override { return text_.asked; }
    void leaveService() override { service_.leaveBus(); }
    void ended(const RequestEnd& end) override { service_.answer(*this, end); }

    bool callerIsGone = false;

  private:
    static int onAnswer(sd_bus_message* answer, void* call, sd_bus_error*);

    Service& service_;
    SdBusMessagePtr message_;
    const std::string sender_;
    const CallText text_;
    BusAsker asker_;
    SdBusMessagePtr refusal_;
    SdBusSlotPtr question_;
};

}  // namespace kestrav
