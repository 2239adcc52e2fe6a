#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Makes everything under examples/library/ except its README.md.

    scripts/make_example_library.py [--output DIR] [--lusym PROGRAM]

Needs Python 3.9 or newer, `rsvg-convert` (Debian: librsvg2-bin), and `lusym` for the thumbnails of the shapes. The tables are in example_library/entries.py, the
drawings in icons.py, the shapes in shapes.py. Two runs give the same bytes as long as rsvg-convert and zlib stay the
same. Generated files of entries that are gone are removed.
"""

import argparse
import pathlib
import shutil
import subprocess
import sys

sys.dont_write_bytecode = True

from example_library import document, entries, icons, shapes  # noqa: E402

PICTURE_SIZE = 256
THUMBNAILS = (64, 192)


def rasterise(svg, size):
    result = subprocess.run(["rsvg-convert", "--width", str(size), "--height", str(size), "--format", "png"],
                            input=svg.encode("utf-8"), stdout=subprocess.PIPE, check=True)
    return result.stdout


def turned(svg, entry):
    """The picture as the entry shows it: flipped and rotated."""
    horizontal, vertical = entry.get("flip", (False, False))
    angle = sum(entry.get("rotate", (0, 0)))
    if not (horizontal or vertical or angle):
        return svg
    middle = icons.SIZE / 2
    transform = (f"translate({icons.num(middle)} {icons.num(middle)}) rotate({angle}) "
                 f"scale({-1 if horizontal else 1} {-1 if vertical else 1}) "
                 f"translate({icons.num(-middle)} {icons.num(-middle)})")
    head, body = svg.split('">\n', 1) if '">\n' in svg else (svg, "")
    body, tail = body.rsplit("\n</svg>", 1)
    return f'{head}">\n<g transform="{transform}">{body}</g>\n</svg>{tail}'


def image_files(doc, entry):
    folder = f"{doc['folder']}/2D/"
    name = document.picture(entry)
    source = icons.svg(name)
    yield folder + document.image_file(entry), (
        rasterise(source, PICTURE_SIZE) if entry.get("png") else source.encode("utf-8"))
    for size in THUMBNAILS:
        path = f"{folder}{document.base_name(entry)}_{size}x{size}{document.thumbnail_extension(entry)}"
        text = turned(icons.svg(name, size), entry)
        yield path, text.encode("utf-8") if entry.get("svg_thumbnails") else rasterise(text, size)


def shape_files(doc, entry, mesh):
    folder = f"{doc['folder']}/Shape/"
    name = entry["mesh"]
    yield folder + document.shape_file(entry), (
        shapes.write_glb(mesh, name) if name in entries.GLB else shapes.write_obj(mesh, name).encode("ascii"))


def shape_thumbnails():
    """Those that lusym makes."""
    return {f"{doc['folder']}/Shape/{entry['mesh']}_{size}x{size}.png"
            for doc in entries.DOCUMENTS for entry in doc["shapes"] for size in THUMBNAILS}


def make():
    """All files as a mapping from relative path to bytes."""
    document.check(entries.DOCUMENTS)
    files, messages = {}, document.Messages()

    def add(path, data):
        if files.setdefault(path, data) != data:
            raise ValueError(f"two different files {path}")

    for doc in entries.DOCUMENTS:
        meshes = {}
        for entry in doc["shapes"]:
            mesh = meshes[entry["mesh"]] = shapes.SHAPES[entry["mesh"]]()
            shapes.check(mesh)
            for path, data in shape_files(doc, entry, mesh):
                add(path, data)
        for entry in doc["images"]:
            for path, data in image_files(doc, entry):
                add(path, data)
        add(doc["path"], document.document_xml(doc, meshes, messages).encode("utf-8"))
    add("messages.xml", messages.xml().encode("utf-8"))
    return files


def main():
    here = pathlib.Path(__file__).resolve().parent
    parser = argparse.ArgumentParser(description="Make the example symbol library.")
    parser.add_argument("--lusym", type=pathlib.Path, default=here.parent / "build" / "release" / "bin" / "lusym",
                        help="the program (default: that of the release build)")
    parser.add_argument("--output", type=pathlib.Path, default=here.parent / "examples" / "library",
                        help="folder to write to (default: examples/library)")
    arguments = parser.parse_args()
    output = arguments.output
    if not shutil.which("rsvg-convert"):
        sys.exit("rsvg-convert is missing (Debian: apt install librsvg2-bin)")
    if not arguments.lusym.exists():
        sys.exit(f"{arguments.lusym} is missing; scripts/run.sh builds it, or name one with --lusym")
    files = make()
    kept = shape_thumbnails().union(files)
    for folder in {str(pathlib.PurePosixPath(path).parent) for path in files} - {"."}:
        for old in (output / folder).glob("*"):
            if old.is_file() and f"{folder}/{old.name}" not in kept:
                old.unlink()
    for path, data in files.items():
        target = output / path
        target.parent.mkdir(parents=True, exist_ok=True)
        target.write_bytes(data)
    for doc in entries.DOCUMENTS:
        subprocess.run([arguments.lusym, "library", "thumbnails", output / doc["path"]], check=True)
    print(f"{len(files)} files, {sum(map(len, files.values()))} bytes in {output}")


if __name__ == "__main__":
    main()
