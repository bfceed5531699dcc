#include "services/jobs/QuestionLine.h"

#include <algorithm>

namespace kestrav {

QuestionLine::Replies QuestionLine::ask(pid_t who, const std::string& subject, Time now) {
    forgetOldDenials(now);
    if (const auto denial = denials_.extract(subject)) return {{who, denial.mapped().sentence}};
    subjects_.emplace(who, subject);
    const auto [line, isNew] = lines_.try_emplace(subject, Line{who, {}});
    if (isNew) return {{who, std::nullopt}};
    line->second.waiting.push_back(who);
    return {};
}

QuestionLine::Replies QuestionLine::over(pid_t who, const std::optional<std::string>& denial, Time now) {
    if (!isAsking(who)) return {};
    const std::string subject = subjects_.extract(who).mapped();
    if (!denial) return next(subject);
    Replies replies;
    const auto line = lines_.extract(subject);
    for (const pid_t waiting : line.mapped().waiting) {
        subjects_.erase(waiting);
        replies.push_back({waiting, denial});
    }
    forgetOldDenials(now);
    if (replies.empty() && denials_.size() < kMostDenials) denials_[subject] = {*denial, now + kDenialIsKept};
    return replies;
}

void QuestionLine::giveUp(pid_t who) {
    if (isAsking(who)) return;
    const auto subject = subjects_.extract(who);
    if (subject) std::erase(lines_.at(subject.mapped()).waiting, who);
}

QuestionLine::Replies QuestionLine::leave(pid_t who, Time now) {
    if (isAsking(who)) return over(who, std::nullopt, now);
    giveUp(who);
    return {};
}

bool QuestionLine::isAsking(pid_t who) const {
    const auto subject = subjects_.find(who);
    return subject != subjects_.end() && lines_.at(subject->second).asking == who;
}

void QuestionLine::forgetOldDenials(Time now) {
    std::erase_if(denials_, [now](const auto& denial) { return denial.second.end <= now; });
}

/// The turn passes to whoever has waited longest.
QuestionLine::Replies QuestionLine::next(const std::string& subject) {
    const auto line = lines_.find(subject);
    if (line->second.waiting.empty()) {
        lines_.erase(line);
        return {};
    }
    line->second.asking = line->second.waiting.front();
    line->second.waiting.pop_front();
    return {{line->second.asking, std::nullopt}};
}

}  // namespace kestrav
