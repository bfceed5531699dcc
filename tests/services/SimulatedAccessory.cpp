#include "tests/services/SimulatedAccessory.h"

#include <fstream>
#include <stdexcept>
#include <umockdev.h>

#include "tests/TemporaryFolder.h"
#include "tests/places.h"

namespace kestrav {
namespace {

void replaceAll(std::string& text, const std::string& from, const std::string& to) {
    std::size_t at = text.find(from);
    if (at == std::string::npos) throw std::runtime_error("nothing to replace: " + from);
    for (; at != std::string::npos; at = text.find(from, at + to.size()))
        text.replace(at, from.size(), to);
}

}  // namespace

SimulatedAccessory::SimulatedAccessory(std::string_view disk, const Edits& edits) : bed_(umockdev_testbed_new()) {
    gchar* root = umockdev_testbed_get_root_dir(bed_);
    root_ = root;
    g_free(root);
    std::string description = contentsOf(places::ofSource("simulator/accessory.umockdev"));
    replaceAll(description, "size=32768", "size=" + std::to_string(disk.size() / 512));
    for (const auto& [from, to] : edits)
        replaceAll(description, from, to);
    GError* error = nullptr;
    if (umockdev_testbed_add_from_string(bed_, description.c_str(), &error) == FALSE) {
        throw std::runtime_error(error->message);
    }
    std::ofstream(nodes() / "sdzz", std::ios::binary) << disk;
}

SimulatedAccessory::~SimulatedAccessory() {
    g_object_unref(bed_);
}

void SimulatedAccessory::setAttribute(const char* device, const char* name, const char* value) {
    umockdev_testbed_set_attribute(bed_, device, name, value);
}

std::string SimulatedAccessory::diskBytes() const {
    return contentsOf(nodes() / "sdzz");
}

}  // namespace kestrav
