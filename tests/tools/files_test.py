"""What `zel convert` does to files: names, permissions, failures and interrupts."""
import os
import resource
import signal
import subprocess
import time
import unittest

from support import ZEL, ToolTest, command, pgm


class Replacing(ToolTest):
    def test_onto_itself(self):
        self.scene("a.ppm")
        before = self.read("a.ppm")
        self.zel("convert", "a.ppm", "a.ppm", "--channels", "2,1,0")
        self.zel("convert", "a.ppm", "a.ppm", "--channels", "2,1,0")
        self.assertEqual(self.read("a.ppm"), before)
        self.assertEqual(os.listdir(), ["a.ppm"])

    def test_permissions_and_links_stay(self):
        self.scene("in.ppm")
        os.mkdir("d")
        self.write("d/old.ppm", b"old")
        os.chmod("d/old.ppm", 0o640)
        os.symlink("d/old.ppm", "link.ppm")
        os.symlink("d/new.ppm", "dangling.ppm")
        for link, target in (("link.ppm", "d/old.ppm"), ("dangling.ppm", "d/new.ppm")):
            self.zel("convert", "in.ppm", link)
            self.assertEqual(os.readlink(link), target)
            self.assertEqual(self.read(target), self.read("in.ppm"))
        self.assertEqual(os.stat("d/old.ppm").st_mode & 0o7777, 0o640)
        mask = os.umask(0)
        os.umask(mask)
        self.assertEqual(os.stat("d/new.ppm").st_mode & 0o7777, 0o666 & ~mask)

    def test_special_characters_in_names(self):
        self.scene("in.ppm")
        # The suffix chooses the format; the delimiters are doubled to stand for themselves.
        self.zel("convert", "in.ppm", "a##b%%c::3.tif%rowsperstrip=8")
        self.assertTrue(os.path.exists("a#b%c:3.tif"))
        self.assertIn(b"Rows/Strip: 8\n", command("tiffinfo", "a#b%c:3.tif"))
        self.zel("convert", "in.ppm", "plain#TIFF")
        self.assertEqual(self.read("plain")[:2], b"II")
        name = "x" * 251 + ".ppm"
        self.zel("convert", "in.ppm", name)
        self.assertEqual(self.read(name), self.read("in.ppm"))


class Failing(ToolTest):
    def assert_untouched(self, files):
        self.assertEqual({name: self.read(name) for name in os.listdir()}, files)

    def test_failures_leave_everything_as_it_was(self):
        self.write("short.pgm", pgm(100, 100, [7] * 10000)[:-1])
        self.write("good.pgm", pgm(300, 300, [7] * 90000))
        self.write("old.tif", b"old")
        files = {name: self.read(name) for name in os.listdir()}

        def limit():
            resource.setrlimit(resource.RLIMIT_FSIZE, (5000, 5000))

        cases = {
            ("short.pgm", "old.tif"): (None, "short.pgm: Premature end of file"),
            ("good.pgm", "old.tif"): (limit, "old.tif: File too large"),
            ("good.pgm", "old.tif", "--region", "0,0,301,1"): (None, "region"),
            ("good.pgm", "old.tif", "--channels", "1"): (None, "there is no channel 1"),
            ("good.pgm", "nowhere/x.tif"): (None, "No such file or directory"),
            ("good.pgm", "."): (None, "is a directory"),
            ("good.pgm", "/dev/null"): (None, "is no regular file"),
        }
        for words, (preexec, text) in cases.items():
            with self.subTest(words):
                error = self.zel("convert", *words, status=1, preexec_fn=preexec).err
                self.assertIn(text, error)
                self.assert_untouched(files)

    def test_an_interrupt_leaves_nothing(self):
        side = 8000
        self.write("in.pgm", b"P5\n%d %d\n255\n" % (side, side) + bytes(side * side))
        self.write("old.tif", b"old")
        for number in (signal.SIGINT, signal.SIGTERM):
            work = subprocess.Popen([ZEL, "convert", "in.pgm", "old.tif", "--type", "double",
                                     "--orientation", "left-upper"], stderr=subprocess.PIPE)
            end = time.monotonic() + 20
            while len(os.listdir()) == 2 and time.monotonic() < end:
                time.sleep(0.002)
            self.assertEqual(len(os.listdir()), 3)
            work.send_signal(number)
            work.communicate()
            self.assertEqual(work.returncode, -number)
            self.assertEqual(sorted(os.listdir()), ["in.pgm", "old.tif"])
            self.assertEqual(self.read("old.tif"), b"old")


class Large(ToolTest):
    def test_many_images_that_need_a_bigtiff_together(self):
        # The file is looked at while it is made, since four GiB are much for a test.
        header = b"P5\n50000 44000\n255\n"
        with open("in.pgm", "wb") as file:
            for i in range(2):
                file.seek(i * (len(header) + 50000 * 44000))
                file.write(header)
            file.truncate(2 * (len(header) + 50000 * 44000))
        for words, version in (["--all"], 43), ([], 42), (["--all", "--region", "0,0,9,9"], 42):
            work = subprocess.Popen([ZEL, "convert", "in.pgm", "out.tif", *words])
            start = b""
            end = time.monotonic() + 20
            while len(start) < 4 and time.monotonic() < end:
                for name in set(os.listdir()) - {"in.pgm"}:
                    start = self.read_start(name)
            work.terminate()
            work.wait()
            self.assertEqual(start, b"II%c\0" % version, words)
            if os.path.exists("out.tif"):
                os.unlink("out.tif")

    def read_start(self, name):
        try:
            with open(name, "rb") as file:
                return file.read(4)
        except FileNotFoundError:
            return b""


