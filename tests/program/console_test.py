"""The manual page knows exactly the commands and options of --help."""
import os
import re
import shutil
import subprocess
import unittest

from support import ProgramTest

SOURCE = os.environ['KD_SOURCE']
COMMANDS = ['show', 'list', 'convert', 'load', 'query', 'verify', 'inspect', 'import', 'memory', 'script']


class Console(ProgramTest):
    def options_of(self, command):
        return sorted(re.findall(r'^  (?:-\w, )?(--[\w-]+)', self.run_program(command, '--help').out, re.M))

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


if __name__ == '__main__':
    unittest.main()
