"""query: results, failures, statements without results."""
import os
import signal
import subprocess
import unittest

from support import ProgramTest, content, sample, started, write


class Query(ProgramTest):
    def setUp(self):
        super().setUp()
        sample('members.dbf')
        self.run_program('load', 'members.dbf', '--into', 'm.db')

    def test_rows_under_their_names(self):
        self.check(['query', 'm.db', 'SELECT id, name AS "Who" FROM members ORDER BY id DESC'],
                   'id who\n103 Cleo Marsh\n102 Ben Osier\n101 Ada Quill\n')

    def test_result_without_rows(self):
        self.check(['query', 'm.db', 'SELECT id FROM members WHERE 0'], 'id\n')

    def test_answer_that_begins_with_q_or_n_stops_the_pages(self):
        sql = 'WITH RECURSIVE c(n) AS (SELECT 1 UNION ALL SELECT n + 1 FROM c WHERE n < 100) SELECT n FROM c'
        lines = ['n'] + [str(n) for n in range(1, 101)]
        for answers, shown in [(b'', 100), (b'\n', 100), (b'yes\n' * 9, 100), (b'quit\n', 26), (b'\nno\n', 52)]:
            with self.subTest(answers):
                self.check(['query', 'm.db', sql], '\n'.join(lines[:shown + 1]) + '\n', stdin=answers)

    def test_statement_without_result_is_executed(self):
        for sql, rows in [('CREATE TABLE t(n)', '0 rows'), ('INSERT INTO t VALUES (7)', '1 row'),
                          ('INSERT INTO t VALUES (8), (9)', '2 rows'), ('UPDATE t SET n = n + 1', '3 rows')]:
            self.check(['query', 'm.db', sql], '', f'm.db: {rows} changed\n')
        self.assertEqual(self.rows('m.db', 'SELECT n FROM t'), ['8', '9', '10'])

    def test_insert_with_a_result(self):
        self.run_program('query', 'm.db', 'CREATE TABLE t(n)')
        self.check(['query', 'm.db', 'INSERT INTO t VALUES (1), (2) RETURNING n'], 'n\n1\n2\n')
        self.assertEqual(self.rows('m.db', 'SELECT n FROM t'), ['1', '2'])

    def test_failures(self):
        for sql, reason in [('SELECT x FROM members', 'no such column: x [#1]'),
                            ('SELEC 1', 'near "SELEC": syntax error [#1]'),
                            ('', 'the text holds no SQL statement'),
                            ('/* nothing */', 'the text holds no SQL statement'),
                            ("SELECT json('{')", 'malformed JSON [#1]')]:
            with self.subTest(sql):
                result = self.run_program('query', 'm.db', sql)
                self.assertEqual((result.code, result.err), (1, f'kd_db: m.db: {reason}\n'))

    def test_failure_between_the_rows_follows_them(self):
        self.check(['query', 'm.db', "SELECT CASE n WHEN 3 THEN abs(-9223372036854775808) ELSE n END AS n "
                    "FROM (SELECT 1 AS n UNION ALL SELECT 2 UNION ALL SELECT 3)"],
                   'n\n1\n2\n', 'kd_db: m.db: integer overflow [#1]\n', 1)

    def test_only_the_first_statement_runs_and_a_second_is_an_error(self):
        self.check_failure(['query', 'm.db', 'SELECT 1; DROP TABLE members'],
                           'm.db: the text holds more than one statement')
        self.check(['query', 'm.db', 'CREATE TRIGGER r AFTER INSERT ON members BEGIN SELECT 1; SELECT 2; END;'], '',
                   'm.db: 0 rows changed\n')
        for sql in ['SELECT "a;b" AS "a;b"', 'SELECT 1 AS [;]', 'SELECT /* ; */ 1;', "SELECT ';'';' -- ;", ';;']:
            self.assertNotIn('more than one', self.run_program('query', 'm.db', sql).err)
        self.check(['query', 'm.db', "SELECT ';x' AS n; -- done\n /* ; x */ "], 'n\n;x\n')

    def test_database_that_is_none(self):
        write('x.db', 'no database at all, but long enough to be looked at: ' * 40)
        self.check_failure(['query', 'x.db', 'SELECT 1 FROM t'], 'x.db: file is not a database [#26]')

    def test_database_cut_in_the_middle(self):
        self.run_program('query', 'm.db', 'CREATE TABLE t AS WITH RECURSIVE c(n) AS (SELECT 1 UNION ALL SELECT n + 1 '
                         'FROM c WHERE n < 20000) SELECT n FROM c')
        write('cut.db', content('m.db')[:-40000])
        result = self.run_program('query', 'cut.db', 'SELECT count(n) FROM t')
        self.assertEqual((result.code, result.err), (1, 'kd_db: cut.db: database disk image is malformed [#11]\n'))

    def test_control_bytes_pass_untouched_to_a_pipe(self):
        self.check(['query', 'm.db', "SELECT char(27, 7, 9, 127) || 'x' AS c"], 'c\n\x1b\x07\t\x7fx\n')


class ClosedOutput(ProgramTest):
    LONG = 'WITH RECURSIVE c(n) AS (SELECT 1 UNION ALL SELECT n + 1 FROM c WHERE n < 3000000) SELECT n FROM c'

    def setUp(self):
        super().setUp()
        self.run_program('import', write('s.sql', 'CREATE TABLE t(n);'), '--into', 'a.db')
        write('long.csv', 'a,b\n' + 'r1c1,r1c2\n' * 200000)

    def test_closed_pipe_ends_quietly(self):
        for arguments in [['query', 'a.db', self.LONG], ['list', 'long.csv']]:
            with self.subTest(arguments[0]), started(*arguments, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                                                     stderr=subprocess.PIPE) as process:
                process.stdout.readline()
                process.stdout.close()
                self.assertEqual(process.stderr.read().replace(b'Table: long.csv\n', b''), b'')
                self.assertEqual(process.wait(timeout=60), 0)

    def test_full_disk_is_one_error_line(self):
        for arguments in [['query', 'a.db', 'SELECT 1'], ['list', 'long.csv'], ['show', 'long.csv'], ['--help']]:
            with self.subTest(arguments[0]), open('/dev/full', 'wb') as full:
                result = self.run_program(*arguments, stdout=full)
                self.assertEqual((result.code, result.err.replace('Table: long.csv\n', '')),
                                 (1, 'kd_db: standard output: No space left on device\n'))

    def test_closed_standard_output_is_an_error_and_reaches_no_file(self):
        before = content('a.db')
        result = self.run_program('query', 'a.db', 'SELECT 1', preexec_fn=lambda: os.close(1))
        self.assertEqual((result.code, result.err), (1, 'kd_db: standard output: Bad file descriptor\n'))
        self.assertEqual(content('a.db'), before)

    def test_signal_ends_a_long_query(self):
        for number in [signal.SIGINT, signal.SIGTERM]:
            with self.subTest(number), started('query', 'a.db', self.LONG.replace('3000000', '3000000000'),
                                               stdin=subprocess.DEVNULL, stdout=subprocess.PIPE) as process:
                process.stdout.readline()
                process.send_signal(number)
                self.assertEqual(process.wait(timeout=60), 128 + number)


if __name__ == '__main__':
    unittest.main()
