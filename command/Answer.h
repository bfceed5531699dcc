#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "command/AnswerTo.h"

namespace kestrav {

/// What a service's answer means.
struct Answer {
    /// What the service did.
    enum class Meaning {
        wroteAndVerified,     ///< the image is on the disk, read back past every cache and equal
        wroteAndNotVerified,  ///< the image was written; the system gave no way to read it back from the disk itself
        unmounted,            ///< the partition
        wasNotMounted,        ///< nothing was there to unmount
        refused,              ///< nothing was done
        failed,               ///< something was begun and went wrong
        blocks,               ///< what was read
        notOurs,  ///< none of these: another program's answer, half of one of ours, or one to another question
    };

    Meaning meaning = Meaning::notOurs;  ///< what it did
    std::uint64_t bytes = 0;             ///< wrote: how many
    std::uint64_t firstBlock = 0;        ///< wrote: counted from the start of the disk
    std::string disk;     ///< wrote: the disk; unmounted, was not mounted: the partition; the kernel's name
    std::string problem;  ///< refused, failed: the sentences behind the prefix
};

/// What `bytes`, the whole answer to `question`, means. Pure, for any bytes at all.
///
/// The words that tell answers apart are those of protocol/wire.h, and docs/protocol.md promises them. A text of a
/// service is UTF-8 without control characters and below `kReplyRoom`; whatever has the form of none of them, or that
/// of an answer to another question, is not ours, since other programs listen on that port, too. An answer to a read
/// that has the length that was asked for is the blocks, whatever they hold; but where it begins like a refusal or a
/// failure and is such a text, it counts as that: taking it for the disk's content would be the worse mistake.
Answer parseAnswer(std::string_view bytes, const AnswerTo& question);

}  // namespace kestrav
