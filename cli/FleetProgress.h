#pragma once

#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "cli/Console.h"
#include "cli/ProgressLine.h"
#include "cli/SendOptions.h"
#include "cli/UpdateResult.h"
#include "device/DeviceRegistry.h"
#include "outcome/WriteState.h"
#include "outcome/WriteWatch.h"

namespace kestrav {

/// How the writes to several accessories go on, side by side: on a terminal one line about all of them, for a program
/// an object a line about each. May be used on any thread.
class FleetProgress {
  public:
    FleetProgress(const SendOptions& options, const Console& console);

    /// What the watch of one accessory's write is to call; nothing where nobody wants to know.
    WriteWatch::Show showOf(const UsbDevice& device);

    /// One accessory's write is watched as long as this lives, which is not longer than what it is made of.
    class Watched {
      public:
        Watched(FleetProgress& progress, const UsbDevice& device, WriteWatch& watch);
        ~Watched();
        Watched(const Watched&) = delete;
        Watched& operator=(const Watched&) = delete;

      private:
        FleetProgress& progress_;
        std::string port_;
    };

    /// Has others say something where the line stands, which is shown anew afterwards.
    void aside(const std::function<void()>& say);

    /// What is to be said of the writes under way to somebody who presses Ctrl-C now.
    std::vector<UpdateResult> interrupted();

  private:
    struct Writing {
        UsbDevice device;
        WriteWatch* watch;
    };
    void see(const std::string& port, const WriteState& state);

    bool asObjects_;
    Console console_;
    /// A watch that is asked how its write goes on may be saying it at the same time: two locks, and never both at
    /// once.
    std::mutex registering_;
    std::map<std::string, Writing> writings_;  ///< by the accessory's port
    std::mutex showing_;
    std::optional<ProgressLine> line_;
    std::map<std::string, WriteState> seen_;  ///< by the accessory's port
    std::size_t ended_ = 0;
};

}  // namespace kestrav
