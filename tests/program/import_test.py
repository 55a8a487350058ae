"""import: success and failure are reported correctly, and all or nothing is stored."""
import os
import signal
import subprocess
import unittest

from support import ProgramTest, content, sample, started, write

TABLE = 'CREATE TABLE t(n);\n'
NOTE = 's.sql: running into {}\n'

# script after TABLE: (statement that fails, a part of the reason)
FAILING = {
    'INSERT INTO t VALUES (1);\nINSERT INTO nowhere VALUES (2);\nINSERT INTO t VALUES (3);\n':
        (3, 'no such table: nowhere'),
    'BEGIN;\nINSERT INTO t VALUES (1);\nCOMMIT;\nBEGIN;\nINSERT INTO t VALUES (2);\nnonsense;\n':
        (7, 'near "nonsense": syntax error'),
    'BEGIN;\nINSERT INTO t VALUES (1);\nBEGIN;\n': (4, 'cannot start a transaction within a transaction'),
    'INSERT INTO t VALUES (1);\nCOMMIT;\n': (3, 'no transaction is active'),
    'INSERT INTO t VALUES (1);\n-- a comment\n/* another */ END TRANSACTION;\n': (3, 'no transaction is active'),
    'INSERT INTO t VALUES (1);\nROLLBACK;\n': (3, 'no transaction is active'),
    'INSERT INTO t VALUES (1);\nVACUUM;\n': (3, 'VACUUM'),
}

# script after TABLE: the values of t afterwards
RUNNING = {
    '': [],
    '# nothing but a comment; and a second': [],
    '\n\n;;': [],
    'INSERT INTO t VALUES (1)': [1],
    "INSERT INTO t VALUES ('a;b#c');": ['a;b#c'],
    "-- it's a comment; with an apostrophe\nINSERT INTO t VALUES (1);": [1],
    "/* it's; */ INSERT INTO t VALUES (1) /* ; */;": [1],
    'INSERT INTO t VALUES (1); SELECT n FROM t; INSERT INTO t VALUES (2);': [1, 2],
    'BEGIN;\nINSERT INTO t VALUES (1);\nCOMMIT;\n': [1],
    'begin immediate transaction;\nINSERT INTO t VALUES (1);\nend transaction;\nINSERT INTO t VALUES (2);': [1, 2],
    'INSERT INTO t VALUES (1);\nBEGIN;\nINSERT INTO t VALUES (2);\nROLLBACK;\nINSERT INTO t VALUES (3);': [1, 3],
    'BEGIN;INSERT INTO t VALUES (1);SAVEPOINT s;INSERT INTO t VALUES (2);ROLLBACK TO s;COMMIT;': [1],
    'SAVEPOINT s;INSERT INTO t VALUES (2);ROLLBACK TRANSACTION TO SAVEPOINT s;RELEASE s;': [],
    'CREATE TRIGGER r AFTER INSERT ON t WHEN new.n < 3 BEGIN INSERT INTO t VALUES (CASE 1 WHEN 1 THEN 7 END); END;'
    'INSERT INTO t VALUES (1);': [1, 7],
}


