#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <sys/types.h>

namespace kestrav {

/// One line of /proc/net/tcp: an IPv4 socket.
struct TcpTableLine {
    std::string local;        ///< as the table writes it, such as "0100007F:2382"
    std::string remote;       ///< in the same form
    unsigned state = 0;       ///< TCP_ESTABLISHED and so on
    uid_t uid = 0;            ///< who made it
    std::uint32_t inode = 0;  ///< 0 when no process has it open any more

    /// Nothing when the line has not that form, as the one with the names of the columns.
    static std::optional<TcpTableLine> parse(std::string_view line);
};

}  // namespace kestrav
