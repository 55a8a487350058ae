"""The program at a terminal: width, pager, colour, progress, Ctrl-C."""
import os
import re
import shutil
import signal
import subprocess
import time
import unittest

from pseudoterminal import CTRL_C, PATIENCE, Terminal
from support import PROGRAM, ProgramTest, many_records, sample, wait_until_watching, write

NUMBERS = 'WITH RECURSIVE c(n) AS (SELECT 1 UNION ALL SELECT n + 1 FROM c WHERE n < {}) SELECT n FROM c'
ENDLESS = NUMBERS.format(3000000000)


class AtTerminal(ProgramTest):
    def setUp(self):
        super().setUp()
        self.run_program('import', write('s.sql', 'CREATE TABLE t(n);'), '--into', 'a.db')

    def start(self, *arguments, **settings):
        terminal = Terminal(PROGRAM, *arguments, **settings)
        self.addCleanup(terminal.close)
        return terminal

    def shown(self, *arguments, **settings):
        terminal = self.start(*arguments, **settings)
        terminal.wait()
        return terminal.text

    def feed(self, terminal, text, seconds=0.0):
        """Writes a piece to the program's input again and again, for this time."""
        deadline = time.monotonic() + seconds
        while True:
            terminal.process.stdin.write(text)
            terminal.process.stdin.flush()
            if time.monotonic() >= deadline:
                return
            terminal.read_some()

    def load_with_a_bar(self, *more, **settings):
        """A load from a pipe whose progress bar is shown."""
        terminal = self.start('load', '-', '--from', 'csv', '--table', 't', '--into', 'p.db', *more,
                              stdin=subprocess.PIPE, **settings)
        self.feed(terminal, b'x\n')
        while '/s' not in terminal.text:
            self.feed(terminal, b'1\n' * 10000)
            terminal.read_some()
        return terminal


class Looks(AtTerminal):
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

    def test_lines_wider_than_the_screen_count_several_times_for_the_pager(self):
        wide = "WITH n(i) AS (VALUES (1) UNION ALL SELECT i + 1 FROM n WHERE i < 10) SELECT printf('%.{}c', 'x') FROM n"
        for width, paged in [(150, False), (300, True)]:
            with self.subTest(width):
                text = self.shown('query', 'a.db', wide.format(width), '--format', 'csv',
                                  environment={'PAGER': 'sed "s/^/paged: /"'})
                self.assertEqual('paged' in text, paged)

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
        self.assertIn('use --no-pager', text)

    def test_a_pager_that_ends_early_ends_the_program(self):
        terminal = self.start('query', 'a.db', NUMBERS.format(3000000), environment={'PAGER': 'head -n 3'})
        terminal.read()
        self.assertEqual(terminal.process.wait(timeout=60), 0)

    def test_with_colour_and_without(self):
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

    def test_short_work_shows_no_progress(self):
        write('big.dbf', many_records(1000))
        self.assertEqual(self.shown('load', 'big.dbf', '--into', 'b.db'),
                         'big.dbf: 1000 records read, 0 left out, 1000 stored in table big\n')


class Progress(AtTerminal):
    def test_bar_appears_after_a_second_and_is_gone_at_the_end(self):
        begin = time.monotonic()
        terminal = self.load_with_a_bar()
        self.assertGreaterEqual(time.monotonic() - begin, 1)
        self.assertRegex(terminal.text, r'\r\x1b\[K-  \d+ records  [\d.]+ .?B  [\d.]+ .?B/s')
        terminal.process.stdin.close()
        self.assertEqual(terminal.wait(), 0)
        self.assertRegex(terminal.text, r'\r\x1b\[K-: \d+ records read, 0 left out, \d+ stored in table t\n\Z')

    def test_never_shows_no_bar(self):
        terminal = self.start('load', '-', '--from', 'csv', '--table', 't', '--into', 'p.db', '--progress', 'never',
                              stdin=subprocess.PIPE)
        self.feed(terminal, b'1\n' * 10000, seconds=1.5)
        terminal.process.stdin.close()
        self.assertEqual(terminal.wait(), 0)
        self.assertRegex(terminal.text, r'\A-: \d+ records read, [^\n]*\n\Z')

    def test_bar_fits_80_and_200_columns_and_any_locale(self):
        for columns in [80, 200]:
            for locale in ['C.UTF-8', 'C']:
                with self.subTest(columns, locale=locale):
                    terminal = self.load_with_a_bar('--replace', columns=columns, environment={'LC_ALL': locale})
                    bars = re.findall(r'\r\x1b\[K([^\r]+)', terminal.text)
                    self.assertTrue(bars)
                    self.assertLess(max(map(len, bars)), columns)

    def test_bar_follows_a_new_width(self):
        terminal = self.load_with_a_bar()
        self.assertGreater(len(terminal.text.split('\x1b[K')[-1]), 20)
        terminal.resize(20)
        end = len(terminal.text)
        while len(re.findall(r'\r\x1b\[K[^\r]+(?=\r)', terminal.text[end:])) < 2:
            self.feed(terminal, b'1\n' * 10000)
            terminal.read_some()
        self.assertLess(len(re.findall(r'\r\x1b\[K([^\r]+)(?=\r)', terminal.text[end:])[-1]), 20)
        terminal.process.stdin.close()
        self.assertEqual(terminal.wait(), 0)


