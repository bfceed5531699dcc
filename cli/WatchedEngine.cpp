#include "cli/WatchedEngine.h"

#include <memory>
#include <utility>

#include "cli/TerminalLog.h"
#include "cli/complain.h"

namespace kestrav {

WatchedEngine::WatchedEngine(const Backends& backends, AccessoryChoice choice, Console console, std::ostream& progress,
                             WriteWatch::Show show, Told told)
    : console_(console),
      backends_(backends),
      chosen_(backends.registry, std::move(choice),
              [this](const std::string& sentence) { complain(console_, sentence); }),
      registry_(chosen_),
      meter_(backends.disks),
      watch_(answers_, std::move(show), backends.board),
      log_(backends.log, watch_, answers_, std::move(told)),
      commands_(log_, backends.endpoint, &log_),
      device_(registry_, backends.volumes, meter_, commands_, progress) {
    device_.setParent(std::make_shared<TerminalLog>(progress));
}

CommandParts WatchedEngine::parts() {
    return {device_, registry_, chosen_, meter_, answers_, watch_, console_, backends_};
}

}  // namespace kestrav
