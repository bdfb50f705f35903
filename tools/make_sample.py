#!/usr/bin/env python3
"""Writes samples/floorplan.dxf: a small R12 office floor plan with network outlets.

It exercises what the reader handles: layers and line types, lines, arcs, circles, closed
and bulged polylines, justified texts with %% codes, a solid, a 3DFACE, blocks with
attributes inserted with scale and rotation (one nested and inserted before its own
definition), and a dimension with its anonymous block.
"""
import sys

out = []


def g(code, value):
    out.append(f"{code:>3}")
    out.append(str(value))



def pt(x, y, base=10):
    g(base, f"{x:.4f}")
    g(base + 10, f"{y:.4f}")
    g(base + 20, "0.0")


def entity(kind, layer, color=None, ltype=None):
    g(0, kind)
    g(8, layer)
    if ltype:
        g(6, ltype)
    if color is not None:
        g(62, color)


def line(layer, x1, y1, x2, y2, color=None, ltype=None):
    entity("LINE", layer, color, ltype)
    pt(x1, y1)
    pt(x2, y2, 11)


def circle(layer, x, y, r, color=None):
    entity("CIRCLE", layer, color)
    pt(x, y)
    g(40, f"{r:.4f}")


def arc(layer, x, y, r, a1, a2, color=None, ltype=None):
    entity("ARC", layer, color, ltype)
    pt(x, y)
    g(40, f"{r:.4f}")
    g(50, f"{a1:.4f}")
    g(51, f"{a2:.4f}")


def polyline(layer, vertices, closed=False, width=0.0, color=None):
    """vertices: (x, y) or (x, y, bulge)."""
    entity("POLYLINE", layer, color)
    g(66, 1)
    pt(0, 0)
    g(70, 1 if closed else 0)
    if width:
        g(40, f"{width:.4f}")
        g(41, f"{width:.4f}")
    for v in vertices:
        g(0, "VERTEX")
        g(8, layer)
        pt(v[0], v[1])
        if len(v) > 2:
            g(42, f"{v[2]:.6f}")
    g(0, "SEQEND")
    g(8, layer)


def text(layer, x, y, h, value, justify=0, align=None, style="STANDARD", rotation=0.0, color=None):
    entity("TEXT", layer, color)
    pt(x, y)
    g(40, f"{h:.4f}")
    g(1, value)
    if rotation:
        g(50, f"{rotation:.4f}")
    g(7, style)
    if justify:
        g(72, justify)
        ax, ay = align if align else (x, y)
        pt(ax, ay, 11)


def solid(layer, c1, c2, c3, c4, color=None):
    entity("SOLID", layer, color)
    pt(*c1)
    pt(*c2, 11)
    pt(*c3, 12)
    pt(*c4, 13)


def face(layer, c1, c2, c3, c4, color=None):
    entity("3DFACE", layer, color)
    for i, c in enumerate((c1, c2, c3, c4)):
        pt(c[0], c[1], 10 + i)


def insert(name, layer, x, y, sx=1.0, sy=1.0, rot=0.0, attribs=None):
    entity("INSERT", layer)
    if attribs:
        g(66, 1)
    g(2, name)
    pt(x, y)
    if sx != 1.0:
        g(41, f"{sx:.4f}")
    if sy != 1.0:
        g(42, f"{sy:.4f}")
    if rot:
        g(50, f"{rot:.4f}")
    for tag, value, dx, dy in attribs or []:
        g(0, "ATTRIB")
        g(8, layer)
        pt(x + dx, y + dy)
        g(40, "0.1500")
        g(1, value)
        g(2, tag)
        g(70, 0)
        g(7, "ROMANS")
    if attribs:
        g(0, "SEQEND")
        g(8, layer)


def block(name, x=0.0, y=0.0, flags=0):
    g(0, "BLOCK")
    g(8, "0")
    g(2, name)
    g(70, flags)
    pt(x, y)
    g(3, name)


def endblk():
    g(0, "ENDBLK")
    g(8, "0")


def header():
    g(0, "SECTION")
    g(2, "HEADER")
    g(9, "$ACADVER")
    g(1, "AC1009")
    g(9, "$INSBASE")
    pt(0, 0)
    g(9, "$EXTMIN")
    pt(-1.0, -2.0)
    g(9, "$EXTMAX")
    pt(21.0, 13.0)
    g(9, "$LTSCALE")
    g(40, "0.5")
    g(0, "ENDSEC")


