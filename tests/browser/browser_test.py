#!/usr/bin/env python3
"""Opens web scenes in a real browser, from disk and from a server, and looks at them.

usage: browser_test.py MAKE_SCENES WORK_FOLDER [unittest arguments]

MAKE_SCENES is the program that writes the scenes. Screenshots stay in the work folder.
"""
import functools
import http.server
import os
import re
import shutil
import subprocess
import sys
import threading
import time
import unittest
import urllib.request

from chromium import Browser, find_browser

MAKE_SCENES, WORK = sys.argv[1], os.path.abspath(sys.argv[2])
SCENES = os.path.join(WORK, "scenes")
WIDTH, HEIGHT = 1200, 800
FILL = {"light": (223, 232, 242), "dark": (37, 54, 73)}
BACKGROUND = {"light": (246, 247, 249), "dark": (17, 22, 29)}
ZONE = (240, 230, 140)
BORDER, CONSTRAINT = (23, 64, 107), (208, 54, 47)

# Counts what the page draws, and in how many frames.
COUNT_DRAWS = """
    window.draws = [];
    for (const name of ["drawArrays", "drawArraysInstanced", "drawElements", "clear"]) {
        const original = WebGL2RenderingContext.prototype[name];
        WebGL2RenderingContext.prototype[name] = function (...all) { draws.push(name); return original.apply(this, all); };
    }"""


def url_of(name):
    return "file://" + os.path.join(SCENES, name, "index.html")


def numbers(text):
    return [float(word) for word in re.findall(r"−?[\d.]+(?:e[+−]?\d+)?", text.replace(",", "")) for word in
            [word.replace("−", "-")]]


class SceneTest(unittest.TestCase):
    """Each class has a browser of its own."""
    FLAGS = ()

    @classmethod
    def setUpClass(cls):
        cls.browser = Browser(*cls.FLAGS)
        cls.addClassCleanup(cls.browser.close)
        cls.browser.call("Page.addScriptToEvaluateOnNewDocument", source=COUNT_DRAWS)

    def open(self, name, theme="light", ratio=1, size=(WIDTH, HEIGHT)):
        self.browser.resize(*size, ratio)
        self.browser.prefer(theme)
        state = self.browser.open(name if "://" in name else url_of(name))
        self.assertEqual(state, "ready", self.browser.text("message"))
        self.assertEqual(self.browser.complaints, [])

    def look(self, name):
        return self.browser.screenshot(os.path.join(WORK, name + ".png"))

    def place_at(self, x, y):
        """What the page says that lies under the pointer."""
        self.browser.mouse("mouseMoved", x, y)
        return numbers(self.browser.text("pointer"))

    def pixel_of(self):
        """The map from places of the mesh to the canvas, by what the page says under two pixels."""
        (x0, y0), (x1, y1) = self.place_at(300, 700), self.place_at(1100, 100)
        return lambda x, y: (300 + 800 * (x - x0) / (x1 - x0), 700 - 600 * (y - y0) / (y1 - y0))

    def expect_color(self, picture, place, expected, tolerance=2):
        found = picture.at(*place)
        self.assertLessEqual(max(abs(a - b) for a, b in zip(found, expected)), tolerance, (place, found, expected))

    def expect_line(self, picture, place, color, ratio=1):
        """A line of that colour passes within a pixel or so; smoothing may thin its colour."""
        reach = range(-2 * ratio, 2 * ratio + 1)
        nearest = min(max(abs(a - b) for a, b in zip(picture.at(place[0] + i, place[1] + j), color))
                      for i in reach for j in reach)
        self.assertLessEqual(nearest, 60, (place, color))


