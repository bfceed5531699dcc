#include <chrono>
#include <cstring>
#include <string_view>

#include "base/SdBusPointers.h"
#include "services/privileged/AnswerText.h"
#include "services/privileged/Consent.h"

namespace kestrav {
namespace {

// Given by the D-Bus specification; a variable of the environment must not lead root elsewhere.
constexpr const char* systemBusAddress = "unix:path=/run/dbus/system_bus_socket";
constexpr const char* authority = "org.freedesktop.PolicyKit1";
constexpr const char* action = "com.corvatel.kestrav.run";
constexpr std::uint32_t allowUserInteraction = 1;
constexpr std::chrono::minutes patience{5};
constexpr std::uint64_t glance = 250'000;  // microseconds between two looks at whether the answer is still wanted

using Refusal = std::optional<Problem>;

/// Fills once the answer is there.
struct Question {
    bool answered = false;
    Refusal refusal;
};

SdBusPtr connect() {
    sd_bus* raw = nullptr;
    if (sd_bus_new(&raw) < 0) return {};
    SdBusPtr bus(raw);
    const bool started =
        sd_bus_set_address(raw, systemBusAddress) >= 0 && sd_bus_set_bus_client(raw, 1) >= 0 && sd_bus_start(raw) >= 0;
    return started ? std::move(bus) : SdBusPtr();
}

int append(sd_bus_message* message, const AskingProcess& process) {
    return sd_bus_message_append(message, "(sa{sv})", "unix-process", 3, "pid", "u",
                                 static_cast<std::uint32_t>(process.pid), "start-time", "t", process.startTime, "uid",
                                 "i", static_cast<std::int32_t>(process.uid));
}

int append(sd_bus_message* message, const AskingBusName& connection) {
    return sd_bus_message_append(message, "(sa{sv})", "system-bus-name", 1, "name", "s", connection.name.c_str());
}

Refusal judged(sd_bus_message* answer) {
    if (const sd_bus_error* error = sd_bus_message_get_error(answer); error != nullptr) {
        return refused("the authorization service (polkit) could not decide: " +
                       shown(error->message != nullptr ? error->message : error->name) + ".");
    }
    int authorized = 0;
    int challenge = 0;
    if (sd_bus_message_enter_container(answer, 'r', "bba{ss}") < 0 ||
        sd_bus_message_read(answer, "bb", &authorized, &challenge) < 0) {
        return refused("the authorization service (polkit) gave an answer that can't be understood.");
    }
    if (authorized != 0) return std::nullopt;
    if (challenge != 0) {
        return refused("an administrator has to agree, and there is no way to ask for a password here.");
    }
    return refused("an administrator did not agree.");
}

int onAnswer(sd_bus_message* answer, void* question, sd_bus_error*) {
    auto& asked = *static_cast<Question*>(question);
    asked.refusal = judged(answer);
    asked.answered = true;
    return 0;
}

int send(sd_bus* bus, const ConsentSubject& subject, bool mayInteract, Question& question) {
    sd_bus_message* raw = nullptr;
    int result = sd_bus_message_new_method_call(bus, &raw, authority, "/org/freedesktop/PolicyKit1/Authority",
                                                "org.freedesktop.PolicyKit1.Authority", "CheckAuthorization");
    const SdBusMessagePtr message(raw);
    if (result < 0) return result;
    result = std::visit([raw](const auto& one) { return append(raw, one); }, subject);
    if (result < 0) return result;
    result = sd_bus_message_append(raw, "sa{ss}us", action, 0, mayInteract ? allowUserInteraction : 0U, "");
    if (result < 0) return result;
    return sd_bus_call_async(bus, nullptr, raw, onAnswer, &question, UINT64_MAX);
}

}  // namespace

std::optional<Problem> PolkitConsent::refusal(const ConsentSubject& subject, bool mayInteract,
                                              const std::function<bool()>& stillWanted) {
    const auto unreachable = [](int result) {
        return refused("the authorization service (polkit) can't be asked: " + systemWords(-result) + ".");
    };
    // Outlives the connection, which may still call back while it is being closed.
    Question question;
    const SdBusPtr bus = connect();
    if (!bus) return refused("the authorization service (polkit) can't be asked: there is no system bus.");
    if (const int result = send(bus.get(), subject, mayInteract, question); result < 0) return unreachable(result);
    const auto end = std::chrono::steady_clock::now() + patience;
    while (!question.answered) {
        const int result = sd_bus_process(bus.get(), nullptr);
        if (result < 0) return unreachable(result);
        if (result > 0) continue;
        // Leaving closes the connection, and with it polkit closes the prompt.
        if (!stillWanted()) return refused("the request was given up before consent was given.");
        if (std::chrono::steady_clock::now() >= end) return refused("nobody answered the request for a password.");
        sd_bus_wait(bus.get(), glance);
    }
    return question.refusal;
}

}  // namespace kestrav
