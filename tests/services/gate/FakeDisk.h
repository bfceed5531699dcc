#pragma once

#include <cstring>
#include <functional>
#include <string>

#include "base/systemProblem.h"
#include "services/disk/DiskBytes.h"

namespace kestrav {

/// A disk in memory that can be told to go wrong.
class FakeDisk final : public DiskBytes {
  public:
    explicit FakeDisk(std::string contents, std::uint32_t blockSize = 512)
        : bytes(std::move(contents)),
          blockSize_(blockSize) {}

    std::string bytes;
    std::uint64_t failsReadAt = ~0ULL;  // an access that covers this byte
    std::uint64_t failsWriteAt = ~0ULL;
    std::uint64_t failsReadBackAt = ~0ULL;
    std::uint64_t losesByteAt = ~0ULL;  // a write seems to succeed but this byte stays what it was
    std::error_code flushResult;
    bool cached = false;               // reads back from the system's memory
    std::function<void()> afterWrite;  // what the world does meanwhile
    std::function<void()> afterFlush;
    std::size_t unflushedWrites = 0;
    bool wasMisused = false;  // an access outside of the disk or not in whole blocks

    std::uint64_t size() const override { return bytes.size(); }
    std::uint32_t blockSize() const override { return blockSize_; }

    Outcome<void> read(std::uint64_t offset, std::span<std::byte> into) override {
        if (covers(offset, into, failsReadAt)) return ioError();
        std::memcpy(into.data(), bytes.data() + offset, into.size());
        return {};
    }

    Outcome<void> write(std::uint64_t offset, std::span<const std::byte> from) override {
        if (covers(offset, from, failsWriteAt)) return ioError();
        const char kept = covers(offset, from, losesByteAt) ? bytes[losesByteAt] : '\0';
        std::memcpy(bytes.data() + offset, from.data(), from.size());
        if (covers(offset, from, losesByteAt)) bytes[losesByteAt] = kept;
        ++unflushedWrites;
        if (afterWrite) afterWrite();
        return {};
    }

    Outcome<void> flush() override {
        unflushedWrites = 0;
        if (afterFlush) afterFlush();
        if (flushResult) return systemProblem(flushResult.value());
        return {};
    }

    Outcome<ReadFrom> readBack(std::uint64_t offset, std::span<std::byte> into) override {
        if (covers(offset, into, failsReadBackAt)) return ioError();
        if (const auto got = read(offset, into); !got) return got.problem();
        return cached ? ReadFrom::memory : ReadFrom::disk;
    }

  private:
    static Problem ioError() { return systemProblem(EIO); }

    bool covers(std::uint64_t offset, std::span<const std::byte> span, std::uint64_t byte) {
        const bool aligned = reinterpret_cast<std::uintptr_t>(span.data()) % kBufferAlignment == 0;
        const bool whole = offset % blockSize_ == 0 && span.size() % blockSize_ == 0 && !span.empty();
        if (!aligned || !whole || offset + span.size() > bytes.size()) wasMisused = true;
        return byte >= offset && byte < offset + span.size();
    }

    std::uint32_t blockSize_;
};

}  // namespace kestrav