class Drawing(SceneTest):
    def expect_plain_scene(self, picture, theme="light"):
        """The grid of 4 x 3 cells: its insides, edges, border and constraint lie where they should."""
        pixel = self.pixel_of()
        self.expect_color(picture, (WIDTH - 30, HEIGHT - 60), BACKGROUND[theme])
        for column in range(4):
            for row in range(3):
                self.expect_color(picture, pixel(column + .7, row + .3), FILL[theme])
                self.expect_color(picture, pixel(column + .3, row + .7), FILL[theme])
        if theme == "light":
            self.expect_line(picture, pixel(2.5, 3), BORDER)
            self.expect_line(picture, pixel(0, .5), BORDER)
            self.expect_line(picture, pixel(2.5, 1), CONSTRAINT)
        for place in ((1.5, 1.5), (2, 2.5), (.5, 2)):  # a diagonal, an upright and a level edge
            near = [picture.at(pixel(*place)[0] + i, pixel(*place)[1]) for i in range(-2, 3)]
            near += [picture.at(pixel(*place)[0], pixel(*place)[1] + i) for i in range(-2, 3)]
            self.assertGreater(max(abs(a - b) for color in near for a, b in zip(color, FILL[theme])), 40, place)

    def test_from_disk_it_shows_mesh_counts_and_title(self):
        self.open("plain")
        self.expect_plain_scene(self.look("plain"))
        text = self.browser.text
        self.assertEqual(text("title"), "4 × 3 <script>document.title='no'</script> \"&\\")
        self.assertEqual(self.browser.evaluate("document.title"), text("title"))
        self.assertEqual([text(name) for name in ("vertices", "triangles", "edges", "borderEdges", "constraintEdges")],
                         ["20 vertices", "24", "43", "14", "4"])

    def test_from_a_server_it_shows_the_same_and_asks_for_nothing_else(self):
        asked = []

        class Handler(http.server.SimpleHTTPRequestHandler):
            def log_message(self, *_):
                pass

            def log_request(self, code="-", _size="-"):
                asked.append((self.path, int(code)))

        handler = functools.partial(Handler, directory=SCENES)
        with http.server.ThreadingHTTPServer(("127.0.0.1", 0), handler) as server:
            threading.Thread(target=server.serve_forever, daemon=True).start()
            address = f"http://127.0.0.1:{server.server_port}/plain/"
            self.open(address)
            self.expect_plain_scene(self.look("plain-served"))
            link = self.browser.evaluate("document.getElementById('download').href")
            with urllib.request.urlopen(link) as answer:
                self.assertTrue(answer.read().startswith(b"v 0 0 0 \n"))
            server.shutdown()
        files = ("", "3d.js", "3d.obj", "jsc3d.ctm.js", "jsc3d.js", "jsc3d.touch.js")
        self.assertEqual(sorted(asked), [("/plain/" + name, 200) for name in files])

    def test_dark_and_light_follow_the_system_until_the_button_decides(self):
        self.open("plain", "dark")
        self.expect_plain_scene(self.look("plain-dark"), "dark")
        self.browser.prefer("light")
        self.expect_color(self.look("plain-theme"), (WIDTH - 30, HEIGHT - 60), BACKGROUND["light"])
        self.browser.click("theme")
        self.expect_plain_scene(self.look("plain-theme"), "dark")
        self.browser.prefer("dark")
        self.browser.press("d")
        self.expect_plain_scene(self.look("plain-theme"), "light")

    def test_layers_can_be_switched(self):
        self.open("plain")
        pixel = self.pixel_of()
        inside, constraint, border = pixel(.7, .3), pixel(2.5, 1), pixel(2.5, 3)
        for key in "cbe":
            self.browser.press(key)
        picture = self.look("plain-fill-only")
        self.expect_color(picture, constraint, FILL["light"])
        self.expect_color(picture, pixel(1.5, 1.5), FILL["light"])
        self.browser.press("t")
        self.expect_color(self.look("plain-nothing"), inside, BACKGROUND["light"])
        for layer in ("border", "constraints"):
            self.browser.evaluate(f"document.querySelector('[data-layer={layer}]').click()")
        picture = self.look("plain-lines-only")
        self.expect_color(picture, inside, BACKGROUND["light"])
        self.expect_line(picture, constraint, CONSTRAINT)
        self.expect_line(picture, border, BORDER)

    def test_a_zone_has_its_colour_and_no_row_for_constraints(self):
        self.open("zone")
        self.expect_color(self.look("zone"), self.pixel_of()(.7, .3), ZONE)
        self.assertEqual(self.browser.text("fill-name"), "Zone triangles")
        self.assertFalse(self.browser.evaluate("document.getElementById('constraints-row').checkVisibility()"))

    def test_a_zone_of_a_triangulation_is_what_its_obj_file_holds(self):
        self.open("island")
        picture = self.look("island")
        with open(os.path.join(SCENES, "island", "3d.obj"), encoding="ascii") as file:
            kinds = [line[0] for line in file]
        count = {name: int(self.browser.text(name).split()[0].replace(",", "")) for name in
                 ("vertices", "triangles", "edges", "borderEdges", "constraintEdges")}
        self.assertEqual((count["vertices"], count["triangles"]), (kinds.count("v"), kinds.count("f")))
        # A simple polygon: its edges are the border, and it has one piece and no holes.
        self.assertEqual(count["borderEdges"], count["constraintEdges"])
        self.assertEqual(count["vertices"] - count["edges"] + count["triangles"], 1)
        colors = [picture.at(x, y) for x in range(320, 1080, 4) for y in range(30, 770, 4)]
        self.assertGreater(colors.count(ZONE), 1000)
        self.assertGreater(colors.count(BACKGROUND["light"]), 1000)
        self.assertGreater(sum(max(abs(a - b) for a, b in zip(color, CONSTRAINT)) < 60 for color in colors), 50)

    def test_fine_displays_get_fine_pixels(self):
        self.open("plain", ratio=2)
        self.assertEqual(self.browser.evaluate("[canvas.width, canvas.height]"), [2 * WIDTH, 2 * HEIGHT])
        pixel = self.pixel_of()
        picture = self.look("plain-fine")
        x, y = pixel(2.5, 1)
        self.expect_line(picture, (2 * x, 2 * y), CONSTRAINT, 2)

    def test_small_windows_hide_nothing(self):
        for size in ((360, 640), (740, 360), (320, 480)):
            self.open("plain", size=size)
            self.look("plain-%dx%d" % size)
            boxes = self.browser.evaluate("""["card", "tools", "scale"].map(id => {
                const box = document.getElementById(id).getBoundingClientRect();
                return [box.left, box.top, box.right, box.bottom]; })""")
            for i, (left, top, right, bottom) in enumerate(boxes):
                self.assertTrue(0 <= left < right <= size[0] and 0 <= top < bottom <= size[1], (size, boxes[i]))
                for other in boxes[:i]:
                    apart = other[2] <= left or right <= other[0] or other[3] <= top or bottom <= other[1]
                    self.assertTrue(apart, (size, boxes))

    def test_a_lost_graphics_device_comes_back(self):
        self.open("plain")
        self.browser.evaluate("""new Promise(done => {
            const loser = canvas.getContext("webgl2").getExtension("WEBGL_lose_context");
            canvas.addEventListener("webglcontextrestored", () => done(true));
            canvas.addEventListener("webglcontextlost", () => setTimeout(() => loser.restoreContext(), 50));
            loser.loseContext(); })""")
        self.expect_plain_scene(self.look("plain-restored"))


