#pragma once

#include <string>

/// Where the sources and what is built of them stand. One object alone knows it, so that the compiler cache takes all
/// the others for any other clone.
namespace kestrav::places {

/// A file or folder of the sources: "simulator".
std::string ofSource(const std::string& name);
/// A program of this build: "kestrav-bless".
std::string ofProgram(const std::string& name);
/// Something else that the build has made, by its path in the build's folder.
std::string ofBuilt(const std::string& name);

}  // namespace kestrav::places
