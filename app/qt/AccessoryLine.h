#pragma once

#include <QCoreApplication>
#include <QLabel>
#include <optional>
#include <vector>

#include "device/DeviceRegistry.h"

namespace kestrav {

/// Says in one line which accessory an update will take: its name, disk, size and serial number; or that one has to be
/// plugged in. What has no room is left out with an ellipsis, and the tool tip has all of it. Used on the main thread.
class AccessoryLine final : public QLabel {
    Q_DECLARE_TR_FUNCTIONS(AccessoryLine)

  public:
    /// Says nothing before the first showAccessories().
    explicit AccessoryLine(QWidget* parent = nullptr);

    /// In the order in which the engine sees them, whose choice is the last one; absent where nobody can tell.
    void showAccessories(const std::optional<std::vector<UsbDevice>>& accessories);

    QSize minimumSizeHint() const override;

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    static QString described(const UsbDevice& accessory);
    int signWidth() const;

    bool isReady_ = false;
};

}  // namespace kestrav
