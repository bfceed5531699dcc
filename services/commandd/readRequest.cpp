#include "services/commandd/readRequest.h"

#include "json/tree/readJSON.h"

namespace kestrav {
namespace {

/// The updater sends four arguments at most; a list that is much longer isn't worth its memory.
constexpr std::size_t kMostArguments = 64;

/// The members of an object as they stand in its text. The reader keeps the last of several with the same name, and
/// another program that looks at the same request might keep the first.
std::size_t writtenMembers(std::string_view object) {
    std::size_t depth = 0;
    std::size_t commas = 0;
    bool inText = false;
    for (std::size_t i = 0; i < object.size(); ++i) {
        const char byte = object[i];
        if (byte == '"') inText = !inText;
        if (inText && byte == '\\') ++i;
        if (inText) continue;
        if (byte == '{' || byte == '[') ++depth;
        if (byte == '}' || byte == ']') --depth;
        if (byte == ',' && depth == 1) ++commas;
    }
    return commas + 1;
}

Problem notARequest() {
    return refused("a request has exactly the members \"command\", a text, and \"arguments\", a list of texts.");
}

}  // namespace

Outcome<CommandLine> readRequest(std::string_view bytes) {
    const auto document = readJSON(bytes);
    if (const auto* error = std::get_if<ReadError>(&document)) {
        return refused("the request is not JSON, which shows at byte " + std::to_string(error->offset) + ".");
    }
    const Tree& request = std::get<Tree>(document);
    if (request.size() > 0 && writtenMembers(bytes) != request.size())
        return refused("a member comes twice in the request.");
    const Tree* command = request.member("command");
    const Tree* arguments = request.member("arguments");
    if (request.size() != 2 || command == nullptr || arguments == nullptr) return notARequest();
    if (!command->isText() || !arguments->isList()) return notARequest();
    if (arguments->size() > kMostArguments) return refused("the request has too many arguments.");
    CommandLine read{std::string(*command->text()), {}};
    for (std::size_t i = 0; i < arguments->size(); ++i) {
        const auto text = arguments->element(i).text();
        if (!text) return notARequest();
        read.arguments.emplace_back(*text);
    }
    return read;
}

}  // namespace kestrav
