#include "services/asker/polkitAnswer.h"

#include <string>
#include <string_view>
#include <utility>

#include "base/shownText.h"
#include "services/asker/Consent.h"

namespace kestrav {
namespace {

Problem couldNotDecide(std::string_view why) {
    // Some of its sentences have their full stop.
    while (why.ends_with('.'))
        why.remove_suffix(1);
    std::string sentence = "the authorization service (polkit) could not decide: " + shownText(why) + ".";
    // Under hidepid=2 polkit sees no process of others, and names the file alone.
    if (why.find("/proc/") != std::string_view::npos)
        sentence += " It can't look at the program that asks; /proc must not be hidden (hidepid) from polkitd.";
    return refused(std::move(sentence));
}

}  // namespace

Outcome<void> polkitAnswer(sd_bus_message* answer) {
    if (const sd_bus_error* error = sd_bus_message_get_error(answer); error != nullptr) {
        return couldNotDecide(error->message != nullptr ? error->message : error->name);
    }
    int authorized = 0;
    int challenge = 0;
    if (sd_bus_message_enter_container(answer, 'r', "bba{ss}") < 0 ||
        sd_bus_message_read(answer, "bb", &authorized, &challenge) < 0) {
        return refused("the authorization service (polkit) gave an answer that can't be understood.");
    }
    if (authorized != 0) return {};
    if (challenge != 0) {
        return refused("an administrator has to agree, and there is no way to ask for a password here.");
    }
    return deniedByAPerson();
}

}  // namespace kestrav
