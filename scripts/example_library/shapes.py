# SPDX-License-Identifier: Apache-2.0
"""The 3D shapes of the example library: small closed meshes in millimetres, and their OBJ and GLB files.

A mesh is a list of vertices and a list of triangles that run counter-clockwise when seen from outside. Three builders
make all of them: `loft` (rings with the same number of points, closed by caps), `extrude` (a flat outline with holes,
with chamfered rims) and `join`. `check` proves that every edge is used once in each direction and that the volume is
positive, that is, closed bodies with outward faces.
"""

import json
import math
import struct

from . import icons

CREASE_DEGREES = 32.0


class Mesh:
    def __init__(self, vertices, faces, color):
        self.vertices = [tuple(float(c) for c in v) for v in vertices]
        self.faces = [tuple(f) for f in faces]
        # One colour for the whole mesh, or one for each vertex.
        self.colors = list(color) if isinstance(color, list) else [color] * len(self.vertices)

    def bounds(self):
        low = tuple(min(v[i] for v in self.vertices) for i in range(3))
        high = tuple(max(v[i] for v in self.vertices) for i in range(3))
        return low, high

    def volume(self):
        total = 0.0
        for a, b, c in self.faces:
            p, q, r = self.vertices[a], self.vertices[b], self.vertices[c]
            total += dot(p, cross(q, r)) / 6
        return total


# ------------------------------------------------------------------------------------------------------------- vectors

def sub(a, b):
    return a[0] - b[0], a[1] - b[1], a[2] - b[2]


def dot(a, b):
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]


def cross(a, b):
    return a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]


def unit(a):
    length = math.sqrt(dot(a, a))
    return (a[0] / length, a[1] / length, a[2] / length) if length else (0.0, 0.0, 0.0)


# ------------------------------------------------------------------------------------------------------------ builders

def loft(rings, color, closed=False):
    """Skin over rings of equal length, each counter-clockwise when seen against the direction of travel.

    With `closed` the last ring is joined to the first; otherwise both ends get a cap (a fan around the centre). A ring
    of equal points is a tip: its points are merged.
    """
    n = len(rings[0])
    vertices, index = [], []
    for ring in rings:
        first = len(vertices)
        if max(math.dist(ring[0], p) for p in ring) < 1e-9:
            vertices.append(ring[0])
            index.append([first] * n)
        else:
            vertices.extend(ring)
            index.append([first + i for i in range(n)])
    faces = []

    def add(a, b, c):
        if a != b and b != c and a != c:
            faces.append((a, b, c))

    pairs = list(zip(index, index[1:]))
    if closed:
        pairs.append((index[-1], index[0]))
    for low, high in pairs:
        for i in range(n):
            j = (i + 1) % n
            # The shorter diagonal keeps twisted quads tidy.
            if math.dist(vertices[low[i]], vertices[high[j]]) <= math.dist(vertices[low[j]], vertices[high[i]]) + 1e-9:
                add(low[i], low[j], high[j])
                add(low[i], high[j], high[i])
            else:
                add(low[i], low[j], high[i])
                add(low[j], high[j], high[i])
    if not closed:
        for ring, at_start in ((index[0], True), (index[-1], False)):
            if ring[0] == ring[1]:
                continue
            center = tuple(sum(vertices[k][i] for k in ring) / n for i in range(3))
            vertices.append(center)
            for i in range(n):
                a, b = ring[i], ring[(i + 1) % n]
                add(len(vertices) - 1, b if at_start else a, a if at_start else b)
    return Mesh(vertices, faces, color)


def circle_ring(radius, z, n):
    return [(radius * math.cos(2 * math.pi * i / n), radius * math.sin(2 * math.pi * i / n), z) for i in range(n)]


