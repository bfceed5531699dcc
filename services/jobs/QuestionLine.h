#pragma once

#include <chrono>
#include <cstddef>
#include <deque>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <sys/types.h>
#include <vector>

namespace kestrav {

/// Who may have a person asked, and who waits: of all the requests of one subject (a process, or a name on the bus) one
/// at a time. An update is two requests of one process, and is to show one prompt.
///
/// Nobody's consent is kept here or handed from one request to another: whose turn comes asks polkit, which alone knows
/// what its rules keep. What is handed on is a no: to those who wait, and where nobody waits to one further request
/// within ten seconds.
class QuestionLine {
  public:
    using Time = std::chrono::steady_clock::time_point;

    static constexpr std::chrono::seconds kDenialIsKept{10};
    /// Subjects whose last no is kept, at most; of more it is not.
    static constexpr std::size_t kMostDenials = 256;

    struct Reply {
        pid_t whom;                         ///< the request's process
        std::optional<std::string> denial;  ///< what somebody said; none: it is its turn to ask

        friend bool operator==(const Reply&, const Reply&) = default;
    };
    using Replies = std::vector<Reply>;

    /// The request of process `who` wants a person to be asked about `subject`. Not replied to before its time.
    Replies ask(pid_t who, const std::string& subject, Time now);
    /// Its question is over; with `denial` somebody said no.
    Replies over(pid_t who, const std::optional<std::string>& denial, Time now);
    /// It no longer waits for its turn: its request is given up. Nothing where it is its turn, or it has none to wait
    /// for.
    void giveUp(pid_t who);
    /// It has ended, whatever it was at.
    Replies leave(pid_t who, Time now);
    /// Whether a person is being asked for it.
    bool isAsking(pid_t who) const;

  private:
    struct Denial {
        std::string sentence;
        Time end;
    };
    struct Line {
        pid_t asking;
        std::deque<pid_t> waiting;
    };

    void forgetOldDenials(Time now);
    Replies next(const std::string& subject);

    std::map<std::string, Line> lines_;
    std::map<std::string, Denial> denials_;
    std::map<pid_t, std::string> subjects_;  ///< of all who ask or wait
};

}  // namespace kestrav
