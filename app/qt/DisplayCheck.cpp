#include "app/qt/DisplayCheck.h"

#include <QtGlobal>
#include <cstdio>
#include <cstdlib>

namespace kestrav {
namespace {

void explain(QtMsgType type, const QMessageLogContext& /*context*/, const QString& /*text*/) {
    // The toolkit prints warnings before the fatal message. Only that last one is replaced by a sentence.
    if (type != QtFatalMsg) return;
    std::fputs("kestrav: There is no display to open the window on. Start it from a desktop session.\n", stderr);
    std::_Exit(1);
}

}  // namespace

DisplayCheck::DisplayCheck() {
    qInstallMessageHandler(explain);
}

DisplayCheck::~DisplayCheck() {
    qInstallMessageHandler(nullptr);
}

}  // namespace kestrav