def hex_ring(across_flats, z, n, slope=0.0):
    """A hexagon with n points on it (n a multiple of six), corners included.

    With `slope` the points sink towards the corners, as on a nut that was chamfered on a lathe.
    """
    apothem = across_flats / 2
    ring = []
    for i in range(n):
        a = 2 * math.pi * i / n
        from_corner = (a + math.pi / 6) % (math.pi / 3) - math.pi / 6
        r = apothem / math.cos(math.pi / 6 - abs(from_corner))
        ring.append((r * math.cos(a), r * math.sin(a), z - slope * (r - apothem)))
    return ring


def lathe(profile, color, n=48):
    """Revolve (radius, z) pairs, listed from low to high z on the outside, about the z axis."""
    return loft([circle_ring(r, z, n) for r, z in profile], color)


def sweep(path, radii, color, n=32, up=(0.0, 0.0, 1.0)):
    """Circles along points of a curve that lies in a plane square to `up`; one radius for each point."""
    rings = []
    for k, (p, radius) in enumerate(zip(path, radii)):
        before, after = path[max(k - 1, 0)], path[min(k + 1, len(path) - 1)]
        if math.dist(before, p) < 1e-9:
            before = path[max(k - 2, 0)]
        if math.dist(after, p) < 1e-9:
            after = path[min(k + 2, len(path) - 1)]
        tangent = unit(sub(after, before))
        side = unit(cross(up, tangent))
        ring = []
        for i in range(n):
            a = 2 * math.pi * i / n
            c, s = radius * math.cos(a), radius * math.sin(a)
            # (side, up) turned so that the ring runs counter-clockwise about the tangent.
            ring.append(tuple(p[j] + side[j] * c + cross(tangent, side)[j] * s for j in range(3)))
        rings.append(ring)
    return loft(rings, color)


def area(polygon):
    return sum(a[0] * b[1] - b[0] * a[1] for a, b in zip(polygon, polygon[1:] + polygon[:1])) / 2


def inset(polygon, distance):
    """Move every edge of a polygon to its left by `distance` (inwards when it runs counter-clockwise)."""
    result = []
    n = len(polygon)
    for i in range(n):
        p, q, r = polygon[i - 1], polygon[i], polygon[(i + 1) % n]
        d1, d2 = unit((q[0] - p[0], q[1] - p[1], 0)), unit((r[0] - q[0], r[1] - q[1], 0))
        n1, n2 = (-d1[1], d1[0]), (-d2[1], d2[0])
        scale = distance / max(0.25, 1 + n1[0] * n2[0] + n1[1] * n2[1])
        result.append((q[0] + (n1[0] + n2[0]) * scale, q[1] + (n1[1] + n2[1]) * scale))
    return result


def triangulate(outer, holes):
    """Ear clipping of an outline (counter-clockwise) with holes (clockwise); indices into outer + holes."""
    points = list(outer) + [p for hole in holes for p in hole]
    loop = list(range(len(outer)))
    start = len(outer)
    spans = []
    for hole in holes:
        spans.append(list(range(start, start + len(hole))))
        start += len(hole)

    def cross2(a, b, c):
        return ((points[b][0] - points[a][0]) * (points[c][1] - points[a][1]) -
                (points[b][1] - points[a][1]) * (points[c][0] - points[a][0]))

    def blocked(a, b):
        rims = [loop] + spans
        for rim in rims:
            for u, v in zip(rim, rim[1:] + rim[:1]):
                if {points[u], points[v]} & {points[a], points[b]}:
                    continue
                if cross2(a, b, u) * cross2(a, b, v) <= 0 and cross2(u, v, a) * cross2(u, v, b) <= 0:
                    return True
        return False

    for span in sorted(spans, key=lambda s: -max(points[k][0] for k in s)):
        h = max(span, key=lambda k: points[k][0])
        best = min((k for k in loop if not blocked(h, k)), key=lambda k: math.dist(points[k], points[h]))
        at, turn = loop.index(best), span.index(h)
        loop = loop[:at + 1] + span[turn:] + span[:turn] + [h, best] + loop[at + 1:]

    triangles = []
    while len(loop) > 3:
        best = None
        for i in range(len(loop)):
            a, b, c = loop[i - 1], loop[i], loop[(i + 1) % len(loop)]
            size = cross2(a, b, c)
            if size <= 1e-12:
                continue
            corner = {points[a], points[b], points[c]}
            if any(points[k] not in corner and cross2(a, b, k) >= -1e-12 and cross2(b, c, k) >= -1e-12 and
                   cross2(c, a, k) >= -1e-12 for k in loop):
                continue
            # The ear with the best shape first, so that no slivers are left over.
            longest = max(math.dist(points[a], points[b]), math.dist(points[b], points[c]),
                          math.dist(points[c], points[a]))
            quality = size / (longest * longest)
            if best is None or quality > best[0] + 1e-9:
                best = (quality, i, (a, b, c))
        if best is None:
            raise ValueError("outline cannot be triangulated")
        triangles.append(best[2])
        del loop[best[1]]
    triangles.append(tuple(loop))
    return triangles


