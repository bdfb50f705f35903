#!/usr/bin/env python3
"""Writes fuzz/seeds/: one small drawing per entity kind and per error path, for the
fuzzers to start from (the sample floor plan is copied beside them), and the seeds of the
fuzzers of one parser each: fuzz/seeds_mtext (MTEXT contents), fuzz/seeds_text_codes (a
code-page byte and a TEXT value), fuzz/seeds_hatch (the pairs of one HATCH) and
fuzz/seeds_binary (binary DXF after its sentinel) and fuzz/seeds_proxy (proxy graphics
streams)."""
import os
import shutil
import struct
import sys

HERE = os.path.dirname(os.path.abspath(__file__))
OUT = os.path.join(HERE, "..", "fuzz", "seeds")


def dxf(*pairs):
    return "".join(f"{code}\n{value}\n" for code, value in pairs)


def entities(*pairs, header=(), tables=(), blocks=()):
    head = dxf((0, "SECTION"), (2, "HEADER"), *header, (0, "ENDSEC")) if header else ""
    tab = dxf((0, "SECTION"), (2, "TABLES"), *tables, (0, "ENDSEC")) if tables else ""
    blk = dxf((0, "SECTION"), (2, "BLOCKS"), *blocks, (0, "ENDSEC")) if blocks else ""
    return head + tab + blk + dxf((0, "SECTION"), (2, "ENTITIES"), *pairs, (0, "ENDSEC"), (0, "EOF"))


LAYERS = ((0, "TABLE"), (2, "LAYER"), (0, "LAYER"), (2, "0"), (62, "7"), (0, "LAYER"), (2, "OFF"), (62, "-1"),
          (0, "LAYER"), (2, "FROZEN"), (70, "1"), (0, "LAYER"), (2, "TRUE"), (420, "255"), (6, "CENTER"),
          (0, "ENDTAB"))
LTYPES = ((0, "TABLE"), (2, "LTYPE"), (0, "LTYPE"), (2, "CENTER"), (73, "4"), (49, "1.25"), (49, "-0.25"),
          (49, "0"), (49, "-0.25"), (0, "ENDTAB"))
HEADER = ((9, "$ACADVER"), (1, "AC1015"), (9, "$DWGCODEPAGE"), (3, "ANSI_932"), (9, "$EXTMIN"), (10, "0"),
          (20, "0"), (9, "$EXTMAX"), (10, "100"), (20, "100"), (9, "$LTSCALE"), (40, "2"))
BLOCK = ((0, "BLOCK"), (2, "B"), (10, "1"), (20, "1"), (0, "LINE"), (8, "0"), (62, "0"), (10, "1"), (20, "1"),
         (11, "3"), (21, "2"), (0, "ARC"), (10, "2"), (20, "2"), (40, "1"), (50, "0"), (51, "90"),
         (0, "TEXT"), (10, "1"), (20, "1"), (40, "0.5"), (1, "B%%d"), (0, "INSERT"), (2, "LATER"),
         (0, "ENDBLK"), (0, "BLOCK"), (2, "LATER"), (0, "CIRCLE"), (40, "1"), (0, "ENDBLK"),
         (0, "BLOCK"), (2, "*D1"), (0, "LINE"), (11, "5"), (0, "TEXT"), (1, "5.00"), (0, "ENDBLK"))

