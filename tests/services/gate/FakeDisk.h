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
    std::uint64_t losesByteAt = ~0ULL;        // a write seems to succeed but this byte stays what it was
    std::uint64_t flipsOnWritingAt = ~0ULL;   // a bit of this byte arrives as the other one,
    std::uint64_t flipsOnReadingAt = ~0ULL;   // or comes back as the other one,
    int flips = 1;                            // so many times
    std::uint64_t pulledOnceWritten = ~0ULL;  // with so many bytes written it is unplugged, in mid-write
    bool pulledInFlush = false;
    bool pulledInReadBack = false;
    bool swallowsWrites = false;  // says each time that it has kept them
    std::error_code flushResult;
    std::uint64_t cachedBelow = 0;     // what is before this byte is read back from the system's memory
    std::function<void()> afterWrite;  // what the world does meanwhile
    std::function<void()> afterFlush;
    std::size_t unflushedWrites = 0;
    bool wasMisused = false;  // an access outside of the disk or not in whole blocks

    std::uint64_t size() const override { return bytes.size(); }
    std::uint32_t blockSize() const override { return blockSize_; }

    Outcome<void> read(std::uint64_t offset, std::span<std::byte> into) override {
        if (isPulled_) return gone();
        if (covers(offset, into, failsReadAt)) return ioError();
        std::memcpy(into.data(), bytes.data() + offset, into.size());
        return {};
    }

    Outcome<void> write(std::uint64_t offset, std::span<const std::byte> from) override {
        if (isPulled_) return gone();
        if (covers(offset, from, failsWriteAt)) return ioError();
        if (written_ + from.size() > pulledOnceWritten) return writeInPart(offset, from);
        written_ += from.size();
        if (swallowsWrites) return {};
        const char kept = covers(offset, from, losesByteAt) ? bytes[losesByteAt] : '\0';
        std::memcpy(bytes.data() + offset, from.data(), from.size());
        if (covers(offset, from, losesByteAt)) bytes[losesByteAt] = kept;
        if (covers(offset, from, flipsOnWritingAt) && flips-- > 0) bytes[flipsOnWritingAt] ^= 1;
        ++unflushedWrites;
        if (afterWrite) afterWrite();
        return {};
    }

    Outcome<void> flush() override {
        isPulled_ = isPulled_ || pulledInFlush;
        if (isPulled_) return gone();
        unflushedWrites = 0;
        if (afterFlush) afterFlush();
        if (flushResult) return systemProblem(flushResult.value());
        return {};
    }

    Outcome<ReadFrom> readBack(std::uint64_t offset, std::span<std::byte> into) override {
        isPulled_ = isPulled_ || pulledInReadBack;
        if (covers(offset, into, failsReadBackAt)) return ioError();
        if (const auto got = read(offset, into); !got) return got.problem();
        if (covers(offset, into, flipsOnReadingAt) && flips-- > 0) into[flipsOnReadingAt - offset] ^= std::byte{1};
        return offset < cachedBelow ? ReadFrom::memory : ReadFrom::disk;
    }

  private:
    static Problem ioError() { return systemProblem(EIO); }
    static Problem gone() { return systemProblem(ENODEV); }

    /// Unplugged in the middle of an access: the front of it has arrived.
    Problem writeInPart(std::uint64_t offset, std::span<const std::byte> from) {
        std::memcpy(bytes.data() + offset, from.data(), pulledOnceWritten - written_);
        isPulled_ = true;
        return gone();
    }

    bool covers(std::uint64_t offset, std::span<const std::byte> span, std::uint64_t byte) {
        const bool aligned = reinterpret_cast<std::uintptr_t>(span.data()) % kBufferAlignment == 0;
        const bool whole = offset % blockSize_ == 0 && span.size() % blockSize_ == 0 && !span.empty();
        if (!aligned || !whole || offset + span.size() > bytes.size()) wasMisused = true;
        return byte >= offset && byte < offset + span.size();
    }

    std::uint32_t blockSize_;
    std::uint64_t written_ = 0;
    bool isPulled_ = false;
};

}  // namespace kestrav