def extrude(outer, holes, height, chamfer, color):
    """A plate of the given height, centred on z = 0, with chamfered rims."""
    outer = outer if area(outer) > 0 else outer[::-1]
    holes = [h if area(h) < 0 else h[::-1] for h in holes]
    rims = [outer] + holes
    small = [inset(rim, chamfer) for rim in rims]
    z = height / 2
    layers = [(small, -z), (rims, -z + chamfer), (rims, z - chamfer), (small, z)]
    vertices, starts = [], []
    for contour, level in layers:
        row = []
        for rim in contour:
            row.append(len(vertices))
            vertices.extend((x, y, level) for x, y in rim)
        starts.append(row)
    faces = []
    for low, high in zip(starts, starts[1:]):
        for rim, a, b in zip(rims, low, high):
            n = len(rim)
            for i in range(n):
                j = (i + 1) % n
                faces += [(a + i, a + j, b + j), (a + i, b + j, b + i)]
    cap = triangulate(small[0], small[1:])
    faces += [(c, b, a) for a, b, c in cap]
    top = starts[3][0]
    faces += [(top + a, top + b, top + c) for a, b, c in cap]
    return Mesh(vertices, faces, color)


def move(mesh, matrix=((1, 0, 0), (0, 1, 0), (0, 0, 1)), offset=(0, 0, 0)):
    """Turn (matrix times column vector, determinant +1), then shift."""
    return Mesh([tuple(dot(row, v) + o for row, o in zip(matrix, offset)) for v in mesh.vertices], mesh.faces,
                mesh.colors)


def join(meshes):
    """Several closed bodies in one mesh."""
    vertices, faces, colors = [], [], []
    for mesh in meshes:
        faces += [tuple(k + len(vertices) for k in f) for f in mesh.faces]
        vertices += mesh.vertices
        colors += mesh.colors
    return Mesh(vertices, faces, colors)


def paint(mesh, color_of):
    """Give every vertex the colour that `color_of` returns for its position."""
    return Mesh(mesh.vertices, mesh.faces, [color_of(v) for v in mesh.vertices])


def check(mesh):
    """Raise unless the mesh consists of closed bodies with outward faces and without degenerate triangles."""
    edges = {}
    for a, b, c in mesh.faces:
        for edge in ((a, b), (b, c), (c, a)):
            if edge in edges:
                raise ValueError("edge used twice in one direction")
            edges[edge] = True
        p, q, r = mesh.vertices[a], mesh.vertices[b], mesh.vertices[c]
        n = cross(sub(q, p), sub(r, p))
        if dot(n, n) < 1e-10:
            raise ValueError("degenerate triangle")
    if any((b, a) not in edges for a, b in edges):
        raise ValueError("open edge")
    if len({tuple(round(c, 6) for c in v) for v in mesh.vertices}) != len(mesh.vertices):
        raise ValueError("vertex given twice")
    if mesh.volume() <= 0:
        raise ValueError("faces look inwards")


# --------------------------------------------------------------------------------------------------------- the shapes

