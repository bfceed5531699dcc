#include "services/helper/bless/HelperFiles.h"

#include <utility>

#include "HelperTexts.h"

namespace kestrav {

std::vector<WantedFile> helperFiles(std::string program) {
    return {
        {kHelperProgramFolder, kHelperProgramName, 0755, std::move(program)},
        {"/etc/dbus-1/system.d", "com.corvatel.KestravHelper.conf", 0644, texts::kBusPolicy},
        {"/etc/systemd/system", "com.corvatel.KestravHelper.service", 0644, texts::kUnit},
        {"/etc/udev/rules.d", "60-kestrav.rules", 0644, texts::kDeviceRules},
        {"/usr/local/share/dbus-1/system-services", "com.corvatel.KestravHelper.service", 0644, texts::kActivation},
    };
}

WantedFile rightFile() {
    // polkit reads actions from here only.
    return {"/usr/share/polkit-1/actions", "com.corvitel.KestravHelper.policy", 0644, texts::kRight};
}

}  // namespace kestrav
