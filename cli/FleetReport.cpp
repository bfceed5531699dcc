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

constexpr const char* kLeftToTheService =
    "It was ended while accessories were being written. The service goes on with what it has begun: don't unplug; "
    "journalctl -t kestrav-commandd tells the end.";

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

std::size_t failuresIn(const std::vector<UpdateResult>& results) {
    const auto isFailure = [](const UpdateResult& result) { return result.status != ExitCode::success; };
    return static_cast<std::size_t>(std::ranges::count_if(results, isFailure));
}

std::string endedAfter(std::size_t failed, std::size_t all) {
    return "It was ended while nothing was being written. " + summary(failed, all);
}

}  // namespace

void FleetReport::add(const UpdateResult& result) {
    const std::lock_guard lock(mutex_);
    if (isOver_) return;
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
    const auto isLess = [](const UpdateResult& left, const UpdateResult& right) { return left.status < right.status; };
    const ExitCode worst = std::max_element(results_.begin(), results_.end(), isLess)->status;
    const std::size_t failed = failuresIn(results_);
    const std::string sentence = summary(failed, results_.size());
    sayAll(worst, failed == 0 ? "" : sentence);
    if (failed == 0 && !isQuiet()) console_.out << sentence << std::endl;
    return worst;
}

void FleetReport::interrupt(const std::vector<UpdateResult>& underWay) {
    const std::lock_guard lock(mutex_);
    if (isOver_) return;
    results_.insert(results_.end(), underWay.begin(), underWay.end());
    if (results_.empty()) {
        endWithout(ExitCode::interrupted, "It was ended before an accessory was written.");
        return;
    }
    const bool isLeft = std::ranges::count(results_, ExitCode::interrupted, &UpdateResult::status) > 0;
    const std::size_t failed = failuresIn(results_);
    sayAll(ExitCode::interrupted, isLeft ? kLeftToTheService : endedAfter(failed, results_.size()));
}

/// A table or an object of all results, and the problem.
void FleetReport::sayAll(ExitCode status, const std::string& problem) {
    isOver_ = true;
    std::ranges::stable_sort(results_, isPortBefore, &UpdateResult::port);
    if (options_.json) {
        printJson(status, problem);
    } else if (!options_.quiet || !problem.empty()) {
        printTable();
    }
    if (!problem.empty()) complain(console_, problem);
}

ExitCode FleetReport::endWithout(ExitCode status, const std::string& problem) {
    isOver_ = true;
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
