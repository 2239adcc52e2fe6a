# SPDX-License-Identifier: Apache-2.0
"""The library documents and the message table as text.

The text is the canonical one: exactly what the program's own writer produces, so that reading a document and writing it
again gives the same bytes. Element order, the blank after "/>" and the number forms are part of that.
"""

import struct

from .entries import GLB, LANGUAGES, VIEWS, Keyed
from .shapes import dot
from .views import view_axes

IDENTITY = ((1, 0, 0), (0, 1, 0), (0, 0, 1), (0, 0, 0))


class Messages:
    """Collects the keyed texts in the order of their first use."""

    def __init__(self):
        self.table = {}

    def add(self, key, texts):
        if len(texts) != len(LANGUAGES) or not all(texts):
            raise ValueError(f"{key}: one text for each of {LANGUAGES} is needed")
        if self.table.setdefault(key, tuple(texts)) != tuple(texts):
            raise ValueError(f"{key}: two different texts")
        return key

    def xml(self):
        lines = ['<?xml version="1.0" encoding="utf-8"?>',
                 '<messages table="lubase:lumodulesStrings" default="en">']
        for key, texts in self.table.items():
            lines.append(f'  <message key="{key}">')
            lines += [f'    <text lang="{lang}">{escape(text)}</text>' for lang, text in zip(LANGUAGES, texts)]
            lines.append("  </message>")
        return "\n".join(lines + ["</messages>"]) + "\n"


def escape(text):
    for char, entity in (("&", "&amp;"), ("<", "&lt;"), (">", "&gt;"), ('"', "&quot;"), ("'", "&apos;")):
        text = text.replace(char, entity)
    return text


def general(value):
    """A real number with six significant digits, trailing zeros dropped."""
    text = f"{value:.6g}"
    return "0" if text == "-0" else text


def boolean(value):
    return "true" if value else "false"


def shortest_single(value):
    """The shortest text that reads back to the same single-precision number."""
    def single(v):
        return struct.unpack("<f", struct.pack("<f", v))[0]
    value = single(round(value, 7))
    for digits in range(1, 10):
        text = f"{value:.{digits}g}"
        if single(float(text)) == value:
            return "0" if float(text) == 0 else text
    raise ValueError(value)


def shortest_double(value):
    text = repr(float(value))
    return "0" if float(text) == 0 else text.removesuffix(".0")


def attributes(depth, name, **values):
    """An element that has attributes only; the blank before the line end belongs to the format."""
    text = "".join(f' {key}="{escape(value)}"' for key, value in values.items())
    return "  " * depth + f"<{name}{text}/> \n"


def element(depth, name, text):
    return "  " * depth + f"<{name}>{escape(text)}</{name}>\n"


def text_or_key(depth, name, value, key, messages):
    """`value` is a plain text, a triple (one text for each language) or a Keyed text."""
    if isinstance(value, Keyed):
        return attributes(depth, name, locid=messages.add(value.key, value.texts))
    if isinstance(value, tuple):
        return attributes(depth, name, locid=messages.add(key, value))
    return element(depth, name, value)


def category_xml(category, messages):
    ident, name, tooltip, description = category
    key = None
    if isinstance(name, tuple):
        key, name = name
    return (f'    <category id="{escape(ident)}">\n' + text_or_key(3, "name", name, key, messages) +
            element(3, "tooltip", tooltip) + element(3, "description", description) + "    </category>\n")


def texts_xml(entry, messages):
    key = "SYM_" + entry["key"]
    return (text_or_key(3, "name", entry["name"], key + "_NAME", messages) +
            text_or_key(3, "title", entry["title"], key + "_TITLE", messages) +
            element(3, "showTooltipTitle", boolean(entry.get("show_title", True))) +
            text_or_key(3, "description", entry["description"], key + "_DESC", messages) +
            element(3, "showTooltipDescription", boolean(entry.get("show_description", False))) +
            element(3, "tooltip", entry.get("tooltip", "")))


def tags_xml(entry, messages):
    if not entry.get("tags"):
        return ""
    text = "      <tags>\n"
    for tag in entry["tags"]:
        text += f'        <tag type="{escape(tag["type"])}">\n'
        text += text_or_key(5, "description", tag["description"], None, messages)
        unit = tag["unit"]
        if isinstance(unit, Keyed):
            attribute = f'locid="{messages.add(unit.key, unit.texts)}"'
        else:
            attribute = f'unit="{escape(unit)}"'
        text += f'          <quantity {attribute}>{escape(tag["quantity"])}</quantity>\n        </tag>\n'
    return text + "      </tags>\n"


def url_folder(document):
    """Urls of a document start at the folder that holds "SymbolsLibrary"."""
    return document["folder"].removeprefix("shared/")


def entry_id(entry):
    return ("shp-" if "mesh" in entry else "img-") + entry["key"].removeprefix("SHAPE_").lower().replace("_", "-")


def base_name(entry):
    """File name of an entry's thumbnails, without size and extension."""
    return entry["mesh"] if "mesh" in entry else entry["key"].lower()


def picture(entry):
    return entry.get("picture", entry["key"].lower())


def image_file(entry):
    return picture(entry) + (".png" if entry.get("png") else ".svg")


def thumbnail_extension(entry):
    return ".svg" if entry.get("svg_thumbnails") else ".png"


