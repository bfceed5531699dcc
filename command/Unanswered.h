#pragma once

#include <string>

namespace kestrav {

/// Why an exchange with a service ended without an answer. A request that went out may have been carried out all the
/// same, from `noReplyInTime` on.
struct Unanswered {
    /// How far it came.
    enum class Why {
        hostNotFound,         ///< the service's address could not be looked up
        notAccepted,          ///< nobody listens there, or the connection was refused or broken off
        notAcceptedInTime,    ///< neither accepted nor refused before the time for connecting was over
        connectingFailed,     ///< the system could not wait for the connection
        noDescriptorLeft,     ///< the program, or the whole system, has too many files open for a connection
        notSent,              ///< the connection broke before the request had gone out whole
        noReplyInTime,        ///< the service has the request and has said nothing before the time was over
        closedWithoutAReply,  ///< the service closed or reset the connection, or reading from it failed
        notTheService,        ///< somebody answered who is not the service: another user listens in its place
        requestFailed,        ///< the helper's channel could not carry the request, or the helper turned it down
    };

    Why why = Why::notAccepted;  ///< how far it came
    /// What is said of it: the sentence that went to the log, but of `notTheService`, where the log has the stranger's
    /// answer as it came; of a helper's request without the words that the log begins the line with.
    /// Empty when the log says nothing of it, which is so when a service was reached and stayed silent.
    std::string sentence;
};

}  // namespace kestrav
