"""Running the console program under faults, and the checks after each of them."""

import contextlib
import os
import pathlib
import resource
import sqlite3
import subprocess
import sys
import tempfile
import unittest

KD_DB = os.environ.get("KD_DB", "kd_db")
SANITIZED = bool(os.environ.get("KD_SANITIZED"))
SKIPPED = 77
# A sanitizer's finding must not look like the program's own error.
ENVIRONMENT = dict(os.environ, ASAN_OPTIONS="exitcode=99", UBSAN_OPTIONS="exitcode=99")


def limited(*limits):
    """A function for the child that sets these pairs of resource and value."""
    def apply():
        for kind, value in limits:
            resource.setrlimit(kind, (value, value))
    return apply


def kd_db(*arguments, prefix=(), limits=(), stdout=subprocess.PIPE, folder=None):
    """Runs the program to its end."""
    return subprocess.run([*prefix, KD_DB, *map(str, arguments)], stdin=subprocess.DEVNULL, stdout=stdout,
                          stderr=subprocess.PIPE, env=ENVIRONMENT, preexec_fn=limited(*limits), cwd=folder, check=False)


def start(*arguments):
    """Starts the program and does not wait."""
    return subprocess.Popen([KD_DB, *map(str, arguments)], stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                            stderr=subprocess.PIPE, env=ENVIRONMENT)


def make_table(path, count):
    subprocess.run([os.environ["KD_FAULT_INPUT"], str(count), str(path)], check=True)


def make_database(path):
    """A database that is not empty."""
    connection = sqlite3.connect(path)
    connection.executescript("CREATE TABLE kept (a, b); INSERT INTO kept VALUES ('r1c1', 'r1c2'), ('r2c1', 'r2c2');")
    connection.close()


def content(path):
    """All rows of a sound database, as statements."""
    connection = sqlite3.connect(path)
    try:
        assert connection.execute("PRAGMA integrity_check").fetchall() == [("ok",)]
        return list(connection.iterdump())
    finally:
        connection.close()


def rows_in(path, table):
    """The number of rows; None if there is no such table."""
    connection = sqlite3.connect(path)
    try:
        if not connection.execute("SELECT 1 FROM sqlite_master WHERE name = ?", (table,)).fetchone():
            return None
        return connection.execute(f"SELECT count(*) FROM {table}").fetchone()[0]
    finally:
        connection.close()


@contextlib.contextmanager
def small_disk(kibibytes):
    """A file system of this size, mounted in memory."""
    with tempfile.TemporaryDirectory(prefix="kd_disk_") as folder:
        mounted = subprocess.run(["mount", "-t", "tmpfs", "-o", f"size={kibibytes}k", "tmpfs", folder],
                                 capture_output=True, check=False)
        if mounted.returncode != 0:
            raise unittest.SkipTest(f"no small file system here: {mounted.stderr.decode().strip()}")
        try:
            yield pathlib.Path(folder)
        finally:
            subprocess.run(["umount", folder], check=True)


class FaultTest(unittest.TestCase):
    """A folder with a table, a script and a database that is not empty."""

    RECORDS = 20000

    def setUp(self):
        scratch = tempfile.TemporaryDirectory(prefix="kd_fault_")
        self.addCleanup(scratch.cleanup)
        self.folder = pathlib.Path(scratch.name)
        self.table = self.folder / "input.dbf"
        self.script = self.folder / "script" / "input.sql"
        self.database = self.folder / "data" / "kept.db"
        self.new_database = self.folder / "data" / "new.db"
        self.script.parent.mkdir()
        self.database.parent.mkdir()
        make_table(self.table, self.RECORDS)
        self.make_script()
        make_database(self.database)

    def make_script(self):
        done = kd_db("script", self.table)
        self.assertEqual(done.returncode, 0, done.stderr)
        self.table.with_suffix(".sql").rename(self.script)

    def works(self):
        """The three commands that write: a new script, an existing database and a new one."""
        return {
            "script": ("script", self.table),
            "load": ("load", self.table, "--into", self.database),
            "load anew": ("load", self.table, "--into", self.new_database),
            "import": ("import", self.script, "--into", self.database),
            "import anew": ("import", self.script, "--into", self.new_database),
        }

    def files(self):
        return sorted(str(path.relative_to(self.folder)) for path in self.folder.rglob("*"))

    def assert_error_line(self, done, *names):
        """Exit status 1, and one error line, the last one, that names one of the files."""
        errors = done.stderr.decode(errors="replace")
        self.assertEqual(done.returncode, 1, errors)
        lines = errors.splitlines()
        self.assertTrue(lines and lines[-1].startswith("kd_db: "), errors)
        self.assertEqual(sum(line.startswith("kd_db: ") for line in lines), 1, errors)
        # An error of "script" may name its output file.
        names = [str(name).removesuffix(".dbf") for name in names]
        self.assertTrue(any(name in lines[-1] for name in names), errors)
        self.assertFalse(lines[-1].endswith(": "), f"an error line without a reason: {lines[-1]}")

    @contextlib.contextmanager
    def unchanged(self):
        """Checks that neither the files nor the content of the database have changed."""
        files, kept = self.files(), content(self.database)
        yield
        self.assertEqual(self.files(), files)
        self.assertEqual(content(self.database), kept)

    def fails_and_changes_nothing(self, arguments, **options):
        with self.unchanged():
            done = kd_db(*arguments, **options)
            self.assert_error_line(done, *[word for word in arguments[1:] if isinstance(word, pathlib.Path)])


def main():
    """As unittest.main, but reports to CTest if all tests were skipped."""
    result = unittest.main(exit=False).result
    if not result.wasSuccessful():
        sys.exit(1)
    sys.exit(SKIPPED if result.testsRun == len(result.skipped) else 0)
