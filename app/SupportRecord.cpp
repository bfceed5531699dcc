#include "app/SupportRecord.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <ctime>
#include <utility>

#include "base/shownText.h"

namespace kestrav {
namespace {

constexpr std::string_view kLineEnd = "\r\n";

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

}  // namespace

void SupportRecord::logged(std::string_view text) {
    while (!text.empty()) {
        const std::string_view line = text.substr(0, text.find(kLineEnd));
        enter("log", line);
        text.remove_prefix(std::min(text.size(), line.size() + kLineEnd.size()));
    }
}

void SupportRecord::asked(std::string_view command, std::span<const std::string> arguments) {
    std::string line(command);
    for (const std::string& argument : arguments)
        line += ' ' + argument;
    enter("asked", line);
}

void SupportRecord::answered(std::string_view bytes) {
    enter("answer", bytes);
}

void SupportRecord::unanswered(const Unanswered& unanswered) {
    enter("answer", unanswered.sentence.empty() ? "(none)" : unanswered.sentence);
}

void SupportRecord::enter(std::string_view kind, std::string_view line) {
    std::string entry = inUtc(now_()) + ' ';
    entry += kind;
    entry.append(sizeof "answer" - kind.size(), ' ');
    entry += shownSentence(line, kMostBytes);
    const std::scoped_lock lock(mutex_);
    lines_.push_back(std::move(entry));
    if (lines_.size() <= kMostEntries) return;
    lines_.pop_front();
    ++dropped_;
}

std::string SupportRecord::text() const {
    const std::scoped_lock lock(mutex_);
    std::string all;
    if (dropped_ > 0) all = "(" + std::to_string(dropped_) + " earlier entries are not kept)" + "\n";
    for (const std::string& line : lines_)
        all += line + '\n';
    return all;
}

}  // namespace kestrav
