"""The three databases for a hazard test: run a script as its users do, list tables and columns, read values."""
import contextlib
import json
import os
import pathlib
import sqlite3
import subprocess

import servers


class Failed(Exception):
    """A client program that refused a script."""


def _client(words, script, environment):
    with open(script, 'rb') as source:
        done = subprocess.run(words, stdin=source, capture_output=True, env=environment, check=False)
    if done.returncode != 0:
        raise Failed(f'{words[0]}: {done.stderr.decode(errors="replace")[:2000]}')
    return done.stdout.decode(errors='replace')


def _quoted(name, mark):
    return mark + name.replace(mark, mark * 2) + mark


class Sqlite:
    NAME = 'sqlite'

    def __init__(self, folder):
        self.path = str(pathlib.Path(folder) / 'hazards.db')
        self.uri = self.path

    def run_script(self, script):
        return _client(['sqlite3', '-bail', self.path], script, dict(os.environ))

    def _all(self, sql):
        connection = sqlite3.connect(self.path)
        try:
            return connection.execute(sql).fetchall()
        finally:
            connection.close()

    def tables(self):
        return [name for name, in self._all("SELECT name FROM sqlite_schema WHERE type = 'table' "
                                           "AND name <> 'sqlite_sequence'")]

    def columns(self, table):
        return [row[1] for row in self._all(f'PRAGMA table_info({_quoted(table, chr(34))})')]

    def rows(self, table):
        return self._all(f'SELECT * FROM {_quoted(table, chr(34))} ORDER BY rowid')

    def drop(self, table):
        connection = sqlite3.connect(self.path)
        connection.execute(f'DROP TABLE {_quoted(table, chr(34))}')
        connection.commit()
        connection.close()

    def close(self):
        pass


class _OnServer:
    """`n` is NULL, `t` and hexadecimal digits a text, `b` and such digits bytes."""

    def __init__(self, server):
        self.server = server
        self._open = contextlib.ExitStack()
        self.database = self._open.enter_context(server.database())
        self.uri = server.uri(self.database)
        self._execute = self._open.enter_context(server.session(self.database))

    def close(self):
        self._open.close()

    def rows(self, table):
        types = self._types(table)
        marked = ', '.join(self._marked(name, kind) for name, kind in types)
        return [tuple(self._value(cell) for cell in row)
                for row in self._execute(f'SELECT {marked} FROM {_quoted(table, self.MARK)}')]

    def columns(self, table):
        return [name for name, _ in self._types(table)]

    def drop(self, table):
        self._execute(f'DROP TABLE {_quoted(table, self.MARK)}')

    @staticmethod
    def _value(cell):
        if cell == 'n':
            return None
        raw = bytes.fromhex(cell[1:])
        return raw if cell[0] == 'b' else raw.decode()


class PostgreSQL(_OnServer):
    NAME = 'postgresql'
    MARK = '"'

    def run_script(self, script):
        words = [word for word in self.server.client(self.database) if word not in ('-f', '-')]
        environment = {**self.server._environment(), 'PGCLIENTENCODING': 'LATIN1',
                       'PGOPTIONS': '-c standard_conforming_strings=off -c DateStyle=SQL,DMY -c bytea_output=escape'}
        return _client(words, script, environment)

    def tables(self):
        return [row[0] for row in self._execute("SELECT tablename FROM pg_tables WHERE schemaname = 'public'")]

    def _types(self, table):
        found = self._execute("SELECT coalesce(json_agg(json_build_array(column_name, data_type) "
                              "ORDER BY ordinal_position), '[]') "
                              "FROM information_schema.columns WHERE table_schema = 'public' "
                              f"AND table_name = {_quoted(table, chr(39))}")
        return json.loads(found[0][0])

    def _marked(self, name, kind):
        name = _quoted(name, '"')
        if kind == 'bytea':
            return f"coalesce('b' || encode({name}, 'hex'), 'n')"
        return f"coalesce('t' || encode(convert_to({name}::text, 'UTF8'), 'hex'), 'n')"


class MySQL(_OnServer):
    NAME = 'mysql'
    MARK = '`'

    def run_script(self, script):
        words = [word for word in self.server.client(self.database) if not word.startswith('--default-character-set')]
        return _client([*words, '--default-character-set=latin1',
                        "--init-command=SET sql_mode='NO_BACKSLASH_ESCAPES,ANSI_QUOTES'"],
                       script, self.server._environment())

    def tables(self):
        return [row[0] for row in self._execute('SHOW TABLES')]

    def _types(self, table):
        return [(bytes.fromhex(name).decode(), kind) for name, kind in self._execute(
            'SELECT hex(column_name), data_type FROM information_schema.columns WHERE table_schema = database() AND '
            f'table_name = {_quoted(table.replace(chr(92), chr(92) * 2), chr(39))} ORDER BY ordinal_position')]

    def _marked(self, name, kind):
        name = _quoted(name, '`')
        mark = 'b' if 'blob' in kind else 't'
        return f"IF({name} IS NULL, 'n', CONCAT('{mark}', HEX(CAST({name} AS BINARY))))"


def opened(target, folder):
    if target == 'sqlite':
        return Sqlite(folder)
    postgresql, mariadb = servers.shared()
    return PostgreSQL(postgresql) if target == 'postgresql' else MySQL(mariadb)
