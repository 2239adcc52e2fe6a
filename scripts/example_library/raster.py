# SPDX-License-Identifier: Apache-2.0
"""A small software renderer for the thumbnails of the shapes: depth buffer, smooth shading, ink lines, white edge.

The pictures are made large and averaged down, so both thumbnail sizes show the same drawing.
"""

import math
import struct
import zlib

from .shapes import corner_normals, cross, dot, unit

LARGE = 192
FACTOR = 4
INK = (31, 41, 51)
OUTLINE = 4.6  # pixels of the large thumbnail
CREASE = 2.6
WHITE_EDGE = 4.0


def view_axes(azimuth, elevation, roll=0.0):
    """Right, up and back axes of a camera that looks at the origin from a direction given in degrees, z up."""
    a, e = math.radians(azimuth), math.radians(elevation)
    back = (math.cos(e) * math.cos(a), math.cos(e) * math.sin(a), math.sin(e))
    right = unit(cross((0.0, 0.0, 1.0), back))
    up = cross(back, right)
    c, s = math.cos(math.radians(roll)), math.sin(math.radians(roll))
    right, up = (tuple(c * r + s * u for r, u in zip(right, up)), tuple(c * u - s * r for r, u in zip(right, up)))
    return right, up, back


def disc(radius):
    reach = int(math.ceil(radius))
    return [(dx, dy) for dy in range(-reach, reach + 1) for dx in range(-reach, reach + 1)
            if dx * dx + dy * dy <= radius * radius]


def stamp(size, pixels, radius):
    """The pixels within `radius` of the given ones."""
    mask = bytearray(size * size)
    offsets = disc(radius)
    for p in pixels:
        x, y = p % size, p // size
        for dx, dy in offsets:
            u, v = x + dx, y + dy
            if 0 <= u < size and 0 <= v < size:
                mask[v * size + u] = 1
    return mask


