#!/usr/bin/env python3
"""Writes docs/PERFORMANCE.md from one run of scripts/bench.sh.

  bench_report.py --results DIR --build DIR --command TEXT --output FILE

DIR holds what the run left: each benchmark program's output as NAME.txt (its last line
"summary bench=NAME key=value ..."), its exit status as NAME.rc and its duration in seconds as
NAME.seconds; key_translation.json is Google Benchmark's JSON; load.txt holds the load average
before and after the run. The page gives the machine, the date, the command and one table
with a row per measurement: the module's figure, the peer's, the ratio (the peer's time over
the module's: above 1, the module is faster) and both peak memories where measured."""

import argparse
import datetime
import json
import os
import platform
import re
import subprocess
from pathlib import Path

KEYSTROKE_CASES = [
    ("BM_PlainLetter", "plain letter 'a', en-us"),
    ("BM_ShiftedCharacter", "shifted character '!', en-us"),
    ("BM_KeyByPosition", "key by position (Return), en-us"),
    ("BM_DeadKeyComposition", "dead-key composition 'â', de-de"),
    ("BM_LastCharacterOfTheTable", "last character of the table 'ÿ', en-us"),
]


def command_output(arguments):
    try:
        return subprocess.run(arguments, capture_output=True, text=True, check=False).stdout
    except OSError:
        return ""


def first_line(text):
    return text.strip().splitlines()[0] if text.strip() else "unknown"


def machine(build):
    cpu = "unknown"
    for line in Path("/proc/cpuinfo").read_text().splitlines():
        if line.startswith("model name"):
            cpu = line.split(":", 1)[1].strip()
            break
    memory_kib = 0
    for line in Path("/proc/meminfo").read_text().splitlines():
        if line.startswith("MemTotal:"):
            memory_kib = int(line.split()[1])
    release = {}
    if Path("/etc/os-release").exists():
        for line in Path("/etc/os-release").read_text().splitlines():
            if "=" in line:
                key, value = line.split("=", 1)
                release[key] = value.strip('"')
    compiler = "c++"
    cache = Path(build) / "CMakeCache.txt"
    if cache.exists():
        found = re.search(r"^CMAKE_CXX_COMPILER:\w+=(.*)$", cache.read_text(), re.M)
        if found:
            compiler = found.group(1)
    build_type = "Release"
    if cache.exists():
        found = re.search(r"^CMAKE_BUILD_TYPE:\w+=(.*)$", cache.read_text(), re.M)
        if found:
            build_type = found.group(1)
    return {
        "cpu": cpu,
        "cores": os.cpu_count(),
        "memory": f"{memory_kib / 1024 / 1024:.1f} GiB",
        "os": f"{release.get('PRETTY_NAME', platform.system())}, Linux {platform.release()}",
        "compiler": f"{first_line(command_output([compiler, '--version']))} ({build_type}, CMake preset bench)",
    }


def peers():
    xdms = next((line for line in command_output(["xdms"]).splitlines() if "xDMS" in line), "xdms")
    xdms = " ".join(xdms.split(" - ")[0].split())
    return [
        ("GNU gzip", first_line(command_output(["gzip", "--version"]))),
        ("xdms", xdms),
        ("libxkbcommon", "libxkbcommon " + command_output(["dpkg-query", "-W", "-f", "${Version}", "libxkbcommon0"]).strip()
         + ", xkb-data " + command_output(["dpkg-query", "-W", "-f", "${Version}", "xkb-data"]).strip()),
        ("Python", first_line(command_output(["python3", "--version"]))),
    ]


def summary(results, name):
    """The benchmark's summary values, or None when it failed or left none."""
    rc = results / f"{name}.rc"
    if not rc.exists() or rc.read_text().strip() != "0":
        return None
    values = None
    for line in (results / f"{name}.txt").read_text(errors="replace").splitlines():
        if line.startswith("summary "):
            values = dict(field.split("=", 1) for field in line.split()[1:])
    if values is None or values.get("ok") != "1":
        return None
    return {key: (float(value) if re.fullmatch(r"[-+0-9.eE]+", value) else value) for key, value in values.items()}


def kib(value):
    return f"{int(value):,} KiB"


def row(what, module, peer, ratio, module_kib=None, peer_kib=None):
    ratio_text = f"{ratio:.2f}" if ratio >= 0.1 else f"{ratio:.2g}"  # two digits that are not zeros
    return [what, module, peer, ratio_text, kib(module_kib) if module_kib else "—", kib(peer_kib) if peer_kib else "—"]


