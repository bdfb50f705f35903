#!/usr/bin/python3
"""Writes docs/fidelity.md from a run of ../shared/fidelity/compare.py.

usage: fidelity_table.py COMPARE.tsv PICTURES_DIR [--notes tools/fidelity_notes.tsv]
                         [--out docs/fidelity.md] [--pictures docs/fidelity]
                         [--same-faces COMPARE2.tsv]

COMPARE.tsv is compare.py's output, PICTURES_DIR the folder it wrote its pictures to.
The notes file holds, per drawing, what still differs (column 2) and whether the
reference is wrong there (column 3: "reference"); the side-by-side pictures of those
drawings are copied, reduced, into the pictures folder. COMPARE2.tsv, when given, is a
second run with our text drawn in the faces the reference falls back to
(tools/fidelity_reference_faces.conf); the drawings whose figures it changes are listed.
"""
import os
import sys

from PIL import Image

COMMAND = """/usr/bin/python3 ../shared/fidelity/compare.py build/release/src/app/dxfimport /tmp/fid \\
    ../shared/corpus/*.dxf ../shared/corpus/*.DXF --cache /tmp/dxfimport-fidelity-cache > /tmp/fid.tsv
FONTCONFIG_FILE=$PWD/tools/fidelity_reference_faces.conf \\
/usr/bin/python3 ../shared/fidelity/compare.py build/release/src/app/dxfimport /tmp/fidfaces \\
    ../shared/corpus/*.dxf ../shared/corpus/*.DXF --cache /tmp/dxfimport-fidelity-cache > /tmp/fidfaces.tsv
/usr/bin/python3 tools/fidelity_table.py /tmp/fid.tsv /tmp/fid --same-faces /tmp/fidfaces.tsv"""


def read_rows(path):
    rows = []
    for line in open(path, encoding="utf-8").read().splitlines()[1:]:
        fields = line.split("\t")
        if len(fields) >= 2:
            rows.append(fields + [""] * (6 - len(fields)))
    return rows


def read_notes(path):
    notes = {}
    if os.path.exists(path):
        for line in open(path, encoding="utf-8").read().splitlines():
            if line.strip() and not line.startswith("#"):
                fields = line.split("\t")
                notes[fields[0]] = (fields[1] if len(fields) > 1 else "", len(fields) > 2 and fields[2] == "reference")
    return notes


def number(text):
    try:
        value = float(text)
        return None if value != value else value
    except ValueError:
        return None


