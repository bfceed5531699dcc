#include "cli/nearestWord.h"

#include <algorithm>
#include <vector>

namespace kestrav {
namespace {

// Nothing longer is a slip for one of our words, and the table of distances stays small.
constexpr std::size_t kLongestWord = 40;

std::size_t slipsBetween(std::string_view one, std::string_view other) {
    std::vector<std::vector<std::size_t>> slips(one.size() + 1, std::vector<std::size_t>(other.size() + 1));
    for (std::size_t i = 0; i <= one.size(); ++i) {
        for (std::size_t k = 0; k <= other.size(); ++k) {
            if (i == 0 || k == 0) {
                slips[i][k] = i + k;
                continue;
            }
            const std::size_t another = one[i - 1] == other[k - 1] ? 0 : 1;
            slips[i][k] = std::min({slips[i - 1][k] + 1, slips[i][k - 1] + 1, slips[i - 1][k - 1] + another});
            if (i > 1 && k > 1 && one[i - 1] == other[k - 2] && one[i - 2] == other[k - 1])
                slips[i][k] = std::min(slips[i][k], slips[i - 2][k - 2] + 1);
        }
    }
    return slips[one.size()][other.size()];
}

}  // namespace

std::string nearestWord(std::string_view typed, std::span<const std::string> known) {
    std::string nearest;
    std::size_t fewest = kLongestWord;
    if (typed.size() > kLongestWord) return nearest;
    for (const std::string& word : known) {
        const std::size_t slips = slipsBetween(typed, word);
        if (slips >= fewest || slips > std::min<std::size_t>(3, word.size() / 3 + 1)) continue;
        fewest = slips;
        nearest = word;
    }
    return nearest;
}

}  // namespace kestrav
