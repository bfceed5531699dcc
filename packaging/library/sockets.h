#pragma once

// IPv4 sockets: the functions with return codes, and the classes above them.

#include "socket/SocketError.h"
#include "socket/TCPClient.h"
#include "socket/TCPServer.h"
#include "socket/UDPClient.h"
#include "socket/UDPServer.h"
#include "socket/tcp.h"
#include "socket/udp.h"
