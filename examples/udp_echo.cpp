// Echoes datagrams: udp_echo PORT TEXT binds PORT, sends TEXT to it, echoes what arrives and prints what comes back.

#include <arpa/inet.h>
#include <array>
#include <charconv>
#include <cstdint>
#include <iostream>
#include <kestrav/sockets.h>
#include <string_view>

namespace {

constexpr std::int64_t kLongestDatagram = 1500;

/// Takes one datagram and sends it back to where it came from. Whether that could be done.
bool echoOne(kestrav::UDPServer& server) {
    const kestrav::UDPServer::Datagram datagram = server.receive(kLongestDatagram);
    if (!datagram.bytes) return false;
    // The sender's port comes as it was on the wire.
    kestrav::UDPClient back(datagram.address, ntohs(static_cast<std::uint16_t>(datagram.port)));
    back.send(*datagram.bytes);
    back.close();
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    std::int32_t port = 0;
    const std::string_view wanted = argc == 3 ? argv[1] : "";
    if (std::from_chars(wanted.data(), wanted.data() + wanted.size(), port).ec != std::errc{}) {
        std::cerr << "usage: udp_echo PORT TEXT\n";
        return 2;
    }
    try {
        kestrav::UDPServer server("", port);  // any address; another text would bind no port of our choosing
        kestrav::UDPClient client("127.0.0.1", port);
        client.send(std::string_view(argv[2]));
        if (!echoOne(server)) return 1;
        // The client class only sends, so the answer is received with the function below it.
        std::array<char, kLongestDatagram> answer{};
        std::array<char, 16> address{};
        std::int32_t answeringPort = 0;
        const std::int32_t length = kestrav::udp_receive_from(client.fd.value_or(-1), answer.data(), kLongestDatagram,
                                                              address.data(), &answeringPort);
        client.close();
        if (length < 0) return 1;
        std::cout << address.data() << " says: " << std::string_view(answer.data(), static_cast<std::size_t>(length))
                  << '\n';
    } catch (const kestrav::SocketException& error) {
        std::cerr << "udp_echo: " << error.what() << '\n';
        return 1;
    }
    return 0;
}
