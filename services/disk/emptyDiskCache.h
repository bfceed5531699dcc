#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "base/Outcome.h"

namespace kestrav {

/// Tells the disk behind `node`, which is open for writing, to put on its medium what it holds in a cache of its own,
/// and waits for its answer, 30 seconds at most.
///
/// fsync(2) does that as well, but repeats the command when the disk answers that it could not keep the bytes. A disk
/// that reports a lost write once, as the kernel itself does, then says that all is well. So this comes before
/// fsync(2). And of a disk of which the kernel doesn't know that it has a cache it asks nothing.
///
/// No problem comes from a disk that doesn't know the command (SYNCHRONIZE CACHE (10) of SCSI Block Commands), nor from
/// what is no SCSI disk at all: there fsync(2) is all that can be done. A
/// problem's `cause` is the system's error, its sentence the system's words.
Outcome<void> emptyDiskCache(int node);

/// A SCSI disk's answer as the kernel hands it on.
struct DiskAnswer {
    std::uint16_t hostStatus = 0;          ///< the way to the disk: DID_... of the kernel's scsi/scsi_status.h
    std::uint8_t status = 0;               ///< the disk's own: 0 is GOOD, 2 is CHECK CONDITION
    std::span<const unsigned char> sense;  ///< why, in fixed or descriptor format
};

/// What such an answer means for the bytes that should have been kept.
Outcome<void> keptBytes(const DiskAnswer& answer);

}  // namespace kestrav
