"""The program at a terminal: width, pager, colour, progress, Ctrl-C."""
import fcntl
import os
import pty
import select
import signal
import struct
import subprocess
import termios
import time
import unittest

from support import PROGRAM, ProgramTest, many_records, sample, write

NUMBERS = 'WITH RECURSIVE c(n) AS (SELECT 1 UNION ALL SELECT n + 1 FROM c WHERE n < {}) SELECT n FROM c'


class Terminal:
    """The program at a separate terminal; its output, bytes as the program writes them."""

    def __init__(self, *arguments, columns=80, rows=24, environment=None, **streams):
        self.master, slave = pty.openpty()
        mode = termios.tcgetattr(slave)
        mode[1] &= ~termios.OPOST
        termios.tcsetattr(slave, termios.TCSANOW, mode)
        fcntl.ioctl(slave, termios.TIOCSWINSZ, struct.pack('HHHH', rows, columns, 0, 0))
        settings = {**os.environ, 'TERM': 'xterm', 'LC_ALL': 'C.UTF-8', 'NO_COLOR': '1', **(environment or {})}
        self.process = subprocess.Popen([PROGRAM, *arguments], start_new_session=True, env=settings,
                                        **{'stdin': slave, 'stdout': slave, 'stderr': slave, **streams})
        os.close(slave)
        self.text = ''

    def read(self, until=None, seconds=60):
        """Reads until `until` has come, or the program ends."""
        deadline = time.monotonic() + seconds
        while time.monotonic() < deadline and (until is None or until not in self.text):
            if select.select([self.master], [], [], 0.05)[0]:
                try:
                    self.text += os.read(self.master, 65536).decode(errors='replace')
                except OSError:
                    break
            elif self.process.poll() is not None:
                break
        return self.text

    def close(self):
        self.process.kill()
        self.process.wait()
        os.close(self.master)


