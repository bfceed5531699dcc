#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

/// The board: one small file a disk in which a service says where a write is and how it ended. docs/protocol.md
/// promises it to other programs.
namespace kestrav {

/// The form of the file. A reader passes over what has another one.
inline constexpr std::uint64_t kBoardVersion = 1;

/// Where root's services keep it. A service that runs as somebody else keeps one in its user's own folder for the time
/// of a session, below this name.
inline constexpr const char* kBoardFolder = "/run/kestrav";
inline constexpr const char* kBoardFolderName = "kestrav";
/// A disk's file is called as the disk and ends so.
inline constexpr std::string_view kBoardFileEnd = ".json";
/// Bytes of a file, at most; a reader needs to take no more.
inline constexpr std::size_t kLongestBoard = 4096;

/// Where a write is. The words are what the file says, in the order of the cases.
enum class WritePhase { asking, unmounting, reading, writing, flushing, checking, done };
inline constexpr std::array<std::string_view, 7> kWritePhaseWords{"asking",   "unmounting", "reading", "writing",
                                                                  "flushing", "checking",   "done"};

/// How it ended; said with the phase "done" alone.
enum class WriteVerdict { wrote, refused, failed };
inline constexpr std::array<std::string_view, 3> kWriteVerdictWords{"wrote", "refused", "failed"};

/// The members of the file's one object.
inline constexpr std::string_view kBoardVersionKey = "version";
inline constexpr std::string_view kBoardDiskKey = "disk";
inline constexpr std::string_view kBoardUserKey = "user";
inline constexpr std::string_view kBoardAskerKey = "asker";
inline constexpr std::string_view kBoardWriterKey = "writer";
inline constexpr std::string_view kBoardWriterStartKey = "writerStart";
inline constexpr std::string_view kBoardFirstBlockKey = "firstBlock";
inline constexpr std::string_view kBoardBytesKey = "bytes";
inline constexpr std::string_view kBoardPhaseKey = "phase";
inline constexpr std::string_view kBoardDoneKey = "done";
inline constexpr std::string_view kBoardOfKey = "of";
inline constexpr std::string_view kBoardBegunKey = "begun";
inline constexpr std::string_view kBoardVerdictKey = "verdict";

}  // namespace kestrav
