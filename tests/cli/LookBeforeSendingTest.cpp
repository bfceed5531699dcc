#include <gtest/gtest.h>
#include <string>

#include "cli/OrdinaryFile.h"
#include "cli/Sha256.h"
#include "cli/compareDigest.h"
#include "cli/warningsAbout.h"
#include "protocol/accessory.h"
#include "tests/TemporaryFolder.h"
#include "tests/cli/Commands.h"

namespace kestrav {
namespace {

using namespace std::string_view_literals;

std::string digestOf(std::string_view text, std::size_t piece) {
    Sha256 digest;
    for (; !text.empty(); text.remove_prefix(std::min(piece, text.size())))
        digest.take(std::as_bytes(std::span(text.substr(0, piece))));
    return digest.digits();
}

TEST(Sha256, IsThatOfTheStandard) {
    for (const std::size_t piece : {1U, 7U, 64U, 100000U}) {
        EXPECT_EQ(digestOf("", piece), "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
        EXPECT_EQ(digestOf("abc", piece), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
        EXPECT_EQ(digestOf("abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq", piece),
                  "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1");
    }
    EXPECT_EQ(digestOf(std::string(1000000, 'a'), 4096),
              "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0");
}

TEST(Digest, IsSixtyFourHexadecimalDigits) {
    EXPECT_TRUE(isDigest(std::string(64, 'A')));
    EXPECT_FALSE(isDigest(std::string(63, 'a')));
    EXPECT_FALSE(isDigest(std::string(65, 'a')));
    EXPECT_FALSE(isDigest(std::string(63, 'a') + "g"));
    EXPECT_FALSE(isDigest(std::string(63, 'a') + "\xe4"));
}

std::vector<std::string> warnedOf(const std::string& content, std::int64_t firstBlock = kFirmwareBlock) {
    const TemporaryFolder folder;
    const auto image = OrdinaryFile::open(folder.file("image", content));
    UpdateResult asked;
    asked.firstBlock = firstBlock;
    asked.bytes = static_cast<std::int64_t>(content.size());
    return warningsAbout(image.value(), asked);
}

TEST(Warnings, AreNoneOfAnImageLikeAnyOther) {
    EXPECT_TRUE(warnedOf("FDS firmware").empty());
    EXPECT_TRUE(warnedOf(std::string(262144, 'x') + "").empty());
    EXPECT_TRUE(warnedOf(std::string(262145, 'x'), kIconBlock).empty());
    EXPECT_TRUE(warnedOf(std::string(3 << 20, '\0') + "x", kIconBlock).empty());
}

TEST(Warnings, TellWhenAFirmwareRunsIntoTheIcon) {
    EXPECT_EQ(warnedOf(std::string(262145, 'x')),
              (std::vector<std::string>{"The image has 262145 bytes and runs into the icon area, which begins 262144 "
                                        "bytes behind the firmware's."}));
}

TEST(Warnings, TellArchivesAndPictures) {
    for (const auto& [beginning, kind] :
         {std::pair("PK\x03\x04"sv, "a ZIP archive"), std::pair("\x1f\x8b\x08"sv, "a gzip archive"),
          std::pair("BZh9"sv, "a bzip2 archive"),
          std::pair("\xfd"
                    "7zXZ\0"sv,
                    "an xz archive"),
          std::pair("\x28\xb5\x2f\xfd"sv, "a zstd archive"), std::pair("7z\xbc\xaf\x27\x1c"sv, "a 7z archive"),
          std::pair("\x89PNG\r\n\x1a\n"sv, "a PNG picture"), std::pair("\xff\xd8\xff\xe0"sv, "a JPEG picture"),
          std::pair("GIF89a"sv, "a GIF picture"), std::pair("%PDF-1.7"sv, "a PDF document")}) {
        EXPECT_EQ(warnedOf(std::string(beginning) + "more"),
                  (std::vector<std::string>{"The image begins like " + std::string(kind) + "."}));
    }
}

TEST(Warnings, TellAnImageWithoutContent) {
    EXPECT_EQ(warnedOf(std::string(3 << 20, '\0'), kIconBlock),
              (std::vector<std::string>{"The image is empty of content: every byte of it is 0."}));
    EXPECT_EQ(warnedOf(std::string(5, '\xff')),
              (std::vector<std::string>{"The image is empty of content: every byte of it is 255."}));
}

using Before = Commands;

constexpr const char* kDigestOfAbc = "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad";

SendOptions expecting(std::string digest) {
    SendOptions options;
    options.sha256 = std::move(digest);
    return options;
}

TEST_F(Before, AnImageWithTheExpectedChecksumIsSent) {
    plugIn(2 << 20);
    service.setBehaviour(confirms(3));
    std::string shouted = kDigestOfAbc;
    std::ranges::transform(shouted, shouted.begin(),
                           [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    EXPECT_EQ(carriedOut(UpdateInvocation{ImageKind::firmware, made("f", "abc"), expecting(shouted)}),
              ExitCode::success);
}

TEST_F(Before, TheChecksumIsThatOfALongImagesEveryPart) {
    plugIn(8 << 20);
    service.setBehaviour(confirms(3'500'000));
    std::string text(3'500'000, 'x');
    text.replace(1'500'000, 1, "y");
    const SendOptions options = expecting(digestOf(text, text.size()));
    EXPECT_EQ(carriedOut(UpdateInvocation{ImageKind::firmware, made("f", text), options}), ExitCode::success);
    text.replace(1'500'000, 1, "z");
    EXPECT_EQ(carriedOut(UpdateInvocation{ImageKind::firmware, made("f", text), options}), ExitCode::failure);
}

TEST_F(Before, AnImageWithAnotherChecksumIsNotSent) {
    plugIn(2 << 20);
    EXPECT_EQ(carriedOut(UpdateInvocation{ImageKind::firmware, made("f", "abd"), expecting(kDigestOfAbc)}),
              ExitCode::failure);
    EXPECT_TRUE(complained("The image is not the one that is expected: its SHA-256 is "));
    EXPECT_TRUE(complained("Nothing was handed over. Fetch the image again."));
    EXPECT_EQ(carriedOut(PushInvocation{0, made("f", "abd"), expecting(kDigestOfAbc)}), ExitCode::failure);
    EXPECT_TRUE(service.requests().empty());
}

TEST_F(Before, TheChecksumsFileIsLookedForBesideTheImage) {
    plugIn(2 << 20);
    SendOptions options;
    options.check = true;
    const UpdateInvocation update{ImageKind::firmware, made("f", "abc"), options};
    EXPECT_EQ(carriedOut(update), ExitCode::wrongCall);
    EXPECT_TRUE(complained("/f.sha256 can't be read: No such file or directory. Make it with sha256sum."));
    made("f.sha256", "MD5 (f) = 900150983cd24fb0d6963f7d28e17f72\n");
    EXPECT_EQ(carriedOut(update), ExitCode::wrongCall);
    EXPECT_TRUE(complained("/f.sha256 does not begin with a SHA-256. Make it with sha256sum."));
    made("f.sha256", std::string(64, '0') + "  f\n");
    EXPECT_EQ(carriedOut(update), ExitCode::failure);
    EXPECT_TRUE(service.requests().empty());
    made("f.sha256", std::string(kDigestOfAbc) + "  f\n");
    service.setBehaviour(confirms(3));
    EXPECT_EQ(carriedOut(update), ExitCode::success);
}

TEST_F(Before, AWarningKeepsNothingFromBeingSent) {
    plugIn(2 << 20);
    service.setBehaviour(confirms(3));
    EXPECT_EQ(carriedOut(UpdateInvocation{ImageKind::firmware, made("f", "\xff\xff\xff")}), ExitCode::success);
    EXPECT_EQ(err.str(), "kestravctl: Warning: The image is empty of content: every byte of it is 255.\n");
}

TEST_F(Before, APushIsNotWarnedAbout) {
    plugIn(2 << 20);
    service.setBehaviour(confirms(3, 0));
    EXPECT_EQ(carriedOut(PushInvocation{0, made("f", "\xff\xff\xff")}), ExitCode::success);
    EXPECT_EQ(err.str(), "");
}

using DryRun = Commands;

UpdateInvocation rehearsal(const std::string& file) {
    UpdateInvocation update{ImageKind::firmware, file};
    update.options.dryRun = true;
    return update;
}

TEST_F(DryRun, SaysWhatWouldBeWrittenAndWritesNothing) {
    plugIn(2 << 20);
    service.setBehaviour(answers("Refused: \"dry-run\" is not a command of this service."));
    const std::string file = made("f", "abc");
    EXPECT_EQ(carriedOut(rehearsal(file)), ExitCode::success);
    EXPECT_EQ(out.str(), "Nothing was written, as was asked for: the 3 bytes of " + file +
                             " would go to disk2 from block 1536 on.\n");
    EXPECT_EQ(err.str(), "");
    ASSERT_EQ(service.requests().size(), 1U);
    EXPECT_EQ(service.requests()[0], R"({"command":"dry-run","arguments":[]})");
    EXPECT_TRUE(on.disks.journal.empty());
}

TEST_F(DryRun, FailsWhereTheUpdateWould) {
    const std::string file = made("f", "abc");
    EXPECT_EQ(carriedOut(rehearsal(file)), ExitCode::failure);
    EXPECT_TRUE(complained("No accessory"));
    plugIn(2 << 20);
    EXPECT_EQ(carriedOut(rehearsal(file), 1), ExitCode::failure);
    EXPECT_TRUE(complained("The service is not running:"));
    service.setBehaviour(answers("HTTP/1.1 400 Bad Request"));
    EXPECT_EQ(carriedOut(rehearsal(file)), ExitCode::nobodyKnows);
    EXPECT_EQ(carriedOut(rehearsal("/none")), ExitCode::wrongCall);
}

TEST_F(DryRun, KnowsTheDisksSize) {
    on.registry.plugIn({.id = 7, .name = "Accessory", .disk = "disk2", .diskBytes = 786432 + 3});
    service.setBehaviour(answers("Refused: no."));
    EXPECT_EQ(carriedOut(rehearsal(made("f", "abc"))), ExitCode::success);
    EXPECT_EQ(carriedOut(rehearsal(made("f", "abcd"))), ExitCode::wentWrong);
    EXPECT_TRUE(
        complained("The image does not fit: it would end at byte 786436 of disk2, which has 786435. Choose "
                   "another one."));
}

}  // namespace
}  // namespace kestrav