def main(argv):
    args = {"--notes": "tools/fidelity_notes.tsv", "--out": "docs/fidelity.md", "--pictures": "docs/fidelity",
            "--same-faces": ""}
    positional = []
    it = iter(argv)
    for a in it:
        if a in args:
            args[a] = next(it)
        else:
            positional.append(a)
    tsv, pictures_in = positional
    rows = read_rows(tsv)
    notes = read_notes(args["--notes"])
    os.makedirs(args["--pictures"], exist_ok=True)

    scored = [(r, number(r[4]), number(r[5])) for r in rows if r[1] == "ok" and number(r[4]) is not None]
    recall = sum(s[1] for s in scored) / len(scored)
    precision = sum((s[2] or 0) for s in scored) / len(scored)
    below = [s for s in scored if s[1] < 0.85 or (s[2] or 0) < 0.85]
    unexplained = [s for s in below if not notes.get(s[0][0], ("", False))[1]]
    explained = [s for s in below if notes.get(s[0][0], ("", False))[1]]
    kept = [s for s in scored if s not in explained]
    kept_recall = sum(s[1] for s in kept) / len(kept) if kept else float("nan")
    kept_precision = sum((s[2] or 0) for s in kept) / len(kept) if kept else float("nan")

    out = []
    out.append("# Fidelity against a reference renderer\n")
    out.append("How close the modern profile's picture of each corpus drawing comes to the picture of an")
    out.append("independent renderer (ezdxf's drawing add-on) over the same window: recall is the share")
    out.append("of the reference's ink that has ours within 3 pixels, precision the share of ours that has")
    out.append("the reference's (`../shared/fidelity/README.md`). Produced by:\n")
    out.append("```\n" + COMMAND + "\n```\n")
    out.append("Over the %d drawings that both draw: mean recall **%.3f**, mean precision **%.3f**; "
               "without the %d drawings where the reference is wrong (listed below with the reason and "
               "a side-by-side picture): recall **%.3f**, precision **%.3f**. Drawings below 0.85 "
               "in either figure that are not explained by the reference: %d.\n"
               % (len(scored), recall, precision, len(explained), kept_recall, kept_precision, len(unexplained)))
    if args["--same-faces"]:
        out.extend(same_faces_section(rows, read_rows(args["--same-faces"])))
    out.extend(SHX_SECTION)
    out.append("## Where the reference is wrong\n")
    for r, rec, pre in explained:
        name = r[0]
        picture = os.path.join(pictures_in, name + ".side.png")
        if os.path.exists(picture):
            image = Image.open(picture).convert("RGB")
            image = image.resize((image.width // 2, image.height // 2), Image.LANCZOS)
            image.save(os.path.join(args["--pictures"], name + ".png"), optimize=True)
        out.append("- **%s** (recall %.3f, precision %s): %s  " % (name, rec, "%.3f" % pre if pre is not None else "-",
                                                               notes[name][0]))
        out.append("  ![ours left, reference right](fidelity/%s.png)\n" % name)
    out.append("## Every drawing\n")
    out.append("| drawing | recall | precision | what still differs |")
    out.append("|---|---|---|---|")
    for r in rows:
        name = r[0]
        note = notes.get(name, ("", False))[0]
        if r[1] != "ok":
            out.append("| %s | - | - | %s |" % (name, note or r[1]))
        else:
            out.append("| %s | %s | %s | %s |" % (name, r[4] or "-", r[5] or "-", note))
    open(args["--out"], "w", encoding="utf-8").write("\n".join(out) + "\n")


SHX_SECTION = [
    "## The face for SHX fonts\n",
    "SHX fonts (simplex, romans, txt, isocp, ...) are CAD tools' own single-stroke fonts; no",
    "Debian package ships them. Their texts are drawn in one outline face chosen by measuring:",
    "the twelve corpus drawings that name an SHX font, drawn with each candidate as the",
    "stand-in (fontconfig told to hand it out for the stand-in's name), gave on 2026-11-22:\n",
    "| stand-in | mean recall | mean precision |", "|---|---|---|",
    "| DejaVu Sans (chosen) | 0.985 | 0.966 |", "| Liberation Mono | 0.982 | 0.964 |",
    "| Liberation Sans | 0.970 | 0.949 |", "| Liberation Sans Narrow | 0.964 | 0.949 |", "",
    "The text height stays the capital height in drawing units whatever the face, so a",
    "stand-in changes the width and the stroke of the letters, not the box they stand in.",
    "The reference has no SHX reader either and falls back to DejaVu Sans, which favours that",
    "choice in the figures; DejaVu's wide, open letters are also the closest of the four to",
    "simplex and romans, whose letters are about as wide as they are high.\n",
]


def same_faces_section(rows, faces_rows):
    """The drawings whose figures change when our text takes the reference's faces."""
    faces = {r[0]: r for r in faces_rows}
    changed = []
    for r in rows:
        f = faces.get(r[0])
        if r[1] != "ok" or not f or f[1] != "ok":
            continue
        a = [number(r[4]), number(r[5])]
        b = [number(f[4]), number(f[5])]
        if None in a or None in b:
            continue
        if max(abs(a[0] - b[0]), abs(a[1] - b[1])) >= 0.005:
            changed.append((r[0], a, b))
    out = ["## Text in the reference's faces\n",
           "The reference has no Arial and draws Arial text in DejaVu Sans, which is wider; ours draws",
           "it in Liberation Sans, which has Arial's metrics, so our text takes the box it takes in CAD",
           "tools. The second run (the last command above) lets fontconfig hand our renderer DejaVu Sans",
           "for Arial, as the reference does: what remains then is layout, not the face.\n",
           "| drawing | recall | precision | with the reference's faces |", "|---|---|---|---|"]
    for name, a, b in changed:
        out.append("| %s | %.3f | %.3f | %.3f / %.3f |" % (name, a[0], a[1], b[0], b[1]))
    out.append("")
    return out


if __name__ == "__main__":
    main(sys.argv[1:])