def failed_row(what, peer):
    return [what, "failed", peer, "—", "—", "—"]


def keystroke_rows(results):
    path = results / "key_translation.json"
    rc = results / "key_translation.rc"
    peer_name = "libxkbcommon"
    if not path.exists() or not rc.exists() or rc.read_text().strip() != "0":
        return [failed_row("Keystroke translation", peer_name)]
    runs = {entry["name"]: entry for entry in json.loads(path.read_text())["benchmarks"]
            if not entry.get("error_occurred")}
    scale = {"ns": 1.0, "us": 1e3, "ms": 1e6, "s": 1e9}

    def nanoseconds(entry):
        return entry["real_time"] * scale[entry["time_unit"]]

    rows = []
    for name, label in KEYSTROKE_CASES:
        what = f"Keystroke translation (press, release, events fetched): {label}"
        peer = runs.get(f"{name}_Xkb")
        if name not in runs or peer is None:
            rows.append(failed_row(what, peer_name))
            continue
        ours, theirs = nanoseconds(runs[name]), nanoseconds(peer)
        rows.append(row(what, f"{ours:.1f} ns ({runs[name]['events_per_keystroke']:g} events)",
                        f"{peer_name}: {theirs:.1f} ns ({peer['events_per_keystroke']:g} events)", theirs / ours))
    return rows


def typing_rows(results):
    values = summary(results, "typing")
    peer_name = "libxkbcommon typing the same text"
    if values is None:
        return [failed_row("Typing a 1 MB text", peer_name)]
    megabytes = values["characters"] / 1e6
    rows = []
    for layout, key, xkb in (("en-us", "en_us", "us(intl)"), ("de-de", "de_de", "de(deadtilde)")):
        ours, theirs = values[f"{key}_mb_per_s"], values[f"{key}_xkb_mb_per_s"]
        rows.append(row(f"Typing {megabytes:g} MB of mixed text (raw key string), {layout}", f"{ours:.2f} MB/s",
                        f"{peer_name} on {xkb}: {theirs:.2f} MB/s", ours / theirs, values[f"{key}_peak_kib"],
                        values[f"{key}_xkb_peak_kib"]))
    return rows


def compression_rows(results):
    values = summary(results, "compression")
    if values is None:
        return [failed_row("Deflate and inflate of a hard-disk image", "GNU gzip")]
    size = int(values["mebibytes"])
    rows = []
    for operation, peer_name, what in (("deflate", "`gzip -6`", f"Deflate of a {size} MiB hard-disk image (.hdf → .hdz)"),
                                       ("inflate", "`gzip -d`", f"Inflate of the {size} MiB image's gzip file")):
        ours, theirs = values[f"{operation}_module_mib_per_s"], values[f"{operation}_gzip_mib_per_s"]
        rows.append(row(what, f"{ours:.1f} MiB/s", f"{peer_name}: {theirs:.1f} MiB/s", ours / theirs,
                        values[f"{operation}_module_peak_kib"], values[f"{operation}_gzip_peak_kib"]))
    return rows


def dms_rows(results):
    values = summary(results, "dms")
    if values is None:
        return [failed_row("DMS unpacking", "xdms")]
    ours, theirs = values["module_mib_per_s"], values["xdms_mib_per_s"]
    rows = [row(f"DMS unpacking, {int(values['archives'])} archives together", f"{ours:.1f} MiB/s",
                f"`xdms u`: {theirs:.1f} MiB/s", ours / theirs, values["module_peak_kib"], values["xdms_peak_kib"])]
    if "encrypted_slowest_ms" in values:
        slowest, xdms_plain = values["encrypted_slowest_ms"], values["xdms_plain_twin_mean_ms"]
        rows.append(row(f"DMS floppy encrypted with an unknown password, opened without it "
                        f"(slowest of {int(values['encrypted_archives'])} archives)", f"{slowest:.1f} ms",
                        f"`xdms u` of the plain twin: {xdms_plain:.1f} ms (the module: "
                        f"{values['plain_twin_mean_ms']:.1f} ms)", xdms_plain / slowest))
    return rows


