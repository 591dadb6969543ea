#pragma once
// The import of an emulator configuration file (".uae") as a catalog document
// (xadml/catalog/application): the machine, its expansions, compatibility switches, game ports
// and media, for the host to treat like any other application.

#include "content/configuration_import/import_steps.h"
#include "module/status.h"

#include <string>
#include <string_view>

namespace kq::content {

// The extension of emulator configuration files.
inline constexpr std::u16string_view kConfigurationFileExtension = u"uae";

// Reads the configuration file at `path` and returns the catalog document as UTF-8 XML text
// with its byte-order mark and declaration in `xml`. Statuses: S_OK; the read failure's system
// error as an HRESULT (HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND) for a missing file,
// ...(ERROR_ACCESS_DENIED) when access is denied); kConfigurationTooLarge for a file over 1 MiB;
// the document writer's failure (E_OUTOFMEMORY). `xml` is empty on every failure. Values that cannot be used are
// skipped.
HResult import_emulator_configuration(std::u16string_view path, std::string& xml);

// The import of a configuration already read, whose file lay in `folder` (the base of relative
// folders), asking `files` about the files that it names.
HResult build_catalog(const UaeConfiguration& configuration, std::u16string_view folder, const ImportFileSystem& files,
                      std::string& xml);

} // namespace kq::content