SEEDS = {
    "line": entities((0, "LINE"), (8, "0"), (6, "DASHED"), (62, "1"), (10, "1.5"), (20, "2"), (11, "30"),
                     (21, "40")),
    "circle_arc": entities((0, "CIRCLE"), (10, "5"), (20, "5"), (40, "3"), (0, "ARC"), (10, "5"), (20, "5"),
                           (40, "2"), (50, "725"), (51, "-90")),
    "solid_trace_3dface": entities((0, "SOLID"), (10, "0"), (20, "0"), (11, "1"), (21, "0"), (12, "0"),
                                   (22, "1"), (13, "1"), (23, "1"), (0, "TRACE"), (10, "2"), (11, "3"),
                                   (0, "3DFACE"), (10, "0"), (20, "0"), (11, "4"), (21, "0"), (12, "4"),
                                   (22, "3"), (13, "4"), (23, "3")),
    "text": entities((0, "TEXT"), (10, "1"), (20, "2"), (11, "5"), (21, "9"), (72, "4"), (40, "2"),
                     (1, 'AB%%uC "q" %%c%%p%%x'), (7, "romans"), (50, "30"), (0, "TEXT"), (10, "2"),
                     (20, "2"), (11, "1"), (21, "1"), (72, "5"), (1, "fit"), (40, "1")),
    "polyline": entities((0, "POLYLINE"), (8, "0"), (66, "1"), (70, "1"), (40, "0.5"), (0, "VERTEX"),
                         (10, "0"), (20, "0"), (42, "1"), (0, "VERTEX"), (10, "5"), (20, "0"), (70, "16"),
                         (0, "VERTEX"), (10, "5"), (20, "5"), (0, "SEQEND")),
    "lwpolyline": entities((0, "LWPOLYLINE"), (90, "3"), (70, "1"), (43, "0.2"), (10, "0"), (20, "0"),
                           (42, "0.5"), (10, "4"), (20, "0"), (10, "4"), (20, "4"), (42, "-1")),
    "mtext": entities((0, "MTEXT"), (10, "0"), (20, "10"), (40, "2"), (71, "5"), (11, "1"), (21, "1"),
                      (44, "1.5"), (3, "{\\fArial|b1;first}\\P\\S1^2;\\~"), (1, "\\U+56F3\\M+196CA^Jend"),
                      (101, "Embedded Object"), (10, "99")),
    "ellipse_spline_leader": entities(
        (0, "ELLIPSE"), (10, "0"), (20, "0"), (11, "10"), (21, "0"), (40, "0.5"), (41, "1"), (42, "0.5"),
        (230, "-1"), (0, "SPLINE"), (71, "3"), (40, "0"), (40, "0"), (40, "0"), (40, "0"), (40, "1"), (40, "1"),
        (40, "1"), (40, "1"), (10, "0"), (20, "0"), (10, "3"), (20, "9"), (10, "6"), (20, "-9"), (10, "9"),
        (20, "0"), (0, "SPLINE"), (71, "3"), (11, "0"), (21, "0"), (11, "5"), (21, "5"), (0, "LEADER"),
        (10, "0"), (20, "0"), (10, "5"), (20, "5")),
    "hatch": entities((0, "HATCH"), (70, "1"), (91, "2"), (92, "2"), (72, "1"), (73, "1"), (93, "3"),
                      (10, "0"), (20, "0"), (42, "0.3"), (10, "9"), (20, "0"), (10, "9"), (20, "9"), (97, "0"),
                      (92, "1"), (93, "4"), (72, "1"), (10, "1"), (20, "1"), (11, "2"), (21, "1"), (72, "2"),
                      (10, "3"), (20, "3"), (40, "1"), (50, "0"), (51, "180"), (73, "0"), (72, "3"),
                      (10, "4"), (20, "4"), (11, "1"), (21, "0"), (40, "0.5"), (50, "0"), (51, "90"),
                      (73, "1"), (72, "4"), (94, "2"), (73, "0"), (74, "0"), (95, "6"), (96, "3"), (40, "0"),
                      (40, "0"), (40, "0"), (40, "1"), (40, "1"), (40, "1"), (10, "0"), (20, "0"), (10, "1"),
                      (20, "2"), (10, "2"), (20, "0"), (97, "1"), (330, "2A"), (0, "HATCH"), (70, "0"),
                      (91, "1"), (92, "2"), (93, "2"), (10, "0"), (20, "0"), (10, "1"), (20, "1")),
    "mesh_mline_points": entities(
        (0, "MESH"), (92, "3"), (10, "0"), (20, "0"), (30, "0"), (10, "1"), (20, "0"), (30, "0"), (10, "0"),
        (20, "1"), (30, "0"), (93, "4"), (90, "3"), (90, "0"), (90, "1"), (90, "7"), (0, "MLINE"), (71, "2"),
        (72, "2"), (73, "1"), (11, "0"), (21, "0"), (13, "0"), (23, "1"), (74, "1"), (41, "0.5"), (75, "0"),
        (11, "5"), (21, "0"), (13, "0"), (23, "1"), (74, "1"), (41, "0.5"), (75, "0"), (0, "POINT"),
        (8, "Defpoints"), (10, "1"), (20, "1"), (0, "ARC_DIMENSION"), (2, "*D1"), (0, "RAY"), (10, "0"),
        (20, "0"), (11, "1"), (21, "1")),
    "blocks_inserts": entities((0, "INSERT"), (8, "TRUE"), (2, "B"), (10, "10"), (20, "10"), (41, "-2"),
                               (42, "0"), (50, "45"), (62, "3"), (66, "1"), (0, "ATTRIB"), (1, "N-1"), (70, "8"),
                               (0, "SEQEND"), (0, "INSERT"), (2, "B"), (70, "3"), (71, "2"), (44, "5"),
                               (45, "5"), (0, "DIMENSION"), (2, "*D1"), (0, "DIMENSION"), (2, "*D9"),
                               blocks=BLOCK, tables=LAYERS),
    "tables_header": entities((0, "LINE"), (8, "TRUE"), (6, "BYLAYER"), (48, "3"), (11, "50"), (0, "TEXT"),
                              (1, "\x90\x7d\x96\xca"), (0, "LINE"), (67, "1"), (11, "9"),
                              header=HEADER, tables=LTYPES + LAYERS),
    "self_insert": entities((0, "INSERT"), (2, "S"), blocks=((0, "BLOCK"), (2, "S"), (0, "LINE"), (11, "1"),
                                                           (0, "INSERT"), (2, "S"), (0, "INSERT"), (2, "S"),
                                                           (0, "ENDBLK"))),
    "error_code_above_80": entities((0, "LINE"), (5, "2A"), (330, "1F"), (100, "AcDbLine"), (10, "1")),
    "error_cut_in_entity": "0\nSECTION\n2\nENTITIES\n0\nLINE\n10\n1\n20\n",
    "error_number_too_large": entities((0, "LINE"), (62, "99999")),
    "error_code_not_a_number": "0\nSECTION\n2\nENTITIES\n0\nLINE\nabc\n1\n0\nEOF\n",
    "error_polyline_without_vertex": entities((0, "POLYLINE"), (8, "0"), (0, "LINE")),
    "error_no_section": dxf((0, "LINE"), (10, "1")),
    "error_binary": "AutoCAD Binary DXF\r\n\x1a\x00",
    "error_huge_values": entities((0, "LINE"), (10, "3e38"), (11, "-3e38"), (0, "CIRCLE"), (40, "3e38"),
                                  (0, "TEXT"), (40, "1e30"), (1, "x"), (0, "INSERT"), (2, "B"), (41, "1e30"),
                                  blocks=BLOCK),
    # Invisible entities (a dynamic block's hidden state, an insert with its attributes)
    # and model space's draw order.
    "visibility_draw_order": dxf(
        (0, "SECTION"), (2, "TABLES"), (0, "TABLE"), (2, "BLOCK_RECORD"), (0, "BLOCK_RECORD"), (5, "1F"),
        (102, "{ACAD_XDICTIONARY"), (360, "2A"), (102, "}"), (2, "*Model_Space"), (0, "ENDTAB"), (0, "ENDSEC"),
        (0, "SECTION"), (2, "BLOCKS"), (0, "BLOCK"), (2, "*U2"), (70, "1"), (0, "LINE"), (11, "1"),
        (0, "LINE"), (60, "1"), (11, "9"), (0, "ENDBLK"), (0, "ENDSEC"),
        (0, "SECTION"), (2, "ENTITIES"), (0, "SOLID"), (5, "A0"), (62, "1"), (11, "8"), (12, "0"), (22, "8"),
        (0, "SOLID"), (5, "A1"), (62, "5"), (11, "8"), (12, "0"), (22, "8"), (0, "INSERT"), (5, "A2"),
        (60, "1"), (66, "1"), (2, "*U2"), (0, "ATTRIB"), (1, "V"), (2, "T"), (0, "SEQEND"), (0, "INSERT"),
        (5, "A3"), (2, "*U2"), (0, "ENDSEC"),
        (0, "SECTION"), (2, "OBJECTS"), (0, "SORTENTSTABLE"), (5, "2B"), (100, "AcDbSortentsTable"),
        (330, "1F"), (331, "A0"), (5, "B0"), (331, "A3"), (5, "1"), (331, "FFFFFFFFFFFFFFFFF"), (5, "zz"),
        (0, "ENDSEC"), (0, "EOF")),
    # Images (a clipped one, a missing one), an underlay, a clipped block reference, an
    # external reference that is not there, transparency and a MULTILEADER.
    "references_clips_images": dxf(
        (0, "SECTION"), (2, "TABLES"), (0, "TABLE"), (2, "LAYER"), (0, "LAYER"), (2, "GLASS"),
        (1001, "AcCmTransparency"), (1071, "33554559"), (0, "ENDTAB"), (0, "ENDSEC"),
        (0, "SECTION"), (2, "BLOCKS"), (0, "BLOCK"), (2, "B"), (0, "LINE"), (440, "16777216"), (11, "9"),
        (0, "ENDBLK"), (0, "BLOCK"), (2, "X"), (70, "4"), (1, "missing.dxf"), (0, "ENDBLK"), (0, "ENDSEC"),
        (0, "SECTION"), (2, "ENTITIES"), (0, "IMAGE"), (8, "GLASS"), (10, "0"), (20, "0"), (11, "1"), (21, "0"),
        (12, "0"), (22, "1"), (13, "8"), (23, "8"), (340, "7F"), (70, "7"), (280, "1"), (71, "2"), (91, "3"),
        (14, "-0.5"), (24, "-0.5"), (14, "7.5"), (24, "-0.5"), (14, "-0.5"), (24, "7.5"),
        (0, "PDFUNDERLAY"), (340, "80"), (10, "20"), (20, "0"), (41, "2"), (11, "0"), (21, "0"), (11, "5"),
        (21, "5"), (0, "INSERT"), (5, "A0"), (102, "{ACAD_XDICTIONARY"), (360, "B0"), (102, "}"), (2, "B"),
        (440, "33554559"), (0, "INSERT"), (2, "X"), (0, "MULTILEADER"), (300, "CONTEXT_DATA{"), (41, "2"),
        (140, "1"), (290, "1"), (304, "note"), (12, "5"), (22, "5"), (302, "LEADER{"), (10, "4"), (20, "4"),
        (304, "LEADER_LINE{"), (10, "0"), (20, "0"), (305, "}"), (303, "}"), (301, "}"), (292, "1"),
        (0, "ENDSEC"),
        (0, "SECTION"), (2, "OBJECTS"), (0, "IMAGEDEF"), (5, "7F"), (1, "gone.png"), (0, "PDFDEFINITION"),
        (5, "80"), (1, "plan.pdf"), (0, "DICTIONARY"), (5, "B0"), (3, "ACAD_FILTER"), (360, "B1"),
        (0, "DICTIONARY"), (5, "B1"), (3, "SPATIAL"), (360, "B2"), (0, "SPATIAL_FILTER"), (5, "B2"), (70, "3"),
        (10, "0"), (20, "0"), (10, "5"), (20, "9"), (10, "9"), (20, "0"), (71, "1"), (40, "1"), (40, "0"),
        (40, "0"), (40, "0"), (40, "0"), (40, "1"), (40, "0"), (40, "0"), (40, "0"), (40, "0"), (40, "1"),
        (40, "0"), (0, "ENDSEC"), (0, "EOF")),
    # An entity of an add-on class drawn from its proxy graphics.
    "proxy_entity": dxf(
        (0, "SECTION"), (2, "CLASSES"), (0, "CLASS"), (1, "TCH_WALL"), (0, "ENDSEC"),
        (0, "SECTION"), (2, "ENTITIES"), (0, "ACAD_PROXY_ENTITY"), (8, "0"), (91, "500"),
        (92, "68"), (310, "4400000001000000" "3C0000000600000002000000" + "00" * 24 + "0000000000002440" + "00" * 16),
        (93, "8"), (310, "00"), (0, "ENDSEC"), (0, "EOF")),
}