class Import(ProgramTest):
    def setUp(self):
        super().setUp()
        self.run_program('import', write('table.sql', TABLE + "INSERT INTO t VALUES ('before');"), '--into', 'a.db')
        self.before = content('a.db')

    def test_scripts_of_the_program_run(self):
        sample('clients.dbf', 'clients.dbt', 'members.dbf')
        self.run_program('convert', 'clients.dbf', '--to', 'sqlite', '-o', 'c.sql')
        self.assertEqual(self.run_program('import', 'c.sql', '--into', 'c.db').code, 0)
        self.run_program('load', 'clients.dbf', '--into', 'l.db')
        self.assertEqual(self.rows('c.db', 'SELECT * FROM clients'), self.rows('l.db', 'SELECT * FROM clients'))
        self.run_program('script', 'members.dbf')
        self.check(['import', 'members.sql', '--into', 'm.db'], '',
                   'members.sql: running into m.db\nmembers.sql: 5 statements run\n')
        self.assertEqual(self.rows('m.db', 'SELECT id, name, joined, fee FROM members'),
                         [(101, 'Ada Quill', '2019-04-01', 24), (102, 'Ben Osier', '2020-11-15', 18.5),
                          (103, 'Cleo Marsh', '2022-06-30', 31.75)])

    def test_scripts_that_run_to_their_end(self):
        for number, (script, values) in enumerate(RUNNING.items()):
            with self.subTest(script):
                write('s.sql', TABLE + script)
                code, out, err = self.run_program('import', 's.sql', '--into', f'{number}.db')
                self.assertEqual((code, out), (0, ''), err)
                self.assertRegex(err, r'\A' + NOTE.format(f'{number}.db') + r's\.sql: \d+ statements? run\n\Z')
                self.assertEqual(self.values(f'{number}.db', 'SELECT n FROM t'), values)
                self.check_intact(f'{number}.db')

    def test_failing_statement_is_named_and_nothing_stays(self):
        for script, (number, reason) in FAILING.items():
            with self.subTest(script):
                write('s.sql', TABLE + script)
                result = self.run_program('import', 's.sql', '--into', 'new.db')
                self.assertEqual(result.code, 1)
                note, line = result.err.splitlines()
                self.assertRegex(line, r'\Akd_db: s\.sql: .*statement ' + str(number) + r'\b.*: ')
                self.assertIn(reason, line)
                write('s.sql', script)
                self.assertEqual(self.run_program('import', 's.sql', '--into', 'a.db').code, 1)
                self.assertEqual(content('a.db'), self.before)
                self.assertEqual(self.files(), ['a.db', 's.sql', 'table.sql'])

    def test_script_that_ends_inside_a_transaction(self):
        for begin in ['BEGIN', 'SAVEPOINT s']:
            write('s.sql', begin + '; INSERT INTO t VALUES (1);')
            result = self.run_program('import', 's.sql', '--into', 'a.db')
            self.assertEqual(result.code, 1)
            self.assertIn('kd_db: s.sql: ', result.err)
            self.assertEqual(content('a.db'), self.before)

    def test_read_error_is_not_the_end(self):
        result = self.run_program('import', '/proc/self/mem', '--into', 'new.db')
        self.assertEqual(result.code, 1)
        self.assertIn('/proc/self/mem: Input/output error', result.err)
        self.assertNotIn('new.db', self.files())

    def test_standard_input_if_it_is_named(self):
        self.check(['import', '-', '--into', 'n.db', '-q'], stdin=b'CREATE TABLE t(n); INSERT INTO t VALUES (1)')
        self.assertEqual(self.values('n.db', 'SELECT n FROM t'), [1])

    def test_file_that_is_not_a_database(self):
        write('x.db', 'no database at all, but long enough to be looked at: ' * 40)
        write('s.sql', TABLE)
        self.check_failure(['import', 's.sql', '--into', 'x.db'], 'x.db: file is not a database', NOTE.format('x.db'))

    def test_missing_script(self):
        result = self.run_program('import', 'none.sql', '--into', 'n.db')
        self.assertEqual((result.code, result.err.splitlines()[-1]), (1, 'kd_db: none.sql: No such file or directory'))
        self.assertEqual(self.files(), ['a.db', 'table.sql'])

    def test_statement_of_many_megabytes(self):
        write('s.sql', "INSERT INTO t VALUES ('" + 'v' * 20000000 + "');")
        self.assertEqual(self.run_program('import', 's.sql', '--into', 'a.db').code, 0)
        self.assertEqual(self.values('a.db', "SELECT length(n) FROM t WHERE n <> 'before'"), [20000000])

    def test_signal_stops_one_long_statement(self):
        write('s.sql', 'CREATE TABLE long(n); INSERT INTO long WITH RECURSIVE c(n) AS (SELECT 1 UNION ALL '
              'SELECT n + 1 FROM c WHERE n < 3000000000) SELECT max(n) FROM c;')
        for number in [signal.SIGINT, signal.SIGTERM, signal.SIGHUP]:
            for database in ['a.db', 'new.db']:
                with self.subTest(number, database=database), started(
                        'import', 's.sql', '--into', database, stderr=subprocess.PIPE) as process:
                    with self.assertRaises(subprocess.TimeoutExpired):
                        process.wait(timeout=0.3)
                    process.send_signal(number)
                    self.assertEqual(process.wait(timeout=60), 128 + number)
                    self.assertEqual(process.stderr.read().decode(), NOTE.format(database))
                self.assertEqual(self.files(), ['a.db', 's.sql', 'table.sql'])
                self.assertEqual(content('a.db'), self.before)

    def test_signal_stops_an_import_that_waits_for_its_input(self):
        with started('import', '-', '--into', 'new.db', stdin=subprocess.PIPE, stderr=subprocess.PIPE) as process:
            process.stdin.write(b'CREATE TABLE t(n);')
            process.stdin.flush()
            with self.assertRaises(subprocess.TimeoutExpired):
                process.wait(timeout=0.3)
            process.send_signal(signal.SIGINT)
            self.assertEqual(process.wait(timeout=60), 130)
        self.assertEqual(self.files(), ['a.db', 'table.sql'])


if __name__ == '__main__':
    unittest.main()
