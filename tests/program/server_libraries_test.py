"""The program opens the library of a server when a URI needs it, and names the package of one that it cannot open."""
import ctypes
import os
import pathlib
import re
import shutil
import subprocess
import unittest

from support import PROGRAM, ProgramTest, content, sample, write

SERVERS = {'postgresql': ('PostgreSQL', 'libpq'), 'mariadb': ('MariaDB', 'libmariadb')}
CLIENTS = re.compile(r'\b(libkd_postgresql|libpq|libkd_mariadb|libmariadb)\.so')


def uri(scheme):
    """A database on a port without a server."""
    return f'{scheme}://clerk:S3cret@127.0.0.1:1/shop'


def library(name):
    """The built library of a server."""
    return next((pathlib.Path(PROGRAM).parents[1] / 'src' / name).glob(f'libkd_{name}.so.?'))


def on_this_machine(name):
    """Whether the loader finds the server's library in the folders of the machine."""
    try:
        return bool(ctypes.CDLL(f'libkd_{name}.so.1'))
    except OSError:
        return False


class ServerLibraries(ProgramTest):
    def setUp(self):
        super().setUp()
        sample('clients.dbf', 'clients.dbt')

    def opened(self, *arguments):
        """The libraries of servers that the loader has read in this run."""
        result = self.run_program(*arguments, env={**os.environ, 'LD_DEBUG': 'files', 'LD_DEBUG_OUTPUT': 'loader'})
        loaded = b''.join(content(name) for name in self.files() if name.startswith('loader.')).decode()
        self.assertIn('libkd_exchange', loaded)
        return result, set(CLIENTS.findall(loaded))

    def test_the_program_is_linked_with_no_server_library(self):
        linked = subprocess.run([PROGRAM], env={**os.environ, 'LD_TRACE_LOADED_OBJECTS': '1'}, stdout=subprocess.PIPE,
                                check=True).stdout.decode()
        self.assertIn('libkd_exchange', linked)
        self.assertEqual(CLIENTS.findall(linked), [])

    def test_work_without_a_server_opens_no_server_library(self):
        for words in (['--version'], ['load', 'clients.dbf', '--into', 'a.db'],
                      ['convert', 'clients.dbf', '--to', 'postgresql']):
            with self.subTest(words=words):
                result, libraries = self.opened(*words)
                self.assertEqual((result.code, libraries), (0, set()))

    def test_a_uri_opens_the_libraries_of_its_server_alone(self):
        for scheme, name in (('postgresql', 'postgresql'), ('postgres', 'postgresql'),
                             ('mariadb', 'mariadb'), ('mysql', 'mariadb')):
            with self.subTest(scheme=scheme):
                for file in pathlib.Path().glob('loader.*'):
                    file.unlink()
                result, libraries = self.opened('query', uri(scheme), 'SELECT 1')
                self.assertEqual(libraries, {f'libkd_{name}', SERVERS[name][1]})
                self.assertEqual(result.code, 1)
                self.assertRegex(result.err, "refused|Can't connect")


class Unopened(ProgramTest):
    """A copy of the program that cannot open the library of a server."""

    def setUp(self):
        super().setUp()
        sample('clients.dbf', 'clients.dbt')
        write('script.sql', b'SELECT 1;\n')
        self.environment = dict(os.environ)

    def run_copy(self, *words):
        done = subprocess.run(['./copy', *words], env=self.environment, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                              timeout=120, check=False)
        return done.returncode, done.stdout.decode(), done.stderr.decode()

    def copy(self, *places):
        """Copies the program, which then searches its libraries in these folders."""
        built = pathlib.Path(PROGRAM).parents[1] / 'src'
        shutil.copy(PROGRAM, 'copy')
        folders = [*places, *(str(built / name) for name in ('exchange', 'db', 'udf'))]
        self.environment['LD_LIBRARY_PATH'] = ':'.join(folders)

    def check_server(self, name, reason):
        """The reason follows the name of the package."""
        server, _ = SERVERS[name]
        shown = uri(name).replace(':S3cret', '')
        line = f'kd_db: {shown}: the {server} library cannot be opened (Debian package libkd-{name}1): '
        for words in (['load', 'clients.dbf', '--into', uri(name)], ['query', uri(name), 'SELECT 1'],
                      ['import', 'script.sql', '--into', uri(name)], ['verify', 'clients.dbf', uri(name)]):
            with self.subTest(words=words):
                code, out, err = self.run_copy(*words)
                self.assertEqual((code, out), (1, ''))
                errors = [text for text in err.splitlines() if text.startswith('kd_db: ')]
                self.assertEqual(len(errors), 1, err)
                self.assertEqual(errors[0][:len(line)], line)
                self.assertRegex(errors[0][len(line):], reason)

    def check_rest(self):
        self.assertEqual(self.run_copy('load', 'clients.dbf', '--into', 'a.db')[0], 0)
        self.assertEqual(self.run_copy('query', 'a.db', 'SELECT count(*) AS n FROM clients', '--format', 'csv', '-q'),
                         (0, 'n\n4\n', ''))
        self.assertEqual(self.run_copy('convert', 'clients.dbf', '--to', 'mysql')[0], 0)

    @unittest.skipIf(any(map(on_this_machine, SERVERS)), 'the libraries are installed on this machine')
    def test_the_library_is_missing(self):
        self.copy()
        for name in SERVERS:
            self.check_server(name, rf'^libkd_{name}\.so\.1: cannot open shared object file: No such file')
        self.check_rest()

    def test_the_client_library_of_the_server_is_missing(self):
        os.mkdir('libraries')
        for name, (_, client) in SERVERS.items():
            built = content(library(name))
            self.assertIn(client.encode() + b'.so.', built)
            write(f'libraries/libkd_{name}.so.1', built.replace(client.encode() + b'.so.', client.encode() + b'.no.'))
        self.copy('libraries')
        for name, (_, client) in SERVERS.items():
            self.check_server(name, rf'^{client}\.no\.[0-9]: cannot open shared object file: No such file')
        self.check_rest()

    def test_the_library_is_of_another_version_or_damaged(self):
        os.mkdir('libraries')
        for name in SERVERS:
            built = content(library(name))
            write(f'libraries/libkd_{name}.so.1', built.replace(b'kd_%s_server\0' % name.encode(),
                                                                b'kd_%s_xerver\0' % name.encode()))
        self.copy('libraries')
        for name in SERVERS:
            self.check_server(name, f': undefined symbol: kd_{name}_server$')
            write(f'libraries/libkd_{name}.so.1', b'')
            self.check_server(name, ': file too short$')
        self.check_rest()


if __name__ == '__main__':
    unittest.main()
