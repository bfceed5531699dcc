#pragma once

#include <iostream>
#include <sstream>

#include "app/AppDelegate.h"
#include "app/PersistentStore.h"
#include "command/HelperInstallation.h"
#include "tests/TemporaryFolder.h"
#include "tests/app/fakes/FakeAlerts.h"
#include "tests/app/fakes/FakeMainView.h"
#include "tests/app/fakes/FakeResources.h"
#include "tests/base/RecordingLog.h"
#include "tests/command/fakes/FakeAuthorization.h"

namespace kestrav {

/// A delegate whose person, installer and window are held in memory, and whose data is in a folder of its own.
struct DelegateOnFakes {
    explicit DelegateOnFakes(std::ostream& console = std::cout)
        : delegate({installation, view, alerts, resources, log, folder.path(), console}) {}

    std::filesystem::path storeFile() const { return folder.path() / "com.corvatel.Kestrav" / "CocoaAppCD.storedata"; }

    /// What another process would find in the store.
    PersistentStore::Records savedRecords() const {
        PersistentStore store(storeFile(), "Kestrav");
        if (const auto opened = store.open(); !opened) throw std::runtime_error(opened.problem().sentence);
        return store.records();
    }

    /// Nothing can be saved from now on, for root neither.
    void blockTheStore() const {
        std::filesystem::remove(storeFile());
        std::filesystem::create_directories(storeFile() / "in the way");
    }

    TemporaryFolder folder;
    FakeMainView view;
    FakeAlerts alerts;
    FakeResources resources;
    RecordingLog log;
    FakeAuthorization authorization;
    HelperInstallation installation{authorization, log};
    AppDelegate delegate;
};

}  // namespace kestrav
