// Exports of media: runtime working copies, empty media, copies of medium files, volume
// names, boot tags and device commands. Those not built yet answer E_NOTIMPL.

#include "exports/export_text.h"
#include "kq_amiga.h"
#include "media/runtime_medium.h"
#include "module/guard.h"

extern "C" kq_status KQGetRuntimeMedium(const kq_char* image_path, const kq_char* alternate_folder,
                                        kq_char* buffer, uint32_t buffer_chars, uint32_t flags) {
    if (image_path == nullptr || buffer == nullptr || buffer_chars == 0) return KQ_E_INVALIDARG;
    return kq::guard([&] {
        kq::media::RuntimeMediumRequest request;
        request.image_path = kq::text_view(image_path);
        if (alternate_folder != nullptr && alternate_folder[0] != 0)
            request.alternate_folder = kq::text_view(alternate_folder);
        if (flags & kq::media::kRuntimeMediumCallerKey) request.caller_key = kq::text_view(buffer, buffer_chars);
        request.no_timestamp = (flags & kq::media::kRuntimeMediumNoTimestamp) != 0;
        std::u16string working_copy;
        const kq::HResult result = kq::media::make_runtime_medium(request, working_copy);
        if (result == kq::status::ok) kq::copy_truncated(working_copy, buffer, buffer_chars);
        return result;
    });
}

extern "C" kq_status KQCheckRuntimeMedium(const kq_char* working_copy, uint32_t* changed) {
    if (working_copy == nullptr || changed == nullptr) return KQ_E_INVALIDARG;
    return kq::guard([&] {
        bool is_changed = false;
        const kq::HResult result = kq::media::check_runtime_medium(kq::text_view(working_copy), is_changed);
        if (result == kq::status::ok) *changed = is_changed ? 1 : 0;
        return result;
    });
}

extern "C" kq_status KQDismissRuntimeMedium(const kq_char* working_copy, void*, uint32_t flags) {
    if (working_copy == nullptr) return KQ_E_INVALIDARG;
    return kq::guard([&] { return kq::media::dismiss_runtime_medium(kq::text_view(working_copy), flags); });
}

extern "C" kq_status KQGetEmptyMedium(kq_char**, void*, uint32_t) { return KQ_E_NOTIMPL; }
extern "C" kq_status KQGetEmptyMedium2(kq_char**, void*, uint32_t, uint32_t) {
    return KQ_E_NOTIMPL;
}
extern "C" kq_status KQFreeEmptyMedium(kq_char*) { return KQ_E_NOTIMPL; }
extern "C" kq_status KQCopyMediumFile(const kq_char*, const kq_char*, uint32_t, kq_char*,
                                      uint32_t) {
    return KQ_E_NOTIMPL;
}
extern "C" kq_status KQGetVolumeName(const kq_char*, kq_char*, uint32_t) { return KQ_E_NOTIMPL; }
extern "C" kq_status KQBootTag(const char*, const kq_char*, uint32_t, kq_char**) {
    return KQ_E_NOTIMPL;
}
extern "C" kq_status KQGetDeviceCommand(uint32_t, uint32_t, uint32_t, uint32_t, const kq_char*,
                                        KQDeviceCommand**) {
    return KQ_E_NOTIMPL;
}
extern "C" kq_status KQFreeDeviceCommand(KQDeviceCommand*) { return KQ_E_NOTIMPL; }
