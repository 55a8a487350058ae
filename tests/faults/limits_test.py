"""A full disk, folders and files that cannot be written, and the limits of the system."""

import os
import pathlib
import resource
import shutil
import subprocess
import unittest

import support
from support import kd_db


class DiskFullTest(support.FaultTest):
    """Nothing half written stays on a disk that is too small."""

    def test_full_disk_leaves_everything_as_it_was(self):
        for work in ("script", "load", "load anew", "import", "import anew"):
            with self.subTest(work), support.small_disk(64 + self.table.stat().st_size // 1024) as disk:
                # A third of the table's size is free: less than any of the commands needs.
                shutil.copy(self.table, disk)
                if work != "script":
                    (disk / "input.dbf").write_bytes(b"x" * (self.table.stat().st_size * 2 // 3))
                shutil.copy(self.database, disk)
                kept = support.content(disk / "kept.db")
                command = {
                    "script": ("script", disk / "input.dbf"),
                    "load": ("load", self.table, "--into", disk / "kept.db"),
                    "load anew": ("load", self.table, "--into", disk / "new.db"),
                    "import": ("import", self.script, "--into", disk / "kept.db"),
                    "import anew": ("import", self.script, "--into", disk / "new.db"),
                }[work]
                done = kd_db(*command)
                self.assert_error_line(done, *command[1:])
                self.assertEqual(sorted(file.name for file in disk.iterdir()), ["input.dbf", "kept.db"])
                self.assertEqual(support.content(disk / "kept.db"), kept)

    def test_results_that_cannot_be_written_are_an_error(self):
        for arguments in (("list", self.table), ("show", self.table), ("query", self.database, "SELECT * FROM kept"),
                          ("script", self.table)):
            with self.subTest(arguments[0]), open("/dev/full", "wb") as full:
                self.assert_error_line(kd_db(*arguments, stdout=full), "standard output")
        # The script was complete before its path was printed.
        self.assertEqual(self.table.with_suffix(".sql").read_bytes(), self.script.read_bytes())


class ReadOnlyFolderTest(support.FaultTest):
    """Permissions. If the tests run as root, the program runs without the right to ignore them."""

    PREFIX = ("setpriv", "--bounding-set=-dac_override,-dac_read_search") if os.geteuid() == 0 else ()

    def lock(self, path, mode):
        path.chmod(mode)
        self.addCleanup(path.chmod, 0o755)

    def test_nothing_is_written_into_a_folder_without_permission(self):
        self.lock(self.folder, 0o555)
        self.lock(self.database.parent, 0o555)
        for name, arguments in self.works().items():
            with self.subTest(name):
                self.fails_and_changes_nothing(arguments, prefix=self.PREFIX)

    def test_a_database_without_permission_is_left_alone(self):
        self.lock(self.database, 0o444)
        for name in ("load", "import"):
            with self.subTest(name):
                self.fails_and_changes_nothing(self.works()[name], prefix=self.PREFIX)

    def test_an_input_without_permission_is_an_error(self):
        self.lock(self.table, 0o000)
        self.lock(self.script, 0o000)
        for name, arguments in self.works().items():
            with self.subTest(name):
                self.fails_and_changes_nothing(arguments, prefix=self.PREFIX)


class FileSizeLimitTest(support.FaultTest):
    """ulimit -f"""

    def test_no_file_grows_over_the_limit(self):
        for kibibytes in (0, 1, 16, 100, 400):
            for name, arguments in self.works().items():
                with self.subTest(name, kibibytes=kibibytes):
                    limits = [(resource.RLIMIT_FSIZE, kibibytes * 1024)]
                    self.fails_and_changes_nothing(arguments, limits=limits)


class SweptLimit(support.FaultTest):
    """A limit that is swept over the range where the program starts to work: at every value it either does
    the work or fails and changes nothing."""

    def remove_results(self):
        for path in (self.table.with_suffix(".sql"), self.new_database):
            path.unlink(missing_ok=True)
        connection = support.sqlite3.connect(self.database)
        connection.execute("DROP TABLE IF EXISTS input")
        connection.close()

    def sweep(self, kind, values):
        met = set()
        for name, arguments in self.works().items():
            statuses = []
            for value in values:
                with self.subTest(name, value=value):
                    self.remove_results()
                    files, kept = self.files(), support.content(self.database)
                    done = kd_db(*arguments, limits=[(kind, value)])
                    statuses.append(done.returncode)
                    if done.returncode == 0:
                        self.assert_done(name)
                        continue
                    self.assert_error_line(done, *arguments[1:])
                    self.assertEqual(self.files(), files)
                    self.assertEqual(support.content(self.database), kept)
            met.update([name] if 1 in statuses else [])
            self.assertEqual(statuses[-1], 0, f"{name}: the sweep ended too low")
        # Some commands need no more than the program's start.
        self.assertTrue(met, "the sweep began too high")

    def assert_done(self, name):
        if name == "script":
            self.assertEqual(self.table.with_suffix(".sql").read_bytes(), self.script.read_bytes())
        else:
            database = self.new_database if name.endswith("anew") else self.database
            self.assertEqual(support.rows_in(database, "input"), self.RECORDS)


@unittest.skipIf(support.SANITIZED, "a sanitizer needs descriptors of its own")
class DescriptorLimitTest(SweptLimit):
    """ulimit -n; the loader of shared libraries already needs the fourth descriptor."""

    def test_every_number_of_descriptors_ends_well(self):
        self.sweep(resource.RLIMIT_NOFILE, range(4, 16))


@unittest.skipIf(support.SANITIZED, "a sanitizer reserves more address space than any limit allows")
class MemoryLimitTest(SweptLimit):
    """ulimit -v"""

    RECORDS = 2000

    def least_memory(self):
        """The least address space in which the program starts at all, in KiB."""
        low, high = 1024, 1 << 20
        while low + 16 < high:
            middle = (low + high) // 2
            started = kd_db("--version", limits=[(resource.RLIMIT_AS, middle * 1024)]).returncode == 0
            low, high = (low, middle) if started else (middle, high)
        return high

    def test_every_amount_of_memory_ends_well(self):
        least = self.least_memory()
        self.sweep(resource.RLIMIT_AS, [(least + step * 64) * 1024 for step in range(48)] + [1 << 30])

    def test_a_statement_larger_than_the_memory_is_an_error(self):
        self.script.write_text("CREATE TABLE t (a);\nINSERT INTO t VALUES ('" + "x" * 50_000_000 + "');\n")
        for name in ("import", "import anew"):
            with self.subTest(name):
                limits = [(resource.RLIMIT_AS, (self.least_memory() + 32 * 1024) * 1024)]
                self.fails_and_changes_nothing(self.works()[name], limits=limits)


if __name__ == "__main__":
    support.main()
