# SPDX-License-Identifier: Apache-2.0
"""The flat pictures of the example library, drawn as SVG text.

Every picture lives on a square of 192 units, so that one unit is one pixel of the large thumbnail and three units are
one pixel of the small one. The visual language:

* INK outlines of 7 units with round joins and, around them, a white edge of about 4 units. The edge keeps a picture
  readable on dark pages, the outline keeps it readable on white ones.
* Colours carry the family: direction orange, rotation teal, force violet, steps ink, tools steel with red grips.
* Signs follow the usual shapes: warning = yellow triangle with black border, mandatory = blue disc with a white
  pictogram, prohibition = red ring and bar over a black pictogram.
* No text other than digits and the exclamation mark, and those are strokes, so no font is needed.

`ICONS` maps a file name (without extension) to a function that returns the body of the picture.
"""

import math

SIZE = 192

INK = "#1F2933"
WHITE = "#FFFFFF"
BLACK = "#15191D"
ORANGE = "#F26A1B"
TEAL = "#12A195"
VIOLET = "#8E4EC6"
STEEL = "#B7C4CF"
STEEL_DARK = "#8597A6"
GRIP = "#D6303A"
WOOD = "#D9A45B"
AMBER = "#F2A71B"
GREEN = "#2FA84F"
SIGN_YELLOW = "#FFC61A"
SIGN_BLUE = "#0B5FB0"
SIGN_RED = "#D2222D"

OUTLINE = 7
EDGE = 15


# ------------------------------------------------------------------------------------------------- building blocks

def num(value):
    """A coordinate as short text: two decimals at most, no trailing zeros, never "-0"."""
    text = f"{value:.2f}".rstrip("0").rstrip(".")
    return "0" if text in ("-0", "") else text


def polar(cx, cy, radius, degrees):
    """Point at an angle counted clockwise on the screen from the direction to the right."""
    angle = math.radians(degrees)
    return cx + radius * math.cos(angle), cy + radius * math.sin(angle)


def point(p):
    return f"{num(p[0])} {num(p[1])}"


def polygon(points):
    return "M" + " L".join(point(p) for p in points) + " Z"


def path(data, **attributes):
    extra = "".join(f' {name.replace("_", "-")}="{value}"' for name, value in attributes.items())
    return f'<path d="{data}"{extra}/>'


def circle(cx, cy, r):
    """A circle as path data, so that it can be mixed with other outlines."""
    return (f"M{num(cx - r)} {num(cy)} A{num(r)} {num(r)} 0 1 1 {num(cx + r)} {num(cy)} "
            f"A{num(r)} {num(r)} 0 1 1 {num(cx - r)} {num(cy)} Z")


def box(x, y, w, h, r=0):
    """A rectangle with rounded corners as path data."""
    if not r:
        return f"M{num(x)} {num(y)} H{num(x + w)} V{num(y + h)} H{num(x)} Z"
    a = f"A{num(r)} {num(r)} 0 0 1"
    return (f"M{num(x + r)} {num(y)} H{num(x + w - r)} {a} {num(x + w)} {num(y + r)} V{num(y + h - r)} "
            f"{a} {num(x + w - r)} {num(y + h)} H{num(x + r)} {a} {num(x)} {num(y + h - r)} V{num(y + r)} "
            f"{a} {num(x + r)} {num(y)} Z")


def group(content, **attributes):
    extra = "".join(f' {name.replace("_", "-")}="{value}"' for name, value in attributes.items())
    return f"<g{extra}>{content}</g>"


def solids(*parts, detail="", transform=None):
    """Filled areas with outline and white edge; `parts` are (path data, fill) pairs, later ones lie on top.

    The white edge is drawn below all of them, so that parts which touch look like one object. `detail` is drawn on top.
    """
    edge = "".join(path(d) for d, _ in parts)
    body = "".join(path(d, fill=fill) for d, fill in parts)
    content = (group(edge, fill=WHITE, stroke=WHITE, stroke_width=EDGE) +
               group(body, stroke=INK, stroke_width=OUTLINE) + detail)
    attributes = {"stroke_linejoin": "round", "stroke_linecap": "round"}
    if transform:
        attributes["transform"] = transform
    return group(content, **attributes)


def strokes(data, color, width, transform=None, outline=OUTLINE):
    """An open line drawn as a solid bar: white edge, ink outline, colour."""
    layers = (path(data, stroke=WHITE, stroke_width=num(width + outline + (EDGE - OUTLINE))) +
              path(data, stroke=INK, stroke_width=num(width + outline)) +
              path(data, stroke=color, stroke_width=num(width - outline)))
    attributes = {"fill": "none", "stroke_linejoin": "round", "stroke_linecap": "round"}
    if transform:
        attributes["transform"] = transform
    return group(layers, **attributes)


