#pragma once

#include <QObject>

namespace kestrav {

/// While one exists, nothing that a person does to the application has any effect: clicks, keys, drags and requests to
/// close are taken out of the event stream and not kept for later. Painting, timers and resizing go on.
class InputBarrier final : public QObject {
  public:
    InputBarrier();
    /// Also throws away what the person did until now and what is still on its way from the display.
    ~InputBarrier() override;
    InputBarrier(const InputBarrier&) = delete;
    InputBarrier& operator=(const InputBarrier&) = delete;

  protected:
    bool eventFilter(QObject* receiver, QEvent* event) override;
};

}  // namespace kestrav
