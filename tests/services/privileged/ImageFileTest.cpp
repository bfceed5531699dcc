#include <array>
#include <cstddef>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <pwd.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

#include "services/privileged/ImageFile.h"
#include "tests/services/TemporaryFolder.h"

namespace kestrav {
namespace {

Caller self() {
    return callerWithUid(::geteuid()).value();
}

std::string refusal(const std::string& path, const Caller& caller = self()) {
    const auto image = ImageFile::open(path, caller);
    return image ? std::string() : image.problem().sentence;
}

std::string textOf(const ImageFile& image) {
    std::string text(image.size(), '\0');
    const auto bytes = std::as_writable_bytes(std::span(text));
    return image.read(0, bytes) ? "unreadable" : text;
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

TEST(ImageFile, KeepsTheDescriptorFromPrograms) {
    const TemporaryFolder folder;
    const auto before = std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
    const auto image = ImageFile::open(folder.file("image", "x"), self());
    const auto after = std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
    EXPECT_EQ(after, before + 1);  // and nothing of the child's socket
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        std::error_code error;
        if (std::filesystem::read_symlink(entry, error) != folder.path() / "image") continue;
        EXPECT_EQ(::fcntl(std::stoi(entry.path().filename()), F_GETFD), FD_CLOEXEC);
    }
}

TEST(ImageFile, RefusesWhatIsNoImage) {
    const TemporaryFolder folder;
    const std::string fifo = folder.path() / "fifo";
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    EXPECT_NE(refusal(fifo).find("not a regular file"), std::string::npos);
    EXPECT_NE(refusal(folder.path()).find("not a regular file"), std::string::npos);
    EXPECT_NE(refusal("/dev/null").find("not a regular file"), std::string::npos);
    EXPECT_NE(refusal(folder.file("empty", "")).find("is empty"), std::string::npos);
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
    const Caller nobody = callerWithUid(65534).value();
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
    EXPECT_EQ(refusal(shared, Caller{65534, 65534, {4242}}), "");
    EXPECT_EQ(refusal(shared, Caller{65534, 4242, {}}), "");
    EXPECT_NE(refusal(shared, Caller{65534, 65534, {}}), "");
}

TEST(ImageFile, TellsWhetherTheFileKeptItsLength) {
    const TemporaryFolder folder;
    const auto image = ImageFile::open(folder.file("image", "firmware"), self());
    ASSERT_TRUE(image);
    EXPECT_TRUE(image.value().keptItsLength());
    folder.file("image", "firmware and more");
    EXPECT_FALSE(image.value().keptItsLength());
    folder.file("image", "firm");
    EXPECT_FALSE(image.value().keptItsLength());
    std::array<std::byte, 8> bytes{};
    EXPECT_EQ(image.value().read(0, bytes), std::errc::result_out_of_range);
}

TEST(CallerWithUid, KnowsItsOwnUser) {
    EXPECT_EQ(self().uid, ::geteuid());
    EXPECT_EQ(self().gid, ::getegid());
}

TEST(CallerWithUid, AsksTheUserDatabaseForOthers) {
    const uid_t other = ::geteuid() == 65534 ? 0 : 65534;
    const auto caller = callerWithUid(other);
    ASSERT_TRUE(caller);
    EXPECT_EQ(caller.value().gid, ::getpwuid(other)->pw_gid);
}

TEST(CallerWithUid, RefusesAnUnknownUser) {
    const auto caller = callerWithUid(4'000'000'123U);
    ASSERT_FALSE(caller);
    EXPECT_NE(caller.problem().sentence.find("4000000123"), std::string::npos);
}

}  // namespace
}  // namespace kestrav
