"""Completions: the program's candidates, and their use in bash, zsh and fish."""
import os
import re
import shutil
import subprocess
import time
import unittest

from pseudoterminal import PATIENCE, Terminal
from support import PROGRAM, SANITIZED, ProgramTest, make_data, sample, write

COMPLETIONS = os.path.join(os.environ['KD_SOURCE'], 'tools', 'kd_db', 'completions')
COMMANDS = ['show', 'list', 'convert', 'load', 'query', 'verify', 'inspect', 'import', 'memory', 'script']

# Lines before the key for completion, and after it.
AT_PROMPT = [('kd_db conv', 'kd_db convert'),
             ('kd_db show CI', 'kd_db show CITIES.CSV'),
             ('kd_db list members.dbf --select ID,J', 'kd_db list members.dbf --select ID,JOINED'),
             ('kd_db load x.dbf --into=m.d', 'kd_db load x.dbf --into=m.db'),
             ('kd_db query m.db "SELECT id FROM mem', 'kd_db query m.db "SELECT id FROM members'),
             ('kd_db query members.dbf "SELECT joi', 'kd_db query members.dbf "SELECT join')]


class Offers(ProgramTest):
    """The program's candidates for the shells' files."""

    def options_of(self, command):
        return sorted(re.findall(r'^  (?:-\w, )?(--[\w-]+)', self.run_program(command, '--help').out, re.M))

    def complete(self, *words):
        """The candidates and directives for the last word."""
        result = self.run_program('__complete', *words)
        # The program may end in a signal handler, where a sanitizer prints what it does not know.
        self.assertEqual((result.code, '' if SANITIZED else result.err), (0, ''))
        return [line.split('\t')[0] for line in result.out.splitlines()]

    def check_names(self, words, names):
        """As `complete`, but tries again: names are missing if the machine is too busy to read them in time."""
        deadline = time.monotonic() + PATIENCE
        found = self.complete(*words)
        while names and not found and time.monotonic() < deadline:
            found = self.complete(*words)
        self.assertEqual(found, names)

    def test_commands_and_options(self):
        self.assertEqual(self.complete(''), [*COMMANDS, 'help', '--help', '--version'])
        self.assertEqual(self.complete('l'), ['list', 'load'])
        for command in COMMANDS:
            self.assertEqual(sorted(self.complete(command, '--')), self.options_of(command))
        self.assertEqual(self.complete('nothing', ''), [])

    def test_values(self):
        self.assertEqual(self.complete('list', '--deleted', ''), ['skip', 'keep', 'mark'])
        self.assertEqual(self.complete('list', '--deleted=k'), ['--deleted=keep'])
        self.assertEqual(self.complete('list', '--deleted', '=', 'k'), ['keep'])
        self.assertEqual(self.complete('load', 'a.dbf', '--into', ''), [':files'])

    def test_files_that_a_command_reads(self):
        tables = [':files dbf csv tsv tab txt mem']
        for command in ['show', 'list', 'convert', 'load']:
            self.assertEqual((command, self.complete(command, '')), (command, tables))
        self.assertEqual(self.complete('inspect', ''), [':files dbf dbt fpt mem'])
        self.assertEqual(self.complete('memory', ''), [':files mem'])
        self.assertEqual(self.complete('script', ''), [':files dbf'])
        self.assertEqual(self.complete('import', ''), [':files'])
        self.assertEqual(self.complete('query', ''), [':files'])
        self.assertEqual(self.complete('query', 'a.csv', ''), ['SELECT ', ':files'])
        self.assertEqual(self.complete('verify', ''), tables)
        self.assertEqual(self.complete('verify', 'a.csv', ''), [':files'])

    def test_columns_of_the_file(self):
        sample('members.dbf')
        self.check_names(['list', 'members.dbf', '--select', ''], ['ID', 'NAME', 'JOINED', 'FEE'])
        self.check_names(['list', 'members.dbf', '--select=ID,J'], ['--select=ID,JOINED'])
        self.check_names(['list', 'members.dbf', '--type', 'F'], ['FEE='])
        self.check_names(['list', 'none.dbf', '--select', ''], [])

    def test_columns_after_the_options_before_them(self):
        sample('parts.txt')
        write('a', 'x;y\n1;2\n')
        self.check_names(['list', 'parts.txt', '--columns', 'kind:6-12,size:13-20', '--select', ''], ['kind', 'size'])
        self.check_names(['list', '--from', '=', 'csv', 'a', '--delimiter=;', '--select', ''], ['x', 'y'])
        self.check_names(['list', '--from=csv', 'a', '--delimiter', ';', '--select', '=', ''], ['x', 'y'])

    def test_tables_of_the_database(self):
        sample('members.dbf', 'cities.csv')
        self.run_program('load', 'members.dbf', 'cities.csv', '--into', 'm.db')
        self.check_names(['load', 'x.dbf', '--into', 'm.db', '--append', '--table', ''], ['members', 'cities'])
        self.check_names(['verify', 'cities.csv', 'm.db', '--table=c'], ['--table=cities'])

    def test_sql_of_a_database(self):
        self.run_program('import', write('s.sql', 'CREATE TABLE Box(id, "limit", [two words]); '
                                                  'CREATE VIEW heavy AS SELECT id AS weight FROM Box;'), '--into', 'm.db')
        before = self.files()
        self.check_names(['query', 'm.db', 'SELECT '], [f'SELECT {name}' for name in
                                                        ['id', '[limit]', '[two words]', 'weight', 'Box', 'heavy']])
        self.check_names(['query', 'm.db', 'SELECT id FROM '], ['SELECT id FROM Box', 'SELECT id FROM heavy'])
        self.check_names(['query', 'm.db', 'SELECT heavy.'], ['SELECT heavy.weight'])
        self.check_names(['query', 'm.db', 'select id fr'], ['select id from'])
        self.check_names(['query', 'm.db', "SELECT 'fr"], [])
        self.assertEqual(self.files(), before)

    def test_names_in_sql_are_in_brackets_if_they_must_be(self):
        plain = ['a', 'Z9', '_', 'n0', 'Straße', 'azAZ']
        others = ['9a', 'a-b', 'a.b', 'select', '@', 'a{', 'a`', 'a:', 'a/', '']
        columns = ', '.join(f'"{name}"' for name in plain + others)
        self.run_program('import', write('s.sql', f'CREATE TABLE t({columns})'.encode()), '--into', 'm.db')
        names = [name.encode().decode('latin-1') for name in plain] + [f'[{name}]' for name in others]
        self.check_names(['query', 'm.db', 'SELECT t.'], [f'SELECT t.{name}' for name in names])

    def test_sql_of_files(self):
        os.mkdir('old')
        sample('members.dbf', 'orders.dbf')
        os.rename('orders.dbf', 'old/orders.dbf')
        self.check_names(['query', 'members.dbf', 'old', 'SELECT number FROM o'], ['SELECT number FROM orders'])
        self.check_names(['query', 'members.dbf', 'SELECT jo'], ['SELECT joined', 'SELECT join'])
        self.assertEqual(self.complete('query', 'members.dbf', 'S'), ['SELECT ', ':files'])

    def test_what_takes_long_is_left_out(self):
        os.mkfifo('pipe.dbf')
        write('huge.csv', 'x' * 1000000 + ',')
        with open('huge.csv', 'ab') as file:
            file.write(b'y,' * 30000000)
        for words in [['list', 'pipe.dbf', '--select', ''], ['query', 'pipe.dbf', 'SELECT '],
                      ['query', 'postgresql://nobody@127.0.0.1/nothing', 'SELECT ']]:
            self.assertEqual(self.complete(*words), [])
        begin = time.monotonic()
        self.assertEqual(self.complete('list', 'huge.csv', '--select', ''), [])
        self.assertLess(time.monotonic() - begin, PATIENCE / 6)


