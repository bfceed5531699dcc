#include "app/SupportRecord.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <ctime>

#include "app/LogText.h"
#include "base/shownText.h"
#include "base/stopProcess.h"

namespace kestrav {
namespace {

/// A refusal is a few sentences; more than this is not for people.
constexpr std::size_t kMostBytes = 4096;

std::string inUtc(SupportRecord::Time time) {
    const auto seconds = std::chrono::floor<std::chrono::seconds>(time);
    const std::time_t whole = std::chrono::system_clock::to_time_t(seconds);
    const auto milliseconds = std::chrono::duration_cast<std::chrono::milliseconds>(time - seconds).count();
    std::tm parts{};
    std::array<char, 48> text{};
    if (::gmtime_r(&whole, &parts) == nullptr) return "?";
    const std::size_t length = std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%S", &parts);
    std::snprintf(text.data() + length, text.size() - length, ".%03dZ", static_cast<int>(milliseconds));
    return text.data();
}

/// With the blanks that make a column of it.
std::string_view name(SupportRecord::Kind kind) {
    switch (kind) {
        case SupportRecord::Kind::log:
            return "log    ";
        case SupportRecord::Kind::asked:
            return "asked  ";
        case SupportRecord::Kind::answer:
            return "answer ";
    }
    stopProcess();
}

}  // namespace

void SupportRecord::logged(std::string_view text) {
    while (!text.empty()) {
        const std::string_view line = text.substr(0, text.find(kLogLineEnd));
        enter(Kind::log, line);
        text.remove_prefix(std::min(text.size(), line.size() + kLogLineEnd.size()));
    }
}

void SupportRecord::asked(std::string_view command, std::span<const std::string> arguments) {
    std::string line(command);
    for (const std::string& argument : arguments)
        line += ' ' + argument;
    enter(Kind::asked, line);
}

void SupportRecord::answered(std::string_view bytes) {
    enter(Kind::answer, bytes);
}

void SupportRecord::unanswered(const Unanswered& unanswered) {
    enter(Kind::answer, unanswered.sentence.empty() ? "(none)" : unanswered.sentence);
}

/// One byte more than is shown, so that the reader is told that there was more. What a long update logs comes by here
/// line by line, and hardly anybody reads it: it is put into words in text().
void SupportRecord::enter(Kind kind, std::string_view line) {
    const std::scoped_lock lock(mutex_);
    entries_.push_back({now_(), kind, std::string(line.substr(0, kMostBytes + 1))});
    if (entries_.size() <= kMostEntries) return;
    entries_.pop_front();
    ++dropped_;
}

std::string SupportRecord::text() const {
    const std::scoped_lock lock(mutex_);
    std::string all;
    if (dropped_ > 0) all = "(" + std::to_string(dropped_) + " earlier entries are not kept)" + "\n";
    for (const Entry& entry : entries_) {
        all += inUtc(entry.time) + ' ';
        all += name(entry.kind);
        all += shownSentence(entry.line, kMostBytes) + '\n';
    }
    return all;
}

}  // namespace kestrav