def binary(*pairs):
    """The pairs as binary DXF (two-byte group codes, as AutoCAD 2000 and later write)."""
    out = b"AutoCAD Binary DXF\r\n\x1a\x00"
    for code, value in pairs:
        out += struct.pack("<h", code)
        if 10 <= code <= 59 or 210 <= code <= 239:
            out += struct.pack("<d", float(value))
        elif 60 <= code <= 79 or 370 <= code <= 389:
            out += struct.pack("<h", int(value))
        elif 90 <= code <= 99 or 420 <= code <= 429:
            out += struct.pack("<i", int(value))
        else:
            out += value.encode("latin-1") + b"\x00"
    return out


BINARY = binary((0, "SECTION"), (2, "ENTITIES"), (0, "LINE"), (8, "0"), (62, "1"), (10, "0"), (20, "0"),
                (11, "10"), (21, "5"), (0, "LWPOLYLINE"), (90, "2"), (70, "1"), (10, "0"), (20, "0"), (42, "1"),
                (10, "4"), (20, "0"), (0, "MTEXT"), (10, "1"), (20, "1"), (40, "2"), (1, "bin\\Pary"),
                (0, "ENDSEC"), (0, "EOF"))


def proxy(*commands):
    """A proxy graphics stream: (type, data bytes) commands after the header."""
    body = b"".join(struct.pack("<ii", 8 + len(data), kind) + data for kind, data in commands)
    return struct.pack("<ii", 8 + len(body), len(commands)) + body


