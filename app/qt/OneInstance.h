#pragma once

#include <QDBusVirtualObject>
#include <functional>

namespace kestrav {

/// The program once in a person's session: the first one holds its name on the session's bus, and a second one has the
/// first raised. Without such a bus, each one is the first.
class OneInstance final : public QDBusVirtualObject {
  public:
    /// Called on the main thread, whenever the program was started once more.
    using Raise = std::function<void()>;

    OneInstance();
    ~OneInstance() override;
    OneInstance(const OneInstance&) = delete;
    OneInstance& operator=(const OneInstance&) = delete;

    /// Whether another one has been raised in place of this one. One that holds the name and does not answer is left
    /// alone: better two windows than none.
    bool hasRaisedAnother() const { return hasRaisedAnother_; }
    void setRaise(Raise raise) { raise_ = std::move(raise); }

    QString introspect(const QString& path) const override;
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override;

  private:
    Raise raise_ = [] {};
    bool hasRaisedAnother_ = false;
};

}  // namespace kestrav
