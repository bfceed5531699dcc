#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace kestrav::benchmark {

/// A step of a path: the position in a list or the key in a map.
using Step = std::variant<std::int64_t, std::string>;
using Path = std::vector<Step>;

/// One JSON library in its usual use. What is measured lies in the four operations; nothing is kept between them but
/// the last document and the paths in the library's own form.
class Peer {
  public:
    virtual ~Peer() = default;
    virtual std::string_view name() const = 0;

    /// Parses and keeps the document; false when it is refused.
    virtual bool parse(const std::string& text) = 0;
    /// Frees the document.
    virtual void drop() = 0;
    /// The document as compact text; its size, so that nothing can be left out.
    virtual std::size_t serialise() = 0;
    /// Takes the paths over, in whatever form serves the library best.
    virtual void prepare(const std::vector<Path>& paths) = 0;
    /// Follows every path and adds up the sizes of the texts found; 0 of a library that isn't asked for it.
    virtual std::size_t lookUp() = 0;
};

std::unique_ptr<Peer> makeKestravPeer();
std::unique_ptr<Peer> makeBoostPeer();
std::unique_ptr<Peer> makeMonotonicBoostPeer();
std::unique_ptr<Peer> makeNlohmannPeer();
std::unique_ptr<Peer> makeRapidJSONPeer();
std::unique_ptr<Peer> makeQtPeer();
std::unique_ptr<Peer> makeSimdjsonPeer();

}  // namespace kestrav::benchmark