class Resizing(AtTerminal):
    """The size of the window changes while the program runs."""

    def setUp(self):
        super().setUp()
        write('wide.csv', 'a,b\n' + f'{"x" * 100},{"y" * 20}\n' * 3)

    def resize_often(self, terminal):
        for columns in [40, 200, 60, 80]:
            terminal.resize(columns)

    def test_list_fits_the_width_at_the_time_of_printing(self):
        for before, after in [(80, 200), (200, 80)]:
            with self.subTest(before):
                terminal = self.start('list', '-', '--from', 'csv', '-q', columns=before, stdin=subprocess.PIPE)
                terminal.process.stdin.write(b'a,b\n')
                terminal.process.stdin.flush()
                terminal.resize(after)
                terminal.process.stdin.write(f'{"x" * 100},{"y" * 20}\n'.encode() * 3)
                terminal.process.stdin.close()
                self.assertEqual(terminal.wait(), 0)
                longest = max(map(len, terminal.text.splitlines()))
                self.assertEqual(longest, 80 if after == 80 else 122)

    def test_list_and_query_of_many_rows_keep_their_columns(self):
        write('long.csv', 'a,b\n' + ''.join(f'{n},{n}\n' for n in range(30000)))
        for arguments in [['list', 'long.csv', '-q'], ['query', 'long.csv', 'SELECT * FROM long', '-q'],
                          ['query', 'a.db', NUMBERS.format(30000)]]:
            with self.subTest(arguments):
                terminal = self.start(*arguments, '--no-pager')
                terminal.read('\n100')
                self.resize_often(terminal)
                self.assertEqual(terminal.wait(), 0)
                self.assertEqual(len(terminal.text.splitlines()), 30002)

    def test_query_that_computes_is_not_disturbed(self):
        terminal = self.start('query', 'a.db', NUMBERS.format(1000000).replace('SELECT n FROM', 'SELECT max(n) FROM'))
        terminal.wait_until_busy(0.05)
        self.resize_often(terminal)
        self.assertEqual(terminal.wait(), 0)
        self.assertIn('1000000\n', terminal.text)

    def test_pager_learns_of_the_new_size(self):
        write('pager', 'trap "stty size </dev/tty; exit" WINCH\necho ready\nwhile :; do sleep 0.05; done\n')
        for arguments in [['list', 'long.csv'], ['query', 'a.db', NUMBERS.format(60)]]:
            write('long.csv', 'x\n' + '1\n' * 100)
            with self.subTest(arguments):
                terminal = self.start(*arguments, environment={'PAGER': 'sh pager'})
                terminal.read('ready')
                terminal.resize(50, 30)
                self.assertEqual(terminal.wait(), 0)
                self.assertIn('30 50\n', terminal.text)

    @unittest.skipUnless(shutil.which('less'), 'less is not here')
    def test_less_shows_more_lines_in_a_higher_window(self):
        terminal = self.start('query', 'a.db', NUMBERS.format(500), rows=10)
        terminal.read('  7\x1b')
        self.assertNotIn(' 30\x1b', terminal.text)
        # A signal between the page and the wait for a key has no effect until the next one arrives.
        for rows in range(50, 60):
            terminal.resize(80, rows)
            if terminal.read_for(' 40\x1b', 2):
                break
        self.assertIn(' 40\x1b', terminal.text)
        terminal.send(b'q')
        self.assertEqual(terminal.wait(), 0)


class CtrlC(AtTerminal):
    """Ctrl-C is typed, so that it reaches the pager too."""

    def check_ended(self, terminal):
        terminal.send(CTRL_C)
        self.assertEqual(terminal.wait(), 128 + signal.SIGINT)

    def test_list_that_waits_for_its_input(self):
        for columns in [80, 200]:
            terminal = self.start('list', '-', '--from', 'csv', '--no-pager', columns=columns, stdin=subprocess.PIPE)
            wait_until_watching(terminal.process)
            self.check_ended(terminal)

    def test_query_that_prints(self):
        terminal = self.start('query', 'a.db', ENDLESS, '--no-pager')
        terminal.read('\n1000\n')
        self.check_ended(terminal)

    def test_query_that_computes(self):
        write('long.csv', 'x\n1\n')
        for place in ['a.db', 'long.csv']:
            terminal = self.start('query', place, ENDLESS.replace('SELECT n FROM', 'SELECT max(n) FROM'))
            terminal.wait_until_busy()
            self.check_ended(terminal)

    def test_load_with_a_bar_undoes_everything(self):
        before = self.files()
        terminal = self.load_with_a_bar()
        self.check_ended(terminal)
        self.assertTrue(terminal.text.endswith('\r\x1b[K'), terminal.text[-200:])
        self.assertEqual(self.files(), before)

    def test_pager_decides_what_it_does(self):
        write('pager', 'trap "echo interrupted" INT\necho ready\nread line\nwhile read line; do :; done\necho over\n')
        terminal = self.start('query', 'a.db', ENDLESS, environment={'PAGER': 'sh pager'})
        terminal.read('ready')
        self.check_ended(terminal)
        self.assertIn('interrupted', terminal.text)
        self.assertIn('over', terminal.text)

    @unittest.skipUnless(shutil.which('less'), 'less is not here')
    def test_less_stays_until_its_user_leaves(self):
        write('long.csv', 'x\n' + '1\n' * 100)
        terminal = self.start('list', 'long.csv')
        terminal.read(':')
        terminal.send(CTRL_C)
        deadline = time.monotonic() + PATIENCE
        while '(END)' not in terminal.text and time.monotonic() < deadline:
            terminal.send(b'G')  # keys that are typed while less is interrupted are lost
            terminal.read_some()
        self.assertIn('(END)', terminal.text)
        self.assertIsNone(terminal.process.poll())
        terminal.send(b'q')
        terminal.wait()
        self.assertIn('left out, 100 shown', terminal.text)


if __name__ == '__main__':
    unittest.main()
