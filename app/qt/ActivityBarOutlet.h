#pragma once

#include <QPointer>

#include "app/ActivityIndicator.h"
#include "app/qt/ActivityBar.h"

namespace kestrav {

/// The indicator as the window's controller knows it: the bar is shown while it turns. Using it does nothing once the
/// widget is gone.
class ActivityBarOutlet final : public ActivityIndicator {
  public:
    explicit ActivityBarOutlet(ActivityBar& bar) : bar_(&bar) {}

    void startAnimation(const Button& sender) override;
    void stopAnimation(const Button& sender) override;

  private:
    QPointer<ActivityBar> bar_;
};

}  // namespace kestrav