X_FORWARD = ((0, 0, 1), (1, 0, 0), (0, 1, 0))  # z becomes x, x becomes y, y becomes z
FLIP_Z = ((1, 0, 0), (0, -1, 0), (0, 0, -1))

ORANGE = (0.95, 0.42, 0.11)
TEAL = (0.07, 0.63, 0.58)
VIOLET = (0.56, 0.31, 0.78)
STEEL = (0.68, 0.73, 0.78)
BRASS = (0.86, 0.68, 0.30)
AMBER = (1.00, 0.68, 0.12)
RED = (0.90, 0.22, 0.25)
BLUE = (0.10, 0.42, 0.75)
YELLOW = (1.00, 0.77, 0.10)


def arrow():
    """Points along +x, tip at the origin, 50 mm long."""
    profile = [(4.5, -50), (5, -49.5), (5, -20), (10.4, -20), (11, -19.2), (0.5, -0.3), (0, 0)]
    return move(lathe(profile, ORANGE), X_FORWARD)


def double_arrow():
    """Both ways along x, centred at the origin, 60 mm long."""
    half = [(0, -30), (0.5, -29.7), (10.5, -14), (10, -13.2), (4.5, -13.2)]
    profile = half + [(r, -z) for r, z in reversed(half)]
    return move(lathe(profile, VIOLET), X_FORWARD)


def curved_arrow():
    """Turns about +z by three quarters of a circle, counter-clockwise seen from above; radius 22 mm."""
    r, start, neck = 22.0, -40.0, 192.0

    def at(degrees):
        a = math.radians(degrees)
        return r * math.cos(a), r * math.sin(a), 0.0

    path, radii = [at(start)], [3.4]
    steps = 36
    for i in range(steps + 1):
        path.append(at(start + 1.2 + (neck - start - 1.2) * i / steps))
        radii.append(4.0)
    # The head is straight and leans inwards a little, so that the whole arrow still reads as a circle.
    lean = math.radians(neck + 90 + 16)
    x, y, _ = at(neck)
    for along, radius in ((0.0, 8.2), (0.7, 8.6), (17.0, 0.4), (17.6, 0.0)):
        path.append((x + along * math.cos(lean), y + along * math.sin(lean), 0.0))
        radii.append(radius)
    return sweep(path, radii, TEAL, 28)


def wrench():
    """Combination wrench along x, 60 mm long, 5 mm thick, jaw at +x."""
    outline, hole = icons.wrench_outline(60, 8.5, 10.5, 8.6, 7.5, 4.8, 15, 28)
    return extrude(outline, [hole[::-1]], 5.0, 0.7, STEEL)


def bolt():
    """Hexagon bolt M10, head up, seat of the head at z = 0, 32 mm under the head."""
    n = 36
    rings = [circle_ring(3.9, -32, n), circle_ring(5, -30.9, n)]
    # Ring-shaped grooves stand for the thread: closed, light, and clear in a line drawing.
    z = -30.0
    while z < -11.0:
        rings += [circle_ring(5, z, n), circle_ring(4.3, z + 0.6, n), circle_ring(5, z + 1.2, n)]
        z += 1.9
    rings += [circle_ring(5, 0, n), circle_ring(7.6, 0, n), hex_ring(16, 0.3, n), hex_ring(16, 5.98, n, 0.7),
              circle_ring(7.4, 6.4, n)]
    return loft(rings, STEEL)


def hex_nut():
    """Hexagon nut for M10, 8 mm high, axis z, seat at z = 0."""
    n = 48
    rings = [circle_ring(7.4, 0, n), hex_ring(16, 0.42, n, -0.7), hex_ring(16, 7.58, n, 0.7), circle_ring(7.4, 8, n),
             circle_ring(5.6, 8, n), circle_ring(4.5, 7, n), circle_ring(4.5, 1, n), circle_ring(5.6, 0, n)]
    return loft(rings, BRASS, closed=True)


