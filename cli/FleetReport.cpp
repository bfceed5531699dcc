#include "cli/FleetReport.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <ostream>
#include <sstream>

#include "base/shownText.h"
#include "cli/complain.h"
#include "cli/resultObject.h"
#include "cli/textTable.h"
#include "device/attachedAccessories.h"
#include "json/tree/Tree.h"
#include "json/tree/dataWithJSONObject.h"
#include "protocol/accessory.h"

namespace kestrav {
namespace {

constexpr const char* kNone = "No accessory (USB " KESTRAV_ACCESSORY_USB ") is attached. Plug it in and try again.";

std::string shownSeconds(std::chrono::duration<double> taken) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.1f", taken.count());
    return text.data();
}

std::string shownStatus(ExitCode status) {
    return std::to_string(static_cast<int>(status));
}

std::string nameOf(const UpdateResult& result) {
    UsbDevice device;
    if (!result.disk.empty()) device.disk = result.disk;
    device.serial = result.serial;
    device.port = result.port;
    return inWords(device);
}

std::string summary(std::size_t failed, std::size_t all) {
    if (failed == 0 && all == 1) return "The accessory holds the image.";
    if (failed == 0) return "All " + std::to_string(all) + " accessories hold the image.";
    return std::to_string(failed) + " of " + std::to_string(all) + " accessories did not get the image.";
}

}  // namespace

void FleetReport::add(const UpdateResult& result) {
    const std::lock_guard lock(mutex_);
    results_.push_back(result);
    if (isQuiet()) return;
    const std::string end =
        result.status == ExitCode::success ? "done" : "ended with status " + shownStatus(result.status);
    console_.out << escapedForTerminal(nameOf(result)) << ": " << end << " after " << shownSeconds(result.taken) << " s"
                 << std::endl;
}

void FleetReport::warn(const std::string& lines) {
    const std::lock_guard lock(mutex_);
    std::istringstream each(lines);
    for (std::string line; std::getline(each, line);)
        if (warned_.insert(line).second) console_.err << line << std::endl;
}

void FleetReport::sayNext() {
    const std::lock_guard lock(mutex_);
    if (!isQuiet()) console_.out << "Next: plug in another accessory." << std::endl;
}

std::vector<UpdateResult> FleetReport::results() const {
    const std::lock_guard lock(mutex_);
    return results_;
}

ExitCode FleetReport::end() {
    const std::lock_guard lock(mutex_);
    if (results_.empty()) return endWithout(ExitCode::failure, kNone);
    std::stable_sort(results_.begin(), results_.end(), [](const UpdateResult& left, const UpdateResult& right) {
        return isPortBefore(left.port, right.port);
    });
    const auto isFailure = [](const UpdateResult& result) { return result.status != ExitCode::success; };
    const auto failed = static_cast<std::size_t>(std::count_if(results_.begin(), results_.end(), isFailure));
    const auto isLess = [](const UpdateResult& left, const UpdateResult& right) { return left.status < right.status; };
    const ExitCode worst = std::max_element(results_.begin(), results_.end(), isLess)->status;
    const std::string sentence = summary(failed, results_.size());
    if (options_.json) {
        printJson(worst, failed == 0 ? "" : sentence);
    } else if (!options_.quiet || failed != 0) {
        printTable();
    }
    if (failed != 0) {
        complain(console_, sentence);
    } else if (!isQuiet()) {
        console_.out << sentence << std::endl;
    }
    return worst;
}

ExitCode FleetReport::endWithout(ExitCode status, const std::string& problem) {
    if (options_.json) printJson(status, problem);
    complain(console_, problem);
    return status;
}

void FleetReport::printTable() const {
    std::vector<std::vector<std::string>> rows{{"DISK", "SERIAL", "PORT", "STATUS", "SECONDS", "RESULT"}};
    for (const UpdateResult& result : results_) {
        rows.push_back({result.disk, escapedForTerminal(result.serial), escapedForTerminal(result.port),
                        shownStatus(result.status), shownSeconds(result.taken), escapedForTerminal(result.lastLine())});
    }
    console_.out << textTable(rows) << std::flush;
}

void FleetReport::printJson(ExitCode status, const std::string& problem) const {
    Tree list = Tree::list();
    for (const UpdateResult& result : results_)
        list.append(resultObject(result));
    Tree object = Tree::map();
    object.setMember("accessories", std::move(list));
    object.setMember("status", Tree(static_cast<int>(status)));
    object.setMember("problem", problem.empty() ? Tree() : Tree(problem));
    console_.out << dataWithJSONObject(object) << std::endl;
}

}  // namespace kestrav
