#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include "benchmarks/json/Peer.h"

namespace kestrav::benchmark {
namespace {

/// What this project's reader promises as well: doubles to the last bit and UTF-8 that is judged.
constexpr unsigned kParseFlags = rapidjson::kParseFullPrecisionFlag | rapidjson::kParseValidateEncodingFlag;

class RapidJSONPeer final : public Peer {
  public:
    std::string_view name() const override { return "RapidJSON"; }
    bool parse(const std::string& text) override {
        document_ = std::make_unique<rapidjson::Document>();
        document_->Parse<kParseFlags>(text.data(), text.size());
        return !document_->HasParseError();
    }
    void drop() override { document_.reset(); }
    std::size_t serialise() override {
        rapidjson::StringBuffer buffer;
        rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
        document_->Accept(writer);
        return std::string(buffer.GetString(), buffer.GetSize()).size();
    }
    void prepare(const std::vector<Path>& paths) override { paths_ = paths; }
    std::size_t lookUp() override {
        std::size_t sum = 0;
        for (const Path& path : paths_)
            sum += follow(path).GetStringLength();
        return sum;
    }

  private:
    const rapidjson::Value& follow(const Path& path) const {
        const rapidjson::Value* at = document_.get();
        for (const Step& step : path) {
            if (const auto* key = std::get_if<std::string>(&step)) {
                const rapidjson::Value name(rapidjson::StringRef(key->data(), key->size()));
                at = &at->FindMember(name)->value;
            } else {
                at = &(*at)[static_cast<rapidjson::SizeType>(std::get<std::int64_t>(step))];
            }
        }
        return *at;
    }

    std::unique_ptr<rapidjson::Document> document_;
    std::vector<Path> paths_;
};

}  // namespace

std::unique_ptr<Peer> makeRapidJSONPeer() {
    return std::make_unique<RapidJSONPeer>();
}

}  // namespace kestrav::benchmark