def oil_drop():
    """Drop that falls along -z, tip up, lowest point at the origin, 32 mm high."""
    r, last = 10.0, 30  # the sphere ends 30 degrees above its equator; from there a curve runs to the tip
    profile = []
    for i in range(15):
        a = math.radians(-90 + (90 + last) * i / 14)
        profile.append((r * math.cos(a) if i else 0.0, r + r * math.sin(a)))
    r0, z0 = profile[-1]
    # Control point on the tangent of the sphere, so that the curve starts smoothly.
    reach = 12.3
    cr, cz = r0 - reach * math.sin(math.radians(last)), z0 + reach * math.cos(math.radians(last))
    for i in range(1, 13):
        t = i / 12
        profile.append(((1 - t) ** 2 * r0 + 2 * t * (1 - t) * cr if i < 12 else 0.0,
                        (1 - t) ** 2 * z0 + 2 * t * (1 - t) * cz + t * t * 32))
    return lathe(profile, AMBER)


def cone_marker():
    """Marker that stands on its tip at the origin, round on top, 40 mm high."""
    profile = [(0, 0), (0.7, 0.6)]
    for i in range(13):
        a = math.radians(-14 + 104 * i / 12)
        profile.append((11 * math.cos(a) if i < 12 else 0.0, 29 + 11 * math.sin(a)))
    return lathe(profile, RED)


def ring_marker():
    """Ring around the z axis to mark a place, outer diameter 44 mm."""
    n, rings = 64, []
    section = 16
    for k in range(section):
        a = 2 * math.pi * k / section
        rings.append(circle_ring(19 + 3 * math.cos(a), 3 * math.sin(a), n))
    return loft(rings, YELLOW, closed=True)


def gripper():
    """Two-jaw gripper that closes along y and points along -z; the work piece sits at the origin."""
    n = 40
    wrist = lathe([(8, 42), (9, 43), (9, 52), (7, 52), (7, 58), (6, 59)], STEEL, n)
    palm = extrude([(-22, 32), (-18, 28), (18, 28), (22, 32), (22, 37), (17, 41.8), (-17, 41.8), (-22, 37)], [], 16.0,
                   1.2, BLUE)
    jaw = [(7, 27.8), (20, 27.8), (20, 12), (14, -6), (5, -6), (5, 5), (11, 14), (11, 22), (7, 25)]
    right = extrude(jaw, [], 10.0, 0.8, STEEL)
    left = extrude([(-x, y) for x, y in jaw], [], 10.0, 0.8, STEEL)
    upright = ((0, 0, 1), (1, 0, 0), (0, 1, 0))  # the outline's x becomes y, its y becomes z
    return join([wrist] + [move(m, upright) for m in (palm, right, left)])


def screwdriver():
    """Slotted screwdriver along z, edge of the blade at z = 0, 60 mm long."""
    n = 48

    def fluted(radius, z, depth):
        ring = []
        for i in range(n):
            a = 2 * math.pi * i / n
            r = radius - depth * (0.5 - 0.5 * math.cos(6 * a)) ** 2
            ring.append((r * math.cos(a), r * math.sin(a), z))
        return ring

    def blade(half_x, half_y, z, roundness=0.0):
        ring = []
        for i in range(n):
            a = 2 * math.pi * i / n
            c, s = math.cos(a), math.sin(a)
            k = (1 - roundness) / max(abs(c), abs(s)) + roundness
            ring.append((half_x * c * k, half_y * s * k, z))
        return ring

    rings = [blade(3.4, 0.5, 0), blade(3.4, 1.0, 5)]
    rings += [blade(3.4 - 1.1 * t, 1.0 + 1.3 * t, 5 + 9 * t, t) for t in (0.25, 0.5, 0.75, 1.0)]
    rings += [circle_ring(2.3, 28, n), circle_ring(4.4, 28, n), circle_ring(5.4, 29, n), circle_ring(5.4, 33, n)]
    rings += [fluted(5.4 + 1.6 * t, 33 + 6 * t, 1.1 * t) for t in (0.33, 0.67, 1.0)]
    rings += [fluted(7.0, 50, 1.1)] + [fluted(7.0 - 1.2 * t, 50 + 8 * t, 1.1 * (1 - t)) for t in (0.33, 0.67, 1.0)]
    rings += [circle_ring(4.4, 60, n)]
    return paint(loft(rings, RED), lambda v: STEEL if v[2] < 28.5 and math.hypot(v[0], v[1]) < 4 else RED)


