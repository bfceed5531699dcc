#pragma once

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <optional>
#include <sstream>
#include <string>
#include <sys/stat.h>
#include <vector>

#include "tests/places.h"
#include "tests/sandbox/Sandbox.h"
#include "tests/sandbox/runProgram.h"

namespace kestrav {

inline constexpr const char* kOwn = "/usr/libexec/kestrav";
inline constexpr const char* kBless = "/usr/libexec/kestrav/kestrav-bless";
inline constexpr const char* kSource = "/usr/libexec/kestrav/kestrav-helper";
inline constexpr const char* kProgram = "/usr/local/libexec/com.corvatel.KestravHelper";
inline constexpr const char* kPolicy = "/etc/dbus-1/system.d/com.corvatel.KestravHelper.conf";
inline constexpr const char* kUnit = "/etc/systemd/system/com.corvatel.KestravHelper.service";
inline constexpr const char* kRules = "/etc/udev/rules.d/60-kestrav.rules";
inline constexpr const char* kActivation = "/usr/local/share/dbus-1/system-services/com.corvatel.KestravHelper.service";
inline constexpr const char* kRight = "/usr/share/polkit-1/actions/com.corvitel.KestravHelper.policy";
inline constexpr const char* kUnfinished = "/usr/local/libexec/.com.corvatel.KestravHelper.unfinished";

inline std::string contents(const std::filesystem::path& path) {
    std::ostringstream text;
    text << std::ifstream(path).rdbuf();
    return text.str();
}

inline void write(const std::filesystem::path& path, const std::string& text) {
    std::ofstream(path) << text;
}

inline mode_t modeOf(const char* path) {
    struct stat status {};
    return ::lstat(path, &status) == 0 ? status.st_mode & 07777 : 0;
}

/// What a file is, so that any change of it shows.
inline std::string identity(const std::filesystem::path& path) {
    struct stat status {};
    if (::lstat(path.c_str(), &status) != 0) return "none";
    return std::to_string(status.st_ino) + " " + std::to_string(status.st_mode) + " " +
           std::to_string(status.st_mtim.tv_sec) + "." + std::to_string(status.st_mtim.tv_nsec);
}

class Bless : public testing::Test {
  protected:
    void SetUp() override {
        if (!Sandbox::isPossible()) GTEST_SKIP() << "needs root";
        room_.emplace();
        std::filesystem::create_directory(kOwn);
        std::filesystem::copy_file(places::ofProgram("kestrav-bless"), kBless);
        write(kSource, "the helper's program");
    }

    static ProgramRun bless(const std::string& operation, const ProgramOptions& options = {}) {
        return runProgram({kBless, operation}, options);
    }

    static std::vector<std::filesystem::path> leftOver() {
        std::vector<std::filesystem::path> found;
        for (const char* folder :
             {"/etc/dbus-1/system.d", "/etc/systemd/system", "/etc/udev/rules.d", "/usr/local/libexec",
              "/usr/local/share/dbus-1/system-services", "/usr/share/polkit-1/actions"}) {
            if (!std::filesystem::exists(folder)) continue;
            for (const auto& entry : std::filesystem::directory_iterator(folder)) {
                if (entry.path().filename().string().starts_with(".")) found.push_back(entry.path());
            }
        }
        return found;
    }

    std::optional<Sandbox> room_;
};

}  // namespace kestrav
