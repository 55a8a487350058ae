"""import: success and failure told rightly, and all or nothing."""
import os
import unittest

from support import ProgramTest, content, sample, write

TABLE = 'CREATE TABLE t(n);\n'
NOTE = 'Executing SQL file s.sql\n'

# script: (statement that fails, reason)
FAILING = {
    'INSERT INTO t VALUES (1);\nINSERT INTO nowhere VALUES (2);\nINSERT INTO t VALUES (3);\n':
        (2, 'no such table: nowhere [#1]'),
    'BEGIN;\nINSERT INTO t VALUES (1);\nCOMMIT;\nBEGIN;\nINSERT INTO t VALUES (2);\nnonsense;\n':
        (6, 'near "nonsense": syntax error [#1]'),
    'INSERT INTO t VALUES (1);\nSELECT n FROM t;\n': (2, 'another row available [#100]'),
    'BEGIN;\nINSERT INTO t VALUES (1);\nBEGIN;\n':
        (3, 'cannot start a transaction within a transaction [#1]'),
    'INSERT INTO t VALUES (1);\nCOMMIT;\n': (2, 'no transaction is active'),
    'INSERT INTO t VALUES (1);\n-- a comment\n/* another */ END TRANSACTION;\n': (2, 'no transaction is active'),
    '\xef\xbb\xbfCOMMIT;': (1, 'no transaction is active'),
    'INSERT INTO t VALUES (1);\nROLLBACK;\n': (2, 'no transaction is active'),
}

# script: the values of t afterwards
RUNNING = {
    '': [],
    '# nothing but a comment; and a second': [],
    '\n\n': [],
    'INSERT INTO t VALUES (1);': ['1'],
    "INSERT INTO t VALUES ('a;b#c');": ['a;b#c'],
    'BEGIN;\nINSERT INTO t VALUES (1);\nCOMMIT;\n': ['1'],
    'begin immediate transaction;\nINSERT INTO t VALUES (1);\nend transaction;\nINSERT INTO t VALUES (2);': ['1', '2'],
    'INSERT INTO t VALUES (1);\nBEGIN;\nINSERT INTO t VALUES (2);\nROLLBACK;\nINSERT INTO t VALUES (3);': ['1', '3'],
    'BEGIN;INSERT INTO t VALUES (1);SAVEPOINT s;INSERT INTO t VALUES (2);ROLLBACK TO s;COMMIT;': ['1'],
    'SAVEPOINT s;INSERT INTO t VALUES (2);ROLLBACK TRANSACTION TO SAVEPOINT s;RELEASE s;': [],
    'INSERT INTO t VALUES (1);\n-- the end\n# really\n': ['1'],
}


def statements(script):
    return script.count(';')


class Import(ProgramTest):
    def setUp(self):
        super().setUp()
        self.run_program('import', write('table.sql', TABLE + "INSERT INTO t VALUES ('before');"), '--into', 'a.db')
        self.before = content('a.db')

    def test_script_of_the_program_runs(self):
        sample('members.dbf')
        self.run_program('script', 'members.dbf')
        self.check(['import', 'members.sql', '--into', 'm.db'], '',
                   'Executing SQL file members.sql\nmembers.sql: 5 statements run\n')
        self.assertEqual(self.rows('m.db', 'SELECT id, name, joined, fee FROM members'),
                         ['101 Ada Quill 2019-04-01 24', '102 Ben Osier 2020-11-15 18.5',
                          '103 Cleo Marsh 2022-06-30 31.75'])

    def test_scripts_that_run_to_their_end(self):
        for number, (script, values) in enumerate(RUNNING.items()):
            with self.subTest(script):
                write('s.sql', TABLE + script)
                code, out, err = self.run_program('import', 's.sql', '--into', f'{number}.db')
                self.assertEqual((code, out), (0, ''))
                self.assertRegex(err, r'\A' + NOTE + r's\.sql: \d+ statements? run\n\Z')
                self.assertEqual(self.rows(f'{number}.db', 'SELECT n FROM t'), values)
                self.check_intact(f'{number}.db')

    def test_failing_statement_is_named_and_nothing_stays(self):
        for script, (number, reason) in FAILING.items():
            with self.subTest(script):
                write('s.sql', script)
                self.check_failure(['import', 's.sql', '--into', 'a.db'], f's.sql: statement {number}: {reason}', NOTE)
                self.assertEqual(content('a.db'), self.before)
                write('s.sql', TABLE + script)
                self.check_failure(['import', 's.sql', '--into', 'new.db'],
                                   f's.sql: statement {number + 1}: {reason}', NOTE)
                self.assertEqual(sorted(os.listdir('.')), ['a.db', 's.sql', 'table.sql'])

    def test_script_that_ends_inside_a_transaction(self):
        write('s.sql', 'BEGIN; INSERT INTO t VALUES (1);')
        self.check_failure(['import', 's.sql', '--into', 'a.db'], 's.sql: the script ends inside a transaction', NOTE)
        self.assertEqual(content('a.db'), self.before)

    def test_text_behind_the_last_semicolon_is_told(self):
        for tail in ['INSERT INTO t VALUES (2)', "INSERT INTO t VALUES ('x;", ' x # ;', '\nx\n\n']:
            with self.subTest(tail):
                write('s.sql', 'DELETE FROM t;' + tail)
                self.check(['import', 's.sql', '--into', 'a.db'], '',
                           NOTE + 's.sql: the text behind the last ";" was not run\ns.sql: 1 statement run\n')

    def test_database_that_is_none(self):
        write('x.db', 'no database at all, but long enough to be looked at: ' * 40)
        write('s.sql', TABLE)
        self.check_failure(['import', 's.sql', '--into', 'x.db'],
                           's.sql: statement 1: file is not a database [#26]', NOTE)

    def test_statement_of_many_megabytes(self):
        write('s.sql', "INSERT INTO t VALUES ('" + 'v' * 20000000 + "');")
        self.assertEqual(self.run_program('import', 's.sql', '--into', 'a.db').code, 0)
        self.assertEqual(self.rows('a.db', "SELECT length(n) FROM t WHERE n <> 'before'"), ['20000000'])

    def test_many_empty_statements(self):
        write('s.sql', ';' * 100000)
        code, _, err = self.run_program('import', 's.sql', '--into', 'a.db')
        self.assertEqual((code, err.splitlines()[-1][:9]), (1, 'kd_db: s.'))
        self.assertEqual(content('a.db'), self.before)


if __name__ == '__main__':
    unittest.main()
