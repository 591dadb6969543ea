#!/usr/bin/env python3
"""Turns the module's string table source into its built forms.

The source (resources/strings.txt) has one string per line: the decimal id, a tab, the name, a
tab, the text. Lines that are empty or start with '#' are skipped. The name is a lower
snake_case C++ identifier, unique in the table. In the text, \\n stands for a line feed, \\t for
a tab and \\\\ for a backslash; everything else is taken as it stands (UTF-8).

Outputs:
  * a Windows resource script with one STRINGTABLE, loaded at run time with LoadStringW;
  * a C++ include with the same table as sorted {id, u"text"} rows for the native build;
  * a C++ header that names every id: kq::strings::<name>, of type kq::StringId.
windres does not decode UTF-8 in wide strings, so every character outside printable ASCII is
written as a \\xHHHH escape (one per UTF-16 code unit).
"""
import re
import sys

ESCAPES = {'n': '\n', 't': '\t', '\\': '\\'}
NAME = re.compile(r'[a-z][a-z0-9]*(_[a-z0-9]+)*')
CPP_KEYWORDS = frozenset("""
    alignas alignof and and_eq asm auto bitand bitor bool break case catch char char8_t char16_t
    char32_t class compl concept const consteval constexpr constinit const_cast continue co_await
    co_return co_yield decltype default delete do double dynamic_cast else enum explicit export
    extern false float for friend goto if inline int long mutable namespace new noexcept not not_eq
    nullptr operator or or_eq private protected public register reinterpret_cast requires return
    short signed sizeof static static_assert static_cast struct switch template this thread_local
    throw true try typedef typeid typename union unsigned using virtual void volatile wchar_t while
    xor xor_eq""".split())
LINE_CHARS = 120  # the header's lines, with the texts in their comments cut to fit


def parse(path):
    """{id: (name, text)}, sorted by id."""
    rows, name_lines = {}, {}
    with open(path, encoding='utf-8') as source:
        for number, line in enumerate(source, 1):
            line = line.rstrip('\n')
            if not line or line.startswith('#'):
                continue
            fields = line.split('\t', 2)
            if len(fields) != 3 or not fields[0].isdigit():
                sys.exit(f'{path}:{number}: expected "<id><TAB><name><TAB><text>"')
            id_text, name, raw = fields
            string_id = int(id_text)
            if not 0 < string_id < 65536:
                sys.exit(f'{path}:{number}: id {string_id} is outside 1..65535')
            if string_id in rows:
                sys.exit(f'{path}:{number}: id {string_id} appears twice')
            if not name:
                sys.exit(f'{path}:{number}: id {string_id} has no name')
            if not NAME.fullmatch(name):
                sys.exit(f'{path}:{number}: name "{name}" is not a lower snake_case identifier')
            if name in CPP_KEYWORDS:
                sys.exit(f'{path}:{number}: name "{name}" is a C++ keyword')
            if name in name_lines:
                sys.exit(f'{path}:{number}: name "{name}" appears twice (first on line {name_lines[name]})')
            name_lines[name] = number
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
            rows[string_id] = (name, ''.join(text))
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


def comment_text(text, room):
    """The text for a // comment in at most `room` characters: ASCII only, quoted (so that the line
    never ends in a backslash), cut with "..." when it does not fit."""
    pieces = []
    for char in text:
        code = ord(char)
        if char == '\\':
            pieces.append('\\\\')
        elif char in '\n\t':
            pieces.append('\\n' if char == '\n' else '\\t')
        elif 0x20 <= code < 0x7F:
            pieces.append(char)
        else:
            pieces.append(f'\\u{code:04x}' if code < 0x10000 else f'\\U{code:08x}')
    if sum(map(len, pieces)) + 2 > room:
        kept, used = [], 0
        for piece in pieces:
            if used + len(piece) + 5 > room:
                break
            kept.append(piece)
            used += len(piece)
        pieces = kept + ['...']
    return '"' + ''.join(pieces) + '"'


def main():
    if len(sys.argv) != 5:
        sys.exit('usage: gen_string_table.py strings.txt out.rc out.inc out.h')
    rows = parse(sys.argv[1])
    with open(sys.argv[2], 'w', encoding='ascii', newline='\n') as rc:
        rc.write('// Generated from resources/strings.txt; edit that file instead.\n')
        rc.write('STRINGTABLE\nBEGIN\n')
        for string_id, (_, text) in rows.items():
            rc.write(f'  {string_id}, {rc_literal(text)}\n')
        rc.write('END\n')
    with open(sys.argv[3], 'w', encoding='ascii', newline='\n') as inc:
        inc.write('// Generated from resources/strings.txt; edit that file instead.\n')
        inc.write('// Rows of {id, text}, sorted by id.\n')
        for string_id, (_, text) in rows.items():
            inc.write(f'{{{string_id}, {cpp_literal(text)}}},\n')
    with open(sys.argv[4], 'w', encoding='ascii', newline='\n') as header:
        header.write('#pragma once\n'
                     '// Generated from resources/strings.txt; edit that file instead.\n'
                     '// The ids of the module\'s texts, by name (platform::load_string loads them).\n'
                     '\n'
                     '#include <cstdint>\n'
                     '\n'
                     'namespace kq {\n'
                     '\n'
                     '// The id of a text in the module\'s string table.\n'
                     'using StringId = std::uint16_t;\n'
                     '\n'
                     'namespace strings {\n'
                     '\n')
        for string_id, (name, text) in rows.items():
            line = f'inline constexpr StringId {name} = {string_id};  // '
            header.write(line + comment_text(text, LINE_CHARS - len(line)) + '\n')
        header.write('\n'
                     '} // namespace strings\n'
                     '\n'
                     '} // namespace kq\n')


if __name__ == '__main__':
    main()
