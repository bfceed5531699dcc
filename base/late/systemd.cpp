// What the front ends call of libsystemd, by its own names.

#include <cstdarg>
#include <systemd/sd-bus.h>
#include <systemd/sd-login.h>

#include "base/late/LateLibrary.h"

namespace {

constexpr kestrav::LateLibrary kLibrary("libsystemd.so.0");

}  // namespace

int sd_bus_add_match_async(sd_bus* bus, sd_bus_slot** slot, const char* match, sd_bus_message_handler_t callback,
                           sd_bus_message_handler_t installed, void* data) {
    return kLibrary.function<decltype(sd_bus_add_match_async)>("sd_bus_add_match_async")(bus, slot, match, callback,
                                                                                         installed, data);
}

int sd_bus_call(sd_bus* bus, sd_bus_message* message, uint64_t microseconds, sd_bus_error* error,
                sd_bus_message** reply) {
    return kLibrary.function<decltype(sd_bus_call)>("sd_bus_call")(bus, message, microseconds, error, reply);
}

int sd_bus_call_async(sd_bus* bus, sd_bus_slot** slot, sd_bus_message* message, sd_bus_message_handler_t callback,
                      void* data, uint64_t microseconds) {
    return kLibrary.function<decltype(sd_bus_call_async)>("sd_bus_call_async")(bus, slot, message, callback, data,
                                                                               microseconds);
}

sd_bus* sd_bus_close_unref(sd_bus* bus) {
    return kLibrary.function<decltype(sd_bus_close_unref)>("sd_bus_close_unref")(bus);
}

int sd_bus_get_events(sd_bus* bus) {
    return kLibrary.function<decltype(sd_bus_get_events)>("sd_bus_get_events")(bus);
}

int sd_bus_get_fd(sd_bus* bus) {
    return kLibrary.function<decltype(sd_bus_get_fd)>("sd_bus_get_fd")(bus);
}

int sd_bus_get_timeout(sd_bus* bus, uint64_t* microseconds) {
    return kLibrary.function<decltype(sd_bus_get_timeout)>("sd_bus_get_timeout")(bus, microseconds);
}

int sd_bus_message_append_strv(sd_bus_message* message, char** words) {
    return kLibrary.function<decltype(sd_bus_message_append_strv)>("sd_bus_message_append_strv")(message, words);
}

int sd_bus_message_enter_container(sd_bus_message* message, char type, const char* contents) {
    return kLibrary.function<decltype(sd_bus_message_enter_container)>("sd_bus_message_enter_container")(message, type,
                                                                                                         contents);
}

const sd_bus_error* sd_bus_message_get_error(sd_bus_message* message) {
    return kLibrary.function<decltype(sd_bus_message_get_error)>("sd_bus_message_get_error")(message);
}

int sd_bus_message_new_method_call(sd_bus* bus, sd_bus_message** message, const char* destination, const char* path,
                                   const char* interface, const char* member) {
    return kLibrary.function<decltype(sd_bus_message_new_method_call)>("sd_bus_message_new_method_call")(
        bus, message, destination, path, interface, member);
}

int sd_bus_message_set_allow_interactive_authorization(sd_bus_message* message, int allowed) {
    return kLibrary.function<decltype(sd_bus_message_set_allow_interactive_authorization)>(
        "sd_bus_message_set_allow_interactive_authorization")(message, allowed);
}

sd_bus_message* sd_bus_message_unref(sd_bus_message* message) {
    return kLibrary.function<decltype(sd_bus_message_unref)>("sd_bus_message_unref")(message);
}

int sd_bus_new(sd_bus** bus) {
    return kLibrary.function<decltype(sd_bus_new)>("sd_bus_new")(bus);
}

int sd_bus_process(sd_bus* bus, sd_bus_message** message) {
    return kLibrary.function<decltype(sd_bus_process)>("sd_bus_process")(bus, message);
}

int sd_bus_service_name_is_valid(const char* name) {
    return kLibrary.function<decltype(sd_bus_service_name_is_valid)>("sd_bus_service_name_is_valid")(name);
}

int sd_bus_set_address(sd_bus* bus, const char* address) {
    return kLibrary.function<decltype(sd_bus_set_address)>("sd_bus_set_address")(bus, address);
}

int sd_bus_set_bus_client(sd_bus* bus, int isClient) {
    return kLibrary.function<decltype(sd_bus_set_bus_client)>("sd_bus_set_bus_client")(bus, isClient);
}

sd_bus_slot* sd_bus_slot_unref(sd_bus_slot* slot) {
    return kLibrary.function<decltype(sd_bus_slot_unref)>("sd_bus_slot_unref")(slot);
}

int sd_bus_start(sd_bus* bus) {
    return kLibrary.function<decltype(sd_bus_start)>("sd_bus_start")(bus);
}

int sd_pid_get_owner_uid(pid_t pid, uid_t* uid) {
    return kLibrary.function<decltype(sd_pid_get_owner_uid)>("sd_pid_get_owner_uid")(pid, uid);
}

int sd_pid_get_session(pid_t pid, char** session) {
    return kLibrary.function<decltype(sd_pid_get_session)>("sd_pid_get_session")(pid, session);
}

int sd_uid_get_display(uid_t uid, char** session) {
    return kLibrary.function<decltype(sd_uid_get_display)>("sd_uid_get_display")(uid, session);
}

// What takes any number of arguments hands them on as a list.

int sd_bus_message_append(sd_bus_message* message, const char* types, ...) {
    std::va_list values;
    va_start(values, types);
    const int result =
        kLibrary.function<decltype(sd_bus_message_appendv)>("sd_bus_message_appendv")(message, types, values);
    va_end(values);
    return result;
}

int sd_bus_message_read(sd_bus_message* message, const char* types, ...) {
    std::va_list values;
    va_start(values, types);
    const int result =
        kLibrary.function<decltype(sd_bus_message_readv)>("sd_bus_message_readv")(message, types, values);
    va_end(values);
    return result;
}

int sd_bus_call_method(sd_bus* bus, const char* destination, const char* path, const char* interface,
                       const char* member, sd_bus_error* error, sd_bus_message** reply, const char* types, ...) {
    std::va_list values;
    va_start(values, types);
    const int result = kLibrary.function<decltype(sd_bus_call_methodv)>("sd_bus_call_methodv")(
        bus, destination, path, interface, member, error, reply, types, values);
    va_end(values);
    return result;
}
