// Compatibility switches and the screen clip.

#include "content/configuration_import/import_steps.h"

#include "common/integer_text.h"

#include <array>

namespace kq::content {
namespace {

enum class Condition {
    is_false,                   // boolean `key` (default true) is false
    is_true,                    // boolean `key` (default false) is true
    equals,                     // `key` equals `text`
    jit_and_not_cpu_compatible, // a JIT cache ("cachesize" not 0) with "cpu_compatible" false
};

struct SwitchRule {
    Condition condition;
    std::u16string_view key, text, name;
};

constexpr std::array kSwitchRules{
    SwitchRule{Condition::is_false, u"blitter_cycle_exact", {}, u"flexible-blitter-cycles"},
    SwitchRule{Condition::is_true, u"immediate_blits", {}, u"flexible-blitter-immediate"},
    SwitchRule{Condition::is_false, u"cpu_cycle_exact", {}, u"flexible-cpu-cycles"},
    SwitchRule{Condition::is_false, u"cpu_compatible", {}, u"flexible-cpu-compatibility"},
    SwitchRule{Condition::is_false, u"fpu_strict", {}, u"flexible-fpu-compatibility"},
    SwitchRule{Condition::equals, u"sound_output", u"normal", u"flexible-sound"},
    SwitchRule{Condition::equals, u"collision_level", u"sprites", u"flexible-sprite-collisions-spritesonly"},
    SwitchRule{Condition::equals, u"collision_level", u"playfields", u"flexible-sprite-collisions-spritesplayfield"},
    SwitchRule{Condition::equals, u"floppy_speed", u"0", u"turbo-floppy"},
    SwitchRule{Condition::jit_and_not_cpu_compatible, u"cachesize", {}, u"jit"},
    SwitchRule{Condition::is_true, u"magic_mouse", {}, u"mouseintegration"},
    SwitchRule{Condition::equals, u"gfx_max_horizontal", u"hires", u"flexible-maxhorizontal-nosuperhires"},
    SwitchRule{Condition::equals, u"gfx_max_horizontal", u"lores", u"flexible-maxhorizontal-nohires"},
    SwitchRule{Condition::equals, u"gfx_max_vertical", u"lores", u"flexible-maxvertical-nointerlace"},
};

bool holds(const SwitchRule& rule, const UaeConfiguration& configuration) {
    switch (rule.condition) {
    case Condition::is_false: return !configuration.boolean(rule.key, true);
    case Condition::is_true: return configuration.boolean(rule.key, false);
    case Condition::equals: return configuration.is(rule.key, rule.text);
    case Condition::jit_and_not_cpu_compatible:
        return configuration.number_or(rule.key, 0) > 0 && !configuration.boolean(u"cpu_compatible", true);
    }
    return false;
}

// The emulator's "not set" value of the centring positions.
constexpr std::int32_t kNoPosition = -1000;
// The emulator's horizontal centring position lies this far right of the clip's left edge.
constexpr std::int32_t kClipLeftOffset = 256;

void add_clip(const UaeConfiguration& configuration, CatalogWriter& catalog) {
    if (!configuration.is(u"gfx_filter_autoscale", u"manual")) return;
    const std::int32_t left = configuration.number_or(u"gfx_center_horizontal_position", kNoPosition);
    const std::int32_t top = configuration.number_or(u"gfx_center_vertical_position", kNoPosition);
    const std::int32_t width = configuration.number_or(u"gfx_width", 0);
    const std::int32_t height = configuration.number_or(u"gfx_height", 0);
    if (left == kNoPosition || top == kNoPosition || width == 0 || height == 0) return;
    catalog.add(CatalogSection::configuration, "clip", {},
                {{"left", decimal_text(std::int64_t{left} - kClipLeftOffset)},
                 {"top", decimal_text(top)},
                 {"width", decimal_text(std::int64_t{width} * 2)},
                 {"height", decimal_text(height)},
                 {"version", u"2"}});
}

} // namespace

void import_switches(const ImportSource& source, CatalogWriter& catalog) {
    for (const SwitchRule& rule : kSwitchRules)
        if (holds(rule, source.configuration)) catalog.add(CatalogSection::configuration, "compatibility", rule.name);
    add_clip(source.configuration, catalog);
}

} // namespace kq::content
