#pragma once

#include <QString>

namespace kestrav {

/// The folder that an image was chosen from last, at an earlier start or at this one. Empty if there was none, if it is
/// gone, or if what stands in the person's settings can't be the name of a folder.
QString lastFolder();

/// Keeps it for the next time. Where the settings can't be written it is forgotten.
void keepLastFolder(const QString& folder);

}  // namespace kestrav