def washer():
    """Plain washer, outer diameter 24 mm, hole 10.5 mm, 3 mm thick, axis z, seat at z = 0."""
    n = 64
    rings = [circle_ring(11.5, 0, n), circle_ring(12, 0.5, n), circle_ring(12, 2.5, n), circle_ring(11.5, 3, n),
             circle_ring(5.6, 3, n), circle_ring(5.25, 2.65, n), circle_ring(5.25, 0.35, n), circle_ring(5.6, 0, n)]
    return loft(rings, STEEL, closed=True)


def hook():
    """Lifting hook in the plane y = 0, load rests at the origin's side, shank up along z, about 56 mm high."""
    path, radii = [], []
    r = 13.0
    # Shank from the top down, then around below, then up to the point.
    for z, radius in ((44, 3.6), (43.4, 4.2), (36, 4.2), (36, 6.4), (33.5, 6.4), (33.5, 4.2), (28, 4.2)):
        path.append((0.0, 0.0, float(z)))
        radii.append(radius)
    lead = 8
    for i in range(1, lead + 1):
        t = i / lead
        path.append((r * (1 - math.cos(math.radians(38 * t))) * 0.9, 0.0, 28 - 12 * t))
        radii.append(4.2 + 0.8 * t)
    sx, sz = path[-1][0], path[-1][2]
    cx, cz = sx - r * math.cos(math.radians(25)), sz - r * math.sin(math.radians(25))
    for i in range(1, 37):
        a = math.radians(25 - 245 * i / 36)
        path.append((cx + r * math.cos(a), 0.0, cz + r * math.sin(a)))
        radii.append(5.0 + 0.9 * math.sin(math.pi * i / 36) - 2.6 * (i / 36) ** 2)
    end = path[-1]
    a = math.radians(25 - 245)
    t = (math.sin(a), -math.cos(a))
    for step, radius in ((0.9, 2.1), (1.6, 1.5), (2.0, 0.7), (2.1, 0.0)):
        path.append((end[0] + t[0] * step, 0.0, end[2] + t[1] * step))
        radii.append(radius)
    path = [(x - cx, y, z - cz) for x, y, z in path]
    return sweep(path, radii, YELLOW, 28, up=(0.0, 1.0, 0.0))


SHAPES = {
    "arrow": arrow, "double_arrow": double_arrow, "curved_arrow": curved_arrow, "wrench": wrench, "bolt": bolt,
    "hex_nut": hex_nut, "oil_drop": oil_drop, "cone_marker": cone_marker, "ring_marker": ring_marker,
    "gripper": gripper, "screwdriver": screwdriver, "washer": washer, "hook": hook,
}


# -------------------------------------------------------------------------------------------------------------- files

def corner_normals(mesh):
    """One normal for each corner of each face: smooth over faces that meet at less than the crease angle."""
    flat, around = [], {}
    for k, (a, b, c) in enumerate(mesh.faces):
        n = cross(sub(mesh.vertices[b], mesh.vertices[a]), sub(mesh.vertices[c], mesh.vertices[a]))
        flat.append((n, unit(n)))
        for v in (a, b, c):
            around.setdefault(v, []).append(k)
    limit = math.cos(math.radians(CREASE_DEGREES))
    result = []
    for k, face in enumerate(mesh.faces):
        corners = []
        for v in face:
            total = [0.0, 0.0, 0.0]
            for other in around[v]:
                if dot(flat[k][1], flat[other][1]) >= limit:
                    # Weighted by area times corner angle would be finer; area is enough for meshes this regular.
                    for i in range(3):
                        total[i] += flat[other][0][i]
            corners.append(unit(total))
        result.append(tuple(corners))
    return result


