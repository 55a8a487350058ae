"""Help, version and wrong usage."""
import os
import shlex
import unittest

from support import ProgramTest, hint, make_data, sample, write

COMMANDS = ['show', 'list', 'convert', 'load', 'query', 'verify', 'inspect', 'import', 'memory', 'script']

WRONG = [
    ([], 'a command is missing'),
    ([''], 'a command is missing'),
    (['shwo'], 'unknown command "shwo"; did you mean "show"?'),
    (['dance'], 'unknown command "dance"'),
    (['--loud'], 'unknown option "--loud"; options follow the command'),
    (['-q', 'list'], 'unknown option "-q"; options follow the command'),
    (['hepl'], 'unknown command "hepl"; did you mean "help"?'),
    (['help', 'lst'], 'unknown command "lst"; did you mean "list"?'),
    (['help', 'list', 'load'], 'unexpected argument "load"'),
]

WRONG_ARGUMENTS = [
    (['show'], 'FILE is missing'),
    (['list', 'a.dbf', 'b.dbf'], 'unexpected argument "b.dbf"'),
    (['show', '--loud', 'a.dbf'], 'unknown option "--loud"'),
    (['load', 'a.dbf', '--intoo', 'a.db'], 'unknown option "--intoo"; did you mean "--into"?'),
    (['load', 'a.dbf'], '--into is missing'),
    (['import', 'a.sql'], '--into is missing'),
    (['convert', 'a.dbf'], '--to is missing'),
    (['convert', 'a.dbf', '--to', 'xml'], '--to: "xml" is not one of sqlite, postgresql, mysql, csv, jsonl'),
    (['convert', 'a.dbf', '--to', 'csv', '--key', 'id'], '--key is not for --to csv'),
    (['convert', 'a.dbf', '--to', 'jsonl', '--key', 'id'], '--key is not for --to jsonl'),
    (['convert', 'a.dbf', '--to', 'mysql', '--inserts'], '--inserts is for --to postgresql'),
    (['query', 'a.db'], 'SQL is missing'),
    (['verify', 'a.dbf'], 'DATABASE is missing'),
    (['script', 'a.csv'], 'a.csv: script takes .dbf files'),
    (['list', '-'], 'standard input needs --from'),
    (['load', '-', '--from', 'csv', '--into', 'a.db'], 'standard input needs --table'),
    (['convert', '-', '--from', 'csv', '--to', 'mysql'], 'standard input needs --table'),
    (['load', 'a.csv', 'b.csv', '--into', 'a.db', '--table', 't'],
     '--table names one table; several files need --append with it'),
    (['load', 'a.csv', '--into', 'a.db', '--append', '--replace'],
     '--replace: --append and --replace exclude each other'),
    (['list', 'a.csv', '--rejects', '-'], '--rejects and the result cannot both go to standard output'),
]


class Usage(ProgramTest):
    def test_wrong_usage_is_one_line_and_a_hint_with_status_2(self):
        for arguments, line in WRONG:
            with self.subTest(arguments):
                self.check(arguments, '', f'kd_db: {line}\n{hint()}', 2)

    def test_wrong_arguments_hint_at_the_help_of_the_command(self):
        for arguments, line in WRONG_ARGUMENTS:
            with self.subTest(arguments):
                self.check_usage(arguments, line)

    def test_version_goes_to_standard_output(self):
        self.check(['--version'], 'kd_db 1.1\n')

    def test_help_goes_to_standard_output_within_80_columns(self):
        for arguments in [['--help'], ['-h'], ['help']] + [[command, '--help'] for command in COMMANDS]:
            with self.subTest(arguments):
                code, out, err = self.run_program(*arguments)
                self.assertEqual((code, err), (0, ''))
                lines = out.split('Examples:')[0].splitlines()
                self.assertLessEqual(max(map(len, lines)), 80)

    def test_help_names_every_command_and_the_exit_statuses(self):
        out = self.run_program('--help').out
        for command in COMMANDS:
            self.assertRegex(out, rf'\n  {command} ')
        self.assertIn('Examples:\n  kd_db ', out)
        self.assertIn('Exit status: 0 done', out)

    def test_help_is_that_of_the_file(self):
        """help.txt has the help of the program and of each command, for whoever reviews a change of it."""
        shown = ''.join(f"$ kd_db {' '.join(arguments)}\n{self.run_program(*arguments).out}\n"
                        for arguments in [['--help'], *([command, '--help'] for command in COMMANDS)])
        with open(os.path.join(os.path.dirname(__file__), 'help.txt'), encoding='utf-8') as file:
            self.assertEqual(file.read(), shown)

    def test_help_of_a_command_has_two_ways(self):
        for command in COMMANDS:
            with self.subTest(command):
                long = self.run_program(command, '--help').out
                self.assertEqual(self.run_program('help', command).out, long)
                self.assertEqual(self.run_program(command, '-h').out, long)
                self.assertTrue(long.startswith(f'Usage: kd_db {command} [OPTION]... '))

    def test_help_wins_over_missing_arguments(self):
        self.assertEqual(self.run_program('load', '--help').code, 0)

    def test_file_name_that_begins_with_a_dash_follows_two_dashes(self):
        write('-a.csv', 'x,y\n1,2\n')
        self.check(['list', '-q', '--', '-a.csv'], 'x  y\n-  -\n1  2\n')


class Examples(ProgramTest):
    """Every command of every help and of the manual page runs, one after the other in one folder, on the sample files."""

    def setUp(self):
        super().setUp()
        for name in make_data.FILES:
            sample(name)

    def check_run(self, example):
        with self.subTest(example):
            words = shlex.split(example)
            self.assertEqual(words[0], 'kd_db')
            result = self.run_program(*words[1:])
            self.assertEqual(result.code, 0, result.err)

    def test_examples_of_help_run(self):
        for page in [['--help']] + [[command, '--help'] for command in COMMANDS]:
            examples = self.run_program(*page).out.split('Examples:\n')[1].split('\n\n')[0].splitlines()
            self.assertGreaterEqual(len(examples), 2, page)
            for example in examples:
                self.check_run(example)

    def test_examples_of_the_manual_page_run(self):
        with open(os.path.join(os.environ['KD_SOURCE'], 'docs', 'kd_db.1'), encoding='utf-8') as file:
            section = file.read().split('.Sh EXAMPLES\n')[1].split('.Sh ')[0]
        examples = [line for line in section.splitlines() if not line.startswith('.')]
        self.assertGreaterEqual(len(examples), 5)
        for example in examples:
            self.check_run(example)


if __name__ == '__main__':
    unittest.main()
