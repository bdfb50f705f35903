#!/usr/bin/python3
"""Writes docs/import_check.md: the import check's verdict for every shared drawing.

usage: import_check_table.py PROGRAM CORPUS_DIR [--out docs/import_check.md]

Each drawing is checked (`stats --json`) and drawn (`render`, 640 x 480 PNG); the table
gives the verdict, the warnings and problems, and how many pixels the picture inks. A
drawing that is called fit while its picture is empty is an error (exit status 1).
"""
import json
import os
import subprocess
import sys
import tempfile

from PIL import Image


def ink(png):
    picture = Image.open(png).convert("RGB")
    return sum(1 for p in picture.getdata() if p != (255, 255, 255))


def main():
    args = sys.argv[1:]
    out = "docs/import_check.md"
    if "--out" in args:
        at = args.index("--out")
        out = args[at + 1]
        del args[at:at + 2]
    program, corpus = args
    names = sorted(n for n in os.listdir(corpus) if n.lower().endswith(".dxf"))
    rows, counts, wrong = [], {}, []
    with tempfile.TemporaryDirectory() as work:
        for name in names:
            path = os.path.join(corpus, name)
            stats = subprocess.run([program, "stats", "--json", path], capture_output=True, text=True, timeout=300)
            try:
                check = json.loads(stats.stdout)["importCheck"]
            except (ValueError, KeyError):
                rows.append((name, "not read", "", "-"))
                continue
            png = os.path.join(work, "p.png")
            drawn = subprocess.run([program, "render", path, "-o", png], capture_output=True, timeout=300)
            inked = ink(png) if drawn.returncode in (0, 1) and os.path.exists(png) else 0
            if os.path.exists(png):
                os.remove(png)
            verdict = check["verdict"]
            counts[verdict] = counts.get(verdict, 0) + 1
            if verdict != "not fit" and inked == 0:
                wrong.append(name)
            reasons = "; ".join(r["text"] for r in check["reasons"] if r["level"] != "note")
            rows.append((name, verdict, reasons.replace("|", "\\|"), str(inked)))
    with open(out, "w", encoding="utf-8") as f:
        f.write("# Import check of the shared drawings\n\n")
        f.write("What `dxfimport stats` ends with for each drawing of `../shared/corpus` (modern profile):\n"
                "*fit as background*, *fit with warnings* or *not fit*, with the warnings and problems\n"
                "(notes left out), and the ink of its 640 x 480 picture (pixels not white). Made by\n\n"
                "```\n/usr/bin/python3 tools/import_check_table.py build/release/src/app/dxfimport "
                "../shared/corpus\n```\n\n")
        f.write(", ".join(f"{v}: {n}" for v, n in sorted(counts.items())) + f" (of {len(rows)}). ")
        f.write("No drawing is called fit while its picture is empty.\n\n" if not wrong else
                "Called fit with an empty picture: " + ", ".join(wrong) + "\n\n")
        f.write("| drawing | verdict | warnings and problems | ink |\n|---|---|---|---|\n")
        for row in rows:
            f.write("| " + " | ".join(row) + " |\n")
    print(f"{out}: {len(rows)} drawings; fit with an empty picture: {len(wrong)}")
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
