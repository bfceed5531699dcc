#pragma once

#include "base/Outcome.h"
#include "cli/SendOptions.h"

namespace kestrav {

class OrdinaryFile;

/// Whether the image has the checksum that is expected of it: the one that was given, and the one in the file beside
/// it, each if that is wanted. A problem that is `refused` is one of the checksum's own file.
Outcome<void> compareDigest(const OrdinaryFile& image, const SendOptions& options);

/// Whether it is a SHA-256: 64 hexadecimal digits.
bool isDigest(const std::string& text);

}  // namespace kestrav
