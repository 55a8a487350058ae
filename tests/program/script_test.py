"""script: its output, and the path of the output."""
import os
import unittest

from support import ProgramTest, content, make_data, sample, table, write

MEMBERS_DEFINITION = '''\
DROP TABLE IF EXISTS members;
CREATE TABLE IF NOT EXISTS members (
{key}id integer,
name char(14),
joined date,
fee integer
);
'''

MEMBERS_RECORDS = '''\
INSERT INTO members(id,name,joined,fee) 
 VALUES (101,'Ada Quill','2019-04-01',24.00);
INSERT INTO members(id,name,joined,fee) 
 VALUES (102,'Ben Osier','2020-11-15',18.50);
INSERT INTO members(id,name,joined,fee) 
 VALUES (103,'Cleo Marsh','2022-06-30',31.75);
'''


class Script(ProgramTest):
    def test_script_is_in_the_tables_folder_and_its_path_is_printed(self):
        os.mkdir('deep')
        write('deep/members.dbf', make_data.MEMBERS)
        self.check(['script', 'deep/members.dbf'], 'deep/members.sql\n', 'Table: deep/members.dbf\n')
        self.assertEqual(content('deep/members.sql').decode(), MEMBERS_DEFINITION.format(key='') + MEMBERS_RECORDS)
        self.assertEqual(sorted(os.listdir('deep')), ['members.dbf', 'members.sql'])

    def test_definition_only(self):
        sample('members.dbf')
        self.check(['script', 'members.dbf', '--definition-only'], 'members.sql\n', 'Table: members.dbf\n')
        self.assertEqual(content('members.sql').decode(), MEMBERS_DEFINITION.format(key=''))

    def test_a_header_that_does_not_fit_the_file_is_refused(self):
        whole = table([])
        for size, reason in [(31, "the file is too short for a table's header"),
                             (len(whole) - 2, "the header's length does not fit the file")]:
            write('e.dbf', whole[:size])
            self.check_failure(['script', 'e.dbf'], f'e.dbf: {reason}', 'Table: e.dbf\n')

    def test_table_without_records_may_end_with_its_header(self):
        whole = table([])
        for size in [len(whole) - 1, len(whole)]:
            write('e.dbf', whole[:size])
            self.check(['script', 'e.dbf'], 'e.sql\n', 'Table: e.dbf\n')
            self.assertEqual(content('e.sql'), b'DROP TABLE IF EXISTS e;\nCREATE TABLE IF NOT EXISTS e (\n'
                                               b'name char(6),\ncount integer\n);\n')

    def test_key_column(self):
        sample('members.dbf')
        self.check(['script', 'members.dbf', '--key', 'nr'], 'members.sql\n', 'Table: members.dbf\n')
        key = 'nr INTEGER  PRIMARY KEY AUTOINCREMENT,\n'
        self.assertEqual(content('members.sql').decode(), MEMBERS_DEFINITION.format(key=key) + MEMBERS_RECORDS)

    def test_existing_script_is_replaced(self):
        sample('members.dbf')
        write('members.sql', 'x' * 100000)
        self.check(['script', 'members.dbf', '--definition-only'], 'members.sql\n', 'Table: members.dbf\n')
        self.assertEqual(content('members.sql').decode(), MEMBERS_DEFINITION.format(key=''))

    def test_script_has_the_rights_of_an_ordinary_new_file(self):
        sample('members.dbf')
        before = os.umask(0o027)
        self.addCleanup(os.umask, before)
        self.run_program('script', 'members.dbf')
        self.assertEqual(os.stat('members.sql').st_mode & 0o777, 0o640)

    def test_script_keeps_the_rights_and_the_link_of_the_existing_one(self):
        sample('members.dbf')
        write('real.sql', 'before')
        os.chmod('real.sql', 0o600)
        os.symlink('real.sql', 'members.sql')
        self.assertEqual(self.run_program('script', 'members.dbf').code, 0)
        self.assertTrue(os.path.islink('members.sql'))
        self.assertEqual(content('real.sql').decode(), MEMBERS_DEFINITION.format(key='') + MEMBERS_RECORDS)
        self.assertEqual(os.stat('real.sql').st_mode & 0o777, 0o600)

    @unittest.skipUnless(os.geteuid() == 0, 'only root gives files away')
    def test_script_keeps_the_owner_of_the_existing_one(self):
        sample('members.dbf')
        write('members.sql', 'before')
        os.chown('members.sql', 65534, 65534)
        os.chmod('members.sql', 0o600)
        self.assertEqual(self.run_program('script', 'members.dbf').code, 0)
        status = os.stat('members.sql')
        self.assertEqual((status.st_uid, status.st_gid, status.st_mode & 0o777), (65534, 65534, 0o600))

    def test_names_of_any_length(self):
        for length in [200, 244, 245, 251]:
            with self.subTest(length):
                name = 'n' * length
                write(name + '.dbf', make_data.MEMBERS)
                self.check(['script', name + '.dbf'], name + '.sql\n', f'Table: {name}.dbf\n')

    def test_quiet(self):
        self.check(['script', sample('stock.dbf'), '-q'], 'stock.sql\n')

    def test_missing_and_unreadable_tables(self):
        os.symlink('loop.dbf', 'loop.dbf')
        os.mkdir('folder.dbf')
        os.mkfifo('pipe.dbf')
        for name, reason in [('none.dbf', 'No such file or directory'), ('folder.dbf', 'Is a directory'),
                             ('pipe.dbf', 'is not a regular file'), ('loop.dbf', 'Too many levels of symbolic links')]:
            with self.subTest(name):
                self.check_failure(['script', name], f'{name}: {reason}')

    def test_deleted_record_repeats_the_previous_one_and_is_reported(self):
        sample('stock.dbf')
        self.check(['script', 'stock.dbf'], 'stock.sql\n',
                   'Table: stock.dbf\n'
                   'stock.dbf: 1 deleted record; for each, the script repeats the record before it\n')
        self.assertEqual(content('stock.sql').decode().count('Painter`s ladder'), 2)

    def test_date_too_short_for_sql_names_its_record(self):
        write('d.dbf', table([['20240305'], ['2024']], [('DAY', 'D', 8, 0)]))
        self.check_failure(['script', 'd.dbf'], 'd.dbf: record 2 holds a date that is too short for SQL',
                           'Table: d.dbf\n')
        self.assertEqual(os.listdir('.'), ['d.dbf'])

    def test_existing_script_stays_when_the_new_one_fails(self):
        write('d.dbf', table([['2024']], [('DAY', 'D', 8, 0)]))
        write('d.sql', 'precious')
        self.assertEqual(self.run_program('script', 'd.dbf').code, 1)
        self.assertEqual(content('d.sql').decode(), 'precious')

    def test_folder_in_the_place_of_the_script(self):
        sample('members.dbf')
        os.mkdir('members.sql')
        self.check_failure(['script', 'members.dbf'], 'members.sql: Is a directory', 'Table: members.dbf\n')
        self.assertEqual(sorted(os.listdir('.')), ['members.dbf', 'members.sql'])


if __name__ == '__main__':
    unittest.main()
