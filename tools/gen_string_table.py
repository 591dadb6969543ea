#!/usr/bin/env python3
"""Turns the module's string table source into its two built forms.

The source (resources/strings.txt) has one string per line: the decimal id, a tab, the text.
Lines that are empty or start with '#' are skipped. In the text, \\n stands for a line feed,
\\t for a tab and \\\\ for a backslash; everything else is taken as it stands (UTF-8).

Outputs:
  * a Windows resource script with one STRINGTABLE, loaded at run time with LoadStringW;
  * a C++ include with the same table as sorted {id, u"text"} rows for the native build.
windres does not decode UTF-8 in wide strings, so every character outside printable ASCII is
written as a \\xHHHH escape (one per UTF-16 code unit).
"""
import sys

ESCAPES = {'n': '\n', 't': '\t', '\\': '\\'}


def parse(path):
    rows = {}
    with open(path, encoding='utf-8') as source:
        for number, line in enumerate(source, 1):
            line = line.rstrip('\n')
            if not line or line.startswith('#'):
                continue
            id_text, sep, raw = line.partition('\t')
            if not sep or not id_text.isdigit():
                sys.exit(f'{path}:{number}: expected "<id><TAB><text>"')
            string_id = int(id_text)
            if not 0 < string_id < 65536:
                sys.exit(f'{path}:{number}: id {string_id} is outside 1..65535')
            if string_id in rows:
                sys.exit(f'{path}:{number}: id {string_id} appears twice')
            text, i = [], 0
            while i < len(raw):
                if raw[i] == '\\':
                    if i + 1 >= len(raw) or raw[i + 1] not in ESCAPES:
                        sys.exit(f'{path}:{number}: unknown escape in text')
                    text.append(ESCAPES[raw[i + 1]])
                    i += 2
                else:
                    text.append(raw[i])
                    i += 1
            rows[string_id] = ''.join(text)
    return dict(sorted(rows.items()))


def utf16_units(text):
    data = text.encode('utf-16-le')
    return [int.from_bytes(data[i:i + 2], 'little') for i in range(0, len(data), 2)]


def rc_literal(text):
    out = []
    for unit in utf16_units(text):
        if unit == 0x22:
            out.append('""')
        elif unit == 0x5C:
            out.append('\\\\')
        elif 0x20 <= unit < 0x7F:
            out.append(chr(unit))
        else:
            out.append(f'\\x{unit:04x}')
    return 'L"' + ''.join(out) + '"'


def cpp_literal(text):
    out = []
    for char in text:
        code = ord(char)
        if char in '"\\':
            out.append('\\' + char)
        elif 0x20 <= code < 0x7F:
            out.append(char)
        elif code < 0x20:
            out.append(f'\\{code:03o}')
        elif code < 0x10000:
            out.append(f'\\u{code:04x}')
        else:
            out.append(f'\\U{code:08x}')
    return 'u"' + ''.join(out) + '"'


def main():
    if len(sys.argv) != 4:
        sys.exit('usage: gen_string_table.py strings.txt out.rc out.inc')
    rows = parse(sys.argv[1])
    with open(sys.argv[2], 'w', encoding='ascii', newline='\n') as rc:
        rc.write('// Generated from resources/strings.txt; edit that file instead.\n')
        rc.write('STRINGTABLE\nBEGIN\n')
        for string_id, text in rows.items():
            rc.write(f'  {string_id}, {rc_literal(text)}\n')
        rc.write('END\n')
    with open(sys.argv[3], 'w', encoding='ascii', newline='\n') as inc:
        inc.write('// Generated from resources/strings.txt; edit that file instead.\n')
        inc.write('// Rows of {id, text}, sorted by id.\n')
        for string_id, text in rows.items():
            inc.write(f'{{{string_id}, {cpp_literal(text)}}},\n')


if __name__ == '__main__':
    main()
