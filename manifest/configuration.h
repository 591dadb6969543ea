#pragma once
// The machine configuration that a manifest describes, value by value, each with its default
// when the manifest is silent; and the writers that set them in the same places.

#include "manifest/manifest_document.h"

#include <cstdint>
#include <string>

namespace kq::manifest {

// The model id as written ("system" text); empty when the manifest names none.
std::u16string read_model_id(const ManifestDocument& document);

// The system ROM: the `rom` with type="system", else the first `rom` without a type; a short
// legacy id is completed (normalize_rom_id) and written back into the element. The model's
// default ROM when there is none.
struct SystemRom {
    std::u16string id;
    bool rewritten = false;
};
SystemRom read_system_rom(ManifestDocument& document);

struct CpuSetting {
    std::u16string id;      // the model's default CPU when none is named
    bool max_speed = false; // speed="max"
};
CpuSetting read_cpu(const ManifestDocument& document);

// The FPU: the named one, else the model's default FPU while the CPU in use is the model's
// default CPU (compared with letter case here); else none (empty).
std::u16string read_fpu(const ManifestDocument& document);

enum class SecondProcessor : std::uint32_t { none = 0, parallel = 1, exclusive = 2 };
SecondProcessor read_second_processor(const ManifestDocument& document);

struct JitSetting {
    bool enabled = false;
    bool fpu = false;
    std::uint32_t cache_bytes = 0;
};
JitSetting read_jit(const ManifestDocument& document);

// Chip memory in bytes; the model's default when none is given.
std::uint32_t read_chip_memory(const ManifestDocument& document);
bool read_ecs_agnus(const ManifestDocument& document);

// Indexes into the network, audio and SCSI vocabularies; 0: none.
std::size_t read_network(const ManifestDocument& document);
std::size_t read_audio(const ManifestDocument& document);
std::size_t read_scsi(const ManifestDocument& document);

Text read_keyboard_layout(const ManifestDocument& document);
// The video text, if any; "ntsc" means NTSC, anything else PAL.
Text read_video(const ManifestDocument& document);
bool read_is_ntsc(const ManifestDocument& document);

// The OR of the bits of every `compatibility` element's switch; unknown names count nothing.
std::uint32_t read_compatibility(const ManifestDocument& document);
// The bit of a compatibility switch name; 0 for an unknown one.
std::uint32_t compatibility_bit(std::u16string_view name);

// Writers. An empty id or 0 removes the element.
HResult write_system_rom(ManifestDocument& document, std::u16string_view rom_id);
HResult write_cpu(ManifestDocument& document, std::u16string_view cpu_id, bool max_speed);
HResult write_second_processor(ManifestDocument& document, SecondProcessor mode);
// Chip memory: removed when it is the model's default; the ECS Agnus peripheral follows the
// size (present exactly when the model has an Agnus limit and the size exceeds it).
HResult write_chip_memory(ManifestDocument& document, std::uint32_t bytes);
HResult write_video(ManifestDocument& document, bool ntsc);
// One `compatibility` element per switch that `bits` sets; elements of unknown switches stay.
HResult write_compatibility(ManifestDocument& document, std::uint32_t bits);

} // namespace kq::manifest
