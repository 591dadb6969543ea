#!/usr/bin/env python3
"""Turns the keymap files (resources/keymaps/*.keymap) into the keyboard tables of the module.

    gen_keyboard_layouts.py KEYMAP_FOLDER LAYOUTS_INC FACTS_INC

LAYOUTS_INC holds, per layout, the keymap image (the byte form that the module hands out and
recognises) and the character table; FACTS_INC holds the keymaps themselves (types, key-map
words, descriptors) for the tests' model of the guest.

Keymap image: version 1, a reserved byte, the 128 key types, the 128 key-map words big-endian
(zero for dead and string keys, which carry descriptors instead), and the 16-byte Caps Lock set.

Character table: every character of 0x20-0x7E and 0xA0-0xFF that the keymap can type, in
character order, each with the strokes that type it, as AmigaOS reads keys:
  * a key's characters under a qualifier come from its key-map word (types 0-7), a plain or
    one-byte string entry of its descriptor, or byte 0 of a dead-key translation table;
  * a dead key (DPF_DEAD, index i, double-dead factor f) followed by a key with a translation
    table gives byte i (f = 0) or byte i * f (f > 0) of that table;
  * two dead keys (index j, then index i with factor f > 0) before such a key give byte
    i * f + j.
Where several stroke sequences give a character, the table keeps the one that
  1. stays in the main key block (no numeric keypad key),
  2. then needs fewer qualifiers (Shift, Alt, Control) over all its strokes,
  3. then takes fewer strokes,
  4. then has the lower raw keys (compared stroke by stroke).
So an accent on a dead key of the base layer is typed as that key and Space (which also gives
the dead key its name) rather than with Alt on another key.
A stroke code holds up to three 10-bit strokes (raw key in bits 0-6, Shift 7, Alt 8, Control 9;
raw key 127 for no stroke), the first in bits 0-9.
"""
import pathlib
import sys

SHIFT, ALT, CONTROL = 1, 2, 4
KCF_DEAD, KCF_STRING, KCF_NOP = 0x20, 0x40, 0x80
DPF_MOD, DPF_DEAD = 0x01, 0x08
KEYPAD = {0x0F, 0x1D, 0x1E, 0x1F, 0x2D, 0x2E, 0x2F, 0x3C, 0x3D, 0x3E, 0x3F, 0x43, 0x4A,
          0x5A, 0x5B, 0x5C, 0x5D, 0x5E}
NO_STROKE = 0x7F
# The qualifiers that the characters of a key-map word stand for, by key type.
MAP_QUALIFIERS = {0: [0], 1: [0, SHIFT], 2: [0, ALT], 3: [0, SHIFT, ALT, SHIFT | ALT],
                  4: [0, CONTROL], 5: [0, SHIFT, CONTROL, SHIFT | CONTROL],
                  6: [0, ALT, CONTROL, ALT | CONTROL], 7: [0, SHIFT, ALT, SHIFT | ALT]}


def typeable(c):
    return 0x20 <= c <= 0x7E or 0xA0 <= c <= 0xFF


