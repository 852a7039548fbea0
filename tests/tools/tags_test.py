"""What images have beside their pixels, and the check of the format database."""
import json
import os
import resource
import struct
import unittest

from support import ToolTest, command, pgm


def profile(name):
    """An ICC profile of no use but for its size and its name, which it has in UTF-16."""
    text = name.encode("utf-16-be")
    body = b"mluc" + struct.pack(">IIIHHII", 0, 1, 12, 0x656e, 0x5553, len(text), 28) + text
    data = bytearray(128) + struct.pack(">I4sII", 1, b"desc", 144, len(body)) + body
    struct.pack_into(">I4xI4s4s4s", data, 0, len(data), 0x04200000, b"mntr", b"RGB ", b"XYZ ")
    data[36:40] = b"acsp"
    return bytes(data)


class Tags(ToolTest):
    def setUp(self):
        super().setUp()
        self.scene()
        self.write("p.icc", profile("Plain RGB"))
        command("convert-im6.q16", "scene.ppm", "-density", "123", "-units", "PixelsPerInch",
                "-set", "comment", "Sea, with boats", "-profile", "p.icc", "a.tif")

    def tags(self, name):
        return json.loads(self.zel("tags", "--json", name).out)[0]["tags"]

    def test_listed_as_another_program_wrote_them(self):
        lines = self.zel("tags", "a.tif").out.splitlines()
        for line in ("XResolution = 123", "ResolutionUnit = inch",
                     "ImageDescription = Sea, with boats"):
            self.assertIn(line, lines)
        verbose = self.zel("info", "-v", "a.tif").out
        self.assertRegex(verbose, r"ICC profile +%d bytes +Plain RGB" % os.path.getsize("p.icc"))
        self.assertRegex(verbose, r"ImageDescription +Sea, with boats")

    def test_set_and_taken_away(self):
        self.zel("tags", "a.tif", "--set", "artist=A. Painter", "--set", "ResolutionUnit=cent",
                 "--set", "ImageDescription=")
        told = command("tiffinfo", "a.tif")
        self.assertIn(b"Artist: A. Painter", told)
        self.assertIn(b"Resolution: 123, 123 pixels/cm", told)
        self.assertNotIn("ImageDescription", self.tags("a.tif"))
        self.assertEqual(command("tifftopnm", "-quiet", "a.tif"), self.read("scene.ppm"))

    def test_failures_leave_the_file(self):
        before = self.read("a.tif")
        for status, words, text in ((1, ["a.tif", "--set", "Nothing=1"], "its tags are XRes"),
                                    (1, ["a.tif", "--set", "XResolution="],
                                     "cannot be taken away, only changed"),
                                    (1, ["a.tif", "--set", "YResolution=5x"],
                                     'does not take "5x": it wants a number'),
                                    (1, ["a.tif", "--set", "PageNumber=1 2 3"], "2 values"),
                                    (1, ["a.tif", "--set", "ResolutionUnit=mile"],
                                     "the values are none, inch, centimeter"),
                                    (1, ["scene.ppm", "--set", "a=b"], "PNM has no tags"),
                                    (2, ["a.tif", "--set", "Artist"], "NAME=TEXT")):
            self.assertIn(text, self.zel("tags", *words, status=status).err)
        small = (1000, 1000)
        no_room = self.zel("tags", "a.tif", "--set", "Artist=Ann", status=1,
                           preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_FSIZE, small))
        self.assertIn("a.tif: File too large", no_room.err)
        self.assertEqual(self.read("a.tif"), before)
        self.assertEqual(sorted(os.listdir()), ["a.tif", "p.icc", "scene.ppm"])

    def test_carried_by_a_conversion(self):
        self.assertEqual(self.zel("convert", "a.tif", "b.tif", "--order", "separate").err, "")
        self.assertEqual(self.tags("b.tif"), self.tags("a.tif"))
        command("convert-im6.q16", "b.tif", "b.icc")
        self.assertEqual(self.read("b.icc"), self.read("p.icc"))
        lost = self.zel("convert", "a.tif", "b.ppm").err
        self.assertRegex(lost, r"^zel: b.ppm: not carried: ICC profile, tag XResolution, .*\n$")
        self.assertEqual(self.zel("convert", "a.tif", "b.ppm", "--strip").err, "")
        self.zel("convert", "a.tif", "b.tif", "--strip")
        self.assertNotIn("ImageDescription", self.tags("b.tif"))

    def test_resolution_follows_rows_and_columns(self):
        self.zel("tags", "a.tif", "--set", "XResolution=300", "--set", "YResolution=100")
        self.zel("convert", "a.tif", "b.tif", "--orientation", "right-upper")
        self.assertIn(b"Resolution: 100, 300 pixels/inch", command("tiffinfo", "b.tif"))

    def test_ranges_become_numbers_of_the_new_type(self):
        # A PGM says by its maxval which number is white.
        self.write("a.pgm", pgm(4, 1, [0, 10, 500, 1000], 1000))
        self.zel("convert", "a.pgm", "b.tif")
        self.assertEqual(self.tags("b.tif")["MaxSampleValue"], "1000")
        self.zel("convert", "a.pgm", "b.tif", "--type", "u8", "--range", "0,2000")
        self.assertEqual(self.tags("b.tif")["MaxSampleValue"], "128")


class CheckDatabase(ToolTest):
    def test_findings(self):
        self.scene(width=19, height=10)
        self.write("db", b'''
format PNM dll zel_pnm.so description "maps" suffixes .pnm, .pgm subsystem base
    match uchar(0) == 80
format NONE dll none.so description "no file" suffixes .pgm subsystem base
    match uchar(0) == 80 && uchar(3) == 49
format BARE description "no plug-in" subsystem base
format MARK dso mark.so description "the other loader's" subsystem base
format pnm dll zel_pnm.so description "again" subsystem base
! format COMMENT
''')
        out = self.zel("checkdb", "db", "missing", "scene.ppm", status=1).out
        for line in (r"warning: db missing required DSO name for BARE",
                     r"warning: BARE format removed from ZEL database",
                     r"warning: MARK names no dll and is removed",
                     r'warning: two entries of the name (PNM|pnm); .*"(maps|again)" is found',
                     r"warning: suffix .pgm is claimed by .*; (PNM|NONE) wins",
                     r"warning: scene.ppm is matched by the rules of .*; (PNM|NONE) wins",
                     r"error: missing: No such file or directory",
                     r"error: NONE: .*none_d.so: cannot open shared object file",
                     r"3 formats; 4 bytes of a file are read"):
            self.assertRegex(out, line)
        self.assertNotIn("COMMENT", out)

    def test_sound_and_unsound(self):
        self.assertRegex(self.zel("checkdb").out, r"^\d+ formats; \d+ bytes [^\n]*\n$")
        self.write("db", b"format AB description 5\n")
        self.assertIn("error: parse error in ZEL database file, line 1:\nformat AB description 5\n",
                      self.zel("checkdb", "db", status=1).out)


if __name__ == "__main__":
    unittest.main()