def shape_file(entry):
    return entry["mesh"] + (".glb" if entry["mesh"] in GLB else ".obj")


def shape_xml(document, entry, mesh, messages):
    folder = url_folder(document) + "/Shape/"
    rows = entry.get("csys", IDENTITY)
    csys = dict(zip("abcdefghi", (general(v) for row in rows[:3] for v in row)))
    csys.update(zip(("pos_x", "pos_y", "pos_z"), (general(v) for v in rows[3])))
    text = f'    <shape id="{entry_id(entry)}" categoryId="{entry["category"]}">\n'
    text += texts_xml(entry, messages)
    text += attributes(3, "gallery_thumbnail", url=f"{folder}{base_name(entry)}_64x64.png")
    text += attributes(3, "graphic", url=folder + shape_file(entry))
    text += element(3, "scale", general(entry.get("scale", 1)))
    text += element(3, "orientation", str(entry.get("orientation", 0)))
    text += attributes(3, "shape_csys", **csys)
    text += element(3, "axis_name", entry.get("axis_name", ""))
    text += element(3, "distance_from_csys", general(entry.get("distance", 0)))
    text += element(3, "axis_id", str(entry.get("axis_id", 0)))
    text += element(3, "orientation_name", entry.get("orientation_name", ""))
    text += element(3, "annotation_to_symbol", boolean(entry.get("annotation", False)))
    text += element(3, "use_current_orientation", boolean(entry.get("current_orientation", False)))
    text += element(3, "edit_csys_method", str(entry.get("edit_method", 1)))
    text += tags_xml(entry, messages)
    if entry.get("camera"):
        text += camera_xml(entry, mesh)
    return text + "    </shape>\n"


def camera_xml(entry, mesh):
    """The preview camera shows all of the shape; its axes are the columns of the matrix (right, up, back)."""
    axes = view_axes(*VIEWS[entry["mesh"]])
    extents = []
    for axis in axes:
        along = [dot(vertex, axis) for vertex in mesh.vertices]
        extents.append((min(along), max(along)))
    size = max(high - low for low, high in extents)
    middle = [(low + high) / 2 for low, high in extents]
    middle[2] += 2 * size
    eye = [sum(axis[i] * m for axis, m in zip(axes, middle)) for i in range(3)]
    width = max(high - low for low, high in extents[:2])
    matrix = [shortest_single(axes[column][row]) for row in range(3) for column in range(3)]
    position = [shortest_double(round(v, 2)) for v in eye]
    return attributes(3, "camera", ortho="true", value=general(round(1.12 * width, 1)),
                      location=" ".join(matrix + position))


def symbol_xml(document, entry, messages):
    folder = url_folder(document) + "/2D/"
    horizontal, vertical = entry.get("flip", (False, False))
    right, left = entry.get("rotate", (0, 0))
    text = (f'    <symbol id="{entry_id(entry)}" categoryId="{entry["category"]}" '
            f'billboard="{boolean(entry.get("billboard", False))}">\n')
    text += texts_xml(entry, messages)
    text += attributes(3, "gallery_thumbnail", url=f"{folder}{base_name(entry)}_64x64{thumbnail_extension(entry)}")
    text += attributes(3, "image", url=folder + image_file(entry))
    text += element(3, "scale", str(entry.get("scale", 100)))
    text += attributes(3, "flip", horizontal=boolean(horizontal), vertical=boolean(vertical))
    text += attributes(3, "rotate", right=str(right), left=str(left))
    text += tags_xml(entry, messages)
    return text + "    </symbol>\n"


def document_xml(document, meshes, messages):
    text = '<?xml version="1.0" encoding="utf-8"?>\n<drellin-library>\n'
    text += element(1, "units", document["units"]) + element(1, "information", document["information"])
    text += "  <categories>\n" + "".join(category_xml(c, messages) for c in document["categories"])
    text += "  </categories>\n  <shapes>\n"
    text += "".join(shape_xml(document, e, meshes[e["mesh"]], messages) for e in document["shapes"])
    text += "  </shapes>\n  <symbols>\n"
    text += "".join(symbol_xml(document, e, messages) for e in document["images"])
    return text + "  </symbols>\n</drellin-library>\n"


def check(documents):
    """Refuse ids and names that occur twice, entries without a category, and empty titles."""
    ids, names = set(), [{} for _ in LANGUAGES]
    for document in documents:
        categories = set()
        for ident, name, _, _ in document["categories"]:
            if ident in ids:
                raise ValueError(f"id {ident} occurs twice")
            ids.add(ident)
            categories.add(ident)
        for entry in document["shapes"] + document["images"]:
            ident = entry_id(entry)
            if ident in ids:
                raise ValueError(f"id {ident} occurs twice")
            ids.add(ident)
            if entry["category"] not in categories:
                raise ValueError(f"{ident}: no category {entry['category']}")
            texts = entry["name"] if isinstance(entry["name"], tuple) else (entry["name"],) * len(LANGUAGES)
            for known, text in zip(names, texts):
                if known.setdefault(text, ident) != ident:
                    raise ValueError(f"name {text} of {ident} is also that of {known[text]}")
            if not all(texts) or not entry["title"]:
                raise ValueError(f"{ident}: name or title is empty")
