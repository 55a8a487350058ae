"""Tables that are spread over several servers, and slices of one file in parallel, as docs/scale-out.md shows."""
import os
import pathlib
import subprocess
import tempfile
import unittest

import servers
from server_faults_test import ENVIRONMENT, KD_DB, Result, dbf, kd_db, numbered, until

COUNT = 4000


class ScaleOut(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix='kd_scale.')
        self.addCleanup(folder.cleanup)
        self.file = pathlib.Path(folder.name) / 'people.dbf'
        self.file.write_bytes(dbf(numbered(COUNT)))
        self.expected = [[str(number), text.decode()] for number, text in numbered(COUNT)]

    def append(self, uri, *words):
        return kd_db('load', self.file, '--append', '--into', uri, *words)

    @staticmethod
    def sorted_rows(rows):
        return sorted(rows, key=lambda row: int(row[0]))

    def rows_of(self, server):
        return server.execute('SELECT n, t FROM people', 'shop')

    def fail_in_commit(self, shard):
        """A load during whose COMMIT the shard is killed; it has the rows by then, and they are not committed."""
        with shard.session('shop') as send:
            send(self.HOLD_COMMIT)
            process = subprocess.Popen([KD_DB, 'load', self.file, '--append', '--into', self.uri], env=ENVIRONMENT,
                                       stdout=subprocess.PIPE, stderr=subprocess.PIPE)
            self.assertTrue(until(lambda: self.commits(shard) or process.poll() is not None))
            self.assertIsNone(process.poll())
            shard.kill()
            result = Result(process.wait(120), *(pipe.read() for pipe in (process.stdout, process.stderr)))
            process.stdout.close()
            process.stderr.close()
        shard.restart()
        return result

    def check_a_death_in_commit(self):
        """The shard that dies keeps nothing; the other keeps all of its part or nothing. The load fails, `verify` shows
        which rows exist, and after they are deleted the load succeeds."""
        kept = []
        for dying, other in (self.shards, self.shards[::-1]):
            result = self.fail_in_commit(dying)
            self.assertEqual(result.code, 1, result.err)
            self.assertEqual(self.rows_of(dying), [])
            rows = self.rows_of(other)
            kept.append(len(rows))
            self.assertEqual(kd_db('verify', self.file, self.uri).code, 1)
            self.front.execute('DELETE FROM people', 'shop')
            self.assertEqual(self.append(self.uri).code, 0)
            self.assertEqual(kd_db('verify', self.file, self.uri).code, 0)
            if rows:
                self.assertEqual(self.sorted_rows(rows), self.sorted_rows(self.rows_of(other)))
            self.front.execute('DELETE FROM people', 'shop')
        return kept