class Moving(SceneTest):
    PLACE = (700, 350)

    def expect_near(self, places, expected, tolerance):
        for a, b in zip(places, expected):
            self.assertLessEqual(abs(a - b), tolerance)

    def test_dragging_takes_the_mesh_along(self):
        self.open("plain")
        before = self.place_at(*self.PLACE)
        self.browser.drag(*self.PLACE, 612, 431)
        self.expect_near(self.place_at(612, 431), before, .011)
        self.browser.press("0")
        self.expect_near(self.place_at(*self.PLACE), before, .011)

    def test_wheel_and_double_click_zoom_at_the_pointer(self):
        self.open("plain")
        before, pixel = self.place_at(*self.PLACE), self.pixel_of()
        self.browser.wheel(*self.PLACE, -300)
        self.expect_near(self.place_at(*self.PLACE), before, .011)
        for count in (1, 2):
            for kind in ("mousePressed", "mouseReleased"):
                self.browser.mouse(kind, *self.PLACE, button="left", clickCount=count)
        self.expect_near(self.place_at(*self.PLACE), before, .011)
        closer = self.pixel_of()
        growth = (closer(1, 0)[0] - closer(0, 0)[0]) / (pixel(1, 0)[0] - pixel(0, 0)[0])
        self.assertAlmostEqual(growth / (2 * 2.71828 ** .6), 1, delta=.05)

    def test_two_fingers_zoom_and_one_drags(self):
        self.open("plain")
        self.browser.call("Emulation.setTouchEmulationEnabled", enabled=True)
        pixel = self.pixel_of()
        self.browser.touch("touchStart", (650, 400), (750, 400))
        self.browser.touch("touchMove", (600, 400), (800, 400))
        self.browser.touch("touchEnd")
        closer = self.pixel_of()
        self.assertAlmostEqual((closer(1, 0)[0] - closer(0, 0)[0]) / (pixel(1, 0)[0] - pixel(0, 0)[0]), 2, delta=.05)
        self.browser.touch("touchStart", (650, 400))
        self.browser.touch("touchMove", (680, 390))
        self.browser.touch("touchEnd")
        self.browser.call("Emulation.setTouchEmulationEnabled", enabled=False)
        moved = self.pixel_of()
        self.expect_near(moved(1, 1), (closer(1, 1)[0] + 30, closer(1, 1)[1] - 10), 3)

    def test_keys_and_buttons_move(self):
        self.open("plain")
        start = self.pixel_of()(0, 0)
        self.browser.press("ArrowRight")
        self.browser.press("ArrowDown")
        self.expect_near(self.pixel_of()(0, 0), (start[0] - 60, start[1] - 60), 3)
        self.browser.click("fit")
        unit = self.pixel_of()(1, 0)[0] - start[0]
        for press, growth in ((lambda: self.browser.press("+"), 1.5), (lambda: self.browser.click("zoom-out"), .75)):
            press()
            pixel = self.pixel_of()
            self.assertAlmostEqual((pixel(1, 0)[0] - pixel(0, 0)[0]) / unit, growth, delta=.02)

    def test_the_view_fits_a_resized_window_until_it_is_moved(self):
        self.open("plain")
        self.browser.resize(800, 600)
        self.browser.wait("canvas.width === 800")
        (left, bottom), (right, top) = self.place_at(5, 595), self.place_at(795, 5)
        self.assertTrue(left < 0 and bottom < 0 and right > 4 and top > 3, (left, bottom, right, top))

    def test_nothing_is_drawn_while_nothing_changes_and_little_when_it_does(self):
        self.open("plain")
        self.look("plain-idle")
        self.browser.evaluate("draws.length = 0; new Promise(done => setTimeout(() => done(1), 500))")
        self.assertEqual(self.browser.evaluate("draws"), [])
        self.browser.press("+")
        self.browser.press("-")
        self.look("plain-idle")
        frames = self.browser.evaluate("draws.filter(name => name === 'clear').length")
        self.assertIn(frames, (1, 2))
        self.assertEqual(self.browser.evaluate("draws.length"), 4 * frames)


