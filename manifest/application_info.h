#pragma once
// A few lines about a manifest's hardware for the host player, each ending in CR LF:
//   Model: <display name>        when the model id is a known one
//   ROM: <display name>          when the system ROM is one of the model's selectable ROMs
//   CPU: <CPU>                   or, with a second processor, "CPU 1: <CPU>" and
//                                "CPU 2: PPC 604e"
//   PCI bridge: Prometheus       with a PCI network or audio card
// The text is empty when the manifest names no model.

#include "module/status.h"

#include <string>

namespace kq::manifest {

// Parses the zero-terminated UTF-8 manifest: its parse status, or S_OK with `text`.
HResult application_info(const char* manifest_utf8, std::u16string& text);

} // namespace kq::manifest
