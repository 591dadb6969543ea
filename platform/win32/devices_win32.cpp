#include "platform/devices.h"

#include "platform/library.h"

#include <windows.h>
// The device-setup declarations come after windows.h, which they build on.
#include <mmsystem.h>
#include <setupapi.h>
#include <winspool.h>

#include <vector>

namespace kq::platform {
namespace {

std::u16string from_wide(const wchar_t* text) {
    return std::u16string(reinterpret_cast<const char16_t*>(text), wcslen(text));
}

// The COM-port device interface class.
constexpr GUID kComPortInterface = {0x86E0D1E0, 0x8089, 0x11D0, {0x9C, 0xE4, 0x08, 0x00, 0x3E, 0x30, 0x1F, 0x73}};

// setupapi is loaded at run time; these are the functions the COM-port list needs.
struct SetupApi {
    decltype(&SetupDiGetClassDevsW) get_class_devices;
    decltype(&SetupDiEnumDeviceInterfaces) enumerate_interfaces;
    decltype(&SetupDiGetDeviceInterfaceDetailW) get_interface_detail;
    decltype(&SetupDiGetDeviceRegistryPropertyW) get_registry_property;
    decltype(&SetupDiDestroyDeviceInfoList) destroy_list;
};

// The product names of `count` MIDI devices of one direction.
template <class Caps>
std::vector<std::u16string> midi_names(UINT count, MMRESULT(WINAPI* get_caps)(UINT_PTR, Caps*, UINT)) {
    std::vector<std::u16string> names;
    for (UINT device = 0; device < count; ++device) {
        Caps caps{};
        if (get_caps(device, &caps, sizeof caps) != MMSYSERR_NOERROR) return {};
        names.push_back(from_wide(caps.szPname));
    }
    return names;
}

template <class Function>
Function resolve(const Library& library, const char* name) {
    return reinterpret_cast<Function>(library.find(name));
}

} // namespace

std::vector<std::u16string> printer_names() {
    constexpr DWORD kFlags = PRINTER_ENUM_LOCAL | PRINTER_ENUM_CONNECTIONS;
    DWORD needed = 0, count = 0;
    EnumPrintersW(kFlags, nullptr, 4, nullptr, 0, &needed, &count);
    if (needed == 0) return {};
    std::vector<BYTE> buffer(needed);
    if (!EnumPrintersW(kFlags, nullptr, 4, buffer.data(), needed, &needed, &count)) return {};
    const auto* printers = reinterpret_cast<const PRINTER_INFO_4W*>(buffer.data());
    std::vector<std::u16string> names;
    for (DWORD i = 0; i < count; ++i)
        if (printers[i].pPrinterName != nullptr) names.push_back(from_wide(printers[i].pPrinterName));
    return names;
}

std::vector<std::u16string> com_port_friendly_names() {
    const Library library = Library::load(u"setupapi.dll");
    const SetupApi api{
        resolve<decltype(&SetupDiGetClassDevsW)>(library, "SetupDiGetClassDevsW"),
        resolve<decltype(&SetupDiEnumDeviceInterfaces)>(library, "SetupDiEnumDeviceInterfaces"),
        resolve<decltype(&SetupDiGetDeviceInterfaceDetailW)>(library, "SetupDiGetDeviceInterfaceDetailW"),
        resolve<decltype(&SetupDiGetDeviceRegistryPropertyW)>(library, "SetupDiGetDeviceRegistryPropertyW"),
        resolve<decltype(&SetupDiDestroyDeviceInfoList)>(library, "SetupDiDestroyDeviceInfoList"),
    };
    if (!api.get_class_devices || !api.enumerate_interfaces || !api.get_interface_detail ||
        !api.get_registry_property || !api.destroy_list)
        return {};
    HDEVINFO devices =
        api.get_class_devices(&kComPortInterface, nullptr, nullptr, DIGCF_PRESENT | DIGCF_DEVICEINTERFACE);
    if (devices == INVALID_HANDLE_VALUE) return {};
    std::vector<std::u16string> names;
    for (DWORD index = 0;; ++index) {
        SP_DEVICE_INTERFACE_DATA interface_data{};
        interface_data.cbSize = sizeof interface_data;
        if (!api.enumerate_interfaces(devices, nullptr, &kComPortInterface, index, &interface_data)) break;
        DWORD detail_bytes = 0;
        api.get_interface_detail(devices, &interface_data, nullptr, 0, &detail_bytes, nullptr);
        if (detail_bytes < sizeof(SP_DEVICE_INTERFACE_DETAIL_DATA_W)) break;
        std::vector<BYTE> detail_buffer(detail_bytes);
        auto* detail = reinterpret_cast<SP_DEVICE_INTERFACE_DETAIL_DATA_W*>(detail_buffer.data());
        detail->cbSize = sizeof(SP_DEVICE_INTERFACE_DETAIL_DATA_W);
        SP_DEVINFO_DATA device{};
        device.cbSize = sizeof device;
        if (!api.get_interface_detail(devices, &interface_data, detail, detail_bytes, nullptr, &device)) break;
        wchar_t name[256 + 1] = {}; // at most 512 bytes of name
        if (!api.get_registry_property(devices, &device, SPDRP_FRIENDLYNAME, nullptr, reinterpret_cast<BYTE*>(name),
                                       512, nullptr))
            break;
        names.push_back(from_wide(name));
    }
    api.destroy_list(devices);
    return names;
}

bool dos_device_exists(std::u16string_view name) {
    const std::wstring device(name.begin(), name.end());
    std::vector<wchar_t> target(1000);
    return QueryDosDeviceW(device.c_str(), target.data(), static_cast<DWORD>(target.size())) != 0;
}

std::vector<std::u16string> midi_input_names() { return midi_names(midiInGetNumDevs(), midiInGetDevCapsW); }

std::vector<std::u16string> midi_output_names() { return midi_names(midiOutGetNumDevs(), midiOutGetDevCapsW); }

} // namespace kq::platform
