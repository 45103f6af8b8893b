# SPDX-License-Identifier: Apache-2.0
"""usage: gate_test.py COMPARE: what scripts/gate/compare.py, which is COMPARE, lets pass."""

import pathlib
import subprocess
import sys
import tempfile
import unittest

COMPARE = sys.argv.pop(1)

SAY = "say  arm  1000  4"
GET = "two-way call, client  arm  9  2"

# what it is, accepted, measured, exit status, words of the output
CASES = [
    ("the same", [SAY], [SAY], 0, "1 passed, 0 failed"),
    ("a little more", [SAY], ["say  arm  1029  4"], 0, "1 passed, 0 failed"),
    ("3 % more", [SAY], ["say  arm  1030  4"], 1, "FAILED: +3.0 % of 1000 instructions"),
    ("much more", [SAY], ["say  arm  2000  4"], 1, "0 passed, 1 failed"),
    ("what to do", [SAY], ["say  arm  2000  4"], 1, "./dev bench --gate --accept"),
    ("a system call more", [SAY], ["say  arm  1000  5"], 1, "FAILED: +1 to 4 system calls"),
    ("more of both", [SAY], ["say  arm  1100  5"], 1, "instructions, +1 to 4"),
    ("much less", [SAY], ["say  arm  970  4"], 0, "less: -3.0 % of 1000 instructions"),
    ("a little less", [SAY], ["say  arm  971  4"], 0, "1 passed, 0 failed"),
    ("a system call less", [SAY], ["say  arm  1000  3"], 0, "less: -1 to 4 system calls"),
    ("less, but a system call more", [SAY], ["say  arm  900  5"], 1, "0 passed, 1 failed"),
    ("two that are as they were", [SAY, GET], [GET, SAY], 0, "2 passed, 0 failed"),
    ("one of two", [SAY, GET], ["say  arm  1030  4", GET], 1, "1 passed, 1 failed"),
    ("not measured", [SAY, GET], [SAY], 1, "FAILED: not measured"),
    ("not measured on one", [SAY, "say  x86-64  9  4"], [SAY], 1, "1 passed, 1 failed"),
    ("never accepted", [SAY], [SAY, GET], 1, "FAILED: not in the accepted table"),
    ("nothing measured", [SAY], [], 1, "nothing was measured"),
    ("nothing accepted", [], [SAY], 1, "0 passed, 1 failed"),
    ("a figure twice", [SAY, "say  arm  1001  4"], [SAY], 1, "twice"),
    ("no number", [SAY], ["say  arm  many  4"], 1, "many"),
]


class TheGate(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.accepted = pathlib.Path(folder.name, "accepted")
        self.measured = pathlib.Path(folder.name, "measured")

    def run_compare(self, *options):
        done = subprocess.run(
            [sys.executable, COMPARE, *options, self.accepted, self.measured],
            stdout=subprocess.PIPE,
            stderr=subprocess.STDOUT,
            text=True,
            check=False,
        )
        return done.returncode, done.stdout

    def write(self, accepted, measured):
        self.accepted.write_text("\n".join(["# a comment", *accepted, ""]))
        self.measured.write_text("\n".join([*measured, ""]))

    def test_judges_each_figure(self):
        for what, accepted, measured, status, words in CASES:
            with self.subTest(what):
                self.write(accepted, measured)
                left, output = self.run_compare()
                self.assertEqual(left, status, output)
                self.assertIn(words, output)

    def test_says_nothing_of_a_gain_where_there_is_none(self):
        self.write([SAY], ["say  arm  971  4"])
        self.assertNotIn("less", self.run_compare()[1])

    def test_accepts_what_was_measured_and_keeps_the_head(self):
        self.write([SAY], ["say  arm  2000  5", GET])
        left, output = self.run_compare("--accept")
        self.assertEqual(left, 0, output)
        self.assertTrue(self.accepted.read_text().startswith("# a comment\nsay "))
        self.assertEqual(self.run_compare()[0], 0)

    def test_accepts_nothing_where_nothing_was_measured(self):
        self.write([SAY], [])
        before = self.accepted.read_text()
        self.assertEqual(self.run_compare("--accept")[0], 1)
        self.assertEqual(self.accepted.read_text(), before)

    def test_refuses_other_arguments(self):
        self.write([SAY], [SAY])
        self.assertEqual(self.run_compare("--force")[0], 1)


if __name__ == "__main__":
    unittest.main()
