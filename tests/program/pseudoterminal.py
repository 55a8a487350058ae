"""A command at a terminal, which the test reads, types into and resizes."""
import fcntl
import os
import pty
import select
import struct
import subprocess
import termios
import time

PATIENCE = 60
CTRL_C = b'\x03'


def computed(process):
    """The processor time of a process, in seconds."""
    try:
        with open(f'/proc/{process.pid}/stat', encoding='utf-8') as file:
            fields = file.read().rsplit(') ', 1)[1].split()
    except OSError:
        return 0
    return (int(fields[11]) + int(fields[12])) / os.sysconf('SC_CLK_TCK')


class Terminal:
    """A command at the terminal that controls it: Ctrl-C and new sizes reach it, and its children, as signals.

    `text` is its output; with `raw` the bytes are unchanged, otherwise lines end as on a terminal.
    """

    def __init__(self, *command, columns=80, rows=24, environment=None, raw=True, **streams):
        self.master, slave = pty.openpty()
        if raw:
            mode = termios.tcgetattr(slave)
            mode[1] &= ~termios.OPOST
            mode[3] &= ~termios.ECHO
            termios.tcsetattr(slave, termios.TCSANOW, mode)
        self.resize(columns, rows)
        settings = {**os.environ, 'TERM': 'xterm', 'LC_ALL': 'C.UTF-8', 'NO_COLOR': '1', **(environment or {})}
        self.process = subprocess.Popen(
            command, start_new_session=True, env=settings,
            preexec_fn=lambda: fcntl.ioctl(slave, termios.TIOCSCTTY, 0),
            **{'stdin': slave, 'stdout': slave, 'stderr': slave, **streams})
        os.close(slave)
        self.text = ''

    def resize(self, columns, rows=24):
        fcntl.ioctl(self.master, termios.TIOCSWINSZ, struct.pack('HHHH', rows, columns, 0, 0))

    def send(self, keys):
        os.write(self.master, keys)

    def read(self, until=None, after=0):
        """Reads until `until` has appeared after so many characters, or everything until the command ends."""
        if not self.read_for(until, PATIENCE, after):
            raise AssertionError(f'{until!r} did not come: {self.text[-2000:]!r}')
        return self.text

    def read_for(self, until, seconds, after=0):
        """The same for so many seconds at most; False if they have passed."""
        deadline = time.monotonic() + seconds
        while until is None or until not in self.text[after:]:
            if time.monotonic() > deadline:
                return False
            if not self.read_some():
                break
        return True

    def read_some(self):
        """Reads the available output. False: there will be no more."""
        ended = self.process.poll() is not None
        if not select.select([self.master], [], [], 0 if ended else 0.05)[0]:
            return not ended
        try:
            self.text += os.read(self.master, 65536).decode(errors='replace')
            return True
        except OSError:
            return False

    def wait(self):
        """Reads the rest; returns the exit status."""
        self.read()
        return self.process.wait(timeout=PATIENCE)

    def wait_until_busy(self, seconds=0.2):
        """Waits until the command has used so much processor time."""
        deadline = time.monotonic() + PATIENCE
        while computed(self.process) < seconds and self.process.poll() is None and time.monotonic() < deadline:
            self.read_some()

    def close(self):
        self.process.kill()
        self.process.wait()
        if self.process.stdin:
            self.process.stdin.close()
        os.close(self.master)
