// Finds the accessory and its disk, and says how the disk's nodes are called.

#include <cstdlib>
#include <iostream>
#include <kestrav/engine.h>

int main() {
    kestrav::UdevDeviceRegistry registry;
    kestrav::MountinfoVolumes volumes;
    kestrav::PosixDiskCalls disks;
    kestrav::SyslogSystemLog log("find_accessory");
    kestrav::CommandService commands(log);  // only an update would use it
    kestrav::KestravDevice engine(registry, volumes, disks, commands, std::cerr);

    if (engine.detect(engine.vendorID(), engine.productID()) != 0) return EXIT_FAILURE;
    const kestrav::DeviceObject& found = engine.device;
    if (found.bsdName.empty()) {
        std::cout << "no accessory is attached\n";
        return EXIT_FAILURE;
    }
    const kestrav::DiskNodes nodes(found.bsdName);
    std::cout << found.name << " is the disk " << found.bsdName << ": " << nodes.blockDisk << ", raw " << nodes.rawDisk
              << '\n';
    return EXIT_SUCCESS;
}
