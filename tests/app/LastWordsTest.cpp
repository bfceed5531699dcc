#include <array>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

#include "app/Button.h"
#include "app/LastWords.h"
#include "base/UniqueFd.h"
#include "base/retry.h"
#include "base/wordPointers.h"
#include "tests/TemporaryFolder.h"

namespace kestrav {
namespace {

class AnyButton final : public Button {
  public:
    std::optional<std::string> identifier() const override { return "firmwareBtn"; }
    void setEnabled(bool /*value*/) override {}
};

const AnyButton kSender;
const std::vector<std::string> kWrite{"if=/some/image.fds", "of=/dev/rsdzz", "seek=1536"};

/// Runs a program in a process of its own, whose last words a process beside it appends to a file. Gives what is in the
/// file when both have ended; `status` is how the program ended.
std::string toldOf(const std::function<void(LastWords&)>& program, int& status) {
    const TemporaryFolder folder;
    const std::string told = folder.file("told", {});
    // The process that outlives the program becomes this one's child.
    EXPECT_EQ(::prctl(PR_SET_CHILD_SUBREAPER, 1), 0);
    const pid_t child = ::fork();
    if (child == 0) {
        static LastWords words;
        words.begin([&told](const LastScene& scene) {
            std::ofstream(told, std::ios::app) << (scene.isUpdating ? "updating " : "idle ")
                                               << (scene.mayBeWritten ? "maybe " : "nothing ") << scene.path << '|';
        });
        program(words);
        std::exit(0);
    }
    int its = 0;
    for (pid_t ended = 0; (ended = retry([&] { return ::waitpid(-1, &its, 0); })) > 0;) {
        if (ended == child) status = its;
    }
    return contentsOf(told);
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
        // Whoever runs this may ignore it, as nohup does.
        ::signal(signal, SIG_DFL);
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

TEST(LastWords, AreOfNobodyBeforeTheyBegin) {
    LastWords words;
    words.updateBegins(kSender, "/some/image.fds");
    words.asked("dd", kWrite);
    words.endsOnPurpose();
}

TEST(LastWords, HoldNothingOfTheProgramOpen) {
    std::array<int, 2> ends{-1, -1};
    ASSERT_EQ(::pipe2(ends.data(), O_CLOEXEC), 0);
    const UniqueFd here(ends[0]);
    UniqueFd there(ends[1]);
    LastWords words;
    words.begin([](const LastScene&) {});
    there.reset();
    char none = 0;
    // The end of what the program says comes, although the other process lives.
    EXPECT_EQ(retry([&] { return ::read(here.get(), &none, 1); }), 0);
}

std::optional<LastScene> handedOver(const std::vector<std::string>& arguments) {
    const std::vector<char*> pointers = wordPointers(arguments);
    return LastScene::handedOver({pointers.data(), arguments.size()});
}

TEST(LastWords, AreHandedOverByArgumentsAlone) {
    EXPECT_FALSE(handedOver({"kestrav"}));
    EXPECT_FALSE(handedOver({"kestrav", "--last-words", "idle", "untouched"}));
    EXPECT_FALSE(handedOver({"kestrav", "--last-words", "sleeping", "untouched", "/image"}));
    EXPECT_FALSE(handedOver({"kestrav", "--last-words", "idle", "written", "/image"}));
    EXPECT_FALSE(handedOver({"kestrav", "--other-words", "idle", "untouched", "/image"}));
    const auto scene = handedOver({"kestrav", "--last-words", "updating", "untouched", ""});
    ASSERT_TRUE(scene);
    EXPECT_TRUE(scene->isUpdating && !scene->mayBeWritten && scene->path.empty());
}

}  // namespace
}  // namespace kestrav
