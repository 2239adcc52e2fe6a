#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Makes everything under examples/product/ except its README.md: a two-stage spur gearbox as gearbox.glb, and the service
tree of its parts as gearbox-service.xml.

    scripts/make_example_product.py [--output DIR]

Needs Python 3.9 or newer and nothing else. Two runs give the same bytes. Shapes are drawn in millimetres, with shafts along
x and y up; the file is in metres, as its format wants.
"""

import argparse
import json
import math
import pathlib
import struct
from xml.sax.saxutils import quoteattr

ROOT = pathlib.Path(__file__).resolve().parent.parent
SEGMENTS = 40

COLORS = {
    "casting": (0.36, 0.45, 0.52),
    "steel": (0.72, 0.73, 0.75),
    "dark steel": (0.42, 0.43, 0.46),
    "gear": (0.80, 0.74, 0.58),
    "bolt": (0.55, 0.56, 0.58),
    "rubber": (0.12, 0.12, 0.13),
    "gasket": (0.45, 0.30, 0.22),
    "plug": (0.75, 0.20, 0.16),
}


class Mesh:
    """Triangles of one material; solids that are added may overlap."""

    def __init__(self, name, color):
        self.name, self.color = name, color
        self.points, self.triangles = [], []

    def add(self, points, triangles, move=(0.0, 0.0, 0.0), turn=None):
        first = len(self.points)
        for point in points:
            x, y, z = turn(point) if turn else point
            self.points.append((x + move[0], y + move[1], z + move[2]))
        self.triangles += [(a + first, b + first, c + first) for a, b, c in triangles]
        return self


# Solids. Each is a list of points and a list of triangles that face outwards.

def revolve(profile, segments=SEGMENTS):
    """Turns a closed profile of (x, radius), run through with its inside on the left, around the x axis."""
    points, index = [], []
    for x, radius in profile:
        if radius == 0.0:
            index.append([len(points)] * segments)
            points.append((x, 0.0, 0.0))
            continue
        index.append(list(range(len(points), len(points) + segments)))
        points += [(x, radius * math.cos(angle), radius * math.sin(angle))
                   for angle in (2.0 * math.pi * i / segments for i in range(segments))]
    triangles = []
    for here, there in zip(index, index[1:] + index[:1]):
        for i in range(segments):
            k = (i + 1) % segments
            for corners in ((here[i], there[k], there[i]), (here[i], here[k], there[k])):
                if len(set(corners)) == 3:
                    triangles.append(corners)
    return points, triangles


def disc(x0, x1, radius, chamfer=0.0):
    c = chamfer
    return revolve([(x0, 0.0), (x0, radius - c)] + ([(x0 + c, radius), (x1 - c, radius)] if c else []) +
                   [(x1, radius - c), (x1, 0.0)])


def ring(x0, x1, inner, outer, chamfer=0.0):
    c = chamfer
    outside = [(x0 + c, outer), (x1 - c, outer)] if c else []
    return revolve([(x0, inner), (x0, outer - c)] + outside + [(x1, outer - c), (x1, inner)])


def between(outline, hole, x0, x1):
    """The solid between an outline and a hole of as many points (y, z), both counter-clockwise seen against the x axis."""
    n = len(outline)
    points = [(x, y, z) for x in (x0, x1) for loop in (outline, hole) for y, z in loop]
    triangles = []
    for i in range(n):
        k = (i + 1) % n
        a, b, c, d = (0, n, 2 * n, 3 * n)  # outline and hole at x0, then at x1
        for quad in ((c + i, c + k, d + k, d + i), (a + k, a + i, b + i, b + k),
                     (a + i, a + k, c + k, c + i), (b + k, b + i, d + i, d + k)):
            triangles += [quad[:3], (quad[0], quad[2], quad[3])]
    return points, triangles


def cut_ears(loop):
    """Triangles of a simple polygon, counter-clockwise."""
    def area(a, b, c):
        (ax, ay), (bx, by), (cx, cy) = loop[a], loop[b], loop[c]
        return (bx - ax) * (cy - ay) - (by - ay) * (cx - ax)

    left, triangles = list(range(len(loop))), []
    while len(left) > 3:
        for at in range(len(left)):
            a, b, c = left[at - 1], left[at], left[(at + 1) % len(left)]
            others = (p for p in left if p not in (a, b, c))
            if area(a, b, c) > 1e-9 and not any(
                    area(a, b, p) >= 0 and area(b, c, p) >= 0 and area(c, a, p) >= 0 for p in others):
                triangles.append((a, b, c))
                del left[at]
                break
        else:
            raise ValueError("not a simple polygon")
    return triangles + [tuple(left)]


def extrude(loop, x0, x1):
    """A simple polygon of points (y, z), counter-clockwise seen against the x axis, along x."""
    n = len(loop)
    points = [(x, y, z) for x in (x0, x1) for y, z in loop]
    triangles = [(a + n, b + n, c + n) for a, b, c in cut_ears(loop)] + [(c, b, a) for a, b, c in cut_ears(loop)]
    for i in range(n):
        k = (i + 1) % n
        triangles += [(i, k, k + n), (i, k + n, i + n)]
    return points, triangles


def box(low, high):
    return extrude([(low[1], low[2]), (high[1], low[2]), (high[1], high[2]), (low[1], high[2])], low[0], high[0])


def sphere(radius, rings=8, segments=14):
    profile = [(-radius * math.cos(math.pi * i / rings), radius * math.sin(math.pi * i / rings)) for i in range(rings + 1)]
    profile[0], profile[-1] = (-radius, 0.0), (radius, 0.0)
    return revolve(profile, segments)


def circle(radius, count, start=0.0):
    return [(radius * math.cos(start + 2.0 * math.pi * i / count), radius * math.sin(start + 2.0 * math.pi * i / count))
            for i in range(count)]


def hexagon(across, count):
    """As many points on a hexagon as on a circle, its corners among them."""
    points = []
    for y, z in circle(1.0, count):
        angle = math.atan2(z, y) % (math.pi / 3.0) - math.pi / 6.0
        radius = across / 2.0 / math.cos(angle)
        points.append((radius * y, radius * z))
    return points


def involute_outline(module, teeth):
    """The outline of a spur gear with involute flanks at 20 degrees."""
    pitch = module * teeth / 2.0
    base = pitch * math.cos(math.radians(20.0))
    root, tip = pitch - 1.25 * module, pitch + module
    start = max(base, root)

    def angle_at(radius):
        t = math.sqrt(max((radius / base) ** 2 - 1.0, 0.0))
        return t - math.atan(t)

    half = math.pi / (2.0 * teeth) + angle_at(pitch)
    flank = [start + (tip - start) * i / 3.0 for i in range(4)]
    points = []
    for tooth in range(teeth):
        middle = 2.0 * math.pi * tooth / teeth
        polar = [(root, -half - 0.15 * math.pi / teeth)] if root < start else []
        polar += [(radius, -half + angle_at(radius)) for radius in flank]
        polar += [(radius, half - angle_at(radius)) for radius in reversed(flank)]
        polar += [(root, half + 0.15 * math.pi / teeth)] if root < start else []
        points += [(radius * math.cos(middle + angle), radius * math.sin(middle + angle)) for radius, angle in polar]
    return points


def gear(name, module, teeth, width, bore, hub=0.0):
    outline = involute_outline(module, teeth)
    # Points of the bore in the directions of the outline, so that the faces are strips.
    hole = [(bore * y / math.hypot(y, z), bore * z / math.hypot(y, z)) for y, z in outline]
    mesh = Mesh(name, "gear").add(*between(outline, hole, -width / 2.0, width / 2.0))
    if hub:
        mesh.add(*ring(-width / 2.0 - 6.0, width / 2.0 + 6.0, bore, hub, 1.0))
    return mesh


def shaft(name, steps, chamfer=1.0):
    """Cylinders (x0, x1, radius) one after the other."""
    profile = [(steps[0][0], 0.0)]
    for number, (x0, x1, radius) in enumerate(steps):
        profile += [(x0, radius - chamfer), (x0 + chamfer, radius)] if number == 0 else [(x0, radius)]
        profile += [(x1 - chamfer, radius), (x1, radius - chamfer)] if number + 1 == len(steps) else [(x1, radius)]
    return Mesh(name, "steel").add(*revolve(profile + [(steps[-1][1], 0.0)]))


def upright(point):
    """What was drawn along x stands along y."""
    x, y, z = point
    return (-y, x, z)


def bolt(name, diameter, length):
    """Its head ends at 0 and its thread points to negative x."""
    head = 0.65 * diameter
    across = 1.6 * diameter
    mesh = Mesh(name, "bolt")
    mesh.add(*between(hexagon(across, 24), circle(0.3 * diameter, 24), 0.0, head))
    mesh.add(*disc(-0.05, 0.8 * head, 0.3 * diameter))
    return mesh.add(*disc(-length, 0.02, diameter / 2.0, 0.12 * diameter))


# The product: nodes are dictionaries as glTF has them, in millimetres.

def node(name, mesh=None, at=(0.0, 0.0, 0.0), turn=None, children=()):
    """@param turn an axis and degrees"""
    return {"name": name, "mesh": mesh, "at": at, "turn": turn, "children": list(children)}


CENTERS = (0.0, 90.0, 192.0)  # of the shafts, along z
BORES = (26.0, 31.0, 36.0)    # radius of the seats of their bearings
WALLS = ((-12.0, 6.0), (146.0, 164.0))
LOW_Z, HIGH_Z = -62.0, 292.0


def half_housing(name, sign):
    """The lower half (-1) or the upper half (1), divided at y = 0."""
    mesh = Mesh(name, "casting")
    outer, inner = (106.0, 96.0) if sign < 0 else (98.0, 90.0)

    def turned(loop):
        loop = [(sign * y, z) for y, z in loop]
        return loop if sign > 0 else loop[::-1]

    def section(loop, x0, x1):
        return extrude(turned(loop), x0, x1)

    corner = 40.0
    outside = [(0.0, LOW_Z), (outer - corner, LOW_Z), (outer, LOW_Z + corner), (outer, HIGH_Z - corner),
               (outer - corner, HIGH_Z), (0.0, HIGH_Z)]
    inside = [(0.0, HIGH_Z - 10.0), (inner - corner, HIGH_Z - 10.0), (inner, HIGH_Z - corner - 4.0),
              (inner, LOW_Z + corner + 4.0), (inner - corner, LOW_Z + 10.0), (0.0, LOW_Z + 10.0)]
    # Counter-clockwise for y to the right and z up.
    mesh.add(*section(list(outside) + list(inside), WALLS[0][1], WALLS[1][0]))
    wall = list(outside)
    for center, bore in reversed(list(zip(CENTERS, BORES))):
        wall += [(bore * math.sin(math.pi * i / 16.0), center + bore * math.cos(math.pi * i / 16.0)) for i in range(17)]
    for x0, x1 in WALLS:
        mesh.add(*section(wall, x0, x1))
        for center, bore in zip(CENTERS, BORES):
            arc = [math.pi * i / 16.0 for i in range(17)]
            boss = [((bore + 12.0) * math.sin(a), center - (bore + 12.0) * math.cos(a)) for a in arc]
            boss += [(bore * math.sin(a), center + bore * math.cos(a)) for a in arc]
            mesh.add(*section(boss, x0 - 6.0 if x0 < 0 else x0, x1 if x0 < 0 else x1 + 6.0))
    rim = (0.0, 12.0) if sign > 0 else (-12.0, 0.0)
    for z0, z1 in ((LOW_Z - 24.0, LOW_Z + 2.0), (HIGH_Z - 2.0, HIGH_Z + 24.0)):
        mesh.add(*box((-12.0, rim[0], z0), (164.0, rim[1], z1)))
    if sign < 0:
        for z0, z1 in ((LOW_Z - 20.0, LOW_Z + 50.0), (HIGH_Z - 50.0, HIGH_Z + 20.0)):
            mesh.add(*box((-12.0, -116.0, z0), (164.0, -100.0, z1)))
    else:
        mesh.add(*box((46.0, 92.0, 60.0), (106.0, 104.0, 170.0)))
    return mesh


def bearing(size, inner, outer, width, balls):
    """A ball bearing: two rings, a cage and its balls, all in its own middle."""
    ball = 0.3 * (outer - inner)
    middle = (inner + outer) / 2.0
    w = width / 2.0
    groove = 0.75 * ball
    arc = [(-groove, 0.35 * ball), (0.0, 0.0), (groove, 0.35 * ball)]
    lower, upper = middle - ball, middle + ball
    rings = {
        "inner": Mesh(f"Inner ring {size}", "steel").add(*revolve(
            [(-w, inner), (-w, lower + 0.35 * ball)] + [(x, lower + r) for x, r in arc] +
            [(w, lower + 0.35 * ball), (w, inner)])),
        "outer": Mesh(f"Outer ring {size}", "steel").add(*revolve(
            [(-w, upper - 0.35 * ball), (-w, outer), (w, outer), (w, upper - 0.35 * ball)] +
            [(x, upper - r) for x, r in reversed(arc)])),
        "cage": Mesh(f"Cage {size}", "gear").add(*ring(-0.2 * w, 0.2 * w, middle - 0.4 * ball, middle + 0.4 * ball)),
        "ball": Mesh(f"Ball {size}", "steel").add(*sphere(ball)),
    }

    def make(name, at):
        children = [node("inner-ring", rings["inner"]), node("outer-ring", rings["outer"]), node("cage", rings["cage"])]
        for i, (y, z) in enumerate(circle(middle, balls)):
            children.append(node(f"ball-{i + 1}", rings["ball"], (0.0, y, z)))
        return node(name, at=at, children=children)

    return make


def flange(name, bore, opening, screw):
    """The cover of a bearing seat, with its screws; it looks to negative x."""
    radius = bore + 12.0
    profile = [(-8.0, opening), (-8.0, radius - 1.5), (-6.5, radius), (0.0, radius), (0.0, bore), (6.0, bore),
               (6.0, bore - 6.0), (0.0, bore - 6.0), (0.0, opening)]
    if opening == 0.0:
        profile = [(-8.0, 0.0), (-8.0, radius - 1.5), (-6.5, radius), (0.0, radius), (0.0, bore), (6.0, bore),
                   (6.0, bore - 6.0), (0.0, bore - 6.0), (0.0, 0.0)]
    cover = Mesh(name, "casting").add(*revolve(profile))

    def make(node_name, at, faces_right):
        children = [node("cover", cover)]
        for i, (y, z) in enumerate(circle(bore + 6.0, 6, math.pi / 6.0)):
            children.append(node(f"screw-{i + 1}", screw, (-8.0, y, z), turn=((0, 1, 0), 180.0)))
        return node(node_name, at=at, turn=((0, 1, 0), 180.0) if faces_right else None, children=children)

    return make


def gearbox():
    screw6, bolt10 = bolt("Screw M6x16", 6.0, 16.0), bolt("Bolt M10x35", 10.0, 35.0)
    washer = Mesh("Washer 10", "steel").add(*ring(-2.0, 0.0, 5.3, 10.0))
    nut = Mesh("Nut M10", "bolt").add(*between(hexagon(16.0, 24), circle(5.0, 24), -8.0, 0.0))
    up = ((0, 0, 1), 90.0)

    def split_bolt(number, x, z):
        return node(f"split-bolt-{number}", at=(x, 12.0, z), turn=up, children=[
            node("bolt", bolt10, (2.0, 0.0, 0.0)), node("upper-washer", washer, (2.0, 0.0, 0.0)),
            node("lower-washer", washer, (-24.0, 0.0, 0.0)), node("nut", nut, (-26.0, 0.0, 0.0))])

    plate = Mesh("Cover plate", "casting").add(*box((0.0, 0.0, 0.0), (60.0, 6.0, 110.0)))
    gasket = Mesh("Gasket", "gasket").add(*box((0.0, 0.0, 0.0), (60.0, 1.0, 110.0)))
    breather = Mesh("Breather", "dark steel").add(*revolve(
        [(-10.0, 0.0), (-10.0, 6.0), (4.0, 6.0), (4.0, 11.0), (18.0, 11.0), (22.0, 8.0), (22.0, 0.0)]), turn=upright)
    corners = [(8.0, 8.0), (52.0, 8.0), (52.0, 102.0), (8.0, 102.0)]
    inspection = node("inspection-cover", at=(46.0, 104.0, 60.0), children=[
        node("gasket", gasket), node("plate", plate, (0.0, 1.0, 0.0)), node("breather", breather, (30.0, 7.0, 55.0))] + [
        node(f"screw-{i + 1}", screw6, (x, 7.0, z), turn=up) for i, (x, z) in enumerate(corners)])
    plug = Mesh("Drain plug", "plug").add(*between(hexagon(17.0, 24), circle(3.0, 24), 3.0, 11.0))
    plug.add(*disc(0.0, 3.5, 12.0, 0.5)).add(*disc(-14.0, 0.2, 8.0, 1.0)).add(*disc(3.0, 9.0, 3.0))
    eye = Mesh("Lifting eye", "dark steel").add(*disc(-18.0, 2.0, 6.0, 1.0), turn=upright)
    eye.add(*revolve([(6.0 * math.cos(a), 16.0 + 6.0 * math.sin(a)) for a in
                      (-2.0 * math.pi * i / 12.0 for i in range(12))], 28), move=(0.0, 22.0, 0.0))
    bolts = [split_bolt(i + 1, x, z) for i, (x, z) in enumerate(
        (x, z) for z in (LOW_Z - 12.0, HIGH_Z + 12.0) for x in (6.0, 53.0, 99.0, 146.0))]
    housing = node("housing", children=[
        node("lower-half", half_housing("Lower half", -1)), node("upper-half", half_housing("Upper half", 1)),
        node("split-bolts", children=bolts), inspection,
        node("drain-plug", plug, (76.0, -84.0, HIGH_Z), turn=((0, 1, 0), -90.0)),
        node("lifting-eye-1", eye, (20.0, 98.0, 20.0)), node("lifting-eye-2", eye, (132.0, 98.0, 230.0))])

    bearings = (bearing("6304", 10.0, BORES[0], 15.0, 7), bearing("6305", 12.5, BORES[1], 17.0, 7),
                bearing("6207", 17.5, BORES[2], 17.0, 9))
    seats = [[(3.0 if i == 0 else 149.0, 0.0, 0.0) for i in range(2)] for _ in range(3)]
    open_flanges = (flange("Input flange", BORES[0], 11.0, screw6), None, flange("Output flange", BORES[2], 18.5, screw6))
    blind_flanges = tuple(flange(f"Blind flange {2 * int(bore)}", bore, 0.0, screw6) for bore in BORES)
    left, right = WALLS[0][0] - 6.0, WALLS[1][1] + 6.0

    def seal(name, inner, x):
        mesh = Mesh(f"Seal {int(2 * inner)}", "rubber").add(*ring(-3.5, 3.5, inner, inner + 6.0, 0.5))
        return node(name, mesh, (x, 0.0, 0.0))

    def key(name, length, width, x, radius):
        mesh = Mesh(f"Key {int(width)}x{int(length)}", "dark steel")
        mesh.add(*box((-length / 2.0, -width / 3.0, -width / 2.0), (length / 2.0, width / 3.0, width / 2.0)))
        return node(name, mesh, (x, radius, 0.0))

    def shaft_group(name, number, parts, flanges):
        pair = [bearings[number](f"bearing-{i + 1}", seats[number][i]) for i in range(2)]
        return node(name, at=(0.0, 0.0, CENTERS[number]), children=parts + pair + flanges)

    input_shaft = shaft_group("input", 0, [
        node("shaft", shaft("Input shaft", [(-70.0, -20.0, 9.5), (-20.0, 11.0, 10.0), (11.0, 141.0, 15.0), (141.0, 158.0, 10.0)])),
        node("pinion", gear("Pinion 18", 2.5, 18, 32.0, 15.0), (40.0, 0.0, 0.0)),
        key("coupling-key", 32.0, 6.0, -46.0, 9.5), seal("seal", 10.0, left - 3.0)],
        [open_flanges[0]("front-flange", (left, 0.0, 0.0), False), blind_flanges[0]("rear-flange", (right, 0.0, 0.0), True)])
    middle_shaft = shaft_group("intermediate", 1, [
        node("shaft", shaft("Intermediate shaft", [(-6.0, 12.0, 12.5), (12.0, 60.0, 17.0), (60.0, 140.0, 19.0), (140.0, 158.0, 12.5)])),
        node("wheel", gear("Wheel 54", 2.5, 54, 28.0, 17.0, 30.0), (40.0, 0.0, 0.0), turn=((1, 0, 0), 10.0 / 3.0)),
        node("pinion", gear("Pinion 17", 3.0, 17, 42.0, 19.0), (98.0, 0.0, 0.0)),
        key("wheel-key", 24.0, 8.0, 40.0, 17.0)],
        [blind_flanges[1]("front-flange", (left, 0.0, 0.0), False), blind_flanges[1]("rear-flange", (right, 0.0, 0.0), True)])
    output_shaft = shaft_group("output", 2, [
        node("shaft", shaft("Output shaft", [(-6.0, 12.0, 17.5), (12.0, 78.0, 23.0), (78.0, 140.0, 25.0), (140.0, 176.0, 17.5), (176.0, 240.0, 16.0)])),
        node("wheel", gear("Wheel 51", 3.0, 51, 38.0, 25.0, 38.0), (98.0, 0.0, 0.0)),
        key("wheel-key", 32.0, 10.0, 98.0, 25.0), key("coupling-key", 40.0, 10.0, 210.0, 16.0), seal("seal", 17.5, right + 3.0)],
        [blind_flanges[2]("front-flange", (left, 0.0, 0.0), False), open_flanges[2]("rear-flange", (right, 0.0, 0.0), True)])
    return node("Gearbox", children=[housing, input_shaft, middle_shaft, output_shaft])


# Files

def linear(share):
    return share / 12.92 if share <= 0.04045 else ((share + 0.055) / 1.055) ** 2.4


class Glb:
    """Collects nodes, meshes and materials, each mesh once."""

    def __init__(self):
        self.document = {"asset": {"version": "2.0", "copyright": "SPDX-License-Identifier: Apache-2.0"}, "scene": 0,
                         "scenes": [{"nodes": [0]}], "nodes": [], "meshes": [], "materials": [], "accessors": [],
                         "bufferViews": [], "buffers": []}
        self.bytes = bytearray()
        self.meshes, self.materials = {}, {}

    def add_node(self, item):
        number = len(self.document["nodes"])
        out = {"name": item["name"]}
        self.document["nodes"].append(out)
        if any(item["at"]):
            out["translation"] = [round(v / 1000.0, 7) for v in item["at"]]
        if item["turn"]:
            axis, degrees = item["turn"]
            half = math.radians(degrees) / 2.0
            out["rotation"] = [round(math.sin(half) * v, 9) for v in axis] + [round(math.cos(half), 9)]
        if item["mesh"]:
            out["mesh"] = self.add_mesh(item["mesh"])
        if item["children"]:
            out["children"] = [self.add_node(child) for child in item["children"]]
        return number

    def add_mesh(self, mesh):
        if id(mesh) not in self.meshes:
            points = [tuple(struct.unpack("<f", struct.pack("<f", v / 1000.0))[0] for v in p) for p in mesh.points]
            size = "H" if len(points) < 65536 else "I"
            position = self.add_accessor(struct.pack(f"<{3 * len(points)}f", *(v for p in points for v in p)), 34962, {
                "componentType": 5126, "count": len(points), "type": "VEC3",
                "min": [min(p[i] for p in points) for i in range(3)], "max": [max(p[i] for p in points) for i in range(3)]})
            corners = [corner for triangle in mesh.triangles for corner in triangle]
            indices = self.add_accessor(struct.pack(f"<{len(corners)}{size}", *corners), 34963, {
                "componentType": 5123 if size == "H" else 5125, "count": len(corners), "type": "SCALAR"})
            self.meshes[id(mesh)] = len(self.document["meshes"])
            self.document["meshes"].append({"name": mesh.name, "primitives": [
                {"attributes": {"POSITION": position}, "indices": indices, "material": self.add_material(mesh.color)}]})
        return self.meshes[id(mesh)]

    def add_accessor(self, data, target, accessor):
        self.document["bufferViews"].append(
            {"buffer": 0, "byteOffset": len(self.bytes), "byteLength": len(data), "target": target})
        self.bytes += data + b"\0" * (-len(data) % 4)
        self.document["accessors"].append({"bufferView": len(self.document["bufferViews"]) - 1, **accessor})
        return len(self.document["accessors"]) - 1

    def add_material(self, color):
        if color not in self.materials:
            self.materials[color] = len(self.document["materials"])
            self.document["materials"].append({"name": color, "pbrMetallicRoughness": {
                "baseColorFactor": [round(linear(v), 6) for v in COLORS[color]] + [1.0],
                "metallicFactor": 0.0, "roughnessFactor": 0.6}})
        return self.materials[color]

    def write(self):
        self.document["buffers"] = [{"byteLength": len(self.bytes)}]
        text = json.dumps(self.document, separators=(",", ":")).encode("ascii")
        text += b" " * (-len(text) % 4)
        chunks = struct.pack("<II", len(text), 0x4E4F534A) + text
        chunks += struct.pack("<II", len(self.bytes), 0x004E4942) + bytes(self.bytes)
        return struct.pack("<III", 0x46546C67, 2, 12 + len(chunks)) + chunks


def service_tree():
    """Groups of parts as they are serviced, with the order of work."""
    def group(name, title, parts):
        return [f"  <node id={quoteattr(name)} name={quoteattr(title)}>"] + [
            f"    <node id={quoteattr(i)} name={quoteattr(t)} part={quoteattr(p)}/>" for i, t, p in parts] + ["  </node>"]

    shafts = (("input", "Input"), ("intermediate", "Intermediate"), ("output", "Output"))
    lines = ['<?xml version="1.0" encoding="utf-8"?>', "<service>"]
    lines += group("lubrication", "Oil change", [
        ("drain", "Drain plug", "/housing/drain-plug"),
        ("breather", "Breather", "/housing/inspection-cover/breather"),
        ("gasket", "Gasket of the cover", "/housing/inspection-cover/gasket")])
    lines += group("seals", "Seals", [
        ("input-seal", "Input seal", "/input/seal"), ("output-seal", "Output seal", "/output/seal")])
    lines += group("bearings", "Bearings", [
        (f"{i}-bearing-{n}", f"{t} bearing {n}", f"/{i}/bearing-{n}") for i, t in shafts for n in (1, 2)])
    lines += group("gears", "Gears", [
        ("pinion-18", "Pinion, first stage", "/input/pinion"), ("wheel-54", "Wheel, first stage", "/intermediate/wheel"),
        ("pinion-17", "Pinion, second stage", "/intermediate/pinion"), ("wheel-51", "Wheel, second stage", "/output/wheel")])
    lines += group("housing", "Housing", [
        ("upper-half", "Upper half", "/housing/upper-half"), ("lower-half", "Lower half", "/housing/lower-half"),
        ("split-bolts", "Bolts of the joint", "/housing/split-bolts")])
    return "\n".join(lines + ["</service>"]) + "\n"


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n\n")[0])
    parser.add_argument("--output", type=pathlib.Path, default=ROOT / "examples" / "product")
    output = parser.parse_args().output
    output.mkdir(parents=True, exist_ok=True)
    glb = Glb()
    glb.add_node(gearbox())
    (output / "gearbox.glb").write_bytes(glb.write())
    (output / "gearbox-service.xml").write_text(service_tree(), encoding="utf-8")


if __name__ == "__main__":
    main()
