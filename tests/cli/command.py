"""What the tests of the command share. Takes the path of the command off the command line."""
import json
import os
import subprocess
import sys
import tempfile
import unittest

KIVO2D = os.path.abspath(sys.argv.pop(1))
DATA = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "data")


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
        if exit_code is not None:
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
