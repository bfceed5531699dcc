// How the cost of one detection grows with the number of USB devices that are not the accessory.
// Run under umockdev-wrapper. Prints the processor time at 500 and at 2,000 devices, medians of whole lookups, and
// their ratio; exit status 1 if it is above the limit.

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <string>
#include <vector>

#include "device/linux/UdevDeviceRegistry.h"
#include "tests/device/linux/Testbed.h"
#include "tests/simulator/ShellRun.h"

namespace {

constexpr int kLookups = 21;
// Four times the devices, and a tenth for what other programs do to the caches meanwhile.
constexpr double kLimit = 4.4;

// Processor time and not the clock: who else uses the machine must not count.
double milliseconds() {
    timespec now{};
    ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) * 1e3 + static_cast<double>(now.tv_nsec) / 1e6;
}

double medianLookupBeside(int others) {
    kestrav::Testbed bed;
    bed.plugInSimulated("accessory");
    const kestrav::ShellRun described(std::string(KESTRAV_SIMULATOR) + "/other-devices " + std::to_string(others));
    bed.plugIn(described.output);
    kestrav::UdevDeviceRegistry registry;
    std::vector<double> times;
    for (int i = 0; i < kLookups; ++i) {
        const double start = milliseconds();
        const kestrav::RegistryAnswer answer = registry.usbDevices(0x10D6, 0xFD01);
        times.push_back(milliseconds() - start);
        if (!answer.devices || answer.devices->size() != 1) throw std::runtime_error("the accessory was not found");
    }
    std::nth_element(times.begin(), times.begin() + kLookups / 2, times.end());
    return times[kLookups / 2];
}

}  // namespace

int main() {
    const double few = medianLookupBeside(500);
    const double many = medianLookupBeside(2000);
    std::printf("detection beside 500 devices: %.1f ms, beside 2000: %.1f ms, ratio %.2f (at most %.1f)\n", few, many,
                many / few, kLimit);
    return many / few <= kLimit ? 0 : 1;
}
