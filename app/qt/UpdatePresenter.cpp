#include "app/qt/UpdatePresenter.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <system_error>
#include <utility>

#include "app/endingOf.h"
#include "app/qt/OutcomePanel.h"
#include "app/reportOf.h"
#include "device/WatchedRegistry.h"

namespace kestrav {

UpdatePresenter::UpdatePresenter(OutcomePanel& panel, const WatchedRegistry& registry, BoardReader board)
    : panel_(panel),
      registry_(registry),
      record_([this](AnswerTo::Kind asked) { QMetaObject::invokeMethod(this, [this, asked] { showStep(asked); }); },
              [this](const WriteState& state) { QMetaObject::invokeMethod(this, [this, state] { showState(state); }); },
              std::move(board)) {
    seconds_.setInterval(std::chrono::seconds(1));
    connect(&seconds_, &QTimer::timeout, this, &UpdatePresenter::showProgress);
}

UpdatePresenter::~UpdatePresenter() {
    endFollowing();
}

void UpdatePresenter::setSendAgain(SendAgain sendAgain) {
    panel_.setSendAgain([this, sendAgain = std::move(sendAgain)] {
        if (sender_ != nullptr) sendAgain(*sender_, std::string(path_));
    });
}

void UpdatePresenter::takeAccessories(const AccessoryWatch::Accessories& accessories) {
    accessories_ = accessories;
    panel_.offerToSendAgain(hasOneWithADisk());
}

bool UpdatePresenter::hasOneWithADisk() const {
    return accessories_ &&
           std::ranges::any_of(*accessories_, [](const UsbDevice& one) { return one.disk.has_value(); });
}

/// Where nobody can tell it is taken for there: nothing may be said of the plug that isn't known.
bool UpdatePresenter::isThere(const std::string& disk) const {
    return !accessories_ ||
           std::ranges::any_of(*accessories_, [&](const UsbDevice& one) { return !one.disk || *one.disk == disk; });
}

void UpdatePresenter::updateBegins(const Button& sender, const std::string& path) {
    endFollowing();
    record_.begin();
    sender_ = &sender;
    path_ = path;
    isUnderWay_ = true;
    isLate_ = false;
    begun_.start();
    seconds_.start();
    progress_ = {tr("Reading the image."), {}};
    showProgress();
}

void UpdatePresenter::showStep(AnswerTo::Kind asked) {
    if (asked != AnswerTo::Kind::unmount || !isUnderWay_) return;
    progress_ = {tr("Asking the service to unmount; an administrator may be asked for consent."), {}};
    showProgress();
}

void UpdatePresenter::showState(const WriteState& state) {
    if (!isUnderWay_) return;
    progress_ = progressSentence(state);
    showProgress();
}

void UpdatePresenter::showProgress() {
    const auto seconds = begun_.elapsed() / 1000;
    const QString elapsed = QStringLiteral("%1:%2").arg(seconds / 60).arg(seconds % 60, 2, 10, QChar('0'));
    const QString more = progress_.share.isEmpty() ? elapsed : progress_.share + QStringLiteral(" · ") + elapsed;
    panel_.showWorking(progress_.phase, more,
                       isLate_ ? tr("No answer has come, and the service goes on. Don't unplug the accessory.")
                               : tr("Don't unplug the accessory."));
}

void UpdatePresenter::updateEnded(const Button& /*sender*/, const std::string& path) {
    facts_ = record_.facts();
    const DeviceObject found = found_();
    facts_.isRegistryReached = registry_.wasReached();
    facts_.isAccessoryFound = !found.bsdName.empty();
    facts_.hasDisk = hasDisk(found);
    std::error_code error;
    facts_.isImageEmpty = std::filesystem::file_size(path, error) == 0 && !error;
    facts_.mayGoOn() ? follow() : conclude();
}

void UpdatePresenter::follow() {
    isLate_ = true;
    showProgress();
    follower_ = std::thread([this] {
        const WriteWatch::End end = record_.follow();
        QMetaObject::invokeMethod(this, [this, end] {
            if (!isLate_) return;
            facts_.board = end;
            endFollowing();
            conclude();
        });
    });
}

void UpdatePresenter::endFollowing() {
    isLate_ = false;
    record_.giveUp();
    if (follower_.joinable()) follower_.join();
}

void UpdatePresenter::conclude() {
    isUnderWay_ = false;
    seconds_.stop();
    lookAgain_();
    facts_.isAccessoryThere = isThere(facts_.request.disk);
    const Report& report = reportOf(endingOf(facts_));
    panel_.showReport(report);
    panel_.offerToSendAgain(hasOneWithADisk());
    ended_(report);
}

}  // namespace kestrav
