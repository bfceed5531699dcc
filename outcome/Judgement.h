#pragma once

#include <cstdint>
#include <string>

namespace kestrav {

/// What came of one request to the command service, without the words for it: each front end has its own.
struct Judgement {
    /// What has been found out.
    enum class Finding {
        verified,             ///< the image is on the disk, read back and equal
        blocksCame,           ///< what was to be read
        refused,              ///< the service did nothing
        failed,               ///< the service began it, and it went wrong
        otherLength,          ///< another number of bytes was written than the image had
        notVerified,          ///< written, and not read back from the disk itself
        aboutAnotherWrite,    ///< what was answered is not about this request
        halfAnAnswer,         ///< a part of what the service says
        strangersAnswer,      ///< nothing that the service says
        cannotConnect,        ///< the service's address can't be looked up, or the system could not wait for it
        noDescriptorLeft,     ///< too many files are open for a connection to it
        notRunning,           ///< nobody listens there
        notAcceptedInTime,    ///< neither accepted nor refused
        notSent,              ///< the connection broke before the request had gone out whole
        noReplyInTime,        ///< the service has the request and has said nothing
        closedWithoutAReply,  ///< it has the request and has gone
        requestFailed,        ///< the helper's channel could not carry the request
        strangerListens,      ///< another user listens in the service's place
    };
    /// What that means for the person who asked.
    enum class Kind {
        confirmed,      ///< it is done
        notHandedOver,  ///< the service never had it, so nothing was done
        wentWrong,      ///< the service says that it was not done, or not as it was meant
        nobodyKnows,    ///< it may have been done, or a part of it
    };

    Finding finding = Finding::strangersAnswer;  ///< what has been found out
    std::string detail;                          ///< refused, failed: why; strangerListens: who; in the service's words
    std::uint64_t written = 0;                   ///< verified, notVerified, otherLength: bytes

    Kind kind() const;

    /// Whether the service may be at work on it still, so that its board may tell the end.
    bool mayGoOn() const { return finding == Finding::noReplyInTime || finding == Finding::closedWithoutAReply; }
};

}  // namespace kestrav
