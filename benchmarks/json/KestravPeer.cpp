#include "benchmarks/json/Peer.h"
#include "json/value/JSON.h"

namespace kestrav::benchmark {
namespace {

class KestravPeer final : public Peer {
  public:
    std::string_view name() const override { return "Kestrav"; }
    bool parse(const std::string& text) override {
        document_ = JSON::parse(text);
        return document_.type() != JSON::Type::null;
    }
    void drop() override { document_ = JSON(); }
    std::size_t serialise() override { return dataWithJSONObject(document_.object()).size(); }
    void prepare(const std::vector<Path>& paths) override {
        paths_.clear();
        for (const Path& path : paths) {
            std::vector<JSONKey> keys;
            for (const Step& step : path) {
                std::visit([&](const auto& key) { keys.emplace_back(key); }, step);
            }
            paths_.push_back(std::move(keys));
        }
    }
    std::size_t lookUp() override {
        std::size_t sum = 0;
        for (const auto& path : paths_) {
            const JSON found = document_[path];
            sum += found.text()->size();
        }
        return sum;
    }

  private:
    JSON document_;
    std::vector<std::vector<JSONKey>> paths_;
};

}  // namespace

std::unique_ptr<Peer> makeKestravPeer() {
    return std::make_unique<KestravPeer>();
}

}  // namespace kestrav::benchmark
