#include "socket/SocketError.h"

#include "base/stopProcess.h"

namespace kestrav {

const char* description(SocketError error) noexcept {
    switch (error) {
        case SocketError::queryFailed:
            return "SocketError.queryFailed: the host's address could not be found.";
        case SocketError::connectionClosed:
            return "SocketError.connectionClosed: there is no open connection.";
        case SocketError::connectionTimeout:
            return "SocketError.connectionTimeout: the peer did not accept the connection in time.";
        case SocketError::unknownError:
            return "SocketError.unknownError: the peer refused the connection or broke it off, or the address could "
                   "not be used.";
    }
    stopProcess();
}

}  // namespace kestrav
