#pragma once

#include <cstddef>
#include <string_view>

namespace kestrav {

/// Finds the end of a request on a connection without framing: a request is one JSON object, and it is complete when
/// that object closes. Whether it is valid JSON is for the reader to say.
class RequestScan {
  public:
    enum class State {
        incomplete,
        complete,      ///< the object closed; at most white space follows it
        noObject,      ///< the first byte is not {, so this is something else, such as a browser's request
        moreBehindIt,  ///< something else follows the object
    };

    /// Takes the next bytes. Once the state is not `incomplete` any more, nothing changes it but what follows a
    /// complete object and is not white space.
    State take(std::string_view bytes);

    State state() const { return state_; }

  private:
    void takeOne(char byte);
    void takeWithinText(char byte);

    State state_ = State::incomplete;
    bool begun_ = false;
    bool inText_ = false;
    bool escaped_ = false;
    std::size_t depth_ = 0;
};

}  // namespace kestrav
