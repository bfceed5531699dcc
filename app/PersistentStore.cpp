#include "app/PersistentStore.h"

#include <cerrno>
#include <pugixml.hpp>
#include <sstream>

#include "base/StagedFile.h"
#include "base/systemProblem.h"
#include "base/wholeFile.h"

namespace kestrav {
namespace {

constexpr std::size_t kLongestFile = 16U << 20U;

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

Outcome<void> PersistentStore::open() {
    const auto content = readWholeFile(file_, kLongestFile);
    if (content) return take(content.value());
    const std::error_code cause = content.problem().cause;
    if (cause == std::errc::no_such_file_or_directory) return save({});
    return systemProblem("Could not read " + file_.string(), cause.value());
}

Outcome<void> PersistentStore::take(const std::string& content) {
    pugi::xml_document document;
    const pugi::xml_parse_result parsed = document.load_buffer(content.data(), content.size());
    const pugi::xml_node store = document.child("store");
    if (!parsed) {
        return systemProblem("Could not understand " + file_.string() + " (" + parsed.description() + ")", EILSEQ);
    }
    if (store.attribute("model").value() != modelName_) {
        return systemProblem("Could not use " + file_.string() + ", which holds something else", EINVAL);
    }
    records_.clear();
    for (const pugi::xml_node record : store.children("record")) {
        records_.insert_or_assign(record.attribute("name").value(), record.attribute("value").value());
    }
    return {};
}

Outcome<void> PersistentStore::save(Records records) {
    const std::string text = asXML(records, modelName_);
    if (auto replaced = replaceFile(file_, std::as_bytes(std::span(text)), kOwnerAlone); !replaced) return replaced;
    if (const auto synced = syncFolder(file_.parent_path()); !synced) {
        return systemProblem("Could not bring " + file_.string() + " to the disk", synced.problem().cause.value());
    }
    records_ = std::move(records);
    return {};
}

}  // namespace kestrav
