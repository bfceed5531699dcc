#pragma once

#include <optional>
#include <string>

namespace kestrav {

/// Who takes connections on the service's port, such as "prometheus (process 4711)" or "a program of user 118"; nothing
/// where nobody does, or the system does not tell.
std::optional<std::string> listenerOnServicePort();

}  // namespace kestrav