class PostgreSQLPartitionsTest(ScaleOut):
    """A table partitioned by hash over two more servers (postgres_fdw)."""

    HOLD_COMMIT = 'SELECT pg_advisory_lock(1)'

    @classmethod
    def setUpClass(cls):
        cls.front, *cls.shards = [servers.PostgreSQL(tcp=True) for _ in range(3)]
        for server in (cls.front, *cls.shards):
            cls.addClassCleanup(server.stop)

    def setUp(self):
        super().setUp()
        for server in (self.front, *self.shards):
            server.execute('CREATE DATABASE shop')
            self.addCleanup(server.drop, 'shop')
        self.front.execute('CREATE EXTENSION postgres_fdw;'
                           'CREATE TABLE people (n int, t varchar(20)) PARTITION BY HASH (n)', 'shop')
        for i, shard in enumerate(self.shards):
            shard.execute('CREATE TABLE people (n int, t varchar(20))', 'shop')
            self.front.execute(
                f"CREATE SERVER shard{i} FOREIGN DATA WRAPPER postgres_fdw OPTIONS (host '127.0.0.1', "
                f"port '{shard.port}', dbname 'shop', batch_size '1000');"
                f"CREATE USER MAPPING FOR postgres SERVER shard{i} "
                f"OPTIONS (user 'postgres', password '{shard.password}');"
                f"CREATE FOREIGN TABLE people{i} PARTITION OF people FOR VALUES WITH (MODULUS 2, REMAINDER {i}) "
                f"SERVER shard{i} OPTIONS (table_name 'people')", 'shop')
        self.uri = self.front.uri('shop')

    def test_every_row_is_on_one_shard(self):
        result = self.append(self.uri)
        self.assertEqual(result.code, 0, result.err)
        shards = [self.rows_of(shard) for shard in self.shards]
        self.assertTrue(all(len(rows) > COUNT // 4 for rows in shards))
        self.assertEqual(self.sorted_rows(shards[0] + shards[1]), self.expected)
        self.assertEqual(kd_db('verify', self.file, self.uri).code, 0)

    def test_a_refusing_shard_leaves_nothing_anywhere(self):
        for shard in self.shards:
            shard.execute('ALTER TABLE people ADD CHECK (n < 3996)', 'shop')
        result = self.append(self.uri)
        self.assertEqual(result.code, 1, result.err)
        self.assertEqual([self.rows_of(shard) for shard in self.shards], [[], []])

    def test_a_shard_that_is_gone_leaves_nothing_anywhere(self):
        self.shards[1].halt()
        try:
            self.assertEqual(self.append(self.uri).code, 1)
        finally:
            self.shards[1].restart()
        self.assertEqual([self.rows_of(shard) for shard in self.shards], [[], []])

    @staticmethod
    def commits(shard):
        return shard.execute("SELECT count(*) FROM pg_locks WHERE locktype = 'advisory' AND NOT granted")[0][0] != '0'

    def constrain_at_commit(self, shard, check):
        shard.execute('CREATE FUNCTION late() RETURNS trigger LANGUAGE plpgsql AS '
                      f'$$ BEGIN {check}; RETURN NULL; END $$;'
                      'CREATE CONSTRAINT TRIGGER late AFTER INSERT ON people DEFERRABLE INITIALLY DEFERRED '
                      'FOR EACH ROW WHEN (NEW.n > 3990) EXECUTE FUNCTION late()', 'shop')

    def test_a_shard_that_refuses_at_commit(self):
        """The front commits the shards one after the other: those before the refusing one keep their rows."""
        kept = []
        for refusing, other in (self.shards, self.shards[::-1]):
            self.constrain_at_commit(refusing, "RAISE 'too late'")
            result = self.append(self.uri)
            self.assertEqual(result.code, 1, result.err)
            self.assertIn('too late', result.err)
            self.assertEqual(self.rows_of(refusing), [])
            kept.append(len(self.rows_of(other)))
            refusing.execute('DROP TRIGGER late ON people; DROP FUNCTION late', 'shop')
            self.front.execute('DELETE FROM people', 'shop')
        self.assertEqual(kept.count(0), 1, kept)
        self.assertTrue(0 < max(kept) < COUNT, kept)

    def test_a_shard_that_dies_during_commit(self):
        for shard in self.shards:
            self.constrain_at_commit(shard, 'PERFORM pg_advisory_xact_lock_shared(1)')
        kept = self.check_a_death_in_commit()
        self.assertEqual(kept.count(0), 1, kept)


class SpiderTest(ScaleOut):
    """A table that the Spider engine shards over two more servers."""

    HOLD_COMMIT = 'BACKUP STAGE START; BACKUP STAGE BLOCK_COMMIT'

    @classmethod
    def setUpClass(cls):
        cls.front = servers.MariaDB(tcp=True, options=['--plugin-load-add=ha_spider.so'])
        cls.addClassCleanup(cls.front.stop)
        cls.shards = [servers.MariaDB(tcp=True) for _ in range(2)]
        for server in cls.shards:
            cls.addClassCleanup(server.stop)

    def setUp(self):
        super().setUp()
        for server in (self.front, *self.shards):
            server.execute('CREATE DATABASE shop')
            self.addCleanup(server.drop, 'shop')
        partitions = []
        for i, shard in enumerate(self.shards):
            shard.execute('CREATE TABLE people (n int PRIMARY KEY, t varchar(20)) CHARSET utf8mb4', 'shop')
            self.front.execute(
                f"CREATE OR REPLACE SERVER shard{i} FOREIGN DATA WRAPPER mysql OPTIONS (HOST '127.0.0.1', "
                f"DATABASE 'shop', USER 'tester', PASSWORD '{shard.password}', PORT {shard.port})")
            partitions.append(f"PARTITION p{i} COMMENT = 'srv \"shard{i}\"'")
        self.front.execute('CREATE TABLE people (n int PRIMARY KEY, t varchar(20)) ENGINE=SPIDER CHARSET utf8mb4 '
                           "COMMENT='wrapper \"mysql\", table \"people\"' PARTITION BY KEY (n) "
                           f"({', '.join(partitions)})", 'shop')
        self.uri = self.front.uri('shop')

    def test_every_row_is_on_one_shard(self):
        result = self.append(self.uri)
        self.assertEqual(result.code, 0, result.err)
        shards = [self.rows_of(shard) for shard in self.shards]
        self.assertTrue(all(len(rows) > COUNT // 4 for rows in shards), [len(rows) for rows in shards])
        self.assertEqual(self.sorted_rows(shards[0] + shards[1]), self.expected)
        self.assertEqual(kd_db('verify', self.file, self.uri).code, 0)

    def test_a_refusing_shard_leaves_nothing_anywhere(self):
        for shard in self.shards:
            shard.execute('ALTER TABLE people ADD CHECK (n < 3996)', 'shop')
        result = self.append(self.uri)
        self.assertEqual(result.code, 1, result.err)
        self.assertEqual([self.rows_of(shard) for shard in self.shards], [[], []])

    def test_a_shard_that_is_gone_leaves_nothing_anywhere(self):
        self.shards[1].halt()
        try:
            self.assertEqual(self.append(self.uri).code, 1)
        finally:
            self.shards[1].restart()
        self.assertEqual([self.rows_of(shard) for shard in self.shards], [[], []])

    @staticmethod
    def commits(shard):
        return shard.execute("SELECT count(*) FROM information_schema.processlist WHERE state LIKE '%backup lock%'"
                             )[0][0] != '0'

    def test_a_shard_that_dies_during_commit(self):
        """Spider commits the other shard anyway."""
        kept = self.check_a_death_in_commit()
        self.assertEqual(sum(kept), COUNT)
        self.assertGreater(min(kept), 0)


class SlicesTest(ScaleOut):
    """Four processes, each with a quarter of one file."""

    def check(self, server, create):
        with server.database() as name:
            uri = server.uri(name)
            server.execute(create, name)
            edges = [(i * COUNT // 4 + 1, (i + 1) * COUNT // 4) for i in range(4)]
            processes = [subprocess.Popen([KD_DB, 'load', self.file, '--append', '--into', uri,
                                           '--records', f'{first}-{last}'], stderr=subprocess.PIPE)
                         for first, last in edges]
            for process in processes:
                _, err = process.communicate(timeout=120)
                self.assertEqual(process.returncode, 0, err)
            rows = self.sorted_rows(server.execute('SELECT n, t FROM people', name))
            self.assertEqual(rows, self.expected)
            # A slice is loaded again: the key refuses all of it.
            again = self.append(uri, '--records', f'{edges[2][0]}-{edges[2][1]}')
            self.assertEqual(again.code, 1, again.err)
            self.assertIn(f'record {edges[2][0]}', again.err)
            self.assertEqual(server.execute('SELECT count(*) FROM people', name), [[str(COUNT)]])

    def test_the_start_of_a_slice_costs_one_seek(self):
        self.file.write_bytes(dbf(numbered(300000)))  # 9 MB
        with subprocess.Popen([KD_DB, 'convert', self.file, '--records', '299991-', '--to', 'csv'], env=ENVIRONMENT,
                              stdout=subprocess.PIPE, stderr=subprocess.DEVNULL) as process:
            self.assertEqual(len(process.stdout.read().splitlines()), 11)
            os.waitid(os.P_PID, process.pid, os.WEXITED | os.WNOWAIT)
            counts = dict(line.split(': ') for line in pathlib.Path(f'/proc/{process.pid}/io').read_text().splitlines())
        self.assertLess(int(counts['rchar']), 1 << 20)

    def test_postgresql(self):
        self.check(servers.shared()[0], 'CREATE TABLE people (n int PRIMARY KEY, t varchar(20))')

    def test_mariadb(self):
        self.check(servers.shared()[1], 'CREATE TABLE people (n int PRIMARY KEY, t varchar(20))')


if __name__ == '__main__':
    unittest.main()
