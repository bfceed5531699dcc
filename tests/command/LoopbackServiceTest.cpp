#include <arpa/inet.h>
#include <array>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <netinet/in.h>
#include <sys/socket.h>

#include "tests/command/LoopbackService.h"

namespace kestrav {
namespace {

using ::testing::ElementsAre;

UniqueFd connectionTo(const LoopbackService& service) {
    UniqueFd fd(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_in peer{};
    peer.sin_family = AF_INET;
    peer.sin_port = htons(static_cast<std::uint16_t>(service.port()));
    peer.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    EXPECT_EQ(::connect(fd.get(), reinterpret_cast<const sockaddr*>(&peer), sizeof peer), 0);
    return fd;
}

std::string ask(const LoopbackService& service, std::string_view request) {
    const UniqueFd fd = connectionTo(service);
    ::send(fd.get(), request.data(), request.size(), MSG_NOSIGNAL);
    std::string reply;
    std::array<char, 64> buffer{};
    ssize_t count = 0;
    while ((count = ::recv(fd.get(), buffer.data(), buffer.size(), 0)) > 0)
        reply.append(buffer.data(), static_cast<std::size_t>(count));
    return reply;
}

TEST(LoopbackService, AnswersWhenTheRequestIsWholeAndRecordsIt) {
    const LoopbackService service(answers("fine"));
    const std::string request = R"({"command":"a}\"}","arguments":["{"]})";
    EXPECT_EQ(ask(service, request), "fine");
    EXPECT_THAT(service.requests(), ElementsAre(request));
}

TEST(LoopbackService, ChangesItsBehaviourForTheNextConnection) {
    LoopbackService service(answers("first"));
    EXPECT_EQ(ask(service, "{}"), "first");
    service.setBehaviour(answersInPieces({"sec", "ond"}, std::chrono::milliseconds(5)));
    EXPECT_EQ(ask(service, "{}"), "second");
}

TEST(LoopbackService, EndsWhileAConnectionIsWaiting) {
    auto service = std::make_unique<LoopbackService>(neverAnswers());
    const UniqueFd fd = connectionTo(*service);
    ::send(fd.get(), "{}", 2, MSG_NOSIGNAL);
    service.reset();
    char byte = 0;
    EXPECT_LE(::recv(fd.get(), &byte, 1, 0), 0);
}

}  // namespace
}  // namespace kestrav
