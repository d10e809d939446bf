#!/usr/bin/env python3
"""Drives the command as a user does.

usage: cli_test.py PATH_OF_KIVO2D [unittest options]
"""
import json
import os
import random
import struct
import unittest

from command import DATA, CommandTest


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

    def test_threads_change_nothing_but_the_order_and_two_are_like_three(self):
        self.run_kivo("generate", "uniform", "-n", "100000", "-o", "a.bin")
        reports = [self.report("a.bin", "--check", "--threads", str(num), "-o", f"{num}.node", "-o", f"{num}.ele")
                   for num in (1, 2, 3)]
        self.assertEqual([report["threads"] for report in reports], [1, 2, 3])
        for name in ("points", "duplicates", "vertices", "triangles", "hullVertices", "valid"):
            self.assertEqual(len({report[name] for report in reports}), 1, name)
        for ending in (".node", ".ele"):
            self.assertEqual(self.read("2" + ending), self.read("3" + ending))
        # Corners and triangles sorted: the numbers of the points in the file are those of the input.
        triangles = [sorted(sorted(row[1:]) for row in self.rows(f"{num}.ele")[1:]) for num in (1, 2)]
        self.assertEqual(*triangles)

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


class BadSegments(CommandTest):
    SQUARE = "4 2 0 0\n1 0 0\n2 4 0\n3 4 4\n4 0 4\n"

    def test_poly_file_that_contradicts_itself_is_refused(self):
        for content, words in (("", ["header"]), ("4 2 0 0\n1 0 0\n", ["1 of 4 points"]), (self.SQUARE, ["number of segments"]),
                               (self.SQUARE + "1 0\n1 1 2\n", ["number of holes"]), (self.SQUARE + "2 0\n1 1 2\n", ["1 of 2 segments"]),
                               (self.SQUARE + "-1 0\n", ["line 6", "negative"]), (self.SQUARE + "1 2\n", ["line 6", "markers"]),
                               (self.SQUARE + "1 0 0\n", ["line 6", "3 numbers"]), (self.SQUARE + "x\n", ["line 6", "'x'"]),
                               (self.SQUARE + "1 1\n1 1 2\n", ["line 7", "3 numbers"]), (self.SQUARE + "1 0\n1 1 2 5\n", ["line 7"]),
                               (self.SQUARE + "1 0\n1 1 5\n", ["line 7", "point 5", "1 to 4"]),
                               (self.SQUARE + "# none\n1 0\n1 0 1\n", ["line 8", "point 0"]),
                               (self.SQUARE + "1 0\n2 1 2\n", ["line 7", "neither"]), (self.SQUARE + "1 1\n1 1 2 1.5\n", ["line 7", "'1.5'"]),
                               (self.SQUARE + "2 0\n0 1 2\n2 2 3\n", ["line 8", "segment 2 where 1"]),
                               (self.SQUARE + "0\n1 1\n", ["line 7"]), (self.SQUARE + "0\n1\n1 2\n", ["line 8", "2 numbers"]),
                               (self.SQUARE + "0\n2\n1 2 2\n", ["1 of 2 holes"]), (self.SQUARE + "0\n1\n1 2 nan\n", ["line 8", "'nan'"]),
                               (self.SQUARE + "0\n0\n1\n1 2 2\n", ["line 9", "3 numbers"]), (self.SQUARE + "0\n0\n1\n", ["0 of 1 regions"]),
                               (self.SQUARE + "0\n0\n1\n1 2 2 1 1 1\n", ["line 9"]), (self.SQUARE + "0\n0\n0\n7\n", ["line 9", "follows"])):
            self.expect_refusal("bad.poly", content, *words)
        self.expect_refusal("alone.poly", "0 2 0 0\n0\n0\n", "alone.node")
        self.write("other.node", "1 2 0 0\n1 0\n")
        self.assertIn("other.node: line 2", self.run_kivo("triangulate", self.write("other.poly", "0 2 0 0\n0\n0\n"), exit_code=1).stderr)

    def refuse_segments(self, name, content, *words):
        self.write("a.xy", "0 0\n1 0\n0 1\n")
        done = self.run_kivo("triangulate", "a.xy", "--segments", self.write(name, content), exit_code=1)
        for word in (name, *words):
            self.assertIn(word, done.stderr)

    def test_bad_file_of_segments_is_refused_with_the_line(self):
        for bad, word in (("1 2 3", "3 numbers"), ("1 2 3 4 5", "5 numbers"), ("1 2 x 4", "'x'"), ("1 2 3 inf", "'inf'")):
            self.refuse_segments("bad.seg", f"# comment\n0 0 1 1\n\n{bad}\n", "line 4", word)
        for kind, dimension in ((21, 2), (31, 3)):
            whole = struct.pack("=iQ", kind, 2) + struct.pack("=%dd" % (4 * dimension), *range(4 * dimension))
            for length in (0, 11, 12, 13, len(whole) - 1):
                self.refuse_segments("cut.bin", whole[:length])
            self.refuse_segments("cut.bin", whole + b"\0", "2 segments")
        self.refuse_segments("points.bin", struct.pack("=iQ2d", 20, 1, 0, 0), "20", "21 or 31")
        self.refuse_segments("nan.bin", struct.pack("=iQ4d", 21, 1, 0, 0, 0, float("nan")), "segment 1")

    def test_wrong_use_of_segments_returns_2_and_overwrites_nothing(self):
        self.write("a.xy", "0 0\n1 0\n0 1\n")
        self.write("a.seg", "0 0 1 0\n")
        self.write("a.node", "3 2\n1 0 0\n2 1 0\n3 0 1\n")
        self.write("a.poly", "0 2\n1\n1 1 2\n0\n")
        names = ("a.xy", "a.seg", "a.node", "a.poly")
        before = [self.read(name) for name in names]
        for arguments in (["a.xy", "--conforming"], ["a.seg"], ["a.xy", "--segments", "a.xy"], ["a.xy", "--segments", "a.seg", "-o", "a.seg"],
                          ["a.poly", "-o", "a.node"], ["a.poly", "-o", "./a.poly"]):
            self.assertNotEqual(self.run_kivo("triangulate", *arguments, exit_code=2).stderr, "")
        self.run_kivo("generate", "grid", "-n", "4", "-o", "b.poly", exit_code=2)
        self.assertEqual([self.read(name) for name in names], before)


