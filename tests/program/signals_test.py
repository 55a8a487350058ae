"""Signals in the middle of the work. The moments are random; KD_SEED repeats them."""
import os
import random
import signal
import subprocess
import time
import unittest

from support import ProgramTest, content, many_records, sample, started, wait_until_watching, write

ROUNDS = 20
RECORDS = 60000


class Signals(ProgramTest):
    def setUp(self):
        super().setUp()
        seed = os.environ.get('KD_SEED') or str(time.time_ns())
        self.random = random.Random(seed)
        print('KD_SEED=' + seed, flush=True)
        write('big.dbf', many_records(RECORDS))
        write('big.sql', 'CREATE TABLE big(n);\n' + ''.join(
            f'INSERT INTO big VALUES ({n});\n' for n in range(RECORDS)))
        sample('members.dbf')
        self.run_program('load', 'members.dbf', '--into', 'old.db')
        self.before = content('old.db')

    def duration(self, arguments):
        """The time of the whole work on this machine; its output is removed."""
        begin = time.monotonic()
        self.assertEqual(self.run_program(*arguments).code, 0)
        return time.monotonic() - begin

    def interrupt(self, arguments, number, moment):
        with started(*arguments, stdout=subprocess.PIPE, stderr=subprocess.PIPE) as process:
            time.sleep(moment)
            process.send_signal(number)
            out, err = process.communicate(timeout=120)
            # As a shell reports it: a signal that arrives before main ends the process directly.
            code = process.returncode if process.returncode >= 0 else 128 - process.returncode
            return code, out.decode(), err.decode()

    def moments(self, arguments, rounds):
        whole = self.duration(arguments)
        # Evenly spread, each at a random place in its share, so that every stage of the work is hit.
        return [whole * (i + self.random.random()) / rounds for i in range(rounds)]

    def loaded(self, database):
        """The number of records in the table that is loaded; None: there is no such table."""
        tables = self.values(database, "SELECT count(*) FROM sqlite_master WHERE name = 'big'")
        return self.values(database, 'SELECT count(*) FROM big')[0] if tables == [1] else None

    def remake(self):
        for name in os.listdir('.'):
            if name.startswith(('new.db', 'old.db', '.kd_db-')):
                os.remove(name)
        write('old.db', self.before)


class Killed(Signals):
    def check_killed(self, *arguments):
        moments = self.moments([*arguments, 'new.db'], ROUNDS)
        cut_short = 0
        for moment in moments:
            for database in ['new.db', 'old.db']:
                self.remake()
                code, _, _ = self.interrupt([*arguments, database], signal.SIGKILL, moment)
                cut_short += code == 128 + signal.SIGKILL
                if os.path.exists(database):
                    self.check_intact(database)
                    self.assertIn(self.loaded(database), [None, RECORDS])
                if database == 'old.db':
                    self.assertEqual(self.values(database, 'SELECT count(*) FROM members'), [3])
        self.assertGreater(cut_short, 0)

    def test_load_killed_at_random_moments_holds_all_or_nothing(self):
        self.check_killed('load', 'big.dbf', '--into')

    def test_import_killed_at_random_moments_holds_all_or_nothing(self):
        self.check_killed('import', 'big.sql', '--into')