def points(*xy):
    return struct.pack("<i", len(xy)) + b"".join(struct.pack("<ddd", x, y, 0) for x, y in xy)


def utf16(text):
    data = text.encode("utf-16-le") + b"\0\0"
    return data + b"\0" * (-len(data) % 4)


IDENTITY_SHIFTED = struct.pack("<16d", 1, 0, 0, 5, 0, 1, 0, 5, 0, 0, 1, 0, 0, 0, 0, 1)
PROXY = {
    "shapes": proxy((16, struct.pack("<i", 1)), (14, struct.pack("<i", 3)), (29, IDENTITY_SHIFTED),
                    (6, points((0, 0), (10, 0), (10, 5))), (31, b""), (20, struct.pack("<i", 1)),
                    (7, points((0, 0), (4, 0), (0, 4))), (2, struct.pack("<7d", 5, 5, 0, 2, 0, 0, 1)),
                    (4, struct.pack("<11di", 0, 0, 0, 3, 0, 0, 1, 1, 0, 0, 3.1, 1)),
                    (5, struct.pack("<9di", 1, 0, 0, 0, 1, 0, -1, 0, 0, 2)),
                    (22, struct.pack("<I", 0xC2102030)), (18, struct.pack("<i", 0x7FFF)),
                    (9, points((0, 0), (1, 0), (1, 1)) + struct.pack("<5i", 4, 3, 0, 1, 2)),
                    (8, struct.pack("<ii", 2, 2) + struct.pack("<12d", 0, 0, 0, 1, 0, 0, 0, 1, 0, 1, 1, 0))),
    "texts": proxy((10, struct.pack("<12d", 1, 2, 0, 0, 0, 1, 1, 0, 0, 2.5, 1, 0) + b"abc\0"),
                   (38, struct.pack("<9d", 1, 2, 0, 0, 0, 1, 0, 1, 0) + utf16("\u5b8bA") +
                    struct.pack("<ii3d", -1, 0, 3, 1, 0))),
    # The light-weight polyline: flags 16 (bulges), two points, two bulges, bit-coded.
    "lwpolyline": proxy((33, struct.pack("<i", 8) + bytes([0x44, 0x10, 0x24, 0x0B, 0x00, 0x00, 0x00, 0x00]))),
}

