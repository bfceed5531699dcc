#pragma once

#include "app/Resources.h"

namespace kestrav {

/// The files that are built into the program.
class ProgramResources final : public Resources {
  public:
    ProgramResources();
    std::optional<std::string> resource(std::string_view name, std::string_view extension) const override;
};

}  // namespace kestrav
