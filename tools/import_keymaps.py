#!/usr/bin/env python3
"""Imports the team's keymap facts (JSON, one file per layout) into the project's own keymap
files, resources/keymaps/<layout>.keymap, which the build reads. Run it again only when the
facts change; its output is committed:

    tools/import_keymaps.py ../shared/keymaps resources/keymaps

The keymap file keeps each raw key as AmigaOS does: its key type, its Caps Lock and repeat
bits, and either its key-map word (four characters) or, for a dead or string key, the bytes of
its descriptor. The keypad bracket pair of the layout catalogue is stated beside it.
"""
import json
import pathlib
import sys

# The catalogue's keypad bracket pairs (characters of raw keys 0x5A and 0x5B).
BRACKETS = {
    'en-us': '()', 'en-gb': '()', 'fr-ca': '@\u00b0', 'en-dvorak-us': '()',
}
DEFAULT_BRACKETS = '[]'


def hex_bytes(values):
    return ' '.join(f'{v:02X}' for v in values)


def convert(source: pathlib.Path, target_folder: pathlib.Path):
    facts = json.loads(source.read_text(encoding='utf-8'))
    layout = facts['id']
    keys = facts['keys']
    if len(keys) != 128 or [k['raw'] for k in keys] != list(range(128)):
        sys.exit(f'{source}: expected 128 keys in raw-key order')
    lines = [
        f"# {layout}.keymap: the \"{facts['name']}\" keymap of the Amiga platform module, in AmigaOS form.",
        f"# Imported by tools/import_keymaps.py from the team's keymap facts ({facts['source_keymap_name']}).",
        '# Their notes:',
    ]
    for note in facts.get('notes', []):
        words, line = note.split(), '#  '
        for word in words:
            if len(line) + len(word) > 98:
                lines.append(line.rstrip())
                line = '#    '
            line += word + ' '
        lines.append(line.rstrip())
    lines += [
        '#',
        '# "key RR TT FLAGS map C0 C1 C2 C3": raw key RR, key type TT and the four characters of its',
        '# key-map word, least significant first. "key RR TT FLAGS descriptor ...": a dead or string',
        '# key (type bit 0x20 or 0x40) and the bytes of its descriptor. FLAGS: "c" Caps Lock acts as',
        '# Shift, "r" the key repeats, "-" neither. Numbers are hexadecimal; characters ISO-8859-1.',
        f'layout {layout}',
    ]
    brackets = BRACKETS.get(layout, DEFAULT_BRACKETS)
    lines.append('brackets ' + hex_bytes(ord(c) for c in brackets))
    for key in keys:
        flags = ('c' if key['capsable'] else '') + ('r' if key['repeatable'] else '')
        head = f"key {key['raw']:02X} {key['type']:02X} {flags or '-'}"
        if 'map' in key:
            lines.append(f"{head} map {hex_bytes(key['map'])}")
        else:
            lines.append(f"{head} descriptor {hex_bytes(key['descriptor'])}")
    (target_folder / f'{layout}.keymap').write_text('\n'.join(lines) + '\n', encoding='utf-8')


def main():
    if len(sys.argv) != 3:
        sys.exit('usage: import_keymaps.py FACTS_FOLDER TARGET_FOLDER')
    source_folder, target_folder = pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2])
    target_folder.mkdir(parents=True, exist_ok=True)
    for source in sorted(source_folder.glob('*.json')):
        convert(source, target_folder)


if __name__ == '__main__':
    main()
