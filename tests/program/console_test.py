"""The manual page and the completions know exactly the commands and options of --help."""
import os
import re
import shutil
import subprocess
import unittest

from support import ProgramTest, sample

SOURCE = os.environ['KD_SOURCE']
COMPLETIONS = os.path.join(SOURCE, 'tools', 'kd_db', 'completions')


def text(*path):
    with open(os.path.join(SOURCE, *path), encoding='utf-8') as file:
        return file.read()


class Console(ProgramTest):
    def setUp(self):
        super().setUp()
        listed = self.run_program('--help').out.split('Subcommands:\n')[1].split('\n\n')[0]
        self.commands = re.findall(r'^  (\w+)', listed, re.M)
        self.options = {command: self.options_of(command, '--help') for command in self.commands}
        self.assertEqual(len(self.commands), 7)
        self.all_options = {'--version', *self.options_of('--help'), *sum(self.options.values(), [])}

    def options_of(self, *arguments):
        return sorted(re.findall(r'^  (?:-\w,)?(--[\w-]+)', self.run_program(*arguments).out, re.M))

    def test_manual_page_names_every_option_of_every_command_and_no_other(self):
        page = text('docs', 'kd_db.1')
        synopsis = page.split('.Sh SYNOPSIS')[1].split('.Sh')[0]
        for command in self.commands:
            with self.subTest(command):
                part = re.search(rf'\.Cm {command}\n(.*?)(?:\.Nm|\Z)', synopsis, re.S).group(1)
                self.assertEqual(sorted(['--help'] + re.findall(r'Fl -([\w-]+)', part)),
                                 sorted(['--help'] + [option[2:] for option in self.options[command]
                                                      if option != '--help']))
        described = re.findall(r'^\.It Fl (?:h , )?-([\w-]+)', page, re.M)
        self.assertEqual({'--' + option for option in described}, self.all_options)
        self.assertEqual(re.findall(r'^\.It Cm (\w+)', page, re.M), self.commands)

    @unittest.skipUnless(shutil.which('mandoc'), 'mandoc is not here')
    def test_manual_page_is_clean(self):
        done = subprocess.run(['mandoc', '-Tlint', os.path.join(SOURCE, 'docs', 'kd_db.1')], capture_output=True)
        self.assertEqual((done.returncode, done.stdout), (0, b''))

    def complete_in_bash(self, *words):
        script = ('source "$1"; shift; COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); _kd_db; '
                  'printf "%s\\n" "${COMPREPLY[@]}"')
        done = subprocess.run(['bash', '-c', script, 'bash', os.path.join(COMPLETIONS, 'kd_db.bash'), 'kd_db', *words],
                              capture_output=True, text=True, check=True)
        self.assertEqual(done.stderr, '')
        return sorted(done.stdout.split())

    def test_bash_completes_commands_options_and_fitting_files(self):
        self.assertEqual(self.complete_in_bash(''), sorted([*self.commands, '--help', '--version']))
        for command in self.commands:
            self.assertEqual(self.complete_in_bash(command, '--'), self.options[command])
        sample('members.dbf')
        sample('settings.mem')
        sample('cities.csv')
        os.rename('cities.csv', 'CITIES.CSV')
        self.assertEqual(self.complete_in_bash('show', ''), ['CITIES.CSV', 'members.dbf'])
        self.assertEqual(self.complete_in_bash('memory', 's'), ['settings.mem'])
        self.assertEqual(self.complete_in_bash('script', ''), ['members.dbf'])
        self.assertEqual(self.complete_in_bash('load', 'members.dbf', '--into', 'm'), ['members.dbf'])
        self.assertEqual(self.complete_in_bash('load', '--table', ''), [])

    def test_zsh_file_names_every_command_and_option(self):
        completion = text('tools', 'kd_db', 'completions', '_kd_db')
        self.assertEqual(re.findall(r"^        '([a-z]+):", completion, re.M), self.commands)
        shared = dict(re.findall(r"local (\w+)='[^\n]*?(--[\w-]+)", completion))
        for command in self.commands:
            with self.subTest(command):
                part = re.search(rf'^        {command}\)(.*?);;', completion, re.M | re.S).group(1)
                named = re.findall(r"'(--[\w-]+)", part) + [shared[name] for name in re.findall(r'\$(\w+)', part)
                                                             if name in shared]
                self.assertEqual(sorted(named), self.options[command])

    @unittest.skipUnless(shutil.which('zsh'), 'zsh is not here')
    def test_zsh_reads_its_file(self):
        done = subprocess.run(['zsh', '-n', os.path.join(COMPLETIONS, '_kd_db')], capture_output=True)
        self.assertEqual((done.returncode, done.stderr), (0, b''))

    def test_fish_file_names_every_command_and_option(self):
        completion = text('tools', 'kd_db', 'completions', 'kd_db.fish')
        self.assertEqual(re.findall(r'-a (\w+) -d', completion), self.commands)
        for command in self.commands:
            named = [option for seen, option in
                     re.findall(r"seen_subcommand_from ([\w ]+)' -l ([\w-]+)", completion) if command in seen.split()]
            self.assertEqual(sorted(['--' + option for option in named] + ['--help']), self.options[command])

    @unittest.skipUnless(shutil.which('fish'), 'fish is not here')
    def test_fish_completes(self):
        file = os.path.join(COMPLETIONS, 'kd_db.fish')
        done = subprocess.run(['fish', '-c', f'source {file}; complete -C "kd_db load --"'],
                              capture_output=True, text=True, check=True)
        self.assertEqual(sorted(line.split('\t')[0] for line in done.stdout.splitlines()), self.options['load'])


if __name__ == '__main__':
    unittest.main()
