"""The program at a terminal: pages, keys, escapes, and the terminal's mode."""
import os
import pty
import select
import signal
import subprocess
import termios
import time
import unittest

from support import PROGRAM, ProgramTest, sample, write

MORE = '-- more (Enter goes on, q stops) --'
LONG = 'WITH RECURSIVE c(n) AS (SELECT 1 UNION ALL SELECT n + 1 FROM c WHERE n < 60) SELECT n FROM c'


class Terminal:
    """The program at a terminal of its own."""

    def __init__(self, *arguments, **settings):
        self.master, slave = pty.openpty()
        mode = termios.tcgetattr(slave)
        mode[1] &= ~termios.OPOST  # bytes as the program writes them
        termios.tcsetattr(slave, termios.TCSANOW, mode)
        self.slave = slave
        self.before = self.mode()
        streams = {'stdin': slave, 'stdout': slave, 'stderr': slave, **settings}
        self.process = subprocess.Popen([PROGRAM, *arguments], start_new_session=True, **streams)
        self.text = ''

    def read_until(self, end, seconds=60):
        """Reads until the output ends with `end`; None: until the program ends."""
        deadline = time.monotonic() + seconds
        while time.monotonic() < deadline and (end is None or not self.text.endswith(end)):
            if select.select([self.master], [], [], 0.05)[0]:
                self.text += os.read(self.master, 65536).decode('latin-1')
            elif end is None and self.process.poll() is not None:
                break
        return self.text

    def press(self, keys):
        """Answers a prompt."""
        self.wait_for_other_mode()
        os.write(self.master, keys)

    def mode(self):
        return termios.tcgetattr(self.slave)

    def wait_for_other_mode(self, seconds=60):
        """The prompt is written before the mode changes."""
        deadline = time.monotonic() + seconds
        while self.mode() == self.before:
            if time.monotonic() > deadline:
                raise AssertionError('the mode of the terminal stays')
            time.sleep(0.01)

    def close(self):
        self.process.kill()
        self.process.wait()
        os.close(self.master)
        os.close(self.slave)


class AtTheTerminal(ProgramTest):
    def setUp(self):
        super().setUp()
        self.run_program('import', write('s.sql', 'CREATE TABLE t(n);'), '--into', 'a.db')

    def start(self, *arguments, **settings):
        terminal = Terminal(*arguments, **settings)
        self.addCleanup(terminal.close)
        return terminal

    def numbers(self, first, last):
        return ''.join(f'{n}\n' for n in range(first, last + 1))

    def test_pages_are_asked_for_and_keys_answer(self):
        terminal = self.start('query', 'a.db', LONG)
        page = 'n\n' + self.numbers(1, 26) + MORE
        self.assertEqual(terminal.read_until(MORE), page)
        terminal.press(b'x\n')
        page += '\n' + self.numbers(27, 52) + MORE
        self.assertEqual(terminal.read_until(self.numbers(27, 52) + MORE), page)
        terminal.press(b'q')
        self.assertEqual(terminal.read_until(None), page + '\n')
        self.assertEqual(terminal.process.wait(), 0)

    def test_mode_is_restored_after_the_last_page_and_by_signals(self):
        for ending in [b'q', signal.SIGINT, signal.SIGTERM]:
            with self.subTest(ending):
                terminal = self.start('query', 'a.db', LONG)
                terminal.read_until(MORE)
                terminal.wait_for_other_mode()
                if ending == b'q':
                    terminal.press(ending)
                else:
                    terminal.process.send_signal(ending)
                code = terminal.process.wait(timeout=60)
                self.assertEqual(code, 0 if ending == b'q' else 128 + ending)
                self.assertEqual(terminal.mode(), terminal.before)

    def test_no_prompt_where_output_is_no_terminal(self):
        terminal = self.start('query', 'a.db', LONG, stdout=subprocess.PIPE)
        self.assertEqual(terminal.process.stdout.read().decode(), 'n\n' + self.numbers(1, 60))
        terminal.process.stdout.close()
        self.assertEqual(terminal.read_until(None), '')

    def test_no_prompt_where_input_is_no_terminal(self):
        terminal = self.start('query', 'a.db', LONG, stdin=subprocess.DEVNULL)
        self.assertEqual(terminal.read_until(None), 'n\n' + self.numbers(1, 60))

    def test_control_bytes_are_shown_as_escapes(self):
        values = {b'\x1b]0;title\x07': '\\x1b]0;title\\x07', b'a\tb': 'a\tb', b'\x7f\x00': None, b'\r': None,
                  b'\x9b2J': '\\x9b2J', b'\xc2\x9b2J': '\xc2\\x9b2J', b'\xc3\x9bx': '\xc3\x9bx',
                  b'\xe2\x82\xac': '\xe2\x82\xac', b'\xf0\x9f\x98\x80': '\xf0\x9f\x98\x80', b'\x0b\x08': '\\x0b\\x08'}
        for value, shown in values.items():
            if shown is not None:
                with self.subTest(value):
                    write('c.csv', b'x\n' + value + b'\n')
                    terminal = self.start('list', 'c.csv')
                    self.assertEqual(terminal.read_until(None), f'Table: c.csv\nx\n{shown}\n')

    def test_control_bytes_in_file_names_are_shown_as_escapes(self):
        write('a\x1b[2J.csv', 'x\n1\n')
        terminal = self.start('list', 'a\x1b[2J.csv')
        self.assertEqual(terminal.read_until(None), 'Table: a\\x1b[2J.csv\nx\n1\n')

    def test_load_says_the_same_with_and_without_a_terminal(self):
        sample('members.dbf')
        terminal = self.start('load', 'members.dbf', '--into', 'm.db')
        self.assertEqual(terminal.read_until(None),
                         'Table: members.dbf\nmembers.dbf: 3 records read, 0 left out, 3 stored in table members\n')


if __name__ == '__main__':
    unittest.main()
