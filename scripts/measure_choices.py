#!/usr/bin/env python3
"""Measures what the choices in a definition file do, and prints the tables of docs/choosing.md as Markdown.

Each table changes one setting at a time, runs mosaicer on the example textures and reads what it wrote. Sizes, shares
and decibels are the same on every machine; times are ratios within one table and vary. With --page the tables take the
place of those in a page, between the comments `measured: NAME` and `end of NAME`; with --check as well they are only
compared with them.
"""

import argparse
import math
import pathlib
import sys
import tempfile

from guide.bitmaps import contrast, linear_mean, overshoot, psnr
from guide.runs import Programs, texture_names

REPOSITORY = pathlib.Path(__file__).resolve().parent.parent
ORDERS = ("DESC_DIM", "DESC_UDIM_ASC_VDIM", "DESC_VDIM_ASC_UDIM")
# The box filter comes first: what the others are compared with.
FILTERS = ("BOX", "NEAREST_NEIGHBOUR", "BILINEAR", "BSPLINE", "BICUBIC", "CATMULLROM", "CATMULLROM_SHARPEN",
           "CATMULLROM_PRESHARPEN", "CATMULLROM_PRESHARPEN_HARD", "BOX_GAMMA", "KAISER_GAMMA", "KAISER_GAMMA_CRISP")


class Table:
    def __init__(self, *columns):
        self.lines = []
        self.row(*columns)
        self.row(*("---" for _ in columns))

    def row(self, *cells):
        self.lines.append("| " + " | ".join(str(cell) for cell in cells) + " |")

    def text(self):
        return "\n".join(self.lines)


def element(name, attributes, names):
    text = "".join(f' {key}="{value}"' for key, value in attributes.items())
    return f"<{name}{text}>" + "".join(f'<texture name="{texture}"/>' for texture in names) + f"</{name}>"


def split_set(names, **choices):
    """A set in as many atlases as it takes, quick to make unless the choices say otherwise."""
    attributes = {"name": "set", "width": 512, "height": 512, "autosplit": "true", "halftexel_offsets": "false",
                  "nr_mips": 1, "mip_filter": "BOX", **choices}
    return element("atlas", attributes, names)


def padded(texels):
    return {"pad_texels_u": texels, "pad_texels_v": texels}


def packing_cells(outcome):
    """Atlases, thousands of texels, used share."""
    if outcome.failure:
        reason = "never placed" if "never be placed" in outcome.failure else outcome.failure
        return f"fails: {reason}", "", ""
    return outcome.size_text(), outcome.area() // 1024, f"{outcome.usage():.0%}"


