#pragma once

namespace kestrav {

/// How kestravctl ends. The values are what scripts test for; they are listed in `kestravctl --help`.
enum class ExitCode : int {
    success = 0,
    failure = 1,              ///< the operation was carried out and reports failure
    wrongCall = 2,            ///< wrong arguments, or a file that can't be read or written
    noAccessory = 3,          ///< detect: no accessory is attached
    verificationFailed = 4,   ///< --verify: the disk differs from the image, or can't be read back
    registryUnreachable = 5,  ///< detect: the device registry can't be reached
};

/// How a command ends that can only succeed or fail.
constexpr ExitCode codeOf(bool succeeded) {
    return succeeded ? ExitCode::success : ExitCode::failure;
}

}  // namespace kestrav
