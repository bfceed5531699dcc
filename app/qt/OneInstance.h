#pragma once

#include <QDBusVirtualObject>
#include <functional>
#include <future>

namespace kestrav {

/// The program once in a person's session: the first one holds its name on the session's bus, and a second one has the
/// first raised. Without such a bus, each one is the first.
class OneInstance final : public QDBusVirtualObject {
  public:
    /// Called on the main thread, whenever the program was started once more.
    using Raise = std::function<void()>;

    /// Asks the bus on a thread of its own, for the bus takes as long to answer as the display to make a window.
    OneInstance();
    ~OneInstance() override;
    OneInstance(const OneInstance&) = delete;
    OneInstance& operator=(const OneInstance&) = delete;

    /// Whether another one has been raised in place of this one. One that holds the name and does not answer is left
    /// alone: better two windows than none. Waits for the bus.
    bool hasRaisedAnother() const { return hasRaisedAnother_.get(); }
    void setRaise(Raise raise) { raise_ = std::move(raise); }

    QString introspect(const QString& path) const override;
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override;

  private:
    bool raiseAnother();

    Raise raise_ = [] {};
    std::shared_future<bool> hasRaisedAnother_;
};

}  // namespace kestrav
