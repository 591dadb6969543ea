// Exports of the drives' content texts: hard-disk summaries and tooltips, written into the
// host's buffer.

#include "content/content_info.h"
#include "content/content_tooltip.h"
#include "content/medium_name_readers.h"
#include "exports/export_text.h"
#include "kq_amiga.h"
#include "module/guard.h"

#include <span>

namespace {

std::span<char16_t> buffer_span(kq_char* buffer, uint32_t buffer_chars) {
    return {reinterpret_cast<char16_t*>(buffer), buffer_chars};
}

} // namespace

extern "C" kq_status KQGetContentTooltip(uint8_t drive_type, uint32_t drive_index, const kq_char* path,
                                         const kq_char* label, kq_char* buffer, uint32_t buffer_chars) {
    if (buffer == nullptr || buffer_chars == 0) return KQ_E_INVALIDARG;
    return kq::guard([&] {
        return kq::content::write_content_tooltip(drive_type, drive_index, kq::text_view(path), kq::text_view(label),
                                                  kq::content::media_layer_readers(),
                                                  buffer_span(buffer, buffer_chars));
    });
}

extern "C" kq_status KQGetContentInfo(uint8_t drive_type, uint32_t, const kq_char* list, const kq_char* records,
                                      kq_char* buffer, uint32_t buffer_chars, uint32_t flags) {
    if (buffer == nullptr || buffer_chars == 0 || drive_type != static_cast<uint8_t>(kq::content::DriveType::hard_disk))
        return KQ_E_INVALIDARG;
    return kq::guard([&] {
        return kq::content::write_content_info(kq::text_view(list), kq::text_view(records), flags,
                                               kq::content::media_layer_readers(), buffer_span(buffer, buffer_chars));
    });
}
