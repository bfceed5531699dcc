// The log as an update uses it: each line crosses from the update's thread, is appended and scrolled to; what comes
// within one picture of the screen is painted together. Ten times the lines may take at most twelve times the time. A
// line may take 0.3 ms, 100,000 may take 30 s and 90 MB.

#include <QApplication>
#include <algorithm>
#include <benchmark/benchmark.h>
#include <fstream>

#include "app/qt/LogTextEdit.h"
#include "app/qt/LogTextOutlet.h"
#include "app/qt/MainWindow.h"

namespace kestrav {
namespace {

constexpr std::string_view kLine = "Loaded icon file: /home/somebody/firmware.fds with 200000 bytes.\r\n";

LogTextEdit& logOf(const MainWindow& window) {
    const auto texts = window.findChildren<QPlainTextEdit*>();
    const auto isLog = [](const QPlainTextEdit* text) { return dynamic_cast<const LogTextEdit*>(text) != nullptr; };
    return *dynamic_cast<LogTextEdit*>(*std::ranges::find_if(texts, isLog));
}

/// MB of memory that the process has of its own.
double residentMegabytes() {
    std::ifstream statm("/proc/self/statm");
    double size = 0;
    double resident = 0;
    statm >> size >> resident;
    return resident * 4096 / 1e6;
}

void fillTheLog(benchmark::State& state) {
    double more = 0;
    for (auto _ : state) {
        MainWindow window;
        QCoreApplication::processEvents();
        const double before = residentMegabytes();
        LogTextOutlet log(logOf(window));
        window.whileBusy([&] {
            for (std::int64_t line = 0; line < state.range(0); ++line) {
                benchmark::DoNotOptimize(log.append(kLine));
                log.scrollToEndOfDocument();
            }
        });
        more = residentMegabytes() - before;
    }
    state.counters["MB"] = more;
    state.SetComplexityN(state.range(0));
}
BENCHMARK(fillTheLog)
    ->Arg(1000)
    ->Arg(10000)
    ->Arg(100000)
    ->Unit(benchmark::kMillisecond)
    ->MeasureProcessCPUTime()
    ->Complexity();

/// What it would cost to paint each line by itself: the peer.
void paintEachLine(benchmark::State& state) {
    for (auto _ : state) {
        MainWindow window;
        LogTextEdit& log = logOf(window);
        QCoreApplication::processEvents();
        for (std::int64_t line = 0; line < state.range(0); ++line) {
            log.append(kLine);
            log.scrollToEnd();
            log.viewport()->setUpdatesEnabled(true);
            log.viewport()->repaint();
            QCoreApplication::processEvents();
        }
    }
}
BENCHMARK(paintEachLine)->Arg(1000)->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime();

}  // namespace
}  // namespace kestrav

int main(int argc, char* argv[]) {
    // A screen in memory, unless a display is asked for by this variable.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
