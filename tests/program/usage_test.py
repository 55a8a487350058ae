"""Help, version and wrong usage."""
import unittest

from support import HINT, ProgramTest, sample, write

COMMANDS = ['show', 'list', 'script', 'load', 'import', 'query', 'memory']

WRONG = [
    ([], 'A subcommand is required'),
    (['dance'], 'A subcommand is required'),
    (['show'], 'FILE is required'),
    (['show', 'a.dbf', 'b.dbf'], 'The following argument was not expected: b.dbf'),
    (['show', '--loud', 'a.dbf'], 'The following argument was not expected: --loud'),
    (['load', 'a.dbf'], '--into is required'),
    (['import', 'a.sql'], '--into is required'),
    (['query', 'a.db'], 'SQL is required'),
    (['memory', 'a.dbf'], 'a.dbf: the file must end in .mem'),
    (['script', 'a.csv'], 'a.csv: the file must end in .dbf'),
    (['show', 'a.xls'], 'a.xls: the file must end in .dbf, .csv, .tab, .tsv or .txt'),
    (['show', 'dbf'], 'dbf: the file must end in .dbf, .csv, .tab, .tsv or .txt'),
    (['show', 'a.dbf/b'], 'a.dbf/b: the file must end in .dbf, .csv, .tab, .tsv or .txt'),
    (['show', 'a.txt'], 'a.txt: a .txt file needs --columns'),
    (['list', 'a.dbf', '--columns', '5|12'], 'a.dbf: --columns is for .txt files'),
    (['list', 'a.dbf', '--unquote'], 'a.dbf: --unquote is for .csv, .tab and .tsv files'),
]


class Usage(ProgramTest):
    def test_wrong_usage_is_one_line_and_a_hint_with_exit_code_2(self):
        for arguments, line in WRONG:
            with self.subTest(arguments):
                self.check(arguments, '', f'kd_db: {line}\n{HINT}', 2)

    def test_deleted_is_for_xbase_tables(self):
        sample('cities.csv')
        self.check(['list', 'cities.csv', '--deleted'], '',
                   f'Table: cities.csv\nkd_db: cities.csv: --deleted is for .dbf files\n{HINT}', 2)

    def test_version_goes_to_standard_output(self):
        self.check(['--version'], 'kd_db 1.1\n')

    def test_help_goes_to_standard_output_within_80_columns(self):
        for arguments in [['--help']] + [[command, '--help'] for command in COMMANDS]:
            with self.subTest(arguments):
                code, out, err = self.run_program(*arguments)
                self.assertEqual((code, err), (0, ''))
                self.assertLessEqual(max(map(len, out.splitlines())), 80)

    def test_help_names_every_command_and_shows_examples(self):
        out = self.run_program('--help').out
        for command in COMMANDS:
            self.assertRegex(out, rf'\n  {command} ')
        self.assertIn('Examples:\n  kd_db ', out)
        self.assertIn('Exit codes: 0 done', out)

    def test_file_name_that_begins_with_a_dash_stands_behind_two_dashes(self):
        write('-a.csv', 'x,y\n1,2\n')
        self.check(['list', '--', '-a.csv'], 'x\ty\n1\t2\n', 'Table: -a.csv\n')


if __name__ == '__main__':
    unittest.main()
