#pragma once

namespace kestrav {

/// Has the program's texts, and those that the toolkit's own dialogs bring along, appear in the first of the person's
/// languages that there are translations for. Called once the application object is there, before its first text; what
/// it installs belongs to that object.
void installTranslations();

}  // namespace kestrav
