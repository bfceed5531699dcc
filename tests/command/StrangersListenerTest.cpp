// Somebody listens where the service should. Another user's listener needs root.

#include <csignal>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <string>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

#include "base/UniqueFd.h"
#include "command/CommandService.h"
#include "command/ServiceOwner.h"
#include "tests/base/RecordingLog.h"
#include "tests/command/LoopbackService.h"
#include "tests/command/fakes/RecordedAnswers.h"
#include "tests/signalOne.h"

namespace kestrav {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using Why = Unanswered::Why;

constexpr const char* kLie = "Wrote 8 bytes to sdb at block 1536, verified, 1.0 MB/s.";

/// A user's program that listens on a free port and answers as the service would.
class Pretender {
  public:
    enum class Then { waits, closesAtOnce };

    Pretender(uid_t uid, Then then) {
        int ready[2];
        if (::pipe(ready) != 0) throw std::runtime_error("no pipe");
        pid_ = ::fork();
        if (pid_ == 0) run(uid, then, ready[1]);
        ::close(ready[1]);
        const bool isReady = ::read(ready[0], &port_, sizeof port_) == static_cast<ssize_t>(sizeof port_);
        ::close(ready[0]);
        if (!isReady) throw std::runtime_error("no pretender");
    }
    ~Pretender() {
        if (pid_ <= 0) return;
        signalOne(pid_, SIGKILL);
        ::waitpid(pid_, nullptr, 0);
    }
    Pretender(const Pretender&) = delete;
    Pretender& operator=(const Pretender&) = delete;

    std::int32_t port() const { return port_; }

  private:
    [[noreturn]] static void run(uid_t uid, Then then, int ready) {
        if (::setresuid(uid, uid, uid) != 0) ::_exit(2);
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        const UniqueFd listener(::socket(AF_INET, SOCK_STREAM, 0));
        sockaddr_in place{};
        place.sin_family = AF_INET;
        place.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t length = sizeof place;
        if (::bind(listener.get(), reinterpret_cast<sockaddr*>(&place), length) != 0) ::_exit(3);
        if (::listen(listener.get(), 5) != 0) ::_exit(4);
        ::getsockname(listener.get(), reinterpret_cast<sockaddr*>(&place), &length);
        const std::int32_t port = ntohs(place.sin_port);
        if (::write(ready, &port, sizeof port) < 0) ::_exit(5);
        std::vector<UniqueFd> kept;
        while (true) {
            UniqueFd connection(::accept(listener.get(), nullptr, nullptr));
            char request[4096];
            if (::recv(connection.get(), request, sizeof request, 0) <= 0) continue;
            ::send(connection.get(), kLie, std::string(kLie).size(), MSG_NOSIGNAL);
            if (then == Then::waits) kept.push_back(std::move(connection));
        }
    }

    pid_t pid_ = -1;
    std::int32_t port_ = 0;
};

class AnswerOnThePort : public testing::Test {
  protected:
    void runOn(std::int32_t port) {
        const std::vector<std::string> arguments{"x"};
        CommandService service(log_, {.port = port, .connectSeconds = 5, .readSeconds = 5}, &answers_);
        EXPECT_EQ(service.runWithCommand("dd", arguments), "");
    }
    void expectAStranger(Pretender::Then then) {
        if (::geteuid() != 0) GTEST_SKIP() << "needs root: another user's listener";
        const Pretender pretender(65534, then);
        runOn(pretender.port());
        EXPECT_THAT(answers_.events(), ElementsAre("asked dd x", "unanswered"));
        ASSERT_THAT(answers_.unanswered(), SizeIs(1));
        EXPECT_EQ(answers_.unanswered()[0].why, Why::notTheService);
        EXPECT_EQ(answers_.unanswered()[0].sentence,
                  "This is not the service's answer: user 65534 listens in its place. Do not believe it.");
        EXPECT_THAT(log_.entries(), ElementsAre(kLie)) << "the log has what came";
    }

    RecordingLog log_;
    RecordedAnswers answers_;
};

TEST_F(AnswerOnThePort, IsNotTheServicesWhenAnotherUserListensThere) {
    expectAStranger(Pretender::Then::waits);
}

TEST_F(AnswerOnThePort, IsNotTheServicesWhenThatUserGoesAtOnce) {
    expectAStranger(Pretender::Then::closesAtOnce);
}

TEST_F(AnswerOnThePort, IsTheServicesWhenItIsThisUsers) {
    const LoopbackService service(answers(kLie));
    runOn(service.port());
    EXPECT_THAT(answers_.events(), ElementsAre("asked dd x", std::string("answered ") + kLie));
}

TEST_F(AnswerOnThePort, IsTheServicesForEverybodyWhenItIsRoots) {
    if (::geteuid() != 0) GTEST_SKIP() << "needs root: asks as another user";
    const LoopbackService service(answers(kLie));
    const pid_t child = ::fork();
    if (child == 0) {
        if (::setresuid(65534, 65534, 65534) != 0) ::_exit(2);
        runOn(service.port());
        ::_exit(!HasFailure() && answers_.unanswered().empty() && answers_.events().size() == 2 ? 0 : 1);
    }
    int status = -1;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
}

TEST(ServiceOwner, IsUnknownWhereTheSystemTellsNothing) {
    int ends[2];
    ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM, 0, ends), 0);
    const UniqueFd one(ends[0]);
    const UniqueFd two(ends[1]);
    EXPECT_EQ(ServiceOwner(one.get()).whyNotOurs(),
              "This may not be the service's answer: the system does not tell who listens in its place. Do not believe "
              "it.");
}

}  // namespace
}  // namespace kestrav
