#include "cli/sendToAll.h"

#include <algorithm>
#include <memory>
#include <ostream>
#include <sstream>
#include <string>
#include <unistd.h>
#include <utility>
#include <vector>

#include "base/QuietSystemLog.h"
#include "base/shownText.h"
#include "cli/AccessoryArrivals.h"
#include "cli/ConsentTurn.h"
#include "cli/Deadline.h"
#include "cli/FleetProgress.h"
#include "cli/FleetReport.h"
#include "cli/Interruption.h"
#include "cli/WatchedEngine.h"
#include "cli/WorkQueue.h"
#include "device/attachedAccessories.h"

namespace kestrav {
namespace {

/// Whether the service has done what it was asked for: then it has somebody's consent, if that was needed.
bool wasServed(const ServiceAnswers::Exchange& exchange) {
    const auto* given = std::get_if<ServiceAnswers::Given>(&exchange.end);
    return given != nullptr && given->answer.meaning != Answer::Meaning::refused;
}

/// One update of one accessory, with all that it takes; runs on a thread of the queue.
class OneUpdate {
  public:
    OneUpdate(const FleetOrder& order, const Backends& backends, ConsentTurn& turn, FleetProgress& progress)
        : order_(order),
          backends_{backends.registry, backends.volumes, backends.disks, quietLog_,
                    backends.endpoint, backends.board,   backends.exists},
          turn_(turn),
          progress_(progress) {}

    /// `complaints` gets what it complains about.
    UpdateResult of(const UsbDevice& device, std::ostream& complaints) {
        std::ostream nowhere(nullptr);
        turn_.enter();
        const auto leave = [this](const ServiceAnswers::Exchange& exchange) { leaveTurn(wasServed(exchange)); };
        WatchedEngine engine(backends_, {.ports = {device.port}}, {nowhere, complaints}, nowhere,
                             progress_.showOf(device), leave);
        const CommandParts parts = engine.parts();
        const FleetProgress::Watched watched(progress_, device, parts.watch);
        UpdateResult result = order_.send(parts);
        leaveTurn(false);
        // One that was pulled out before its turn came has told nothing.
        if (result.port.empty()) {
            result.disk = device.disk.value_or("");
            result.serial = device.serial;
            result.port = device.port;
        }
        return result;
    }

  private:
    void leaveTurn(bool served) {
        if (std::exchange(hasLeft_, true)) return;
        turn_.leave(served);
    }

    const FleetOrder& order_;
    QuietSystemLog quietLog_;
    Backends backends_;
    ConsentTurn& turn_;
    FleetProgress& progress_;
    bool hasLeft_ = false;
};

/// The accessories that were named and never came.
std::vector<UpdateResult> missing(const AccessoryChoice& choice, const std::vector<UpdateResult>& results) {
    std::vector<UpdateResult> ends;
    const auto add = [&](const AccessoryChoice& one, auto member, const std::string& value) {
        const auto isIt = [&](const UpdateResult& result) { return result.*member == value; };
        if (std::any_of(results.begin(), results.end(), isIt)) return;
        UpdateResult end;
        end.*member = value;
        ends.push_back(end.endedWith(ExitCode::failure, "No accessory with " + one.inWords() + " is attached.",
                                     "'kestravctl list' shows those that are."));
    };
    for (const std::string& serial : choice.serials)
        add({.serials = {serial}}, &UpdateResult::serial, serial);
    for (const std::string& disk : choice.disks)
        add({.disks = {disk}}, &UpdateResult::disk, std::string(AccessoryChoice::nameOfDisk(disk)));
    for (const std::string& port : choice.ports)
        add({.ports = {port}}, &UpdateResult::port, port);
    return ends;
}

/// Puts the accessories into the queue as they come, until the order's time is over. False when the registry is out of
/// reach from the beginning.
bool enqueue(const FleetOrder& order, const Backends& backends, WorkQueue<UsbDevice>& queue,
             const std::function<void()>& sayNext) {
    AccessoryArrivals arrivals(backends, order.accessories);
    using When = AccessoryArrivals::When;
    const auto first = arrivals.take(order.fleet.wait ? When::ready : When::attached);
    if (!first) return false;
    for (const UsbDevice& device : *first)
        queue.add(device);
    if (!order.fleet.wait) return true;
    Deadline deadline(*order.fleet.wait);
    for (bool wasBusy = true; !deadline.isOver();) {
        const bool isBusy = !queue.isIdle();
        if (isBusy) deadline.restart();
        if (wasBusy && !isBusy) sayNext();
        wasBusy = isBusy;
        queue.pause(AccessoryArrivals::kPause);
        for (const UsbDevice& device : arrivals.take(When::ready).value_or(std::vector<UsbDevice>()))
            queue.add(device);
    }
    return true;
}

}  // namespace

ExitCode sendToAll(const FleetOrder& order, const Backends& backends, const Console& console) {
    FleetReport report(order.options, console);
    FleetProgress progress(order.options, console);
    ConsentTurn turn(::geteuid() != 0);
    const Interruption interruption(
        [&] { progress.aside([&, ends = progress.interrupted()] { report.interrupt(ends); }); });
    bool isReached = false;
    {
        WorkQueue<UsbDevice> queue(order.fleet.jobs, [&](const UsbDevice& device) {
            std::ostringstream complaints;
            const UpdateResult result = OneUpdate(order, backends, turn, progress).of(device, complaints);
            progress.aside([&] {
                report.warn(complaints.str());
                report.add(result);
            });
        });
        isReached = enqueue(order, backends, queue, [&] { progress.aside([&] { report.sayNext(); }); });
    }
    for (const UpdateResult& end : missing(order.accessories, report.results()))
        report.add(end);
    if (isReached) return report.end();
    return report.endWithout(ExitCode::registryUnreachable, "The device registry can't be reached. Is /sys mounted?");
}

}  // namespace kestrav
