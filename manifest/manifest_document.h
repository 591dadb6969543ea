#pragma once
// One parsed package manifest: a `kq9` document (everything under "kq9/application") or the
// catalog form that auto-configuration completes ("xadml/catalog/application"); the same
// operations serve both. Created per call, used by one thread at a time.
//
// Statuses: E_INVALIDARG for a missing argument, HRESULT_FROM_WIN32(ERROR_EMPTY) when no document
// is loaded, HRESULT_FROM_WIN32(ERROR_NOT_FOUND) when a path names no element; lookups that find nothing
// return null.

#include "manifest/element_access.h"
#include "manifest/xml_parser.h"
#include "module/status.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace kq::manifest {

inline constexpr HResult kDocumentEmpty = status::from_win32(platform::system_error::empty);
inline constexpr HResult kElementNotFound = status::from_win32(platform::system_error::not_found);
// LoadManifestFile reports every failure before parsing as "file not found", deliberately
// hiding the cause.
inline constexpr HResult kManifestFileUnreadable = status::from_win32(platform::system_error::file_not_found);
// A safety cap on manifest files, not a limit of the format: manifests are a few kilobytes.
inline constexpr std::uint64_t kMaxManifestFileBytes = 256u << 20;

enum class Encoding : int { ascii = 0, utf8 = 1 };
enum class Layout { indented, compact };

class ManifestDocument {
public:
    ManifestDocument() = default;

    // Parses zero-terminated manifest text (its length is taken from the terminator),
    // replacing any earlier document. A null text gives E_INVALIDARG; any failure leaves the
    // document empty.
    HResult load(const char* text);
    // Parses the host's UTF-16 text the same way; its XML declaration's encoding is ignored.
    // Text that is not valid UTF-16 gives HRESULT_FROM_WIN32(ERROR_INVALID_DATA).
    HResult load_utf16(std::u16string_view text);
    // Reads a whole file and parses it the same way.
    HResult load_file(std::u16string_view path);
    bool is_empty() const { return document_ == nullptr; }
    // The root element; null when no document is loaded.
    Element root_element() const;
    // "kq9/application", or "xadml/catalog/application" for a catalog document.
    std::string application_path() const;

    HResult find_element_by_path(std::string_view path, Element& out) const;
    Element find_element_by_path(std::string_view path) const;
    // E_FAIL when the element exists but has no text; otherwise the path lookup's status.
    HResult get_path_text(std::string_view path, Text& out) const;
    // The path lookup's status when the element is missing, HRESULT_FROM_WIN32(ERROR_NOT_FOUND) when the
    // attribute is missing, E_FAIL when it is empty.
    HResult get_path_attribute(std::string_view path, const char* name, Text& out) const;

    // Lookups among the children of the configuration, in document order; the first match.
    Element configuration() const;
    Element find_peripheral(std::u16string_view kind) const;
    Element find_peripheral_unit(std::u16string_view kind, std::int32_t unit) const;
    // With no type: the first such element that has no "type" attribute.
    Element find_typed_element(std::string_view name, std::optional<std::u16string_view> type) const;
    // A port: a `peripheral` whose text begins with "input-" (but is not
    // "input-virtualbuttons"), on the multitap or not; `kind` receives its text.
    Element find_input_port(std::int32_t unit, bool multitap, Text* kind = nullptr) const;
    Element find_multitap(Text* type = nullptr) const;
    Element find_keyboard(Text* layout = nullptr) const;
    Element find_button_set(Element port) const;
    // Among the media: with `root` "shared", the first shared medium; otherwise the first
    // medium whose file name equals `file_name` and whose root (default "embedded") equals
    // `root` (default "embedded").
    Element find_medium(std::optional<std::u16string_view> file_name, std::optional<std::u16string_view> root) const;

    // Editing. An empty value or text counts as none.
    static HResult set_attribute(Element element, const char* name, std::u16string_view value);
    static HResult set_element_text(Element element, std::u16string_view text);
    static void remove_element(Element element);
    HResult create_element(std::string_view parent_path, const char* name, std::u16string_view text,
                           Element* created = nullptr);
    HResult set_path_attribute(std::string_view path, const char* name, std::u16string_view value);

    // Peripheral setters: a value creates the peripheral of that kind when it is missing and
    // sets its attribute; no value removes the peripheral.
    HResult set_peripheral(std::u16string_view kind, const char* attribute, std::u16string_view value);
    HResult set_fpu(std::u16string_view fpu_id) { return set_peripheral(u"fpu", "type", fpu_id); }
    HResult set_network(std::size_t index);
    HResult set_audio(std::size_t index);
    HResult set_scsi(std::size_t index);
    HResult set_keyboard(std::u16string_view layout) { return set_peripheral(u"keyboard", "layout", layout); }
    // Sets the text of the element found by find_typed_element, creating it (with its type)
    // under the configuration when missing; no text removes the element.
    HResult set_typed_element(const char* name, std::optional<std::u16string_view> type, std::u16string_view text);
    // The JIT compiler on (fpu="true", an 8 MiB cache) or off (removed, except on the flexible
    // models, which keep the peripheral without "fpu" and with memory="0").
    HResult set_jit(bool enabled, std::u16string_view model_id);

    // The whole document as XML text. E_INVALIDARG for an unknown encoding, E_POINTER for a
    // null output, E_OUTOFMEMORY when the text cannot grow.
    HResult save(Encoding encoding, std::string* out, Layout layout = Layout::indented) const;

private:
    std::string configuration_path() const { return application_path() + "/configuration"; }

    XmlDocument document_;
};

} // namespace kq::manifest
