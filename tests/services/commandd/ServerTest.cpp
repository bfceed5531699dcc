// The server in a process of its own, among parts that fail.

#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <iterator>
#include <linux/sockios.h>
#include <list>
#include <memory>
#include <netinet/in.h>
#include <poll.h>
#include <stdexcept>
#include <string>
#include <sys/eventfd.h>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <utility>
#include <vector>

#include "base/SystemLog.h"
#include "base/findTcpSocket.h"
#include "services/asker/ProcessRecord.h"
#include "services/commandd/Server.h"
#include "tests/TemporaryFolder.h"
#include "tests/base/FileLog.h"
#include "tests/childrenOf.h"
#include "tests/eventually.h"
#include "tests/sandbox/ChildProcess.h"
#include "tests/services/CommandDaemon.h"
#include "tests/services/gate/GateWithoutDisks.h"
#include "tests/services/linesSaying.h"
#include "tests/signalOne.h"

namespace kestrav {
namespace {

/// Takes a second over an entry of a request's process, as a write would, and fails for the server itself.
class FailingLog final : public SystemLog {
  public:
    /// `begun` is a file that shows that a request's process has begun its entry.
    explicit FailingLog(std::string begun) : begun_(std::move(begun)) {}
    void write(std::string_view) override {
        if (::getpid() == server_) throw std::runtime_error("no room for the entry");
        std::ofstream(begun_) << "begun";
        std::this_thread::sleep_for(std::chrono::seconds(1));
    }

  private:
    std::string begun_;
    pid_t server_ = ::getpid();
};

/// Has a request's process stay at its entry, as at a long write, until it may go on.
class HoldingLog final : public SystemLog {
  public:
    /// `begun` is a file that shows that it is there; it goes on when there is the file `goOn`. The server's own
    /// entries go to the file `lines`.
    HoldingLog(std::string begun, std::string goOn, std::string lines)
        : begun_(std::move(begun)),
          goOn_(std::move(goOn)),
          serversOwn_(std::move(lines)) {}
    void write(std::string_view entry) override {
        if (::getpid() == server_) return serversOwn_.write(entry);
        std::ofstream(begun_) << "begun";
        eventually([this] { return std::filesystem::exists(goOn_); });
    }

  private:
    std::string begun_, goOn_;
    FileLog serversOwn_;
    pid_t server_ = ::getpid();
};

/// A server in a process of its own, which is ended with the object.
class ServerProcess {
  public:
    ServerProcess(const std::function<void(RequestLog&)>& before, const std::function<SystemLog*()>& makeLog,
                  std::chrono::seconds window = RequestLog::kWindow, Server::Patience patience = {},
                  FakeConsent consent = {}) {
        UniqueFd listener = listenOnFreePort(port_);
        ::fcntl(listener.get(), F_SETFL, O_NONBLOCK);  // as the server expects it
        pid_ = ::fork();
        if (pid_ != 0) return;
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);  // a server that hangs must not outlive the test
        const std::unique_ptr<SystemLog> lines(makeLog());
        RequestLog log(*lines, window);
        before(log);
        const NoDevices devices;
        const MountinfoTable mounts;
        Gate gate(consent, devices, mounts, log);
        try {
            ::_exit(Server(std::move(listener), gate, log, patience).run() ? 0 : 1);
        } catch (const std::exception&) {
            ::_exit(2);
        }
    }
    ~ServerProcess() {
        if (pid_ <= 0) return;
        signalOne(pid_, SIGKILL);
        ::waitpid(pid_, nullptr, 0);
    }
    ServerProcess(const ServerProcess&) = delete;
    ServerProcess& operator=(const ServerProcess&) = delete;

