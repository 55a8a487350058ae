"""Shared by the tests of the program: a separate folder, running the program, and file builders.

The program is named by the environment's KD_DB, the builders of examples/data by KD_EXAMPLES.
"""
import contextlib
import json
import os
import resource
import shutil
import signal
import sqlite3
import subprocess
import sys
import tempfile
import time
import unittest

sys.dont_write_bytecode = True
sys.path.insert(0, os.environ['KD_EXAMPLES'])
import make_data  # noqa: E402
from pseudoterminal import computed  # noqa: E402

PROGRAM = os.environ['KD_DB']
SANITIZED = bool(os.environ.get('KD_SANITIZE'))
# In memory if possible: a database syncs with every transaction.
FOLDERS = '/dev/shm' if os.access('/dev/shm', os.W_OK) else None
for variable in ['PAGER', 'LESS', 'NO_COLOR', 'COLUMNS', 'LINES']:
    os.environ.pop(variable, None)


def hint(command=''):
    """The second line of wrong usage."""
    return f"Try 'kd_db {command + ' ' if command else ''}--help'.\n"


class Result:
    def __init__(self, code, out, err):
        self.code, self.out, self.err = code, out, err

    def __iter__(self):
        return iter((self.code, self.out, self.err))


class ProgramTest(unittest.TestCase):
    """Each test runs in an empty folder."""
    maxDiff = None

    def setUp(self):
        self.folder = tempfile.mkdtemp(prefix='kd_db_program.', dir=FOLDERS)
        self.addCleanup(shutil.rmtree, self.folder)
        before = os.getcwd()
        os.chdir(self.folder)
        self.addCleanup(os.chdir, before)

    def run_program(self, *arguments, stdin=b'', **settings):
        """`stdin` is the program's input: bytes, or an open file."""
        settings.setdefault('stdout', subprocess.PIPE)
        source = {'input': stdin} if isinstance(stdin, bytes) else {'stdin': stdin}
        done = subprocess.run([PROGRAM, *arguments], stderr=subprocess.PIPE, timeout=120, **source, **settings)
        return Result(done.returncode, decoded(done.stdout), decoded(done.stderr))

    def check(self, arguments, out='', err='', code=0, **settings):
        """Runs the program and compares its whole output, byte for byte."""
        result = self.run_program(*arguments, **settings)
        self.assertEqual((result.code, result.out, result.err), (code, out, err))

    def check_failure(self, arguments, line, notes='', code=1, **settings):
        """The program fails with exactly this error line and prints no result."""
        self.check(arguments, '', notes + 'kd_db: ' + line + '\n', code, **settings)

    def check_usage(self, arguments, line, **settings):
        """The arguments are refused with this line and the hint at the command's help."""
        command = arguments[0] if arguments and not arguments[0].startswith('-') else ''
        self.check(arguments, '', f'kd_db: {line}\n{hint(command)}', 2, **settings)

    def rows(self, database, sql):
        """The rows of a query, by SQLite itself."""
        with contextlib.closing(sqlite3.connect(database)) as connection:
            return connection.execute(sql).fetchall()

    def values(self, database, sql):
        """The first column of a query."""
        return [row[0] for row in self.rows(database, sql)]

    def tables(self, database):
        """The names of its tables, sorted."""
        return self.values(database, "SELECT name FROM sqlite_master WHERE type = 'table' ORDER BY name")

    def check_intact(self, database):
        self.assertEqual(self.values(database, 'PRAGMA integrity_check'), ['ok'])

    def files(self):
        return sorted(os.listdir('.'))


def decoded(output):
    return None if output is None else output.decode('latin-1')


def write(name, content):
    with open(name, 'wb') as file:
        file.write(content if isinstance(content, bytes) else content.encode('latin-1'))
    return name


def content(name):
    """The bytes of a file."""
    with open(name, 'rb') as file:
        return file.read()


def json_lines(text):
    return [json.loads(line) for line in text.splitlines()]


def sample(*names):
    """Sample files of the project; the first one's name."""
    for name in names:
        write(name, make_data.FILES[name])
    return names[0]


def table(records, columns=(('NAME', 'C', 6, 0), ('COUNT', 'N', 4, 0)), **header):
    """The bytes of a .dbf table whose records are lists of values."""
    return make_data.dbf(list(columns), [(' ', list(values)) for values in records], **header)


def many_records(count):
    """A .dbf table with distinct values in every record."""
    return table([f'n{i % 99999}', str(i % 9999)] for i in range(count))


def bent(content, at, new):
    """`content` with the bytes at position `at` replaced."""
    return content[:at] + new + content[at + len(new):]


def limits(**values):
    """For a new process: resource limits by their names, such as FSIZE or AS."""
    def apply():
        for name, value in values.items():
            resource.setrlimit(getattr(resource, 'RLIMIT_' + name), (value, value))
    return apply


def wait_until_watching(process, seconds=60):
    """Waits until the program handles signals: before that, they end it like any other process."""
    interrupt = 1 << (signal.SIGINT - 1)
    deadline = time.monotonic() + seconds
    while process.poll() is None and time.monotonic() < deadline:
        with open(f'/proc/{process.pid}/status', encoding='utf-8') as file:
            blocked = next(line.split()[1] for line in file if line.startswith('SigBlk:'))
        if int(blocked, 16) & interrupt:
            return
        time.sleep(0.01)
    raise AssertionError('the program does not watch signals')


def wait_until_busy(process, seconds=60):
    """Waits until the program has used so much processor time that it is inside its work, not at its start."""
    deadline = time.monotonic() + seconds
    while process.poll() is None and time.monotonic() < deadline:
        if computed(process) >= 0.2:
            return
        time.sleep(0.01)
    raise AssertionError('the program does not compute')


@contextlib.contextmanager
def started(*arguments, **settings):
    """The program, running in parallel with the test."""
    with subprocess.Popen([PROGRAM, *arguments], **settings) as process:
        try:
            yield process
        finally:
            process.kill()
