#pragma once

namespace kestrav {

/// The scrolled area around the log's text. Only held, by whoever needs to know that it is there.
class LogBox {
  public:
    virtual ~LogBox() = default;
};

}  // namespace kestrav
