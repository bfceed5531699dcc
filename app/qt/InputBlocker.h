#pragma once

#include <QObject>

namespace kestrav {

/// While one exists, nothing that a person does to the application has any effect: clicks, keys, drags and requests to
/// close are taken out of the event stream and not kept for later. Painting, timers and resizing go on.
class InputBlocker final : public QObject {
  public:
    InputBlocker();
    /// Also throws away what the person did until now and what is still on its way from the display.
    ~InputBlocker() override;
    InputBlocker(const InputBlocker&) = delete;
    InputBlocker& operator=(const InputBlocker&) = delete;

  protected:
    bool eventFilter(QObject* receiver, QEvent* event) override;
};

}  // namespace kestrav
