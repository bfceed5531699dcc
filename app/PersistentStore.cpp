#include "app/PersistentStore.h"

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <pugixml.hpp>
#include <sstream>
#include <sys/stat.h>
#include <unistd.h>

#include "app/replaceFile.h"
#include "base/UniqueFd.h"

namespace kestrav {
namespace {

constexpr std::size_t kLongestFile = 16U << 20U;

struct Content {
    int error = 0;  ///< errno
    std::string bytes;
};

Content readWhole(const std::filesystem::path& file) {
    // Without O_NONBLOCK a pipe in place of the file would hold the program up for ever.
    const UniqueFd fd(::open(file.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    struct stat status {};
    if (!fd || ::fstat(fd.get(), &status) != 0) return {errno, {}};
    if (S_ISDIR(status.st_mode)) return {EISDIR, {}};
    if (!S_ISREG(status.st_mode)) return {EINVAL, {}};
    Content content;
    std::array<char, 1U << 16U> piece{};
    for (;;) {
        const ssize_t length = ::read(fd.get(), piece.data(), piece.size());
        if (length < 0 && errno == EINTR) continue;
        if (length < 0) return {errno, {}};
        if (length == 0) return content;
        content.bytes.append(piece.data(), static_cast<std::size_t>(length));
        if (content.bytes.size() > kLongestFile) return {EFBIG, {}};
    }
}

std::string asXML(const PersistentStore::Records& records, const std::string& modelName) {
    pugi::xml_document document;
    pugi::xml_node declaration = document.append_child(pugi::node_declaration);
    declaration.append_attribute("version") = "1.0";
    declaration.append_attribute("encoding") = "UTF-8";
    pugi::xml_node store = document.append_child("store");
    store.append_attribute("type") = "XML";
    store.append_attribute("model") = modelName.c_str();
    for (const auto& [name, value] : records) {
        pugi::xml_node record = store.append_child("record");
        record.append_attribute("name") = name.c_str();
        record.append_attribute("value") = value.c_str();
    }
    std::ostringstream text;
    document.save(text, "  ");
    return text.str();
}

}  // namespace

PersistentStore::PersistentStore(std::filesystem::path file, std::string modelName)
    : file_(std::move(file)),
      modelName_(std::move(modelName)) {}

std::optional<ApplicationError> PersistentStore::open() {
    const auto [error, content] = readWhole(file_);
    if (error == ENOENT) return save({});
    if (error != 0) return systemError(error, "read " + file_.string());
    return take(content);
}

std::optional<ApplicationError> PersistentStore::take(const std::string& content) {
    pugi::xml_document document;
    const pugi::xml_parse_result parsed = document.load_buffer(content.data(), content.size());
    const pugi::xml_node store = document.child("store");
    if (!parsed) return systemError(EILSEQ, "understand " + file_.string() + " (" + parsed.description() + ")");
    if (store.attribute("model").value() != modelName_) {
        return systemError(EINVAL, "use " + file_.string() + ", which holds something else");
    }
    records_.clear();
    for (const pugi::xml_node record : store.children("record")) {
        records_.insert_or_assign(record.attribute("name").value(), record.attribute("value").value());
    }
    return std::nullopt;
}

std::optional<ApplicationError> PersistentStore::save(Records records) {
    if (auto error = replaceFile(file_, asXML(records, modelName_))) return error;
    records_ = std::move(records);
    return std::nullopt;
}

}  // namespace kestrav
