#include "services/helper/bless/helperFiles.h"

#include <utility>

#include "helperTexts.h"
#include "protocol/names.h"

namespace kestrav {

std::vector<WantedFile> helperFiles(std::string program) {
    return {
        {kHelperProgramFolder, kHelperLabel, 0755, std::move(program)},
        {"/etc/dbus-1/system.d", std::string(kHelperLabel) + ".conf", 0644, texts::kBusPolicy},
        {"/etc/systemd/system", std::string(kHelperLabel) + ".service", 0644, texts::kUnit},
        {"/etc/udev/rules.d", "60-kestrav.rules", 0644, texts::kDeviceRules},
        {"/usr/local/share/dbus-1/system-services", std::string(kHelperLabel) + ".service", 0644, texts::kActivation},
    };
}

WantedFile rightFile() {
    return {"/usr/share/polkit-1/actions", std::string(kHelperRight) + ".policy", 0644, texts::kRight};
}

WantedFile rightFileBesideAnImage() {
    return {"/etc/polkit-1/actions", std::string(kHelperRight) + ".policy", 0644, texts::kRight};
}

}  // namespace kestrav
