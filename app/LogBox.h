#pragma once

namespace kestrav {

/// The scrolled area around the log's text. The controller keeps a reference to it and uses it for nothing.
class LogBox {
  public:
    virtual ~LogBox() = default;
};

}  // namespace kestrav
