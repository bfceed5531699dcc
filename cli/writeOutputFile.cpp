#include "cli/writeOutputFile.h"

#include "cli/OutputFile.h"

namespace kestrav {

Outcome<void> writeOutputFile(const std::string& path, std::span<const std::byte> bytes) {
    auto file = OutputFile::open(path);
    if (!file) return file.problem();
    if (auto written = file.value().write(bytes); !written) return written;
    return file.value().finish();
}

}  // namespace kestrav
