#pragma once

// The engine: finds the accessory and its disk, reads and writes it, and has images written onto it.

#include "base/SystemLog.h"
#include "command/CommandService.h"
#include "device/DiskNodes.h"
#include "device/KestravDevice.h"
#include "device/LogSink.h"
#include "device/linux/MountinfoVolumes.h"
#include "device/linux/PosixDiskCalls.h"
#include "device/linux/UdevDeviceRegistry.h"
