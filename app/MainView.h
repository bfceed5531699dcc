#pragma once

#include <functional>
#include <memory>

namespace kestrav {

class OpenPanel;

/// The main window, as far as its controller has to know it. Used on the main thread.
class MainView {
  public:
    virtual ~MainView() = default;

    /// The size of the window's content that shows everything, in points.
    virtual void setPreferredContentSize(int width, int height) = 0;

    /// A chooser that stands before this window.
    virtual std::unique_ptr<OpenPanel> makeOpenPanel() = 0;

    /// Runs `task` to its end and then returns. The window keeps painting meanwhile, but nothing that a person does
    /// to it has any effect, then or afterwards. `task` may run on another thread than the caller's; what it throws is
    /// thrown here.
    virtual void whileBusy(const std::function<void()>& task) = 0;

    /// The same for a task in which a person is asked for something elsewhere. It may take as long as the person likes,
    /// so the window may be closed meanwhile, which ends the process; nothing else has any effect.
    virtual void whileAsking(const std::function<void()>& task) = 0;
};

}  // namespace kestrav
