"""Full disks, limits and locks: an error line, exit status 1, nothing half written, the database as before."""
import concurrent.futures
import os
import sqlite3
import stat
import subprocess
import time
import unittest

from support import PROGRAM, SANITIZED, ProgramTest, content, limits, many_records, sample, write

RUNNING = r'big\.sql: running into {}\n'


class Faults(ProgramTest):
    def setUp(self):
        super().setUp()
        write('big.dbf', many_records(30000))
        sample('members.dbf')
        self.run_program('load', 'members.dbf', '--into', 'old.db')
        write('big.sql', 'CREATE TABLE t(n);\n' + ''.join(
            f"INSERT INTO t VALUES ('{n:0100}');\n" for n in range(20000)))
        self.before = content('old.db')
        self.known = set(os.listdir('.'))

    def check_fault(self, arguments, reason, notes='', **settings):
        result = self.run_program(*arguments, **settings)
        self.assertEqual((result.code, result.out), (1, ''))
        self.assertRegex(result.err, r'\A' + notes + r'kd_db: ' + reason + r'\n\Z')
        self.assertEqual(set(os.listdir('.')), self.known)
        self.assertEqual(content('old.db'), self.before)
        self.check_intact('old.db')

    def check_files(self, reason, **settings):
        """The commands that write a file."""
        self.check_fault(['script', 'big.dbf'], r'big\.sql: ' + reason, r'Table: big\.dbf\n', **settings)
        self.check_fault(['convert', 'big.dbf', '--to', 'csv', '-o', 'out'], 'out: ' + reason, **settings)
        self.check_fault(['list', 'big.dbf', '-o', 'out'], 'out: ' + reason, **settings)

    def check_writing(self, reason, **settings):
        """The commands that write a database, an existing and a new one."""
        for database in ['old.db', 'new.db']:
            with self.subTest(database):
                name = database.replace('.', r'\.')
                self.check_fault(['load', 'big.dbf', '--into', database], name + ': ' + reason, **settings)
                self.check_fault(['import', 'big.sql', '--into', database], r'(big\.sql|' + name + r'): (.*: )?' + reason,
                                 RUNNING.format(name), **settings)


class SizeLimit(Faults):
    def test_files(self):
        os.remove('big.sql')
        self.known.remove('big.sql')
        self.check_files('File too large', preexec_fn=limits(FSIZE=100000))
        self.check_files('File too large', preexec_fn=limits(FSIZE=0))

    def test_databases(self):
        self.check_writing('.+', preexec_fn=limits(FSIZE=100000))
        self.check_writing('.+', preexec_fn=limits(FSIZE=0))


class OtherLimits(Faults):
    @unittest.skipIf(SANITIZED, 'the sanitizers need descriptors themselves')
    def test_descriptors(self):
        write('made.dbf', content('members.dbf'))
        self.known.add('made.dbf')
        for count in [3, 4, 5, 6]:
            for arguments in [['load', 'big.dbf', '--into', 'new.db'], ['script', 'made.dbf'],
                              ['convert', 'big.dbf', '--to', 'csv', '-o', 'out']]:
                with self.subTest(arguments, count=count):
                    result = self.run_program(*arguments, preexec_fn=limits(NOFILE=count))
                    made = {'load': 'new.db', 'script': 'made.sql', 'convert': 'out'}[arguments[0]]
                    self.assertEqual(set(os.listdir('.')), self.known | ({made} if result.code == 0 else set()))
                    if result.code == 0:
                        os.remove(made)

    @unittest.skipIf(SANITIZED, 'the sanitizers need more memory than there is')
    def test_memory(self):
        write('line.csv', 'x\n"' + 'v' * 200000000 + '"\n')
        write('long.sql', "CREATE TABLE t(n); INSERT INTO t VALUES ('" + 'v' * 100000000 + "');")
        self.known |= {'line.csv', 'long.sql'}
        limit = {'preexec_fn': limits(AS=150000000)}
        for database in ['old.db', 'new.db']:
            self.check_fault(['import', 'long.sql', '--into', database, '-q'], r'.+', **limit)
            self.check_fault(['load', 'line.csv', '--into', database, '-q'], r'.+', **limit)


