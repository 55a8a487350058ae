"""The lines of README.md that show the two servers run unchanged, with the passwords in the files that they name."""
import os
import pathlib
import re
import subprocess
import tempfile
import unittest

import servers

README = pathlib.Path(os.environ['KD_SOURCE']) / 'README.md'
ROWS = {'clients': 4, 'orders': 4}  # of the files in examples/data, without a deleted one


def shown_lines():
    """The commands of the block that shows the two servers."""
    blocks = re.findall(r'```sh\n(.*?)```', README.read_text(encoding='utf-8'), re.DOTALL)
    return [line for block in blocks if 'postgresql://' in block for line in block.splitlines() if 'shop' in line]


class ReadmeTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix='kd_readme.')
        self.addCleanup(folder.cleanup)
        self.home = pathlib.Path(folder.name)
        for name in ('clients.dbf', 'clients.dbt', 'orders.dbf'):
            (self.home / name).write_bytes((pathlib.Path(os.environ['KD_EXAMPLES']) / name).read_bytes())
        self.postgresql = servers.PostgreSQL(tcp=True)
        self.addCleanup(self.postgresql.stop)
        self.mariadb = servers.MariaDB()
        self.addCleanup(self.mariadb.stop)
        self.postgresql.execute("CREATE ROLE me LOGIN PASSWORD 'of postgresql'")
        self.postgresql.execute('CREATE DATABASE shop OWNER me')
        self.mariadb.execute("CREATE USER me@localhost IDENTIFIED BY 'of mariadb'; CREATE DATABASE shop;"
                             'GRANT ALL ON shop.* TO me@localhost')
        self.secret('.pgpass', 'localhost:*:shop:me:of postgresql\n')
        self.secret('.my.cnf', f'[client]\nuser=me\npassword="of mariadb"\nsocket={self.mariadb.socket()}\n')
        programs = [pathlib.Path(os.environ['KD_DB']).parent, self.postgresql._programs(), os.environ['PATH']]
        # The environment that `me` would have on the machine of a default server.
        self.environment = {**os.environ, 'HOME': str(self.home), 'PATH': ':'.join(map(str, programs)),
                            'PGHOST': 'localhost', 'PGPORT': str(self.postgresql.port), 'PGUSER': 'me'}

    def secret(self, name, text):
        (self.home / name).write_text(text)
        (self.home / name).chmod(0o600)

    def run_line(self, line):
        done = subprocess.run(['bash', '-o', 'pipefail', '-c', line], cwd=self.home, env=self.environment,
                              stdin=subprocess.DEVNULL, capture_output=True, text=True, check=False, timeout=120)
        self.assertEqual(done.returncode, 0, f'{line}\n{done.stderr}')
        self.assertNotIn('ERROR', done.stderr, line)

    def test_every_line_runs(self):
        lines = shown_lines()
        for words in ('load .*postgresql://', 'load .*mariadb://', 'verify ', r'\| psql', r'\| mariadb'):
            self.assertTrue(any(re.search(words, line) for line in lines), words)
        for line in lines:
            server = self.postgresql if re.search('postgresql|psql', line) else self.mariadb
            table = re.search(r'(\w+)\.dbf', line)[1]
            if 'verify' not in line:
                server.execute(f'DROP TABLE IF EXISTS {table}', 'shop')
            self.run_line(line)
            self.assertEqual(server.execute(f'SELECT count(*) FROM {table}', 'shop'), [[str(ROWS[table])]], line)


if __name__ == '__main__':
    unittest.main()
