#include <csignal>
#include <filesystem>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

#include "services/image/CompleteImage.h"
#include "tests/TemporaryFolder.h"
#include "tests/childrenOf.h"
#include "tests/eventually.h"
#include "tests/signalOne.h"

namespace kestrav {
namespace {

using namespace std::chrono_literals;

constexpr std::size_t mebibyte = std::size_t{1} << 20U;

class CompleteImageTest : public testing::Test {
  protected:
    Outcome<CompleteImage> read(
        const std::string& bytes, std::function<void(std::uint64_t)> advanced = [](auto) {},
        ImagePatience patience = {}) {
        path_ = folder_.file("image", bytes);
        auto file = ImageFile::open(path_, rightsOf(::geteuid()).value(), patience);
        return CompleteImage::read(std::move(file.value()), places_.take(), advanced);
    }
    static std::string textOf(const CompleteImage& image) {
        std::string text(image.size(), '\0');
        return image.read(0, std::as_writable_bytes(std::span(text))) ? text : "unreadable";
    }
    static pid_t reader() { return childrenOf(::getpid()).at(0); }

    TemporaryFolder folder_;
    std::string path_;
    PlacesInMemory places_;
};

TEST_F(CompleteImageTest, StandsInMemoryWhateverBecomesOfItsReader) {
    const std::string bytes = patternOf(CompleteImage::kMostInMemory, 3);
    const auto image = read(bytes);
    ASSERT_TRUE(image) << image.problem().sentence;
    EXPECT_TRUE(image.value().isComplete());
    folder_.file("image", "another one");
    EXPECT_TRUE(textOf(image.value()) == bytes);
    const auto readerHasEnded = [pid = reader()] {
        siginfo_t end{};
        return ::waitid(P_PID, static_cast<id_t>(pid), &end, WEXITED | WNOWAIT | WNOHANG) == 0 && end.si_pid == pid;
    };
    EXPECT_TRUE(eventually(readerHasEnded)) << "nothing more is read of the file";
}

TEST_F(CompleteImageTest, IsReadToItsEndOnceWhenItIsLonger) {
    std::uint64_t come = 0;
    const std::string bytes = patternOf(CompleteImage::kMostInMemory + 1, 3);
    const auto image = read(bytes, [&come](std::uint64_t count) { come = count; });
    ASSERT_TRUE(image) << image.problem().sentence;
    EXPECT_FALSE(image.value().isComplete());
    EXPECT_EQ(come, bytes.size());
    EXPECT_TRUE(image.value().expected());
    EXPECT_TRUE(textOf(image.value()) == bytes);
}

TEST_F(CompleteImageTest, IsNoneWhenItsReaderIsStopped) {
    for (const std::size_t size : {3 * mebibyte, CompleteImage::kMostInMemory + 3 * mebibyte}) {
        const auto image = read(patternOf(size),
                                [](std::uint64_t come) {
                                    if (come == 2 * mebibyte) signalOne(reader(), SIGSTOP);
                                },
                                {.toOpen = 20s, .toRead = 200ms});
        ASSERT_FALSE(image) << size;
        EXPECT_EQ(image.problem().sentence, "the file system of the image stopped answering. Nothing was written.");
    }
}

TEST_F(CompleteImageTest, IsNoneWhenItIsNotThereInTime) {
    const auto image = read(patternOf(3 * mebibyte), [](std::uint64_t) { ::usleep(600'000); },
                            {.toOpen = 20s, .toRead = 20s, .inAll = 1s});
    ASSERT_FALSE(image);
    EXPECT_EQ(image.problem().sentence, "the file system of the image stopped answering. Nothing was written.");
}

TEST_F(CompleteImageTest, IsNoneWhenItChangesWhileItIsRead) {
    for (const std::size_t size : {3 * mebibyte, 3 * mebibyte + 1, 3 * mebibyte - 1}) {
        const auto image = read(patternOf(3 * mebibyte, 3), [this, size](std::uint64_t come) {
            if (come == 2 * mebibyte) folder_.file("image", patternOf(size, 4));
        });
        ASSERT_FALSE(image) << size;
        EXPECT_EQ(image.problem().sentence, "the image changed while it was read. Nothing was written.");
    }
}

TEST_F(CompleteImageTest, IsWholeThoughItsFileIsDeletedWhileItIsRead) {
    for (const std::size_t size : {3 * mebibyte, CompleteImage::kMostInMemory + 3 * mebibyte}) {
        const std::string bytes = patternOf(size, 3);
        const auto image = read(bytes, [this](std::uint64_t come) {
            if (come == 2 * mebibyte) std::filesystem::remove(path_);
        });
        ASSERT_TRUE(image) << image.problem().sentence;
        EXPECT_FALSE(std::filesystem::exists(path_));
        EXPECT_TRUE(textOf(image.value()) == bytes) << size;
    }
}

TEST_F(CompleteImageTest, DoesNotFillTheMemoryWithManyAtOnce) {
    std::vector<Outcome<CompleteImage>> images;
    for (int i = 0; i < PlacesInMemory::kPlaces; ++i) {
        images.push_back(read("firmware"));
        ASSERT_TRUE(images.back());
        EXPECT_TRUE(images.back().value().isComplete());
    }
    const auto more = read("firmware");
    ASSERT_TRUE(more);
    EXPECT_FALSE(more.value().isComplete());
    EXPECT_TRUE(more.value().expected());
    images.pop_back();
    EXPECT_TRUE(read("firmware").value().isComplete());
}

TEST(PlacesInMemory, AreSharedWithForkedProcessesAndGivenBackByTheirEnd) {
    const PlacesInMemory places;
    std::vector<std::optional<PlacesInMemory::Place>> taken;
    for (int i = 1; i < PlacesInMemory::kPlaces; ++i)
        taken.push_back(places.take());
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    const pid_t other = ::fork();
    if (other == 0) {
        const auto place = places.take();
        const char done = place ? 'y' : 'n';
        if (::write(ends[1], &done, 1) != 1) ::_exit(1);
        ::pause();
    }
    char done = 0;
    ASSERT_EQ(::read(ends[0], &done, 1), 1);
    EXPECT_EQ(done, 'y');
    EXPECT_FALSE(places.take());
    signalOne(other, SIGKILL);
    ::waitpid(other, nullptr, 0);
    EXPECT_TRUE(places.take());
    ::close(ends[0]);
    ::close(ends[1]);
}

}  // namespace
}  // namespace kestrav