@unittest.skipUnless(os.path.exists('/proc/mounts'), 'needs Linux')
class FullDisk(Faults):
    """On a file system of one megabyte, if one can be mounted."""

    def setUp(self):
        super().setUp()
        self.disk = os.path.join(self.folder, 'disk')
        os.mkdir('disk')
        mounted = subprocess.run(['mount', '-t', 'tmpfs', '-o', 'size=600k', 'none', self.disk], capture_output=True)
        if mounted.returncode != 0:
            self.skipTest('nothing can be mounted here')
        self.addCleanup(subprocess.run, ['umount', self.disk], capture_output=True)
        for name in ['old.db', 'big.dbf']:
            write('disk/' + name, content(name))
        os.symlink('../big.sql', 'disk/big.sql')
        os.chdir('disk')
        self.addCleanup(os.chdir, self.folder)
        self.known = set(os.listdir('.'))

    def test_files(self):
        os.remove('big.sql')
        self.known.remove('big.sql')
        self.check_fault(['script', 'big.dbf'], r'big\.sql: No space left on device', r'Table: big\.dbf\n')
        self.check_fault(['convert', 'big.dbf', '--to', 'jsonl', '-o', 'out'], 'out: No space left on device')

    def test_databases(self):
        self.check_writing('database or disk is full')


class Rights(Faults):
    """As another user, if the tests run as root."""

    def run_program(self, *arguments, **settings):
        if os.geteuid() == 0 and 'user' not in settings and stat.S_IMODE(os.stat('.').st_mode) == 0o555:
            settings['user'] = 65534
        return super().run_program(*arguments, **settings)

    def test_read_only_folder(self):
        os.chmod('.', 0o555)
        self.addCleanup(os.chmod, self.folder, 0o755)
        try:
            subprocess.run([PROGRAM, '--version'], user=65534 if os.geteuid() == 0 else None, check=True,
                           capture_output=True)
        except (OSError, subprocess.CalledProcessError):
            self.skipTest('the program cannot be reached by another user')
        for arguments, notes, reason in [
                (['script', 'big.dbf'], 'Table: big.dbf\n', 'big.sql: Permission denied'),
                (['convert', 'big.dbf', '--to', 'csv', '-o', 'out'], '', 'out: Permission denied'),
                (['load', 'big.dbf', '--into', 'new.db'], '', 'new.db: Permission denied'),
                (['import', 'big.sql', '--into', 'new.db', '-q'], '', 'new.db: Permission denied')]:
            self.check_failure(arguments, reason, notes)
        result = self.run_program('load', 'big.dbf', '--into', 'old.db')
        self.assertEqual((result.code, result.err), (1, 'kd_db: old.db: attempt to write a readonly database\n'))
        self.assertEqual(content('old.db'), self.before)


class Locked(Faults):
    """Another process locks the database."""

    def locked(self):
        other = sqlite3.connect('old.db', isolation_level=None)
        self.addCleanup(other.close)
        other.execute('BEGIN EXCLUSIVE')

    def check_locked(self, *commands):
        """Each command waits for some seconds, so they wait at the same time."""
        begin = time.monotonic()
        with concurrent.futures.ThreadPoolExecutor(len(commands)) as pool:
            results = list(pool.map(lambda arguments: self.run_program(*arguments), commands))
        self.assertLess(time.monotonic() - begin, 20)
        for arguments, result in zip(commands, results):
            with self.subTest(arguments):
                self.assertEqual((result.code, result.out, result.err), (1, '', 'kd_db: old.db: database is locked\n'))

    def test_every_command_reports_it(self):
        self.locked()
        self.check_locked(['query', 'old.db', 'SELECT 1 FROM members'], ['query', 'old.db', 'DELETE FROM members'],
                          ['load', 'big.dbf', '--into', 'old.db'], ['verify', 'members.dbf', 'old.db'],
                          ['import', 'big.sql', '--into', 'old.db', '-q'])

    def test_reader_that_stays_blocks_the_commit(self):
        other = sqlite3.connect('old.db', isolation_level=None)
        self.addCleanup(other.close)
        other.execute('BEGIN')
        other.execute('SELECT count(*) FROM members').fetchall()
        self.check_locked(['load', 'big.dbf', '--into', 'old.db'])
        self.check_locked(['import', 'big.sql', '--into', 'old.db', '-q'])
        other.execute('COMMIT')
        self.assertEqual(self.values('old.db', 'SELECT count(*) FROM sqlite_master'), [1])


if __name__ == '__main__':
    unittest.main()
