#include <array>
#include <gtest/gtest.h>
#include <netdb.h>
#include <string>

#include "socket/firstAddressOf.h"
#include "socket/ipv4Endpoint.h"
#include "socket/udp.h"
#include "tests/socket/Loopback.h"

namespace kestrav {
namespace {

struct Host {
    const char* name;
    const char* found;  // null: not found
};

class FirstAddressOf : public ::testing::TestWithParam<Host> {};

TEST_P(FirstAddressOf, FindsNamesAndDottedForms) {
    const std::optional<in_addr> address = firstAddressOf(GetParam().name);
    ASSERT_EQ(address.has_value(), GetParam().found != nullptr);
    if (address) {
        EXPECT_STREQ(::inet_ntoa(*address), GetParam().found);
    }
}

TEST_P(FirstAddressOf, AgreesWithGethostbyname) {
    const hostent* entry = ::gethostbyname(GetParam().name);
    const std::optional<in_addr> address = firstAddressOf(GetParam().name);
    ASSERT_EQ(address.has_value(), entry != nullptr);
    if (address) {
        EXPECT_EQ(std::memcmp(&*address, entry->h_addr_list[0], sizeof *address), 0);
    }
}

// None of those that are not found reaches a name server: they can't be names at all.
INSTANTIATE_TEST_SUITE_P(Hosts, FirstAddressOf,
                         ::testing::Values(Host{"127.0.0.1", "127.0.0.1"}, Host{"localhost", "127.0.0.1"},
                                           Host{"127.1", "127.0.0.1"}, Host{"255.255.255.255", "255.255.255.255"},
                                           Host{"2130706433", "127.0.0.1"}, Host{"010.0.0.1", "8.0.0.1"},
                                           Host{"1.2.3.4.5", nullptr}, Host{"1..2", nullptr}, Host{"", nullptr},
                                           Host{"256.256.256.256", nullptr}, Host{"no..name", nullptr}));

TEST(UdpResolveHost, CopiesTheTextWithoutANul) {
    std::array<char, 16> text{};
    text.fill('x');
    EXPECT_EQ(udp_resolve_host("localhost", text.data()), 0);
    EXPECT_EQ(std::string(text.begin(), text.end()), "127.0.0.1xxxxxxx");
}

TEST(UdpResolveHost, LeavesTheTextAloneWhenNothingIsFound) {
    std::array<char, 16> text{};
    text.fill('x');
    EXPECT_EQ(udp_resolve_host("256.256.256.256", text.data()), -1);
    EXPECT_EQ(std::string(text.begin(), text.end()), std::string(16, 'x'));
}

TEST(Ipv4Endpoint, TakesTheLow16BitsOfThePort) {
    const sockaddr_in endpoint = ipv4Endpoint(in_addr{htonl(INADDR_LOOPBACK)}, 0x12382);
    EXPECT_EQ(endpoint.sin_family, AF_INET);
    EXPECT_EQ(endpoint.sin_port, htons(0x2382));
    EXPECT_EQ(endpoint.sin_addr.s_addr, htonl(INADDR_LOOPBACK));
}

TEST(CopyAddressText, WritesTheLongestAddressInto15Characters) {
    std::array<char, 17> text{};
    text.fill('x');
    copyAddressText(in_addr{INADDR_NONE}, text.data());
    EXPECT_EQ(std::string(text.begin(), text.end()), "255.255.255.255xx");
}

}  // namespace
}  // namespace kestrav
