#!/usr/bin/env python3
"""Damage sweep: seeded damaged copies of every drawing of a folder, each read by
`dxfimport stats` and drawn by `dxfimport render` under a time limit.

usage: damage_sweep.py DXFIMPORT DIR [--copies N] [--seed S] [--timeout SECONDS]
                       [--slow SECONDS] [--jobs N] [--kinds K,K,...] [--keep DIR]
                       [--out REPORT.md]

Each copy carries one kind of damage (the kinds take turns over a drawing's copies, so
ten copies meet ten kinds), applied one to four times at places the seed chooses. A run
that ends by a signal is a crash; one still running after --timeout seconds is a hang
(ended); both are kept in --keep with the command that shows them. The report lists
crashes, hangs, runs slower than --slow seconds and the slowest runs, and exits 1 when
there was a crash or a hang. The same seed makes the same copies on every machine.
"""
import argparse
import concurrent.futures
import os
import random
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import time

EXTREMES = ["1e20", "-1e20", "1e300", "-1e300", "1e400", "-1e400", "nan", "inf", "-inf", "0", "-0",
            "2147483648", "-2147483649", "4294967295", "99999999999999999999", "1e-320", "3.4e39",
            "32768", "-32769", "1.#QNAN", ""]
MTEXT_FRAGMENTS = ["\\pt", "\\ptower", "\\pxi-3,l", "\\pxt1e300,1e300;", "{\\H", "\\H1e400;", "\\H0x;",
                   "\\S1^", "\\S", "{\\f", "\\fArial|b1", "\\W0;", "\\W1e300;", "\\T1e9;", "\\Q1e20;",
                   "\\A", "\\C", "\\c99999999999;", "%%", "%%u", "%%999999", "^", "^J^I", "\\U+",
                   "\\U+FFFFFFFF", "\\M+1", "\\M+5FFFF", "\\", "{{{{{{{{", "}}}}", "\\P\\N\\X", "\\L\\O\\K"]
COUNT_CODES = ["90", "91", "92", "93", "70", "71", "72", "73", "74", "75", "76", "78", "79", "95",
               "96", "97", "98", "453", "160", "170"]
ANGLE_CODES = ["50", "51", "52", "53", "41", "42"]
CODES = ["0", "9", "2", "10", "20", "40", "50", "62", "70", "90", "93", "330", "999", "1071", "-1",
         "32767", "70000", "abc", "", "1e400", " 10 ", "10.5"]
ANGLES = ["1e20", "-1e20", "1e300", "360000000", "nan", "-1e300", "1e15"]
COUNTS = ["2147483647", "-2147483648", "1000000000", "99999999999", "-1", "65535", "1e9"]


def numeric(line):
    return re.fullmatch(r"\s*[-+]?(\d+\.?\d*|\.\d+)([eE][-+]?\d+)?\s*", line) is not None


def pairs(lines):
    """Indices of code lines (even lines from the first) whose value follows."""
    return range(0, len(lines) - 1, 2)


def values_after(lines, codes):
    return [i + 1 for i in pairs(lines) if lines[i].strip() in codes]


def replace_value(codes, choices):
    """A kind of damage: the value after one of `codes` (None: any numeric value) replaced
    by one of `choices`."""
    def damage(lines, rng):
        spots = values_after(lines, codes) if codes else [i + 1 for i in pairs(lines) if numeric(lines[i + 1])]
        if spots:
            lines[rng.choice(spots)] = rng.choice(choices)
    return damage


def text_values(lines):
    """The values of texts: MTEXT contents (1 and 3) when the drawing has any, else the
    values of TEXT, ATTRIB and ATTDEF (1)."""
    mtext, text, kind = [], [], ""
    for i in pairs(lines):
        code = lines[i].strip()
        if code == "0":
            kind = lines[i + 1].strip()
        elif kind == "MTEXT" and code in ("1", "3"):
            mtext.append(i + 1)
        elif code == "1":
            text.append(i + 1)
    return mtext or text


def mtext_splice(lines, rng):
    spots = text_values(lines)
    if spots:
        i = rng.choice(spots)
        at = rng.randint(0, len(lines[i]))
        lines[i] = lines[i][:at] + rng.choice(MTEXT_FRAGMENTS) + lines[i][at:]


