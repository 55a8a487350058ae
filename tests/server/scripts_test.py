"""Scripts through the databases' own clients: into a table that exists or not, and through clients that continue
after an error or have other settings."""
import os
import pathlib
import sqlite3
import subprocess
import sys
import tempfile
import unittest

import databases
import servers

PEOPLE = b'id,name\n1,Ann\n2,"O\'Brien, the ""old"""\n3,\n'
ROWS = [('1', 'Ann'), ('2', 'O\'Brien, the "old"'), ('3', None)]


def ran(words, script, environment):
    """The client's status and messages."""
    with open(script, 'rb') as source:
        done = subprocess.run(words, stdin=source, capture_output=True, env=environment, check=False, timeout=300)
    return done.returncode, done.stderr.decode(errors='replace')


class Scripts:
    """Tests of every database. `run_script` runs the client; with `go_on` the client continues after an error."""

    TARGET = ''
    MARK = '"'
    OPTIONS = ()

    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory(prefix='kd_scripts.')
        cls.database = databases.opened(cls.TARGET, cls.folder.name)

    @classmethod
    def tearDownClass(cls):
        cls.database.close()
        cls.folder.cleanup()

    def tearDown(self):
        self.sql('DROP VIEW IF EXISTS v')
        for table in self.database.tables():
            self.database.drop(table)

    def convert(self, *words, data=PEOPLE):
        file = pathlib.Path(self.folder.name) / 'people.csv'
        file.write_bytes(data)
        script = pathlib.Path(self.folder.name) / 'script.sql'
        done = subprocess.run([os.environ['KD_DB'], 'convert', str(file), '--to', self.TARGET, '-o', str(script),
                               *self.OPTIONS,
                               *words], stdin=subprocess.DEVNULL, capture_output=True, check=False, timeout=300)
        self.assertEqual(done.returncode, 0, done.stderr)
        return script

    def quoted(self, name):
        return self.MARK + name.replace(self.MARK, self.MARK * 2) + self.MARK

    def rows(self, table='people'):
        return sorted((tuple(None if value is None else str(value) for value in row)
                       for row in self.database.rows(table)), key=repr)

    def test_creates_the_table(self):
        self.assertEqual(self.run_script(self.convert())[0], 0)
        self.assertEqual(self.rows(), ROWS)
        self.assertEqual(self.database.tables(), ['people'])

    def test_leaves_an_existing_table(self):
        self.sql("CREATE TABLE people (id int, name varchar(30))")
        self.sql("INSERT INTO people VALUES (9, 'old')")
        status, says = self.run_script(self.convert())
        self.assertNotEqual(status, 0, says)
        self.assertEqual(self.rows(), [('9', 'old')])
        self.assertEqual(self.database.tables(), ['people'])

    def test_replaces(self):
        self.assertEqual(self.run_script(self.convert('--replace'))[0], 0, 'there is none yet')
        self.sql('DROP TABLE people')
        self.sql('CREATE TABLE people (other int)')
        self.assertEqual(self.run_script(self.convert('--replace')), (0, ''))
        self.assertEqual(self.run_script(self.convert('--replace')), (0, ''))
        self.assertEqual(self.rows(), ROWS)
        self.assertEqual(self.database.tables(), ['people'])

    def test_appends_by_name(self):
        self.sql("CREATE TABLE people (more int DEFAULT 7, name varchar(30), id int)")
        self.assertEqual(self.run_script(self.convert('--append'))[0], 0)
        self.assertEqual(self.run_script(self.convert('--append'))[0], 0)
        self.assertEqual(self.rows(), sorted([("7", name, id) for id, name in ROWS] * 2, key=repr))

    def test_appends_all_or_nothing(self):
        self.sql("CREATE TABLE people (id int CHECK (id <> 3), name varchar(30))")
        self.assertNotEqual(self.run_script(self.convert('--append', '--infer'))[0], 0)
        self.assertEqual(self.rows(), [])
        self.sql('DROP TABLE people')
        self.sql("CREATE TABLE people (id int)")
        self.assertNotEqual(self.run_script(self.convert('--append'))[0], 0)
        self.assertEqual(self.rows(), [])

    def test_numbers_the_key(self):
        data = b'a\n' + b''.join(b'r%d\n' % number for number in range(1, 2001))
        self.assertEqual(self.run_script(self.convert('--key', 'Nr', data=data))[0], 0)
        self.assertEqual(sorted(self.rows(), key=lambda row: int(row[0])), [(str(n), f'r{n}') for n in range(1, 2001)])
        self.assertEqual(self.database.columns('people'), ['nr', 'a'])

    def test_odd_names_of_tables(self):
        for name in ('order', 'we"ird `t\' x', 'a.b', ' leading', '\u00e4\u00f6\u4e2d', 'x' * 60, '$1', ':v', '\\d'):
            with self.subTest(name):
                for mode in ('--replace', '--append', '--replace'):
                    status, says = self.run_script(self.convert('--table', name, mode))
                    self.assertEqual(status, 0, says)
                self.assertEqual(self.database.tables(), [name])
                self.assertEqual(self.rows(name), ROWS)
                self.database.drop(name)

    def test_rows_are_never_statements(self):
        self.sql("CREATE TABLE victim (a int)")
        self.sql("CREATE TABLE people (id int, name varchar(30))")
        touched = pathlib.Path(self.folder.name) / 'touched'
        lines = ['ROLLBACK;', 'COMMIT;', 'DROP TABLE victim;', f'\\! touch {touched}', f'.shell touch {touched}', '\\.',
                 '.exit',
                 "');DROP TABLE victim;--", '\\q', 'delimiter //', f'system touch {touched}', 'source x', '/* ', '-- ']
        data = 'id,name\n' + ''.join(f'"{line}\n{line}","x\r\n{line}\r\n"\n' for line in lines)
        for go_on in (False, True):
            self.run_script(self.convert(data=data.encode()), go_on=go_on)
            self.assertIn('victim', self.database.tables())
            self.assertFalse(touched.exists())
        self.database.drop('people')
        self.assertEqual(self.run_script(self.convert(data=data.encode()))[0], 0)
        self.assertEqual(self.rows(), sorted(((f"{line}\n{line}", f"x\r\n{line}\r\n") for line in lines), key=repr))
        self.assertFalse(touched.exists())


