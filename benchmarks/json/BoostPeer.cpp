#include <boost/json.hpp>

#include "benchmarks/json/Peer.h"

namespace kestrav::benchmark {
namespace {

namespace json = boost::json;

class BoostPeer final : public Peer {
  public:
    std::string_view name() const override { return "Boost.JSON"; }
    bool parse(const std::string& text) override {
        json::error_code error;
        json::parse_options options;
        options.max_depth = 512;
        document_ = json::parse(text, error, {}, options);
        return !error;
    }
    void drop() override { document_ = nullptr; }
    std::size_t serialise() override { return json::serialize(document_).size(); }
    void prepare(const std::vector<Path>& paths) override { paths_ = paths; }
    std::size_t lookUp() override {
        std::size_t sum = 0;
        for (const Path& path : paths_)
            sum += follow(path).as_string().size();
        return sum;
    }

  private:
    const json::value& follow(const Path& path) const {
        const json::value* at = &document_;
        for (const Step& step : path) {
            if (const auto* key = std::get_if<std::string>(&step)) {
                at = &at->as_object().at(*key);
            } else {
                at = &at->as_array()[static_cast<std::size_t>(std::get<std::int64_t>(step))];
            }
        }
        return *at;
    }

    json::value document_;
    std::vector<Path> paths_;
};

/// With memory that is only given back as a whole: the fastest way to read with this library, for a document that is
/// not changed.
class MonotonicBoostPeer final : public Peer {
  public:
    std::string_view name() const override { return "Boost monotonic"; }
    bool parse(const std::string& text) override {
        memory_ = std::make_unique<json::monotonic_resource>();
        json::error_code error;
        json::parse_options options;
        options.max_depth = 512;
        document_ = std::make_unique<json::value>(json::parse(text, error, memory_.get(), options));
        return !error;
    }
    void drop() override {
        document_.reset();
        memory_.reset();
    }
    std::size_t serialise() override { return json::serialize(*document_).size(); }
    void prepare(const std::vector<Path>& /*paths*/) override {}
    std::size_t lookUp() override { return 0; }

  private:
    std::unique_ptr<json::monotonic_resource> memory_;
    std::unique_ptr<json::value> document_;
};

}  // namespace

std::unique_ptr<Peer> makeMonotonicBoostPeer() {
    return std::make_unique<MonotonicBoostPeer>();
}

std::unique_ptr<Peer> makeBoostPeer() {
    return std::make_unique<BoostPeer>();
}

}  // namespace kestrav::benchmark
