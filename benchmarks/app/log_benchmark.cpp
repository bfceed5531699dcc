// The log as an update uses it: each line crosses from the update's thread, is appended, scrolled to and painted before
// the next one. Ten times the lines may take at most twelve times the time.

#include <QApplication>
#include <benchmark/benchmark.h>

#include "app/qt/LogTextEdit.h"
#include "app/qt/LogTextOutlet.h"
#include "app/qt/MainWindow.h"

namespace kestrav {
namespace {

constexpr std::string_view kLine = "Loaded icon file: /home/somebody/firmware.fds with 200000 bytes.\r\n";

void fillTheLog(benchmark::State& state) {
    for (auto _ : state) {
        MainWindow window;
        LogTextOutlet log(*dynamic_cast<LogTextEdit*>(window.findChildren<QPlainTextEdit*>().first()));
        window.whileBusy([&] {
            for (std::int64_t line = 0; line < state.range(0); ++line) {
                benchmark::DoNotOptimize(log.append(kLine));
                log.scrollToEndOfDocument();
            }
        });
    }
    state.SetComplexityN(state.range(0));
}
BENCHMARK(fillTheLog)
    ->Arg(1000)
    ->Arg(10000)
    ->Arg(100000)
    ->Unit(benchmark::kMillisecond)
    ->MeasureProcessCPUTime()
    ->Complexity();

}  // namespace
}  // namespace kestrav

int main(int argc, char* argv[]) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
