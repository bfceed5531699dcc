#include <array>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <functional>
#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

#include "app/Button.h"
#include "app/LastWords.h"
#include "base/UniqueFd.h"
#include "base/retry.h"

namespace kestrav {
namespace {

class AnyButton final : public Button {
  public:
    std::optional<std::string> identifier() const override { return "firmwareBtn"; }
    void setEnabled(bool /*value*/) override {}
};

const AnyButton kSender;
const std::vector<std::string> kWrite{"if=/some/image.fds", "of=/dev/rsdzz", "seek=1536"};

/// What the other process says of a program that does this and has not ended by then; empty if it says nothing.
/// `status` is how the program ended.
std::string toldOf(const std::function<void(LastWords&)>& program, int& status) {
    std::array<int, 2> ends{-1, -1};
    EXPECT_EQ(::pipe2(ends.data(), O_CLOEXEC), 0);
    const UniqueFd hear(ends[0]);
    UniqueFd say(ends[1]);
    const pid_t child = ::fork();
    if (child == 0) {
        static LastWords words([&say](const LastScene& scene) {
            const std::string told = std::string(scene.isUpdating ? "updating " : "idle ") +
                                     (scene.mayBeWritten ? "maybe " : "nothing ") + scene.path + '|';
            static_cast<void>(::write(say.get(), told.data(), told.size()));
        });
        program(words);
        std::exit(0);
    }
    say.reset();
    std::string told;
    std::array<char, 200> piece{};
    // It ends when both processes have.
    for (ssize_t size = 0; (size = retry([&] { return ::read(hear.get(), piece.data(), piece.size()); })) > 0;)
        told.append(piece.data(), static_cast<std::size_t>(size));
    EXPECT_EQ(retry([&] { return ::waitpid(child, &status, 0); }), child);
    return told;
}

std::string toldOf(const std::function<void(LastWords&)>& program) {
    int status = 0;
    return toldOf(program, status);
}

TEST(LastWords, TellWhatWentOnWhenTheProgramStopped) {
    int status = 0;
    EXPECT_EQ(toldOf([](LastWords&) { std::abort(); }, status), "idle nothing |");
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGABRT);
    EXPECT_EQ(toldOf([](LastWords& words) {
                  words.updateBegins(kSender, "/some/folder");
                  std::abort();
              }),
              "updating nothing /some/folder|");
    EXPECT_EQ(toldOf([](LastWords& words) {
                  words.updateBegins(kSender, "/some/image.fds");
                  words.asked("umount", {});
                  words.asked("dd", kWrite);
                  ::raise(SIGKILL);
              }),
              "updating maybe /some/image.fds|");
    EXPECT_EQ(toldOf([](LastWords& words) {
                  words.updateBegins(kSender, "/some/image.fds");
                  words.asked("dd", kWrite);
                  words.updateEnded(kSender, "/some/image.fds");
                  std::abort();
              }),
              "idle maybe /some/image.fds|");
}

TEST(LastWords, ForgetAnEarlierUpdate) {
    EXPECT_EQ(toldOf([](LastWords& words) {
                  words.updateBegins(kSender, "/one.fds");
                  words.asked("dd", kWrite);
                  words.updateEnded(kSender, "/one.fds");
                  words.updateBegins(kSender, "/two.fds");
                  std::abort();
              }),
              "updating nothing /two.fds|");
}

TEST(LastWords, TellNothingOfAnEndOnPurpose) {
    EXPECT_EQ(toldOf([](LastWords&) {}), "");
    EXPECT_EQ(toldOf([](LastWords&) { std::exit(1); }), "");
    EXPECT_EQ(toldOf([](LastWords& words) {
                  words.endsOnPurpose();
                  std::_Exit(0);
              }),
              "");
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
        int status = 0;
        EXPECT_EQ(toldOf([signal](LastWords&) { ::raise(signal); }, status), "") << signal;
        EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == signal);
    }
}

TEST(LastWords, LeaveAnIgnoredSignalIgnored) {
    ::signal(SIGHUP, SIG_IGN);
    int status = 0;
    EXPECT_EQ(toldOf([](LastWords&) { ::raise(SIGHUP); }, status), "");
    ::signal(SIGHUP, SIG_DFL);
    EXPECT_TRUE(WIFEXITED(status));
}

TEST(LastWords, KeepTheLongestPath) {
    const std::string path = "/" + std::string(4094, 'x');
    EXPECT_EQ(toldOf([&](LastWords& words) {
                  words.updateBegins(kSender, path);
                  std::abort();
              }),
              "updating nothing " + path + '|');
}

}  // namespace
}  // namespace kestrav
