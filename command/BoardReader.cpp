#include "command/BoardReader.h"

#include <algorithm>
#include <cstdlib>
#include <fcntl.h>
#include <limits>
#include <span>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>
#include <variant>

#include "base/UniqueFd.h"
#include "base/wholeFile.h"
#include "json/tree/readJSON.h"

namespace kestrav {
namespace {

/// Root's or this user's, and nobody else can change it.
bool isTrusted(const struct stat& status) {
    const bool ours = status.st_uid == 0 || status.st_uid == ::geteuid();
    return ours && (status.st_mode & (S_IWGRP | S_IWOTH)) == 0;
}

std::optional<std::string> trustedText(const std::filesystem::path& folder, const std::string& name) {
    struct stat status {};
    const UniqueFd in(::open(folder.c_str(), O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (!in || ::fstat(in.get(), &status) != 0 || !isTrusted(status)) return std::nullopt;
    // NONBLOCK: a pipe in place of the file would hold the program up.
    const UniqueFd file(::openat(in.get(), name.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    if (!file || ::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode) || !isTrusted(status)) return {};
    std::string text(kLongestBoard + 1, '\0');
    const auto got = readAt(file.get(), std::as_writable_bytes(std::span(text)), 0);
    if (!got || got.value() > kLongestBoard) return std::nullopt;
    text.resize(got.value());
    return text;
}

/// Whole numbers that are not negative, and nothing that merely looks like one.
std::optional<std::uint64_t> numberOf(const Tree& board, std::string_view key) {
    const Tree* member = board.member(key);
    const auto number = member != nullptr ? member->number() : std::nullopt;
    if (!number) return std::nullopt;
    if (number->kind() == Number::Kind::unsignedInteger) return number->unsignedInteger();
    if (number->kind() != Number::Kind::integer || number->integer() < 0) return std::nullopt;
    return static_cast<std::uint64_t>(number->integer());
}

template <class Integer>
bool take(const Tree& board, std::string_view key, Integer& into) {
    const auto number = numberOf(board, key);
    if (!number || !std::in_range<Integer>(*number)) return false;
    into = static_cast<Integer>(*number);
    return true;
}

template <class Word, std::size_t Count>
std::optional<Word> wordOf(const Tree& board, std::string_view key, const std::array<std::string_view, Count>& words) {
    const Tree* member = board.member(key);
    const auto text = member != nullptr ? member->text() : std::nullopt;
    const auto found = text ? std::ranges::find(words, *text) : words.end();
    if (found == words.end()) return std::nullopt;
    return static_cast<Word>(found - words.begin());
}

bool takeNumbers(const Tree& board, BoardEntry& entry) {
    return take(board, kBoardUserKey, entry.user) && take(board, kBoardAskerKey, entry.asker) &&
           take(board, kBoardWriterKey, entry.writer) && take(board, kBoardWriterStartKey, entry.writerStart) &&
           take(board, kBoardFirstBlockKey, entry.firstBlock) && take(board, kBoardBytesKey, entry.bytes) &&
           take(board, kBoardDoneKey, entry.done) && take(board, kBoardOfKey, entry.of) &&
           take(board, kBoardBegunKey, entry.begun);
}

std::optional<BoardEntry> entryIn(const Tree& board, std::string_view disk) {
    BoardEntry entry{};
    const Tree* named = board.member(kBoardDiskKey);
    const auto phase = wordOf<WritePhase>(board, kBoardPhaseKey, kWritePhaseWords);
    if (numberOf(board, kBoardVersionKey) != kBoardVersion) return std::nullopt;
    if (named == nullptr || named->text() != disk || !phase || !takeNumbers(board, entry)) return std::nullopt;
    // Number 0 would mean this process's own group to whoever looks for the process.
    if (entry.writer == 0 || entry.done > entry.of) return std::nullopt;
    entry.disk = disk;
    entry.phase = *phase;
    entry.verdict = wordOf<WriteVerdict>(board, kBoardVerdictKey, kWriteVerdictWords);
    const bool isDone = entry.phase == WritePhase::done;
    if (isDone != entry.verdict.has_value() || (!isDone && board.member(kBoardVerdictKey) != nullptr)) return {};
    return entry;
}

/// A disk's name becomes a part of a path.
bool isPlainName(std::string_view disk) {
    return !disk.empty() && disk.front() != '.' && disk.find('/') == std::string_view::npos &&
           disk.find('\0') == std::string_view::npos;
}

}  // namespace

BoardReader::BoardReader(std::vector<std::filesystem::path> folders) : folders_(std::move(folders)) {}

std::optional<BoardEntry> BoardReader::read(std::string_view disk) const {
    if (!isPlainName(disk)) return std::nullopt;
    for (const std::filesystem::path& folder : folders_) {
        const auto text = trustedText(folder, std::string(disk) + std::string(kBoardFileEnd));
        if (!text) continue;
        const auto document = readJSON(*text);
        const auto* board = std::get_if<Tree>(&document);
        if (auto entry = board != nullptr ? entryIn(*board, disk) : std::nullopt) return entry;
    }
    return std::nullopt;
}

std::vector<std::filesystem::path> BoardReader::usualFolders() {
    std::vector<std::filesystem::path> folders{kBoardFolder};
    const char* session = ::secure_getenv("XDG_RUNTIME_DIR");
    if (session != nullptr && *session == '/') {
        folders.push_back(std::filesystem::path(session) / kBoardFolderName);
    }
    return folders;
}

}  // namespace kestrav
