"""What the tests of the command-line client share. Each takes the command of the client as its arguments; an emulator
may stand before the program."""

import pathlib
import subprocess
import sys
import tempfile
import unittest

QVCLR = []


class ClientTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def run_client(self, *arguments):
        return subprocess.run([*QVCLR, *arguments], cwd=self.folder, capture_output=True, text=True, timeout=120)

    def succeeds(self, *arguments):
        run = self.run_client(*arguments)
        self.assertEqual((run.returncode, run.stderr), (0, ""), run.args)
        return run


def main():
    # The tests run in folders of their own.
    QVCLR.extend(str(pathlib.Path(part).resolve()) if pathlib.Path(part).exists() else part for part in sys.argv[1:])
    unittest.main(argv=sys.argv[:1])
