"""convert: scripts, CSV and JSON lines, on standard output and in files."""
import os
import sqlite3
import unittest

from support import ProgramTest, content, json_lines, limits, make_data, many_records, sample, table, write

ORDERS_CSV = 'number,client,placed,amount\n7001,101,2024-01-05,310.00\n7002,102,2024-01-08,48.25\n' \
             '7003,101,2024-02-02,1021.40\n7004,105,2024-03-01,75.10\n'
TALLY = 'orders.dbf: 4 records read, 0 left out, 4 written\n'


class Convert(ProgramTest):
    def setUp(self):
        super().setUp()
        sample('orders.dbf')

    def test_csv(self):
        self.check(['convert', 'orders.dbf', '--to', 'csv'], ORDERS_CSV, TALLY)

    def test_json_lines(self):
        result = self.run_program('convert', 'orders.dbf', '--to', 'jsonl', '--records', '2')
        self.assertEqual(json_lines(result.out), [{'number': 7002, 'client': 102, 'placed': '2024-01-08',
                                                   'amount': 48.25}])

    def test_names_keep_their_case_on_request(self):
        out = self.run_program('convert', 'orders.dbf', '--to', 'csv', '--names', 'keep').out
        self.assertTrue(out.startswith('NUMBER,CLIENT,PLACED,AMOUNT\n'))

    def test_sqlite_script_creates_the_table(self):
        self.check(['convert', 'orders.dbf', '--to', 'sqlite', '-o', 'orders.sql'], '',
                   'orders.dbf: 4 records read, 0 left out, 4 stored in table orders\n')
        database = sqlite3.connect(':memory:')
        self.addCleanup(database.close)
        database.executescript(content('orders.sql').decode())
        self.assertEqual(database.execute('SELECT number, placed, amount FROM orders').fetchall(),
                         [(7001, '2024-01-05', 310), (7002, '2024-01-08', 48.25), (7003, '2024-02-02', 1021.4),
                          (7004, '2024-03-01', 75.1)])

    def test_table_key_and_mode_are_in_the_scripts(self):
        for form in ['sqlite', 'postgresql', 'mysql']:
            quote = '`' if form == 'mysql' else '"'
            with self.subTest(form):
                plain = self.run_program('convert', 'orders.dbf', '--to', form).out
                self.assertRegex(plain, f'(CREATE TABLE|RENAME TO) {quote}orders{quote}')
                named = self.run_program('convert', 'orders.dbf', '--to', form, '--table', 'Old Orders', '--key', 'nr').out
                self.assertRegex(named, f'(CREATE TABLE|RENAME TO) {quote}Old Orders{quote}')
                self.assertRegex(named, r'CREATE TABLE [^(]*\(\s*' + f'{quote}nr{quote} ')
                appended = self.run_program('convert', 'orders.dbf', '--to', form, '--append').out
                self.assertNotRegex(appended, f'(CREATE TABLE|RENAME TO) {quote}orders{quote}')
                replaced = self.run_program('convert', 'orders.dbf', '--to', form, '--replace').out
                self.assertIn('DROP TABLE', replaced)

    def test_postgresql_by_copy_or_inserts(self):
        self.assertIn('\nCOPY ', self.run_program('convert', 'orders.dbf', '--to', 'postgresql').out)
        inserts = self.run_program('convert', 'orders.dbf', '--to', 'postgresql', '--inserts').out
        self.assertNotIn('COPY', inserts)
        self.assertIn('INSERT INTO "orders"', inserts)

    def test_standard_input(self):
        self.check(['convert', '-', '--from', 'csv', '--to', 'csv', '-q'], 'x\n1\n', stdin=b'X\n1\n')
        out = self.run_program('convert', '-', '--from', 'csv', '--to', 'mysql', '--table', 't', stdin=b'X\n1\n').out
        self.assertIn('CREATE TABLE `t`', out)

    def test_output_may_be_named_as_standard_output(self):
        self.check(['convert', 'orders.dbf', '--to', 'csv', '-o', '-'], ORDERS_CSV, TALLY)

    def test_second_conversion_replaces_the_file(self):
        write('out.csv', 'x' * 100000)
        self.check(['convert', 'orders.dbf', '--to', 'csv', '-o', 'out.csv', '-q'])
        self.assertEqual(content('out.csv').decode(), ORDERS_CSV)
        self.assertEqual(self.files(), ['orders.dbf', 'out.csv'])

    def test_input_is_not_the_output(self):
        before = content('orders.dbf')
        self.check_usage(['convert', 'orders.dbf', '--to', 'csv', '-o', 'orders.dbf'],
                         'orders.dbf: is the input file')
        self.assertEqual(content('orders.dbf'), before)

    def test_failure_leaves_nothing(self):
        write('bad.csv', 'x\n' + '1\n' * 100000 + '"2')
        write('before.csv', 'precious')
        for form in ['sqlite', 'postgresql', 'mysql', 'csv', 'jsonl']:
            for out in ['new', 'before.csv']:
                with self.subTest(form, out=out):
                    result = self.run_program('convert', 'bad.csv', '--to', form, '-o', out)
                    self.assertEqual(result.code, 1)
                    self.assertRegex(result.err, r'\Akd_db: bad\.csv: [^\n]+\n\Z')
                    self.assertEqual(content('before.csv'), b'precious')
                    self.assertEqual(self.files(), ['bad.csv', 'before.csv', 'orders.dbf'])

    def test_full_disk_leaves_nothing(self):
        write('big.dbf', many_records(30000))
        result = self.run_program('convert', 'big.dbf', '--to', 'csv', '-o', 'out', preexec_fn=limits(FSIZE=100000))
        self.assertEqual((result.code, result.err), (1, 'kd_db: out: File too large\n'))
        self.assertEqual(self.files(), ['big.dbf', 'orders.dbf'])
        with open('/dev/full', 'wb') as full:
            result = self.run_program('convert', 'big.dbf', '--to', 'csv', stdout=full)
            self.assertEqual((result.code, result.err), (1, 'kd_db: standard output: No space left on device\n'))

    def test_output_in_a_folder_that_is_missing(self):
        self.check_failure(['convert', 'orders.dbf', '--to', 'csv', '-o', 'no/out'], 'no/out: No such file or directory')

    def test_output_keeps_mode_and_link_of_the_old_file(self):
        write('real.csv', '')
        os.chmod('real.csv', 0o600)
        os.symlink('real.csv', 'link.csv')
        self.check(['convert', 'orders.dbf', '--to', 'csv', '-o', 'link.csv', '-q'])
        self.assertTrue(os.path.islink('link.csv'))
        self.assertEqual(content('real.csv').decode(), ORDERS_CSV)
        self.assertEqual(os.stat('real.csv').st_mode & 0o777, 0o600)

    def test_new_output_has_the_rights_of_an_ordinary_file(self):
        before = os.umask(0o027)
        self.addCleanup(os.umask, before)
        self.run_program('convert', 'orders.dbf', '--to', 'csv', '-o', 'out')
        self.assertEqual(os.stat('out').st_mode & 0o777, 0o640)


if __name__ == '__main__':
    unittest.main()