def line(data, color=INK, width=OUTLINE, **attributes):
    return path(data, fill="none", stroke=color, stroke_width=num(width), stroke_linecap="round",
                stroke_linejoin="round", **attributes)


def edged_line(data, color=INK, width=12):
    """A plain line with the white edge."""
    return line(data, WHITE, width + EDGE - OUTLINE) + line(data, color, width)


def ring_arrow(cx, cy, r, width, start, end, head_half, head_length):
    """Closed outline of an arrow along a circle from angle `start` to `end`; the head goes on beyond `end`.

    The tip lies on the circle, and the back of the head is square to the chord from `end` to the tip.
    """
    clockwise = end > start
    sign = 1 if clockwise else -1
    turn = 2 * math.degrees(math.asin(head_length / (2 * r)))
    base, tip = polar(cx, cy, r, end), polar(cx, cy, r, end + sign * turn)
    nx, ny = polar(0, 0, 1, end + sign * turn / 2)  # outward normal of the chord

    def back(offset):
        return base[0] + nx * offset, base[1] + ny * offset

    def on_ring(radius, offset):
        x, y = back(offset)
        return polar(cx, cy, radius, math.degrees(math.atan2(y - cy, x - cx)))

    inner, outer = r - width / 2, r + width / 2
    large = 1 if abs(end - start) > 180 else 0
    data = f"M{point(polar(cx, cy, outer, start))} A{num(outer)} {num(outer)} 0 {large} {int(clockwise)} "
    data += f"{point(on_ring(outer, width / 2))} L{point(back(head_half))} L{point(tip)} L{point(back(-head_half))} "
    data += f"L{point(on_ring(inner, -width / 2))} A{num(inner)} {num(inner)} 0 {large} {int(not clockwise)} "
    return data + f"{point(polar(cx, cy, inner, start))} Z"


def gear(cx, cy, root, top, teeth, phase=0.0):
    points = []
    step = 360 / teeth
    for i in range(teeth):
        a = phase + i * step
        points += [polar(cx, cy, root, a - step * 0.30), polar(cx, cy, top, a - step * 0.17),
                   polar(cx, cy, top, a + step * 0.17), polar(cx, cy, root, a + step * 0.30)]
    return polygon(points)


def hexagon(cx, cy, r, phase=0.0):
    return polygon([polar(cx, cy, r, phase + 60 * i) for i in range(6)])


def drop(cx, tip_y, r, stretch=1.55):
    """A drop with its tip up."""
    cy = tip_y + r * (1 + stretch * 0.62)
    return (f"M{num(cx)} {num(tip_y)} C{num(cx + r * 0.45)} {num(tip_y + r * 0.75)} {num(cx + r)} {num(cy - r * 0.55)} "
            f"{num(cx + r)} {num(cy)} A{num(r)} {num(r)} 0 1 1 {num(cx - r)} {num(cy)} "
            f"C{num(cx - r)} {num(cy - r * 0.55)} {num(cx - r * 0.45)} {num(tip_y + r * 0.75)} "
            f"{num(cx)} {num(tip_y)} Z")


