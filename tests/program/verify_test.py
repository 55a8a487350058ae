"""verify: compares a table with its file."""
import sqlite3
import unittest

from support import ProgramTest, content, sample, table, write


class Verify(ProgramTest):
    def setUp(self):
        super().setUp()
        sample('clients.dbf', 'clients.dbt')
        self.assertEqual(self.run_program('load', 'clients.dbf', '--into', 'a.db').code, 0)

    def change(self, sql):
        with sqlite3.connect('a.db') as database:
            database.execute(sql)
        database.close()

    def verify(self, *arguments):
        return self.run_program('verify', 'clients.dbf', 'a.db', '-q', *arguments)

    def test_agreement_is_status_0(self):
        before = content('a.db')
        self.check(['verify', 'clients.dbf', 'a.db'], '',
                   'clients.dbf: code page CP1252: language byte 03\nclients.dbf: 1 deleted record left out\n'
                   'clients.dbf: 4 records as in table clients of a.db\n')
        self.check(['verify', 'clients.dbf', 'a.db', '-q'])
        self.assertEqual(content('a.db'), before)

    def test_each_differing_column_is_shown_with_its_first_record(self):
        self.change("UPDATE clients SET town = 'Bonn' WHERE id > 101")
        self.change("UPDATE clients SET since = NULL, \"limit\" = 0.01 WHERE id = 105")
        result = self.verify()
        self.assertEqual((result.code, result.err), (1, 'kd_db: clients.dbf: differs from table clients of a.db\n'))
        self.assertEqual(result.out, "column TOWN, record 2: 'Cork' in clients.dbf, 'Bonn' in a.db\n"
                                     'column SINCE, record 5: 2024-02-29 in clients.dbf, NULL in a.db\n'
                                     'column LIMIT, record 5: 99999.99 in clients.dbf, 0.01 in a.db\n')

    def test_a_missing_and_an_extra_row_are_differences(self):
        self.change('DELETE FROM clients WHERE id = 105')
        result = self.verify()
        self.assertEqual(result.code, 1)
        self.assertIn('4 records in clients.dbf, 3 rows in a.db\n', result.out)
        self.change('INSERT INTO clients SELECT * FROM clients')
        self.assertIn('4 records in clients.dbf, 6 rows in a.db\n', self.verify().out)

    def test_the_options_decide_what_is_compared(self):
        self.assertEqual(self.verify('--deleted', 'keep').code, 1)
        self.change('ALTER TABLE clients RENAME TO old')
        self.assertEqual(self.verify('--table', 'old').code, 0)
        self.change("UPDATE old SET town = 'Bonn'")
        self.assertEqual(self.verify('--table', 'old', '--select', 'NAME,LIMIT').code, 0)
        self.assertEqual(self.verify('--table', 'old', '--select', 'TOWN').code, 1)

    def test_an_unreadable_cell_and_its_null_agree(self):
        write('bad.dbf', table([['r1c1', '*'], ['r2c1', '2']]))
        self.assertEqual(self.run_program('load', 'bad.dbf', '--into', 'b.db').code, 3)
        self.assertEqual(self.run_program('verify', 'bad.dbf', 'b.db').code, 0)

    def test_a_key_of_the_table_is_not_compared(self):
        self.run_program('load', 'clients.dbf', '--into', 'k.db', '--key', 'nr')
        self.assertEqual(self.run_program('verify', 'clients.dbf', 'k.db').code, 0)

    def test_failures(self):
        for arguments, reason in [(['clients.dbf', 'none.db'], 'none.db: No such file or directory'),
                                  (['none.dbf', 'a.db'], 'none.dbf: No such file or directory')]:
            self.check_failure(['verify', *arguments], reason)
        result = self.verify('--table', 'nowhere')
        self.assertEqual(result.code, 1)
        self.assertIn('nowhere', result.err)
        self.assertEqual(self.files(), ['a.db', 'clients.dbf', 'clients.dbt'])


if __name__ == '__main__':
    unittest.main()
