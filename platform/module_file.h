#pragma once
// The module's own identity: its instance handle, stored when the library is attached to the
// process, and the full path of its file.

#include "platform/files.h"

#include <string>

namespace kq::platform {

void set_module_instance(void* instance) noexcept;
// The module instance handle; before it is set, the module that holds this code (so that a
// program linking the core statically finds its own resources).
void* module_instance() noexcept;
// Full path of the module's file, at most kMaxPathChars - 1 characters; empty when it cannot
// be read in full.
std::u16string module_file_path();

} // namespace kq::platform