class Keymap:
    def __init__(self, path):
        self.path = path
        self.layout = None
        self.brackets = None
        self.keys = {}  # raw -> (type, capsable, repeatable, map or None, descriptor or None)
        for number, line in enumerate(path.read_text(encoding='utf-8').splitlines(), 1):
            if not line or line.startswith('#'):
                continue
            words = line.split()
            if words[0] == 'layout':
                self.layout = words[1]
            elif words[0] == 'brackets':
                self.brackets = [int(w, 16) for w in words[1:3]]
            elif words[0] == 'key':
                raw, key_type, flags, kind = int(words[1], 16), int(words[2], 16), words[3], words[4]
                data = [int(w, 16) for w in words[5:]]
                if kind not in ('map', 'descriptor') or (kind == 'map' and len(data) != 4):
                    sys.exit(f'{path}:{number}: bad key line')
                self.keys[raw] = (key_type, 'c' in flags, 'r' in flags,
                                  data if kind == 'map' else None,
                                  data if kind == 'descriptor' else None)
            else:
                sys.exit(f'{path}:{number}: unknown line')
        if self.layout is None or self.brackets is None or sorted(self.keys) != list(range(128)):
            sys.exit(f'{path}: needs a layout, brackets and all 128 keys')

    def outputs(self, raw):
        """(qualifier, kind, value) per qualifier slot of a key: kind 'char' (value: character),
        'dead' (value: (index, factor)) or 'mod' (value: translation table)."""
        key_type, _, _, word, descriptor = self.keys[raw]
        if key_type & KCF_NOP:
            return []
        if not key_type & (KCF_DEAD | KCF_STRING):
            return [(q, 'char', word[i]) for i, q in enumerate(MAP_QUALIFIERS[key_type & 7]) if word[i]]
        slots = [q for q in range(8) if q & ~(key_type & 7) == 0]
        result = []
        if key_type & KCF_STRING:
            for n, q in enumerate(slots):
                length, offset = descriptor[2 * n], descriptor[2 * n + 1]
                if length == 1:
                    result.append((q, 'char', descriptor[offset]))
            return result
        mod_offsets = sorted(descriptor[2 * n + 1] for n in range(len(slots)) if descriptor[2 * n] == DPF_MOD)
        for n, q in enumerate(slots):
            flag, value = descriptor[2 * n], descriptor[2 * n + 1]
            if flag == 0:
                result.append((q, 'char', value))
            elif flag == DPF_DEAD:
                result.append((q, 'dead', (value & 0x0F, value >> 4)))
            elif flag == DPF_MOD:
                end = next((o for o in mod_offsets if o > value), len(descriptor))
                result.append((q, 'mod', descriptor[value:end]))
        return result

    def image(self):
        types = [self.keys[r][0] for r in range(128)]
        words = []
        caps = [0] * 16
        for raw in range(128):
            key_type, capsable, _, word, _ = self.keys[raw]
            plain = word if word is not None and not key_type & (KCF_DEAD | KCF_STRING) else [0, 0, 0, 0]
            words += list(reversed(plain))  # big-endian: the fourth character first
            if capsable:
                caps[raw // 8] |= 1 << (raw % 8)
        return [1, 0] + types + words + caps

    def character_table(self):
        direct, dead, mods = [], [], []
        for raw in range(0x78):
            for q, kind, value in self.outputs(raw):
                if kind == 'char':
                    direct.append(((raw, q), value))
                elif kind == 'dead':
                    dead.append(((raw, q), value))
                else:
                    mods.append(((raw, q), value))
                    direct.append(((raw, q), value[0]))
        candidates = {}

        def offer(character, strokes):
            if not typeable(character):
                return
            rank = (any(r in KEYPAD for r, _ in strokes), sum(bin(q).count('1') for _, q in strokes),
                    len(strokes), [r for r, _ in strokes])
            if character not in candidates or rank < candidates[character][0]:
                candidates[character] = (rank, strokes)

        for stroke, character in direct:
            offer(character, [stroke])
        for dead_stroke, (index, factor) in dead:
            for mod_stroke, table in mods:
                position = index * factor if factor else index
                if position < len(table):
                    offer(table[position], [dead_stroke, mod_stroke])
        for first_stroke, (first_index, _) in dead:
            for second_stroke, (index, factor) in dead:
                if not factor:
                    continue
                for mod_stroke, table in mods:
                    position = index * factor + first_index
                    if position < len(table):
                        offer(table[position], [first_stroke, second_stroke, mod_stroke])

        def code(strokes):
            fields = [raw | q << 7 for raw, q in strokes] + [NO_STROKE] * (3 - len(strokes))
            return fields[0] | fields[1] << 10 | fields[2] << 20

        return [(character, code(candidates[character][1])) for character in sorted(candidates)]


def ident(layout):
    return layout.replace('-', '_')


def main():
    if len(sys.argv) != 4:
        sys.exit('usage: gen_keyboard_layouts.py KEYMAP_FOLDER LAYOUTS_INC FACTS_INC')
    keymaps = [Keymap(p) for p in sorted(pathlib.Path(sys.argv[1]).glob('*.keymap'))]
    header = '// Generated by tools/gen_keyboard_layouts.py from resources/keymaps; edit those instead.\n'
    layouts, facts = [header], [header]
    for keymap in keymaps:
        for raw, character in zip((0x5A, 0x5B), keymap.brackets):
            if (0, 'char', character) not in keymap.outputs(raw):
                sys.exit(f'{keymap.path}: keypad key {raw:02X} does not give its bracket character')
        name = ident(keymap.layout)
        image = keymap.image()
        layouts.append(f'inline constexpr std::array<std::uint8_t, {len(image)}> kKeymapImage_{name}{{\n')
        for i in range(0, len(image), 16):
            layouts.append('    ' + ', '.join(f'0x{b:02X}' for b in image[i:i + 16]) + ',\n')
        layouts.append('};\n')
        table = keymap.character_table()
        layouts.append(f'inline constexpr std::array<CharacterEntry, {len(table)}> kCharacters_{name}{{{{\n')
        for character, code in table:
            layouts.append(f'    {{0x{character:02X}, 0x{code:08X}}},\n')
        layouts.append('}};\n')
        layouts.append(f'inline constexpr std::array<char16_t, 2> kBrackets_{name}{{0x{keymap.brackets[0]:02X}, '
                       f'0x{keymap.brackets[1]:02X}}};\n\n')

        facts.append(f'inline constexpr KeyFacts kKeyFacts_{name}[128] = {{\n')
        for raw in range(128):
            key_type, capsable, _, word, descriptor = keymap.keys[raw]
            word_text = ', '.join(f'0x{b:02X}' for b in (word or [0, 0, 0, 0]))
            descriptor = descriptor or []
            if len(descriptor) > 128:
                sys.exit(f'{keymap.path}: descriptor of key {raw:02X} longer than 128 bytes')
            descriptor_text = ', '.join(f'0x{b:02X}' for b in descriptor)
            facts.append(f'    {{0x{key_type:02X}, {str(capsable).lower()}, {{{word_text}}}, {len(descriptor)}, '
                         f'{{{descriptor_text}}}}},\n')
        facts.append('};\n')
    pathlib.Path(sys.argv[2]).write_text(''.join(layouts), encoding='ascii')
    pathlib.Path(sys.argv[3]).write_text(''.join(facts), encoding='ascii')


if __name__ == '__main__':
    main()
