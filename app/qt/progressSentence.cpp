#include "app/qt/progressSentence.h"

#include <QCoreApplication>
#include <QLocale>
#include <algorithm>
#include <limits>

#include "base/stopProcess.h"

namespace kestrav {
namespace {

QString phaseWords(WritePhase phase) {
    switch (phase) {
        case WritePhase::asking:
            return QCoreApplication::translate("Progress", "Asking for an administrator's consent.");
        case WritePhase::unmounting:
            return QCoreApplication::translate("Progress", "Unmounting.");
        case WritePhase::reading:
            return QCoreApplication::translate("Progress", "Reading the image.");
        case WritePhase::writing:
            return QCoreApplication::translate("Progress", "Writing.");
        case WritePhase::flushing:
            return QCoreApplication::translate("Progress", "Writing: waiting until the accessory has kept it.");
        case WritePhase::checking:
            return QCoreApplication::translate("Progress", "Checking: reading back and comparing.");
        case WritePhase::done:
            return QCoreApplication::translate("Progress", "Done: waiting for the service's answer.");
    }
    stopProcess();
}

/// A board may say anything.
QString size(std::uint64_t bytes) {
    constexpr auto kMost = static_cast<std::uint64_t>(std::numeric_limits<qint64>::max());
    return QLocale().formattedDataSize(static_cast<qint64>(std::min(bytes, kMost)), 1, QLocale::DataSizeSIFormat);
}

}  // namespace

ProgressSentence progressSentence(const WriteState& state) {
    ProgressSentence sentence{phaseWords(state.phase), {}};
    if (state.of == 0) return sentence;
    const double part = std::min(1.0, static_cast<double>(state.done) / static_cast<double>(state.of));
    sentence.share = QCoreApplication::translate("Progress", "%1 %, %2 of %3")
                         .arg(static_cast<int>(100 * part))
                         .arg(size(std::min(state.done, state.of)), size(state.of));
    return sentence;
}

}  // namespace kestrav
