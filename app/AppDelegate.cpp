#include "app/AppDelegate.h"

#include <cstdio>
#include <cstdlib>
#include <exception>

#include "app/Alerts.h"
#include "app/MainView.h"
#include "app/ManagedObjectContext.h"
#include "base/SystemLog.h"
#include "command/HelperInstallation.h"

namespace kestrav {

AppDelegate::AppDelegate(ApplicationServices services) : services_(std::move(services)) {}

AppDelegate::~AppDelegate() = default;

void AppDelegate::applicationDidFinishLaunching() {
    try {
        // The prompt may stand for minutes; the window is there already and has to look alive.
        services_.view.whileBusy([this] { blessHelper(); });
    } catch (const std::exception& error) {
        services_.alerts.runModal({std::string("Authorization failure: ") + error.what(), {}, {}});
        std::exit(1);
    }
}

bool AppDelegate::blessHelper() {
    return services_.installation.blessHelper(authRef_);
}

void AppDelegate::SignalHandler(int /*signal*/) {
    // The stream's address is what has always been shown here; whoever watches for this output waits for both.
    services_.console << static_cast<void*>(stderr) << ' ' << "\nInterrupted.\n" << std::endl;
    std::exit(0);
}

void AppDelegate::saveAction() {
    ManagedObjectContext& context = *managedObjectContext();
    if (!context.commitEditing()) services_.log.write("AppDelegate unable to commit editing before saving");
    if (!context.hasChanges()) return;
    if (const auto error = context.save()) services_.alerts.presentError(*error);
}

UndoManager& AppDelegate::windowWillReturnUndoManager() {
    return managedObjectContext()->undoManager();
}

TerminateReply AppDelegate::applicationShouldTerminate() {
    ManagedObjectContext& context = *managedObjectContext();
    if (!context.commitEditing()) {
        services_.log.write("AppDelegate unable to commit editing to terminate");
        return TerminateReply::cancel;
    }
    if (!context.hasChanges()) return TerminateReply::now;
    if (const auto error = context.save()) return quitWithoutSaving(*error);
    return TerminateReply::now;
}

TerminateReply AppDelegate::quitWithoutSaving(const ApplicationError& error) {
    if (services_.alerts.presentError(error)) return TerminateReply::cancel;
    const std::int32_t response =
        services_.alerts.runModal({"Could not save changes while quitting. Quit anyway?",
                                   "Quitting now will lose any changes you have made since the last successful save",
                                   {"Quit anyway", "Cancel"}});
    // The wrong way round on purpose: people who use it know the buttons as they are.
    return response == Alerts::kFirstButtonReturn ? TerminateReply::cancel : TerminateReply::now;
}

}  // namespace kestrav
