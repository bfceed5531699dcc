#include "cli/fetchBlocks.h"

#include <algorithm>
#include <string>

#include "cli/endOfRequest.h"
#include "device/KestravDevice.h"
#include "outcome/ServiceAnswers.h"
#include "protocol/accessory.h"
#include "protocol/wire.h"

namespace kestrav {
namespace {

// Asking again does no harm, and an answer in two pieces is a matter of chance.
constexpr int kTries = 3;

/// Whether the last answer may be the first piece of one.
bool isShorterThan(std::int64_t count, const ServiceAnswers::Exchange* last) {
    const auto* given = last != nullptr ? std::get_if<ServiceAnswers::Given>(&last->end) : nullptr;
    return given != nullptr && std::ssize(given->bytes) < count * kBlockBytes;
}

UpdateResult pulled(const UpdateResult& asked, std::int64_t block, std::int64_t count, const CommandParts& parts) {
    for (int left = kTries;; --left) {
        parts.device.pullDevice(block, count);
        UpdateResult end = endOfRequest(asked, parts);
        const bool mayBeHalf = end.status == ExitCode::nobodyKnows && isShorterThan(count, parts.answers.last());
        if (!mayBeHalf || left == 1) return end;
    }
}

std::span<const std::byte> lastAnswer(const CommandParts& parts) {
    const auto& given = std::get<ServiceAnswers::Given>(parts.answers.last()->end);
    return std::as_bytes(std::span(given.bytes));
}

}  // namespace

UpdateResult fetchBlocks(std::int64_t firstBlock, std::int64_t bytes, const CommandParts& parts,
                         const BlockSink& sink) {
    UpdateResult asked;
    asked.firstBlock = firstBlock;
    asked.bytes = bytes;
    UpdateResult end;
    std::uint32_t accessory = 0;
    std::int64_t done = 0;
    do {
        const std::int64_t left = (bytes - done - 1) / kBlockBytes + 1;
        const std::int64_t block = firstBlock + done / kBlockBytes;
        end = pulled(asked, block, std::min(left, std::int64_t{kMostBlocksRead}), parts);
        if (end.status != ExitCode::success) return end;
        if (done != 0 && accessory != parts.device.device.id) {
            return end.endedWith(ExitCode::wentWrong, "The accessory was changed while it was read.", "Try again.");
        }
        accessory = parts.device.device.id;
        const auto answer = lastAnswer(parts);
        const auto wanted = answer.first(std::min(answer.size(), static_cast<std::size_t>(bytes - done)));
        if (const auto taken = sink(wanted); !taken) {
            return end.endedWith(ExitCode::wrongCall, taken.problem().sentence);
        }
        done += std::ssize(wanted);
    } while (done < bytes);
    end.answer.clear();
    return end;
}

}  // namespace kestrav
