#pragma once

#include <string_view>

/// The names that the system knows this project's parts by.
namespace kestrav {

/// The privileged helper: its label, its name on the system bus, and the names of its files.
#define KESTRAV_HELPER_LABEL "com.corvatel.KestravHelper"  // NOLINT(cppcoreguidelines-macro-usage): for literals
inline constexpr const char* kHelperLabel = KESTRAV_HELPER_LABEL;

/// Where its program stands once it is installed. The program's name is the label.
inline constexpr const char* kHelperProgramFolder = "/usr/local/libexec";

/// Its object on the bus. The interface on it is called as the helper itself.
inline constexpr const char* kHelperObject = "/com/corvatel/KestravHelper";

/// The right that is registered for running commands through the helper. Its second part is spelled differently from
/// the label's since its first release, and administrators' rules name it so: it stays.
// frozen: F45
inline constexpr const char* kHelperRight = "com.corvitel.KestravHelper";

/// polkit's action that an administrator agrees to when an ordinary user's request is carried out.
inline constexpr const char* kRunAction = "com.corvatel.kestrav.run";

/// The application, as the desktop knows it, and its folder among the user's data.
inline constexpr const char* kApplicationName = "com.corvatel.Kestrav";

/// Where the system bus listens. Given by the D-Bus specification; a variable of the environment must not lead a
/// program of root's elsewhere.
inline constexpr const char* kSystemBusAddress = "unix:path=/run/dbus/system_bus_socket";
/// The socket of that address as a path.
inline constexpr const char* kSystemBusSocket = kSystemBusAddress + std::string_view("unix:path=").size();

}  // namespace kestrav
