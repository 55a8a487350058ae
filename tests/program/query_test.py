"""query: on databases, on files, on folders."""
import os
import signal
import subprocess
import unittest

from support import ProgramTest, content, json_lines, make_data, sample, started, table, wait_until_busy, write

LONG = 'WITH RECURSIVE c(n) AS (SELECT 1 UNION ALL SELECT n + 1 FROM c WHERE n < {}) SELECT n FROM c'


class Query(ProgramTest):
    def setUp(self):
        super().setUp()
        sample('members.dbf')
        self.run_program('load', 'members.dbf', '--into', 'm.db')

    def test_rows_under_their_names(self):
        self.check(['query', 'm.db', 'SELECT id, name AS "Who", fee FROM members ORDER BY id DESC'],
                   ' id  Who           fee\n---  ----------  -----\n103  Cleo Marsh  31.75\n102  Ben Osier    18.5\n'
                   '101  Ada Quill      24\n')

    def test_null_differs_from_the_empty_text(self):
        self.check(['query', 'm.db', "SELECT NULL AS a, '' AS b, x'00ff' AS c, 1.5 AS d"],
                   'a     b  c          d\n----  -  -------  ---\nNULL     x\'00FF\'  1.5\n')

    def test_formats(self):
        sql = "SELECT id, name, NULL AS n, '' AS e FROM members LIMIT 1"
        self.check(['query', 'm.db', sql, '--format', 'csv'], 'id,name,n,e\n101,Ada Quill,,""\n')
        self.check(['query', 'm.db', sql, '--format', 'jsonl'], '{"id":101,"name":"Ada Quill","n":null,"e":""}\n')

    def test_output_to_a_file(self):
        self.check(['query', 'm.db', 'SELECT id FROM members', '-o', 'out', '--format', 'csv'])
        self.assertEqual(content('out'), b'id\n101\n102\n103\n')

    def test_result_without_rows(self):
        self.check(['query', 'm.db', 'SELECT id FROM members WHERE 0'], 'id\n--\n')

    def test_statement_without_result_is_executed(self):
        for sql, rows in [('CREATE TABLE t(n)', '0 rows'), ('INSERT INTO t VALUES (7)', '1 row'),
                          ('INSERT INTO t VALUES (8), (9)', '2 rows'), ('UPDATE t SET n = n + 1', '3 rows')]:
            self.check(['query', 'm.db', sql], '', f'm.db: {rows} changed\n')
        self.check(['query', 'm.db', 'DELETE FROM t WHERE n = 8', '-q'])
        self.assertEqual(self.values('m.db', 'SELECT n FROM t'), [9, 10])

    def test_insert_with_a_result(self):
        self.run_program('query', 'm.db', 'CREATE TABLE t(n)')
        self.check(['query', 'm.db', 'INSERT INTO t VALUES (1), (2) RETURNING n'], 'n\n-\n1\n2\n')
        self.assertEqual(self.values('m.db', 'SELECT n FROM t'), [1, 2])

    def test_errors_show_the_place_in_the_statement(self):
        self.check(['query', 'm.db', 'SELECT x FROM members'], '',
                   'kd_db: m.db: no such column: x\n  SELECT x FROM members\n         ^\n', 1)
        self.check(['query', 'm.db', 'SELECT id\nFROM members\nWHERE\t1 +'], '',
                   'kd_db: m.db: incomplete input\n', 1)
        self.check(['query', 'm.db', 'SELECT id,\n       x FROM members\nWHERE 1'], '',
                   'kd_db: m.db: no such column: x\n         x FROM members\n         ^\n', 1)
        long = 'SELECT ' + ', '.join(f'{n} AS column_{n}' for n in range(40)) + ', nowhere FROM members'
        lines = self.run_program('query', 'm.db', long).err.splitlines()
        self.assertEqual(lines[1][lines[2].index('^'):][:7], 'nowhere')
        self.assertLessEqual(len(lines[1]), 80)

    def test_failures(self):
        for sql, reason in [('', None), ('/* nothing */', 'm.db: '), ("SELECT json('{')", 'm.db: malformed JSON'),
                            ('SELECT 1; DROP TABLE members', 'm.db: ')]:
            with self.subTest(sql):
                result = self.run_program('query', 'm.db', sql)
                self.assertEqual(result.code, 1 if reason else 2)
                self.assertTrue(result.err.startswith('kd_db: ' + (reason or 'SQL is empty')), result.err)
        self.assertEqual(self.values('m.db', 'SELECT count(*) FROM members'), [3])

    def test_second_statement_after_a_trigger_is_an_error(self):
        trigger = 'CREATE TRIGGER r AFTER INSERT ON members BEGIN SELECT 1; SELECT 2; END;'
        self.assertEqual(self.run_program('query', 'm.db', trigger + ' DROP TABLE members').code, 1)
        self.assertEqual(self.run_program('query', 'm.db', trigger).code, 0)

    def test_failure_between_the_rows_follows_them(self):
        result = self.run_program('query', 'm.db',
                                  'SELECT CASE n WHEN 3 THEN abs(-9223372036854775808) ELSE n END AS n '
                                  'FROM (SELECT 1 AS n UNION ALL SELECT 2 UNION ALL SELECT 3)')
        self.assertEqual((result.code, result.out, result.err),
                         (1, 'n\n-\n1\n2\n', 'kd_db: m.db: integer overflow\n'))

    def test_file_that_is_not_a_database(self):
        write('x.db', 'no database at all, but long enough to be looked at: ' * 40)
        self.check_failure(['query', 'x.db', 'SELECT 1 FROM t'],
                           'x.db: file is not a database; --from reads it as a table')
        self.check_failure(['query', 'none.db', 'SELECT 1'], 'none.db: No such file or directory')
        self.assertEqual(self.files(), ['m.db', 'members.dbf', 'x.db'])

    def test_database_cut_in_the_middle(self):
        self.run_program('query', 'm.db', 'CREATE TABLE t AS ' + LONG.format(20000))
        write('cut.db', content('m.db')[:-40000])
        result = self.run_program('query', 'cut.db', 'SELECT count(n) FROM t')
        self.assertEqual((result.code, result.err), (1, 'kd_db: cut.db: database disk image is malformed\n'))

    def test_control_characters_are_shown_in_a_table_and_passed_on_in_csv(self):
        sql = "SELECT char(27, 7, 9, 127) || 'x' AS c"
        self.check(['query', 'm.db', sql], 'c\n---------------\n\\x1b\\x07\\t\\x7fx\n')
        self.check(['query', 'm.db', sql, '--format', 'csv'], 'c\n\x1b\x07\t\x7fx\n')