def tables():
    g(0, "SECTION")
    g(2, "TABLES")
    g(0, "TABLE")
    g(2, "LTYPE")
    g(70, 3)
    for name, desc, pattern in (
        ("CONTINUOUS", "Solid line", []),
        ("DASHED", "__ __ __", [0.5, -0.25]),
        ("DASHDOT", "__ . __ .", [0.5, -0.25, 0.0, -0.25]),
    ):
        g(0, "LTYPE")
        g(2, name)
        g(70, 0)
        g(3, desc)
        g(72, 65)
        g(73, len(pattern))
        g(40, f"{sum(abs(p) for p in pattern):.4f}")
        for p in pattern:
            g(49, f"{p:.4f}")
    g(0, "ENDTAB")
    g(0, "TABLE")
    g(2, "LAYER")
    g(70, 8)
    for name, color, ltype, flags in (
        ("0", 7, "CONTINUOUS", 0),
        ("WALLS", 7, "CONTINUOUS", 0),
        ("DOORS", 1, "DASHED", 0),
        ("WINDOWS", 4, "CONTINUOUS", 0),
        ("FURNITURE", 3, "CONTINUOUS", 0),
        ("LABELS", 5, "CONTINUOUS", 0),
        ("NETWORK", 6, "DASHDOT", 0),
        ("DIMS", 2, "CONTINUOUS", 0),
        ("HIDDEN-NOTES", 8, "CONTINUOUS", 1),
    ):
        g(0, "LAYER")
        g(2, name)
        g(70, flags)
        g(62, color)
        g(6, ltype)
    g(0, "ENDTAB")
    g(0, "TABLE")
    g(2, "STYLE")
    g(70, 2)
    for name, font in (("STANDARD", "txt"), ("ROMANS", "romans")):
        g(0, "STYLE")
        g(2, name)
        g(70, 0)
        g(40, "0.0")
        g(41, "1.0")
        g(50, "0.0")
        g(71, 0)
        g(42, "0.2")
        g(3, font)
    g(0, "ENDTAB")
    g(0, "ENDSEC")


def blocks():
    g(0, "SECTION")
    g(2, "BLOCKS")
    # A desk with its chair; the chair is defined further down, so the desk's INSERT of
    # it waits until the ENTITIES section starts.
    block("DESK", 0.6, 0.4)
    polyline("0", [(0, 0), (1.2, 0), (1.2, 0.8), (0, 0.8)], closed=True)
    line("FURNITURE", 0.1, 0.7, 1.1, 0.7)
    insert("CHAIR", "0", 0.6, -0.2)
    text("0", 0.6, 0.4, 0.12, "DESK", justify=4, align=(0.6, 0.4))
    endblk()
    block("CHAIR", 0.0, 0.0)
    circle("0", 0.0, 0.0, 0.22)
    arc("0", 0.0, 0.0, 0.3, 200, 340)
    endblk()
    # A network outlet: a box, a jack symbol and its identifier attribute.
    block("OUTLET", 0.0, 0.0)
    solid("NETWORK", (-0.15, -0.1), (0.15, -0.1), (-0.15, 0.1), (0.15, 0.1))
    line("0", -0.2, -0.15, 0.2, -0.15)
    line("0", 0.2, -0.15, 0.2, 0.15)
    line("0", 0.2, 0.15, -0.2, 0.15)
    line("0", -0.2, 0.15, -0.2, -0.15)
    g(0, "ATTDEF")
    g(8, "0")
    pt(0.0, 0.3)
    g(40, "0.15")
    g(1, "N-00")
    g(3, "Outlet id")
    g(2, "ID")
    g(70, 0)
    endblk()
    # The anonymous block of the dimension below.
    block("*D1", 0.0, 0.0, 1)
    line("DIMS", 0.0, -1.0, 20.0, -1.0)
    line("DIMS", 0.0, -0.1, 0.0, -1.2)
    line("DIMS", 20.0, -0.1, 20.0, -1.2)
    solid("DIMS", (0.0, -1.0), (0.3, -0.95), (0.3, -1.05), (0.3, -1.05))
    solid("DIMS", (20.0, -1.0), (19.7, -0.95), (19.7, -1.05), (19.7, -1.05))
    text("DIMS", 10.0, -0.85, 0.3, "20.00", justify=1, align=(10.0, -0.85))
    endblk()
    g(0, "ENDSEC")


