#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "base/UniqueFd.h"

namespace kestrav {
namespace {

int openNull() {
    return ::open("/dev/null", O_RDONLY | O_CLOEXEC);
}

bool isOpen(int fd) {
    return ::fcntl(fd, F_GETFD) != -1;
}

TEST(UniqueFd, ClosesWhatItOwns) {
    const int fd = openNull();
    { const UniqueFd owner(fd); }
    EXPECT_FALSE(isOpen(fd));
}

TEST(UniqueFd, OwnsDescriptorZeroLikeAnyOther) {
    const UniqueFd kept(::dup(STDIN_FILENO));
    const int null = openNull();
    ASSERT_EQ(::dup2(null, STDIN_FILENO), STDIN_FILENO);
    ::close(null);
    {
        const UniqueFd owner(STDIN_FILENO);
        EXPECT_TRUE(owner);
    }
    EXPECT_FALSE(isOpen(STDIN_FILENO));
    if (kept) ::dup2(kept.get(), STDIN_FILENO);
}

TEST(UniqueFd, GivesUpWithoutClosing) {
    UniqueFd owner(openNull());
    const int fd = owner.release();
    EXPECT_FALSE(owner);
    EXPECT_TRUE(isOpen(fd));
    ::close(fd);
}

TEST(UniqueFd, MovesOwnership) {
    UniqueFd first(openNull());
    const int fd = first.get();
    UniqueFd second(openNull());
    const int replaced = second.get();
    second = std::move(first);
    EXPECT_EQ(second.get(), fd);
    EXPECT_TRUE(isOpen(fd));
    EXPECT_FALSE(isOpen(replaced));
}

TEST(UniqueFd, OwnsNothingAtFirst) {
    EXPECT_FALSE(UniqueFd());
    EXPECT_EQ(UniqueFd().get(), -1);
}

}  // namespace
}  // namespace kestrav
