"""load: every value arrives, all or nothing; many files are loaded one by one."""
import os
import subprocess
import unittest

from support import PROGRAM, ProgramTest, content, make_data, many_records, sample, table, write


class Load(ProgramTest):
    def test_sample_table(self):
        sample('clients.dbf', 'clients.dbt')
        self.check(['load', 'clients.dbf', '--into', 'a.db'], '',
                   'clients.dbf: code page CP1252: language byte 03\nclients.dbf: 1 deleted record left out\n'
                   'clients.dbf: 5 records read, 1 left out, 4 stored in table clients\n')
        self.assertEqual(self.rows('a.db', 'SELECT * FROM clients'), [
            (101, 'Zoë Müller', 'Köln', '2019-04-01', 1500, 1,
             'Pays by invoice.\r\nCall before delivery: the yard is closed on Fridays.'),
            (102, "Sean O'Brien", 'Cork', '2020-11-15', 250.5, 1, "Wants O'Brien's old rate."),
            (104, 'Ines Garção', 'Lisboa', None, None, 0, None),
            (105, 'Pia Lund', 'Malmö', '2024-02-29', 99999.99, None, None)])
        self.check_intact('a.db')

    def test_key_names_and_table(self):
        sample('orders.dbf')
        self.check(['load', 'orders.dbf', '--into', 'a.db', '--key', 'nr', '--names', 'keep', '--table', 'Old Orders', '-q'])
        self.assertEqual(self.rows('a.db', 'SELECT nr, "NUMBER" FROM "Old Orders" LIMIT 2'), [(1, 7001), (2, 7002)])
        self.assertEqual([row[1] for row in self.rows('a.db', 'PRAGMA table_info("Old Orders")')],
                         ['nr', 'NUMBER', 'CLIENT', 'PLACED', 'AMOUNT'])

    def test_default_name_of_the_table(self):
        write('A.b.CSV', 'x\n1\n')
        self.run_program('load', 'A.b.CSV', '--into', 'a.db')
        self.assertEqual(self.values('a.db', 'SELECT name FROM sqlite_master'), ['a.b'])

    def test_append_matches_columns_by_name(self):
        write('one.csv', 'a,b\n1,2\n')
        write('two.csv', 'B,A\n4,3\n')
        self.run_program('load', 'one.csv', '--into', 'a.db', '--table', 't')
        self.check(['load', 'two.csv', '--into', 'a.db', '--table', 't', '--append'], '',
                   'two.csv: 1 record read, 0 left out, 1 stored in table t\n')
        self.assertEqual(self.rows('a.db', 'SELECT a, b FROM t'), [('1', '2'), ('3', '4')])

    def test_append_refuses_a_column_that_the_table_lacks(self):
        write('one.csv', 'a\n1\n')
        write('two.csv', 'a,c\n1,2\n')
        self.run_program('load', 'one.csv', '--into', 'a.db', '--table', 't')
        before = content('a.db')
        result = self.run_program('load', 'two.csv', '--into', 'a.db', '--table', 't', '--append')
        self.assertEqual(result.code, 1)
        self.assertRegex(result.err, r'\Akd_db: a\.db: [^\n]*\bc\b[^\n]*\n\Z')
        self.assertEqual(content('a.db'), before)

    def test_replace_takes_the_place_of_a_table(self):
        write('one.csv', 'a\n1\n')
        write('two.csv', 'b\n2\n')
        self.run_program('load', 'one.csv', '--into', 'a.db', '--table', 't')
        self.assertEqual(self.run_program('load', 'two.csv', '--into', 'a.db', '--table', 't', '--replace').code, 0)
        self.assertEqual(self.rows('a.db', 'SELECT b FROM t'), [('2',)])

    def test_standard_input(self):
        self.check(['load', '-', '--from', 'csv', '--table', 't', '--into', 'a.db'], '',
                   '-: 1 record read, 0 left out, 1 stored in table t\n', stdin=b'x\n1\n')

    def test_slices_side_by_side_are_the_whole(self):
        write('big.dbf', many_records(1000))
        self.run_program('load', 'big.dbf', '--into', 'whole.db')
        for part in ['-250', '251-500', '501-750', '751-']:
            self.run_program('load', 'big.dbf', '--into', 'parts.db', '--records', part,
                             *(['--append'] if part != '-250' else []))
        sql = 'SELECT name, count FROM big ORDER BY rowid'
        self.assertEqual(self.rows('parts.db', sql), self.rows('whole.db', sql))

    def test_database_names_are_files_whatever_they_look_like(self):
        write('t.csv', 'x\n1\n')
        for name in [':memory:', 'file:other.db?mode=memory', "it's; a \"name\".db"]:
            with self.subTest(name):
                self.assertEqual(self.run_program('load', 't.csv', '--into', name).code, 0)
                self.assertTrue(os.path.isfile(name))

    def test_names_cannot_break_out_of_their_quotes(self):
        names = ['a"b', 'a`b', "a'b", 'a;b', 'a b', '"', '"); DROP TABLE keep; --', 'select', 'a\nb', '$1', '?', '[a]',
                 'a/*', 'a--', 'ä']
        write('keep.csv', 'k\nkept\n')
        for name in names:
            with self.subTest(name):
                write('t.csv', ('"' + name.replace('"', '""') + '"\n1\n').encode())
                self.run_program('load', 'keep.csv', '--into', 'a.db')
                self.assertEqual(self.run_program('load', 't.csv', '--into', 'a.db', '--table', name).code, 0)
                self.assertEqual(self.values('a.db', 'SELECT name FROM sqlite_master ORDER BY rowid DESC'), [name, 'keep'])
                self.assertEqual(self.values('a.db', 'SELECT name FROM pragma_table_info((SELECT name FROM sqlite_master'
                                                     ' ORDER BY rowid DESC))'), [name.lower()])
                os.remove('a.db')


