#pragma once

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <memory>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "cli/WatchedEngine.h"
#include "cli/carryOut.h"
#include "tests/command/LoopbackService.h"
#include "tests/device/fakes/EngineOnFakes.h"
#include "tests/device/fakes/bytes.h"

namespace kestrav {

/// What the service says to an update: first of the unmounting, then of the write.
inline LoopbackBehaviour answersInTurn(std::string ofUnmounting, std::string ofWrite) {
    const auto turn = std::make_shared<std::atomic<int>>(0);
    return [=](LoopbackConnection& connection) { answers((*turn)++ == 0 ? ofUnmounting : ofWrite)(connection); };
}

/// The same where all is well.
inline LoopbackBehaviour confirms(std::uintmax_t bytes, int block = 1536) {
    return answersInTurn("disk21 was not mounted.", "Wrote " + std::to_string(bytes) + " bytes to disk2 at block " +
                                                        std::to_string(block) + ", verified, 9.9 MB/s.");
}

/// kestravctl without its process: an engine on fakes, a folder of its own, and both streams in memory.
class Commands : public testing::Test {
  protected:
    void SetUp() override {
        std::string pattern = std::filesystem::temp_directory_path() / "kestrav-commands.XXXXXX";
        ASSERT_NE(::mkdtemp(pattern.data()), nullptr);
        folder_ = pattern;
    }
    void TearDown() override { std::filesystem::remove_all(folder_); }

    std::string made(const std::string& name, std::string_view content) const {
        std::ofstream(folder_ / name, std::ios::binary) << content;
        return folder_ / name;
    }
    std::string sparse(const std::string& name, std::uintmax_t size) const {
        const std::string path = made(name, "");
        std::filesystem::resize_file(path, size);
        return path;
    }

    /// The accessory's disk as the raw and as the block node show it, with `content` at `offset`.
    void plugIn(std::size_t size, std::size_t offset = 0, std::string_view content = {}) {
        on.plugIn("disk2");
        std::vector<std::byte> disk(size);
        std::ranges::copy(bytes(content), disk.begin() + static_cast<std::ptrdiff_t>(offset));
        on.disks.disks["/dev/rdisk2"] = disk;
        on.disks.disks["/dev/disk2"] = std::move(disk);
    }

    /// As the program does it: with an engine of its own for each call.
    ExitCode carriedOut(const Invocation& invocation) { return carriedOut(invocation, service.port()); }
    ExitCode carriedOut(const Invocation& invocation, std::int32_t port) {
        const Backends backends{on.registry,
                                on.volumes,
                                on.disks,
                                on.systemLog,
                                {.port = port, .connectSeconds = 5, .readSeconds = 20},
                                BoardReader(std::vector<std::filesystem::path>{}),
                                [this](const std::string& path) { return path != missingNode; }};
        WatchedEngine engine(backends, choiceOf(invocation), {out, err}, on.console);
        return carryOut(invocation, engine.parts());
    }

    bool complained(std::string_view words) const { return err.str().find(words) != std::string::npos; }
    std::string contentOf(const std::string& path) const {
        std::ifstream file(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    std::string pathOf(const std::string& name) const { return folder_ / name; }

    std::string missingNode;  ///< every other one is there
    LoopbackService service;
    EngineOnFakes on;
    std::ostringstream out;
    std::ostringstream err;

  private:
    std::filesystem::path folder_;
};

}  // namespace kestrav
