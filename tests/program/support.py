"""What the tests of the program share: a folder of their own, running the program, and file builders.

The program is named by the environment's KD_DB, the builders of examples/data by KD_EXAMPLES.
"""
import contextlib
import os
import resource
import shutil
import subprocess
import sys
import tempfile
import unittest

sys.dont_write_bytecode = True
sys.path.insert(0, os.environ['KD_EXAMPLES'])
import make_data  # noqa: E402

PROGRAM = os.environ['KD_DB']
SANITIZED = bool(os.environ.get('KD_SANITIZE'))
# In memory where that is possible: a database syncs with every transaction.
FOLDERS = '/dev/shm' if os.access('/dev/shm', os.W_OK) else None
HINT = "Try 'kd_db --help'.\n"


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
        settings.setdefault('stdout', subprocess.PIPE)
        done = subprocess.run([PROGRAM, *arguments], input=stdin, stderr=subprocess.PIPE, timeout=120, **settings)
        return Result(done.returncode, decoded(done.stdout), decoded(done.stderr))

    def check(self, arguments, out='', err='', code=0, **settings):
        """Runs the program and compares everything that comes back, byte for byte."""
        result = self.run_program(*arguments, **settings)
        self.assertEqual((result.code, result.out, result.err), (code, out, err))

    def check_failure(self, arguments, line, notes='', code=1, **settings):
        """The program fails with exactly this error line and prints no result."""
        self.check(arguments, '', notes + 'kd_db: ' + line + '\n', code, **settings)

    def rows(self, database, sql):
        """The rows of a query as lines, read through the program."""
        result = self.run_program('query', database, sql)
        self.assertEqual((result.code, result.err), (0, ''), sql)
        return result.out.splitlines()[1:]

    def check_intact(self, database):
        self.assertEqual(self.rows(database, 'PRAGMA integrity_check'), ['ok'])


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


def sample(name):
    """A sample file of the project."""
    return write(name, make_data.FILES[name])


def table(records, columns=(('NAME', 'C', 6, 0), ('COUNT', 'N', 4, 0))):
    """The bytes of a .dbf table whose records are lists of values."""
    return make_data.dbf(list(columns), [(' ', list(values)) for values in records])


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


@contextlib.contextmanager
def started(*arguments, **settings):
    """The program running beside the test."""
    with subprocess.Popen([PROGRAM, *arguments], **settings) as process:
        try:
            yield process
        finally:
            process.kill()
