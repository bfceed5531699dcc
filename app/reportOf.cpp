#include "app/reportOf.h"

#include <algorithm>
#include <array>

#include "app/translatable.h"
#include "base/stopProcess.h"

namespace kestrav {
namespace {

using Kind = Report::Kind;

struct Row {
    UpdateEnding ending;
    Report report;
};

constexpr bool kSendAgain = true;
constexpr bool kAnotherOne = false;

constexpr std::array kRows{
    Row{UpdateEnding::firmwareArrived,
        {Kind::success, translatable("Report", "The firmware is on the accessory, read back and equal."),
         translatable("Report", "You may unplug it."), kAnotherOne}},
    Row{UpdateEnding::firmwareArrivedInIcon,
        {Kind::success, translatable("Report", "The firmware is on the accessory, read back and equal."),
         translatable("Report", "It reaches into the icon area: send the icon again, too."), kAnotherOne}},
    Row{UpdateEnding::iconArrived,
        {Kind::success, translatable("Report", "The icon is on the accessory, read back and equal."),
         translatable("Report", "You may unplug it."), kAnotherOne}},
    Row{UpdateEnding::boardSaysArrived,
        {Kind::success, translatable("Report", "The image is on the accessory: it was written and compared."),
         translatable("Report", "You may unplug it."), kAnotherOne}},

    Row{UpdateEnding::registryOutOfReach,
        {Kind::notWritten, translatable("Report", "Not written: the computer doesn't tell which devices are attached."),
         translatable("Report", "Is /sys mounted? Mount it, then send the image again."), kSendAgain}},
    Row{UpdateEnding::imageEmpty,
        {Kind::notWritten, translatable("Report", "Not written: the image is empty."),
         translatable("Report", "Choose another one."), kAnotherOne}},
    Row{UpdateEnding::noAccessory,
        {Kind::notWritten, translatable("Report", "Not written: no accessory is plugged in."),
         translatable("Report", "Plug it in, wait some seconds, then send the image again."), kSendAgain}},
    Row{UpdateEnding::notHandedOver,
        {Kind::notWritten, translatable("Report", "Not written: nothing was handed over."),
         translatable("Report", "The log says why. Put that right, then send the image again."), kSendAgain}},
    Row{UpdateEnding::cannotConnect,
        {Kind::notWritten, translatable("Report", "Not written: the service can't be reached."),
         translatable("Report", "Is the loopback interface up? 'ip link set lo up', then send the image again."),
         kSendAgain}},
    Row{UpdateEnding::noDescriptorLeft,
        {Kind::notWritten,
         translatable("Report", "Not written: too many files are open for a connection to the service."),
         translatable("Report", "Close other programs, start Kestrav again and send the image again."), kSendAgain}},
    Row{UpdateEnding::notRunning,
        {Kind::notWritten, translatable("Report", "Not written: the service is not running."),
         translatable("Report", "'systemctl start kestrav-commandd.socket', then send the image again."), kSendAgain}},
    Row{UpdateEnding::notAcceptedInTime,
        {Kind::notWritten, translatable("Report", "Not written: the service does not take the request."),
         translatable("Report", "'systemctl restart kestrav-commandd', then send the image again."), kSendAgain}},
    Row{UpdateEnding::notSent,
        {Kind::notWritten, translatable("Report", "Not written: the connection to the service broke off."),
         translatable("Report", "Send the image again."), kSendAgain}},
    Row{UpdateEnding::accessoryUnplugged,
        {Kind::notWritten, translatable("Report", "Not written: the accessory is not plugged in."),
         translatable("Report", "Plug it in, then send the image again."), kSendAgain}},
    Row{UpdateEnding::noDiskYet,
        {Kind::notWritten, translatable("Report", "Not written: the accessory has no disk yet."),
         translatable("Report", "Wait some seconds and try again; if that does not help, plug it in once more."),
         kSendAgain}},
    Row{UpdateEnding::refused,
        {Kind::notWritten, translatable("Report", "Not written: the service refused."),
         translatable("Report", "It says why below. Put that right, then send the image again."), kSendAgain}},
    Row{UpdateEnding::unpluggedInTheMiddle,
        {Kind::notWritten, translatable("Report", "Not written whole: the accessory was unplugged in the middle."),
         translatable("Report", "It may hold a mixture now: plug it in and send the image again."), kSendAgain}},
    Row{UpdateEnding::failed,
        {Kind::notWritten, translatable("Report", "Not written whole: it went wrong on the way."),
         translatable("Report", "Unplug the accessory, plug it in again and send the image again."), kSendAgain}},
    Row{UpdateEnding::imageChanged,
        {Kind::notWritten, translatable("Report", "Not written as it is: the image changed meanwhile."),
         translatable("Report", "Wait until nothing writes the file any more, then send it again."), kSendAgain}},
    Row{UpdateEnding::boardSaysRefused,
        {Kind::notWritten, translatable("Report", "Not written: the service refused, and its answer did not come."),
         translatable("Report", "'journalctl -t kestrav-commandd' tells why."), kSendAgain}},
    Row{UpdateEnding::boardSaysFailed,
        {Kind::notWritten, translatable("Report", "Not written whole: it failed, and the answer did not come."),
         translatable("Report", "Unplug the accessory, plug it in again and send the image again."), kSendAgain}},

    Row{UpdateEnding::notReadBack,
        {Kind::nobodyKnows, translatable("Report", "Nobody knows: it was written, and could not be read back."),
         translatable("Report", "Unplug the accessory, plug it in again and send the image once more."), kSendAgain}},
    Row{UpdateEnding::otherWrite,
        {Kind::nobodyKnows, translatable("Report", "Nobody knows: the answer is about another write."),
         translatable("Report", "Don't unplug; send the image again."), kSendAgain}},
    Row{UpdateEnding::halfAnAnswer,
        {Kind::nobodyKnows, translatable("Report", "Nobody knows: only a part of the service's answer came."),
         translatable("Report", "Don't unplug; send the image again."), kSendAgain}},
    Row{UpdateEnding::strangersAnswer,
        {Kind::nobodyKnows, translatable("Report", "Nobody knows: another program answers in the service's place."),
         translatable("Report", "End it ('kestravctl doctor' names it), then send the image again."), kSendAgain}},
    Row{UpdateEnding::noAnswerInTime,
        {Kind::nobodyKnows, translatable("Report", "Nobody knows: the service gave no answer in time."),
         translatable("Report", "Don't unplug; send the image again."), kSendAgain}},
    Row{UpdateEnding::serviceGone,
        {Kind::nobodyKnows, translatable("Report", "Nobody knows: the service gave no answer."),
         translatable("Report", "Don't unplug; send the image again."), kSendAgain}},
    Row{UpdateEnding::serviceDied,
        {Kind::nobodyKnows, translatable("Report", "Nobody knows: the service died while it wrote."),
         translatable("Report", "Don't unplug; send the image again."), kSendAgain}},
};

}  // namespace

const Report& reportOf(UpdateEnding ending) {
    const auto* row = std::ranges::find(kRows, ending, &Row::ending);
    require(row != kRows.end());
    return row->report;
}

}  // namespace kestrav
