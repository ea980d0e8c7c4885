"""Writes definition files, runs mosaicer on them and reads what it made."""

import pathlib
import re
import shutil
import struct
import subprocess
import time
import xml.etree.ElementTree as ElementTree

from guide.bitmaps import read_bmp


class Programs:
    """The two programs and a scratch directory that each run starts afresh in."""

    def __init__(self, build, textures, scratch):
        build = pathlib.Path(build).resolve()
        self.mosaicer = build / "driver" / "mosaicer"
        self.kst = build / "tools" / "kst" / "kst"
        self.textures = pathlib.Path(textures).resolve()
        self.scratch = pathlib.Path(scratch)

    def run(self, definition, switches=(), repeats=1):
        """The fastest of `repeats` runs of a definition, given as the text of its root element."""
        out = self.scratch / "out"
        file = self.scratch / "definition.xml"
        file.write_text(definition, encoding="utf-8")
        seconds = []
        for _ in range(repeats):
            shutil.rmtree(out, ignore_errors=True)
            before = time.perf_counter()
            done = subprocess.run([self.mosaicer, "-v", *switches, self.textures, file, out],
                                  capture_output=True, text=True, check=False)
            seconds.append(time.perf_counter() - before)
        return Outcome(out, done, min(seconds))

    def decode(self, image, level=0):
        bmp = self.scratch / "decoded.bmp"
        subprocess.run([self.kst, "image", "convert", image, bmp, "--level", str(level)], check=True)
        return read_bmp(bmp)


class Outcome:
    """`failure` is the line that ended the run, or None. Sums run over all atlases."""

    def __init__(self, out, done, seconds):
        self.out, self.seconds, self.text = out, seconds, done.stdout
        failure = re.search(r"^(Failure: .*|Insert of .*)$", done.stdout, re.MULTILINE)
        self.failure = failure.group(1) if failure else None
        self.sizes, self.bytes, self.used_texels = [], 0, 0.0
        for database in sorted(out.rglob("tdb_atlas_set.xml")):
            self._add_atlas(database)

    def _add_atlas(self, database):
        image = next(database.parent.glob("atlas.dds"))
        self.bytes += image.stat().st_size
        height, width = struct.unpack_from("<II", image.read_bytes()[:128], 12)
        self.sizes.append((width, height))
        for mapping in ElementTree.parse(database).getroot():
            self.used_texels += float(mapping.get("u_scale")) * width * float(mapping.get("v_scale")) * height

    def area(self):
        return sum(width * height for width, height in self.sizes)

    def size_text(self):
        """`2 of 512 x 512, 1 of 256 x 128`."""
        kinds = sorted(set(self.sizes), key=lambda size: (-size[0] * size[1], size))
        return ", ".join(f"{self.sizes.count(kind)} of {kind[0]} x {kind[1]}" for kind in kinds)

    def usage(self):
        """Share of the atlases' texels that textures cover, padding left out. Wants `halftexel_offsets="false"`."""
        return self.used_texels / self.area()


def texture_names(root, folders):
    """The names of the two-dimensional textures below some folders of a root, sorted."""
    names = set()
    for folder in folders:
        for file in pathlib.Path(root, folder).rglob("*"):
            if file.suffix in (".dds", ".tga", ".png", ".bmp") and "cube" not in file.stem:
                names.add(file.stem.lower())
    return sorted(names)