class AtTheTerminal(ProgramTest):
    def setUp(self):
        super().setUp()
        self.run_program('import', write('s.sql', 'CREATE TABLE t(n);'), '--into', 'a.db')

    def start(self, *arguments, **settings):
        terminal = Terminal(*arguments, **settings)
        self.addCleanup(terminal.close)
        return terminal

    def shown(self, *arguments, **settings):
        terminal = self.start(*arguments, **settings)
        text = terminal.read()
        terminal.process.wait(timeout=60)
        return text

    def test_tables_fit_the_width(self):
        sample('clients.dbf', 'clients.dbt')
        for columns in [80, 200]:
            for locale, mark in [('C.UTF-8', '…'), ('C', '>')]:
                with self.subTest(columns, locale=locale):
                    text = self.shown('list', 'clients.dbf', '-q', columns=columns, environment={'LC_ALL': locale})
                    lines = text.splitlines()
                    self.assertEqual(len(lines), 6)
                    self.assertLessEqual(max(map(len, lines)), columns)
                    self.assertEqual(mark in text, columns == 80)
                    self.assertIn('Zoë Müller', text)

    def test_columns_that_do_not_fit_are_reported(self):
        write('wide.csv', ','.join(f'column_{n}' for n in range(60)) + '\n' + ','.join(['value'] * 60) + '\n')
        text = self.shown('list', 'wide.csv', columns=80)
        self.assertRegex(text, r'wide\.csv: \d+ of 60 columns fit on the screen; --select')

    def test_long_results_go_through_the_pager(self):
        environment = {'PAGER': 'sed "s/^/paged: /"'}
        for arguments in [['query', 'a.db', NUMBERS.format(60)], ['query', 'a.db', NUMBERS.format(60), '--format', 'csv']]:
            text = self.shown(*arguments, environment=environment)
            self.assertTrue(text.rstrip().endswith('paged: 60') or 'paged: 60' in text, text)
        self.assertNotIn('paged', self.shown('query', 'a.db', NUMBERS.format(5), environment=environment))
        self.assertNotIn('paged', self.shown('query', 'a.db', NUMBERS.format(60), '--no-pager', environment=environment))

    def test_no_pager_if_output_is_not_a_terminal(self):
        terminal = self.start('query', 'a.db', NUMBERS.format(60), stdout=subprocess.PIPE,
                              environment={'PAGER': 'sed "s/^/paged: /"'})
        out = terminal.process.stdout.read().decode()
        terminal.process.stdout.close()
        self.assertEqual(len(out.splitlines()), 62)
        self.assertNotIn('paged', out)

    def test_notes_follow_the_pager(self):
        write('long.csv', 'x\n' + '1\n' * 100)
        text = self.shown('list', 'long.csv', environment={'PAGER': 'cat; echo closed; true'})
        self.assertTrue(text.endswith('closed\nlong.csv: 100 records read, 0 left out, 100 shown\n'), text[-200:])

    def test_missing_pager_is_reported(self):
        text = self.shown('query', 'a.db', NUMBERS.format(60), environment={'PAGER': 'no-such-pager'})
        self.assertIn('--no-pager does without', text)

    def test_a_pager_that_ends_early_ends_the_program(self):
        terminal = self.start('query', 'a.db', NUMBERS.format(3000000), environment={'PAGER': 'head -n 3'})
        terminal.read()
        self.assertEqual(terminal.process.wait(timeout=60), 0)

    def test_colour_and_how_to_do_without(self):
        sql = "SELECT NULL AS a, '' AS b"
        colored = {'NO_COLOR': ''}
        self.assertIn('\x1b[2mNULL\x1b[0m', self.shown('query', 'a.db', sql, environment=colored))
        for arguments, environment in [([], {}), (['--color', 'never'], colored), ([], {**colored, 'TERM': 'dumb'})]:
            self.assertNotIn('\x1b', self.shown('query', 'a.db', sql, *arguments, environment=environment))
        self.assertIn('\x1b', self.shown('query', 'a.db', sql, '--color', 'always'))

    def test_control_bytes_do_not_reach_the_terminal(self):
        write('c.csv', b'x\n\x1b]0;title\x07\x7f\n')
        for arguments in [['list', 'c.csv'], ['list', 'c.csv', '--format', 'csv'], ['show', 'c.csv']]:
            text = self.shown(*arguments)
            self.assertNotIn('\x1b', text)
            self.assertNotIn('\x07', text)

    def test_ctrl_c_ends_list_and_query(self):
        for arguments in [['list', '-', '--from', 'csv'], ['query', 'a.db', NUMBERS.format(3000000000), '--no-pager'],
                          ['query', 'a.db', NUMBERS.format(3000000000).replace('SELECT n FROM', 'SELECT max(n) FROM')]]:
            with self.subTest(arguments):
                terminal = self.start(*arguments, stdin=subprocess.PIPE)
                terminal.read('nothing of the kind', seconds=0.5)
                terminal.process.send_signal(signal.SIGINT)
                terminal.read()
                self.assertEqual(terminal.process.wait(timeout=60), 130)

    def test_progress_appears_after_a_second_and_is_gone_at_the_end(self):
        for sure, ends in [(['--progress', 'auto'], True), (['--progress', 'never'], False)]:
            terminal = self.start('load', '-', '--from', 'csv', '--table', 't', '--into', 'p.db', '--replace', *sure,
                                  stdin=subprocess.PIPE)
            terminal.process.stdin.write(b'x\n')
            for _ in range(16):
                terminal.process.stdin.write(b'1\n' * 70000)
                terminal.process.stdin.flush()
                time.sleep(0.1)
            terminal.process.stdin.close()
            text = terminal.read()
            self.assertEqual(terminal.process.wait(timeout=60), 0)
            self.assertEqual('records' in text.split('\x1b[K')[1] if '\x1b[K' in text else False, ends, text)
            self.assertTrue(text.endswith('-: 1120000 records read, 0 left out, 1120000 stored in table t\n'))

    def test_short_work_shows_no_progress(self):
        write('big.dbf', many_records(1000))
        self.assertEqual(self.shown('load', 'big.dbf', '--into', 'b.db'),
                         'big.dbf: 1000 records read, 0 left out, 1000 stored in table big\n')


if __name__ == '__main__':
    unittest.main()
