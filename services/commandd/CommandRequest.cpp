#include "services/commandd/CommandRequest.h"

#include "json/Reader.h"

namespace kestrav {
namespace {

/// The updater sends four arguments at most; a list that is much longer isn't worth its memory.
constexpr std::size_t mostArguments = 64;

Problem notARequest() {
    return refused("a request has exactly the members \"command\", a text, and \"arguments\", a list of texts.");
}

}  // namespace

Outcome<CommandRequest> readRequest(std::string_view bytes) {
    const auto document = readJSON(bytes);
    if (const auto* error = std::get_if<ReadError>(&document)) {
        return refused("the request is not JSON, which shows at byte " + std::to_string(error->offset) + ".");
    }
    const Tree& request = std::get<Tree>(document);
    const Tree* command = request.member("command");
    const Tree* arguments = request.member("arguments");
    if (request.size() != 2 || command == nullptr || arguments == nullptr) return notARequest();
    if (!command->isText() || !arguments->isList()) return notARequest();
    if (arguments->size() > mostArguments) return refused("the request has too many arguments.");
    CommandRequest read{std::string(*command->text()), {}};
    for (std::size_t i = 0; i < arguments->size(); ++i) {
        const auto text = arguments->element(i).text();
        if (!text) return notARequest();
        read.arguments.emplace_back(*text);
    }
    return read;
}

}  // namespace kestrav
