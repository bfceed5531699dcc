#pragma once

#include <filesystem>
#include <string>
#include <sys/types.h>

namespace kestrav {

/// Locked while a free device is looked for and taken: somebody who tries a device that is another test's by then would
/// be found to use that test's disk.
inline constexpr const char* kLoopLock = "/tmp/kestrav-loop.lock";

/// A real block device of the kernel: a loop device over a file, with one partition from block 2048 to its end.
/// Needs root. Detached with the object.
class LoopDisk {
  public:
    struct Shape {
        bool isReadOnly = false;
        unsigned blockBytes = 512;
    };
    /// `image`, a file or another disk, exists and is larger than a mebibyte. Throws std::runtime_error.
    explicit LoopDisk(const std::filesystem::path& image) : LoopDisk(image, Shape{}) {}
    LoopDisk(const std::filesystem::path& image, const Shape& shape);
    ~LoopDisk();
    LoopDisk(const LoopDisk&) = delete;
    LoopDisk& operator=(const LoopDisk&) = delete;

    const std::string& name() const { return name_; }  // "loop0"
    std::string partitionName() const { return name_ + "p1"; }
    dev_t number() const { return number_; }
    dev_t partitionNumber() const;

    /// Puts another file in place, as if one disk was unplugged and another one got its name.
    void swapFor(const std::filesystem::path& image);

  private:
    void attach(const std::filesystem::path& image);
    void detach();

    Shape shape_;
    std::string name_;
    dev_t number_ = 0;
};

/// Makes the process see mounts and a /dev of its own from here on: an empty file system there, in which makeNode()
/// makes what a test needs. Nothing that happens in it reaches the machine.
void enterPrivateMounts();

/// Makes a block node of that number and returns its path.
std::string makeNode(const std::string& path, dev_t number);

}  // namespace kestrav