class Messages(ToolTest):
    def test_reasons_and_exit_statuses(self):
        self.scene("a.ppm")
        self.write("noise", b"no image at all")
        self.write("empty.png", b"")
        self.write("b#1.ppm", b"P5")
        cases = [
            (1, ["info", "empty.png"], "zel: empty.png: the file is empty\n"),
            (1, ["info", "-"], "zel: -: images are not read from or written to a pipe"),
            (1, ["convert", "a.ppm", "-"], "zel: -: images are not read from or written to a pipe"),
            (1, ["stats", ""], 'zel: "": this is no name of a file\n'),
            (1, ["info", "b#1.ppm"], 'the file of this name is called "b##1.ppm"\n'),
            (1, ["info", "*.tif"], "zel: *.tif: No such file or directory\n"),
            (1, ["info", "a.ppm/x"], "zel: a.ppm/x: Not a directory\n"),
            (1, ["info", "/dev/null"], "zel: /dev/null: is no regular file\n"),
            (1, ["info", "none.ppm"], "zel: none.ppm: No such file or directory\n"),
            (1, ["info", "noise"], "zel: noise: no format recognises the file; "
                                   "the formats are "),
            (1, ["info", "."], "zel: .: is a directory\n"),
            (1, ["info", "a.ppm:4"], "zel: a.ppm:4: there is no image 4 in the file\n"),
            (1, ["info", "a.ppm#NONE"], 'unknown format "NONE"; the formats are '),
            (1, ["convert", "a.ppm", "b", "--format", "NONE"], 'zel: b: unknown format "NONE"'),
            (1, ["convert", "a.ppm", "b.ppm", "--type", "double"],
             "zel: b.ppm: PNM cannot store type double; it can store bit, uchar, ushort, float"),
            (1, ["convert", "a.ppm", "b.ppm", "--order", "sep"],
             "PNM cannot store order separate; it can store interleaved"),
            (1, ["convert", "a.ppm", "b.ppm", "--compression", "lzw"],
             "PNM cannot store compression Lempel-Ziv & Welch; it can store none"),
            (1, ["convert", "a.ppm", "b.tif", "--compression", "fax4"],
             "colour model RGB and compression CCITT Group 4 together\n"),
            (1, ["convert", "a.ppm", "b.ppm", "--orientation", "right-upper"],
             "PNM cannot store orientation right-upper; it can store upper-left, lower-left"),
            (1, ["convert", "a.ppm", "b.tif", "--page", "17x17"], 
             "TIFF cannot store pages of 17x17 with 3 channels; it can store pages of 32x32, 61x43"),
            (2, ["convert", "a.ppm", "b.ppm:2"], "takes no image index"),
            (2, ["convert", "a.ppm"], "OUT is required"),
            (2, ["convert", "a.ppm", "b.ppm", "--type", "u7"], '--type: "u7" is none of bit,'),
            (2, ["convert", "a.ppm", "b.ppm", "--orientation", "lower"],
             'may mean lower-right, lower-left'),
            (2, ["convert", "a.ppm", "b.ppm", "--page", "0x4"], "no page size"),
            (2, ["convert", "a.ppm", "b.ppm", "--range", "3,3"], "two different numbers"),
            (2, ["nonsense"], 'there is no command "nonsense"; the commands are checkdb, '),
            (2, [], "subcommand is required"),
        ]
        for status, words, text in cases:
            with self.subTest(words):
                result = self.zel(*words, status=status)
                self.assertIn(text, result.err)
                self.assertTrue(result.err.startswith("zel: "))
                self.assertEqual(result.out, "")
        self.assertEqual(sorted(os.listdir()), ["a.ppm", "b#1.ppm", "empty.png", "noise"])

    def test_a_suffix_of_no_format_is_told(self):
        self.scene("a.ppm")
        self.assertEqual(self.zel("convert", "a.ppm", "a.jpgg").err,
                         "zel: a.jpgg: no format has this suffix; it becomes a TIFF file\n")
        self.assertEqual(self.zel("convert", "a.ppm", "b", "--format", "tiff").err, "")

    def test_a_file_that_may_not_be_read(self):
        self.scene("a.ppm")
        os.chmod(".", 0o755)
        os.chmod("a.ppm", 0)

        def become_nobody():
            if os.getuid() == 0:
                os.setuid(65534)

        error = self.zel("info", "a.ppm", status=1, preexec_fn=become_nobody).err
        self.assertEqual(error, "zel: a.ppm: Permission denied\n")

    def test_output_that_cannot_be_written_is_a_failure(self):
        with open("/dev/full", "wb") as full:
            result = subprocess.run([ZEL, "formats"], stdout=full, stderr=subprocess.PIPE)
        self.assertEqual(result.returncode, 1)
        self.assertIn(b"No space left on device", result.stderr)


if __name__ == "__main__":
    unittest.main()
