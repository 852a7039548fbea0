"""What the tests of the command share: running it, and images by other programs."""
import array
import os
import struct
import subprocess
import sys
import tempfile
import unittest

ZEL = os.environ["ZEL"]


def command(*words, stdin=b""):
    """The output of another program, which must succeed."""
    return subprocess.run(words, input=stdin, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                          check=True).stdout


def pgm(width, height, samples, maxval=255):
    """A PGM, or with three samples a pixel a PPM."""
    kind = b"P6" if len(samples) == 3 * width * height else b"P5"
    data = array.array("H" if maxval > 255 else "B", samples)
    if maxval > 255 and sys.byteorder == "little":
        data.byteswap()
    return b"%s\n%d %d\n%d\n" % (kind, width, height, maxval) + data.tobytes()


def pfm(width, height, samples):
    """A grey PFM; the first row of `samples` is the lowest."""
    return b"Pf\n%d %d\n-1\n" % (width, height) + struct.pack("<%df" % len(samples), *samples)


def samples_of(pnm):
    """The samples of a raw PGM or PPM with a header of three lines."""
    _, _, maxval, data = pnm.split(b"\n", 3)
    samples = array.array("H" if int(maxval) > 255 else "B", data)
    if int(maxval) > 255 and sys.byteorder == "little":
        samples.byteswap()
    return list(samples)


def tiff_samples(path, code):
    """The samples of an uncompressed little-endian TIFF in strips, by a code of struct."""
    with open(path, "rb") as file:
        data = file.read()
    offset = struct.unpack_from("<I", data, 4)[0]
    tags = {}
    for i in range(struct.unpack_from("<H", data, offset)[0]):
        tag, kind, count, value = struct.unpack_from("<HHII", data, offset + 2 + 12 * i)
        size = {1: 1, 3: 2, 4: 4}.get(kind, 0)
        at = offset + 2 + 12 * i + 8 if size * count <= 4 else value
        if size:
            tags[tag] = struct.unpack_from("<%d%s" % (count, "_BH_I"[size]), data, at)
    strips = b"".join(data[at:at + n] for at, n in zip(tags[273], tags[279]))
    return list(struct.unpack("<%d%s" % (len(strips) // struct.calcsize(code), code), strips))


class ToolTest(unittest.TestCase):
    """Each test has a directory of its own, which is the current one."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.addCleanup(os.chdir, os.getcwd())
        os.chdir(folder.name)

    def run_zel(self, *words, **more):
        return subprocess.run([ZEL, *words], stdout=subprocess.PIPE, stderr=subprocess.PIPE, **more)

    def zel(self, *words, status=0, **more):
        """Runs the command, which must end with `status`."""
        result = self.run_zel(*words, **more)
        result.out = result.stdout.decode()
        result.err = result.stderr.decode()
        self.assertEqual(result.returncode, status, (words, result.err))
        return result

    def write(self, name, data):
        with open(name, "wb") as file:
            file.write(data)

    def read(self, name):
        with open(name, "rb") as file:
            return file.read()

    def scene(self, name="scene.ppm", width=61, height=43):
        """Writes a PPM without any symmetry."""
        samples = [(x * (c + 3) + y * (7 - c) + x * y // (c + 5)) % 256
                   for y in range(height) for x in range(width) for c in range(3)]
        self.write(name, pgm(width, height, samples))
        return samples
