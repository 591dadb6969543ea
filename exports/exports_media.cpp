// Exports of media: runtime working copies, empty media, copies of medium files, volume
// names, boot tags and device commands.

#include "common/windows_path.h"
#include "exports/host_text.h"
#include "input/device_commands.h"
#include "kq_amiga.h"
#include "manifest/boot_tag.h"
#include "media/analysis/medium_analysis.h"
#include "media/copy_medium.h"
#include "media/empty_medium.h"
#include "media/runtime_medium.h"
#include "module/guard.h"

extern "C" kq_status KQGetRuntimeMedium(const kq_char* image_path, const kq_char* alternate_folder, kq_char* buffer,
                                        uint32_t buffer_chars, uint32_t flags) {
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

extern "C" kq_status KQGetEmptyMedium2(kq_char** path, void*, uint32_t must_be_zero, uint32_t kind) {
    if (path != nullptr) *path = nullptr;
    return kq::guard([&] {
        std::u16string made;
        const kq::HResult result = kq::media::make_empty_medium(must_be_zero, kind, path != nullptr ? &made : nullptr);
        if (result != kq::status::ok || path == nullptr) return result;
        const kq::HResult handed = kq::hand_to_host(made, path);
        if (handed != kq::status::ok) kq::media::free_empty_medium(made); // the host never gets to free it
        return handed;
    });
}

extern "C" kq_status KQGetEmptyMedium(kq_char** path, void* reserved, uint32_t must_be_zero) {
    return KQGetEmptyMedium2(path, reserved, must_be_zero, 0);
}

extern "C" kq_status KQFreeEmptyMedium(kq_char* path) {
    if (path == nullptr) return KQ_S_OK;
    kq::guard([&] {
        kq::media::free_empty_medium(kq::text_view(path));
        return kq::status::ok;
    });
    kq::platform::heap_free(kq::platform::Heap::global, path);
    return KQ_S_OK;
}

extern "C" kq_status KQCopyMediumFile(const kq_char* source, const kq_char* target_folder, uint32_t flags,
                                      kq_char* buffer, uint32_t buffer_chars) {
    if (source == nullptr || target_folder == nullptr || buffer == nullptr || buffer_chars == 0) return KQ_E_INVALIDARG;
    // Refused before any file-system look-up: the core looks for the short names of non-ASCII
    // elements first, which would turn a source without a separator into a file-system error.
    if (!kq::has_path_separator(kq::text_view(source))) return KQ_E_INVALIDARG;
    return kq::guard([&] {
        std::u16string target;
        const kq::HResult result =
            kq::media::copy_medium_file(kq::text_view(source), kq::text_view(target_folder), flags, target);
        if (result == kq::status::ok) kq::copy_truncated(target, buffer, buffer_chars);
        return result;
    });
}

extern "C" kq_status KQGetVolumeName(const kq_char* image_path, kq_char* buffer, uint32_t buffer_chars) {
    if (image_path == nullptr || buffer == nullptr || buffer_chars == 0) return KQ_E_INVALIDARG;
    return kq::guard([&] {
        kq::media::MediumAnalysis analysis;
        if (kq::media::analyse_medium(kq::text_view(image_path), analysis) != kq::media::AnalysisFailure::none)
            return kq::status::failed;
        kq::copy_truncated(analysis.volume_name, buffer, buffer_chars);
        return kq::status::ok;
    });
}

extern "C" kq_status KQBootTag(const char* manifest, const kq_char* data_root, uint32_t operation, kq_char** path) {
    if (path != nullptr) *path = nullptr;
    if (manifest == nullptr || data_root == nullptr) return KQ_E_INVALIDARG;
    return kq::guard([&] {
        std::u16string resolved;
        const kq::HResult result = kq::manifest::boot_tag_path(manifest, kq::text_view(data_root), operation, resolved);
        if (result != kq::status::ok || path == nullptr) return result;
        return kq::hand_to_host(resolved, path);
    });
}

extern "C" kq_status KQGetDeviceCommand(uint32_t index, uint32_t category, uint32_t, uint32_t, const kq_char* model_id,
                                        KQDeviceCommand** command) {
    if (command == nullptr) return KQ_E_INVALIDARG;
    *command = nullptr;
    return kq::guard([&] {
        const std::optional<kq::input::DeviceCommandText> text =
            kq::input::device_command(index, category, kq::text_view(model_id));
        if (!text) return kq::status::nothing_more;
        return kq::hand_to_host(kq::input::pack_device_command(*text), command);
    });
}

extern "C" kq_status KQFreeDeviceCommand(KQDeviceCommand* command) {
    kq::platform::heap_free(kq::platform::Heap::local, command);
    return KQ_S_OK;
}
