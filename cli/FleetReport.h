#pragma once

#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "cli/Console.h"
#include "cli/ExitCode.h"
#include "cli/SendOptions.h"
#include "cli/UpdateResult.h"

namespace kestrav {

/// What is said about an image that is sent to several accessories: a line when one has ended, and at the end one table
/// of all, or one JSON object. May be used on any thread.
class FleetReport {
  public:
    FleetReport(const SendOptions& options, const Console& console) : options_(options), console_(console) {}

    /// Takes what became of one accessory, and says it in short.
    void add(const UpdateResult& result);

    /// Passes on what an update has complained about: whole lines, each of which is said once, for most are about the
    /// image that they share.
    void warn(const std::string& lines);

    /// Says that all are done, and that the next one may be plugged in.
    void sayNext();

    std::vector<UpdateResult> results() const;

    /// Says what became of all. Returns the worst of their statuses; with none at all, that there was no accessory.
    ExitCode end();

    /// Says what became of all so far, with these ends of those that the service goes on writing to. Nothing is said
    /// after it.
    void interrupt(const std::vector<UpdateResult>& underWay);

    /// Says why there is nothing to tell of any accessory.
    ExitCode endWithout(ExitCode status, const std::string& problem);

  private:
    void sayAll(ExitCode status, const std::string& problem);
    void printTable() const;
    void printJson(ExitCode status, const std::string& problem) const;
    bool isQuiet() const { return options_.quiet || options_.json; }

    const SendOptions& options_;
    Console console_;
    mutable std::mutex mutex_;
    std::vector<UpdateResult> results_;
    std::set<std::string> warned_;
    bool isOver_ = false;
};

}  // namespace kestrav
