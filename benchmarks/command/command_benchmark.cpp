// What runWithCommand costs above the system calls that nobody can do without: socket, connect, write, read, close.
// Both go to the same service, which answers at once, in one run with their repetitions interleaved at random.
// Prints the ratio of the medians; exit status 1 if it is above the limit.

#include <arpa/inet.h>
#include <array>
#include <benchmark/benchmark.h>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <netinet/in.h>
#include <string>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

#include "base/SystemLog.h"
#include "base/UniqueFd.h"
#include "command/CommandService.h"

namespace {

using kestrav::UniqueFd;

constexpr double kLimit = 1.15;
constexpr std::string_view kRequest =
    R"({"command":"dd","arguments":["if=/tmp/image","of=/dev/rdisk2","seek=1536","bs=512"]})";

sockaddr_in loopback(std::uint16_t port) {
    sockaddr_in endpoint{};
    endpoint.sin_family = AF_INET;
    endpoint.sin_port = htons(port);
    endpoint.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return endpoint;
}

/// Answers every connection with the same few bytes, in a process of its own.
class InstantService {
  public:
    InstantService() : listener_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        sockaddr_in here = loopback(0);
        socklen_t length = sizeof here;
        if (::bind(listener_.get(), reinterpret_cast<const sockaddr*>(&here), length) != 0 ||
            ::listen(listener_.get(), 128) != 0 ||
            ::getsockname(listener_.get(), reinterpret_cast<sockaddr*>(&here), &length) != 0)
            std::abort();
        port_ = ntohs(here.sin_port);
        process_ = ::fork();
        if (process_ == 0) serve();
    }
    ~InstantService() {
        ::kill(process_, SIGTERM);
        ::waitpid(process_, nullptr, 0);
    }
    InstantService(const InstantService&) = delete;
    InstantService& operator=(const InstantService&) = delete;

    std::uint16_t port() const { return port_; }

  private:
    [[noreturn]] void serve() const {
        ::prctl(PR_SET_PDEATHSIG, SIGTERM);
        std::array<char, 4096> buffer{};
        for (;;) {
            const UniqueFd peer(::accept(listener_.get(), nullptr, nullptr));
            if (::read(peer.get(), buffer.data(), buffer.size()) > 0) (void)!::write(peer.get(), "done", 4);
        }
    }

    UniqueFd listener_;
    std::uint16_t port_ = 0;
    pid_t process_ = -1;
};

class CountingLog final : public kestrav::SystemLog {
  public:
    void write(std::string_view entry) override { replies += entry == "done" ? 1 : 0; }
    std::int64_t replies = 0;
};

void bareCalls(benchmark::State& state, std::uint16_t port) {
    const sockaddr_in peer = loopback(port);
    std::array<char, 10240> reply{};
    while (state.KeepRunning()) {
        const int fd = ::socket(AF_INET, SOCK_STREAM, 0);
        if (::connect(fd, reinterpret_cast<const sockaddr*>(&peer), sizeof peer) != 0 ||
            ::write(fd, kRequest.data(), kRequest.size()) < 0 || ::read(fd, reply.data(), reply.size()) != 4)
            state.SkipWithError("no answer");
        ::close(fd);
    }
}

void runWithCommand(benchmark::State& state, std::uint16_t port) {
    const std::vector<std::string> arguments{"if=/tmp/image", "of=/dev/rdisk2", "seek=1536", "bs=512"};
    CountingLog log;
    kestrav::CommandService service(log, {.port = port});
    while (state.KeepRunning())
        service.runWithCommand("dd", arguments);
    if (log.replies != static_cast<std::int64_t>(state.iterations())) state.SkipWithError("no answer");
}

/// The console's report, and the medians kept for the ratio.
class MedianReporter final : public benchmark::ConsoleReporter {
  public:
    void ReportRuns(const std::vector<Run>& runs) override {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& run : runs) {
            failed_ = failed_ || run.error_occurred;
            if (run.run_type == Run::RT_Aggregate && run.aggregate_name == "median")
                medians_[run.run_name.function_name] = run.GetAdjustedRealTime();
        }
    }
    bool failed() const { return failed_; }
    double median(const std::string& name) const { return medians_.at(name); }

  private:
    bool failed_ = false;
    std::map<std::string, double> medians_;
};

}  // namespace

int main() {
    const InstantService service;
    // The library takes its settings from a command line alone.
    std::array<std::string, 5> settings{"command_benchmark", "--benchmark_enable_random_interleaving=true",
                                        "--benchmark_repetitions=25", "--benchmark_min_time=0.1",
                                        "--benchmark_report_aggregates_only=true"};
    std::array<char*, 6> arguments{};
    for (std::size_t i = 0; i < settings.size(); ++i)
        arguments[i] = settings[i].data();
    int count = settings.size();
    benchmark::Initialize(&count, arguments.data());
    benchmark::RegisterBenchmark("bareCalls", bareCalls, service.port())->UseRealTime();
    benchmark::RegisterBenchmark("runWithCommand", runWithCommand, service.port())->UseRealTime();

    MedianReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    if (reporter.failed()) return 2;
    const double ratio = reporter.median("runWithCommand") / reporter.median("bareCalls");
    std::printf("runWithCommand / bare calls: %.3f (limit %.2f)\n", ratio, kLimit);
    return ratio <= kLimit ? 0 : 1;
}
