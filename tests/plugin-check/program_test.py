"""The program zel-plugin-check as its users call it: what it prints, and its exit status."""

import json
import os
import subprocess
import tempfile
import unittest

PROGRAM = os.environ["ZEL_PLUGIN_CHECK"]


def run(*arguments):
    return subprocess.run([PROGRAM, *arguments], capture_output=True, text=True)


class PluginCheckProgram(unittest.TestCase):
    def test_prints_a_row_for_each_check(self):
        done = run("--quick", "--check", "read-only files", "--check", "failed opens", "TGA")
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        rows = [line.split("  ")[0] for line in done.stdout.splitlines()]
        self.assertEqual(rows, ["CHECK", "registration", "capabilities", "read-only files",
                                "failed opens"])

    def test_prints_the_same_as_json(self):
        done = run("--json", "--check", "read-only files", "TGA")
        said = json.loads(done.stdout)
        self.assertEqual(said["format"], "TGA")
        self.assertEqual([row["check"] for row in said["checks"]],
                         ["registration", "capabilities", "read-only files"])
        for row in said["checks"]:
            self.assertEqual((row["result"], row["failed"]), ("pass", 0))
            self.assertGreater(row["cases"], 0)

    def test_fails_where_something_does_not_hold(self):
        # A file of another format cannot be read as one of this.
        with tempfile.NamedTemporaryFile(suffix=".bmp") as other:
            other.write(b"no picture at all")
            other.flush()
            done = run("--check", "given files", "BMP", other.name)
        self.assertEqual(done.returncode, 1)
        self.assertRegex(done.stdout, r"given files +FAIL +1 +1")
        self.assertIn("given files: " + other.name + ": does not open again", done.stdout)

    def test_tells_a_wrong_call_from_a_failure(self):
        for arguments in ([], ["NOSUCH"], ["TGA", "missing.tga"], ["--check", "nothing", "TGA"],
                          ["--seconds", "0", "TGA"]):
            with self.subTest(arguments=arguments):
                done = run(*arguments)
                self.assertEqual((done.returncode, done.stdout), (2, ""))
                self.assertNotEqual(done.stderr, "")

    def test_leaves_nothing_in_the_folder_for_temporary_files(self):
        with tempfile.TemporaryDirectory() as folder:
            environment = dict(os.environ, TMPDIR=folder)
            subprocess.run([PROGRAM, "--quick", "--check", "descriptors", "TGA"],
                           env=environment, capture_output=True, check=True)
            self.assertEqual(os.listdir(folder), [])


if __name__ == "__main__":
    unittest.main()
