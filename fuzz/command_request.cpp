// Requests as they come over the wire. Where they are cut must not matter, and what the service understands of one is
// what it is told again when that is written down anew.
//
// The input's first byte says how it is cut, the rest is what arrives.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <variant>

#include "base/stopProcess.h"
#include "json/tree/dataWithJSONObject.h"
#include "json/tree/readJSON.h"
#include "services/commandd/RequestScan.h"
#include "services/commandd/readRequest.h"

namespace kestrav {
namespace {

using State = RequestScan::State;

State scannedAtOnce(std::string_view bytes) {
    RequestScan scan;
    return scan.take(bytes);
}

State scannedInPieces(std::string_view bytes, std::size_t piece) {
    RequestScan scan;
    while (!bytes.empty()) {
        scan.take(bytes.substr(0, piece));
        require(scan.take({}) == scan.state());
        bytes.remove_prefix(std::min(piece, bytes.size()));
    }
    return scan.state();
}

void checkWrittenAnew(const CommandLine& request) {
    Tree arguments = Tree::list();
    for (const std::string& argument : request.arguments)
        arguments.append(Tree(argument));
    Tree map = Tree::map();
    map.setMember("command", Tree(request.command));
    map.setMember("arguments", std::move(arguments));
    const std::string bytes = dataWithJSONObject(map);
    require(scannedAtOnce(bytes) == State::complete);
    require(scannedAtOnce(std::string_view(bytes).substr(0, bytes.size() - 1)) == State::incomplete);
    const auto again = readRequest(bytes);
    require(again && again.value().command == request.command && again.value().arguments == request.arguments);
}

void check(std::size_t piece, std::string_view bytes) {
    const State state = scannedAtOnce(bytes);
    require(scannedInPieces(bytes, piece) == state);
    const auto request = readRequest(bytes);
    if (!request) return require(!request.problem().sentence.empty());
    // Whatever is understood has come whole, unless white space stands before it, which the wire does not take.
    require(state == (bytes.front() == '{' ? State::complete : State::noObject));
    checkWrittenAnew(request.value());
}

}  // namespace
}  // namespace kestrav

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    kestrav::check(std::size_t{data[0]} % 16 + 1, {reinterpret_cast<const char*>(data) + 1, size - 1});
    return 0;
}
