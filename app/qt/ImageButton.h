#pragma once

#include <functional>

#include "app/qt/CaptionedButton.h"

namespace kestrav {

/// A button that also takes a file that is dropped onto it.
class ImageButton final : public CaptionedButton {
  public:
    using Dropped = std::function<void(const QString& path)>;

    explicit ImageButton(const QString& text, QWidget* parent);

    /// Called from the event loop, once the drop is over, with the path of one file on this computer. What it is has
    /// not been looked at.
    void setDropped(Dropped dropped) { dropped_ = std::move(dropped); }

  protected:
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

  private:
    Dropped dropped_ = [](const QString&) {};
};

}  // namespace kestrav
