#include <simdjson.h>

#include "benchmarks/json/Peer.h"

namespace kestrav::benchmark {
namespace {

/// Stands for the limit: it keeps an index of the text rather than values that can be changed.
class SimdjsonPeer final : public Peer {
  public:
    std::string_view name() const override { return "simdjson"; }
    bool parse(const std::string& text) override {
        parser_ = std::make_unique<simdjson::dom::parser>();
        return parser_->parse(text).get(document_) == simdjson::SUCCESS;
    }
    void drop() override { parser_.reset(); }
    std::size_t serialise() override { return simdjson::minify(document_).size(); }
    void prepare(const std::vector<Path>& /*paths*/) override {}
    std::size_t lookUp() override { return 0; }

  private:
    std::unique_ptr<simdjson::dom::parser> parser_;
    simdjson::dom::element document_;
};

}  // namespace

std::unique_ptr<Peer> makeSimdjsonPeer() {
    return std::make_unique<SimdjsonPeer>();
}

}  // namespace kestrav::benchmark
