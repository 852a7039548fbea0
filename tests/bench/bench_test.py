"""Small runs of the benchmarks of decoding and of memory."""
import json
import os
import re
import subprocess
import unittest

BUILD, BENCH = os.environ["BUILD"], os.environ["BENCH"]


def run(*words, **settings):
    return subprocess.run(words, capture_output=True, text=True, check=False, **settings)


class Decoding(unittest.TestCase):
    """The program compares the pixels of both roads itself before it measures."""

    def test_decodes_what_the_libraries_decode(self):
        # No multiple of most bands.
        made = run(f"{BUILD}/bin/decode_bench", "--side=512", "--benchmark_format=json")
        self.assertEqual(made.returncode, 0, made.stderr)
        cases = json.loads(made.stdout)["benchmarks"]
        self.assertEqual([(c["name"], c["error_message"]) for c in cases if "error_message" in c],
                         [])
        formats = {case["name"].split("/")[1] for case in cases}
        plugged = run(f"{BUILD}/bin/zel", "formats").stdout.lower().split()
        self.assertEqual(formats, formats.intersection(plugged))
        self.assertGreaterEqual(len(formats), 1)
        for case in cases:
            self.assertAlmostEqual(case["ratio"], case["best_us"] / case["limit_us"], 6)
            own = case["name"].split("/")[1] in ("pnm", "bmp", "tga", "hdr")
            self.assertEqual(case["library"], not own)


class Memory(unittest.TestCase):
    def memory(self, only):
        return run(f"{BENCH}/memory", "--only", only, BUILD)

    def test_files_that_would_fill_memory(self):
        for only in ("info PNG, packed texts", "info JPEG, 65 MB*", "info WEBP, *", "info JP2, *"):
            told = self.memory(only)
            self.assertEqual(told.returncode, 0, told.stdout + told.stderr)
            self.assertRegex(told.stdout, r"MiB")
        self.assertNotEqual(self.memory("no such row").returncode, 0)

    def test_finds_what_takes_too_much(self):
        # A command that holds more than there may be of anything.
        environment = dict(os.environ, LC_ALL="C")
        told = run(f"{BENCH}/memory", "--limits", "1,1", "--only", "info PNM, *", BUILD,
                   env=environment)
        self.assertEqual(told.returncode, 1, told.stdout + told.stderr)
        self.assertTrue(re.search(r"info PNM.*!", told.stdout), told.stdout)


if __name__ == "__main__":
    unittest.main()