class Measurement:
    def __init__(self, programs):
        self.programs = programs
        root = programs.textures
        self.mixed = texture_names(root, ("cars", "heroes", "particles", "ui", "blocks", "ground"))
        self.small = texture_names(root, ("cars", "particles", "ui"))
        self.power = texture_names(root, ("heroes", "particles", "ui", "blocks"))

    def surface_and_padding(self):
        table = Table("set", "surface", "padding", "atlases", "Ki texels", "used")
        for title, names in (("mixed", self.mixed), ("small", self.small)):
            for side in (256, 512, 1024):
                for padding in (0, 1, 4):
                    outcome = self.programs.run(split_set(names, width=side, height=side, **padded(padding)))
                    table.row(title, side, padding, *packing_cells(outcome))
        return table

    def insertion(self):
        table = Table("set", "padding", "`insertion_strat`", "atlases", "Ki texels", "used")
        for title, names, padding in (("small", self.small, 1), ("mixed", self.mixed, 0), ("mixed", self.mixed, 2)):
            for step in ("PIXEL_STEP", "SMALL_STEP"):
                for strategy in (step, step + "_EXPANDING_SQUARE"):
                    outcome = self.programs.run(split_set(names, insertion_strat=strategy, **padded(padding)))
                    table.row(title, padding, f"`{strategy}`", *packing_cells(outcome))
        return table

    def orders_and_rotation(self):
        table = Table("set", "padding", "`precook_strat`", *(f"`{order}`" for order in ORDERS))
        for title, names, side, padding in (("small", self.small, 256, 0), ("small", self.small, 512, 1),
                                            ("mixed", self.mixed, 512, 0), ("mixed", self.mixed, 512, 2)):
            for precook in ("NO_PRECOOKING", "MAJOR_UDIM", "MAJOR_VDIM"):
                cells = []
                for order in ORDERS:
                    areas = [self.programs.run(split_set(names, width=side, height=side, precook_strat=precook,
                                                         packing_order_strat=order, insertion_strat=step,
                                                         **padded(padding))).area() // 1024
                             for step in ("PIXEL_STEP", "SMALL_STEP")]
                    cells.append(f"{areas[0]} / {areas[1]}")
                table.row(f"{title} on {side}", padding, f"`{precook}`", *cells)
        return table

    def usage_and_removal(self):
        table = Table("set", "`removal_strat0`", "`min_usage`", "atlases", "Ki texels", "used")
        for title, names, padding in (("power, padding 0", self.power, 0), ("mixed, padding 2", self.mixed, 2)):
            for strategy in ("BIGGEST", "SMALLEST"):
                for usage in (0, 0.5, 0.6, 0.75, 0.9):
                    outcome = self.programs.run(split_set(names, width=1024, height=1024, min_usage=usage,
                                                          removal_strat0=strategy, **padded(padding)))
                    table.row(title, f"`{strategy}`", usage, *packing_cells(outcome))
        return table

    def level(self, name, level=0, switches=(), **choices):
        """One level of a texture that is the only one of a texture set, and the bytes of its file."""
        attributes = {"name": "set", "mip_filter": "BOX", "nr_mips": 1, **choices}
        outcome = self.programs.run(element("texture_set", attributes, [name]), switches)
        image = outcome.out / "set" / f"{name}.dds"
        return self.programs.decode(image, level), image.stat().st_size

    def formats(self):
        table = Table("texture", "`texel_format`", "bytes", "colour, quality 72", "colour, 68 (`-draft`)", "alpha")
        for name in ("asphalt", "hero_bear", "leaf_fall", "smoke_puff"):
            original, size = self.level(name)
            table.row(name, "`AF_A8R8G8B8`", size, "equal", "equal", "equal")
            for texel_format in ("AF_DXT1", "AF_DXT3", "AF_DXT5"):
                picture, size = self.level(name, texel_format=texel_format)
                draft, _ = self.level(name, switches=["-draft"], texel_format=texel_format)
                table.row(name, f"`{texel_format}`", size, decibels(psnr(original, picture, (0, 1, 2))),
                          decibels(psnr(original, draft, (0, 1, 2))), decibels(psnr(original, picture, (3,))))
        return table

    def format_times(self):
        """One level and the box filter either way, so that quality is all that `-draft` changes."""
        table = Table("`texel_format`", "bytes of the atlases", "time, quality 72", "time, 68 (`-draft`)")
        plain = None
        for texel_format in ("AF_A8R8G8B8", "AF_DXT1", "AF_DXT3", "AF_DXT5"):
            runs = [self.programs.run(split_set(self.mixed, texel_format=texel_format), switches, repeats=5)
                    for switches in ([], ["-draft"])]
            plain = plain or runs[0].seconds
            table.row(f"`{texel_format}`", runs[0].bytes, *(f"{run.seconds / plain:.1f}" for run in runs))
        return table

    def normal_maps(self):
        """In an atlas, whose sides suit every format; which channels hold the normal's x and y depends on the format."""
        table = Table("`texel_format`", "bytes", "PSNR of x", "PSNR of y")
        original = None
        for texel_format, x, y in (("AF_A8R8G8B8", 0, 1), ("AF_BUMP_A8L8", 0, 3), ("AF_BUMP_DXT5", 3, 1),
                                   ("AF_DXT5", 0, 1), ("AF_DXT1", 0, 1)):
            definition = element("atlas", {"name": "set", "width": 256, "height": 128, "nr_mips": 1,
                                           "texel_format": texel_format}, ["car_body_bm"])
            image = self.programs.run(definition).out / "set" / "atlas.dds"
            picture = self.programs.decode(image).crop(0, 0, 176, 93)
            original = original or picture
            table.row(f"`{texel_format}`", image.stat().st_size,
                      *(decibels(psnr(original.channel(wanted), picture.channel(channel), (0,)))
                        for wanted, channel in ((0, x), (1, y))))
        return table

    def filters(self):
        names = ("asphalt", "sand_fine", "block_cobble_mossy")
        table = Table("`mip_filter`", *(f"{name}: light, contrast" for name in names), "car_red: fringes",
                      "time")
        box_contrast, box_seconds = {}, None
        for mip_filter in FILTERS:
            cells = []
            for name in names:
                top, half, eighth = (self.level(name, level, nr_mips=0, mip_filter=mip_filter)[0] for level in (0, 1, 3))
                box_contrast.setdefault(name, contrast(half))
                cells.append(f"{linear_mean(eighth) / linear_mean(top):.0%}, {contrast(half) / box_contrast[name]:.2f}")
            top, half = (self.level("car_red", level, nr_mips=0, mip_filter=mip_filter)[0] for level in (0, 1))
            cells.append(f"{overshoot(top, half):.1%}")
            whole = element("texture_set", {"name": "set", "mip_filter": mip_filter}, self.mixed)
            seconds = self.programs.run(whole, repeats=5).seconds
            box_seconds = box_seconds or seconds
            table.row(f"`{mip_filter}`", *cells, f"{seconds / box_seconds:.1f}")
        return table


