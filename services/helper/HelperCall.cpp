#include "services/helper/HelperCall.h"

#include "services/gate/RequestLog.h"
#include "services/helper/readCredentials.h"

namespace kestrav {
namespace {

constexpr const char* kBus = "org.freedesktop.DBus";

std::string senderOf(sd_bus_message* message) {
    const char* sender = sd_bus_message_get_sender(message);
    return sender != nullptr ? sender : "";
}

}  // namespace

HelperCall::HelperCall(Service& service, sd_bus_message* received)
    : service_(service),
      message_(sd_bus_message_ref(received)),
      sender_(senderOf(received)),
      text_(readCall(received)),
      asker_(sender_, RequestLog::kUnknown, 0, sd_bus_message_get_allow_interactive_authorization(received) > 0) {
    service_.enter(*this);
}

HelperCall::~HelperCall() {
    service_.leave(*this);
}

bool HelperCall::askWhoCalls() {
    sd_bus_slot* raw = nullptr;
    const int result = sd_bus_call_method_async(sd_bus_message_get_bus(message_ ? message_.get() : refusal_.get()),
                                                &raw, kBus, "/org/freedesktop/DBus", kBus, "GetConnectionCredentials",
                                                onAnswer, this, "s", sender_.c_str());
    question_.reset(raw);
    return result >= 0;
}

int HelperCall::onAnswer(sd_bus_message* answer, void* call, sd_bus_error*) {
    auto& self = *static_cast<HelperCall*>(call);
    self.service_.proceed(self, answer);
    return 1;
}

HelperCall::Caller HelperCall::learnCaller(sd_bus_message* answer) {
    const sd_bus_error* error = sd_bus_message_get_error(answer);
    // The library says that itself when time is up.
    if (error != nullptr && sd_bus_error_has_name(error, SD_BUS_ERROR_NO_REPLY) > 0) return Caller::isLostInAFlood;
    const Credentials known = readCredentials(answer);
    if (!known.uid || !known.process) return Caller::isUnknown;
    asker_ = BusAsker(sender_, *known.uid, static_cast<pid_t>(*known.process), asker_.mayBePrompted());
    return Caller::isKnown;
}

bool HelperCall::reply(const std::string& text) const {
    return sd_bus_reply_method_return(message_.get(), "s", text.c_str()) >= 0;
}

void HelperCall::refuse(const char* errorName, const std::string& words) const {
    if (message_) {
        sd_bus_reply_method_errorf(message_.get(), errorName, "%s", words.c_str());
    } else if (refusal_) {
        sd_bus_send(nullptr, refusal_.get(), nullptr);
    }
}

void HelperCall::keepRefusalAlone(const char* errorName, const std::string& words) {
    sd_bus_message* raw = nullptr;
    sd_bus_message_new_method_errorf(message_.get(), &raw, errorName, "%s", words.c_str());
    message_.reset();
    refusal_.reset(raw);
}

}  // namespace kestrav