def drop_line(lines, rng):
    if lines:
        del lines[rng.randrange(len(lines))]


def duplicate_line(lines, rng):
    if lines:
        i = rng.randrange(len(lines))
        lines.insert(i, lines[i])


def swap_lines(lines, rng):
    if len(lines) > 2:
        i = rng.randrange(len(lines) - 1)
        lines[i], lines[i + 1] = lines[i + 1], lines[i]


def change_code(lines, rng):
    spots = list(pairs(lines))
    if spots:
        lines[rng.choice(spots)] = rng.choice(CODES)


def truncate(lines, rng):
    if lines:
        del lines[rng.randrange(len(lines)):]


def garbage_bytes(lines, rng):
    if lines:
        i = rng.randrange(len(lines))
        junk = "".join(chr(rng.choice([0, 1, 0x7F, 0xA0, 0xFF, 0x263A, 0xD7FF, 0xFFFD])) for _ in range(8))
        lines[i] = lines[i] + junk


def long_value(lines, rng):
    spots = [i + 1 for i in pairs(lines)]
    if spots:
        lines[rng.choice(spots)] = rng.choice(["9", "x", "\\P", "{", "%%d"]) * rng.choice([70000, 300000])


def drop_marker(lines, rng):
    spots = [i for i, l in enumerate(lines) if l.strip() in ("ENDSEC", "ENDBLK", "SEQEND", "ENDTAB", "EOF")]
    if spots:
        i = rng.choice(spots)
        del lines[max(0, i - 1):i + 1]


def swap_records(lines, rng):
    starts = [i for i in pairs(lines) if lines[i].strip() == "0"]
    if len(starts) > 3:
        k = rng.randrange(len(starts) - 2)
        a, b, c = starts[k], starts[k + 1], starts[k + 2]
        lines[a:c] = lines[b:c] + lines[a:b]


KINDS = {
    "extreme-number": replace_value(None, EXTREMES),
    "huge-angle": replace_value(ANGLE_CODES, ANGLES),
    "mtext-splice": mtext_splice,
    "drop-line": drop_line,
    "duplicate-line": duplicate_line,
    "swap-lines": swap_lines,
    "change-code": change_code,
    "inflate-count": replace_value(COUNT_CODES, COUNTS),
    "truncate": truncate,
    "garbage-bytes": garbage_bytes,
    "long-value": long_value,
    "drop-marker": drop_marker,
    "swap-records": swap_records,
    "negative-size": replace_value(["40", "41", "42", "43", "44", "45"],
                                   ["-1e20", "-0.0", "-1", "1e-300", "-1e300"]),
}


def damaged_copy(text, kind, rng):
    lines = text.split("\n")
    for _ in range(1 if kind in ("truncate", "long-value") else rng.randint(1, 4)):
        KINDS[kind](lines, rng)
    return "\n".join(lines)


def run(command, timeout, env):
    start = time.monotonic()
    process = subprocess.Popen(command, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, env=env,
                               start_new_session=True)
    try:
        _, err = process.communicate(timeout=timeout)
        status = "crash" if process.returncode < 0 or process.returncode > 2 else "ok"
        last = err.decode("utf-8", "replace").strip().splitlines()[-1:]
        detail = f"exit {process.returncode}" + (f": {last[0][:200]}" if last and status != "ok" else "")
    except subprocess.TimeoutExpired:
        os.killpg(process.pid, signal.SIGKILL)
        process.communicate()
        status, detail = "hang", f"still running after {timeout} s"
    return status, time.monotonic() - start, detail