MTEXT = {
    "paragraphs": "first\\Psecond\\Nthird\\X^Jfourth",
    "formats": "{\\fArial|b1|i1;bold}{\\H2x;\\W0.8;\\Q15;\\T1.5;\\A1;\\C1;\\c255;text}\\L\\O\\K",
    "paragraph_codes": "\\pxi-3,l5,r2,qc,t4,8,12;indented\\tab\\pt;x",
    "stacks": "\\S1/2;\\S1#4;\\S^2;\\Sa\\/b^c;",
    "typing_slips": "TL\\ptower {\\H \\S1^ {\\f",
    "codes": "%%c%%d%%p%%%%%%127%%u^I^ ^?\\U+00B0\\M+196CA\\~",
}
TEXT_CODES = {
    "percent": b"\x01AB%%uC %%c%%p%%d%%%%%%065",
    "escapes": b"\x03\\U+56F3\\M+196CA\\U+D800\\M+5FFFF",
    "shift_jis": b"\x04\x93\xfa\x96\x7b",
    "caret": b"\x00^J^I^ ^?",
}
HATCH = {
    "polyline_path": "70\n1\n91\n1\n92\n2\n72\n1\n73\n1\n93\n3\n10\n0\n20\n0\n42\n0.3\n10\n9\n20\n0\n"
                     "10\n9\n20\n9\n97\n0",
    "edges": "70\n0\n91\n1\n92\n1\n93\n4\n72\n1\n10\n0\n20\n0\n11\n5\n21\n0\n72\n2\n10\n5\n20\n5\n40\n5\n"
             "50\n270\n51\n90\n73\n1\n72\n3\n10\n0\n20\n5\n11\n5\n21\n0\n40\n0.5\n50\n0\n51\n180\n73\n0\n"
             "72\n4\n94\n3\n73\n0\n74\n0\n95\n8\n96\n4\n40\n0\n40\n0\n40\n0\n40\n0\n40\n1\n40\n1\n40\n1\n"
             "40\n1\n10\n0\n20\n0\n10\n1\n20\n2\n10\n2\n20\n2\n10\n3\n20\n0\n97\n0\n75\n0\n76\n1\n52\n0\n"
             "41\n1\n77\n0\n78\n1\n53\n45\n43\n0\n44\n0\n45\n-0.1\n46\n0.1\n79\n2\n49\n0.2\n49\n-0.1",
    "gradient": "70\n1\n91\n1\n92\n2\n72\n0\n73\n1\n93\n4\n10\n0\n20\n0\n10\n10\n20\n0\n10\n10\n20\n10\n"
                "10\n0\n20\n10\n97\n0\n75\n1\n76\n1\n98\n0\n450\n1\n451\n0\n452\n0\n453\n2\n460\n0\n461\n0\n"
                "462\n1\n463\n0\n421\n255\n463\n1\n421\n16776960\n470\nLINEAR\n1001\nACAD\n1071\n-1023410175",
}


