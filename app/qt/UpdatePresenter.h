#pragma once

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QObject>
#include <QTimer>
#include <functional>
#include <string>
#include <thread>

#include "app/Report.h"
#include "app/UpdateObserver.h"
#include "app/UpdateRecord.h"
#include "app/qt/AccessoryWatch.h"
#include "app/qt/progressSentence.h"
#include "device/DeviceObject.h"

namespace kestrav {

class OutcomePanel;
class WatchedRegistry;

/// Shows on the panel how each update goes on and how it has ended. The engine learns nothing of it. Used on the main
/// thread, but for what record() takes.
class UpdatePresenter final : public QObject, public UpdateObserver {
    Q_DECLARE_TR_FUNCTIONS(UpdatePresenter)

  public:
    /// What the engine has found last.
    using Found = std::function<DeviceObject()>;
    using SendAgain = std::function<void(const Button& sender, const std::string& path)>;

    /// `registry` is the one that the engine asks. Neither is owned; both outlive this object. `board` is where the
    /// service says how a write goes on.
    UpdatePresenter(OutcomePanel& panel, const WatchedRegistry& registry, BoardReader board = BoardReader());
    ~UpdatePresenter() override;
    UpdatePresenter(const UpdatePresenter&) = delete;
    UpdatePresenter& operator=(const UpdatePresenter&) = delete;

    /// What the command service's answers have to go to.
    AnswerSink& record() { return record_; }
    void setFound(Found found) { found_ = std::move(found); }
    /// Called when an update is over, for a fresh takeAccessories().
    void setLookAgain(std::function<void()> lookAgain) { lookAgain_ = std::move(lookAgain); }
    /// Called when an update is over, with what is said of it.
    void setEnded(std::function<void(const Report&)> ended) { ended_ = std::move(ended); }
    /// Called when the person wants to send the image at the path again, with the button it was sent with.
    void setSendAgain(SendAgain sendAgain);

    /// Which accessories are attached now.
    void takeAccessories(const AccessoryWatch::Accessories& accessories);

    void updateBegins(const Button& sender, const std::string& path) override;
    void updateEnded(const Button& sender, const std::string& path) override;

  private:
    void showStep(AnswerTo::Kind asked);
    void showState(const WriteState& state);
    void showProgress();
    void follow();
    void endFollowing();
    void conclude();
    bool isThere(const std::string& disk) const;
    bool hasOneWithADisk() const;

    OutcomePanel& panel_;
    const WatchedRegistry& registry_;
    UpdateRecord record_;
    Found found_ = [] { return DeviceObject(); };
    std::function<void()> lookAgain_ = [] {};
    std::function<void(const Report&)> ended_ = [](const Report&) {};
    AccessoryWatch::Accessories accessories_;
    const Button* sender_ = nullptr;
    std::string path_;
    bool isUnderWay_ = false;
    bool isLate_ = false;
    UpdateFacts facts_;
    ProgressSentence progress_;
    QElapsedTimer begun_;
    QTimer seconds_;
    std::thread follower_;
};

}  // namespace kestrav
