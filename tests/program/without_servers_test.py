"""A program that was built without the libraries of the servers: it names the missing server, and does everything that needs none."""
import unittest

from support import ProgramTest, sample, write

SERVERS = {'postgresql': 'PostgreSQL', 'postgres': 'PostgreSQL', 'mariadb': 'MariaDB', 'mysql': 'MariaDB'}


class WithoutServers(ProgramTest):
    def setUp(self):
        super().setUp()
        sample('clients.dbf', 'clients.dbt')
        write('script.sql', b'SELECT 1;\n')

    def test_every_command_names_the_missing_server(self):
        for scheme, name in SERVERS.items():
            uri = f'{scheme}://clerk:S3cret@127.0.0.1:1/shop'
            shown = f'{scheme}://clerk@127.0.0.1:1/shop'
            for words in (['load', 'clients.dbf', '--into', uri], ['load', 'clients.dbf', '--append', '--into', uri],
                          ['query', uri, 'SELECT 1'], ['import', 'script.sql', '--into', uri],
                          ['verify', 'clients.dbf', uri]):
                with self.subTest(words=words):
                    result = self.run_program(*words)
                    self.assertEqual((result.code, result.out), (1, ''))
                    errors = [line for line in result.err.splitlines() if line.startswith('kd_db: ')]
                    self.assertEqual(errors, [f'kd_db: {shown}: this kd_db was built without {name}'])
                    self.assertNotIn('S3cret', result.err)

    def test_scripts_for_the_servers_need_no_library(self):
        for target in ('postgresql', 'mysql'):
            result = self.run_program('convert', 'clients.dbf', '--to', target)
            self.assertEqual(result.code, 0, result.err)
            self.assertIn('INSERT INTO' if target == 'mysql' else 'COPY', result.out)

    def test_sqlite_is_there(self):
        self.assertEqual(self.run_program('load', 'clients.dbf', '--into', 'a.db').code, 0)
        self.assertEqual(self.run_program('verify', 'clients.dbf', 'a.db').code, 0)
        self.assertEqual(self.run_program('import', 'script.sql', '--into', 'a.db').code, 0)
        self.check(['query', 'a.db', 'SELECT count(*) AS n FROM clients', '--format', 'csv', '-q'], 'n\n4\n')


if __name__ == '__main__':
    unittest.main()