class Numbers(SceneTest):
    def approach(self, x, y, steps):
        """Each step zooms in by e^0.8."""
        for _ in range(steps):
            at = self.pixel_of()(x, y)
            self.browser.wheel(*at, -400)
            self.browser.drag(*at, 700, 400)

    def test_deep_zoom_stays_sharp_and_names_the_true_coordinates(self):
        """Towards a vertex of the constraint, in the coordinates of a map, until a pixel is a few nanometres."""
        x, y = 446831.25 + 24 * .5, 5411936.5 + 15 * .5
        self.open("map")
        self.approach(x, y, 20)
        left, right = self.place_at(300, 400), self.place_at(1100, 400)
        self.assertLess(right[0] - left[0], 4e-6)
        self.assertTrue(left[0] < x < right[0] and abs(left[1] - y) < 4e-8, (left, right))
        picture = self.look("map-deep")
        (px, py), fill = self.pixel_of()(x, y), FILL["light"]
        self.expect_line(picture, (300, py), CONSTRAINT)
        self.expect_line(picture, (1100, py), CONSTRAINT)
        self.expect_color(picture, (px + 100, py + 40), fill)
        self.expect_color(picture, (px + 40, py - 100), fill)
        diagonal = [picture.at(px + 150 + i, py - 150) for i in range(-3, 4)]
        self.assertGreater(max(abs(a - b) for color in diagonal for a, b in zip(color, fill)), 40)

    def test_deep_zoom_stays_sharp_where_no_vertex_is_near(self):
        """The middles of edges whose ends are some 10^9 pixels away."""
        for column, row, key in ((1.5, 1.5, "e"), (2.5, 1, "c"), (2.5, 3, "b")):
            x, y = column + .37 * row, row + .21 * column
            self.open("slanted")
            self.approach(x, y, 26)
            place = self.pixel_of()(x, y)
            self.assertGreater(self.pixel_of()(x + .5, y)[0] - place[0], 1e8)
            picture = self.look("slanted-deep-" + key)
            self.browser.press(key)
            bare = self.look("slanted-deep-bare")
            near = [(place[0] + i, place[1] + j) for i in range(-1, 2) for j in range(-1, 2)]
            contrast = max(abs(a - b) for at in near for a, b in zip(picture.at(*at), bare.at(*at)))
            self.assertGreater(contrast, 60, (x, y))
            above, below = (place[0] + 50, place[1] - 100), (place[0] + 100, place[1] + 50)
            self.expect_color(picture, below, FILL["light"])
            self.expect_color(picture, above, (BACKGROUND if key == "b" else FILL)["light"])

    def test_extents_at_the_ends_of_the_doubles(self):
        for name, unit, scale in (("huge", 1.7e308, "5 × 10³⁰⁷"), ("tiny", 1e-306, "2 × 10⁻³⁰⁷")):
            self.open(name)
            picture = self.look(name)
            self.assertEqual(self.browser.text("scale-text"), scale)
            middle = self.place_at(700, 400)
            self.assertTrue(abs(middle[0]) < unit / 10 and abs(middle[1]) < unit / 10, middle)
            self.assertEqual(self.browser.text("triangles"), "8")
            self.assertGreater(sum(picture.at(x, 200) == FILL["light"] for x in range(400, 1000)), 400)