def render(mesh, axes):
    """Pixels (premultiplied RGBA rows at LARGE x LARGE x FACTOR^2 samples) of a mesh seen along -axes[2]."""
    size = LARGE * FACTOR
    right, up, back = axes
    flat = [(dot(v, right), dot(v, up), dot(v, back)) for v in mesh.vertices]
    low = [min(p[i] for p in flat) for i in range(2)]
    high = [max(p[i] for p in flat) for i in range(2)]
    margin = (OUTLINE + WHITE_EDGE + 1.5) * FACTOR
    scale = (size - 2 * margin) / max(high[0] - low[0], high[1] - low[1])
    cx, cy = (low[0] + high[0]) / 2, (low[1] + high[1]) / 2
    spots = [((p[0] - cx) * scale + size / 2, size / 2 - (p[1] - cy) * scale, p[2] * scale) for p in flat]

    depth = [-1e30] * (size * size)
    normal = [None] * (size * size)
    color_at = [None] * (size * size)
    for face, corners in zip(mesh.faces, corner_normals(mesh)):
        (x0, y0, z0), (x1, y1, z1), (x2, y2, z2) = (spots[k] for k in face)
        det = (x1 - x0) * (y2 - y0) - (x2 - x0) * (y1 - y0)
        if det >= -1e-9:  # the screen's y runs down: faces to the viewer are clockwise there
            continue
        n0, n1, n2 = corners
        color = tuple(sum(mesh.colors[k][i] for k in face) / 3 for i in range(3))
        for y in range(max(0, int(min(y0, y1, y2))), min(size - 1, int(max(y0, y1, y2)) + 1) + 1):
            py = y + 0.5
            crossings = []
            for (ax, ay), (bx, by) in (((x0, y0), (x1, y1)), ((x1, y1), (x2, y2)), ((x2, y2), (x0, y0))):
                if (ay <= py < by) or (by <= py < ay):
                    crossings.append(ax + (bx - ax) * (py - ay) / (by - ay))
            if len(crossings) < 2:
                continue
            first = max(0, math.ceil(min(crossings) - 0.5))
            last = min(size - 1, math.ceil(max(crossings) - 0.5) - 1)
            for x in range(first, last + 1):
                px = x + 0.5
                w1 = ((px - x0) * (y2 - y0) - (x2 - x0) * (py - y0)) / det
                w2 = ((x1 - x0) * (py - y0) - (px - x0) * (y1 - y0)) / det
                w0 = 1 - w1 - w2
                z = w0 * z0 + w1 * z1 + w2 * z2
                k = y * size + x
                if z > depth[k]:
                    depth[k] = z
                    color_at[k] = color
                    normal[k] = (w0 * n0[0] + w1 * n1[0] + w2 * n2[0], w0 * n0[1] + w1 * n1[1] + w2 * n2[1],
                                 w0 * n0[2] + w1 * n1[2] + w2 * n2[2])

    # Lines: where the object ends, where depth jumps, where the normal jumps.
    border, crease = [], []
    for y in range(size - 1):
        for x in range(size - 1):
            k = y * size + x
            a = normal[k]
            for m in (k + 1, k + size):
                b = normal[m]
                if (a is None) != (b is None):
                    border.append(k)
                elif a is not None:
                    if abs(depth[k] - depth[m]) > 14:
                        crease.append(k)
                    elif a[0] * b[0] + a[1] * b[1] + a[2] * b[2] < 0.9:
                        crease.append(k)
    outline = stamp(size, border, OUTLINE * FACTOR)
    edge = stamp(size, border, (OUTLINE + WHITE_EDGE) * FACTOR)
    inner = stamp(size, border, OUTLINE * FACTOR * 0.25)
    lines = stamp(size, crease, CREASE * FACTOR / 2)

    key = unit(tuple(-0.45 * r + 0.75 * u + 0.65 * b for r, u, b in zip(right, up, back)))
    fill = unit(tuple(0.8 * r - 0.1 * u + 0.5 * b for r, u, b in zip(right, up, back)))
    half = unit(tuple(k + b for k, b in zip(key, back)))
    pixels = bytearray(4 * size * size)
    for k in range(size * size):
        n = normal[k]
        if n is None:
            if outline[k]:
                color = INK
            elif edge[k]:
                color = (255, 255, 255)
            else:
                continue
        elif inner[k] or lines[k]:
            color = INK
        else:
            n = unit(n)
            light = 0.44 + 0.62 * max(0.0, dot(n, key)) + 0.16 * max(0.0, dot(n, fill))
            shine = 0.28 * max(0.0, dot(n, half)) ** 24
            color = tuple(min(255, int(255 * (c * min(light, 1.12) + shine) + 0.5)) for c in color_at[k])
        pixels[4 * k:4 * k + 4] = bytes((*color, 255))
    return size, pixels


def shrink(size, pixels, target):
    """Average down to target x target; returns straight RGBA."""
    f = size // target
    out = bytearray()
    for y in range(target):
        for x in range(target):
            r = g = b = a = 0
            for v in range(y * f, y * f + f):
                start = 4 * (v * size + x * f)
                row = pixels[start:start + 4 * f]
                r += sum(row[0::4])
                g += sum(row[1::4])
                b += sum(row[2::4])
                a += sum(row[3::4])
            if a:
                count = a / 255  # covered samples, all of them opaque
                out += bytes([int(c / count + 0.5) for c in (r, g, b)] + [(a + f * f // 2) // (f * f)])
            else:
                out += b"\0\0\0\0"
    return bytes(out)


def png(width, rgba):
    """PNG bytes of straight RGBA pixels; every row uses the filter with the smallest sum of differences."""
    rows, before = [], bytes(4 * width)
    for y in range(len(rgba) // (4 * width)):
        row = rgba[4 * width * y:4 * width * (y + 1)]
        left = bytes(4) + row[:-4]
        choices = [(0, row), (1, bytes((c - p) & 255 for c, p in zip(row, left))),
                   (2, bytes((c - p) & 255 for c, p in zip(row, before)))]
        kind, best = min(choices, key=lambda choice: sum(min(v, 256 - v) for v in choice[1]))
        rows.append(bytes([kind]) + best)
        before = row

    def chunk(kind, data):
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))

    header = struct.pack(">IIBBBBB", width, len(rgba) // (4 * width), 8, 6, 0, 0, 0)
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) + chunk(b"IDAT", zlib.compress(b"".join(rows), 9)) +
            chunk(b"IEND", b""))