    std::uint16_t port() const { return port_; }
    pid_t pid() const { return pid_; }
    /// Waits for its end.
    int exitStatus() {
        int status = -1;
        ::waitpid(std::exchange(pid_, -1), &status, 0);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

  private:
    std::uint16_t port_ = 0;
    pid_t pid_ = -1;
};

void nothing(RequestLog&) {}

class ServerWithAFile : public testing::Test {
  protected:
    SystemLog* log() const { return new FileLog(path_); }
    std::string logged() const { return contentsOf(path_); }
    bool logs(const char* words) const {
        return eventually([&] { return linesSaying(logged(), words) > 0; }) && linesSaying(logged(), words) == 1;
    }

    const TemporaryFolder folder_;
    const std::string path_ = folder_.file("log", "");
};

/// Those that the other end has not taken.
int unsentBytes(int socket) {
    int count = -1;
    return ::ioctl(socket, SIOCOUTQ, &count) == 0 ? count : -1;
}

TEST(Server, LetsRequestsEndThatWereBegunBeforeItFailed) {
    const TemporaryFolder folder;
    const std::string begins = folder.path() / "begun";
    ServerProcess server(nothing, [&begins] { return new FailingLog(begins); });
    const Client begun(server.port());
    begun.send(requestFor("rm", {}));
    ASSERT_TRUE(eventually([&] { return std::filesystem::exists(begins); }));
    const Client refused(server.port());
    refused.send("GET /");  // the server logs the refusal, and fails
    EXPECT_THAT(begun.readOnce(), testing::HasSubstr("is not a command"));
    begun.finishSending();
    EXPECT_EQ(server.exitStatus(), 1);
}

/// The number of the socket at the service's end of a connection.
std::uint32_t inodeAtTheService(const Client& client) {
    sockaddr_in here{};
    sockaddr_in there{};
    const bool connected = endsOf(client.socket(), here, there);
    const auto look = connected ? findConnectedSocket(there, here) : SocketLook();
    return look.socket ? look.socket->inode : 0;
}

std::uint32_t inodeOfListener(std::uint16_t port) {
    sockaddr_in there{};
    there.sin_family = AF_INET;
    there.sin_port = htons(port);
    there.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const auto look = findListeningSocket(there);
    return look.socket ? look.socket->inode : 0;
}

/// A server with a request that has begun and goes on when it is told.
class ServerInMidWork : public ServerWithAFile {
  protected:
    void begin() {
        begun_.send(requestFor("rm", {}));
        ASSERT_TRUE(eventually([&] { return std::filesystem::exists(begins_); }));
    }
    void goOn() {
        std::ofstream(ends_) << "go on";
        EXPECT_THAT(begun_.readOnce(), testing::HasSubstr("is not a command"));
        begun_.finishSending();
    }

