"""The program ended from outside: killed, stopped by a signal, or left without a reader."""

import os
import random
import signal
import stat
import subprocess
import time

import support
from support import kd_db, start

MOMENTS = 20


class Killed(support.FaultTest):
    """kill -9 at random moments of a command, which first runs once undisturbed to measure its time."""

    RECORDS = 200000

    def moments(self, arguments):
        begin = time.monotonic()
        self.assertEqual(kd_db(*arguments).returncode, 0)
        duration = time.monotonic() - begin
        chance = random.Random(4)
        return [chance.uniform(0, duration) for _ in range(MOMENTS)]

    def kill_at(self, moment, arguments):
        """Whether the program was still at work."""
        child = start(*arguments)
        time.sleep(moment)
        child.kill()
        child.communicate()
        return child.returncode == -signal.SIGKILL

    def fresh_database(self):
        for path in self.database.parent.iterdir():
            path.unlink()
        support.make_database(self.database)

    def killed_database_work(self, name):
        kept = [line for line in support.content(self.database) if "kept" in line]
        moments = self.moments(self.works()[name])
        killed = 0
        for moment in moments:
            with self.subTest(moment=moment):
                self.fresh_database()
                killed += self.kill_at(moment, self.works()[name])
                found = support.content(self.database)  # checks the integrity
                self.assertEqual([line for line in found if "kept" in line], kept)
                self.assertIn(support.rows_in(self.database, "input"), (None, self.RECORDS))
        self.assertGreater(killed, MOMENTS // 4, "hardly any kill came in time")
        print(f"{name}: killed at work {killed} times of {MOMENTS}")


class KilledLoadTest(Killed):
    def test_killed_load_stores_all_or_nothing(self):
        self.killed_database_work("load")


class KilledImportTest(Killed):
    def test_killed_import_stores_all_or_nothing(self):
        self.killed_database_work("import")


class KilledScriptTest(Killed):
    RECORDS = 600000

    def test_killed_script_is_whole_or_not_there(self):
        whole = self.script.read_bytes()
        result = self.table.with_suffix(".sql")
        killed = 0
        for moment in self.moments(self.works()["script"]):
            with self.subTest(moment=moment):
                result.unlink(missing_ok=True)
                killed += self.kill_at(moment, self.works()["script"])
                if result.exists():
                    self.assertEqual(result.read_bytes(), whole)
        self.assertGreater(killed, MOMENTS // 4, "hardly any kill came in time")
        print(f"script: killed at work {killed} times of {MOMENTS}")


class EndingSignalTest(support.FaultTest):
    """SIGINT, SIGTERM and SIGHUP in the middle of the work."""

    RECORDS = 400000

    def wait_until_at_work(self, child, before):
        """Waits until a new file, or one without a name, has content."""
        deadline = time.monotonic() + 60
        while time.monotonic() < deadline and child.poll() is None:
            if any(self.sizes_of_nameless(child)):
                return
            for path in self.folder.rglob("*"):
                try:
                    if path not in before and path.is_file() and path.stat().st_size > 0:
                        return
                except FileNotFoundError:
                    pass

    @staticmethod
    def sizes_of_nameless(child):
        """The sizes of the files without a name that the process writes."""
        try:
            for descriptor in os.scandir(f"/proc/{child.pid}/fd"):
                state = os.stat(descriptor.path)
                yield state.st_size if stat.S_ISREG(state.st_mode) and state.st_nlink == 0 else 0
        except OSError:  # the process has ended, or has closed the file
            return

    def interrupt(self, number, arguments):
        before = set(self.folder.rglob("*"))
        child = start(*arguments)
        self.wait_until_at_work(child, before)
        child.send_signal(number)
        _, errors = child.communicate()
        self.assertEqual(child.returncode, 128 + number, errors)
        self.assertNotIn(b"kd_db: ", errors)

    def test_the_work_is_undone(self):
        for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
            for name, arguments in self.works().items():
                with self.subTest(name, signal=number), self.unchanged():
                    self.interrupt(number, arguments)

    def test_a_listing_ends_at_once(self):
        for number in (signal.SIGINT, signal.SIGTERM):
            with self.subTest(signal=number):
                child = start("list", self.table)
                child.stdout.read(1000)  # it works, and will soon wait for its reader
                child.send_signal(number)
                self.assertEqual(child.wait(30), 128 + number)
                child.stdout.close()
                child.stderr.close()

    def test_a_query_ends_at_once(self):
        endless = "WITH RECURSIVE c(n) AS (SELECT 1 UNION ALL SELECT n + 1 FROM c) SELECT max(n) FROM c"
        child = start("query", self.database, endless)
        time.sleep(0.3)
        child.terminate()
        self.assertEqual(child.wait(30), 128 + signal.SIGTERM)
        child.communicate()


class ClosedPipeTest(support.FaultTest):
    """A reader that stops reading."""

    def test_the_program_ends_quietly(self):
        many = "WITH RECURSIVE c(n) AS (SELECT 1 UNION ALL SELECT n + 1 FROM c LIMIT 1000000) SELECT n FROM c"
        for arguments in (("list", self.table), ("query", self.database, many)):
            with self.subTest(arguments[0]):
                child = start(*arguments)
                child.stdout.read(1000)
                child.stdout.close()
                self.assertEqual(child.wait(30), 0)
                self.assertNotIn(b"kd_db: ", child.stderr.read())
                child.stderr.close()

    def test_a_missing_reader_is_not_an_error(self):
        reading, writing = os.pipe()
        os.close(reading)
        try:
            done = kd_db("list", self.table, stdout=writing)
        finally:
            os.close(writing)
        self.assertEqual(done.returncode, 0)
        self.assertNotIn(b"kd_db: ", done.stderr)


if __name__ == "__main__":
    support.main()