class GoesOn:
    """A client that continues after an error."""

    def test_an_existing_table_stays(self):
        self.sql("CREATE TABLE people (id int, name varchar(30))")
        self.sql("INSERT INTO people VALUES (9, 'old')")
        self.run_script(self.convert(), go_on=True)
        self.assertEqual(self.rows(), [('9', 'old')])
        self.assertEqual(self.database.tables(), ['people'])

    def test_appends_all_or_nothing_too(self):
        self.sql("CREATE TABLE people (id int CHECK (id <> 3), name varchar(30))")
        data = PEOPLE + b''.join(b'%d,x\n' % number for number in range(4, 2000))
        self.run_script(self.convert('--append', '--infer', data=data), go_on=True)
        self.assertEqual(self.rows(), [])


class SqliteScripts(Scripts, GoesOn, unittest.TestCase):
    TARGET = 'sqlite'

    def run_script(self, script, go_on=False):
        return ran(['sqlite3', *(() if go_on else ('-bail',)), self.database.path], script, dict(os.environ))

    def sql(self, sql):
        connection = sqlite3.connect(self.database.path)
        connection.execute(sql)
        connection.commit()
        connection.close()

    def test_replaces_under_a_view(self):
        self.sql('CREATE TABLE people (name text, other int)')
        self.sql('CREATE VIEW v AS SELECT name FROM people')
        self.assertEqual(self.run_script(self.convert('--replace')), (0, ''))
        self.assertEqual(sorted(self.database._all('SELECT count(*) FROM v')), [(3,)])

    def test_through_python(self):
        connection = sqlite3.connect(self.database.path)
        connection.executescript(self.convert().read_text())
        connection.close()
        self.assertEqual(self.rows(), ROWS)


class PostgreSQLScripts(Scripts, GoesOn, unittest.TestCase):
    TARGET = 'postgresql'

    def run_script(self, script, go_on=False):
        words = [word for word in self.database.server.client(self.database.database) if word not in ('-f', '-')]
        environment = dict(self.database.server._environment())
        if go_on:
            words = [word for word in words if 'ON_ERROR_STOP' not in word and word != '-v']
        status, says = ran(words, script, environment)
        return status, ''.join(line for line in says.splitlines(True) if 'NOTICE' not in line)

    def sql(self, sql):
        self.database._execute(sql)

    def test_through_a_client_with_savepoints(self):
        self.sql("CREATE TABLE people (id int, name varchar(30))")
        rc = pathlib.Path(self.folder.name) / 'psqlrc'
        rc.write_text('\\set ON_ERROR_ROLLBACK on\n\\set AUTOCOMMIT off\n')
        words = [word for word in self.database.server.client(self.database.database)
                 if word not in ('-f', '-', '-X', '--no-psqlrc', '-v') and 'ON_ERROR_STOP' not in word]
        environment = {**self.database.server._environment(), 'PSQLRC': str(rc)}
        ran(words, self.convert(), environment)
        self.assertEqual(self.rows(), [])
        self.database.drop('people')
        ran(words, self.convert(), environment)
        self.assertEqual(self.rows(), ROWS)


class PostgreSQLInserts(PostgreSQLScripts):
    OPTIONS = ('--inserts',)

    # Such a script contains no commands of psql, so it cannot make psql stop.
    test_through_a_client_with_savepoints = None


class MySQLScripts(Scripts, unittest.TestCase):
    TARGET = 'mysql'
    MARK = '`'

    def run_script(self, script, go_on=False, begin='SET default_storage_engine=MyISAM'):
        words = self.database.server.client(self.database.database)
        return ran([*words, f'--init-command={begin}', *(('--force',) if go_on else ())], script,
                   self.database.server._environment())

    def sql(self, sql):
        self.database._execute(sql)

    def test_may_leave_an_empty_table_but_no_rows(self):
        script = self.convert()
        text = script.read_text()
        script.write_text(text.replace("(3,", "(3,4,") if "(3," in text else text.replace("('3',", "('3','4',"))
        self.assertNotEqual(self.run_script(script)[0], 0)
        self.assertEqual(self.rows(), [])

    def test_a_failed_replacement_keeps_the_old_table(self):
        self.sql("CREATE TABLE people (id int, name varchar(30))")
        self.sql("INSERT INTO people VALUES (9, 'old')")
        script = self.convert('--replace')
        script.write_text(script.read_text().replace("('3',", "('3','4',"))
        self.assertNotEqual(self.run_script(script)[0], 0)
        self.assertEqual(self.rows(), [('9', 'old')])
        self.assertEqual(self.run_script(self.convert('--replace'))[0], 0, 'the remains of the failure do not matter')
        self.assertEqual(self.rows(), ROWS)
        self.assertEqual(self.database.tables(), ['people'])


if __name__ == '__main__':
    unittest.main(argv=[sys.argv[0], *sys.argv[1:]])
