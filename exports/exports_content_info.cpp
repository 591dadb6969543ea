// Exports of the drives' content texts: hard-disk summaries and tooltips, written into the
// host's buffer, which is emptied first so that it never keeps an earlier text.

#include "content/content_info.h"
#include "content/content_tooltip.h"
#include "content/medium_name_readers.h"
#include "exports/host_text.h"
#include "kq_amiga.h"
#include "module/guard.h"

extern "C" kq_status KQGetContentTooltip(uint8_t drive_type, uint32_t drive_index, const kq_char* path,
                                         const kq_char* label, kq_char* buffer, uint32_t buffer_chars) {
    if (buffer == nullptr || buffer_chars == 0) return KQ_E_INVALIDARG;
    buffer[0] = 0;
    return kq::guard([&] {
        const std::optional<std::u16string> text = kq::content::content_tooltip_text(
            drive_type, drive_index, kq::text_view(path), kq::text_view(label), kq::content::media_layer_readers());
        if (!text) return kq::status::out_of_memory;
        kq::copy_truncated(*text, buffer, buffer_chars);
        return kq::status::ok;
    });
}

extern "C" kq_status KQGetContentInfo(uint8_t drive_type, uint32_t, const kq_char* list, const kq_char* records,
                                      kq_char* buffer, uint32_t buffer_chars, uint32_t flags) {
    if (buffer == nullptr || buffer_chars == 0 || drive_type != static_cast<uint8_t>(kq::content::DriveType::hard_disk))
        return KQ_E_INVALIDARG;
    buffer[0] = 0;
    return kq::guard([&] {
        const std::optional<std::u16string> text = kq::content::content_info_text(
            kq::text_view(list), kq::text_view(records), flags, kq::content::media_layer_readers());
        if (!text) return kq::status::out_of_memory;
        return kq::copy_whole(*text, buffer, buffer_chars);
    });
}
