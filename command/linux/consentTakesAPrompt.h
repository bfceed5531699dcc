#pragma once

namespace kestrav {

/// Whether an administrator would have to be asked for a password if this process wanted the accessory's disk written.
/// Asks polkit, and asks nobody else. False where that can't be told: the service decides for itself.
bool consentTakesAPrompt();

}  // namespace kestrav
