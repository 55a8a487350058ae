"""The settings that the client libraries find themselves, and the memory that the program needs."""
import os
import pathlib
import subprocess
import tempfile
import unittest

import servers
from server_faults_test import ENVIRONMENT, KD_DB, dbf, kd_db, numbered

PEAK = os.environ.get('KD_PEAK')  # a program that runs another one and writes its peak memory in KiB
GROWTH = 4096
LIMIT = 32768  # KiB
measured = unittest.skipIf(os.environ.get('KD_SANITIZE') or not PEAK, 'a sanitizer keeps freed memory back')


def peak(*words):
    """The peak memory of the program in KiB."""
    done = subprocess.run([PEAK, KD_DB, *map(str, words)], stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                          stderr=subprocess.PIPE, text=True, check=False, timeout=300, env=ENVIRONMENT)
    if done.returncode != 0:
        raise AssertionError(done.stderr)
    return int(done.stderr.splitlines()[-1])


class Memory:
    """For both servers."""

    @classmethod
    def setUpClass(cls):
        cls.server = servers.shared()[cls.SERVER]

    def setUp(self):
        made = self.server.database()
        name = made.__enter__()
        self.addCleanup(made.__exit__, None, None, None)
        self.uri = self.server.uri(name)
        folder = tempfile.TemporaryDirectory(prefix='kd_clients.')
        self.addCleanup(folder.cleanup)
        self.file = pathlib.Path(folder.name) / 'people.dbf'

    def load(self, count):
        self.file.write_bytes(dbf([(number, text * 20) for number, text in numbered(count)], 200))
        return peak('load', self.file, '--replace', '--into', self.uri)

    @measured
    def test_a_query_keeps_no_rows(self):
        self.load(1000)
        few, many = (peak('query', self.uri, f'SELECT a.t, b.t FROM people a, people b WHERE b.n <= {count}',
                          '--format', 'csv') for count in (1, 200))  # 100 bytes a row, 20 MB in the end
        self.assertLess(many - few, GROWTH)

    @measured
    def test_a_load_needs_little_memory_however_long_it_is(self):
        self.assertLess(self.load(100000), LIMIT)

    @measured
    def test_a_comparison_keeps_no_rows(self):
        self.load(100000)
        self.assertLess(peak('verify', self.file, self.uri), LIMIT)


class PostgreSQLTest(Memory, unittest.TestCase):
    SERVER = 0

    def test_password_files_and_service_files(self):
        server = self.server
        folder = self.file.parent
        passwords, services = folder / 'passwords', folder / 'services'
        passwords.write_text(f'127.0.0.1:{server.port}:*:postgres:{server.password}\n')
        passwords.chmod(0o600)
        services.write_text(f'[shop]\nhost=127.0.0.1\nport={server.port}\nuser=postgres\ndbname=postgres\n')
        files = {'PGPASSFILE': str(passwords), 'PGSERVICEFILE': str(services), 'HOME': str(folder)}
        for uri in (f'postgresql://postgres@127.0.0.1:{server.port}/postgres', 'postgresql:///?service=shop'):
            self.assertEqual(kd_db('query', uri, 'SELECT 1', environment=files).code, 0)
            passwordless = kd_db('query', uri, 'SELECT 1', environment={**files, 'PGPASSFILE': '/nowhere'})
            self.assertEqual(passwordless.code, 1)
            self.assertIn('password', passwordless.err)


class MariaDBTest(Memory, unittest.TestCase):
    SERVER = 1

    def test_option_files(self):
        server = self.server
        options = self.file.parent / '.my.cnf'
        options.write_text(f'[client]\npassword={server.password}\nport={server.port}\n')
        options.chmod(0o600)
        uri = 'mariadb://tester@127.0.0.1/mysql'
        self.assertEqual(kd_db('query', uri, 'SELECT 1', environment={'HOME': str(options.parent)}).code, 0)
        self.assertEqual(kd_db('query', uri, 'SELECT 1', environment={'HOME': '/nowhere'}).code, 1)


if __name__ == '__main__':
    unittest.main()
