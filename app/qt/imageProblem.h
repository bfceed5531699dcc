#pragma once

#include <QString>

namespace kestrav {

/// Why the file at `path` can't be sent as an image, as a sentence that says what to do; empty for an ordinary file
/// that can be read. Waits for nobody: a pipe is looked at, not opened for its other end to come.
QString imageProblem(const QString& path);

}  // namespace kestrav