class Ended(Signals):
    def check_ended(self, *arguments):
        files = {'big.dbf', 'big.sql', 'members.dbf', 'old.db'}
        cut_short = 0
        for index, moment in enumerate(self.moments([*arguments, 'new.db'], ROUNDS)):
            number = [signal.SIGINT, signal.SIGTERM][index % 2]
            for database in ['new.db', 'old.db']:
                self.remake()
                code, out, err = self.interrupt([*arguments, database], number, moment)
                self.assertIn(code, [0, 128 + number])
                self.assertEqual(out, '')
                self.assertNotIn('kd_db:', err)
                if code != 0:
                    cut_short += 1
                    self.assertEqual(set(os.listdir('.')), files)
                    self.assertEqual(content('old.db'), self.before)
                else:
                    self.assertEqual(self.loaded(database), RECORDS)
        self.assertGreater(cut_short, 0)

    def test_load_ended_at_random_moments_rolls_back(self):
        self.check_ended('load', 'big.dbf', '--into')

    def test_import_ended_at_random_moments_rolls_back(self):
        self.check_ended('import', 'big.sql', '--into')

    def test_load_of_several_files_ended_at_random_moments(self):
        files = {'big.dbf', 'big.sql', 'members.dbf', 'old.db', 'more.dbf'}
        write('more.dbf', content('big.dbf'))
        for moment in self.moments(['load', 'big.dbf', 'more.dbf', '--into', 'new.db'], 6):
            self.remake()
            code, _, err = self.interrupt(['load', 'big.dbf', 'more.dbf', '--into', 'new.db'], signal.SIGINT, moment)
            self.assertIn(code, [0, 130])
            self.assertNotIn('kd_db:', err)
            if os.path.exists('new.db'):  # records loaded before stay
                self.check_intact('new.db')
                self.assertIn(self.loaded('new.db'), [None, RECORDS])
            self.assertLessEqual(set(os.listdir('.')), files | {'new.db'})

    def test_script_ended_at_random_moments_leaves_nothing(self):
        write('big.dbf', many_records(5 * RECORDS))
        os.remove('big.sql')
        cut_short = 0
        for index, moment in enumerate(self.moments(['script', 'big.dbf'], ROUNDS)):
            number = [signal.SIGINT, signal.SIGTERM][index % 2]
            if os.path.exists('big.sql'):
                os.remove('big.sql')
            code, out, err = self.interrupt(['script', 'big.dbf'], number, moment)
            if code == 0:
                self.assertEqual(out, 'big.sql\n')
            else:
                cut_short += 1
                self.assertEqual((code, out), (128 + number, ''))
                self.assertNotIn('kd_db:', err)
                self.assertEqual(set(os.listdir('.')), {'big.dbf', 'members.dbf', 'old.db'})
        self.assertGreater(cut_short, 0)


class Waiting(ProgramTest):
    """Work that waits for its input, or for the reader of its output, ends as soon as a signal arrives."""

    def check_ended(self, arguments, number, **streams):
        with started(*arguments, stderr=subprocess.PIPE, **streams) as process:
            wait_until_watching(process)
            with self.assertRaises(subprocess.TimeoutExpired):
                process.wait(timeout=0.1)
            process.send_signal(number)
            self.assertEqual(process.wait(timeout=60), 128 + number)
            self.assertEqual(process.stderr.read(), b'')

    def test_input_that_never_arrives(self):
        os.mkfifo('pipe')
        for number in [signal.SIGINT, signal.SIGTERM, signal.SIGHUP]:
            for arguments in [['load', '-', '--from', 'csv', '--table', 't', '--into', 'a.db'],
                              ['load', '-', '--from', 'dbf', '--table', 't', '--into', 'a.db'],
                              ['load', 'pipe', '--from', 'csv', '--into', 'a.db'],
                              ['convert', '-', '--from', 'csv', '--to', 'csv', '-o', 'out'],
                              ['list', '-', '--from', 'csv']]:
                with self.subTest(arguments, signal=number):
                    self.check_ended(arguments, number, stdin=subprocess.PIPE, stdout=subprocess.PIPE)
                    self.assertEqual(self.files(), ['pipe'])

    def test_reader_that_does_not_read(self):
        write('long.csv', 'a,b\n' + 'r1c1,r1c2\n' * 200000)
        self.run_program('load', 'long.csv', '--into', 'a.db')
        for arguments in [['list', 'long.csv', '-q'], ['convert', 'long.csv', '--to', 'csv', '-q'],
                          ['query', 'a.db', 'SELECT * FROM long'], ['query', 'long.csv', 'SELECT * FROM long']]:
            with self.subTest(arguments):
                self.check_ended(arguments, signal.SIGTERM, stdout=subprocess.PIPE)


class Ignored(ProgramTest):
    def test_a_signal_that_was_ignored_stays_ignored(self):
        def ignore():
            signal.signal(signal.SIGHUP, signal.SIG_IGN)
        with started('import', '-', '--into', 'new.db', '-q', stdin=subprocess.PIPE, preexec_fn=ignore) as process:
            wait_until_watching(process)
            process.send_signal(signal.SIGHUP)
            process.stdin.write(b'CREATE TABLE t(n);')
            process.stdin.close()
            self.assertEqual(process.wait(timeout=60), 0)
        self.assertEqual(self.values('new.db', 'SELECT count(*) FROM t'), [0])


if __name__ == '__main__':
    unittest.main()
