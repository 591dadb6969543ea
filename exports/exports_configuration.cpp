// Exports of models, ROMs, configuration reading and input ports. Texts handed to the host
// come from the global heap; the host frees them with GlobalFree.

#include "exports/host_text.h"
#include "kq_amiga.h"
#include "manifest/application_info.h"
#include "manifest/input_ports.h"
#include "manifest/rom_files.h"
#include "manifest/shared_folders.h"
#include "manifest/system_models.h"
#include "module/guard.h"

extern "C" kq_status KQGetApplicationInfo(kq_char** text, const char* manifest) {
    if (text == nullptr) return KQ_E_POINTER;
    *text = nullptr;
    return kq::guard([&] {
        std::u16string info;
        const kq::HResult loaded = kq::manifest::application_info(manifest, info);
        if (loaded != kq::status::ok) return loaded;
        return kq::hand_to_host(info, text);
    });
}

extern "C" kq_status KQROMExists(const kq_char* rom_id, const kq_char* model_id, const kq_char* video,
                                 const kq_char* data_folder) {
    const std::u16string_view rom = kq::text_view(rom_id), folder = kq::text_view(data_folder);
    if (rom.empty() || folder.empty()) return KQ_E_INVALIDARG;
    return kq::guard([&] {
        return kq::manifest::rom_exists(rom, kq::text_view(model_id), kq::text_view(video), folder)
                   ? kq::status::ok
                   : kq::status::nothing_more;
    });
}

extern "C" kq_status KQGetDefaultSystemROM(kq_char** rom_id, const kq_char* model_id) {
    if (rom_id == nullptr) return KQ_E_INVALIDARG;
    *rom_id = nullptr;
    if (model_id == nullptr) return KQ_E_INVALIDARG;
    return kq::guard([&] {
        // A failed allocation leaves the result null and still succeeds.
        kq::hand_to_host(kq::manifest::fill_system_defaults(kq::text_view(model_id)).rom, rom_id);
        return kq::status::ok;
    });
}

extern "C" kq_status KQGetRestoreSystemFilesPaths(kq_char** text, const kq_char* data_folder) {
    if (text == nullptr) return KQ_S_OK;
    *text = nullptr;
    if (data_folder == nullptr) return KQ_S_OK;
    return kq::guard(
        [&] { return kq::hand_to_host(kq::manifest::restore_system_files_paths(kq::text_view(data_folder)), text); });
}

extern "C" kq_status KQGetInputPortsInfo(const kq_char* model_id, const kq_char* multitap_type, uint32_t* port_count,
                                         uint32_t* multitap_ports, uint32_t* third, uint32_t* fourth) {
    if (model_id == nullptr) return KQ_E_INVALIDARG;
    const kq::manifest::InputPortsInfo info = kq::manifest::input_ports_info(kq::text_view(multitap_type));
    if (port_count != nullptr) *port_count = info.port_count;
    if (multitap_ports != nullptr) *multitap_ports = info.multitap_ports;
    if (third != nullptr) *third = info.third;
    if (fourth != nullptr) *fourth = info.fourth;
    return KQ_S_OK;
}

extern "C" kq_status KQGetDefaultInputPortContent(const kq_char* model_id, uint32_t port, uint32_t* content) {
    if (model_id == nullptr || content == nullptr) return KQ_E_INVALIDARG;
    *content = static_cast<uint32_t>(kq::manifest::default_port_content(kq::text_view(model_id), port));
    return KQ_S_OK;
}
