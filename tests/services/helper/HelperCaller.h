#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kestrav {

/// One request to the helper over the system bus, from this process and as its user. Returns the answer's text, or
/// "NAME: SENTENCE" of the error that came instead, NAME without "org.freedesktop.DBus.Error.".
/// `mayInteract`: a person may be asked for a password. Waits as long as it takes.
std::string callHelper(const std::string& cmd, const std::vector<std::string>& arguments, bool mayInteract = true);

/// Whether the bus has an owner of the helper's name.
bool helperHasItsName();

/// Sends umount to the helper and goes once the bus has the call. Empty, or what went wrong.
std::string callAndGo();

/// Tries to be the helper: "owner", or the error as above.
std::string takeHelpersName();

}  // namespace kestrav