    const std::string begins_ = folder_.path() / "begun";
    const std::string ends_ = folder_.path() / "go on";
    ServerProcess server_{nothing,
                          [this] { return new HoldingLog(begins_, ends_, path_); },
                          RequestLog::kWindow,
                          {.toArrive = std::chrono::minutes(2), .toLeave = std::chrono::minutes(2)}};
    const Client begun_{server_.port()};
};

// Whoever holds a connection too keeps its peer from learning that the service has closed it.
TEST_F(ServerInMidWork, HasNothingOfOthersOpenInTheRequestsProcess) {
    const Client arriving(server_.port());
    const Client leaving(server_.port());
    leaving.send("GET /");
    EXPECT_THAT(leaving.readOnce(), testing::StartsWith("Refused: "));
    begin();
    const ProcessRecord service(server_.pid());
    const std::vector<pid_t> processes = childrenOf(server_.pid());
    ASSERT_EQ(processes.size(), 1U);
    const ProcessRecord process(processes[0]);
    for (const std::uint32_t inode :
         {inodeAtTheService(arriving), inodeAtTheService(leaving), inodeOfListener(server_.port())}) {
        EXPECT_TRUE(service.holds(inode));
        EXPECT_FALSE(process.holds(inode));
    }
    goOn();
}

TEST_F(ServerInMidWork, StopsOnceHoweverOftenItIsTold) {
    begin();
    for (int times = 0; times < 2; ++times) {
        signalOne(server_.pid(), SIGTERM);
        EXPECT_TRUE(logs("stopping when the requests that were begun have ended"));
    }
    goOn();
    EXPECT_EQ(server_.exitStatus(), 0);
    EXPECT_EQ(linesSaying(logged(), "stopping"), 1);
}

TEST_F(ServerWithAFile, SaysByItselfHowManyRefusalsItOnlyCounted) {
    const auto before = [](RequestLog& log) {
        // Counted like those of peers whom the system does not tell, because this process asks as the service's user.
        for (int i = 0; i < 25; ++i)
            log.refused(RequestLog::kUnknown, "refused");
    };
    const ServerProcess server(
        before, [this] { return log(); }, std::chrono::seconds(1));
    EXPECT_TRUE(logs("unknown users: 5 more refusals within a minute are not listed"));
}

TEST_F(ServerWithAFile, TellsAPeerThatItsRequestCameTooLate) {
    const ServerProcess server(nothing, [this] { return log(); }, RequestLog::kWindow,
                               {.toArrive = std::chrono::milliseconds(100)});
    const Client silent(server.port());
    EXPECT_EQ(silent.readOnce(), "Refused: the request did not arrive within five seconds.");
    EXPECT_TRUE(logs("Refused: the request did not arrive within five seconds."));
}

TEST_F(ServerWithAFile, LogsABrokenRequestOnce) {
    const ServerProcess server(nothing, [this] { return log(); });
    const Client client(server.port());
    client.send(R"({"a" 1})");
    EXPECT_EQ(client.readOnce(), "Refused: the request is not JSON, which shows at byte 5.");
    EXPECT_EQ(logged(),
              "user " + std::to_string(::geteuid()) + ": Refused: the request is not JSON, which shows at byte 5.\n");
}

TEST_F(ServerWithAFile, TakesWhatAPeerStillSendsBehindItsRequest) {
    const ServerProcess server(nothing, [this] { return log(); });
    const Client client(server.port());
    client.send(requestFor("rm", {}));
    EXPECT_THAT(client.readOnce(), testing::HasSubstr("is not a command"));
    for (int i = 0; i < 3; ++i) {
        EXPECT_TRUE(client.send("more"));
        // Taken by the system at the other end, which sends a reset where nobody is left.
        EXPECT_TRUE(eventually([&] { return unsentBytes(client.socket()) == 0; }));
    }
    int error = -1;
    socklen_t size = sizeof error;
    ASSERT_EQ(::getsockopt(client.socket(), SOL_SOCKET, SO_ERROR, &error, &size), 0);
    EXPECT_EQ(error, 0) << "the connection was reset";
}

TEST_F(ServerWithAFile, LetsTheOldestOfManySilentPeersGoAtOnce) {
    const ServerProcess server(nothing, [this] { return log(); }, RequestLog::kWindow,
                               {.toLeave = std::chrono::minutes(2)});
    std::list<Client> peers;
    for (std::size_t more = 0; more <= JobTable::kPlaces; ++more) {
        peers.emplace_back(server.port()).send("GET /");
        EXPECT_THAT(peers.back().readOnce(), testing::StartsWith("Refused: "));
    }
    // What is sent to a connection that is closed is answered by a reset.
    EXPECT_TRUE(eventually([&] { return !peers.front().send("more"); }));
    EXPECT_TRUE(std::next(peers.begin())->send("more"));
    EXPECT_TRUE(peers.back().send("more"));
}

// Where no place is left, it is made for a user who has few.
TEST_F(ServerWithAFile, LetsTheOldestSilentPeerOfWhoeverHasMostGiveWay) {
    if (::geteuid() != 0) GTEST_SKIP() << "needs root: connects as two other users";
    const ServerProcess server(nothing, [this] { return log(); }, RequestLog::kWindow,
                               {.toArrive = std::chrono::minutes(2)});
    const UniqueFd connected(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
    const UniqueFd heard(::eventfd(0, EFD_CLOEXEC));
    eventfd_t count = 0;
    UserProcess most(65534, [&] {
        std::list<Client> clients;
        std::vector<pollfd> waiting;
        for (int i = 0; i < 48; ++i)
            waiting.push_back({clients.emplace_back(server.port()).socket(), POLLIN, 0});
        ::eventfd_write(connected.get(), 1);
        ::poll(waiting.data(), waiting.size(), 60'000);
        ::eventfd_write(heard.get(), 1);
        std::string answered;
        for (std::size_t i = 0; i < waiting.size(); ++i)
            if (waiting[i].revents != 0) answered += std::to_string(i) + " ";
        return answered;
    });
    UserProcess few(1, [&] {
        std::list<Client> clients;
        for (int i = 0; i < 9; ++i)
            clients.emplace_back(server.port());
        ::eventfd_read(heard.get(), &count);
        return std::string();
    });
    most.go();
    ASSERT_TRUE(eventually([&] { return ::eventfd_read(connected.get(), &count) == 0; }));
    few.go();
    EXPECT_EQ(most.result(), "0 ");
    EXPECT_EQ(few.result(), "");
}

TEST_F(ServerWithAFile, DoesNotWaitForeverForASilentPeer) {
    ServerProcess server(nothing, [this] { return log(); }, RequestLog::kWindow,
                         {.toLeave = std::chrono::milliseconds(100)});
    const Client client(server.port());
    client.send(requestFor("rm", {}));
    EXPECT_THAT(client.readOnce(), testing::HasSubstr("is not a command"));
    signalOne(server.pid(), SIGTERM);
    EXPECT_EQ(server.exitStatus(), 0);
}

TEST_F(ServerWithAFile, AnswersWhenNobodyAgreesInTime) {
    if (::geteuid() != 0) GTEST_SKIP() << "needs root: connects as another user";
    FakeConsent consent;
    consent.waits = true;
    const ServerProcess server(
        nothing, [this] { return log(); }, RequestLog::kWindow, {.toAgree = std::chrono::milliseconds(300)}, consent);
    UserProcess user(65534, [port = server.port()] { return ask(port, "umount", {"/dev/sdzzs1"}); });
    user.go();
    EXPECT_EQ(user.result(), "Refused: nobody has agreed within 50 seconds; nothing was done.");
    EXPECT_TRUE(
        logs("user 65534: umount /dev/sdzzs1: Refused: nobody has agreed within 50 seconds; nothing was done."));
}

TEST_F(ServerWithAFile, DoesNotBlameAnybodyWhereNobodyIsAsked) {
    const ServerProcess server(nothing, [this] { return log(); }, RequestLog::kWindow,
                               {.toAgree = std::chrono::milliseconds(0)});
    // A process that is quick enough has begun before the server notices that it is late.
    std::string answer;
    for (int tries = 0; tries < 200 && !answer.starts_with("Refused: the request could not be begun"); ++tries)
        answer = ask(server.port(), "umount", {"/dev/sdzzs1"});
    EXPECT_EQ(
        answer,
        "Refused: the request could not be begun within 50 seconds; nothing was done. Has the computer too much to "
        "do?");
}

TEST_F(ServerWithAFile, EndsWhatHasBegunHoweverLateItIs) {
    const ServerProcess server(nothing, [this] { return new FailingLog(path_); }, RequestLog::kWindow,
                               {.toAgree = std::chrono::milliseconds(100)});
    // On a busy computer a process may need so long to begin.
    std::string answer = "could not be begun";
    for (int tries = 0; tries < 50 && answer.find("could not be begun") != std::string::npos; ++tries)
        answer = ask(server.port(), "rm", {});
    EXPECT_THAT(answer, testing::HasSubstr("is not a command"));
}

TEST(ServerPatience, IsFiveSecondsForARequestAndOneForAFarewell) {
    EXPECT_EQ(Server::Patience().toArrive, std::chrono::seconds(5));
    EXPECT_EQ(Server::Patience().toAgree, std::chrono::seconds(50));
    EXPECT_EQ(Server::Patience().toLeave, std::chrono::seconds(1));
}

}  // namespace
}  // namespace kestrav
