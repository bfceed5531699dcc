// The server in a process of its own, among parts that fail.

#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdexcept>
#include <string>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <utility>

#include "base/SystemLog.h"
#include "services/commandd/CallerJudge.h"
#include "services/commandd/RequestRunner.h"
#include "services/commandd/Server.h"
#include "services/privileged/Consent.h"
#include "services/privileged/Gate.h"
#include "services/privileged/RequestLog.h"
#include "services/privileged/UdevBlockDevices.h"
#include "tests/TemporaryFolder.h"
#include "tests/services/CommandDaemon.h"
#include "tests/services/linesSaying.h"
#include "tests/signalOne.h"

namespace kestrav {
namespace {

/// Takes a second over an entry of a request's process, as a write would, and fails for the server itself.
class FailingLog final : public SystemLog {
  public:
    void write(std::string_view) override {
        if (::getpid() == server_) throw std::runtime_error("no room for the entry");
        std::this_thread::sleep_for(std::chrono::seconds(1));
    }

  private:
    pid_t server_ = ::getpid();
};

/// Keeps its lines in a file, for another process to read.
class FileLog final : public SystemLog {
  public:
    explicit FileLog(std::string path) : path_(std::move(path)) {}
    void write(std::string_view entry) override { std::ofstream(path_, std::ios::app) << entry << '\n'; }

  private:
    std::string path_;
};

[[noreturn]] void serveOn(UniqueFd listener, RequestLog& log) {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);  // a server that hangs must not outlive the test
    const UdevBlockDevices devices;
    const MountinfoTable mounts;
    const RootAndOwnUser judge(::geteuid());
    Gate gate(devices, mounts, log);
    PolkitConsent consent;
    RequestRunner runner(consent, gate, log);
    try {
        ::_exit(Server(std::move(listener), judge, runner, log).run() ? 0 : 1);
    } catch (const std::exception&) {
        ::_exit(2);
    }
}

TEST(Server, LetsRequestsEndThatWereBegunBeforeItFailed) {
    std::uint16_t port = 0;
    UniqueFd listener = listenOnFreePort(port);
    ASSERT_EQ(::fcntl(listener.get(), F_SETFL, O_NONBLOCK), 0);  // as the server expects it
    const pid_t server = ::fork();
    ASSERT_GE(server, 0);
    if (server == 0) {
        FailingLog failing;
        RequestLog log(failing);
        serveOn(std::move(listener), log);
    }
    listener.reset();
    const Client begun(port);
    begun.send(requestFor("rm", {}));
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    const Client refused(port);
    refused.send("GET /");  // the server logs the refusal, and fails
    EXPECT_THAT(begun.readOnce(), testing::HasSubstr("is not a command"));
    begun.finishSending();
    int status = -1;
    EXPECT_EQ(::waitpid(server, &status, 0), server);
    EXPECT_EQ(WEXITSTATUS(status), 1);
}

TEST(Server, SaysByItselfHowManyRefusalsItOnlyCounted) {
    const TemporaryFolder folder;
    const std::string path = folder.file("log", "");
    std::uint16_t port = 0;
    UniqueFd listener = listenOnFreePort(port);
    ASSERT_EQ(::fcntl(listener.get(), F_SETFL, O_NONBLOCK), 0);
    const pid_t server = ::fork();
    ASSERT_GE(server, 0);
    if (server == 0) {
        FileLog file(path);
        RequestLog log(file, std::chrono::seconds(1));
        // Counted like those of peers whom the system does not tell, because this process asks as the service's user.
        for (int i = 0; i < 25; ++i)
            log.refused(RequestLog::kUnknown, "refused");
        serveOn(std::move(listener), log);
    }
    listener.reset();
    for (int i = 0; i < 2000 && linesSaying(contentsOf(path), "not listed") == 0; ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    EXPECT_EQ(linesSaying(contentsOf(path), "unknown users: 5 more refusals within a minute are not listed"), 1U);
    signalOne(server, SIGKILL);
    ::waitpid(server, nullptr, 0);
}

}  // namespace
}  // namespace kestrav