def entities():
    g(0, "SECTION")
    g(2, "ENTITIES")
    # Outer walls: a closed polyline with width; a bay window bulges out of the east wall.
    polyline("WALLS", [(0, 0), (20, 0), (20, 4, -0.4142136), (20, 8), (20, 12), (0, 12)], closed=True, width=0.2)
    polyline("WINDOWS", [(20, 4, -0.4142136), (20, 8)])
    # Interior walls.
    line("WALLS", 8, 0, 8, 5)
    line("WALLS", 8, 6.2, 8, 12)
    line("WALLS", 8, 7, 20, 7)
    line("WALLS", 0, 5, 3, 5, ltype="CONTINUOUS")
    line("WALLS", 4.2, 5, 8, 5)
    # Doors: leaves as lines, swings as dashed arcs.
    line("DOORS", 8, 5, 9.2, 5)
    arc("DOORS", 8, 5, 1.2, 0, 90, ltype="DASHED")
    line("DOORS", 3, 5, 3, 6.2)
    arc("DOORS", 3, 5, 1.2, 0, 90)
    arc("DOORS", 12, 7, 1.0, 180, 270, color=1)
    # Meeting room: a round table and a rug drawn as a 3D face.
    circle("FURNITURE", 14, 10, 1.2)
    circle("FURNITURE", 14, 10, 0.2, color=3)
    face("FURNITURE", (12, 8.2, 0), (16, 8.2, 0), (16, 11.8, 0), (12, 11.8, 0))
    # A structural column, filled.
    solid("WALLS", (7.7, 6.7), (8.3, 6.7), (7.7, 7.3), (8.3, 7.3), color=8)
    # Desks, one turned and scaled, each with its chair.
    insert("DESK", "FURNITURE", 2.0, 1.0)
    insert("DESK", "FURNITURE", 5.0, 1.0, sx=1.2, sy=1.2)
    insert("DESK", "FURNITURE", 11.0, 2.0, rot=90.0)
    insert("DESK", "FURNITURE", 16.0, 2.0, sx=-1.0, rot=0.0)
    # Network outlets with their identifiers, and the cable run between them.
    insert("OUTLET", "NETWORK", 1.0, 4.6, attribs=[("ID", "N-01", 0.0, 0.3)])
    insert("OUTLET", "NETWORK", 7.6, 2.5, rot=90.0, attribs=[("ID", "N-02", -0.3, 0.0)])
    insert("OUTLET", "NETWORK", 19.6, 5.5, sx=1.5, sy=1.5, rot=270.0, attribs=[("ID", "N-03", -0.5, 0.0)])
    polyline("NETWORK", [(1.0, 4.4), (7.4, 4.4), (7.4, 2.5)], color=6)
    line("NETWORK", 8.0, 4.4, 19.4, 5.5, ltype="DASHDOT")
    # Room names and notes.
    text("LABELS", 4.0, 9.0, 0.5, "%%uOPEN OFFICE", justify=1, align=(4.0, 9.0))
    text("LABELS", 14.0, 3.5, 0.5, "WORKROOM", justify=4, align=(14.0, 3.5))
    text("LABELS", 14.0, 6.5, 0.3, "MEETING", justify=2, align=(19.5, 6.5), style="ROMANS")
    text("LABELS", 12.4, 8.4, 0.2, "Table %%c2400", style="ROMANS")
    text("LABELS", 0.5, 11.3, 0.25, "Room temp. 21%%dC %%p1", style="SIMPLEX")
    text("LABELS", 0.5, 0.3, 0.2, 'Drawn for the "network" survey', rotation=0.0)
    text("LABELS", 9.0, 11.5, 0.3, "NORTH WING", justify=5, align=(12.0, 11.5))
    text("HIDDEN-NOTES", 10.0, 10.0, 0.3, "frozen layer note")
    g(0, "DIMENSION")
    g(8, "DIMS")
    g(2, "*D1")
    pt(20.0, -1.0)
    pt(10.0, -0.85, 11)
    g(70, 0)
    g(1, "")
    pt(0.0, -0.1, 13)
    pt(20.0, -0.1, 14)
    g(0, "ENDSEC")


header()
tables()
blocks()
entities()
g(0, "EOF")
sys.stdout.write("\r\n".join(out) + "\r\n")
