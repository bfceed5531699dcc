#pragma once

#include <QObject>

namespace kestrav {

/// While one exists, nothing that a person does to the application has any effect: clicks, keys, drags and requests to
/// close are taken out of the event stream and not kept for later. Painting, timers and resizing go on.
class InputBlocker final : public QObject {
  public:
    /// Whether the window may be closed all the same.
    enum class Closing { blocked, allowed };

    explicit InputBlocker(Closing closing = Closing::blocked);
    /// Also throws away what the person did until now and what is still on its way from the display.
    ~InputBlocker() override;
    InputBlocker(const InputBlocker&) = delete;
    InputBlocker& operator=(const InputBlocker&) = delete;

  protected:
    bool eventFilter(QObject* receiver, QEvent* event) override;

  private:
    Closing closing_;
};

}  // namespace kestrav
