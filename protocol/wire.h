#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

/// What the front ends and the command service have agreed on: where the service listens, how long a request and its
/// answer may be, and how an answer begins. docs/protocol.md promises it to other programs.
namespace kestrav {

/// IPv4, loopback only.
inline constexpr const char* kServiceAddress = "127.0.0.1";
inline constexpr std::uint16_t kServicePort = 9090;
/// Both, for sentences.
#define KESTRAV_SERVICE_PLACE "127.0.0.1:9090"  // NOLINT(cppcoreguidelines-macro-usage): put together with literals

/// Bytes of a request, at most.
inline constexpr std::size_t kLongestRequest = 65536;

/// Bytes that a client reads of an answer, at most; the service's texts stay below it.
inline constexpr std::size_t kReplyRoom = 10240;

/// The most blocks of 512 bytes that are read with one request.
inline constexpr std::uint64_t kMostBlocksRead = 19;

/// What the service's answers begin with. A read is answered with the blocks alone. These words and the ones below are
/// what programs tell the answers apart by, and docs/protocol.md lists each of them.
inline constexpr std::string_view kWrotePrefix = "Wrote ";
inline constexpr std::string_view kUnmountedPrefix = "Unmounted ";
inline constexpr std::string_view kRefusedPrefix = "Refused: ";
inline constexpr std::string_view kFailedPrefix = "Failed: ";
/// What stands between the name and the places in an unmount's answer.
inline constexpr std::string_view kFromPart = " from ";
/// The end of an unmount's answer when there was nothing to do.
inline constexpr std::string_view kNotMountedEnd = " was not mounted.";
/// What a write's answer says between the number of bytes, the disk's name and the number of the first block.
inline constexpr std::string_view kBytesToPart = " bytes to ";
inline constexpr std::string_view kAtBlockPart = " at block ";
/// What it says behind them, depending on whether the bytes were read back from the disk itself.
inline constexpr std::string_view kVerifiedPart = ", verified, ";
inline constexpr std::string_view kNotVerifiedPart = ", not verified, ";
/// What stands behind the speed. Remarks may follow, as sentences.
inline constexpr std::string_view kSpeedEnd = " MB/s.";

}  // namespace kestrav