class ManyFiles(ProgramTest):
    def setUp(self):
        super().setUp()
        sample('orders.dbf', 'cities.csv', 'members.dbf')

    def test_a_line_per_table_and_a_summary(self):
        self.check(['load', 'orders.dbf', 'cities.csv', '--into', 'a.db'], '',
                   'orders.dbf: 4 records read, 0 left out, 4 stored in table orders\n'
                   'cities.csv: 3 records read, 0 left out, 3 stored in table cities\n'
                   'a.db: 2 of 2 tables loaded\n')

    def test_a_summary_counts_tables_that_are_not_whole(self):
        for name, text in [('a', 'x\n1\n'), ('b', 'x\n1,2\n'), ('c', 'x\n1,2\n'), ('d', '"')]:
            write(f'{name}.csv', text)
        for files, code, tally in [('ab', 3, '2 of 2 tables loaded, 1 not whole'),
                                   ('abc', 3, '3 of 3 tables loaded, 2 not whole'),
                                   ('abd', 1, '2 of 3 tables loaded, 1 not whole, 1 failed'),
                                   ('ad', 1, '1 of 2 tables loaded, 1 failed')]:
            with self.subTest(files):
                result = self.run_program('load', *(f'{name}.csv' for name in files), '--into', f'{files}.db')
                self.assertEqual((result.code, result.err.splitlines()[-1]), (code, f'{files}.db: {tally}'))

    def test_a_folder_is_its_tables(self):
        os.mkdir('old')
        for name in ['orders.dbf', 'cities.csv']:
            os.rename(name, 'old/' + name)
        write('old/readme', 'not a table')
        self.assertEqual(self.run_program('load', 'old', '--into', 'a.db').code, 0)
        self.assertEqual(self.tables('a.db'), ['cities', 'orders'])

    def test_a_folder_without_tables(self):
        os.mkdir('old')
        result = self.run_program('load', 'old', '--into', 'a.db')
        self.assertEqual(result.code, 1)
        self.assertRegex(result.err, r'\Akd_db: old: [^\n]+\n\Z')

    def test_a_failed_table_does_not_stop_the_others(self):
        write('bad.csv', 'x\n"1')
        result = self.run_program('load', 'orders.dbf', 'bad.csv', 'cities.csv', 'none.dbf', '--into', 'a.db')
        self.assertEqual(result.code, 1)
        self.assertEqual(self.tables('a.db'), ['cities', 'orders'])
        lines = result.err.splitlines()
        self.assertEqual(lines[0], 'orders.dbf: 4 records read, 0 left out, 4 stored in table orders')
        self.assertTrue(lines[1].startswith('kd_db: bad.csv: '))
        self.assertTrue(lines[3].startswith('kd_db: none.dbf: '))
        self.assertEqual(lines[4], 'a.db: 2 of 4 tables loaded, 2 failed')

    def test_the_worst_status_is_the_last_word(self):
        write('loss.csv', 'x,y\n1\n')
        self.assertEqual(self.run_program('load', 'loss.csv', 'orders.dbf', '--into', 'a.db').code, 3)
        self.assertEqual(self.run_program('load', 'loss.csv', 'none.dbf', '--into', 'b.db').code, 1)

    def test_two_files_of_one_name_do_not_share_a_table(self):
        write('orders.csv', 'x\n1\n')
        result = self.run_program('load', 'orders.dbf', 'orders.csv', '--into', 'a.db')
        self.assertEqual(result.code, 1)
        self.assertEqual(self.values('a.db', 'SELECT count(*) FROM orders'), [4])

    def test_several_files_go_into_one_table_on_request(self):
        write('one.csv', 'x\n1\n')
        write('two.csv', 'x\n2\n')
        self.run_program('load', 'one.csv', '--into', 'a.db', '--table', 't')
        self.assertEqual(self.run_program('load', 'one.csv', 'two.csv', '--into', 'a.db', '--table', 't', '--append').code, 0)
        self.assertEqual(self.values('a.db', 'SELECT x FROM t'), ['1', '1', '2'])

    def test_jobs_change_nothing_that_is_stored(self):
        self.assertEqual(self.run_program('load', 'orders.dbf', 'cities.csv', 'members.dbf', '--into', 'a.db',
                                          '--jobs', '3').code, 0)
        self.assertEqual(self.tables('a.db'), ['cities', 'members', 'orders'])

    def test_rejects_of_all_files_go_to_one_file(self):
        write('one.csv', 'x,y\n1\n')
        write('two.csv', 'x,y\n2\n')
        self.run_program('load', 'one.csv', 'two.csv', '--into', 'a.db', '--rejects', 'r')
        self.assertEqual(content('r').count(b'\n'), 2)


