#include <nlohmann/json.hpp>

#include "benchmarks/json/Peer.h"

namespace kestrav::benchmark {
namespace {

class NlohmannPeer final : public Peer {
  public:
    std::string_view name() const override { return "nlohmann"; }
    bool parse(const std::string& text) override {
        document_ = nlohmann::json::parse(text, nullptr, false);
        return !document_.is_discarded();
    }
    void drop() override { document_ = nullptr; }
    std::size_t serialise() override { return document_.dump().size(); }
    void prepare(const std::vector<Path>& paths) override { paths_ = paths; }
    std::size_t lookUp() override {
        std::size_t sum = 0;
        for (const Path& path : paths_)
            sum += follow(path).get_ref<const std::string&>().size();
        return sum;
    }

  private:
    const nlohmann::json& follow(const Path& path) const {
        const nlohmann::json* at = &document_;
        for (const Step& step : path) {
            if (const auto* key = std::get_if<std::string>(&step)) {
                at = &at->at(*key);
            } else {
                at = &(*at)[static_cast<std::size_t>(std::get<std::int64_t>(step))];
            }
        }
        return *at;
    }

    nlohmann::json document_;
    std::vector<Path> paths_;
};

}  // namespace

std::unique_ptr<Peer> makeNlohmannPeer() {
    return std::make_unique<NlohmannPeer>();
}

}  // namespace kestrav::benchmark
