#include <algorithm>
#include <array>
#include <chrono>
#include <csignal>
#include <cstddef>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <pwd.h>
#include <string>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

#include "base/UniqueFd.h"
#include "services/image/ImageFile.h"
#include "tests/TemporaryFolder.h"
#include "tests/childrenOf.h"
#include "tests/eventually.h"
#include "tests/signalOne.h"

namespace kestrav {
namespace {

using namespace std::chrono_literals;

UserRights self() {
    return rightsOf(::geteuid()).value();
}

std::string refusal(const std::string& path, const UserRights& rights = self()) {
    const auto image = ImageFile::open(path, rights);
    return image ? std::string() : image.problem().sentence;
}

std::string textOf(const ImageFile& image) {
    std::string text(image.size(), '\0');
    const auto bytes = std::as_writable_bytes(std::span(text));
    return image.read(0, bytes) ? text : "unreadable";
}

TEST(ImageFile, OpensARegularFileOfTheCaller) {
    const TemporaryFolder folder;
    const auto image = ImageFile::open(folder.file("a b=c.fds", "firmware"), self());
    ASSERT_TRUE(image) << image.problem().sentence;
    EXPECT_EQ(textOf(image.value()), "firmware");
}

TEST(ImageFile, FollowsALinkOfTheCaller) {
    const TemporaryFolder folder;
    std::filesystem::create_symlink(folder.file("image", "firmware"), folder.path() / "link");
    EXPECT_TRUE(ImageFile::open(folder.path() / "link", self()));
}

std::vector<std::string> openPaths() {
    std::vector<std::string> paths;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        std::error_code error;
        paths.push_back(std::filesystem::read_symlink(entry, error));
    }
    return paths;
}

TEST(ImageFile, IsOpenInAnotherProcessAlone) {
    const TemporaryFolder folder;
    const std::size_t before = openPaths().size();
    {
        const auto image = ImageFile::open(folder.file("image", "x"), self());
        const auto during = openPaths();
        EXPECT_EQ(during.size(), before + 1);  // the way to that process
        EXPECT_EQ(std::ranges::count(during, (folder.path() / "image").string()), 0);
        ASSERT_EQ(childrenOf(::getpid()).size(), 1U);
    }
    EXPECT_EQ(openPaths().size(), before);
    EXPECT_EQ(childrenOf(::getpid()), std::vector<pid_t>());
}

std::error_code causeOf(const Outcome<void>& outcome) {
    return outcome ? std::error_code() : outcome.problem().cause;
}

TEST(ImageFile, GivesAReaderUpThatDoesNotAnswer) {
    const TemporaryFolder folder;
    const auto image = ImageFile::open(folder.file("image", "firmware"), self(), {.toOpen = 20s, .toRead = 200ms});
    ASSERT_TRUE(image);
    const auto readers = childrenOf(::getpid());
    ASSERT_EQ(readers.size(), 1U);
    signalOne(readers.front(), SIGSTOP);
    std::array<std::byte, 8> bytes{};
    EXPECT_EQ(causeOf(image.value().read(0, bytes)), std::errc::timed_out);
    signalOne(readers.front(), SIGCONT);
    EXPECT_EQ(causeOf(image.value().read(0, bytes)), std::errc::timed_out) << "a late answer was taken";
    EXPECT_EQ(causeOf(image.value().keptLength()), std::errc::timed_out);
}

TEST(ImageFile, SaysWhenItsReaderWasEnded) {
    const TemporaryFolder folder;
    const auto image = ImageFile::open(folder.file("image", "firmware"), self());
    ASSERT_TRUE(image);
    signalOne(childrenOf(::getpid()).at(0), SIGKILL);
    std::array<std::byte, 8> bytes{};
    EXPECT_EQ(causeOf(image.value().read(0, bytes)), std::errc::io_error);
    EXPECT_EQ(causeOf(image.value().keptLength()), std::errc::io_error);
}

TEST(ImageFile, EndsItsReaderWithTheProcessThatUsesIt) {
    const TemporaryFolder folder;
    const std::string path = folder.file("image", "firmware");
    std::array<int, 2> ends{};
    ASSERT_EQ(::pipe2(ends.data(), O_CLOEXEC), 0);
    const UniqueFd told(ends[0]);
    UniqueFd telling(ends[1]);
    const pid_t user = ::fork();
    if (user == 0) {
        const auto image = ImageFile::open(path, self());
        const pid_t reader = childrenOf(::getpid()).at(0);
        if (::write(telling.get(), &reader, sizeof reader) < 0) ::_exit(1);
        ::pause();
    }
    pid_t reader = -1;
    ASSERT_EQ(::read(told.get(), &reader, sizeof reader), static_cast<ssize_t>(sizeof reader));
    signalOne(reader, SIGSTOP);  // so that it can't notice by itself
    signalOne(user, SIGKILL);
    ::waitpid(user, nullptr, 0);
    const auto isGone = [reader] {
        std::ifstream stat("/proc/" + std::to_string(reader) + "/stat");
        std::string number;
        std::string name;
        std::string state;
        return !(stat >> number >> name >> state) || state == "Z" || state == "X";
    };
    EXPECT_TRUE(eventually(isGone));
}

TEST(ImageFile, RefusesWhatIsNoImage) {
    const TemporaryFolder folder;
    const std::string fifo = folder.path() / "fifo";
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    EXPECT_NE(refusal(fifo).find("not a regular file"), std::string::npos);
    EXPECT_NE(refusal(folder.path()).find("not a regular file"), std::string::npos);
    EXPECT_NE(refusal("/dev/null").find("not a regular file"), std::string::npos);
    EXPECT_NE(refusal(folder.file("empty", "")).find("is empty."), std::string::npos);
    EXPECT_EQ(refusal("/proc/version"),
              "the image /proc/version has something in it, but its file system does not tell how much; copy it to "
              "another place first, and send the copy.");
    EXPECT_NE(refusal(folder.path() / "missing").find("No such file"), std::string::npos);
    EXPECT_NE(refusal(folder.file("file", "x") + "/below").find("Not a directory"), std::string::npos);
}

TEST(ImageFile, DoesNotReachWhatTheServiceHasOpen) {
    const TemporaryFolder folder;
    const UniqueFd secret(::open(folder.file("secret", "x").c_str(), O_RDONLY));
    ASSERT_TRUE(secret);
    const UniqueFd copy(::fcntl(secret.get(), F_DUPFD_CLOEXEC, 200));  // above the child's own socket
    for (const int number : {secret.get(), copy.get()}) {
        EXPECT_NE(refusal("/proc/self/fd/" + std::to_string(number)).find("can't be opened"), std::string::npos);
    }
    EXPECT_NE(refusal("/dev/stdin").find("can't be opened"), std::string::npos);
}

TEST(ImageFile, ShowsHostileNamesHarmlessly) {
    EXPECT_NE(refusal("/\x1b[2J\n").find("/\\x1b[2J\\x0a"), std::string::npos);
}

TEST(ImageFile, IsOpenedWithTheCallersRightsOnly) {
    if (::geteuid() != 0) GTEST_SKIP() << "needs root: takes on another user";
    const TemporaryFolder folder;
    ASSERT_EQ(::chmod(folder.path().c_str(), 0755), 0);
    const std::string secret = folder.file("secret", "of root");
    const std::string open = folder.file("open", "for all");
    ASSERT_EQ(::chmod(secret.c_str(), 0600), 0);
    ASSERT_EQ(::chmod(open.c_str(), 0644), 0);
    const UserRights nobody = rightsOf(65534).value();
    EXPECT_NE(refusal(secret, nobody).find("can't be opened by user 65534: Permission denied"), std::string::npos);
    EXPECT_EQ(refusal(open, nobody), "");
    EXPECT_EQ(refusal(secret), "");
    EXPECT_EQ(::geteuid(), 0U);  // this process stays what it was
}

TEST(ImageFile, IsOpenedWithTheCallersGroups) {
    if (::geteuid() != 0) GTEST_SKIP() << "needs root: takes on another user";
    const TemporaryFolder folder;
    ASSERT_EQ(::chmod(folder.path().c_str(), 0755), 0);
    const std::string shared = folder.file("shared", "for group 4242");
    ASSERT_EQ(::chown(shared.c_str(), 0, 4242), 0);
    ASSERT_EQ(::chmod(shared.c_str(), 0640), 0);
    EXPECT_EQ(refusal(shared, UserRights{65534, 65534, {4242}}), "");
    EXPECT_EQ(refusal(shared, UserRights{65534, 4242, {}}), "");
    EXPECT_NE(refusal(shared, UserRights{65534, 65534, {}}), "");
}

TEST(ImageFile, TellsWhetherTheFileKeptItsLength) {
    const TemporaryFolder folder;
    const auto image = ImageFile::open(folder.file("image", "firmware"), self());
    ASSERT_TRUE(image);
    EXPECT_TRUE(image.value().keptLength());
    folder.file("image", "firmware and more");
    EXPECT_EQ(causeOf(image.value().keptLength()), std::errc::result_out_of_range);
    folder.file("image", "firm");
    EXPECT_EQ(causeOf(image.value().keptLength()), std::errc::result_out_of_range);
    std::array<std::byte, 8> bytes{};
    EXPECT_EQ(causeOf(image.value().read(0, bytes)), std::errc::result_out_of_range);
}

TEST(RightsOf, KnowsItsOwnUser) {
    EXPECT_EQ(self().uid, ::geteuid());
    EXPECT_EQ(self().gid, ::getegid());
}

TEST(RightsOf, AsksTheUserDatabaseForOthers) {
    const uid_t other = ::geteuid() == 65534 ? 0 : 65534;
    const auto rights = rightsOf(other);
    ASSERT_TRUE(rights);
    EXPECT_EQ(rights.value().gid, ::getpwuid(other)->pw_gid);
}

TEST(RightsOf, RefusesAnUnknownUser) {
    const auto rights = rightsOf(4'000'000'123U);
    ASSERT_FALSE(rights);
    EXPECT_NE(rights.problem().sentence.find("4000000123"), std::string::npos);
}

}  // namespace
}  // namespace kestrav
