#include "services/jobs/JobTable.h"

#include <algorithm>
#include <cerrno>
#include <exception>
#include <pwd.h>
#include <string>
#include <sys/wait.h>
#include <system_error>

#include "base/awaitEnd.h"
#include "base/retry.h"
#include "base/systemWords.h"
#include "services/asker/Asker.h"
#include "services/gate/Gate.h"
#include "services/jobs/blockEndingSignals.h"
#include "services/jobs/endLastForWantOfMemory.h"
#include "services/jobs/howEnded.h"

namespace kestrav {
namespace {

void collect(pid_t child) {
    retry([child] { return ::waitpid(child, nullptr, 0); });
}

/// Requests that have given way and whose processes have not ended yet, at most.
constexpr std::ptrdiff_t kMostGivingWay = 16;
/// Users whose account was looked up and is remembered, at most.
constexpr std::size_t kMostAccounts = 256;

}  // namespace

JobTable::JobTable(Service& service, Gate& gate, RequestLog& log, Problem busy)
    : service_(service),
      gate_(gate),
      log_(log),
      busy_(std::move(busy)) {
    blockEndingSignals();
    for (const int signal : kEndingSignals)
        watches_.push_back(loop_.onSignal(signal, [this] { service_.stop(); }));
    watches_.push_back(loop_.afterEverything([this] { countRefusals(); }));
}

Outcome<JobTable::Place> JobTable::admit(uid_t uid) {
    if (const auto welcome = gate_.admit(uid); !welcome) return welcome.problem();
    if (taken(uid) >= mostOf(uid) && !giveUpOldest(uid, true)) return busy_;
    if (!hasPlaceFor(uid) && !makeRoomFor(uid)) return busy_;
    ++taken_[uid];
    ++takenInAll_;
    return Place(*this, uid);
}

std::size_t JobTable::taken(uid_t uid) const {
    const auto ofThatUser = taken_.find(uid);
    return ofThatUser == taken_.end() ? 0 : ofThatUser->second;
}

bool JobTable::hasPlaceFor(uid_t uid) const {
    if (uid == 0) return takenInAll_ < kPlaces;
    return takenInAll_ - taken(0) < kPlaces - kPlacesOfRoot && takenInAll_ < kPlaces;
}

/// Who has most goes first, and not for the sake of somebody who has as many.
bool JobTable::makeRoomFor(uid_t uid) {
    std::vector<std::pair<std::size_t, uid_t>> others;
    for (const auto& [other, places] : taken_) {
        if (other != 0 && other != uid && places > taken(uid) + 1) others.emplace_back(places, other);
    }
    std::sort(others.rbegin(), others.rend());
    return std::any_of(others.begin(), others.end(), [&](const auto& other) {
        const bool gaveWay =
            giveUpOldest(other.second, true) || service_.giveWay(other.second) || giveUpOldest(other.second, false);
        return gaveWay && hasPlaceFor(uid);
    });
}

/// A question that nobody waits for keeps nobody out.
bool JobTable::giveUpOldest(uid_t uid, bool ofThoseAnswered) {
    Job* oldest = nullptr;
    std::ptrdiff_t givingWay = 0;
    for (auto& [pid, job] : jobs_) {
        if (!job.place && !job.process.answer()) ++givingWay;
        const bool waits = job.place && !job.process.begun() && !job.isGivenUp && job.isAnswered == ofThoseAnswered &&
                           job.request->asker().uid() == uid;
        if (waits && (oldest == nullptr || job.number < oldest->number)) oldest = &job;
    }
    if (oldest == nullptr || givingWay >= kMostGivingWay) return false;
    giveUp(*oldest);
    oldest->place.reset();
    return true;
}

/// The places that a user may have. A user database may be far away: it is asked only about those who take many.
std::size_t JobTable::mostOf(uid_t uid) {
    if (uid == 0) return kPlaces;
    if (taken(uid) < kPlacesWithoutAccount) return kPlacesOfAUser;
    if (hasAccount_.size() >= kMostAccounts) hasAccount_.clear();
    const auto [account, isNew] = hasAccount_.try_emplace(uid);
    if (isNew) account->second = ::getpwuid(uid) != nullptr;
    return account->second ? kPlacesOfAUser : kPlacesWithoutAccount;
}

void JobTable::vacate(uid_t uid) {
    --takenInAll_;
    const auto ofThatUser = taken_.find(uid);
    if (--ofThatUser->second == 0) taken_.erase(ofThatUser);
}

void JobTable::start(Place place, std::unique_ptr<Request> request) {
    Job job(std::move(request), gate_, std::move(place), started_++);
    const pid_t pid = job.process.pid();
    if (pid < 0) return job.request->ended({RequestEnd::Kind::notStarted, systemWords(errno)});
    const auto [entry, isNew] = jobs_.emplace(pid, std::move(job));
    try {
        watch(entry->second);
        if (isStopping_) giveUp(entry->second);
    } catch (const std::system_error& error) {
        // The service would not learn of its end: it must not begin.
        entry->second.process.kill();
        collect(pid);
        const auto lost = jobs_.extract(entry);
        lost.mapped().request->ended({RequestEnd::Kind::notStarted, systemWords(error.code().value())});
    }
}

void JobTable::watch(Job& job) {
    const pid_t pid = job.process.pid();
    job.end = loop_.onEndOf(pid, [this, pid] { finish(pid); });
    job.channel = loop_.onReadable(job.process.fd(), [this, &job] { listen(job); });
}

void JobTable::listen(Job& job) {
    for (const JobProcess::Message& message : job.process.listen())
        hear(job, message);
    if (job.process.answer()) answer(job);
    // A closed channel would be readable for ever.
    if (job.process.answer() || job.process.isSilent()) job.channel.reset();
}

/// Whoever waits for the answer need not wait until its process has been taken apart, too.
void JobTable::answer(Job& job) {
    if (std::exchange(job.isAnswered, true)) return;
    job.place.reset();
    job.request->ended(endOf(job));
}

RequestEnd JobTable::endOf(const Job& job) {
    const JobProcess& process = job.process;
    const auto& answer = process.answer();
    if (!answer) return {RequestEnd::Kind::died, {}, process.pid(), process.begun(), {}, job.isLate};
    const auto kind = [&] {
        switch (answer->kind) {
            case GateAnswer::Kind::answered:
                return RequestEnd::Kind::answered;
            case GateAnswer::Kind::denied:
                return RequestEnd::Kind::denied;
            case GateAnswer::Kind::notBegun:
                break;
        }
        return RequestEnd::Kind::notBegun;
    };
    return {kind(), answer->text, process.pid(), process.begun(), answer->asked, job.isLate};
}

void JobTable::hear(Job& job, const JobProcess::Message& message) {
    const pid_t pid = job.process.pid();
    const auto now = QuestionLine::Time::clock::now();
    if (message.word == FromJob::wantsToAsk) {
        const std::size_t end = message.text.find('\0');
        if (end != std::string::npos) job.asked = message.text.substr(end + 1);
        tell(questions_.ask(pid, message.text.substr(0, end), now));
    } else if (message.word == FromJob::wasDenied) {
        tell(questions_.over(pid, message.text, now));
    } else if (message.word == FromJob::hasAsked) {
        tell(questions_.over(pid, std::nullopt, now));
    } else if (message.word == FromJob::wantsToBegin && !job.isGivenUp && !isStopping_) {
        job.isAnswered || !job.request->isStillWanted() ? giveUp(job) : job.process.begin();
    }
}

void JobTable::tell(const QuestionLine::Replies& replies) {
    for (const auto& [whom, denial] : replies) {
        const auto job = jobs_.find(whom);
        if (job == jobs_.end()) continue;
        job->second.isDenied = denial.has_value();
        denial ? job->second.process.denyAsking(*denial) : job->second.process.letAsk();
    }
}

void JobTable::giveUp(const Request& request) {
    for (auto& [pid, job] : jobs_) {
        if (job.request.get() == &request) giveUp(job);
    }
}

void JobTable::giveUpUnagreed(const Request& request) {
    const auto found =
        std::ranges::find_if(jobs_, [&request](const auto& entry) { return entry.second.request.get() == &request; });
    if (found == jobs_.end()) return;
    Job& job = found->second;
    // What it has said already counts: it may have got consent by now.
    listen(job);
    if (job.process.begun() || job.isGivenUp || job.isAnswered || job.isDenied) return;
    job.isLate = true;
    if (!questions_.isAsking(found->first)) return giveUp(job);
    job.isAnswered = true;
    job.process.tellLate();
    job.request->ended({RequestEnd::Kind::notBegun, {}, found->first, false, job.asked, true});
}

bool JobTable::isEmpty() const {
    return std::ranges::all_of(jobs_, [](const auto& entry) { return entry.second.isAnswered; });
}

void JobTable::giveUpWaiting() {
    isStopping_ = true;
    for (auto& [pid, job] : jobs_)
        giveUp(job);
}

void JobTable::giveUp(Job& job) {
    if (job.process.begun() || std::exchange(job.isGivenUp, true)) return;
    // A no would be lost on it that the asker's next request is to have.
    questions_.giveUp(job.process.pid());
    job.process.giveUp();
    // It may wait for something else than a person, for a user database that doesn't answer for example.
    job.killing = loop_.after(kTimeToGiveUp, [&job] { job.process.kill(); });
}

void JobTable::finish(pid_t pid) {
    Job& ended = jobs_.at(pid);
    for (const JobProcess::Message& message : ended.process.listen()) {
        // What has ended begins nothing.
        if (message.word != FromJob::wantsToBegin) hear(ended, message);
    }
    reportDeath(ended);
    const auto job = jobs_.extract(pid);
    tell(questions_.leave(pid, QuestionLine::Time::clock::now()));
    if (!job.mapped().isAnswered) job.mapped().request->ended(endOf(job.mapped()));
}

/// Of a process that nobody has told to end and that ends without an answer only the system knows why.
void JobTable::reportDeath(const Job& ended) {
    if (ended.process.answer() || ended.isGivenUp) return;
    const std::string& trouble = ended.process.trouble();
    const pid_t pid = ended.process.pid();
    log_.write("process " + std::to_string(pid) + " " + howEnded(pid) + (trouble.empty() ? "" : ": " + trouble));
}

void JobTable::countRefusals() {
    log_.summarise();
    const auto next = log_.nextSummary();
    if (next == summaryTime_) return;
    summaryTime_ = next;
    summary_.reset();
    if (!next) return;
    const auto left = std::chrono::ceil<std::chrono::microseconds>(*next - std::chrono::steady_clock::now());
    summary_ = loop_.after(left, [this] { summaryTime_.reset(); });
}

bool JobTable::run() {
    endFirstForWantOfMemory();
    try {
        countRefusals();
        loop_.run();
        log_.finish();
        return true;
    } catch (const std::exception& error) {
        reportEnd(error.what());
    }
    service_.takeNothingMore();
    waitForRunning();
    return false;
}

/// Memory may be what is missing, and the log then fails as well.
void JobTable::reportEnd(const char* reason) noexcept try {
    log_.write("ending when the requests that were begun have ended: " + std::string(reason));
} catch (const std::exception&) {  // NOLINT(bugprone-empty-catch): nowhere is left to say it
}

/// A write that was begun goes on without this process, but nobody would be answered.
void JobTable::waitForRunning() noexcept {
    for (auto& [pid, job] : jobs_) {
        if (!job.process.begun()) job.process.giveUp();
    }
    while (!jobs_.empty()) {
        const auto job = jobs_.extract(jobs_.begin());
        awaitEnd(job.key());
        try {
            job.mapped().process.listen();
            if (!job.mapped().isAnswered) job.mapped().request->ended(endOf(job.mapped()));
            reportDeath(job.mapped());
        } catch (const std::exception&) {  // NOLINT(bugprone-empty-catch): the others are still to be waited for
        }
        collect(job.key());
    }
}

}  // namespace kestrav
