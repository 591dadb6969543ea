#!/usr/bin/env python3
"""The string table generator accepts a well-formed source and refuses each malformed one with
the message that names its fault. Usage: gen_string_table_test.py path/to/gen_string_table.py"""
import pathlib
import subprocess
import sys
import tempfile

# Source text, then the message expected (None: accepted).
CASES = [
    ('130\tipf_library_missing\tIPF Support Library Not Found\n131\tf10_key\tF10\n', None),
    ('130\tIPF Support Library Not Found\n', 'expected "<id><TAB><name><TAB><text>"'),
    ('130\t\tIPF Support Library Not Found\n', 'id 130 has no name'),
    ('130\tIpf-Missing\tText\n', 'name "Ipf-Missing" is not a lower snake_case identifier'),
    ('130\tipf__missing\tText\n', 'name "ipf__missing" is not a lower snake_case identifier'),
    ('130\tdefault\tText\n', 'name "default" is a C++ keyword'),
    ('130\tnone\tNone\n131\tnone\tNone\n', 'strings.txt:2: name "none" appears twice (first on line 1)'),
    ('130\tnone\tNone\n130\tother\tOther\n', 'strings.txt:2: id 130 appears twice'),
]


def main():
    generator = sys.argv[1]
    failures = 0
    with tempfile.TemporaryDirectory() as folder:
        source = pathlib.Path(folder, 'strings.txt')
        outputs = [str(pathlib.Path(folder, name)) for name in ('strings.rc', 'rows.inc', 'string_ids.h')]
        for text, expected in CASES:
            source.write_text(text, encoding='utf-8')
            run = subprocess.run([sys.executable, generator, str(source), *outputs], capture_output=True, text=True)
            accepted = run.returncode == 0
            if expected is None and not accepted:
                print(f'refused {text!r}: {run.stderr.strip()}')
                failures += 1
            elif expected is not None and (accepted or expected not in run.stderr):
                print(f'{text!r}: expected "{expected}", got exit {run.returncode}: {run.stderr.strip()}')
                failures += 1
    return 1 if failures else 0


if __name__ == '__main__':
    sys.exit(main())