class InShells(ProgramTest):
    """The completion files in their shells."""

    def setUp(self):
        super().setUp()
        sample('members.dbf', 'settings.mem', 'orders.dbf')
        write('CITIES.CSV', make_data.FILES['cities.csv'])
        write('two words.csv', 'x,y\n')
        self.run_program('load', 'members.dbf', 'orders.dbf', '--into', 'm.db')
        os.mkdir('bin')
        os.symlink(PROGRAM, 'bin/kd_db')
        self.environment = {**os.environ, 'PATH': os.path.abspath('bin') + ':' + os.environ['PATH'],
                            'HOME': self.folder, 'LC_ALL': 'C.UTF-8'}

    def complete_in_bash(self, *words):
        script = ('source "$1"; shift; COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); _kd_db; '
                  'printf "%s\\n" "${COMPREPLY[@]}"')
        done = subprocess.run(['bash', '-c', script, 'bash', os.path.join(COMPLETIONS, 'kd_db.bash'), 'kd_db', *words],
                              capture_output=True, text=True, check=True, env=self.environment)
        self.assertEqual(done.stderr, '')
        return sorted(done.stdout.splitlines())

    def complete_in_fish(self, line):
        done = subprocess.run(['fish', '--no-config', '-c', 'source $argv[1]; complete -C $argv[2]',
                               os.path.join(COMPLETIONS, 'kd_db.fish'), line],
                              capture_output=True, text=True, check=True, env=self.environment)
        return sorted(candidate.split('\t')[0] for candidate in done.stdout.splitlines())

    def test_bash_gets_commands_options_and_fitting_files(self):
        self.assertEqual(self.complete_in_bash('lo'), ['load'])
        self.assertEqual(self.complete_in_bash('script', 'm'), ['members.dbf'])
        self.assertEqual(self.complete_in_bash('memory', 's'), ['settings.mem'])
        self.assertEqual(self.complete_in_bash('show', 'C'), ['CITIES.CSV'])
        self.assertEqual(self.complete_in_bash('load', 'members.dbf', '--into', '=', 'm.'), ['m.db'])

    def test_bash_gets_names(self):
        for words, found in [(['list', '"two words.csv"', '--select', ''], ['x', 'y']),
                             (['list', 'two\\ words.csv', '--select', ''], ['x', 'y']),
                             (['list', '~/members.dbf', '--select', 'N'], ['NAME']),
                             (['query', 'm.db', '"SELECT id FROM mem'],
                              ['SELECT id FROM members', 'SELECT id FROM members '])]:
            with self.subTest(words):
                self.check_within_patience(lambda: self.complete_in_bash(*words), found)

    def check_within_patience(self, complete, found):
        """If the machine is busy, names may come only at a later attempt."""
        deadline = time.monotonic() + PATIENCE / 3
        while (now := complete()) != found and time.monotonic() < deadline:
            pass
        self.assertEqual(now, found)

    @unittest.skipUnless(shutil.which('fish'), 'fish is not here')
    def test_fish_completes(self):
        for line, found in [('kd_db lo', ['load']), ('kd_db script ', ['bin/', 'members.dbf', 'orders.dbf']),
                            ('kd_db show C', ['CITIES.CSV']), ('kd_db load members.dbf --into=m.', ['--into=m.db']),
                            ('kd_db list --deleted=k', ['--deleted=keep']),
                            ('kd_db list "two words.csv" --select ', ['x', 'y']),
                            ('kd_db query m.db "SELECT id FROM mem', ['SELECT id FROM members'])]:
            with self.subTest(line):
                self.check_within_patience(lambda: self.complete_in_fish(line), found)

    def complete_at_prompt(self, shell, setting, line):
        """The line after the key for completion, in a shell at a terminal; the key ^X^L shows it."""
        terminal = Terminal(*shell, columns=200, environment=self.environment)
        try:
            write('setting', setting + '\nPS1="re""ady> "\n')
            terminal.send(b'. ./setting\n')
            terminal.read('ready> ')
            terminal.send(line.encode() + b'\t\x18\x0c')
            return re.findall(r'<<(.*)>>', terminal.read('>>'))[-1]
        finally:
            terminal.close()

    @unittest.skipUnless(shutil.which('zsh'), 'zsh is not here')
    def test_zsh_completes_at_its_prompt(self):
        setting = (f'fpath=({COMPLETIONS} $fpath); autoload -U compinit; compinit -u -D; '
                   "show() { print -r -- \"<<$BUFFER>>\" }; zle -N show; bindkey '^X^L' show")
        for line, completed in AT_PROMPT:
            with self.subTest(line):
                self.check_within_patience(
                    lambda: self.complete_at_prompt(['zsh', '-f', '-i'], setting, line).rstrip(' "'), completed)

    def test_bash_completes_at_its_prompt(self):
        setting = (f'. {COMPLETIONS}/kd_db.bash; set -o emacs; bind -x \'"\\C-x\\C-l": echo "<<$READLINE_LINE>>"\'')
        for line, completed in AT_PROMPT:
            with self.subTest(line):
                self.check_within_patience(
                    lambda: self.complete_at_prompt(['bash', '--norc', '-i'], setting, line).rstrip(), completed)


if __name__ == '__main__':
    unittest.main()
