#include "app/AppDelegate.h"

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <ostream>

#include "app/Alerts.h"
#include "app/MainView.h"
#include "app/ManagedObjectContext.h"
#include "base/SystemLog.h"
#include "command/HelperInstallation.h"

namespace kestrav {

AppDelegate::AppDelegate(ApplicationServices services)
    : services_(std::move(services)),
      stack_(services_.alerts, services_.resources, services_.applicationSupport) {}

void AppDelegate::applicationDidFinishLaunching() {
    try {
        // A person may take minutes to answer the password prompt, and the window has to be painted meanwhile.
        services_.view.whileAsking([this] { blessHelper(); });
    } catch (const std::exception& error) {
        // frozen: F68
        services_.alerts.runModal({std::string("Authorization failure: ") + error.what(), {}, {}});
        std::exit(1);
    }
}

bool AppDelegate::blessHelper() {
    return services_.installation.blessHelper(authRef_);
}

void AppDelegate::SignalHandler(int /*signal*/) {
    // The stream's address has always been printed before the text; programs that read this output expect both.
    // frozen: F69
    services_.console << static_cast<void*>(stderr) << ' ' << "\nInterrupted.\n" << std::endl;
    std::exit(0);
}

void AppDelegate::saveAction() {
    ManagedObjectContext& context = *managedObjectContext();
    // frozen: F71
    if (!context.commitEditing()) services_.log.write("AppDelegate unable to commit editing before saving");
    if (!context.hasChanges()) return;
    if (const auto saved = context.save(); !saved) services_.alerts.presentError(applicationError(saved.problem()));
}

UndoManager& AppDelegate::windowWillReturnUndoManager() {
    return managedObjectContext()->undoManager();
}

// frozen: F70
TerminateReply AppDelegate::applicationShouldTerminate() {
    ManagedObjectContext& context = *managedObjectContext();
    if (!context.commitEditing()) {
        services_.log.write("AppDelegate unable to commit editing to terminate");
        return TerminateReply::cancel;
    }
    if (!context.hasChanges()) return TerminateReply::now;
    if (const auto saved = context.save(); !saved) return quitWithoutSaving(applicationError(saved.problem()));
    return TerminateReply::now;
}

TerminateReply AppDelegate::quitWithoutSaving(const ApplicationError& error) {
    if (services_.alerts.presentError(error)) return TerminateReply::cancel;
    const Alerts& words = services_.alerts;
    const std::int32_t response = services_.alerts.runModal(
        {words.translate("AppDelegate", "Could not save changes while quitting. Quit anyway?",
                         "Quit without saves error question message"),
         words.translate("AppDelegate",
                         "Quitting now will lose any changes you have made since the last successful save",
                         "Quit without saves error question info"),
         {words.translate("AppDelegate", "Quit anyway", "Quit anyway button title"),
          words.translate("AppDelegate", "Cancel", "Cancel button title")}});
    // The answers are the wrong way round on purpose: people who use the application know the buttons as they are.
    // frozen: F60
    return response == Alerts::kFirstButtonReturn ? TerminateReply::cancel : TerminateReply::now;
}

}  // namespace kestrav