class Files(ProgramTest):
    def setUp(self):
        super().setUp()
        sample('clients.dbf', 'clients.dbt', 'orders.dbf', 'cities.csv')

    def test_a_file_is_a_table(self):
        self.check(['query', 'orders.dbf', 'SELECT client, sum(amount) AS total FROM orders GROUP BY client'],
                   'client   total\n------  ------\n   101  1331.4\n   102   48.25\n   105    75.1\n')

    def test_files_are_joined(self):
        result = self.run_program('query', 'clients.dbf', 'orders.dbf', '--format', 'csv',
                                  'SELECT name, number FROM orders JOIN clients ON client = id ORDER BY number')
        self.assertEqual(result.out.encode('latin-1').decode(),
                         "name,number\nZoë Müller,7001\nSean O'Brien,7002\nZoë Müller,7003\nPia Lund,7004\n")

    def test_a_folder_is_its_tables(self):
        os.mkdir('old')
        for name in ['clients.dbf', 'clients.dbt', 'orders.dbf']:
            os.rename(name, 'old/' + name)
        write('old/notes.txt', 'no table\n')
        self.check(['query', 'old', 'SELECT count(*) AS n FROM clients JOIN orders ON client = id', '-q'], 'n\n-\n4\n')
        self.check(['query', 'old', 'cities.csv', 'SELECT count(*) AS n FROM cities', '-q'], 'n\n-\n3\n')

    def test_a_damaged_file_of_a_folder_is_left_out(self):
        os.mkdir('old')
        os.rename('orders.dbf', 'old/orders.dbf')
        write('old/bad.dbf', 'x')
        result = self.run_program('query', 'old', 'SELECT count(*) AS n FROM orders')
        self.assertEqual((result.code, result.out), (0, 'n\n-\n4\n'))
        self.assertIn('old/bad.dbf: ', result.err)
        self.assertEqual(self.run_program('query', 'old', 'SELECT * FROM bad').code, 1)

    def test_options_of_files(self):
        write('a.txt', 'bolt  7\nhinge 9\n')
        self.check(['query', 'a.txt', 'SELECT kind, n FROM a WHERE n > 8', '-q', '--columns', 'kind:1-6,n:7-7', '--type',
                    'n=integer'], 'kind   n\n-----  -\nhinge  9\n')
        self.check(['query', 'clients.dbf', 'SELECT count(*) AS n FROM clients', '-q', '--deleted', 'keep'], 'n\n-\n5\n')

    def test_rowid_is_the_record_number(self):
        self.check(['query', 'clients.dbf', 'SELECT rowid, id FROM clients WHERE rowid = 4', '-q'],
                   'rowid   id\n-----  ---\n    4  104\n')

    def test_rejects_are_reported(self):
        write('bad.dbf', table([['r1c1', '*'], ['r2c1', '2']]))
        result = self.run_program('query', 'bad.dbf', 'SELECT count FROM bad', '--rejects', 'r')
        self.assertEqual((result.code, result.out), (3, 'count\n-----\n NULL\n    2\n'))
        self.assertRegex(result.err, r'\Akd_db: bad\.dbf: record 1, column COUNT: [^\n]*; taken as NULL\n')
        self.assertEqual(len(json_lines(content('r').decode())), 1)
        self.assertEqual(self.run_program('query', 'bad.dbf', 'SELECT name FROM bad').code, 0)

    def test_files_cannot_be_changed(self):
        before = content('orders.dbf')
        self.assertEqual(self.run_program('query', 'orders.dbf', 'DELETE FROM orders').code, 1)
        self.assertEqual(content('orders.dbf'), before)
        self.assertEqual(self.files(), ['cities.csv', 'clients.dbf', 'clients.dbt', 'orders.dbf'])

    def test_missing_file(self):
        self.check_failure(['query', 'none.dbf', 'SELECT 1'], 'none.dbf: No such file or directory')

    def test_standard_input_is_refused(self):
        self.check_usage(['query', '-', 'SELECT 1', '--from', 'csv'], 'query does not read standard input')


