"""The manual page knows exactly the commands and options of --help; the completions come from the program."""
import os
import re
import shutil
import subprocess
import unittest

from support import PROGRAM, ProgramTest, sample

SOURCE = os.environ['KD_SOURCE']
COMPLETIONS = os.path.join(SOURCE, 'tools', 'kd_db', 'completions')
COMMANDS = ['show', 'list', 'convert', 'load', 'query', 'verify', 'inspect', 'import', 'memory', 'script']


class Console(ProgramTest):
    def options_of(self, command):
        return sorted(re.findall(r'^  (?:-\w, )?(--[\w-]+)', self.run_program(command, '--help').out, re.M))

    def complete(self, *words):
        """The candidates and directives for the last word."""
        result = self.run_program('__complete', *words)
        self.assertEqual((result.code, result.err), (0, ''))
        return [line.split('\t')[0] for line in result.out.splitlines()]

    def test_manual_page_names_every_option_of_every_command_and_no_other(self):
        with open(os.path.join(SOURCE, 'docs', 'kd_db.1'), encoding='utf-8') as file:
            page = file.read()
        synopsis = page.split('.Sh SYNOPSIS')[1].split('.Sh')[0]
        all_options = {'version'}
        for command in COMMANDS:
            with self.subTest(command):
                part = re.search(rf'\.Cm {command}\n(.*?)(?:\.Nm|\Z)', synopsis, re.S).group(1)
                options = {option[2:] for option in self.options_of(command)}
                self.assertEqual(set(re.findall(r'Fl -([\w-]+)', part)), options - {'help'})
                all_options |= options
        self.assertEqual(set(re.findall(r'^\.It Fl (?:\w , )?-([\w-]+)', page, re.M)), all_options)
        self.assertEqual(re.findall(r'^\.It Cm (\w+)', page, re.M), COMMANDS)

    @unittest.skipUnless(shutil.which('mandoc'), 'mandoc is not here')
    def test_manual_page_is_clean(self):
        done = subprocess.run(['mandoc', '-Tlint', os.path.join(SOURCE, 'docs', 'kd_db.1')], capture_output=True)
        self.assertEqual((done.returncode, done.stdout), (0, b''))

    def test_commands_and_options_are_completed(self):
        self.assertEqual(self.complete(''), [*COMMANDS, 'help', '--help', '--version'])
        self.assertEqual(self.complete('l'), ['list', 'load'])
        for command in COMMANDS:
            self.assertEqual(sorted(self.complete(command, '--')), self.options_of(command))
        self.assertEqual(self.complete('nothing', ''), [])

    def test_values_are_completed(self):
        self.assertEqual(self.complete('list', '--deleted', ''), ['skip', 'keep', 'mark'])
        self.assertEqual(self.complete('list', '--deleted=k'), ['--deleted=keep'])
        self.assertEqual(self.complete('list', '--deleted', '=', 'k'), ['keep'])
        self.assertEqual(self.complete('load', 'a.dbf', '--into', ''), [':files'])

    def test_columns_are_completed_from_the_file(self):
        sample('members.dbf')
        self.assertEqual(self.complete('list', 'members.dbf', '--select', ''), ['ID', 'NAME', 'JOINED', 'FEE'])
        self.assertEqual(self.complete('list', 'members.dbf', '--select', 'ID,J'), ['ID,JOINED'])
        self.assertEqual(self.complete('list', 'members.dbf', '--type', 'F'), ['FEE='])
        self.assertEqual(self.complete('list', 'none.dbf', '--select', ''), [])

    def complete_in_bash(self, *words):
        os.makedirs('bin', exist_ok=True)
        if not os.path.exists('bin/kd_db'):
            os.symlink(PROGRAM, 'bin/kd_db')
        script = ('source "$1"; shift; COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); _kd_db; '
                  'printf "%s\\n" "${COMPREPLY[@]}"')
        done = subprocess.run(['bash', '-c', script, 'bash', os.path.join(COMPLETIONS, 'kd_db.bash'), 'kd_db', *words],
                              capture_output=True, text=True, check=True,
                              env={**os.environ, 'PATH': 'bin:' + os.environ['PATH']})
        self.assertEqual(done.stderr, '')
        return sorted(done.stdout.split())

    def test_bash_completes_commands_options_and_fitting_files(self):
        sample('members.dbf', 'settings.mem', 'cities.csv')
        os.rename('cities.csv', 'CITIES.CSV')
        self.assertEqual(self.complete_in_bash('lo'), ['load'])
        self.assertEqual(self.complete_in_bash('script', 'm'), ['members.dbf'])
        self.assertEqual(self.complete_in_bash('memory', 's'), ['settings.mem'])
        self.assertEqual(self.complete_in_bash('show', 'C'), ['CITIES.CSV'])
        self.assertEqual(self.complete_in_bash('load', 'members.dbf', '--into', '=', 'm'), ['members.dbf'])

    @unittest.skipUnless(shutil.which('zsh'), 'zsh is not here')
    def test_zsh_reads_its_file(self):
        done = subprocess.run(['zsh', '-n', os.path.join(COMPLETIONS, '_kd_db')], capture_output=True)
        self.assertEqual((done.returncode, done.stderr), (0, b''))

    @unittest.skipUnless(shutil.which('fish'), 'fish is not here')
    def test_fish_reads_its_file(self):
        done = subprocess.run(['fish', '-n', os.path.join(COMPLETIONS, 'kd_db.fish')], capture_output=True)
        self.assertEqual((done.returncode, done.stderr), (0, b''))


if __name__ == '__main__':
    unittest.main()
