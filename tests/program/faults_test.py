"""Full disks, limits and locks: an error line, exit code 1, nothing half written, the database as before."""
import os
import sqlite3
import stat
import subprocess
import unittest

from support import PROGRAM, SANITIZED, ProgramTest, content, limits, many_records, sample, write


class Faults(ProgramTest):
    def setUp(self):
        super().setUp()
        write('big.dbf', many_records(30000))
        sample('members.dbf')
        self.run_program('load', 'members.dbf', '--into', 'old.db')
        write('big.sql', 'CREATE TABLE t(n);\n' + ''.join(
            f"INSERT INTO t VALUES ('{n:0100}');\n" for n in range(20000)))
        self.before = content('old.db')
        self.files = set(os.listdir('.'))

    def check_fault(self, arguments, reason, notes='', **settings):
        result = self.run_program(*arguments, **settings)
        self.assertEqual((result.code, result.out), (1, ''))
        self.assertRegex(result.err, r'\A' + notes + r'kd_db: ' + reason + r'\n\Z')
        self.assertEqual(set(os.listdir('.')), self.files)
        self.assertEqual(content('old.db'), self.before)
        self.check_intact('old.db')

    def check_script(self, reason, **settings):
        self.check_fault(['script', 'big.dbf'], reason, r'Table: big\.dbf\n', **settings)

    def check_writing(self, reason, **settings):
        """The reason of SQLite, for an existing and for a new database."""
        for database in ['old.db', 'new.db']:
            with self.subTest(database):
                self.check_fault(['load', 'big.dbf', '--into', database], database.replace('.', r'\.') + ': ' + reason,
                                 r'Table: big\.dbf\n', **settings)
                self.check_fault(['import', 'big.sql', '--into', database],
                                 r'(big\.sql: statement \d+|' + database + '): ' + reason,
                                 r'Executing SQL file big\.sql\n', **settings)


class SizeLimit(Faults):
    def test_script(self):
        self.check_script(r'big\.sql: File too large', preexec_fn=limits(FSIZE=100000))

    def test_load_and_import(self):
        self.check_writing(r'.* \[#\d+\]', preexec_fn=limits(FSIZE=100000))

    def test_no_byte_may_be_written(self):
        self.check_script(r'big\.sql: File too large', preexec_fn=limits(FSIZE=0))
        self.check_writing(r'.* \[#\d+\]', preexec_fn=limits(FSIZE=0))


class OtherLimits(Faults):
    @unittest.skipIf(SANITIZED, 'the sanitizers need descriptors themselves')
    def test_descriptors(self):
        self.check_script('.+', preexec_fn=limits(NOFILE=4))
        for count in [3, 4, 5]:
            with self.subTest(count):
                result = self.run_program('load', 'big.dbf', '--into', 'new.db', preexec_fn=limits(NOFILE=count))
                self.assertNotEqual(result.code, 0)
                self.assertEqual(set(os.listdir('.')), self.files)

    @unittest.skipIf(SANITIZED, 'the sanitizers need more memory than there is')
    def test_memory_for_one_record(self):
        write('wide.csv', 'x' + ',x' * 200000 + '\n')
        self.files.add('wide.csv')
        self.check_fault(['load', '--into', 'new.db', 'wide.csv'], r'wide\.csv: std::bad_alloc',
                         r'Table: wide\.csv\n', preexec_fn=limits(AS=24000000))

    @unittest.skipIf(SANITIZED, 'the sanitizers need more memory than there is')
    def test_memory(self):
        write('line.csv', 'x\n' + 'v' * 1000000 + '\n')
        write('long.sql', "CREATE TABLE t(n); INSERT INTO t VALUES ('" + 'v' * 40000000 + "');")
        self.files |= {'line.csv', 'long.sql'}
        limit = {'preexec_fn': limits(AS=60000000)}
        self.check_fault(['import', 'long.sql', '--into', 'old.db'], r'long\.sql: .+',
                         r'Executing SQL file long\.sql\n', **limit)
        self.check_fault(['import', 'long.sql', '--into', 'new.db'], r'long\.sql: .+',
                         r'Executing SQL file long\.sql\n', **limit)


@unittest.skipUnless(os.path.exists('/proc/mounts'), 'needs Linux')
class FullDisk(Faults):
    """On a file system of one megabyte, where one can be mounted."""

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
        self.files = set(os.listdir('.'))

    def test_script(self):
        os.remove('big.sql')
        self.files.remove('big.sql')
        self.check_script(r'big\.sql: No space left on device')

    def test_load_and_import(self):
        self.check_writing(r'database or disk is full \[#13\]')


class Rights(Faults):
    """As another user, where the tests run as root."""

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
                (['load', 'big.dbf', '--into', 'new.db'], 'Table: big.dbf\n', 'new.db: Permission denied'),
                (['import', 'big.sql', '--into', 'new.db'], '', 'new.db: Permission denied')]:
            self.check_failure(arguments, reason, notes)
        result = self.run_program('load', 'big.dbf', '--into', 'old.db')
        self.assertEqual((result.code, result.err),
                         (1, 'Table: big.dbf\nkd_db: old.db: attempt to write a readonly database [#8]\n'))
        self.assertEqual(content('old.db'), self.before)


class Locked(Faults):
    """Another process holds the database."""

    def locked(self):
        other = sqlite3.connect('old.db', isolation_level=None)
        self.addCleanup(other.close)
        other.execute('BEGIN EXCLUSIVE')

    def test_every_command_tells_it(self):
        self.locked()
        for arguments, notes, reason in [
                (['query', 'old.db', 'SELECT 1 FROM members'], '', 'old.db: database is locked [#5]'),
                (['query', 'old.db', 'DELETE FROM members'], '', 'old.db: database is locked [#5]'),
                (['load', 'big.dbf', '--into', 'old.db'], 'Table: big.dbf\n', 'old.db: database is locked [#5]'),
                (['import', 'big.sql', '--into', 'old.db'], 'Executing SQL file big.sql\n',
                 'big.sql: statement 1: database is locked [#5]')]:
            with self.subTest(arguments):
                self.check_failure(arguments, reason, notes)

    def test_reader_that_stays_blocks_the_commit(self):
        other = sqlite3.connect('old.db', isolation_level=None)
        self.addCleanup(other.close)
        other.execute('BEGIN')
        other.execute('SELECT count(*) FROM members').fetchall()
        self.check_failure(['load', 'big.dbf', '--into', 'old.db'], 'old.db: database is locked [#5]',
                           'Table: big.dbf\n')
        other.execute('COMMIT')
        self.assertEqual(self.rows('old.db', 'SELECT count(*) FROM sqlite_master'), ['1'])


if __name__ == '__main__':
    unittest.main()