def short(value, digits=4):
    text = f"{value:.{digits}f}".rstrip("0").rstrip(".")
    return "0" if text in ("-0", "") else text


def write_obj(mesh, name):
    """OBJ text with one colour for each vertex, which keeps the shape in one single file."""
    lines = ["# SPDX-License-Identifier: Apache-2.0", f"# {name}, millimetres", f"o {name}"]
    for vertex, color in zip(mesh.vertices, mesh.colors):
        lines.append("v " + " ".join(short(c) for c in vertex) + " " + " ".join(short(c, 3) for c in color))
    index, faces = {}, []
    for face, normals in zip(mesh.faces, corner_normals(mesh)):
        corners = []
        for v, normal in zip(face, normals):
            key = " ".join(short(c, 3) for c in normal)
            corners.append(f"{v + 1}//{index.setdefault(key, len(index) + 1)}")
        faces.append("f " + " ".join(corners))
    lines += [f"vn {key}" for key in index]
    return "\n".join(lines + faces) + "\n"


def write_glb(mesh, name):
    """Binary glTF 2.0, in metres: one mesh, positions, normals, indices and a plain material (one colour)."""
    if len(set(mesh.colors)) != 1:
        raise ValueError("a GLB shape has one colour")
    index, corners = {}, []
    for face, normals in zip(mesh.faces, corner_normals(mesh)):
        for v, normal in zip(face, normals):
            key = (mesh.vertices[v], tuple(round(c, 5) + 0.0 for c in normal))
            corners.append(index.setdefault(key, len(index)))
    metres = [tuple(c / 1000.0 for c in p) for p, _ in index]
    positions = b"".join(struct.pack("<3f", *p) for p in metres)
    normals = b"".join(struct.pack("<3f", *unit(n)) for _, n in index)
    indices = struct.pack(f"<{len(corners)}H", *corners)
    views = [positions, normals, indices + b"\0" * (-len(indices) % 4)]
    stored = [tuple(struct.unpack("<3f", struct.pack("<3f", *p))) for p in metres]
    offset, buffer_views = 0, []
    for data, target in zip(views, (34962, 34962, 34963)):
        buffer_views.append({"buffer": 0, "byteOffset": offset, "byteLength": len(data), "target": target})
        offset += len(data)
    buffer_views[2]["byteLength"] = len(indices)
    document = {
        "asset": {"version": "2.0", "copyright": "SPDX-License-Identifier: Apache-2.0"},
        "scene": 0,
        "scenes": [{"nodes": [0]}],
        "nodes": [{"name": name, "mesh": 0}],
        "meshes": [{"name": name, "primitives": [
            {"attributes": {"POSITION": 0, "NORMAL": 1}, "indices": 2, "material": 0, "mode": 4}]}],
        "materials": [{"name": "surface", "pbrMetallicRoughness": {
            "baseColorFactor": [*mesh.colors[0], 1.0], "metallicFactor": 0.0, "roughnessFactor": 0.6}}],
        "accessors": [
            {"bufferView": 0, "componentType": 5126, "count": len(index), "type": "VEC3",
             "min": [min(p[i] for p in stored) for i in range(3)],
             "max": [max(p[i] for p in stored) for i in range(3)]},
            {"bufferView": 1, "componentType": 5126, "count": len(index), "type": "VEC3"},
            {"bufferView": 2, "componentType": 5123, "count": len(corners), "type": "SCALAR"}],
        "bufferViews": buffer_views,
        "buffers": [{"byteLength": offset}],
    }
    text = json.dumps(document, separators=(",", ":")).encode("ascii")
    text += b" " * (-len(text) % 4)
    body = b"".join(views)
    chunks = struct.pack("<I4s", len(text), b"JSON") + text + struct.pack("<I4s", len(body), b"BIN\0") + body
    return struct.pack("<4sII", b"glTF", 2, 12 + len(chunks)) + chunks