class Segments(CommandTest):
    def poly(self, name):
        """Points, segments, holes and regions of a .poly file, each a list of lists of fields."""
        rows = iter(self.rows(name))
        return [[next(rows) for _ in range(int(next(rows)[0]))] for _ in range(3)] + [list(rows)[1:]]

    def edges(self, name):
        """Marker by edge of an .edge file."""
        rows = self.rows(name)
        marker_of = {frozenset(row[1:3]): int(row[3]) for row in rows[1:]}
        self.assertEqual((len(marker_of), "1"), (int(rows[0][0]), rows[0][1]))
        return marker_of

    def test_poly_file_that_needs_no_new_vertex_comes_back_as_it_was(self):
        points = ["0 0 1.5 7", "4 0 2.5 8", "5 5 3.5 9", "0 4 4.5 -1", "1 1 0 0", "2 1 0 0", "1 2 0 0"]
        for first in (0, 1):
            number = lambda lines: [f"{first + i} {line}" for i, line in enumerate(lines)]
            ends = [(0, 1), (2, 1), (2, 3), (3, 0), (4, 5), (6, 5), (6, 4)]
            segments = number([f"{p + first} {q + first} {10 + p}" for p, q in ends])
            lines = ["7 2 1 1", *number(points), "7 1", *segments, "1", *number(["1.25 1.25"]), "2", *number(["0.5 0.5 3 0.125", "1.5 1.25 -2"])]
            self.write("a.poly", "# made by hand\n\n" + "  # inner\n".join(lines) + "\n# end\n")
            report = self.report("a.poly", "--check", "-o", "b.poly", "-o", "b.ele", "-o", "b.edge")
            self.assertEqual(self.read("b.poly").decode(), "\n".join(lines) + "\n")
            self.assertEqual(report["segments"], {"read": 7, "skipped": 0, "newEnds": 0, "edges": 7, "missing": 0, "steinerPoints": 0,
                                                  "crossings": 0, "holes": 1, "regions": 2})
            self.assertEqual((report["points"], report["valid"], "segments" in report["times"]), (7, True, True))
            inner = {frozenset((str(4 + first), str(5 + first), str(6 + first)))}
            regions = {frozenset(row[1:4]): row[4] for row in self.rows("b.ele")[1:]}
            self.assertEqual({corners for corners, region in regions.items() if region == "-2"}, inner)
            self.assertTrue(all(region == "3" for corners, region in regions.items() if corners not in inner))
            marked = {edge: marker for edge, marker in self.edges("b.edge").items() if marker}
            self.assertEqual(marked, {frozenset(row.split()[1:3]): int(row.split()[3]) for row in segments})
            self.write("c.node", "\n".join(lines[:8]))
            self.write("c.poly", "\n".join(["0 2 1 1"] + lines[8:]))
            self.report("c.poly", "-o", "d.poly")
            self.assertEqual(self.read("d.poly"), self.read("b.poly"))

    def test_new_vertex_inherits_marker_and_interpolates_attributes_of_its_segment(self):
        corners = ["0 0 0 100", "8 8 16 100", "0 8 1 -4", "8 0 2 4"]
        points = "4 2 2 0\n" + "".join(f"{i + 1} {line}\n" for i, line in enumerate(corners))
        for first, second, steiner in ((0, 5, ["1.5", "0", "5"]), (6, 5, ["8", "100", "6"]), (0, 0, ["8", "100", "0"])):
            self.write("a.poly", points + f"2 1\n1 1 2 {first}\n2 3 4 {second}\n0\n")
            segments = self.report("a.poly", "--check", "-o", "b.poly", "-o", "b.edge")["segments"]
            self.assertEqual((segments["edges"], segments["steinerPoints"], segments["crossings"]), (4, 1, 1))
            points_out, pieces, _, _ = self.poly("b.poly")
            self.assertEqual([row[-1] for row in points_out[:4]], ["0"] * 4)
            self.assertEqual(points_out[4], ["5", "4", "4", *steiner])
            self.assertEqual([row[1:] for row in pieces], [["1", "5", str(first)], ["5", "2", str(first)], ["3", "5", str(second)], ["5", "4", str(second)]])
            marker_of = self.edges("b.edge")
            self.assertEqual({marker_of.pop(frozenset(row[1:3])) for row in pieces}, {first, second})
            self.assertEqual(list(marker_of.values()), [1] * 4)
            self.report("b.poly", "-o", "c.poly")
            self.assertEqual(self.read("c.poly"), self.read("b.poly"))

    def test_equal_points_and_overlapping_segments_are_one(self):
        self.write("a.poly", "6 2 0 0\n0 0 0\n1 4 0\n2 4 0\n3 8 0\n4 0 5\n5 8 0\n5 1\n1 0 3 0\n2 2 1 9\n3 1 5 4\n4 5 0 3\n5 0 4 0\n0\n")
        report = self.report("a.poly", "--check", "-o", "b.poly", "-o", "b.edge")
        self.assertEqual((report["duplicates"], report["segments"]["skipped"], report["segments"]["edges"]), (2, 1, 3))
        points, pieces, _, _ = self.poly("b.poly")
        self.assertEqual([row[1:] for row in points], [["0", "0"], ["4", "0"], ["8", "0"], ["0", "5"]])
        self.assertEqual([row[1:] for row in pieces], [["1", "2", "4"], ["1", "0", "3"], ["0", "3", "0"]])
        self.assertEqual(self.edges("b.edge"), {frozenset("01"): 3, frozenset("12"): 4, frozenset("23"): 1, frozenset("03"): 1, frozenset("13"): 0})

    def test_segments_beside_points_give_what_a_poly_file_gives(self):
        rows = [("0 0", "9 1"), ("1 5", "2 -5"), ("9 9", "0 0"), ("5 9", "5 0")]
        points = list(dict.fromkeys(point for row in rows for point in row))
        self.write("a.poly", f"{len(points)} 2\n" + "".join(f"{i} {point}\n" for i, point in enumerate(points)) +
                   "4\n" + "".join(f"{i} {points.index(p)} {points.index(q)}\n" for i, (p, q) in enumerate(rows)) + "0\n")
        self.write("a.seg", "# four\n" + "".join(f"{p}\t{q}\r\n" for p, q in rows))
        numbers = [[float(field) for field in f"{p} {q}".split()] for p, q in rows]
        self.write("a2.bin", struct.pack("=iQ", 21, 4) + b"".join(struct.pack("=4d", *row) for row in numbers))
        self.write("a3.bin", struct.pack("=iQ", 31, 4) + b"".join(struct.pack("=6d", *row[:2], 7, *row[2:], 8) for row in numbers))
        self.write("some.xy", "".join(point + "\n" for point in points[:3]))
        self.write("none.xy", "")
        wanted = self.report("a.poly", "-o", "b.xy", "-o", "b.seg")["segments"]
        for points_file, ends in (("some.xy", 4), ("none.xy", 7)):
            for segment_file in ("a.seg", "a2.bin", "a3.bin"):
                report = self.report(points_file, "--segments", segment_file, "--check", "-o", "c.xy", "-o", "c.seg")
                self.assertEqual(report["segments"], {**wanted, "newEnds": ends})
                self.assertEqual((report["points"], report["duplicates"]), (7 - ends, 0))
                for ending in ("xy", "seg"):
                    self.assertEqual(self.read("c." + ending), self.read("b." + ending))

    def test_end_that_is_no_point_has_the_height_of_the_triangle_around_it(self):
        self.write("a.xyz", "0 0 0\n8 0 8\n0 8 16\n8 8 24\n")
        self.write("a.seg", "1 2 6 5\n8 8 20 8\n")
        done = self.run_kivo("triangulate", "a.xyz", "--segments", "a.seg", "-o", "b.xyz")
        self.assertIn("1 ends of segments lie beyond", done.stderr)
        heights = {tuple(map(float, row[:2])): float(row[2]) for row in self.rows("b.xyz")}
        self.assertEqual(heights.pop((20, 8)), 0)
        self.assertEqual(len(heights), 6)
        for (x, y), height in heights.items():
            self.assertAlmostEqual(height, x + 2 * y, places=12)

    def test_region_ends_at_constraints_and_the_rest_is_0(self):
        self.write("a.poly", "6 2\n1 0 0\n2 9 0\n3 9 9\n4 0 9\n5 15 4\n6 20 5\n5 0\n1 1 2\n2 2 3\n3 3 4\n4 4 1\n5 1 3\n0\n"
                   "4\n1 8 1 2.5\n2 1 8 7\n3 50 50 1\n4 7 1 9\n")
        done = self.run_kivo("triangulate", "a.poly", "-o", "b.ele")
        self.assertIn("(50, 50) lies in no triangle", done.stderr)
        self.assertIn("(7, 1) lies in a region that has an earlier one", done.stderr)
        rows = self.rows("b.ele")
        self.assertEqual(rows[0][1:], ["3", "1"])
        region = {frozenset(row[1:4]): row[4] for row in rows[1:]}
        self.assertEqual((region.pop(frozenset("123")), region.pop(frozenset("134"))), ("2.5", "7"))
        self.assertEqual(set(region.values()), {"0"})

    def test_flipped_y_turns_all_that_a_poly_file_holds(self):
        self.write("a.poly", "4 2\n1 0 0\n2 4 1\n3 4 4\n4 0 4\n1 0\n1 2 4\n1\n1 1 0.5\n1\n1 3 3 5 1\n")
        self.write("a.seg", "0 0 4 4\n")
        self.report("a.poly", "--segments", "a.seg", "--flip-y", "-o", "b.poly", "-o", "b.ele")
        points, pieces, holes, regions = self.poly("b.poly")
        self.assertEqual([row[2] for row in points[:4]], ["0", "-1", "-4", "-4"])
        self.assertEqual((len(pieces), holes, regions), (4, [["1", "1", "-0.5"]], [["1", "3", "-3", "5", "1"]]))
        self.assertEqual([row[4] for row in self.rows("b.ele")[1:]].count("5"), 1)

    def test_conforming_segment_is_divided_and_its_pieces_keep_what_it_had(self):
        self.write("a.poly", "4 2 1 0\n1 0 0 0\n2 16 0 4\n3 8 1 9\n4 8 -1 9\n1 1\n1 1 2 6\n0\n")
        forced = self.report("a.poly", "--check", "-o", "b.poly")
        self.assertEqual((forced["segments"]["steinerPoints"], forced["valid"]), (0, True))
        report = self.report("a.poly", "--conforming", "--check", "-o", "b.poly")
        segments = report["segments"]
        self.assertGreater(segments["steinerPoints"], 0)
        self.assertEqual((segments["crossings"], segments["edges"], report["valid"]), (0, segments["steinerPoints"] + 1, True))
        points, pieces, _, _ = self.poly("b.poly")
        for row in points[4:]:
            self.assertEqual((float(row[3]), row[4]), (float(row[1]) / 4, "6"))
        self.assertEqual((pieces[0][1], pieces[-1][2], {row[3] for row in pieces}), ("1", "2", {"6"}))
        self.assertEqual([row[2] for row in pieces[:-1]], [row[1] for row in pieces[1:]])

    def test_segments_of_points_on_one_line_wait_and_are_not_lost(self):
        text = "3 2 0 0\n1 0 0\n2 1 1\n3 2 2\n2 0\n1 1 2\n2 2 3\n0\n"
        report = self.report(self.write("a.poly", text), "--check", "-o", "b.poly", "-o", "b.edge")
        self.assertEqual((report["is2D"], report["segments"]["edges"], self.read("b.poly").decode()), (False, 0, text))
        self.assertEqual(self.read("b.edge"), b"0 1\n")

    def test_random_segments_are_all_edges_and_come_back_unchanged(self):
        source = random.Random(11)
        for size in (4, 7, 30, 1000):
            number = lambda: str(source.randrange(size))
            points = [f"{i} {number()} {number()} {source.randrange(3)}\n" for i in range(60)]
            segments = [f"{i} {source.randrange(60)} {source.randrange(60)} {source.randrange(4)}\n" for i in range(80)]
            self.write("a.poly", "60 2 0 1\n" + "".join(points) + "80 1\n" + "".join(segments) + "0\n")
            for options in ([], ["--conforming"]):
                report = self.report("a.poly", "--check", *options, "-o", "b.poly", "-o", "b.edge", "-o", "b.ele")
                self.assertEqual((report["segments"]["missing"], report["valid"]), (0, True))
                marker_of = self.edges("b.edge")
                corners = [row[1:] for row in self.rows("b.ele")[1:]]
                self.assertEqual({frozenset(row[:i] + row[i + 1:]) for row in corners for i in range(3)}, set(marker_of))
                _, pieces, _, _ = self.poly("b.poly")
                for piece in pieces:
                    marker = marker_of[frozenset(piece[1:3])]
                    self.assertIn(int(piece[3]), (marker, marker - 1 if marker == 1 else marker))
                self.assertEqual(len({frozenset(piece[1:3]) for piece in pieces}), len(pieces))
                again = self.report("b.poly", "-o", "c.poly")
                self.assertEqual((again["segments"]["steinerPoints"], self.read("c.poly")), (0, self.read("b.poly")))

    def test_counts_of_real_segments_are_those_found_without_this_library(self):
        for name in ("co_iceland_h", "ps_usatlas_states", "ps_worldatlas_110m"):
            path = os.path.join(DATA, name)
            with open(path + ".json", encoding="utf-8") as file:
                facts = json.load(file)["derived"]["segments"]
            crossings = facts["pairs_crossing"]
            report = self.report(path + ".xy", "--segments", path + ".seg", "--check", "-o", "b.edge", "-o", "b.ps")
            self.assertEqual(report["segments"], {"read": facts["segments"], "skipped": facts["zero_length"], "newEnds": 0,
                                                  "edges": facts["unique"] + 2 * crossings, "missing": 0,
                                                  "steinerPoints": crossings, "crossings": crossings, "holes": 0, "regions": 0})
            self.assertEqual((report["duplicates"], report["valid"]), (0, True))


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
