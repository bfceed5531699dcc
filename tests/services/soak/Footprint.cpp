#include "tests/services/soak/Footprint.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <sys/prctl.h>
#include <unistd.h>
#include <vector>

#include "tests/childrenOf.h"
#include "tests/eventually.h"
#include "tests/sandbox/ChildProcess.h"

namespace kestrav {
namespace {

namespace fs = std::filesystem;

std::uint64_t statusNumber(const fs::path& process, const std::string& name) {
    std::ifstream status(process / "status");
    for (std::string word; status >> word;) {
        std::uint64_t number = 0;
        if (word == name + ':' && status >> number) return number;
    }
    return 0;
}

}  // namespace

Footprint Footprint::of(pid_t process) {
    const fs::path folder = "/proc/" + std::to_string(process);
    Footprint now;
    const fs::directory_iterator table(folder / "fd");
    now.descriptors = static_cast<std::size_t>(std::distance(begin(table), end(table)));
    now.children = childrenOf(process).size();
    now.kibibytes = statusNumber(folder, "RssAnon");
    return now;
}

Footprint Footprint::ofIdle(pid_t process, std::size_t descriptors) {
    Footprint now;
    eventually([&] {
        now = of(process);
        return now.children == 0 && now.descriptors <= descriptors;
    });
    return now;
}

std::string Footprint::text() const {
    return std::to_string(descriptors) + " descriptors, " + std::to_string(kibibytes) + " KiB, " +
           std::to_string(children) + " children";
}

Soak soak(const std::string& way, pid_t service, std::size_t exchanges,
          const std::function<std::size_t(std::size_t count)>& exchange) {
    const auto begun = std::chrono::steady_clock::now();
    Soak result;
    result.atStart = Footprint::of(service);
    std::cout << way << ", at the start: " << result.atStart.text() << std::endl;
    for (int tenth = 1; tenth <= 10; ++tenth) {
        result.failures += exchange(exchanges / 10);
        result.atEnd = Footprint::ofIdle(service, result.atStart.descriptors);
        const std::uint64_t now = result.atEnd.kibibytes;
        if (tenth <= 5) result.grown = std::max(result.grown, now);
        if (tenth > 5) result.later = tenth == 6 ? now : std::min(result.later, now);
        const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - begun;
        std::cout << way << ", after " << exchanges / 10 * static_cast<std::size_t>(tenth) << " exchanges and "
                  << static_cast<int>(taken.count()) << " s: " << result.atEnd.text() << std::endl;
    }
    return result;
}

bool isRight(bool is, const std::string& answer) {
    if (!is) std::cout << "Wrong: " << (answer.empty() ? "no answer" : answer.substr(0, 200)) << std::endl;
    return is;
}

std::size_t inProcesses(unsigned count, const std::function<std::size_t(unsigned number)>& task) {
    std::vector<ChildProcess> processes;
    for (unsigned number = 0; number < count; ++number) {
        const pid_t pid = ::fork();
        if (pid == 0) {
            ::prctl(PR_SET_PDEATHSIG, SIGKILL);
            try {
                const std::size_t failures = task(number);
                ::_exit(failures > 250 ? 250 : static_cast<int>(failures));
            } catch (const std::exception& error) {
                std::cerr << error.what() << '\n';
                ::_exit(255);
            }
        }
        processes.emplace_back(pid);
    }
    std::size_t failures = 0;
    for (ChildProcess& process : processes) {
        const int status = process.wait();
        failures += status < 0 || status > 250 ? 1000 : static_cast<std::size_t>(status);
    }
    return failures;
}

}  // namespace kestrav
