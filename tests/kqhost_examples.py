#!/usr/bin/env python3
"""Runs the reference host's examples of the README under Wine and checks what they print.

The examples are the console block after the "<!-- kqhost examples -->" marker: a line
"$ kqhost ARGS" is a command, run from the top of the tree; the lines after it, up to the next
command, must appear in its output in that order (other output may come between them; a line
"..." only marks such a gap). Every command must end with exit code 0. "<COPY>" in a command
stands for the first line that the last "runtime get" printed (the working copy's path).
Before the run, build/examples is emptied (the examples write there) and given the folders
"copies" and "data" (a shared data folder with a ROM file "Shared\rom\amiga-os-310-a1200.rom").
After them, "undms" of a DMS archive cut short must fail and leave no output file behind.

usage: kqhost_examples.py ROOT KQHOST_EXE
"""
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path

MARKER = "<!-- kqhost examples -->"


def read_examples(readme):
    text = readme.read_text(encoding="utf-8")
    start = text.index(MARKER)
    block = text[text.index("```console\n", start) + len("```console\n"):]
    block = block[:block.index("```")]
    examples = []
    for line in block.splitlines():
        if line.startswith("$ kqhost "):
            examples.append((line[len("$ kqhost "):], []))
        elif examples and line.strip() and line.strip() != "...":
            examples[-1][1].append(line.rstrip())
    return examples


def split_arguments(text):
    """Words separated by blanks; double quotes group words (backslashes are plain characters,
    as in Windows paths)."""
    words, word, quoted, started = [], "", False, False
    for char in text:
        if char == '"':
            quoted, started = not quoted, True
        elif char == " " and not quoted:
            if started:
                words.append(word)
            word, started = "", False
        else:
            word, started = word + char, True
    if started:
        words.append(word)
    return words


def missing_lines(expected, output):
    """The expected lines that do not appear, in order, in the output."""
    lines = [line.rstrip() for line in output.replace("\r", "").split("\n")]
    at = 0
    for index, want in enumerate(expected):
        while at < len(lines) and lines[at] != want:
            at += 1
        if at == len(lines):
            return expected[index:]
        at += 1
    return []


def run_kqhost(root, kqhost, argv):
    """Runs kqhost under Wine; returns its exit code, standard output and standard error.

    The output goes through files rather than pipes: Wine's background processes inherit the
    pipes and hold them open for seconds after the program itself has ended."""
    with tempfile.TemporaryFile() as out, tempfile.TemporaryFile() as err:
        code = subprocess.run([str(root / "scripts" / "wine-run.sh"), kqhost, *argv], cwd=root,
                              stdout=out, stderr=err).returncode
        texts = []
        for stream in (out, err):
            stream.seek(0)
            texts.append(stream.read().decode(errors="replace").replace("\r\n", "\n").replace("\r", "\n"))
        return code, texts[0], texts[1]


def main():
    root, kqhost = Path(sys.argv[1]), sys.argv[2]
    examples = read_examples(root / "README.md")
    work = root / "build" / "examples"
    shutil.rmtree(work, ignore_errors=True)
    (work / "copies").mkdir(parents=True)
    # A shared data folder holding a (stand-in) Kickstart ROM file.
    (work / "data" / "Shared" / "rom").mkdir(parents=True)
    (work / "data" / "Shared" / "rom" / "amiga-os-310-a1200.rom").write_bytes(bytes(524288))
    commands = set()
    copy = None
    failures = 0
    for arguments, expected in examples:
        if copy is not None:
            arguments = arguments.replace("<COPY>", copy)
        argv = split_arguments(arguments)
        commands.add(argv[0])
        code, stdout, stderr = run_kqhost(root, kqhost, argv)
        output = stdout + stderr
        if argv[:2] == ["runtime", "get"] and code == 0:
            copy = stdout.split("\n")[0]
        missing = missing_lines(expected, output)
        if code != 0 or missing:
            failures += 1
            print(f"FAILED: kqhost {arguments} (exit code {code})")
            for line in missing:
                print(f"  missing: {line}")
            print("  output:\n    " + output.replace("\n", "\n    "))
        else:
            print(f"ok: kqhost {arguments}")
    # A failed command removes the output file that it created.
    (work / "cut.dms").write_bytes((root / "tests" / "data" / "dms" / "rle_small.dms").read_bytes()[:1024])
    code, _, _ = run_kqhost(root, kqhost, ["undms", r"build\examples\cut.dms", r"build\examples\cut.adf"])
    if code == 0 or (work / "cut.adf").exists():
        failures += 1
        left = "left behind" if (work / "cut.adf").exists() else "removed"
        print(f"FAILED: kqhost undms of a cut archive: exit code {code}, output file {left}")
    else:
        print("ok: kqhost undms of a cut archive fails and leaves no output file")
    # Every command of the help text has an example.
    help_text = run_kqhost(root, kqhost, ["help"])[1]
    listed = {line.split()[0] for line in help_text.split("\n")
              if line.startswith("  ") and not line.startswith("      ") and line.strip()}
    for command in sorted(listed - commands):
        failures += 1
        print(f"FAILED: no example of kqhost {command}")
    print(f"{len(examples)} examples, {failures} failed")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
