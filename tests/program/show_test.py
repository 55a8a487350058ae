"""show: the description of a file."""
import unittest

from support import ProgramTest, make_data, sample, table, write


class Show(ProgramTest):
    def shown(self, *arguments, code=0):
        result = self.run_program('show', *arguments)
        self.assertEqual((result.code, result.err), (code, ''), result.err)
        return result.out

    def test_xbase_table(self):
        sample('clients.dbf', 'clients.dbt')
        out = self.shown('clients.dbf')
        self.assertTrue(out.startswith('clients.dbf\nkind           dBase III'))
        for line in ['records        5\n', 'deleted        1\n', 'last change    2024-03-05\n',
                     'code page      CP1252 (language byte 03)\n', 'memo file      clients.dbt',
                     '\ncolumn  type     letter  length  decimals\n------  -------  ------  ------  --------\n'
                     'ID      number   N            4\n', 'LIMIT   number   N            9         2\n']:
            self.assertIn(line, out)

    def test_code_page_is_reported_once(self):
        write('a.csv', 'name\nK\xf6ln\n')
        for file, page in [(sample('clients.dbf', 'clients.dbt'), 'CP1252'), ('a.csv', 'CP850')]:
            self.assertEqual(self.shown(file, *([] if file == 'clients.dbf' else ['--encoding', '850'])).count(page), 1)

    def test_missing_memo_file_is_a_loss(self):
        sample('clients.dbf')
        out = self.shown('clients.dbf', code=3)
        self.assertIn('clients.dbt is missing', out)
        self.assertIn('\nnot whole: ', out)

    def test_values_that_would_not_be_carried_are_reported(self):
        write('bad.dbf', table([['r1c1', '?'], ['r2c1', '2'], ['r3c1', '?']]))
        self.assertRegex(self.shown('bad.dbf', code=3), r'\nnot whole: column COUNT: 2 cells [^\n]*record 1')

    def test_delimited_text(self):
        sample('cities.csv')
        out = self.shown('cities.csv', '--infer')
        for line in ['cities.csv\nkind           delimited text\n', 'records        3\n',
                     '\ncolumn   type\n-------  -------\nCity     text\nCountry  text\nFounded  integer\n']:
            self.assertIn(line, out)

    def test_other_delimiter_is_noticed(self):
        write('a.csv', 'a;b\n1;2\n')
        self.assertRegex(self.shown('a.csv'), "\nnote: [^\n]*';'")

    def test_fixed_columns_and_memory_file(self):
        sample('parts.txt', 'settings.mem')
        self.assertIn('kind', self.shown('parts.txt', '--columns', 'kind:6-12,size:13-20'))
        self.assertIn('records        4\n', self.shown('settings.mem'))

    def test_several_files_and_a_missing_one(self):
        sample('members.dbf', 'cities.csv')
        result = self.run_program('show', 'members.dbf', 'none.dbf', 'cities.csv')
        self.assertEqual((result.code, result.err), (1, 'kd_db: none.dbf: No such file or directory\n'))
        self.assertIn('\n\ncities.csv\n', result.out)

    def test_control_bytes_of_names_are_shown(self):
        write('a.csv', 'x\x1b[2Jy\n1\n')
        self.assertIn('x\\x1b[2Jy', self.shown('a.csv'))

    def test_extension_alone_is_a_name_too(self):
        write('.dbf', make_data.MEMBERS)
        self.assertEqual(self.run_program('show', '.dbf', '--from', 'dbf').code, 0)


class Hints(ProgramTest):
    def test_unknown_kind(self):
        for name in ['noext', 'a.dat']:
            write(name, make_data.MEMBERS)
            self.check_usage(['list', name],
                             f'{name}: its extension does not determine its kind; use --from dbf|csv|tsv|fixed|mem')
        self.check_usage(['list', sample('parts.txt')],
                         'parts.txt: fixed columns are given by --columns; --from csv reads delimited text')

    def test_missing_file_is_missing_before_its_extension_is_wrong(self):
        for command in ['list', 'convert', 'load', 'verify', 'show']:
            arguments = {'convert': ['--to', 'csv'], 'load': ['--into', 'x.db'], 'verify': ['x.db']}.get(command, [])
            for name in ['none', 'none.dat', 'none.dbf', 'none.txt']:
                self.check_failure([command, name, *arguments], f'{name}: No such file or directory')

    def test_database_that_is_a_table(self):
        write('a.dat', make_data.MEMBERS)
        self.check_failure(['query', 'a.dat', 'SELECT * FROM a'],
                           'a.dat: file is not a database; --from reads it as a table')


if __name__ == '__main__':
    unittest.main()