class StandardInput(ProgramTest):
    def test_query_never_reads_it(self):
        sample('members.dbf')
        self.run_program('load', 'members.dbf', '--into', 'm.db')
        write('lines', 'q\nno\n' * 50)
        for database in ['m.db', 'members.dbf']:
            with self.subTest(database), open('lines', 'rb') as lines:
                result = self.run_program('query', database, LONG.format(100), stdin=lines)
                self.assertEqual((result.code, len(result.out.splitlines())), (0, 102))
                self.assertEqual(len(lines.read()), 250)


class ClosedOutput(ProgramTest):
    def setUp(self):
        super().setUp()
        self.run_program('import', write('s.sql', 'CREATE TABLE t(n);'), '--into', 'a.db')
        write('long.csv', 'a,b\n' + 'r1c1,r1c2\n' * 200000)

    def test_closed_pipe_ends_quietly(self):
        for arguments in [['query', 'a.db', LONG.format(3000000)], ['list', 'long.csv'],
                          ['list', 'long.csv', '--format', 'csv']]:
            with self.subTest(arguments[0]), started(*arguments, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                                                     stderr=subprocess.PIPE) as process:
                process.stdout.readline()
                process.stdout.close()
                self.assertEqual(process.stderr.read(), b'')
                self.assertEqual(process.wait(timeout=60), 0)

    def test_full_disk_is_one_error_line(self):
        for arguments in [['query', 'a.db', 'SELECT 1'], ['list', 'long.csv'], ['show', 'long.csv'], ['--help']]:
            with self.subTest(arguments[0]), open('/dev/full', 'wb') as full:
                result = self.run_program(*arguments, stdout=full)
                self.assertEqual((result.code, result.err),
                                 (1, 'kd_db: standard output: No space left on device\n'))

    def test_closed_standard_output_is_an_error_and_reaches_no_file(self):
        before = content('a.db')
        result = self.run_program('query', 'a.db', 'SELECT 1', preexec_fn=lambda: os.close(1))
        self.assertEqual((result.code, result.err), (1, 'kd_db: standard output: Bad file descriptor\n'))
        self.assertEqual(content('a.db'), before)

    def test_signal_ends_a_long_query(self):
        for number in [signal.SIGINT, signal.SIGTERM, signal.SIGHUP]:
            with self.subTest(number), started('query', 'a.db', LONG.format(3000000000), stdin=subprocess.DEVNULL,
                                               stdout=subprocess.PIPE) as process:
                process.stdout.readline()
                process.send_signal(number)
                self.assertEqual(process.wait(timeout=60), 128 + number)

    def test_signal_ends_one_long_statement(self):
        for database in ['a.db', 'long.csv']:
            sql = LONG.format(3000000000).replace('SELECT n FROM', 'SELECT max(n) FROM')
            with self.subTest(database), started('query', database, sql, stdin=subprocess.DEVNULL,
                                                 stdout=subprocess.PIPE, stderr=subprocess.PIPE) as process:
                wait_until_busy(process)
                process.send_signal(signal.SIGINT)
                self.assertEqual(process.wait(timeout=60), 130)
                self.assertEqual(process.stderr.read(), b'')


if __name__ == '__main__':
    unittest.main()
