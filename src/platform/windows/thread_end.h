// What keeps a module loaded while threads have thread_local objects of it.
#pragma once

namespace vellum250::platform {

// False while a thread has thread_local objects that are not destroyed yet: their code, and what
// they registered elsewhere, would be gone with the module. Otherwise nothing of this module's own
// keeps it loaded any more; the caller must hold a reference to the module.
bool ThreadsLetGo();

}  // namespace vellum250::platform
