#include "services/gate/BoardNote.h"

#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <span>
#include <string_view>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

#include "base/startTimeIn.h"
#include "base/wholeFile.h"

namespace kestrav {
namespace {

constexpr mode_t kOwnerChanges = 0755;  // a folder that all may look into
constexpr mode_t kOwnerWrites = 0644;   // a file that all may read

/// The folder, made if it is missing; nothing unless it is a folder of this user's that no other can change.
UniqueFd openFolder(const std::filesystem::path& path) {
    if (path.empty()) return {};
    ::mkdir(path.c_str(), kOwnerChanges);
    UniqueFd folder(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    struct stat status {};
    if (!folder || ::fstat(folder.get(), &status) != 0 || status.st_uid != ::geteuid()) return {};
    if ((status.st_mode & (S_IWGRP | S_IWOTH)) != 0) return {};
    // It was made under the service's own mask.
    if ((status.st_mode & 0777U) != kOwnerChanges) ::fchmod(folder.get(), kOwnerChanges);
    return folder;
}

std::string contentsOf(const UniqueFd& file) {
    std::string text(kLongestBoard, '\0');
    const auto got = readAt(file.get(), std::as_writable_bytes(std::span(text)), 0);
    text.resize(got ? got.value() : 0);
    return text;
}

std::string member(std::string_view key, std::uint64_t number) {
    return "\"" + std::string(key) + "\":" + std::to_string(number) + ',';
}

std::string member(std::string_view key, std::string_view word) {
    return "\"" + std::string(key) + "\":\"" + std::string(word) + "\",";
}

std::uint64_t ownStart() {
    const auto line = readWholeFile("/proc/self/stat", kLongestBoard);
    return line ? startTimeIn(line.value()).value_or(0) : 0;
}

/// The process that does it, told from a later one of that number by its start.
std::string thisProcess() {
    return member(kBoardWriterKey, static_cast<std::uint64_t>(::getpid())) + member(kBoardWriterStartKey, ownStart());
}

}  // namespace

BoardNote::BoardNote(const std::filesystem::path& folder, Subject subject)
    : folder_(openFolder(folder)),
      subject_(std::move(subject)),
      file_(subject_.disk + std::string(kBoardFileEnd)),
      writer_(folder_ ? thisProcess() : std::string()),
      begun_(std::time(nullptr)) {}

void BoardNote::ask() {
    if (!lock()) return;
    if (mayBeAskedOver()) post();
    lock_.reset();
}

void BoardNote::begin() {
    isBegun_ = true;
    lock();
}

void BoardNote::enter(WritePhase phase, std::uint64_t bytes) {
    phase_ = phase;
    done_ = 0;
    of_ = bytes;
    if (lock()) post();
}

void BoardNote::advance(std::uint64_t bytes) {
    done_ = bytes;
    if (!folder_ || std::chrono::steady_clock::now() - posted_ < kPause) return;
    if (lock()) post();
}

void BoardNote::end(WriteVerdict verdict) {
    if (!verdict_.empty()) return;
    phase_ = WritePhase::done;
    verdict_ = kWriteVerdictWords.at(static_cast<std::size_t>(verdict));
    if (lock() && (isBegun_ || current().find(writer_) != std::string::npos)) post();
    lock_.reset();
}

/// Whether the disk's board is this note's now. Nobody is waited for.
bool BoardNote::lock() {
    if (lock_) return true;
    if (!folder_) return false;
    // Nobody else may open it: whoever can, can lock it.
    constexpr int kFlags = O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
    UniqueFd file(::openat(folder_.get(), ('.' + subject_.disk + ".lock").c_str(), kFlags, S_IRUSR | S_IWUSR));
    if (!file || ::flock(file.get(), LOCK_EX | LOCK_NB) != 0) return false;
    lock_ = std::move(file);
    return true;
}

void BoardNote::post() {
    posted_ = std::chrono::steady_clock::now();
    if (!replace(text())) ::unlinkat(folder_.get(), file_.c_str(), 0);
}

/// Without a look at the disk below: the board doesn't outlive the computer's run.
bool BoardNote::replace(const std::string& text) const {
    const std::string next = '.' + file_ + ".new";
    constexpr int kFlags = O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
    const UniqueFd file(::openat(folder_.get(), next.c_str(), kFlags, S_IRUSR | S_IWUSR));
    if (!file) return false;
    const bool isWhole =
        ::fchmod(file.get(), kOwnerWrites) == 0 && writeAll(file.get(), std::as_bytes(std::span(text)));
    if (isWhole && ::renameat(folder_.get(), next.c_str(), folder_.get(), file_.c_str()) == 0) return true;
    ::unlinkat(folder_.get(), next.c_str(), 0);
    return false;
}

std::string BoardNote::current() const {
    const UniqueFd file(::openat(folder_.get(), file_.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    return file ? contentsOf(file) : std::string();
}

/// The folder is this user's alone, so what stands there was written by such a note.
bool BoardNote::mayBeAskedOver() const {
    struct stat status {};
    if (::fstatat(folder_.get(), file_.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) return true;
    if (std::time(nullptr) - status.st_mtime >= std::chrono::seconds(kOutcomeIsKept).count()) return true;
    return current().find(member(kBoardUserKey, subject_.user)) != std::string::npos;
}

std::string BoardNote::text() const {
    std::string line =
        '{' + member(kBoardVersionKey, kBoardVersion) + member(kBoardDiskKey, subject_.disk) +
        member(kBoardUserKey, subject_.user) + member(kBoardAskerKey, static_cast<std::uint64_t>(subject_.asker)) +
        writer_ + member(kBoardFirstBlockKey, subject_.firstBlock) + member(kBoardBytesKey, bytes_) +
        member(kBoardPhaseKey, kWritePhaseWords.at(static_cast<std::size_t>(phase_))) + member(kBoardDoneKey, done_) +
        member(kBoardOfKey, of_) + member(kBoardBegunKey, static_cast<std::uint64_t>(begun_));
    if (!verdict_.empty()) line += member(kBoardVerdictKey, verdict_);
    line.back() = '}';
    return line + '\n';
}

std::filesystem::path BoardNote::folderOfService() {
    const char* made = ::secure_getenv("RUNTIME_DIRECTORY");
    if (made != nullptr && *made == '/') return made;
    if (::geteuid() == 0) return kBoardFolder;
    const char* session = ::secure_getenv("XDG_RUNTIME_DIR");
    if (session == nullptr || *session != '/') return {};
    return std::filesystem::path(session) / kBoardFolderName;
}

}  // namespace kestrav
