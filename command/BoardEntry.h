#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <sys/types.h>

#include "protocol/board.h"

namespace kestrav {

/// What a disk's board says of the newest write to it.
struct BoardEntry {
    std::string disk;                       ///< for example "sdb"
    uid_t user = 0;                         ///< who asked for it
    pid_t asker = 0;                        ///< the process that asked; 0 where the service doesn't know
    pid_t writer = 0;                       ///< the process that writes
    std::uint64_t writerStart = 0;          ///< when that was started: field 22 of /proc/PID/stat
    std::uint64_t firstBlock = 0;           ///< of the place that is written, from the start of the disk
    std::uint64_t bytes = 0;                ///< of the image; 0 until it is known
    WritePhase phase = WritePhase::asking;  ///< how far it has come
    std::uint64_t done = 0;                 ///< bytes of this phase that are done
    std::uint64_t of = 0;                   ///< bytes that it has; 0 where they aren't counted
    std::int64_t begun = 0;                 ///< seconds since 1970
    std::optional<WriteVerdict> verdict;    ///< in the phase "done", and only there

    /// Whether the process that wrote has ended. In any phase but "done" it left the write as it was then, and nobody
    /// knows what the disk holds.
    bool writerIsGone() const;
};

}  // namespace kestrav
