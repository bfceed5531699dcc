#pragma once

namespace kestrav {

/// How kestravctl ends. The values are what scripts test for; they are listed in `kestravctl --help`.
enum class ExitCode : int {
    success = 0,
    failure = 1,              ///< there was no accessory, or nothing was handed over; read, write: nothing was moved
    wrongCall = 2,            ///< wrong arguments, or a file that can't be read or written
    noAccessory = 3,          ///< detect: no accessory is attached
    wentWrong = 4,            ///< refused, failed, or the disk differs from the image
    registryUnreachable = 5,  ///< the device registry can't be reached
    nobodyKnows = 6,          ///< no answer, half of one, or one that is not the service's
    interrupted = 130,        ///< Ctrl-C, as shells have it
};

/// How a command ends that can only succeed or fail.
constexpr ExitCode codeOf(bool succeeded) {
    return succeeded ? ExitCode::success : ExitCode::failure;
}

}  // namespace kestrav
