# SPDX-License-Identifier: Apache-2.0
"""Where the preview cameras of the shapes look from."""

import math

from .shapes import cross, unit


def view_axes(azimuth, elevation, roll=0.0):
    """Right, up and back axes of a camera that looks at the origin from a direction given in degrees, z up."""
    a, e = math.radians(azimuth), math.radians(elevation)
    back = (math.cos(e) * math.cos(a), math.cos(e) * math.sin(a), math.sin(e))
    right = unit(cross((0.0, 0.0, 1.0), back))
    up = cross(back, right)
    c, s = math.cos(math.radians(roll)), math.sin(math.radians(roll))
    right, up = (tuple(c * r + s * u for r, u in zip(right, up)), tuple(c * u - s * r for r, u in zip(right, up)))
    return right, up, back
