#pragma once

#include <optional>

#include "base/UniqueFd.h"

namespace kestrav {

/// How many images may stand in memory at once, over all processes of a service: many requests at once would end it
/// otherwise. A process that ends, however it ends, gives its place back.
class PlacesInMemory {
  public:
    static constexpr int kPlaces = 8;

    /// One of them, while it lives.
    class Place {
      public:
        explicit Place(UniqueFd lock) : lock_(std::move(lock)) {}

      private:
        UniqueFd lock_;
    };

    /// Before the processes are forked that share them.
    PlacesInMemory();

    /// Nothing when all are taken. Nobody is waited for.
    std::optional<Place> take() const;

  private:
    UniqueFd file_;
};

}  // namespace kestrav