def sweep_one(job):
    program, source, copy_index, kind, seed, work, timeout, env = job
    rng = random.Random(f"{seed}:{os.path.basename(source)}:{copy_index}")
    with open(source, encoding="latin-1", newline="") as f:
        text = f.read()
    damaged = damaged_copy(text, kind, rng)
    name = f"{os.path.splitext(os.path.basename(source))[0]}.{copy_index}.{kind}.dxf"
    path = os.path.join(work, name)
    with open(path, "w", encoding="latin-1", errors="replace", newline="") as f:
        f.write(damaged)
    results = []
    for command in (["stats", path], ["render", path, "-o", path + ".png", "--size", "320x240"]):
        status, seconds, detail = run([program] + command, timeout, env)
        results.append((command[0], status, seconds, detail))
    for suffix in (".png",):
        if os.path.exists(path + suffix):
            os.remove(path + suffix)
    return name, path, results


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("program")
    parser.add_argument("folder")
    parser.add_argument("--copies", type=int, default=10)
    parser.add_argument("--seed", default="1")
    parser.add_argument("--timeout", type=float, default=20)
    parser.add_argument("--slow", type=float, default=5)
    parser.add_argument("--jobs", type=int, default=os.cpu_count() or 2)
    parser.add_argument("--kinds", default=",".join(KINDS))
    parser.add_argument("--keep", default="damage-findings")
    parser.add_argument("--out", default="-")
    args = parser.parse_args()
    kinds = args.kinds.split(",")
    for kind in kinds:
        if kind not in KINDS:
            sys.exit(f"damage_sweep: no kind of damage named {kind} (known: {', '.join(KINDS)})")
    sources = sorted(os.path.join(root, f) for root, _, files in os.walk(args.folder)
                     for f in files if f.lower().endswith(".dxf"))
    if not sources:
        sys.exit(f"damage_sweep: no .dxf files under {args.folder}")
    work = tempfile.mkdtemp(prefix="damage-sweep-")
    env = dict(os.environ, QT_QPA_PLATFORM="offscreen", DXFIMPORT_LOG=os.path.join(work, "log"),
               XDG_CONFIG_HOME=os.path.join(work, "config"), XDG_STATE_HOME=os.path.join(work, "state"),
               XDG_CACHE_HOME=os.path.join(work, "cache"))
    jobs = [(args.program, source, k, kinds[(k + i) % len(kinds)], args.seed, work, args.timeout, env)
            for i, source in enumerate(sources) for k in range(args.copies)]
    findings, timings = [], []
    started = time.monotonic()
    with concurrent.futures.ThreadPoolExecutor(args.jobs) as pool:
        for done, (name, path, results) in enumerate(pool.map(sweep_one, jobs), 1):
            bad = False
            for command, status, seconds, detail in results:
                timings.append((seconds, command, name))
                if status != "ok":
                    bad = True
                    findings.append((status, command, name, detail))
            if bad:
                os.makedirs(args.keep, exist_ok=True)
                shutil.copy(path, args.keep)
            os.remove(path)
            if done % 50 == 0:
                print(f"damage_sweep: {done}/{len(jobs)} copies", file=sys.stderr)
    shutil.rmtree(work, ignore_errors=True)
    timings.sort(reverse=True)
    crashes = [f for f in findings if f[0] == "crash"]
    hangs = [f for f in findings if f[0] == "hang"]
    slow = [t for t in timings if t[0] > args.slow]
    out = [f"# Damage sweep of {args.folder}", "",
           f"`{' '.join(sys.argv)}`", "",
           f"{len(sources)} drawings, {len(jobs)} damaged copies ({args.copies} each, seed {args.seed}), "
           f"{len(timings)} runs of stats and render in {time.monotonic() - started:.0f} s; "
           f"kinds of damage: {', '.join(kinds)}.", "",
           f"- crashes: {len(crashes)}", f"- hangs (over {args.timeout:g} s): {len(hangs)}",
           f"- runs over {args.slow:g} s: {len(slow)}", ""]
    if findings:
        out += ["| finding | command | copy | detail |", "|---|---|---|---|"]
        out += [f"| {s} | {c} | {n} | {d} |" for s, c, n, d in findings]
        out += ["", f"The copies are in `{args.keep}/`.", ""]
    out += ["Slowest runs:", "", "| seconds | command | copy |", "|---:|---|---|"]
    out += [f"| {s:.2f} | {c} | {n} |" for s, c, n in timings[:10]]
    text = "\n".join(out) + "\n"
    if args.out == "-":
        sys.stdout.write(text)
    else:
        with open(args.out, "w", encoding="utf-8") as f:
            f.write(text)
    return 1 if crashes or hangs else 0


if __name__ == "__main__":
    sys.exit(main())
