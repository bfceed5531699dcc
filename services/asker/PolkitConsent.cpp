#include "services/asker/PolkitConsent.h"

#include <algorithm>
#include <array>
#include <climits>
#include <optional>
#include <string>
#include <string_view>
#include <unistd.h>
#include <utility>

#include "base/openSystemBus.h"
#include "base/shownText.h"
#include "base/systemWords.h"
#include "protocol/names.h"
#include "services/asker/polkitAnswer.h"

namespace kestrav {
namespace {

constexpr const char* kAuthority = "org.freedesktop.PolicyKit1";
constexpr std::uint32_t kAllowUserInteraction = 1;
constexpr std::uint64_t kGlance = 250'000;  // microseconds between two looks at whether the answer is still wanted

/// Filled once the answer is there.
struct Question {
    std::optional<Outcome<void>> answer;
};

int append(sd_bus_message* message, const AskingProcess& process) {
    return sd_bus_message_append(message, "(sa{sv})", "unix-process", 3, "pid", "u",
                                 static_cast<std::uint32_t>(process.pid), "start-time", "t", process.startTime, "uid",
                                 "i", static_cast<std::int32_t>(process.uid));
}

int append(sd_bus_message* message, const AskingBusName& connection) {
    return sd_bus_message_append(message, "(sa{sv})", "system-bus-name", 1, "name", "s", connection.name.c_str());
}

int onAnswer(sd_bus_message* answer, void* question, sd_bus_error*) {
    static_cast<Question*>(question)->answer = polkitAnswer(answer);
    return 0;
}

std::string programOf(pid_t process) {
    std::array<char, PATH_MAX> path{};
    const ssize_t length = ::readlink(("/proc/" + std::to_string(process) + "/exe").c_str(), path.data(), path.size());
    return {path.data(), static_cast<std::size_t>(std::max<ssize_t>(length, 0))};
}

std::string programOf(const ConsentSubject& subject) {
    if (const auto* process = std::get_if<AskingProcess>(&subject)) return programOf(process->pid);
    return programOf(std::get<AskingBusName>(subject).process);
}

/// One part of the prompt, which stands in quotes there. Some agents take their text for markup, in which a file's name
/// must not hide anything.
std::string shownPart(const std::string& text) {
    std::string shown;
    for (const char c : shownText(text)) {
        const bool plain = c != '"' && c != '<' && c != '&';
        shown += plain ? std::string(1, c) : "\\x" + hexadecimal(std::string_view(&c, 1));
    }
    return shown.empty() ? "-" : shown;
}

/// The action's message has each of these names in $(...).
int append(sd_bus_message* message, const ConsentSubject& subject, const Intent& intent) {
    const std::pair<const char*, std::string> details[] = {{"program", programOf(subject)},
                                                           {"file", intent.file},
                                                           {"bytes", intent.bytes},
                                                           {"disk", intent.disk},
                                                           {"block", intent.firstBlock}};
    int result = sd_bus_message_open_container(message, 'a', "{ss}");
    for (const auto& [name, text] : details) {
        if (result >= 0) result = sd_bus_message_append(message, "{ss}", name, shownPart(text).c_str());
    }
    return result < 0 ? result : sd_bus_message_close_container(message);
}

int send(sd_bus* bus, const ConsentSubject& subject, const Intent& intent, bool mayPrompt, Question& question) {
    sd_bus_message* raw = nullptr;
    int result = sd_bus_message_new_method_call(bus, &raw, kAuthority, "/org/freedesktop/PolicyKit1/Authority",
                                                "org.freedesktop.PolicyKit1.Authority", "CheckAuthorization");
    const SdBusMessagePtr message(raw);
    if (result < 0) return result;
    result = std::visit([raw](const auto& one) { return append(raw, one); }, subject);
    if (result < 0) return result;
    result = sd_bus_message_append(raw, "s", kRunAction);
    if (result >= 0) result = append(raw, subject, intent);
    if (result >= 0) result = sd_bus_message_append(raw, "us", mayPrompt ? kAllowUserInteraction : 0U, "");
    if (result < 0) return result;
    return sd_bus_call_async(bus, nullptr, raw, onAnswer, &question, UINT64_MAX);
}

}  // namespace

Outcome<void> PolkitConsent::given(const ConsentSubject& subject, const Intent& intent, bool mayPrompt,
                                   const std::function<bool()>& stillWanted) {
    const auto unreachable = [](int result) {
        return refused("the authorization service (polkit) can't be asked: " + systemWords(-result) + ".");
    };
    // Outlives the connection, which may still call back while it is being closed.
    Question question;
    const auto bus = openSystemBus();
    if (!bus) return refused("the authorization service (polkit) can't be asked: there is no system bus.");
    sd_bus* const raw = bus.value().get();
    if (const int result = send(raw, subject, intent, mayPrompt, question); result < 0) return unreachable(result);
    const auto end = std::chrono::steady_clock::now() + patience_;
    while (!question.answer) {
        const int result = sd_bus_process(raw, nullptr);
        if (result < 0) return unreachable(result);
        if (result > 0) continue;
        // Leaving closes the connection, and with it polkit closes the prompt.
        if (!stillWanted()) return givenUpBeforeConsent();
        if (std::chrono::steady_clock::now() >= end) return refused("nobody answered the request for a password.");
        sd_bus_wait(raw, kGlance);
    }
    return *question.answer;
}

}  // namespace kestrav
