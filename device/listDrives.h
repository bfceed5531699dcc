#pragma once

#include <string>
#include <vector>

namespace kestrav {

class LogSink;
class MountedVolumes;

/// The paths of the volumes mounted in the desktop's folders for them, in the system's order, each of them logged.
/// They may be of any disk. Empty as well when the system doesn't say what is mounted.
std::vector<std::string> listDrives(MountedVolumes& volumes, LogSink& log);

}  // namespace kestrav
