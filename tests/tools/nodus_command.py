# The built command, run as a user runs it, and a folder of a test's own. The script's last argument is its path.
import os
import pathlib
import subprocess
import sys
import tempfile
import types
import unittest

NODUS = sys.argv.pop()


def run(*words, stdin=subprocess.DEVNULL, stdout=None, before=None, started=lambda process: None, **options):
    """Runs a program: before() in the child, started(process) in the parent. The status is that of subprocess."""
    with tempfile.TemporaryFile() as out, tempfile.TemporaryFile() as error:
        process = subprocess.Popen([str(word) for word in words], stdin=stdin, stdout=stdout or out, stderr=error,
                                   preexec_fn=before, **options)
        started(process)
        _, status, usage = os.wait4(process.pid, 0)
        process.returncode = os.waitstatus_to_exitcode(status)
        texts = (os.pread(file.fileno(), os.fstat(file.fileno()).st_size, 0) for file in (out, error))
        out, error = (text.decode(errors='surrogateescape') for text in texts)
        return types.SimpleNamespace(status=process.returncode, out=out, error=error, megabytes=usage.ru_maxrss / 1024)


def nodus(*arguments, **options):
    return run(NODUS, *arguments, **options)


class CommandTest(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix='nodus-')
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def write(self, name, text):
        (self.folder / name).write_bytes(text.encode())
        return self.folder / name

    def files(self):
        return {path.name: path.read_bytes() for path in self.folder.iterdir()}