def decibels(value):
    return "equal" if math.isinf(value) else f"{value:.1f} dB"


def put_into_page(page, name, text):
    head, foot = f"<!-- measured: {name} -->\n", f"<!-- end of {name} -->"
    before, found_head, rest = page.partition(head)
    _, found_foot, after = rest.partition(foot)
    if not found_head or not found_foot:
        sys.exit(f"the page has no place for the table {name}")
    return before + head + "\n" + text + "\n\n" + foot + after


def main():
    tables = {name: getattr(Measurement, name) for name in
              ("surface_and_padding", "insertion", "orders_and_rotation", "usage_and_removal", "formats", "format_times",
               "normal_maps", "filters")}
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--build", default=REPOSITORY / "build" / "release", help="build directory of the programs")
    parser.add_argument("--page", type=pathlib.Path, help="the page whose tables are to be replaced")
    parser.add_argument("--check", action="store_true", help="fail where the page has another table, and change nothing")
    parser.add_argument("tables", nargs="*", metavar="TABLE", help="which to make: " + ", ".join(tables))
    arguments = parser.parse_args()
    unknown = [name for name in arguments.tables if name not in tables]
    if unknown:
        parser.error("no table " + unknown[0])
    if arguments.check and not arguments.page:
        parser.error("--check wants a --page")
    stale = []
    with tempfile.TemporaryDirectory() as scratch:
        measurement = Measurement(Programs(arguments.build, REPOSITORY / "examples" / "textures", scratch))
        for name in arguments.tables or tables:
            text = tables[name](measurement).text()
            if not arguments.page:
                print(f"\n{name}\n\n{text}", flush=True)
                continue
            page = arguments.page.read_text(encoding="utf-8")
            renewed = put_into_page(page, name, text)
            if not arguments.check:
                arguments.page.write_text(renewed, encoding="utf-8")
            elif renewed != page:
                print(f"the page has another table {name} than this:\n\n{text}")
                stale.append(name)
    return 1 if stale else 0


if __name__ == "__main__":
    sys.exit(main())