class AllOrNothing(ProgramTest):
    def test_existing_table_is_an_error_and_stays(self):
        sample('orders.dbf')
        self.run_program('load', 'orders.dbf', '--into', 'a.db')
        before = content('a.db')
        result = self.run_program('load', 'orders.dbf', '--into', 'a.db', '--table', 'ORDERS')
        self.assertEqual(result.code, 1)
        self.assertRegex(result.err, r'\Akd_db: a\.db: [^\n]*ORDERS[^\n]*\n\Z')
        self.assertEqual(content('a.db'), before)
        self.assertEqual(self.files(), ['a.db', 'orders.dbf'])

    def test_bad_record_after_many_good_ones_leaves_nothing(self):
        write('m.csv', 'x\n' + '1\n' * 50000 + '"')
        write('old.csv', 'x\n1\n')
        self.run_program('load', 'old.csv', '--into', 'old.db')
        before = content('old.db')
        for database in ['old.db', 'new.db']:
            result = self.run_program('load', 'm.csv', '--into', database)
            self.assertEqual(result.code, 1)
            self.assertRegex(result.err, r'\Akd_db: m\.csv: [^\n]*50002[^\n]*\n\Z')
        self.assertEqual(content('old.db'), before)
        self.assertEqual(self.files(), ['m.csv', 'old.csv', 'old.db'])

    def test_invalid_targets(self):
        sample('members.dbf')
        write('x.db', 'no database at all, but long enough to be looked at: ' * 40)
        os.mkdir('folder')
        for database, reason in [('x.db', 'file is not a database'), ('no/x.db', 'No such file or directory'),
                                 ('folder', 'Is a directory')]:
            with self.subTest(database):
                self.check_failure(['load', 'members.dbf', '--into', database], f'{database}: {reason}')
        self.assertEqual(self.files(), ['folder', 'members.dbf', 'x.db'])

    def test_the_table_is_not_the_database(self):
        sample('members.dbf')
        self.check_usage(['load', 'members.dbf', '--into', 'members.dbf'], 'members.dbf: is the input file')
        self.assertEqual(content('members.dbf'), make_data.MEMBERS)


class TwoAtOnce(ProgramTest):
    """Two processes load into one new database; neither removes the other's records."""
    PAIRS = int(os.environ.get('KD_PAIRS', '40'))

    def test_stored_tables_stay(self):
        write('good.csv', 'id,v\n1,x\n')
        write('bad.csv', 'id,v\n1,x\n"2')
        write('other.csv', 'id,v\n2,y\n')
        for pair in range(self.PAIRS):
            second = ['bad.csv', 'other.csv'][pair % 2]
            processes = [(name, subprocess.Popen([PROGRAM, 'load', name, '--into', 'n.db'], stderr=subprocess.PIPE))
                         for name in ['good.csv', second]]
            done = [(name, process.communicate()[1].decode(), process.returncode) for name, process in processes]
            stored = [name[:-4] for name, _, code in done if code == 0]
            for name, err, code in done:
                if code != 0:
                    self.assertTrue(name == 'bad.csv' or 'locked' in err, done)
            tables = self.tables('n.db') if os.path.exists('n.db') else []
            self.assertEqual(tables, sorted(stored))
            self.assertEqual(self.files(), sorted(['bad.csv', 'good.csv', 'other.csv'] + (['n.db'] if stored else [])))
            if stored:
                os.remove('n.db')


if __name__ == '__main__':
    unittest.main()
