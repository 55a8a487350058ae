"""The private servers: they run without root's rights, in parallel, and end with the process that started them."""
import contextlib
import os
import signal
import subprocess
import sys
import time
import unittest

import servers

OWNER = '''
import servers, sys, time
server = servers.KINDS[sys.argv[1]]()
print(server.keeper, server.pid(), server.folder, server.sockets, flush=True)
time.sleep(600)
'''


def owned(kind):
    """A server that another process owns: that process, the keeper, the server and the two folders."""
    owner = subprocess.Popen([sys.executable, '-B', '-c', OWNER, kind.KIND], stdout=subprocess.PIPE, text=True,
                             env={**os.environ, 'PYTHONPATH': os.path.dirname(servers.__file__)})
    keeper, server, *folders = owner.stdout.readline().split()
    owner.stdout.close()
    return owner, int(keeper), int(server), folders


def ended(pid):
    """Whether the process ends soon; one that nobody reaps has ended too."""
    end = time.monotonic() + 120
    while time.monotonic() < end:
        try:
            with open(f'/proc/{pid}/stat', encoding='ascii') as stat:
                if stat.read().rpartition(')')[2].split()[0] == 'Z':
                    return True
        except FileNotFoundError:
            return True
        time.sleep(0.05)
    return False


class EveryServer:
    def test_a_killed_owner_ends_everything(self):
        owner, keeper, server, folders = owned(self.KIND)
        self.assertTrue(all(os.path.isdir(folder) for folder in folders))
        owner.kill()
        owner.wait()
        self.assertTrue(ended(server) and ended(keeper))
        self.assertFalse(any(os.path.exists(folder) for folder in folders))

    def test_a_server_ends_with_its_keeper(self):
        owner, keeper, server, folders = owned(self.KIND)
        os.kill(keeper, signal.SIGKILL)
        self.assertTrue(ended(server))
        owner.kill()
        owner.wait()
        for folder in folders:
            subprocess.run(['rm', '-rf', folder], check=True)

    def test_two_side_by_side_and_what_each_survives(self):
        with self.KIND(tcp=True) as first, self.KIND() as second:
            for server, value in ((first, '1'), (second, '2')):
                server.execute('CREATE DATABASE mine')
                server.execute(f'CREATE TABLE held (v int); INSERT INTO held VALUES ({value})', 'mine')
            first.kill()
            second.halt()
            with self.assertRaises(servers.ServerError):
                first.execute('SELECT 1')
            first.restart()
            second.restart()
            self.assertEqual(first.execute('SELECT v FROM held', 'mine'), [['1']])
            self.assertEqual(second.execute('SELECT v FROM held', 'mine'), [['2']])
            self.assertNotEqual(os.stat(f'/proc/{first.pid()}').st_uid, 0)

    def test_a_server_that_cannot_start_gives_the_reason(self):
        with self.assertRaisesRegex(servers.ServerError, 'does not start(?s:.*)nonsense'):
            self.KIND(options=self.NONSENSE)

    def test_the_shared_pair_serves_databases_that_vanish(self):
        server = next(server for server in servers.shared() if isinstance(server, self.KIND))
        with contextlib.ExitStack() as stack:
            names = [stack.enter_context(server.database()) for _ in range(2)]
            for name in names:
                server.execute('CREATE TABLE t (a int)', name)
        with self.assertRaises(servers.ServerError):
            server.execute('SELECT 1', names[0])


class PostgreSQLTest(EveryServer, unittest.TestCase):
    KIND = servers.PostgreSQL
    NONSENSE = ['-c', 'nonsense=1']


class MariaDBTest(EveryServer, unittest.TestCase):
    KIND = servers.MariaDB
    NONSENSE = ['--nonsense=1']


if __name__ == '__main__':
    unittest.main()
