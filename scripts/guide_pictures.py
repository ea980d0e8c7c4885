#!/usr/bin/env python3
"""Makes the pictures of docs/choosing.md and docs/tutorial.md out of the example textures, each below 100 KB.

The picture of the report page wants Chromium; without it, it stays as it is.
"""

import argparse
import pathlib
import shutil
import subprocess
import sys
import tempfile

from guide.bitmaps import Picture, beside, write_png
from guide.runs import Programs, texture_names
from measure_choices import REPOSITORY, element, padded, split_set


class Maker:
    def __init__(self, programs, folder):
        self.programs, self.folder = programs, folder

    def save(self, name, pictures, gap=8):
        file = self.folder / f"{name}.png"
        write_png(file, beside(pictures, gap))
        self.limit(file)

    @staticmethod
    def limit(file):
        if file.stat().st_size >= 100_000:
            raise SystemExit(f"{file} is too large: {file.stat().st_size} bytes")
        print(file, file.stat().st_size)

    def level(self, texture, level, switches=(), **choices):
        outcome = self.programs.run(element("texture_set", {"name": "set", **choices}, [texture]), switches)
        return self.programs.decode(outcome.out / "set" / f"{texture}.dds", level)

    def atlases(self, names, level, **choices):
        """All atlases of a split set, in order, as they look on a chequered ground."""
        outcome = self.programs.run(split_set(names, **{"nr_mips": 0, "mip_filter": "KAISER_GAMMA", **choices}))
        images = [outcome.out / f"set/atlas{number}/atlas.dds" for number in range(len(outcome.sizes))]
        return [self.programs.decode(image, level).on_checks() for image in images]

    def mips(self):
        filters = ("BOX", "BOX_GAMMA", "KAISER_GAMMA", "KAISER_GAMMA_CRISP", "CATMULLROM_PRESHARPEN_HARD")
        self.save("choosing-mips", [self.level("car_red", 2, mip_filter=mip_filter).on_checks(4).enlarged(4)
                                    for mip_filter in filters])

    def compression(self):
        choices = {"nr_mips": 1, "mip_filter": "BOX"}
        original = self.level("leaf_fall", 0, **choices)
        packed = [self.level("leaf_fall", 0, switches, texel_format="AF_DXT5", **choices)
                  for switches in ([], ["-draft"])]
        shown = [original, *packed, *(difference(original, picture, 8) for picture in packed)]
        self.save("choosing-dxt", [opaque(picture).crop(12, 12, 40, 40).enlarged(4) for picture in shown])

    def insertion(self):
        names = texture_names(self.programs.textures, ("cars", "particles", "ui"))
        pixel = self.atlases(names, 1, insertion_strat="PIXEL_STEP", **padded(1))
        small = self.atlases(names, 1, insertion_strat="SMALL_STEP", **padded(1))
        self.save("choosing-insertion", pixel + small, gap=16)

    def usage(self):
        names = texture_names(self.programs.textures, ("heroes", "particles", "ui", "blocks"))
        size = {"width": 1024, "height": 1024}
        self.save("choosing-usage", self.atlases(names, 2, min_usage=0, **size)
                  + self.atlases(names, 2, min_usage=0.75, **size), gap=16)

    def tutorial(self):
        first = element("atlas", {"name": "set", "width": 512, "height": 256}, ["car_red", "car_blue", "car_tire"])
        image = self.programs.run(first).out / "set" / "atlas.dds"
        self.save("tutorial-cars", [self.programs.decode(image).on_checks()])

        place = self.programs.scratch / "tutorial"
        subprocess.run([sys.executable, REPOSITORY / "tests/docs/run_tutorial.py", "--keep", place, "--programs",
                        self.programs.mosaicer, self.programs.kst], check=True)
        rally = place / "home" / "rally"
        cars = self.programs.decode(rally / "out/rally/cars/atlas0/atlas.dds", 1)
        self.save("tutorial-cars-dxt5", [cars.on_checks()])
        self.screenshot("tutorial-report", rally / "report.html")

    def screenshot(self, name, page):
        browser = shutil.which("chromium")
        if browser is None or not page.exists():
            print(f"{name}: left out, no Chromium or no {page.name}")
            return
        file = self.folder / f"{name}.png"
        subprocess.run([browser, "--headless", "--no-sandbox", "--disable-gpu", "--hide-scrollbars",
                        "--virtual-time-budget=5000", "--window-size=840,560", f"--screenshot={file}", page.as_uri()],
                       check=True, capture_output=True, timeout=60)
        self.limit(file)


def opaque(picture):
    return Picture(picture.width, picture.height, [[pixel[:3] + (255,) for pixel in row] for row in picture.rows])


def difference(a, b, times):
    """White where nothing differs, darker by `times` the difference of each channel."""
    return Picture(a.width, a.height, [[tuple(max(0, 255 - times * abs(p[c] - q[c])) for c in range(3)) + (255,)
                                        for p, q in zip(row, other)] for row, other in zip(a.rows, b.rows)])


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--build", default=REPOSITORY / "build" / "release", help="build directory of the programs")
    parser.add_argument("--folder", type=pathlib.Path, default=REPOSITORY / "docs" / "images")
    arguments = parser.parse_args()
    with tempfile.TemporaryDirectory() as scratch:
        maker = Maker(Programs(arguments.build, REPOSITORY / "examples" / "textures", scratch), arguments.folder)
        for make in (maker.mips, maker.compression, maker.insertion, maker.usage, maker.tutorial):
            make()


if __name__ == "__main__":
    main()