def wrench_outline(length, ring_r, jaw_r, jaw_gap, shaft, hole_r, tilt=15, segments=20):
    """Outline and hole of a combination wrench along x, centred at the origin (y up or down alike).

    Shared by the flat picture and the 3D shape. The open jaw is at the positive end.
    """
    half = length / 2
    xr, xj = -half + ring_r, half - jaw_r
    h = shaft / 2
    outline = []
    # Ring end, from the upper shaft joint around the back to the lower one.
    joint = math.degrees(math.asin(h / ring_r))
    for i in range(segments + 1):
        outline.append(polar(xr, 0, ring_r, joint + (360 - 2 * joint) * i / segments))
    # Jaw end: lower shaft joint, around the lower lip, into the mouth, out and around the upper lip.
    joint = math.degrees(math.asin(h / jaw_r))
    lip = math.degrees(math.asin((jaw_gap / 2) / jaw_r))
    for i in range(segments // 2 + 1):
        outline.append(polar(xj, 0, jaw_r, 180 + joint + (180 - joint - lip + tilt) * i / (segments // 2)))
    t = math.radians(tilt)

    def mouth(x, y):
        return xj + x * math.cos(t) - y * math.sin(t), x * math.sin(t) + y * math.cos(t)

    depth = jaw_r * 0.30
    g = jaw_gap / 2
    for i in range(5):
        a = math.radians(-90 - 180 * i / 4)
        outline.append(mouth(-depth + g + g * math.cos(a) * 0.75 - g, g * math.sin(a)))
    for i in range(segments // 2 + 1):
        outline.append(polar(xj, 0, jaw_r, lip + tilt + (180 - joint - lip - tilt) * i / (segments // 2)))
    hole = [polar(xr, 0, hole_r, 30 * i) for i in range(12)]
    return outline, hole


def hand(color, scale=1.0, cx=96.0, cy=96.0):
    """An open hand, palm to the viewer, fingers up; one colour without outline."""
    fingers = [("M-27 4 V-36", 15), ("M-8.5 0 V-52", 15), ("M10 0 V-48", 15), ("M28 4 V-34", 14)]
    content = "".join(line(d, color, w) for d, w in fingers)
    content += path("M-34.5 0 H35 V30 C35 50 20 60 0 60 C-20 60 -34.5 46 -34.5 26 Z", fill=color)
    content += line("M-28 36 L-52 8", color, 15)
    return group(content, transform=f"translate({num(cx)} {num(cy)}) scale({num(scale)})")


def flame(cx, base, height):
    """A flame with an inner tongue; path data for the even-odd rule."""
    s = height / 100
    def p(x, y):
        return f"{num(cx + x * s)} {num(base + y * s)}"
    return (f"M{p(-4, -100)} C{p(8, -78)} {p(36, -62)} {p(36, -32)} C{p(36, -12)} {p(20, 0)} {p(0, 0)} "
            f"C{p(-21, 0)} {p(-36, -13)} {p(-36, -34)} C{p(-36, -48)} {p(-29, -56)} {p(-22, -66)} "
            f"C{p(-20, -56)} {p(-16, -50)} {p(-9, -47)} C{p(-14, -66)} {p(-12, -84)} {p(-4, -100)} Z "
            f"M{p(3, -45)} C{p(10, -34)} {p(18, -29)} {p(18, -17)} C{p(18, -8)} {p(10, -6)} {p(1, -6)} "
            f"C{p(-9, -6)} {p(-17, -9)} {p(-17, -18)} C{p(-17, -24)} {p(-13, -28)} {p(-10, -31)} "
            f"C{p(-8, -26)} {p(-4, -24)} {p(0, -25)} C{p(-1, -33)} {p(0, -39)} {p(3, -45)} Z")


# ------------------------------------------------------------------------------------------------------ sign plates

def warning(pictogram):
    triangle = "M96 27 L177 168 H15 Z"
    return (group(path(triangle, fill=WHITE, stroke=WHITE, stroke_width=24) +
                  path(triangle, fill=SIGN_YELLOW, stroke=BLACK, stroke_width=13), stroke_linejoin="round") +
            pictogram)


def mandatory(pictogram):
    return path(circle(96, 96, 93), fill=WHITE) + path(circle(96, 96, 87), fill=SIGN_BLUE) + pictogram


def prohibition(pictogram):
    return (path(circle(96, 96, 93), fill=WHITE) + pictogram +
            path("M44.5 44.5 L147.5 147.5", stroke=WHITE, stroke_width=21) +
            path("M42 42 L150 150", stroke=SIGN_RED, stroke_width=15) +
            path(circle(96, 96, 78), fill="none", stroke=SIGN_RED, stroke_width=18))


# -------------------------------------------------------------------------------------------- arrows, rotation, force

def arrow_straight():
    return solids(("M15 75 H102 V33 L177 96 L102 159 V117 H15 Z", ORANGE))


def arrow_bent():
    return solids(("M27 174 V99 C27 72 45 57 72 57 H108 V21 L174 78 L108 135 V99 H78 C72 99 69 102 69 108 V174 Z",
                   ORANGE))


def arrow_double():
    return solids(("M12 96 L72 36 V75 H120 V36 L180 96 L120 156 V117 H72 V156 Z", ORANGE))


def arrow_uturn():
    return solids(("M21 174 V81 A57 57 0 0 1 135 81 V99 H168 L117 162 L66 99 H99 V81 A21 21 0 0 0 57 81 V174 Z",
                   ORANGE))


def arrow_insert():
    tray = "M24 114 V171 H168 V114"
    return edged_line(tray, INK, 15) + solids(("M75 15 H117 V72 H153 L96 138 L39 72 H75 Z", ORANGE))


def arrow_remove():
    tray = "M24 114 V171 H168 V114"
    return edged_line(tray, INK, 15) + solids(("M96 15 L153 81 H117 V141 H75 V81 H39 Z", ORANGE))


def pivot(cx, cy, r=12):
    return solids((circle(cx, cy, r), WHITE))


def rotate_cw():
    return solids((ring_arrow(96, 99, 63, 27, -200, 30, 37, 54), TEAL)) + pivot(96, 99)


def rotate_ccw():
    return solids((ring_arrow(96, 99, 63, 27, 20, -210, 37, 54), TEAL)) + pivot(96, 99)


def rotate_90():
    angle = "M27 21 V168 H174"
    square = "M27 132 H63 V168"
    legs = line(angle, WHITE, 18) + line(square, WHITE, 14) + line(angle, INK, 10) + line(square, INK, 6)
    return legs + solids((ring_arrow(27, 168, 114, 30, -76, -41, 38, 54), TEAL))


def rotate_180():
    base = edged_line("M12 147 H180", INK, 10)
    return base + solids((ring_arrow(96, 126, 72, 30, -180, -54, 38, 54), TEAL)) + pivot(96, 147)


def wall(x, side):
    """A hatched wall from top to bottom with its face at `x`; `side` is +1 when the solid lies to the right."""
    left = x if side > 0 else x - 27
    hatch = " ".join(f"M{num(x + 4 * side)} {num(y)} l{num(19 * side)} -19" for y in (51, 81, 111, 141, 169))
    return solids((box(left, 18, 27, 156), STEEL), detail=line(hatch, INK, 5))


def force_push():
    return wall(156, 1) + solids(("M9 75 H69 V36 L138 96 L69 156 V117 H9 Z", VIOLET))


def force_pull():
    return wall(36, -1) + solids(("M54 75 H114 V36 L183 96 L114 156 V117 H54 Z", VIOLET))


def force_clamp():
    block = box(78, 30, 36, 132, 3)
    return solids((block, STEEL), ("M9 81 H30 V57 L69 96 L30 135 V111 H9 Z", VIOLET),
                  ("M183 81 H162 V57 L123 96 L162 135 V111 H183 Z", VIOLET))


# ------------------------------------------------------------------------------------------------------- step numbers

DIGITS = {
    1: "M78 72 L102 51 V141",
    2: "M68 77 C69 61 81 51 96 51 C112 51 124 61 124 77 C124 98 86 116 69 141 H126",
    3: "M69 51 H121 L94 84 C111 83 125 95 125 112 C125 130 112 141 95 141 C83 141 73 136 66 126",
    4: "M109 141 V51 L64 117 H130",
    5: "M120 51 H78 L73 92 C80 86 88 84 97 84 C114 84 126 96 126 112 C126 129 113 141 96 141 C84 141 74 136 67 127",
    6: "M113 51 C85 64 66 88 66 112 M96 141 A30 30 0 1 1 96 81 A30 30 0 1 1 96 141 Z",
    7: "M66 51 H126 L88 141",
    8: "M96 51 A22 21 0 1 1 96 93 A22 21 0 1 1 96 51 Z M96 93 A28 24 0 1 1 96 141 A28 24 0 1 1 96 93 Z",
    9: "M79 141 C107 128 126 104 126 80 M96 51 A30 30 0 1 1 96 111 A30 30 0 1 1 96 51 Z",
}


def step(digit):
    return (path(circle(96, 96, 93), fill=WHITE) + path(circle(96, 96, 87), fill=INK) +
            path(circle(96, 96, 76.5), fill="none", stroke=WHITE, stroke_width=6) +
            line(DIGITS[digit], WHITE, 18))


# ----------------------------------------------------------------------------------------------------------- warnings

def warning_general():
    return warning(path("M84 77 C84 68 108 68 108 77 L103 122 C102 130 90 130 89 122 Z", fill=BLACK) +
                   path(circle(96, 148, 11), fill=BLACK))


def warning_hot():
    waves = "".join(line(f"M{x} 135 C{x - 14} 121 {x + 14} 112 {x} 96", BLACK, 9) for x in (73, 96, 119))
    return warning(waves + line("M57 152 H135", BLACK, 11))


def warning_voltage():
    return warning(path("M102 78 L73 124 H91 L84 157 L119 108 H100 L112 78 Z", fill=BLACK,
                        stroke=BLACK, stroke_width=3, stroke_linejoin="round"))


def warning_gears():
    def wheel(cx, cy, root, top, hole, teeth, phase):
        return path(gear(cx, cy, root, top, teeth, phase) + " " + circle(cx, cy, hole), fill=BLACK, fill_rule="evenodd")
    return warning(wheel(77, 131, 19, 28, 8, 8, 10) + wheel(121, 123, 12, 20, 6, 7, 4))


def warning_fire():
    return warning(path(flame(96, 145, 84), fill=BLACK, fill_rule="evenodd") + line("M57 155 H135", BLACK, 9))


# ---------------------------------------------------------------------------------------------------------- mandatory

def mandatory_gloves():
    glove = hand(WHITE, 1.0, 100, 81) + path("M70 110 H129 V138 H70 Z", fill=WHITE)
    cuff = path(box(63, 144, 73, 18, 6), fill=WHITE)
    return mandatory(glove + cuff)


def mandatory_goggles():
    head = path("M96 36 C129 36 147 60 147 93 C147 132 123 162 96 162 C69 162 45 132 45 93 C45 60 63 36 96 36 Z",
                fill=WHITE)
    strap = line("M42 87 H150", SIGN_BLUE, 12)
    lens = path("M57 69 H135 C141 69 144 72 144 78 V96 C144 111 135 117 123 117 C111 117 105 111 102 105 "
                "C99 99 93 99 90 105 C87 111 81 117 69 117 C57 117 48 111 48 96 V78 C48 72 51 69 57 69 Z",
                fill=SIGN_BLUE)
    glass = "".join(path(d, fill=WHITE) for d in (
        "M60 78 H87 V93 C87 102 81 108 72 108 C63 108 57 102 57 93 V81 C57 79 58 78 60 78 Z",
        "M132 78 H105 V93 C105 102 111 108 120 108 C129 108 135 102 135 93 V81 C135 79 134 78 132 78 Z"))
    return mandatory(head + strap + lens + glass)


def mandatory_ears():
    head = path("M96 51 C120 51 132 69 132 96 C132 126 117 150 96 150 C75 150 60 126 60 96 C60 69 72 51 96 51 Z",
                fill=WHITE)
    band = line("M48 87 C45 21 147 21 144 87", WHITE, 11)
    cups = path(box(33, 78, 24, 51, 11), fill=WHITE) + path(box(135, 78, 24, 51, 11), fill=WHITE)
    gap = line("M60 82 C51 82 51 126 62 124", SIGN_BLUE, 6) + line("M132 82 C141 82 141 126 130 124", SIGN_BLUE, 6)
    return mandatory(head + gap + band + cups)


def mandatory_manual():
    left = "M90 63 C75 51 54 48 33 51 V132 C54 129 75 132 90 144 Z"
    right = "M102 63 C117 51 138 48 159 51 V132 C138 129 117 132 102 144 Z"
    lines = "".join(line(d, SIGN_BLUE, 6) for d in (
        "M45 69 C57 68 69 71 78 75", "M45 87 C57 86 69 89 78 93", "M45 105 C57 104 69 107 78 111",
        "M147 69 C135 68 123 71 114 75", "M147 87 C135 86 123 89 114 93", "M147 105 C135 104 123 107 114 111"))
    return mandatory(path(left, fill=WHITE) + path(right, fill=WHITE) + lines)


def mandatory_lock():
    body = path(box(51, 87, 90, 66, 9), fill=WHITE)
    shackle = line("M69 90 V69 A27 27 0 0 1 123 69 V90", WHITE, 15)
    hole = path(circle(96, 114, 10), fill=SIGN_BLUE) + line("M96 117 V135", SIGN_BLUE, 9)
    return mandatory(shackle + body + hole)


def mandatory_battery_off():
    body = path("M36 84 H156 V144 H36 Z", fill=WHITE, stroke=WHITE, stroke_width=9, stroke_linejoin="round")
    poles = path(box(48, 64, 24, 18, 3), fill=WHITE) + path(box(120, 64, 24, 18, 3), fill=WHITE)
    marks = line("M48 114 H72", SIGN_BLUE, 9) + line("M120 114 H144 M132 102 V126", SIGN_BLUE, 9)
    # The clamp is lifted from the minus pole.
    clamp = line("M60 52 V42 C60 30 72 27 84 27 H102", WHITE, 9) + path(box(46, 41, 28, 14, 4), fill=WHITE)
    return mandatory(body + poles + marks + clamp)


# --------------------------------------------------------------------------------------------------------- prohibition

def prohibition_fire():
    return prohibition(path(flame(96, 138, 100), fill=BLACK, fill_rule="evenodd") + line("M60 147 H132", BLACK, 8))


def prohibition_touch():
    return prohibition(hand(BLACK, 0.93, 99, 93))


def prohibition_lift():
    hook = line("M96 27 V45 M96 45 C111 45 111 66 96 66 C89 66 85 62 85 57", BLACK, 9)
    sling = line("M96 69 L54 108 M96 69 L138 108", BLACK, 8)
    load = path(box(45, 105, 102, 42, 4), fill=BLACK)
    return prohibition(hook + sling + load)


def prohibition_turn():
    return prohibition(path(ring_arrow(96, 97, 43, 18, 100, 312, 27, 38), fill=BLACK) +
                       path(circle(96, 97, 10), fill=BLACK))


# --------------------------------------------------------------------------------------------------------------- tools

TILT = "rotate(-45 96 96)"


def tool_torque_wrench():
    ridges = line("M150 84 V108 M165 84 V108 M180 84 V108", INK, 5)
    scale = line("M72 96 H114", INK, 4) + line("M75 88 V104 M87 91 V101 M99 91 V101 M111 88 V104", INK, 4)
    square = group(path(box(8, 86, 20, 20), fill=WHITE, stroke=INK, stroke_width=6), stroke_linejoin="round")
    return solids((box(36, 84, 99, 24), STEEL), (box(60, 74, 66, 44, 6), SIGN_YELLOW), (circle(18, 96, 30), STEEL),
                  (box(132, 75, 69, 42, 14), GRIP), detail=ridges + scale + square, transform=TILT)


def tool_open_wrench():
    outline, hole = wrench_outline(204, 33, 42, 36, 33, 18)
    data = polygon([(96 + x, 96 + y) for x, y in outline]) + " " + polygon([(96 + x, 96 + y) for x, y in hole])
    edge = path(data, fill=WHITE, stroke=WHITE, stroke_width=EDGE)
    body = path(data, fill=STEEL, stroke=INK, stroke_width=OUTLINE, fill_rule="evenodd")
    hole_clear = path(polygon([(96 + x * 1, 96 + y) for x, y in hole]), fill=WHITE, stroke=INK, stroke_width=OUTLINE)
    groove = line("M72 96 H114", STEEL_DARK, 6)
    return group(edge + body + hole_clear + groove, stroke_linejoin="round", transform=TILT)


def tool_screwdriver():
    handle = ("M111 75 C117 69 126 72 132 72 H180 C192 72 201 81 201 96 "
              "C201 111 192 120 180 120 H132 C126 120 117 123 111 117 Z")
    flutes = line("M138 87 H180 M138 105 H180", INK, 5)
    blade = "M-9 84 L9 87 H111 V105 H9 L-9 108 Z"
    return solids((blade, STEEL), (handle, GRIP), detail=flutes, transform=TILT)


def tool_hex_key():
    data = "M159 36 H78 C54 36 42 48 42 72 V159"
    end = group(path(hexagon(159, 36, 15, 30), fill=STEEL_DARK, stroke=INK, stroke_width=6), stroke_linejoin="round")
    return strokes(data, STEEL, 27) + end


def tool_hammer():
    handle = box(81, 66, 30, 120, 9)
    head = "M45 27 H138 C156 27 168 36 174 57 C162 51 150 54 141 66 H45 Z"
    face = box(24, 21, 24, 51, 4)
    grip = box(81, 126, 30, 60, 9)
    return solids((handle, WOOD), (grip, GRIP), (head, STEEL), (face, STEEL_DARK),
                  transform="translate(-12 6) rotate(24 96 96) translate(6 5) scale(0.94)")


def tool_pliers():
    jaw_l = "M90 87 L66 66 C54 51 60 27 81 9 L93 18 V72 Z"
    jaw_r = "M102 87 L126 66 C138 51 132 27 111 9 L99 18 V72 Z"
    legs = strokes("M114 90 C72 117 60 141 57 180", GRIP, 25) + strokes("M78 90 C120 117 132 141 135 180", GRIP, 25)
    joint = solids((circle(96, 87, 21), STEEL), detail=path(circle(96, 87, 7), fill=INK))
    teeth = line("M93 33 H99 M93 45 H99 M93 57 H99", INK, 4)
    return group(legs + solids((jaw_l, STEEL), (jaw_r, STEEL)) + teeth + joint,
                 transform="translate(5 0) scale(0.945)")


# --------------------------------------------------------------------------------------------------------- consumables

def consumable_oil():
    body = "M27 102 L15 177 H126 L114 102 Z"
    spout = "M63 72 H84 L165 15 L174 27 L102 87 H63 Z"
    collar = box(48, 72, 48, 30, 5)
    label = path(drop(70, 112, 16), fill=WHITE)
    fall = solids((drop(166, 54, 15), AMBER))
    return solids((spout, STEEL), (body, AMBER), (collar, STEEL), detail=label) + fall


def consumable_grease():
    barrel = box(54, 78, 108, 45, 6)
    cap = box(45, 72, 21, 57, 6)
    nozzle = "M45 93 H24 V108 H45 Z"
    lever = "M60 72 L75 33 L87 36 L81 72 Z"
    rod = strokes("M162 100 H177", STEEL, 14)
    handle = strokes("M66 60 L141 36", GRIP, 21)
    blob = solids(("M9 129 C9 120 15 117 18 108 H33 C33 117 42 120 42 132 C42 144 33 150 25 150 C15 150 9 141 9 129 Z",
                   GREEN))
    bands = line("M87 84 V117 M138 84 V117", INK, 5)
    return rod + handle + solids((nozzle, STEEL), (barrel, GREEN), (cap, STEEL), detail=bands) + blob


def consumable_sealant():
    bead = strokes("M24 168 C39 150 51 183 66 168 C81 150 93 183 108 168", SIGN_BLUE, 19)
    tube = group(solids((box(99, 75, 81, 42, 4), SIGN_BLUE), ("M99 81 L81 87 L24 93 V99 L81 105 L99 111 Z", WHITE),
                        (box(174, 69, 12, 54, 4), STEEL), detail=path(box(117, 84, 42, 24), fill=WHITE)),
                 transform="rotate(-50 96 96) translate(-3 0)")
    return bead + tube


def consumable_thread_locker():
    bottle = "M57 12 H135 V60 C135 69 129 75 120 78 L109 82 L102 108 H90 L83 82 L72 78 C63 75 57 69 57 60 Z"
    label = path(box(71, 26, 50, 32, 3), fill=WHITE) + line("M83 35 L109 41 M83 45 L109 51", GRIP, 5)
    fall = solids((drop(96, 111, 10), GRIP))
    ribs = tuple((box(51, y, 90, 15, 7), STEEL) for y in (138, 153, 168))
    return solids(*ribs) + solids((bottle, GRIP), detail=label) + fall


def consumable_cleaner():
    can = box(84, 75, 75, 108, 9)
    dome = "M93 75 C93 57 102 51 111 51 H132 C141 51 150 57 150 75 Z"
    nozzle = box(108, 27, 27, 24, 4)
    label = path(box(96, 99, 51, 48, 3), fill=WHITE) + line("M108 135 L135 108 M120 138 L138 120", TEAL, 6)
    spray = "".join(path(circle(x, y, r), fill=TEAL, stroke=INK, stroke_width=4) for x, y, r in (
        (84, 42, 7), (60, 28, 8), (60, 56, 8), (33, 16, 9), (33, 42, 9), (33, 68, 9)))
    halo = "".join(path(circle(x, y, r + 5), fill=WHITE) for x, y, r in (
        (84, 42, 7), (60, 28, 8), (60, 56, 8), (33, 16, 9), (33, 42, 9), (33, 68, 9)))
    return halo + solids((can, TEAL), (dome, STEEL), (nozzle, INK), detail=label) + spray


# --------------------------------------------------------------------------------------------------------------- checks

def check_eye():
    lid = "M9 96 C39 51 66 39 96 39 C126 39 153 51 183 96 C153 141 126 153 96 153 C66 153 39 141 9 96 Z"
    detail = (path(circle(96, 96, 39), fill=SIGN_BLUE, stroke=INK, stroke_width=OUTLINE) +
              path(circle(96, 96, 18), fill=INK) + path(circle(108, 84, 9), fill=WHITE))
    return solids((lid, WHITE), detail=detail)


def check_magnifier():
    lens = circle(78, 78, 57)
    detail = (path(circle(78, 78, 39), fill="#D9EEF9", stroke=INK, stroke_width=6) +
              line("M57 75 C58 64 66 57 77 56", WHITE, 9))
    return strokes("M126 126 L168 168", GRIP, 33) + solids((lens, STEEL), detail=detail)


def check_measure():
    beam = box(9, 60, 174, 36, 3)
    fixed = "M9 60 V24 L24 39 L33 60 V96 L39 96 V168 L24 153 L9 96 Z"
    slide = "M78 51 H147 V108 H111 V153 L96 168 V108 H78 V60 L84 39 L99 24 V51 Z"
    ticks = " ".join(f"M{x} 60 v{12 if i % 2 else 18}" for i, x in enumerate(range(48, 78, 9)))
    ticks += " " + " ".join(f"M{x} 60 v{12 if i % 2 else 18}" for i, x in enumerate(range(156, 180, 9)))
    window = path(box(99, 66, 36, 24, 2), fill=WHITE, stroke=INK, stroke_width=4)
    window += line("M108 66 V75 M117 66 V81 M126 66 V75", INK, 4)
    return solids((beam, STEEL), (fixed, STEEL), (slide, SIGN_YELLOW), detail=line(ticks, INK, 4) + window)


# -------------------------------------------------------------------------------------------- the user's own and shared

def mark_done():
    return solids(("M14 100 L43 70 L78 105 L148 27 L178 56 L79 168 Z", GREEN))


def mark_wrong():
    return solids(("M45 15 L96 66 L147 15 L177 45 L126 96 L177 147 L147 177 L96 126 L45 177 L15 147 L66 96 L15 45 Z",
                   SIGN_RED))


def mark_wait():
    ticks = " ".join(f"M{point(polar(96, 102, 57, a))} L{point(polar(96, 102, 48, a))}" for a in (0, 90, 180, 270))
    detail = line(ticks, INK, 7) + line("M96 66 V102 L120 117", INK, 9) + path(circle(96, 102, 8), fill=GRIP)
    return solids((box(84, 9, 24, 21, 4), STEEL), (circle(96, 102, 75), WHITE), detail=detail)


def mark_detail():
    ring = circle(75, 75, 60)
    dashes = path(ring, fill="none", stroke=WHITE, stroke_width=20) + path(
        ring, fill="none", stroke=GRIP, stroke_width=12, stroke_dasharray="31.4 15.72", stroke_linecap="butt")
    return dashes + solids(("M177 177 L117 159 L132 144 L111 123 L123 111 L144 132 L159 117 Z", GRIP))


def mark_pin():
    return solids(("M96 180 C87 144 42 120 42 72 A54 54 0 1 1 150 72 C150 120 105 144 96 180 Z", GRIP),
                  detail=path(circle(96, 72, 24), fill=WHITE, stroke=INK, stroke_width=6))


def team_replace():
    a = ring_arrow(96, 96, 66, 24, -170, -50, 33, 45)
    b = ring_arrow(96, 96, 66, 24, 10, 130, 33, 45)
    nut = hexagon(96, 96, 27, 0) + " " + circle(96, 96, 12)
    return solids((a, GREEN), (b, GREEN)) + group(
        path(hexagon(96, 96, 27, 0), fill=WHITE, stroke=WHITE, stroke_width=EDGE) +
        path(nut, fill=STEEL, stroke=INK, stroke_width=6, fill_rule="evenodd"), stroke_linejoin="round")


def team_temperature():
    tube = ("M60 111 V36 A24 24 0 0 1 108 36 V111 A39 39 0 1 1 60 111 Z")
    detail = (path(circle(84, 141, 24), fill=GRIP) + line("M84 141 V63", GRIP, 15))
    ticks = edged_line("M132 36 H159 M132 63 H150 M132 90 H159", INK, 9)
    return ticks + solids((tube, WHITE), detail=detail)


def team_dispose():
    bin_body = "M45 66 H147 L138 180 H54 Z"
    lid = box(33, 45, 126, 21, 5)
    knob = box(78, 27, 36, 18, 5)
    return solids((bin_body, GREEN), (knob, GREEN), (lid, GREEN), detail=path(drop(96, 81, 27), fill=WHITE))


def team_two_people():
    def person(x):
        return ((circle(x, 36, 18), INK), (box(x - 18, 63, 36, 66, 14), INK))
    left, right = person(39), person(153)
    load = box(57, 96, 78, 51, 4)
    def arms(color, w):
        return line("M39 81 L66 111", color, w) + line("M153 81 L126 111", color, w)
    legs = "M30 126 V177 M48 126 V177 M144 126 V177 M162 126 V177"
    bodies = "".join(path(d, fill=INK) for d, _ in left + right)
    halo = "".join(path(d, fill=WHITE, stroke=WHITE, stroke_width=8) for d, _ in left + right)
    up = solids(("M96 24 L126 57 H108 V81 H84 V57 H66 Z", ORANGE))
    return (halo + line(legs, WHITE, 22) + line(legs, INK, 14) + bodies + solids((load, WOOD)) +
            arms(WHITE, 20) + arms(INK, 12) + up)


ICONS = {
    "arrow_straight": arrow_straight, "arrow_bent": arrow_bent, "arrow_double": arrow_double,
    "arrow_uturn": arrow_uturn, "arrow_insert": arrow_insert, "arrow_remove": arrow_remove,
    "rotate_cw": rotate_cw, "rotate_ccw": rotate_ccw, "rotate_90": rotate_90, "rotate_180": rotate_180,
    "force_push": force_push, "force_pull": force_pull, "force_clamp": force_clamp,
    "warning_general": warning_general, "warning_hot": warning_hot, "warning_voltage": warning_voltage,
    "warning_gears": warning_gears, "warning_fire": warning_fire,
    "mandatory_gloves": mandatory_gloves, "mandatory_goggles": mandatory_goggles, "mandatory_ears": mandatory_ears,
    "mandatory_manual": mandatory_manual,
    "prohibition_fire": prohibition_fire, "prohibition_touch": prohibition_touch,
    "prohibition_lift": prohibition_lift, "prohibition_turn": prohibition_turn,
    "tool_torque_wrench": tool_torque_wrench, "tool_open_wrench": tool_open_wrench,
    "tool_screwdriver": tool_screwdriver, "tool_hex_key": tool_hex_key, "tool_hammer": tool_hammer,
    "tool_pliers": tool_pliers,
    "consumable_oil": consumable_oil, "consumable_grease": consumable_grease,
    "consumable_sealant": consumable_sealant, "consumable_thread_locker": consumable_thread_locker,
    "consumable_cleaner": consumable_cleaner,
    "check_eye": check_eye, "check_magnifier": check_magnifier, "check_measure": check_measure,
    "mark_done": mark_done, "mark_wrong": mark_wrong, "mark_wait": mark_wait, "mark_detail": mark_detail,
    "mark_pin": mark_pin,
    "team_lockout": mandatory_lock, "team_battery_off": mandatory_battery_off, "team_replace": team_replace,
    "team_temperature": team_temperature, "team_dispose": team_dispose, "team_two_people": team_two_people,
}
ICONS.update({f"step_{digit}": (lambda d=digit: step(d)) for digit in DIGITS})


def svg(name, size=SIZE):
    """The whole SVG document of a picture at the given nominal size in pixels."""
    return ('<?xml version="1.0" encoding="utf-8"?>\n'
            '<!-- SPDX-License-Identifier: Apache-2.0 -->\n'
            f'<svg xmlns="http://www.w3.org/2000/svg" width="{size}" height="{size}" viewBox="0 0 {SIZE} {SIZE}">\n'
            f'{ICONS[name]()}\n</svg>\n')
