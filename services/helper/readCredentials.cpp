#include "services/helper/readCredentials.h"

#include <string_view>

namespace kestrav {
namespace {

int readInto(sd_bus_message* message, Credentials& credentials) {
    int result = sd_bus_message_enter_container(message, 'a', "{sv}");
    while (result > 0 && (result = sd_bus_message_enter_container(message, 'e', "sv")) > 0) {
        const char* name = nullptr;
        std::uint32_t number = 0;
        result = sd_bus_message_read(message, "s", &name);
        const bool isUser = result > 0 && std::string_view(name) == "UnixUserID";
        const bool isProcess = result > 0 && std::string_view(name) == "ProcessID";
        if (result > 0) {
            result = isUser || isProcess ? sd_bus_message_read(message, "v", "u", &number)
                                         : sd_bus_message_skip(message, "v");
        }
        if (isUser && result > 0) credentials.uid = number;
        if (isProcess && result > 0) credentials.process = number;
        if (result >= 0) result = sd_bus_message_exit_container(message);
    }
    return result;
}

}  // namespace

Credentials readCredentials(sd_bus_message* answer) {
    Credentials credentials;
    return readInto(answer, credentials) < 0 ? Credentials() : credentials;
}

}  // namespace kestrav