def volume_name_rows(results):
    values = summary(results, "volume_name")
    if values is None:
        return [failed_row("Volume name of a large .hdz", "`gzip -dc`")]
    size = int(values["mebibytes"])
    ours, theirs = values["module_seconds"], values["gzip_seconds"]
    return [row(f"Volume name of a {size} MiB hard-disk image as .hdz", f"{ours * 1e3:.0f} ms",
                f"`gzip -dc` of the whole file: {theirs * 1e3:.0f} ms", theirs / ours, values["module_peak_kib"],
                values["gzip_peak_kib"])]


def auto_configuration_rows(results):
    values = summary(results, "auto_configuration")
    peer_name = "python3: `xml.etree` parse, the same regions of each medium read, document written"
    if values is None:
        return [failed_row("Auto-configuration of a ten-medium catalog", peer_name)]
    ours, theirs = values["module_ms_per_call"], values["python_ms_per_call"]
    return [row(f"Auto-configuration of a catalog of {int(values['media'])} media, per call", f"{ours:.2f} ms",
                f"{peer_name}: {theirs:.2f} ms", theirs / ours, values["module_peak_kib"], values["python_peak_kib"])]


def notes(results):
    """One paragraph per benchmark on what it measures, with the sizes and counts of this run."""
    typing = summary(results, "typing") or {}
    compression = summary(results, "compression") or {}
    dms = summary(results, "dms") or {}
    volume = summary(results, "volume_name") or {}
    auto = summary(results, "auto_configuration") or {}

    def get(values, key, form="{:g}"):
        return form.format(values[key]) if key in values else "?"

    return [
        "- **Keystroke translation** (`key_translation_bench`, Google Benchmark, real time per iteration): one",
        "  host key pressed and released through the key translation with every queued event fetched, as a host",
        "  does it; the events are the Amiga key events that come out. The peer is libxkbcommon, the keyboard",
        "  library of Wayland and X clients, typing the same character on the matching XKB layout (us(intl) for",
        "  en-us, de for de-de): the key events that type it, each handled as a client does (keysym, compose",
        "  state for dead keys, character, state update); each peer checks that the character came out.",
        f"- **Typing** (`typing_bench`): the raw key string (`raw_key_string_block`, mode 0) of {get(typing, 'characters', '{:,.0f}')}",
        "  characters of words, accented Latin-1 letters, numbers, punctuation and line breaks; MB counts the",
        f"  text's characters (one byte each in Latin-1); fastest of {get(typing, 'rounds')} calls in a process of its own.",
        "  The module writes the key events as text "
        f"({get(typing, 'en_us_units_per_character', '{:.1f}')} UTF-16 units per character in en-us,",
        f"  {get(typing, 'de_de_units_per_character', '{:.1f}')} in de-de), counted first and then written into one block of its exact",
        f"  size ({get(typing, 'en_us_output_kib', '{:,.0f}')} KiB in en-us): the peak memory is that block, the text and a",
        "  constant. The peer types the same",
        "  text with libxkbcommon: the key events of each character come from a table learnt from the keymap",
        "  beforehand (every key under Shift and AltGr, then every dead key followed by every key), are written as",
        "  (keycode, direction) pairs and handed to the keyboard state as a client would, dead keys through the",
        f"  compose table ({get(typing, 'en_us_xkb_events_per_character', '{:.2f}')} events per character in us(intl)); the characters",
        "  that come out must be the text.",
        f"- **Deflate and inflate** (`compression_bench`): a {get(compression, 'mebibytes')} MiB hard-disk image of empty",
        "  stretches, text and incompressible data, compressed at zlib's default level (gzip -6's) and inflated",
        f"  again, outputs compared byte for byte; compressed sizes: module {get(compression, 'deflate_module_bytes', '{:,.0f}')} bytes,",
        f"  gzip -6 {get(compression, 'deflate_gzip_bytes', '{:,.0f}')} bytes.",
        f"- **DMS unpacking** (`dms_bench`): the {get(dms, 'archives')} test archives in `tests/data/dms`, each process",
        f"  unpacking about {get(dms, 'repetitions')} disks' worth, fastest of {get(dms, 'rounds')} processes; throughput of",
        "  all archives together and the largest peak memory of any archive; images compared byte for byte.",
        "  Encrypted: each plain sample of the test disk encrypted with the first key of its published",
        "  password-protected twin (the heavy 2 one is that twin byte for byte but for its date), and the",
        "  twin itself, unpacked without the password, which the module finds from the first cylinder;",
        "  milliseconds per unpack in a process of its own: " + ", ".join(
            f"{key[len('encrypted_ms_'):]} {value:.1f}" for key, value in dms.items()
            if key.startswith("encrypted_ms_")) + ".",
        f"- **Volume name** (`volume_name_bench`): the volume name of a {get(volume, 'mebibytes')} MiB image with a",
        "  Rigid Disk Block, gzipped as .hdz; the module inflates only up to the root block (half-way) and",
        "  skips the CRC-32, which a pass stopped early never gets to compare; the peer inflates the whole file",
        "  and checks it. One process each.",
        f"- **Auto-configuration** (`auto_configuration_bench`): `auto_configure` on a catalog of {get(auto, 'media')} media",
        f"  ({get(auto, 'media_bytes', '{:,.0f}')} bytes) written by the benchmark: six data floppies as .adf and .adz, a",
        "  high-density floppy, an empty floppy, a 32 MiB .hdf with a Rigid Disk Block, an .iso; none of the first",
        f"  nine boots, so all are analysed. Fastest of {get(auto, 'calls')} calls in a process of its own. The peer",
        "  (`tools/bench_catalog_reader.py`) parses the catalog with `xml.etree`, reads from each medium its first",
        "  64 KiB and the 64 KiB around its middle (where a volume keeps its root block; .adz through gzip) and",
        "  writes the document back: the same files and regions, without interpreting them. Both inflate each",
        "  .adz up to its root block; Python's gzip reader keeps a CRC-32 as it goes, the module does not.",
    ]