class Large(SceneTest):
    def test_a_million_triangles_are_loaded_and_drawn_by_three_calls(self):
        start = time.monotonic()
        self.open("large")
        ready = time.monotonic() - start
        picture = self.look("large")
        print(f"1,000,000 triangles: ready after {ready:.1f} s, on the screen after {time.monotonic() - start:.1f} s",
              file=sys.stderr)
        self.assertEqual(self.browser.text("triangles"), "1,000,000")
        frames = self.browser.evaluate("draws.filter(name => name === 'clear').length")
        self.assertEqual(self.browser.evaluate("draws.length"), 4 * frames)
        # Triangles of the size of a pixel: no noise, no solid colour of edges, but a shade between fill and edge.
        pixel = self.pixel_of()
        shades = [picture.at(*pixel(150 + 7 * i, 100)) for i in range(100)]
        for shade in shades:
            self.assertTrue(all(120 < part < fill for part, fill in zip(shade, FILL["light"])), shade)
        self.assertLess(max(shade[0] for shade in shades) - min(shade[0] for shade in shades), 60)


class Failures(SceneTest):
    def scene_with(self, change):
        """A copy of the plain scene whose mesh script is what the function makes of it; None takes it away."""
        folder = os.path.join(SCENES, "broken")
        shutil.rmtree(folder, ignore_errors=True)
        shutil.copytree(os.path.join(SCENES, "plain"), folder)
        path = os.path.join(folder, "3d.js")
        with open(path, encoding="ascii") as file:
            content = change(file.read())
        os.remove(path)
        if content is not None:
            with open(path, "w", encoding="ascii") as file:
                file.write(content)
        return "broken"

    def expect_failure(self, name, *words):
        self.browser.resize(WIDTH, HEIGHT)
        self.assertEqual(self.browser.open(url_of(name)), "error")
        shown = self.browser.text("message")
        for word in ("can’t be shown", "3d.obj", *words):
            self.assertIn(word, shown)

    def test_a_missing_or_damaged_mesh_is_told(self):
        def edit(pattern, replacement):
            def change(text):
                changed = re.sub(pattern, replacement, text, count=1)
                self.assertNotEqual(text, changed)
                return changed
            return self.scene_with(change)

        self.expect_failure(self.scene_with(lambda text: None), "There is no file 3d.js")
        self.look("missing-mesh")
        for half in (lambda text: text[:len(text) // 2], lambda text: "", lambda text: text.replace("Kivo.mesh.end();", "")):
            self.expect_failure(self.scene_with(half), "3d.js is damaged", "incomplete")
        self.expect_failure(edit('"vertices":20', '"vertices":21'), "shorter than announced")
        self.expect_failure(edit('"vertices":20', '"vertices":19'), "longer than announced")
        self.expect_failure(edit('"vertices":20', '"vertices":1e15'), "damaged")
        self.expect_failure(edit('"triangles":24,', ""), "the number of triangles")
        self.expect_failure(edit('"corners","A', '"corners","!'), "no base64")
        self.expect_failure(edit('"corners","A', '"corners","/'), "a vertex that is not there")
        self.expect_failure(edit('"coordinates",".{11}', '"coordinates","AAAAAAAA8H8'), "a coordinate is no number")
        self.expect_failure(edit('"borderEdges","', '"holes","'), "an unknown array")

    def test_an_empty_mesh_is_told(self):
        self.expect_failure("empty", "has no triangles")


class NoGraphics(Failures):
    FLAGS = ("--disable-3d-apis", "--disable-gpu")

    def test_a_missing_or_damaged_mesh_is_told(self):
        self.expect_failure("plain", "WebGL 2")
        self.assertEqual(self.browser.complaints, [])
        self.look("no-webgl")

    def test_an_empty_mesh_is_told(self):
        self.expect_failure("empty", "WebGL 2")


def main():
    if find_browser() is None:
        sys.exit("no Chromium found")
    os.makedirs(WORK, exist_ok=True)
    shutil.rmtree(SCENES, ignore_errors=True)
    subprocess.run([MAKE_SCENES, SCENES], check=True)
    unittest.main(argv=[sys.argv[0], *sys.argv[3:]])


if __name__ == "__main__":
    main()
