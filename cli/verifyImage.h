#pragma once

#include "cli/UpdateResult.h"

namespace kestrav {

class DiskCalls;
class OrdinaryFile;

/// A second look at an image of which the service says that it is on the disk: reads its place and compares it with the
/// image. Only reads, and unmounts nothing. Who may not open the disk keeps the first result, with a word about that.
UpdateResult verifyImage(const OrdinaryFile& image, const UpdateResult& confirmed, DiskCalls& disks);

}  // namespace kestrav