def durations(results):
    total = 0.0
    parts = []
    for path in sorted(results.glob("*.seconds")):
        seconds = float(path.read_text())
        total += seconds
        parts.append(f"{path.stem} {seconds:.0f} s")
    return total, parts


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--results", required=True)
    parser.add_argument("--build", required=True)
    parser.add_argument("--command", required=True)
    parser.add_argument("--output", required=True)
    arguments = parser.parse_args()
    results = Path(arguments.results)

    rows = (keystroke_rows(results) + typing_rows(results) + compression_rows(results) + dms_rows(results) +
            volume_name_rows(results) + auto_configuration_rows(results))
    facts = machine(arguments.build)
    load = (results / "load.txt").read_text().split() if (results / "load.txt").exists() else ["?", "?"]
    total, parts = durations(results)
    date = datetime.datetime.now(datetime.timezone.utc).strftime("%Y-%m-%d %H:%M UTC")

    lines = [
        "# Performance",
        "",
        "Written by `scripts/bench.sh` from one run of every benchmark in `bench/` with its peers; run it again",
        "to refresh this page. Each peer is an independent program or library measured in the same run on the",
        "same input. **Ratio** is the peer's time over the module's: above 1, the module is faster. Peak memory",
        "is the peak resident set of the process that did the work (`wait4`), where it was measured.",
        "",
        "## Machine and run",
        "",
        f"- CPU: {facts['cpu']}, {facts['cores']} cores",
        f"- Memory: {facts['memory']}",
        f"- OS: {facts['os']}",
        f"- Compiler: {facts['compiler']}",
        "- Peers: " + "; ".join(f"{name}: {version}" for name, version in peers()),
        f"- Date: {date}",
        f"- Command: `{arguments.command}`",
        f"- Load average (1 min) before and after the run: {load[0]} and {load[1]} (the machine is shared: "
        "figures move with the load of others)",
        f"- Duration of the benchmarks: {total:.0f} s ({', '.join(parts)})",
        "",
        "## Results",
        "",
        "| Measured | Module | Peer | Ratio | Module peak | Peer peak |",
        "|---|---:|---|---:|---:|---:|",
    ]
    lines += ["| " + " | ".join(cells) + " |" for cells in rows]
    lines += ["", "## What each row measures", ""] + notes(results) + [""]
    slower = [cells for cells in rows if cells[3] not in ("—",) and float(cells[3]) < 1]
    if slower:
        lines += ["", "## Where the module is slower than its peer", ""]
        lines += [f"- {cells[0]}: ratio {cells[3]} ({cells[1]} against {cells[2]})." for cells in slower]
    failed = [cells for cells in rows if cells[1] == "failed"]
    if failed:
        lines += ["", "## Failed", ""]
        lines += [f"- {cells[0]}: the benchmark failed; see its output in the run's log." for cells in failed]
    Path(arguments.output).parent.mkdir(parents=True, exist_ok=True)
    Path(arguments.output).write_text("\n".join(lines) + "\n")


if __name__ == "__main__":
    main()
