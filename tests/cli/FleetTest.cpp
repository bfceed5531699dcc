#include <algorithm>
#include <atomic>
#include <chrono>
#include <future>
#include <gtest/gtest.h>
#include <set>
#include <thread>

#include "cli/AccessoryArrivals.h"
#include "cli/ConsentTurn.h"
#include "tests/cli/Commands.h"
#include "tests/eventually.h"

namespace kestrav {
namespace {

std::string wordBehind(const std::string& request, const std::string& word) {
    const std::size_t from = request.find(word) + word.size();
    return request.substr(from, request.find('"', from) - from);
}

/// A service that confirms each write of an image of `bytes` bytes, after `beforeIt` has seen the disk's name.
LoopbackBehaviour confirmsAll(std::size_t bytes, std::function<void(const std::string& disk)> beforeIt = {}) {
    return [=](LoopbackConnection& connection) {
        const std::string request = connection.receiveRequest();
        if (request.find("\"dd\"") == std::string::npos) return connection.send("It was not mounted.");
        const std::string disk = wordBehind(request, "of=/dev/r");
        if (beforeIt) beforeIt(disk);
        connection.send("Wrote " + std::to_string(bytes) + " bytes to " + disk + " at block " +
                        wordBehind(request, "seek=") + ", verified, 9.9 MB/s.");
    };
}

class All : public Commands {
  protected:
    void plugInOne(std::uint32_t id) {
        const std::string letter(1, static_cast<char>('a' + id));
        on.registry.plugIn({.id = id,
                            .name = "Accessory",
                            .disk = "sd" + letter,
                            .serial = "KA" + std::to_string(id),
                            .port = "1-" + std::to_string(id)});
    }
    void plugInMany(std::uint32_t count) {
        for (std::uint32_t id = count; id >= 1; --id)
            plugInOne(id);
    }
    PushInvocation pushToAll(const AccessoryChoice& accessories = {}, std::int64_t jobs = 16) {
        return {.firstBlock = 3,
                .file = made("f", "four"),
                .options = {},
                .accessory = accessories,
                .fleet = {.all = true, .jobs = jobs}};
    }
    static std::ptrdiff_t linesOf(const std::string& text) { return std::count(text.begin(), text.end(), '\n'); }
    static std::string tableOf(const std::string& text) { return text.substr(text.find("DISK ")); }
};

TEST_F(All, GetTheImageAndAreToldOfInOneTable) {
    plugInMany(3);
    service.setBehaviour(confirmsAll(4));
    EXPECT_EQ(carriedOut(pushToAll()), ExitCode::success);
    EXPECT_EQ(service.requests().size(), 6U);
    std::istringstream table(tableOf(out.str()));
    std::string line;
    std::getline(table, line);
    EXPECT_EQ(line, "DISK  SERIAL  PORT  STATUS  SECONDS  RESULT");
    for (const std::string number : {"1", "2", "3"}) {
        std::getline(table, line);
        const std::string disk(1, static_cast<char>('a' + number[0] - '0'));
        EXPECT_TRUE(line.starts_with("sd" + disk + "   KA" + number + "     1-" + number + "   0  ")) << line;
        EXPECT_TRUE(line.ends_with("The image is on sd" + disk + ": 4 bytes from block 3 on, read back and equal."))
            << line;
    }
    std::getline(table, line);
    EXPECT_EQ(line, "All 3 accessories hold the image.");
    EXPECT_EQ(err.str(), "");
    EXPECT_EQ(linesOf(out.str()), 8) << "and a line when each is done";
}

TEST_F(All, AreServedSideBySideSoThatNoneHoldsAnotherUp) {
    plugInMany(4);
    // The first one is answered only when all others have been.
    std::atomic<int> others = 0;
    std::atomic<int> othersBeforeTheFirst = 0;
    service.setBehaviour(confirmsAll(4, [&](const std::string& disk) {
        if (disk != "sdb") {
            ++others;
            return;
        }
        eventually([&] { return others >= 3; });
        othersBeforeTheFirst = others.load();
    }));
    EXPECT_EQ(carriedOut(pushToAll()), ExitCode::success);
    EXPECT_EQ(othersBeforeTheFirst, 3);
}

TEST_F(All, AreServedSoManyAtATime) {
    plugInMany(6);
    std::atomic<int> now = 0;
    std::atomic<int> most = 0;
    service.setBehaviour(confirmsAll(4, [&](const std::string&) {
        const int count = ++now;
        for (int before = most; before < count && !most.compare_exchange_weak(before, count);) {
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        --now;
    }));
    EXPECT_EQ(carriedOut(pushToAll({}, 2)), ExitCode::success);
    EXPECT_EQ(service.requests().size(), 12U);
    EXPECT_LE(most, 2);
}

TEST_F(All, EndWithTheWorstStatus) {
    plugInMany(3);
    const LoopbackBehaviour good = confirmsAll(4);
    service.setBehaviour([](LoopbackConnection& connection) {
        const std::string request = connection.receiveRequest();
        if (request.find("sdc") != std::string::npos)
            return connection.send("Refused: the disk sdc is write-protected.");
        if (request.find("sdd") != std::string::npos) return connection.send("HTTP/1.1 400 Bad Request");
        connection.send("Wrote 4 bytes to sdb at block 3, verified, 9.9 MB/s.");
    });
    EXPECT_EQ(carriedOut(pushToAll()), ExitCode::nobodyKnows);
    EXPECT_EQ(err.str(), "kestravctl: 2 of 3 accessories did not get the image.\n");
    EXPECT_NE(tableOf(out.str()).find("Nothing was written: the disk sdc is write-protected."), std::string::npos);
}

TEST_F(All, ThatWereNamedAreMissedWhenTheyAreNotThere) {
    plugInMany(3);
    service.setBehaviour(confirmsAll(4));
    EXPECT_EQ(carriedOut(pushToAll({.serials = {"KA2", "KA9"}})), ExitCode::failure);
    EXPECT_EQ(service.requests().size(), 2U);
    EXPECT_NE(out.str().find("No accessory with the serial number KA9 is attached."), std::string::npos);
    EXPECT_TRUE(complained("1 of 2 accessories did not get the image."));
    EXPECT_EQ(carriedOut(pushToAll({.ports = {"7-7"}})), ExitCode::failure);
    EXPECT_EQ(carriedOut(pushToAll({.disks = {"/dev/sdx"}})), ExitCode::failure);
    EXPECT_NE(out.str().find("No accessory with the disk sdx is attached."), std::string::npos);
}

TEST_F(All, AreNoneWithoutAnAccessoryOrARegistry) {
    EXPECT_EQ(carriedOut(pushToAll()), ExitCode::failure);
    EXPECT_TRUE(complained("No accessory (USB 10d6:fd01) is attached."));
    on.registry.breakDown();
    EXPECT_EQ(carriedOut(pushToAll()), ExitCode::registryUnreachable);
}

TEST_F(All, AreOneJsonObject) {
    plugInMany(2);
    service.setBehaviour(confirmsAll(4));
    PushInvocation push = pushToAll();
    push.options.json = true;
    EXPECT_EQ(carriedOut(push), ExitCode::success);
    EXPECT_TRUE(out.str().starts_with(R"({"accessories":[{"disk":"sdb","serial":"KA1","port":"1-1",)")) << out.str();
    EXPECT_TRUE(out.str().ends_with("],\"status\":0,\"problem\":null}\n")) << out.str();
    EXPECT_EQ(linesOf(out.str()), 1);
}

TEST_F(All, AreWarnedOfOnceForTheImageThatTheyShare) {
    plugInMany(3);
    service.setBehaviour(confirmsAll(4));
    const UpdateInvocation update{.kind = ImageKind::firmware,
                                  .file = made("empty", std::string(4, '\0')),
                                  .options = {},
                                  .accessory = {},
                                  .fleet = {.all = true}};
    EXPECT_EQ(carriedOut(update), ExitCode::success);
    EXPECT_NE(err.str(), "") << "an image of zeros is worth a warning";
    EXPECT_EQ(linesOf(err.str()), 1) << err.str();
}

TEST_F(All, GetTheNextOneWhileTheyAreWaitedFor) {
    plugInOne(1);
    std::atomic<bool> isPluggedIn = false;
    service.setBehaviour(confirmsAll(4, [&](const std::string&) {
        if (!isPluggedIn.exchange(true)) plugInOne(2);
    }));
    PushInvocation push = pushToAll();
    push.fleet.wait = Waiting{.seconds = 1};
    EXPECT_EQ(carriedOut(push), ExitCode::success);
    EXPECT_EQ(service.requests().size(), 4U);
    EXPECT_NE(out.str().find("All 2 accessories hold the image.\n"), std::string::npos);
    EXPECT_NE(out.str().find("Next: plug in another accessory.\n"), std::string::npos);
}

TEST_F(All, TakeOneThatIsPulledOutForAFailure) {
    plugInMany(2);
    service.setBehaviour(confirmsAll(4, [&](const std::string&) { on.registry.unplugAll(); }));
    EXPECT_EQ(carriedOut(pushToAll({}, 1)), ExitCode::failure);
    EXPECT_NE(out.str().find("No accessory with the port 1-2 is attached."), std::string::npos);
    EXPECT_TRUE(complained("1 of 2 accessories did not get the image."));
}

using Wait = All;

TEST_F(Wait, EndsWhenTheAccessoryComes) {
    service.setBehaviour(confirmsAll(4));
    std::thread plugging([this] {
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        plugInOne(1);
    });
    const PushInvocation push{3, made("f", "four"), {}, {}, {.wait = Waiting{}}};
    EXPECT_EQ(carriedOut(push), ExitCode::success);
    plugging.join();
    EXPECT_EQ(err.str(), "kestravctl: Waiting for an accessory. Plug it in.\n");
}

TEST_F(Wait, EndsWhenItsTimeIsOver) {
    const PushInvocation push{3, made("f", "four"), {}, {}, {.wait = Waiting{.seconds = 0}}};
    EXPECT_EQ(carriedOut(push), ExitCode::failure);
    EXPECT_TRUE(complained("No accessory (USB 10d6:fd01) is attached."));
}

class Arrivals : public All {
  protected:
    std::vector<std::uint32_t> taken(AccessoryArrivals::When when = AccessoryArrivals::When::ready) {
        std::vector<std::uint32_t> ids;
        const std::optional<std::vector<UsbDevice>> devices = arrivals_.take(when);
        for (const UsbDevice& device : devices.value())
            ids.push_back(device.id);
        return ids;
    }
    using Ids = std::vector<std::uint32_t>;

    Backends backends_{on.registry,
                       on.volumes,
                       on.disks,
                       on.systemLog,
                       {},
                       BoardReader(std::vector<std::filesystem::path>{}),
                       [this](const std::string& path) { return path != missingNode; }};
    AccessoryArrivals arrivals_{backends_, {}};
};

TEST_F(Arrivals, AreToldOnceInTheOrderOfTheirPorts) {
    plugInMany(11);
    const Ids all = taken();
    EXPECT_EQ(all.size(), 11U);
    EXPECT_TRUE(std::is_sorted(all.begin(), all.end()));
    EXPECT_EQ(taken(), Ids());
    plugInOne(12);
    EXPECT_EQ(taken(), Ids{12});
}

TEST_F(Arrivals, AreToldAgainWhenTheyWerePluggedInAgain) {
    plugInOne(1);
    EXPECT_EQ(taken(), Ids{1});
    on.registry.unplugAll();
    EXPECT_EQ(taken(), Ids());
    plugInOne(1);
    EXPECT_EQ(taken(), Ids{1}) << "numbers come round again";
}

TEST_F(Arrivals, AreNotReadyBeforeTheirDiskHasItsNode) {
    missingNode = "/dev/rsdb";
    plugInMany(2);
    EXPECT_EQ(taken(), Ids{2});
    missingNode.clear();
    EXPECT_EQ(taken(), Ids{1});
    missingNode = "/dev/rsdd";
    plugInOne(3);
    EXPECT_EQ(taken(AccessoryArrivals::When::attached), Ids{3});
}

/// Whether whoever comes now goes in without waiting for somebody else. One who waits is let in afterwards.
bool isEntered(ConsentTurn& turn) {
    auto entering = std::async(std::launch::async, [&turn] { turn.enter(); });
    const bool isInside = entering.wait_for(std::chrono::seconds(30)) == std::future_status::ready;
    if (!isInside) turn.leave(true);
    return isInside;
}

TEST(OneTurn, OfConsentIsTakenAtATimeUntilOneWasServed) {
    ConsentTurn turn(true);
    std::atomic<int> inside = 0;
    turn.enter();
    std::thread second([&] {
        turn.enter();
        ++inside;
        turn.leave(true);
    });
    EXPECT_EQ(inside, 0);
    turn.leave(false);
    second.join();
    EXPECT_EQ(inside, 1);
    EXPECT_TRUE(isEntered(turn) && isEntered(turn)) << "from then on nobody waits";
}

TEST(OneTurn, OfConsentIsNotNeededWhereNobodyIsAsked) {
    ConsentTurn turn(false);
    EXPECT_TRUE(isEntered(turn));
    EXPECT_TRUE(isEntered(turn)) << "while the first is inside";
}

class KeptBefore : public All {
  protected:
    /// A service that gives each block its number's last digit and takes every write of four bytes.
    void serve() {
        service.setBehaviour([](LoopbackConnection& connection) {
            const std::string request = connection.receiveRequest();
            if (request.find("skip=") == std::string::npos) {
                return connection.send("Wrote 4 bytes to sdb at block " + wordBehind(request, "seek=") +
                                       ", verified, 9.9 MB/s.");
            }
            std::string blocks;
            const int first = std::stoi(wordBehind(request, "skip="));
            for (int block = first; block < first + std::stoi(wordBehind(request, "count=")); ++block)
                blocks += std::string(512, static_cast<char>('0' + block % 10));
            connection.send(blocks);
        });
    }
    UpdateInvocation update(ImageKind kind) {
        return {.kind = kind,
                .file = made("f", "four"),
                .options = {},
                .accessory = {},
                .fleet = {.backup = pathOf("kept")}};
    }
    std::vector<std::filesystem::path> kept() const {
        std::vector<std::filesystem::path> files;
        for (const auto& entry : std::filesystem::directory_iterator(pathOf("kept")))
            files.push_back(entry.path());
        std::sort(files.begin(), files.end());
        return files;
    }
};

TEST_F(KeptBefore, IsTheFirmwaresWholeAreaInAFileWithSerialNumberAndTime) {
    std::filesystem::create_directory(pathOf("kept"));
    on.registry.plugIn({.id = 1, .name = "Accessory", .disk = "sdb", .serial = "KA/../1", .port = "1-1"});
    serve();
    EXPECT_EQ(carriedOut(update(ImageKind::firmware)), ExitCode::success);
    ASSERT_EQ(kept().size(), 1U);
    const std::string name = kept()[0].filename();
    EXPECT_TRUE(name.starts_with("firmware-KA____1-20") && name.ends_with("Z.fds")) << name;
    EXPECT_EQ(contentOf(kept()[0]).size(), 262144U);
    EXPECT_TRUE(contentOf(kept()[0]).starts_with(std::string(512, '6') + std::string(512, '7')));
    EXPECT_NE(out.str().find(" What stood there is kept in " + kept()[0].string() + "."), std::string::npos);
}

TEST_F(KeptBefore, IsAsMuchOfAnIconAsIsWritten) {
    std::filesystem::create_directory(pathOf("kept"));
    plugInOne(1);
    serve();
    EXPECT_EQ(carriedOut(update(ImageKind::icon)), ExitCode::success);
    EXPECT_EQ(carriedOut(update(ImageKind::icon)), ExitCode::success);
    ASSERT_EQ(kept().size(), 2U) << "none takes another one's place";
    EXPECT_EQ(kept()[0].extension(), ".fif");
    EXPECT_EQ(contentOf(kept()[0]), "8888");
}

TEST_F(KeptBefore, OrNothingIsWritten) {
    plugInOne(1);
    serve();
    EXPECT_EQ(carriedOut(update(ImageKind::firmware)), ExitCode::wrongCall);
    EXPECT_TRUE(
        complained("Nothing was written, for what stands there can't be kept: " + pathOf("kept") + " is no folder."));
    std::filesystem::create_directory(pathOf("kept"));
    service.setBehaviour(answers("Failed: the disk does not answer."));
    EXPECT_EQ(carriedOut(update(ImageKind::firmware)), ExitCode::wentWrong);
    EXPECT_TRUE(kept().empty());
    for (const std::string& request : service.requests())
        EXPECT_EQ(request.find("seek="), std::string::npos);
}

}  // namespace
}  // namespace kestrav
