"""Opens report pages in headless Chromium and uses them as a person would.

    check_report_page.py KST MOSAICER SOURCE_DIR [SCREENSHOT_DIR]

Exit code 77, which ctest shows as skipped, where Chromium or its driver is not installed.
"""

import os
import subprocess
import sys
import tempfile
import time
import unittest

import make_run
import webdriver

KST, MOSAICER, SOURCE_DIR = sys.argv[1:4]
SCREENSHOTS = sys.argv[4] if len(sys.argv) > 4 else None
MANY = 500
LOAD_CAP_SECONDS = 60  # generous: a loaded machine must not fail the test


def report(output, page, *options, exit_code=0):
    run = subprocess.run([KST, "atlas", "report", output, "-o", page, *options], capture_output=True, text=True)
    assert run.returncode == exit_code, run.stderr
    return run


class ReportPage(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = cls.enterClassContext(tempfile.TemporaryDirectory(prefix="report_page_"))
        cls.browser = cls.enterClassContext(webdriver.Browser())
        cls.told = {"examples.html": make_run.make_examples(MOSAICER, SOURCE_DIR, cls.path("examples")),
                    "many.html": make_run.make_many(MOSAICER, cls.path("many_sources"), cls.path("many"), MANY)}
        make_run.make_damaged(cls.path("damaged"))
        report(cls.path("examples"), cls.path("examples.html"))
        report(cls.path("many"), cls.path("many.html"))
        cls.damage = report(cls.path("damaged"), cls.path("damaged.html"), exit_code=1)

    @classmethod
    def path(cls, name):
        return os.path.join(cls.folder, name)

    def tearDown(self):
        self.assertEqual(self.browser.console_errors(), [])

    def open(self, page, theme="light"):
        self.browser.set_theme(theme)
        self.browser.open(self.path(page))
        self.browser.wait("const canvas = document.querySelector('.card canvas'); return canvas && canvas.width > 0")

    def text(self, selector):
        return self.browser.run("return document.querySelector(arguments[0]).innerText", selector)

    def shot(self, name):
        if SCREENSHOTS:
            self.browser.screenshot(os.path.join(SCREENSHOTS, name + ".png"))

    def go(self, name):
        """Opens the viewer of an atlas by the end of its name."""
        self.browser.run("location.hash = atlases.find(atlas => atlas.name.endsWith(arguments[0])).route", name)
        self.wait_for_level(0)

    def wait_for_level(self, level, channels="RGBA"):
        self.browser.wait("const canvas = document.querySelector('.sheet canvas');"
                          "return canvas && canvas.dataset.level == arguments[0] && canvas.dataset.channels == arguments[1]",
                          level, channels)

    def place_of(self, texture):
        """The middle of a texture's rectangle in the window."""
        return self.browser.run("""
            const number = view.rectangles.find(one => one.name === arguments[0]).number;
            const box = view.groups[number].querySelector('.line').getBoundingClientRect();
            return [box.x + box.width / 2, box.y + box.height / 2];""", texture)

    def texel(self, x, y):
        """Red, green, blue, alpha that the viewer's canvas shows."""
        return self.browser.run("""
            const context = new OffscreenCanvas(1, 1).getContext('2d', {willReadFrequently: true});
            context.drawImage(view.canvas, -arguments[0], -arguments[1]);
            return [...context.getImageData(0, 0, 1, 1).data];""", x, y)

    def test_gallery_shows_the_worst_used_atlas_first_and_sorts_otherwise(self):
        self.open("examples.html")
        shares = self.browser.run("return [...document.querySelectorAll('#atlases .use b')].map(b => parseFloat(b.innerText))")
        self.assertEqual(len(shares), 6)
        self.assertEqual(shares, sorted(shares))
        self.shot("gallery_light")
        self.browser.run("const sort = document.querySelector('#sort'); sort.value = 'name'; sort.onchange()")
        names = self.browser.run("return [...document.querySelectorAll('#atlases .card')].map(card => card.title)")
        self.assertEqual(names, sorted(names))
        self.assertIn("6\natlases", self.text("#totals"))

    def test_hovering_a_rectangle_names_its_texture(self):
        self.open("examples.html", "dark")
        self.go("title/atlas0")
        self.browser.pointer(self.place_of("car_green"))
        self.browser.wait("return !document.querySelector('#tip').hidden")
        self.assertEqual(self.text("#tip").splitlines()[0], "car_green")
        self.assertIn("padding 2", self.text("#tip"))
        self.assertEqual(self.text("#textures .hover").splitlines()[0], "car_green")
        self.shot("viewer_dark")

    def test_search_leads_to_the_atlas_and_marks_the_rectangle(self):
        self.open("many.html")
        self.browser.keys("/", *"A77_SPRITE", "ArrowDown", "ArrowDown")
        chosen = self.browser.wait("return document.querySelector('#results [aria-selected=true] .cut')?.innerText")
        self.assertRegex(chosen, r"^a77_sprite_\d\d")
        self.assertEqual(self.browser.run("return document.querySelectorAll('#atlases .card').length"), 1)
        self.browser.keys("Enter")
        self.wait_for_level(0)
        self.assertIn("level77/", self.text("#viewer-title"))
        self.assertEqual(self.text("#chosen h3"), chosen.split()[0])
        x, y = self.browser.run("""
            const box = document.querySelector('.sheet .chosen .line').getBoundingClientRect();
            const frame = document.querySelector('#stage').getBoundingClientRect();
            return [box.x + box.width / 2 - frame.x - frame.width / 2, box.y + box.height / 2 - frame.y - frame.height / 2];""")
        self.assertLess(abs(x) + abs(y), 3, "the texture stands in the middle")
        self.shot("search_light")

    def test_keys_lead_through_the_page(self):
        self.open("examples.html")
        self.browser.keys("ArrowDown", "ArrowRight", "ArrowRight", "ArrowLeft")
        second = self.browser.run("return document.activeElement.title")
        self.assertEqual(second, self.browser.run("return document.querySelectorAll('.card')[1].title"))
        self.browser.keys("Enter")
        self.wait_for_level(0)
        self.assertEqual(self.text("#viewer-title"), second)
        self.assertEqual(self.browser.run("return document.activeElement.id"), "stage")
        before = self.browser.run("return [view.x, view.zoom]")
        self.browser.keys("ArrowRight", "+")
        after = self.browser.run("return [view.x, view.zoom]")
        self.assertLess(after[0], before[0])
        self.assertGreater(after[1], before[1])
        self.browser.keys("Tab")
        for _ in range(30):
            if self.browser.run("return document.activeElement.id") == "textures":
                break
            self.browser.keys("Tab")
        self.browser.keys("ArrowDown")
        self.assertNotEqual(self.text("#chosen h3"), "")
        self.browser.keys("Escape")
        self.assertEqual(self.text("#chosen"), "")
        self.browser.keys("Escape")
        self.browser.wait("return document.activeElement.title === arguments[0]", second)
        self.browser.keys("?")
        self.assertTrue(self.browser.run("return document.querySelector('#help').open"))
        self.browser.keys("Escape")
        self.assertFalse(self.browser.run("return document.querySelector('#help').open"))

    def test_use_is_what_the_tool_itself_counted(self):
        for page, told in self.told.items():
            self.open(page)
            shown = self.browser.run("return Object.fromEntries(atlases.map(atlas => [atlas.name, Math.floor(atlas.used * 100)]))")
            self.assertEqual(shown, told)

    def test_levels_and_channels_are_those_of_the_file(self):
        self.open("examples.html")
        self.go("particles/atlas0")
        self.assertIn("Level 0 of 8, 256 \u00d7 256", self.text("#level"))
        full = self.browser.run("return view.canvas.width")
        self.browser.keys("]")
        self.wait_for_level(1)
        self.assertEqual(self.browser.run("return view.canvas.width"), full // 2)
        self.browser.keys("[")
        self.wait_for_level(0)
        # The last texel is free area: its colour is in the file though it is transparent, and shows without alpha.
        x, y = 255, 255
        self.assertEqual(self.texel(x, y), [0, 0, 0, 0])
        self.browser.keys("c")
        self.wait_for_level(0, "RGB")
        colour = self.texel(x, y)
        self.assertEqual(colour[3], 255)
        self.assertGreater(sum(colour[:3]), 0)
        corner = self.browser.run("""
            const box = view.canvas.getBoundingClientRect();
            return [box.right - 1, box.bottom - 1];""")
        self.browser.pointer(corner)
        self.assertEqual(self.text("#texel").split(), "255, 255 R {} G {} B {} A 0".format(*colour).split())
        self.browser.keys("c")
        self.wait_for_level(0, "R")
        self.assertEqual(self.texel(x, y), [colour[0]] * 3 + [255])
        self.browser.keys("c", "c", "c")
        self.wait_for_level(0, "A")
        self.assertEqual(self.texel(x, y), [0, 0, 0, 255])

    def test_the_picture_fits_whatever_the_window_is(self):
        self.open("examples.html")
        self.go("title/atlas0")
        for width, height in ((700, 500), (1360, 860)):
            self.browser.set_size(width, height)
            self.browser.wait("""
                const [box, frame] = ['.sheet', '#stage'].map(name => document.querySelector(name).getBoundingClientRect());
                return box.left >= frame.left && box.right <= frame.right && box.top >= frame.top && box.bottom <= frame.bottom
                    && innerWidth === arguments[0] && Math.max(box.width / frame.width, box.height / frame.height) > 0.9""", width)
        self.browser.keys("Escape")
        self.browser.wait("return !document.querySelector('#gallery').hidden && document.querySelector('#viewer').hidden")

    def test_a_cube_map_shows_its_faces(self):
        self.open("examples.html")
        self.browser.run("location.hash = sets.find(set => set.name.endsWith('sky')).images[0].route")
        self.wait_for_level(0)
        self.browser.pointer(self.place_of("+Y"))
        self.browser.wait("return !document.querySelector('#tip').hidden")
        self.assertEqual(self.text("#tip").splitlines()[0], "+Y")

    def test_five_hundred_atlases_load(self):
        begin = time.monotonic()
        self.open("many.html", "dark")
        seconds = time.monotonic() - begin
        print("\n%d atlases, a page of %.1f MB: the first pictures stand after %.2f s"
              % (MANY, os.path.getsize(self.path("many.html")) / 1e6, seconds))
        self.assertLess(seconds, LOAD_CAP_SECONDS)
        decoded = "return [...document.querySelectorAll('.card canvas')].filter(canvas => canvas.width > 0).length"
        self.assertLess(self.browser.run(decoded), 100, "only what is seen is decoded")
        self.browser.run("document.querySelector('#gallery').scrollTo(0, 1e9)")
        self.browser.wait("return [...document.querySelectorAll('.card canvas')].at(-1).width > 0")
        self.assertLess(self.browser.run(decoded), 100, "what is no longer seen is forgotten")
        self.shot("many_dark")

    def test_damage_stands_in_the_page_and_no_name_becomes_markup(self):
        lines = self.damage.stderr.splitlines()
        self.assertEqual(len(lines), 4)
        self.open("damaged.html")
        self.assertEqual(self.browser.run("return document.title"), "Atlas report")
        self.assertEqual(self.text("#faults summary"), "3 faults in the outputs")
        told = self.browser.run("return [...document.querySelectorAll('#faults li')].map(li => li.textContent)")
        self.assertEqual(["kst: " + fault for fault in told], lines[:3])
        self.go("hostile")
        self.browser.pointer(self.place_of(make_run.HOSTILE_NAME))
        self.browser.wait("return !document.querySelector('#tip').hidden")
        self.assertEqual(self.browser.run("return document.querySelector('#tip').firstChild.data"), make_run.HOSTILE_NAME)
        self.assertEqual(self.texel(3, 5), [128, 40, 24, 255], "as make_run has written it")
        self.go("cut_database")
        self.assertEqual(self.browser.run("return view.rectangles.map(one => one.name)"), ["kept"])
        self.browser.run("location.hash = atlases.find(atlas => atlas.name === 'cut_image').route")
        self.browser.wait("return document.querySelector('#stage').innerText.includes('cannot be')")


if __name__ == "__main__":
    if None in webdriver.find_browser():
        print("skipped: the report page is not looked at, for Chromium and chromedriver are not installed")
        sys.exit(77)
    unittest.main(argv=sys.argv[:1], verbosity=2)
