#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace kestrav {

class AccessoryFinder;
class CommandService;
class LogSink;

/// Has the command service write image files onto the accessory's disk, and read blocks of it back: looks for the
/// accessory, then hands the service the command lines for it. Whether they did their work is for the service to say.
class ImageSender {
  public:
    /// The references are not owned and outlive this object.
    ImageSender(AccessoryFinder& finder, CommandService& commands, LogSink& log);

    /// See `KestravDevice`, whose operations these are.
    bool firmwareUpdate(std::string_view path);
    bool iconUpdate(std::string_view path);
    bool pushDevice(std::int64_t firstBlock, std::string_view filename);
    std::string pullDevice(std::int64_t firstBlock, std::int64_t length);

  private:
    bool update(std::int64_t firstBlock, std::string_view path);

    AccessoryFinder& finder_;
    CommandService& commands_;
    LogSink& log_;
};

}  // namespace kestrav
