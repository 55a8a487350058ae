"""TLS that a URI requires: accepted with the right authority, refused with another one or if the server has none."""
import os
import pathlib
import subprocess
import tempfile
import unittest

import servers
from server_faults_test import kd_db


def openssl(*words):
    subprocess.run(['openssl', *map(str, words)], check=True, capture_output=True)


def authority(folder, name):
    openssl('req', '-x509', '-newkey', 'rsa:2048', '-nodes', '-days', '2', '-subj', f'/CN={name}',
            '-keyout', folder / f'{name}.key', '-out', folder / f'{name}.pem')
    return folder / f'{name}.pem'


def certificate(folder):
    """A certificate for 127.0.0.1, signed by `right`."""
    (folder / 'extensions').write_text('subjectAltName=IP:127.0.0.1,DNS:localhost\n')
    openssl('req', '-newkey', 'rsa:2048', '-nodes', '-subj', '/CN=127.0.0.1', '-keyout', folder / 'server.key',
            '-out', folder / 'server.csr')
    openssl('x509', '-req', '-in', folder / 'server.csr', '-CA', folder / 'right.pem', '-CAkey', folder / 'right.key',
            '-CAcreateserial', '-days', '2', '-extfile', folder / 'extensions', '-out', folder / 'server.pem')
    for name in ('server.key', 'server.pem', '.'):
        os.chmod(folder / name, 0o700 if name == '.' else 0o600)
        servers._give(folder / name)


class Tls:
    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory(prefix='kd_tls.')
        cls.addClassCleanup(folder.cleanup)
        cls.folder = pathlib.Path(folder.name)
        cls.right, cls.wrong = authority(cls.folder, 'right'), authority(cls.folder, 'wrong')
        certificate(cls.folder)
        cls.server = cls.SERVER(tcp=True, options=cls.options(cls.folder))
        cls.addClassCleanup(cls.server.stop)

    def ask(self, options, server=None, status=0):
        result = kd_db('query', (server or self.server).uri(self.DATABASE, tcp=True) + options, self.ENCRYPTED,
                       '--format', 'csv')
        self.assertEqual(result.code, status, result.err)
        self.assertNotIn(self.server.password, result.err)
        return result.out.splitlines()[-1] if result.out else ''

    def test_the_right_authority(self):
        self.assertNotIn(self.ask(self.VERIFY.format(self.right)), ('', 'f', 'false', '""'))

    def test_another_authority(self):
        self.ask(self.VERIFY.format(self.wrong), status=1)

    def test_a_server_without_tls(self):
        with self.SERVER(tcp=True, options=self.PLAIN) as plain:
            self.ask(self.REQUIRE, plain, status=1)
            self.ask(self.VERIFY.format(self.right), plain, status=1)


class PostgreSQLTest(Tls, unittest.TestCase):
    SERVER = servers.PostgreSQL
    DATABASE = 'postgres'
    ENCRYPTED = 'SELECT ssl FROM pg_stat_ssl WHERE pid = pg_backend_pid()'
    VERIFY = '?sslmode=verify-full&sslrootcert={}'
    REQUIRE = '?sslmode=require'
    PLAIN = ()

    @staticmethod
    def options(folder):
        return ['-c', 'ssl=on', '-c', f'ssl_cert_file={folder}/server.pem', '-c', f'ssl_key_file={folder}/server.key']


class MariaDBTest(Tls, unittest.TestCase):
    SERVER = servers.MariaDB
    DATABASE = 'mysql'
    ENCRYPTED = ("SELECT variable_value FROM information_schema.session_status WHERE variable_name = 'Ssl_cipher'")
    VERIFY = '?ssl-ca={}'
    REQUIRE = '?ssl=1'
    PLAIN = ('--skip-ssl',)

    @staticmethod
    def options(folder):
        return [f'--ssl-cert={folder}/server.pem', f'--ssl-key={folder}/server.key', f'--ssl-ca={folder}/right.pem']


if __name__ == '__main__':
    unittest.main()
