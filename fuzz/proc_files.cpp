// What is read of /proc about processes of others, who choose their names, their files' names and much more. Each
// reader is compared with another way of reading the same.
//
// The input's first byte says which file the rest is: 0 stat, 1 status, 2 a line of maps, 3 a line of net/tcp, 4 any
// file that is read by lines.

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <iterator>
#include <sstream>
#include <string>
#include <string_view>
#include <sys/mman.h>
#include <sys/sysmacros.h>
#include <unistd.h>
#include <vector>

#include "base/TcpTableLine.h"
#include "base/UniqueFd.h"
#include "base/fieldIn.h"
#include "base/startTimeIn.h"
#include "base/stopProcess.h"
#include "services/asker/areAll.h"
#include "services/disk/forEachLine.h"
#include "services/disk/isMappingOf.h"

namespace kestrav {
namespace {

void checkStat(std::string_view bytes) {
    startTimeIn(bytes);
    // A process may have any name, and its start must not be a number in that.
    std::string line = "1 (" + std::string(bytes) + ") S";
    for (int field = 4; field < 22; ++field)
        line += ' ' + std::to_string(field);
    require(startTimeIn(line + " 4711 0 0\n") == 4711);
}

void checkStatus(std::string_view bytes) {
    const std::string text(bytes);
    std::istringstream lines(text);
    std::string expected;
    for (std::string line; std::getline(lines, line);) {
        if (!line.starts_with("Uid:")) continue;
        const std::size_t start = line.find_first_not_of(" \t", 4);
        if (start != std::string::npos) expected = line.substr(start);
        break;
    }
    const std::string_view field = fieldIn(text, "Uid:");
    require(field == expected);
    if (!areAll(field, 0)) return;
    std::istringstream numbers{std::string(field)};
    const std::vector<std::string> words{std::istream_iterator<std::string>(numbers), {}};
    require(words.size() == 4 && std::ranges::all_of(words, [](const std::string& word) {
                return word.find_first_not_of('0') == std::string::npos;
            }));
}

void checkMapping(std::string_view line) {
    const std::vector<dev_t> devices{makedev(8, 17)};
    if (!isMappingOf(line, devices)) return;
    // Three words of any form, then the device.
    std::size_t at = 0;
    for (int word = 0; word < 3; ++word)
        at = line.find(' ', at) + 1;
    unsigned majorNumber = 0;
    unsigned minorNumber = 0;
    const std::string device(line.substr(at));
    require(std::sscanf(device.c_str(), "%x:%x", &majorNumber, &minorNumber) == 2);
    require(makedev(majorNumber, minorNumber) == devices.front());
}

void checkSocket(std::string_view line) {
    const auto socket = TcpTableLine::parse(line);
    if (!socket) return;
    char state[16];
    std::snprintf(state, sizeof state, "%02X", socket->state);
    const auto again = TcpTableLine::parse("0: " + socket->local + ' ' + socket->remote + ' ' + state +
                                           " 00000000:00000000 00:00000000 00000000 " + std::to_string(socket->uid) +
                                           " 0 " + std::to_string(socket->inode) + " 1");
    require(again && again->local == socket->local && again->remote == socket->remote);
    require(again->state == socket->state && again->uid == socket->uid && again->inode == socket->inode);
}

void checkLines(std::string_view bytes) {
    const UniqueFd file(::memfd_create("lines", MFD_CLOEXEC));
    require(file && ::write(file.get(), bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size()));
    std::string joined;
    forEachLine("/proc/self/fd/" + std::to_string(file.get()), [&joined](std::string_view line) {
        require(line.size() <= 16384 && line.find('\n') == std::string_view::npos);
        joined.append(line) += '\n';
        return true;
    });
    std::string expected(bytes);
    if (!expected.empty() && expected.back() != '\n') expected += '\n';
    require(joined == expected || bytes.size() > 16384);
}

void check(std::uint8_t which, std::string_view bytes) {
    constexpr void (*kChecks[])(std::string_view) = {checkStat, checkStatus, checkMapping, checkSocket, checkLines};
    kChecks[which % std::size(kChecks)](bytes);
}

}  // namespace
}  // namespace kestrav

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    kestrav::check(data[0], {reinterpret_cast<const char*>(data) + 1, size - 1});
    return 0;
}
