#pragma once
// A package's boot tag (the "boot" element of its configuration, with its "type" attribute)
// resolved into the path of a shared boot medium or boot folder under the shared data root:
//   adf: Shared\adf\amiga-os-<tag>-workbench.adf for a tag that starts with a digit, else
//        Shared\adf\<tag>.adf; "aros-latest..." is the newest Shared\adf\aros-*-boot.adf
//   hdf: Shared\hdf\<tag>.hdf when that file exists and the tag does not start with a digit,
//        else Shared\hdf\workbench-<tag>.hdf
//   dir: "3x0" Shared\dir\System, "aros" Shared\dir\AROS

#include "module/status.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace kq::manifest {

// Resolves a tag of a type; E_INVALIDARG for an unknown type or dir tag.
HResult resolve_boot_tag(std::u16string_view tag, std::u16string_view type, std::u16string_view data_root,
                         std::u16string& path);

// Reads the tag from manifest text and resolves it. E_INVALIDARG for a non-zero `operation`;
// failures of parsing and of reading the element and its type are returned as they are.
HResult boot_tag_path(const char* manifest, std::u16string_view data_root, std::uint32_t operation,
                      std::u16string& path);

// The newest "aros-<release>-boot.adf" in `folder` (without ".adf"): releases compare by their
// numbers, part by part ("20130502" after "20120101", "1.10" after "1.9").
std::optional<std::u16string> newest_aros_boot_disk(std::u16string_view folder);

} // namespace kq::manifest