def main():
    for folder, seeds in (("seeds_mtext", MTEXT), ("seeds_text_codes", TEXT_CODES), ("seeds_hatch", HATCH),
                          ("seeds_binary", {"entities": BINARY[22:]}), ("seeds_proxy", PROXY)):
        path = os.path.join(HERE, "..", "fuzz", folder)
        os.makedirs(path, exist_ok=True)
        for name, content in seeds.items():
            data = content if isinstance(content, bytes) else content.encode("utf-8")
            with open(os.path.join(path, name), "wb") as f:
                f.write(data)
    os.makedirs(OUT, exist_ok=True)
    for name, text in SEEDS.items():
        with open(os.path.join(OUT, name + ".dxf"), "w", encoding="latin-1", newline="") as f:
            f.write(text)
    with open(os.path.join(OUT, "binary.dxf"), "wb") as f:
        f.write(BINARY)
    shutil.copy(os.path.join(HERE, "..", "samples", "floorplan.dxf"), os.path.join(OUT, "floorplan.dxf"))


def from_corpus(corpus, out, limit=200):
    """Seeds taken out of real drawings: MTEXT contents for mtext_fuzzer, TEXT values (with
    a code-page byte) for text_codes_fuzzer, and the pairs of HATCH records for
    hatch_fuzzer, at most `limit` of each, written into OUT/<fuzzer>/."""
    found = {"mtext_fuzzer": [], "text_codes_fuzzer": [], "hatch_fuzzer": [], "proxy_graphics_fuzzer": []}
    for name in sorted(os.listdir(corpus)):
        if not name.lower().endswith(".dxf"):
            continue
        with open(os.path.join(corpus, name), "rb") as f:
            lines = f.read().replace(b"\r\n", b"\n").split(b"\n")
        kind, record, graphics = b"", [], None
        for i in range(0, len(lines) - 1, 2):
            code, value = lines[i].strip(), lines[i + 1]
            if graphics is not None and code != b"310":
                found["proxy_graphics_fuzzer"].append(bytes.fromhex(graphics.decode("ascii", "replace")))
                graphics = None
            if (code in (b"92", b"160") and kind not in (b"HATCH", b"MTEXT") and i + 2 < len(lines)
                    and lines[i + 2].strip() == b"310"):
                graphics = b""
            elif code == b"310" and graphics is not None:
                graphics += value.strip()
            if code == b"0":
                if kind == b"HATCH" and len(record) < 65536:
                    found["hatch_fuzzer"].append(b"\n".join(record))
                kind, record = value.strip(), []
                continue
            record += [code, value]
            if kind == b"MTEXT" and code in (b"1", b"3") and len(value) > 2:
                found["mtext_fuzzer"].append(value)
            elif kind in (b"TEXT", b"ATTRIB") and code == b"1" and len(value) > 2:
                found["text_codes_fuzzer"].append(b"\x01" + value)
    for fuzzer, seeds in found.items():
        path = os.path.join(out, fuzzer)
        os.makedirs(path, exist_ok=True)
        unique = sorted(set(seeds), key=len)
        unique = unique[::max(1, len(unique) // limit)][:limit]  # short and long alike
        for k, seed in enumerate(unique):
            with open(os.path.join(path, f"corpus-{k:03d}"), "wb") as f:
                f.write(seed)


if __name__ == "__main__":
    if len(sys.argv) == 4 and sys.argv[1] == "--from-corpus":
        from_corpus(sys.argv[2], sys.argv[3])
    else:
        main()
