"""What process_cost says of programs whose costs are known."""
import os
import subprocess
import sys
import unittest

MIB = 1024  # in KiB


def cost(code, *, status=0):
    """Processor seconds, wall seconds and peak KiB of a Python program, which ends with `status`."""
    done = subprocess.run([os.environ["PROCESS_COST"], sys.executable, "-S", "-c", code],
                          capture_output=True, text=True)
    assert done.returncode == status, done.stderr
    return [float(word) for word in done.stdout.split()]


class ProcessCost(unittest.TestCase):
    def test_memory_is_the_childs_own(self):
        _, _, least = cost("pass")
        # This process is larger than the child, and must not count.
        ballast = b"x" * (200 << 20)
        _, _, again = cost("pass")
        del ballast
        self.assertLess(abs(again - least), 4 * MIB)
        _, _, more = cost("b'x' * (64 << 20)")
        self.assertAlmostEqual(more - least, 64 * MIB, delta=4 * MIB)

    def test_times(self):
        cpu, wall, _ = cost("import time\nwhile time.process_time() < 0.3: pass")
        self.assertTrue(0.25 < cpu < 1, cpu)
        self.assertGreaterEqual(wall, cpu * 0.9)
        cpu, wall, _ = cost("import time; time.sleep(0.3)")
        self.assertLess(cpu, 0.25)
        self.assertGreaterEqual(wall, 0.3)

    def test_output_is_dropped_and_failure_told(self):
        self.assertEqual(len(cost("print('1 2 3 4')")), 3)
        cost("raise SystemExit(3)", status=1)
        cost("import os; os.abort()", status=1)
        done = subprocess.run([os.environ["PROCESS_COST"], "./no-such-program"],
                              capture_output=True, text=True)
        self.assertEqual(done.returncode, 2)
        self.assertIn("no-such-program", done.stderr)


if __name__ == "__main__":
    unittest.main()
