#pragma once

namespace kestrav {

/// How an update has ended, as far as the person who asked for it has to do something else about each. `reportOf` has
/// the words.
enum class UpdateEnding {
    firmwareArrived,        ///< read back and equal
    firmwareArrivedInIcon,  ///< the same, and it reaches into the icon area
    iconArrived,            ///< read back and equal
    boardSaysArrived,       ///< no answer came; the service's board says that it was written and compared
    registryOutOfReach,     ///< nothing was handed over: the system doesn't tell what is attached
    imageEmpty,             ///< nothing was handed over
    noAccessory,            ///< nothing was handed over: none has been found
    notHandedOver,          ///< nothing was handed over, for a reason that the log tells
    cannotConnect,          ///< the service's address can't be reached
    noDescriptorLeft,       ///< too many files are open for a connection to it
    notRunning,             ///< nobody listens there
    notAcceptedInTime,      ///< somebody listens and does not take the connection
    notSent,                ///< the connection broke before the request had gone out whole
    accessoryUnplugged,     ///< refused, for the accessory is gone
    noDiskYet,              ///< refused, for the accessory has no disk
    refused,                ///< for another reason
    unpluggedInTheMiddle,   ///< failed, and the accessory is gone
    failed,                 ///< something was begun and went wrong
    imageChanged,           ///< another number of bytes was written than the image had
    boardSaysRefused,       ///< no answer came; the board says that it was refused
    boardSaysFailed,        ///< no answer came; the board says that it failed
    notReadBack,            ///< written, and not read back from the disk itself
    otherWrite,             ///< the answer is about another one
    halfAnAnswer,           ///< only a part of the service's answer came
    strangersAnswer,        ///< what answers is not the service
    noAnswerInTime,         ///< the service has the request and says nothing, and there is no board
    serviceGone,            ///< it went without an answer, and there is no board
    serviceDied,            ///< it went without an answer, and the board ends in the middle of the write
};

}  // namespace kestrav
