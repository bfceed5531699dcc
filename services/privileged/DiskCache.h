#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <system_error>

namespace kestrav {

/// Tells the disk behind `node`, which is open for writing, to put on its medium what it holds in a cache of its own,
/// and waits for its answer, 45 seconds at most.
///
/// The kernel does that as part of fsync(2) only for disks that are known to have a cache; of a USB disk it assumes
/// that it has none, without asking it. No error comes from a disk that doesn't know the command (SYNCHRONIZE CACHE
/// (10) of SCSI Block Commands), nor from what is no SCSI disk at all: there fsync(2) was all that can be done.
std::error_code emptyDiskCache(int node);

/// A SCSI disk's answer as the kernel hands it on.
struct DiskAnswer {
    std::uint16_t hostStatus = 0;          ///< the way to the disk: DID_... of the kernel's scsi/scsi_status.h
    std::uint8_t status = 0;               ///< the disk's own: 0 is GOOD, 2 is CHECK CONDITION
    std::span<const unsigned char> sense;  ///< why, in fixed or descriptor format
};

/// What such an answer means for the bytes that should have been kept.
std::error_code keptBytes(const DiskAnswer& answer);

}  // namespace kestrav
