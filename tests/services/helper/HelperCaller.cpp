#include "tests/services/helper/HelperCaller.h"

#include "base/SdBusPointers.h"

namespace kestrav {
namespace {

constexpr const char* kName = "com.corvatel.KestravHelper";

SdBusPtr connect() {
    sd_bus* bus = nullptr;
    sd_bus_new(&bus);
    sd_bus_set_address(bus, "unix:path=/run/dbus/system_bus_socket");
    sd_bus_set_bus_client(bus, 1);
    sd_bus_start(bus);
    return SdBusPtr(bus);
}

std::string text(const sd_bus_error& error) {
    constexpr std::string_view prefix = "org.freedesktop.DBus.Error.";
    std::string name = error.name != nullptr ? error.name : "none";
    if (name.starts_with(prefix)) name.erase(0, prefix.size());
    return name + ": " + (error.message != nullptr ? error.message : "");
}

}  // namespace

std::string callHelper(const std::string& cmd, const std::vector<std::string>& arguments, bool mayInteract) {
    const SdBusPtr bus = connect();
    sd_bus_message* raw = nullptr;
    sd_bus_message_new_method_call(bus.get(), &raw, kName, "/com/corvatel/KestravHelper", kName, "runWithCmd");
    const SdBusMessagePtr message(raw);
    if (!message) return "no bus";
    sd_bus_message_append(raw, "s", cmd.c_str());
    sd_bus_message_open_container(raw, 'a', "s");
    for (const std::string& argument : arguments)
        sd_bus_message_append(raw, "s", argument.c_str());
    sd_bus_message_close_container(raw);
    if (mayInteract) sd_bus_message_set_allow_interactive_authorization(raw, 1);
    SdBusError error;
    sd_bus_message* rawAnswer = nullptr;
    if (sd_bus_call(bus.get(), raw, UINT64_MAX, error.out(), &rawAnswer) < 0) return text(*error.get());
    const SdBusMessagePtr answer(rawAnswer);
    const char* words = nullptr;
    return sd_bus_message_read(rawAnswer, "s", &words) > 0 ? words : "not a text";
}

std::string callAndGo() {
    const SdBusPtr bus = connect();
    const int sent = sd_bus_call_method_async(bus.get(), nullptr, kName, "/com/corvatel/KestravHelper", kName,
                                              "runWithCmd", nullptr, nullptr, "sas", "umount", 1, "/dev/sdzzs1");
    // The bus takes its messages in order: the call is on its way when this is answered.
    SdBusError error;
    const int answered = sd_bus_call_method(bus.get(), "org.freedesktop.DBus", "/org/freedesktop/DBus",
                                            "org.freedesktop.DBus", "GetId", error.out(), nullptr, "");
    return sent < 0 || answered < 0 ? text(*error.get()) : "";
}

bool helperHasItsName() {
    const SdBusPtr bus = connect();
    sd_bus_creds* raw = nullptr;
    const int result = sd_bus_get_name_creds(bus.get(), kName, SD_BUS_CREDS_UNIQUE_NAME, &raw);
    const SdBusCredsPtr creds(raw);
    return result >= 0;
}

std::string takeHelpersName() {
    const SdBusPtr bus = connect();
    SdBusError error;
    const int result = sd_bus_call_method(bus.get(), "org.freedesktop.DBus", "/org/freedesktop/DBus",
                                          "org.freedesktop.DBus", "RequestName", error.out(), nullptr, "su", kName, 0U);
    return result < 0 ? text(*error.get()) : "owner";
}

}  // namespace kestrav
