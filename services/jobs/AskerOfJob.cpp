#include "services/jobs/AskerOfJob.h"

#include <array>
#include <cerrno>
#include <poll.h>
#include <sys/prctl.h>
#include <utility>

#include "services/asker/Consent.h"
#include "services/asker/ProcessRecord.h"
#include "services/jobs/FromJob.h"
#include "services/jobs/Request.h"
#include "services/jobs/endLastForWantOfMemory.h"
#include "services/jobs/keepAwake.h"
#include "services/jobs/say.h"

namespace kestrav {
namespace {

constexpr int kGlance = 250;  // milliseconds between two looks at whether the asker is still there
constexpr std::size_t kLongestMessage = 1024;

/// Half a write is worse for the accessory than a service that has to be started again, and the disk stays locked until
/// the write is over.
void outliveService() {
    ::prctl(PR_SET_PDEATHSIG, 0);
    endLastForWantOfMemory();
}

std::string keyOf(const AskingProcess& process) {
    return "process " + std::to_string(process.pid) + " " + std::to_string(process.startTime) + " " +
           std::to_string(process.uid);
}

/// A process may have several connections to the bus.
std::string keyOf(const AskingBusName& connection) {
    return connection.process == 0 ? "name " + connection.name : "caller " + std::to_string(connection.process);
}

/// Whether it is still there. Of a name on the bus the service learns.
bool lives(const ConsentSubject& subject) {
    const auto* process = std::get_if<AskingProcess>(&subject);
    return process == nullptr || ProcessRecord(process->pid).startTime() == process->startTime;
}

}  // namespace

AskerOfJob::AskerOfJob(Request& request, int channel) : request_(request), asker_(request.asker()), channel_(channel) {}

/// The next message; none where the request is given up, and without waiting where there is no message yet.
std::optional<AskerOfJob::Message> AskerOfJob::hear(int flags) {
    std::array<char, kLongestMessage> bytes;  // NOLINT: only what recv() wrote is looked at
    const ssize_t got = retry([&] { return ::recv(channel_, bytes.data(), bytes.size(), flags); });
    if (got == 0 || (got < 0 && errno != EAGAIN)) isGivenUp_ = true;
    if (got <= 0) return std::nullopt;
    return Message{static_cast<ToJob>(bytes[0]), std::string(bytes.data() + 1, static_cast<std::size_t>(got) - 1)};
}

Outcome<void> AskerOfJob::awaitTurn(const ConsentSubject& subject) {
    subject_ = subject;
    say(channel_, FromJob::wantsToAsk, std::visit([](const auto& one) { return keyOf(one); }, subject) + '\0' + asked_);
    while (true) {
        pollfd waiting{channel_, POLLIN, 0};
        const int ready = retry([&] { return ::poll(&waiting, 1, kGlance); });
        const auto message = ready > 0 ? hear(MSG_DONTWAIT) : std::nullopt;
        if (message && message->word == ToJob::ask) return {};
        if (message && message->word == ToJob::doNotAsk) return refused(message->text);
        if (isGivenUp_ || (ready == 0 && !asker_.stillWants())) return givenUpBeforeConsent();
    }
}

void AskerOfJob::tellDecision(const Outcome<void>& decision) {
    if (!decision && isDecisionOfAPerson(decision.problem())) {
        say(channel_, FromJob::wasDenied, decision.problem().sentence);
    } else {
        say(channel_, FromJob::hasAsked);
    }
}

bool AskerOfJob::stillWants() {
    const auto message = isGivenUp_ ? std::nullopt : hear(MSG_DONTWAIT);
    if (message && message->word == ToJob::late) becomeLate();
    if (isGivenUp_) return false;
    return isLate_ ? subject_ && lives(*subject_) : asker_.stillWants();
}

/// The asker has the answer and goes; the question is only for the next request now.
void AskerOfJob::becomeLate() {
    isLate_ = true;
    whenAnswered_();
    request_.letGo();
}

bool AskerOfJob::mayBegin() {
    if (isLate_) return false;
    say(channel_, FromJob::wantsToBegin);
    // What comes may be that it is too late.
    const auto message = hear(0);
    if (!message || message->word != ToJob::begin || !asker_.mayBegin()) return false;
    outliveService();
    if (writes_) awake_ = keepAwake();
    return true;
}

}  // namespace kestrav
