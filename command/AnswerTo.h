#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace kestrav {

/// What a service was asked for, as far as the meaning of its answer depends on it.
struct AnswerTo {
    /// What kind of request it is.
    enum class Kind {
        unmount,  ///< of the first partition
        write,    ///< of an image
        read,     ///< of blocks
        other,    ///< nothing that the services carry out: they can only turn it down
    };

    Kind kind = Kind::other;  ///< what kind of request it is
    std::uint64_t bytes = 0;  ///< read: how many were asked for, 0 when the number of blocks can't be read

    /// The command line that goes over the wire, told by its words alone; whether it is right is the service's to say.
    static AnswerTo of(std::string_view command, std::span<const std::string> arguments);
};

}  // namespace kestrav
