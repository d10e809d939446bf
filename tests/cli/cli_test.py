#!/usr/bin/env python3
"""Drives the command as a user does.

usage: cli_test.py PATH_OF_KIVO2D [unittest options]
"""
import json
import os
import random
import struct
import subprocess
import sys
import tempfile
import unittest

KIVO2D = os.path.abspath(sys.argv.pop(1))


class CommandTest(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.addCleanup(self.folder.cleanup)

    def path(self, name):
        return os.path.join(self.folder.name, name)

    def write(self, name, content):
        with open(self.path(name), "wb") as file:
            file.write(content if isinstance(content, bytes) else content.encode())
        return name

    def read(self, name):
        with open(self.path(name), "rb") as file:
            return file.read()

    def rows(self, name):
        return [line.split() for line in self.read(name).decode().splitlines()]

    def run_kivo(self, *arguments, exit_code=0, **options):
        options.setdefault("stdout", subprocess.PIPE)
        done = subprocess.run([KIVO2D, *arguments], cwd=self.folder.name, stderr=subprocess.PIPE, text=True,
                              check=False, timeout=120, **options)
        self.assertEqual(done.returncode, exit_code, f"{arguments}: {done.stderr}")
        return done

    def report(self, *arguments, **options):
        return json.loads(self.run_kivo("triangulate", *arguments, "--json", **options).stdout)

    def expect_refusal(self, name, content, *words):
        """Exit code 1, nothing on standard output, and a message that names the file and the words."""
        done = self.run_kivo("triangulate", self.write(name, content), exit_code=1)
        self.assertEqual(done.stdout, "")
        for word in (name, *words):
            self.assertIn(word, done.stderr)


class Usage(CommandTest):
    def test_wrong_usage_returns_2_and_help_0(self):
        self.write("a.xy", "0 0\n1 0\n0 1\n")
        for arguments in ([], ["fly"], ["triangulate"], ["triangulate", "a.xy", "--fast"], ["triangulate", "a.xy", "b.xy"],
                          ["triangulate", "a.xy", "--threads", "-1"], ["triangulate", "a.xy", "--threads", "two"],
                          ["triangulate", "a.xy", "-o"], ["triangulate", "a.xy", "-o", "b.stl"],
                          ["triangulate", "a.ele"], ["triangulate", "a.xy", "-o", "./a.xy"], ["generate", "grid"],
                          ["generate", "grid", "-n", "5"], ["generate", "snow", "-n", "5", "-o", "b.xy"],
                          ["generate", "grid", "-n", "-5", "-o", "b.xy"], ["generate", "grid", "-n", "5", "-o", "b.ps"]):
            done = self.run_kivo(*arguments, exit_code=2)
            self.assertNotEqual(done.stderr, "")
            self.assertEqual(done.stdout, "")
        for arguments in (["--help"], ["triangulate", "--help"], ["generate", "--help"]):
            self.assertIn("Usage", self.run_kivo(*arguments).stdout)
        self.assertIn("1.60.244", self.run_kivo("--version").stdout)
        self.assertEqual(self.read("a.xy"), b"0 0\n1 0\n0 1\n")

    def test_what_cannot_be_opened_or_written_returns_1_with_its_name(self):
        self.write("a.xy", "0 0\n1 0\n0 1\n")
        os.mkdir(self.path("folder.xy"))
        for name in ("missing.xy", "folder.xy", "missing.bin"):
            self.assertIn(name, self.run_kivo("triangulate", name, exit_code=1).stderr)
        for ending in ("ps", "xy", "bin", "node", "ele"):
            os.symlink("/dev/full", self.path("full." + ending))
            for name in ("nowhere/b." + ending, "full." + ending):
                self.assertIn(name, self.run_kivo("triangulate", "a.xy", "-o", name, exit_code=1).stderr)
        self.assertIn("full.xy", self.run_kivo("generate", "grid", "-n", "9", "-o", "full.xy", exit_code=1).stderr)
        with open("/dev/full", "wb") as full:
            self.run_kivo("triangulate", "a.xy", exit_code=1, stdout=full)

    def test_drawing_or_height_that_does_not_exist_is_refused(self):
        self.write("line.xy", "0 0\n1 1\n2 2\n")
        self.assertIn("line.ps", self.run_kivo("triangulate", "line.xy", "-o", "line.ps", exit_code=1).stderr)
        self.assertIn("b.xyz", self.run_kivo("triangulate", "line.xy", "-o", "b.xyz", exit_code=1).stderr)


class BadInput(CommandTest):
    def test_bad_line_is_named_by_number(self):
        for bad, word in (("1", "1 number "), ("1 2 3", "3 numbers"), ("1 x", "'x'"), ("1,2", "1 number "), ("1 2x", "'2x'"),
                          ("nan 1", "'nan'"), ("1 -inf", "'-inf'"), ("1 1e999", "'1e999'"), ("0x10 1", "'0x10'"),
                          ("1 +-2", "'+-2'"), ("1 \0", "'?'")):
            self.expect_refusal("bad.xy", f"# comment\n\n0 0\r\n{bad}\n5 5\n", "line 4", word)
        self.expect_refusal("bad.xyz", "0 0 0\n1 1\n", "line 2", "2 numbers")
        self.expect_refusal("bad.xyz", "0 0 0\n1 1 nan\n", "line 2", "'nan'")

    def test_node_file_that_contradicts_itself_is_refused(self):
        for content, words in (("", ["header"]), ("-1 2 0 0\n", ["line 1"]), ("1 3 0 0\n0 0 0\n", ["line 1", "dimension 3"]),
                               ("1 2 0 2\n0 0 0 1 1\n", ["line 1"]), ("1 2 -1 0\n", ["line 1"]),
                               ("1.5 2 0 0\n", ["line 1", "'1.5'"]), ("99999999999 2 0 0\n", ["line 1"]),
                               ("2000000000 2 2000000000 1\n", ["0 of 2000000000"]),
                               ("3 2 0 0\n0 0 0\n1 1 1\n", ["2 of 3"]), ("1 2 0 0\n0 0 0\n1 1 1\n", ["line 3"]),
                               ("2 2 1 1\n0 0 0 7 1\n\n1 1 1 7\n", ["line 4", "4 numbers"]),
                               ("2 2 0 0\n1 0 0\n3 1 1\n", ["line 3", "point 3"]), ("1 2 0 0\n5 0 0\n", ["line 2"]),
                               ("1 2 0 1\n1 0 0 1.5\n", ["line 2", "'1.5'"]), ("1 2 1 0\n1 0 0 inf\n", ["line 2"])):
            self.expect_refusal("bad.node", content, *words)

    def test_binary_file_is_refused_at_every_length_but_its_own(self):
        for kind, dimension in ((20, 2), (30, 3)):
            whole = struct.pack("=iQ", kind, 3) + struct.pack("=%dd" % (3 * dimension), *range(3 * dimension))
            self.write("cut.bin", whole)
            self.assertEqual(self.report("cut.bin")["points"], 3)
            for length in range(len(whole)):
                self.expect_refusal("cut.bin", whole[:length])
            self.expect_refusal("cut.bin", whole + b"\0")
        self.expect_refusal("huge.bin", struct.pack("=iQ", 20, 2**63), "truncated")
        self.expect_refusal("huge.bin", struct.pack("=iQ", 30, 2**64 - 1) + bytes(48), "truncated")
        self.expect_refusal("segments.bin", struct.pack("=iQ4d", 21, 1, 0, 0, 1, 1), "21")
        self.expect_refusal("nan.bin", struct.pack("=iQ4d", 20, 2, 0, 0, float("nan"), 1), "point 2")


class Reports(CommandTest):
    def test_json_counts_what_was_read(self):
        self.write("square.xy", "\ufeff# a square, its centre, one corner twice\n 0 0\n2\t0\r\n+2 2\n0 2\n1 1\n-0 0e0\n\n# end")
        report = self.report("square.xy", "--check", "--threads", "2")
        expected = {"command": "triangulate", "version": "1.60.244", "input": "square.xy", "points": 6, "duplicates": 1,
                    "vertices": 5, "triangles": 4, "hullVertices": 4, "is2D": True, "threads": 2, "valid": True,
                    "boundingBox": {"minX": 0, "minY": 0, "maxX": 2, "maxY": 2}, "outputs": []}
        self.assertEqual(set(report.pop("times")), {"read", "triangulate", "check"})
        self.assertEqual(report, expected)
        text = self.run_kivo("triangulate", "square.xy", "--check").stdout
        for line in ("points         6", "duplicates     1", "vertices       5", "triangles      4",
                     "hull           4 vertices", "bounding box   [0, 2] x [0, 2]", "valid          yes"):
            self.assertIn("\n  " + line + "\n", text)

    def test_points_without_a_triangle_are_no_error(self):
        for content, points in (("", 0), ("1 1\n", 1), ("0 0\n1 1\n3 3\n", 3)):
            self.write("flat.xy", content)
            report = self.report("flat.xy", "--check", "-o", "flat.node", "-o", "flat.ele")
            self.assertEqual((report["vertices"], report["triangles"], report["is2D"]), (points, 0, False))
            self.assertEqual(report["boundingBox"] is None, points == 0)
            self.assertEqual(self.read("flat.ele"), b"0 3 0\n")

    def test_messages_and_progress_stay_off_standard_output(self):
        self.run_kivo("generate", "uniform", "-n", "5000", "-o", "a.xy")
        done = self.run_kivo("triangulate", "a.xy", "--check", "--progress", "--json", "-o", "a.ps")
        json.loads(done.stdout)
        self.assertIn("[Kivo2D-Message]", done.stderr)
        self.assertIn("100%", done.stderr)
        quiet = self.run_kivo("triangulate", "a.xy", "--json")
        self.assertEqual(quiet.stderr, "")


class RoundTrips(CommandTest):
    def triples(self, count):
        source = random.Random(7)
        return [[repr(source.uniform(-1, 1) * 10.0 ** source.randint(-300, 300)) for _ in range(3)] for _ in range(count)]

    def test_heights_follow_their_points_through_every_format_that_holds_them(self):
        rows = self.triples(200)
        self.write("a.xyz", "".join(" ".join(row) + "\n" for row in rows))
        self.report("a.xyz", "-o", "b.xyz", "-o", "b.bin", "-o", "b.node", "-o", "b.xy")
        wanted = [[float(field) for field in row] for row in rows]
        values = lambda name: [[float(field) for field in row] for row in self.rows(name)]
        self.assertEqual(values("b.xyz"), wanted)
        self.assertEqual(values("b.xy"), [row[:2] for row in wanted])
        self.assertEqual(self.read("b.bin")[:12], struct.pack("=iQ", 30, 200))
        for middle in ("b.bin", "b.node"):
            self.report(middle, "-o", "c.xyz")
            self.assertEqual(self.read("c.xyz"), self.read("b.xyz"))

    def test_first_of_equal_points_keeps_its_height_and_the_loss_is_told(self):
        self.write("a.xyz", "0 0 5\n1 0 6\n0 0 5\n0 1 7\n1 0 8\n")
        done = self.run_kivo("triangulate", "a.xyz", "-o", "b.xyz")
        self.assertEqual(self.read("b.xyz"), b"0 0 5\n1 0 6\n0 1 7\n")
        self.assertIn("a.xyz: 1 points equal an earlier one", done.stderr)

    def test_attributes_and_markers_are_carried_and_numbers_agree(self):
        body = ["0 0 1.5 -2 7", "4 0 2.5 -3 8", "4 4 3.5 -4 9", "0 4 4.5 -5 -1", "2 2 5.5 -6 0"]
        for first in (0, 1):
            lines = [f"{first + i} {line}" for i, line in enumerate(body)]
            self.write("a.node", "# made by hand\n5 2 2 1\n" + "  # inner\n".join(lines) + "\n# end\n")
            self.report("a.node", "-o", "b.node", "-o", "b.ele")
            self.assertEqual(self.read("b.node").decode(), "5 2 2 1\n" + "\n".join(lines) + "\n")
            rows = self.rows("b.ele")
            self.assertEqual(rows[0], ["4", "3", "0"])
            self.assertEqual([int(row[0]) for row in rows[1:]], list(range(first, first + 4)))
            fans = {frozenset(int(corner) - first for corner in row[1:]) for row in rows[1:]}
            self.assertEqual(fans, {frozenset((i, (i + 1) % 4, 4)) for i in range(4)})

    def test_triangles_use_the_numbers_of_the_point_file_when_points_repeat(self):
        self.write("a.xy", "9 9\n0 0\n9 9\n0 0\n4 0\n9 9\n0 4\n")
        self.report("a.xy", "-o", "b.node", "-o", "b.ele")
        points = {row[0]: (float(row[1]), float(row[2])) for row in self.rows("b.node")[1:]}
        self.assertEqual(list(points.values()), [(9, 9), (0, 0), (4, 0), (0, 4)])
        triangles = self.rows("b.ele")[1:]
        self.assertEqual(len(triangles), 2)
        for _, *corners in triangles:
            (ax, ay), (bx, by), (cx, cy) = (points[corner] for corner in corners)
            self.assertGreater((bx - ax) * (cy - ay) - (by - ay) * (cx - ax), 0)

    def test_flipped_points_stay_with_their_heights(self):
        self.write("a.xyz", "0 0 1\n3 1 2\n1 -2.5 3\n")
        self.report("a.xyz", "--flip-y", "-o", "b.xyz")
        self.assertEqual(self.read("b.xyz"), b"0 0 1\n3 -1 2\n1 2.5 3\n")

    def test_drawing_is_complete_and_its_name_does_not_stay_from_an_older_one(self):
        self.write("a.xy", "0 0\n1 0\n0 1\n1 1\n")
        self.write("a.ps", "old " * 10000)
        self.report("a.xy", "-o", "a.ps")
        drawing = self.read("a.ps").decode()
        self.assertTrue(drawing.startswith("%!PS-Adobe-1.0\n"))
        self.assertTrue(drawing.endswith("showpage\n%%Trailer\n"))


class Generators(CommandTest):
    def generate(self, kind, count, name, *options):
        self.run_kivo("generate", kind, "-n", str(count), "-o", name, *options)
        return self.read(name)

    def test_every_kind_gives_its_number_of_points_and_a_valid_triangulation(self):
        for kind in ("uniform", "gaussian", "clusters", "grid", "circle", "line"):
            self.assertEqual(self.generate(kind, 0, "none.bin"), struct.pack("=iQ", 20, 0))
            self.generate(kind, 1000, "a.bin", "--size", "10", "--offset-x", "-5")
            report = self.report("a.bin", "--check", "-o", "b.xy")
            self.assertEqual((report["points"], report["duplicates"], report["valid"]), (1000, 0, True))
            if report["is2D"]:
                self.assertEqual(report["triangles"], 2 * 1000 - 2 - report["hullVertices"])
            box = report["boundingBox"]
            self.assertLess(box["minX"], -1)
            self.assertGreater(box["maxX"], 1)
        self.generate("line", 1000, "line.xy")
        self.assertFalse(self.report("line.xy")["is2D"])

    def test_seed_decides_the_points_and_formats_agree(self):
        first = self.generate("uniform", 500, "a.bin")
        self.assertEqual(self.generate("uniform", 500, "b.bin", "--seed", "1"), first)
        self.assertNotEqual(self.generate("uniform", 500, "b.bin", "--seed", "2"), first)
        numbers = struct.unpack("=1000d", first[12:])
        self.generate("uniform", 500, "a.xy")
        self.assertEqual([float(field) for row in self.rows("a.xy") for field in row], list(numbers))
        self.assertTrue(any(number * 2**32 % 1 for number in numbers))


if __name__ == "__main__":
    unittest.main()
