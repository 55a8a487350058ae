"""hazards_test.py script|load TARGET [WORD...]    every hazard (whose title contains a WORD) into a real database
hazards_test.py document                           docs/hazards.md, on standard output
hazards_test.py documented                         fails if docs/hazards.md differs from that

`script`: `kd_db convert`, and the script through the database's own client, with unfavourable settings. `load`:
`kd_db load` and `kd_db verify`. Then names and every value are compared with the expected ones.
"""
import datetime
import json
import os
import pathlib
import subprocess
import sys
import tempfile

import databases
import hazards_names
import hazards_shapes
import hazards_text
import hazards_types
from hazard import TARGETS, Bytes, Hazard, agrees

HAZARDS: list[Hazard] = [*hazards_names.HAZARDS, *hazards_text.HAZARDS, *hazards_types.HAZARDS, *hazards_shapes.HAZARDS]
DOCUMENT = pathlib.Path(__file__).resolve().parents[2] / 'docs' / 'hazards.md'


class Wrong(Exception):
    """The result is not the expected one."""


def expect(condition, text):
    if not condition:
        raise Wrong(text)


def shortened(value, width=300):
    text = repr(value)
    return text if len(text) <= width else f'{text[:width]}... ({len(text)})'


class Trial:
    """One hazard into one database."""

    def __init__(self, hazard, number, database, folder):
        self.hazard, self.database = hazard, database
        self.folder = pathlib.Path(folder) / f'{number}'
        self.folder.mkdir()
        self.stem = f'h{number}'
        self.file = ''
        for name, content in hazard.files.items():
            path = self.folder / (self.stem + name if name.startswith('.') and name.count('.') == 1 else name)
            path.write_bytes(content)
            self.file = self.file or str(path)
        self.rejects = self.folder / 'rejects.jsonl'

    def of(self, what):
        return self.hazard.of(what, self.database.NAME)

    def program(self, *words, status=None):
        done = subprocess.run([os.environ['KD_DB'], *words], stdin=subprocess.DEVNULL, capture_output=True, check=False,
                              timeout=300)
        says = done.stderr.decode(errors='replace')
        expected = self.hazard.expected_status(self.database.NAME) if status is None else status
        if self.of('rejects') is not None or done.returncode not in (0, 3):
            expect(done.returncode == expected, f'{words[0]}: status {done.returncode}, not {expected}: {says[:2000]}')
        return says

    def carried(self, mode):
        """The program's messages; afterwards the database has the table, unless the hazard fails there."""
        options = [*self.hazard.options, '--rejects', str(self.rejects)]
        if mode == 'load':
            return self.program('load', self.file, '--into', self.database.uri, *options)
        script = self.folder / 'script.sql'
        says = self.program('convert', self.file, '--to', self.database.NAME, '-o', str(script), *options)
        if self.database.NAME in self.hazard.fails:
            expect(not script.exists(), 'a script is left')
        else:
            self.database.run_script(script)
        return says

    def run(self, mode):
        says = self.carried(mode)
        expect(self.hazard.says is None or self.hazard.says in says, f'it does not say {self.hazard.says}: {says}')
        tables = self.database.tables()
        if self.database.NAME in self.hazard.fails:
            expect(tables == [], f'tables are left: {tables}')
            return
        self.check_rejects(says)
        expect(len(tables) == 1, f'tables: {tables}')
        self.check_table(tables[0])
        if mode == 'load' and '--key' not in self.hazard.options:
            words = self.without_policy(self.hazard.options)
            if words is not None:
                self.program('verify', self.file, self.database.uri, '--table', tables[0], *words, status=0)

    @staticmethod
    def without_policy(words):
        """The options of a source; None if `verify` cannot know which records there are."""
        if '--on-error' in words:
            return None
        left_out = ('--names', '--table')
        return [word for i, word in enumerate(words)
                if word not in left_out and (i == 0 or words[i - 1] not in left_out)]

    def check_rejects(self, says):
        expected = self.of('rejects')
        lines = [json.loads(line) for line in self.rejects.read_text().splitlines()]
        if expected is not None:
            expect(len(lines) == expected, f'{len(lines)} rejects, not {expected}: {lines[:3]} {says}')
        for line in lines:
            expect(sorted(line) == ['action', 'bytes', 'column', 'file', 'offset', 'reason', 'record'], f'{line}')

    def check_table(self, table):
        expected = self.of('table') or self.stem
        expect(expected in ('*', table), f'table {table}, not {expected}')
        names = self.of('columns')
        if names is not None:
            actual = self.database.columns(table)
            expect(actual == list(names), f'columns {shortened(actual)}, not {shortened(names)}')
        rows = self.of('rows')
        if rows is None:
            return
        actual = self.database.rows(table)
        expect(len(actual) == len(rows), f'{len(actual)} rows, not {len(rows)}')
        for number, (want, have) in enumerate(zip(rows, actual), 1):
            expect(len(want) == len(have), f'row {number}: {len(have)} values, not {len(want)}')
            for column, (one, other) in enumerate(zip(want, have), 1):
                expect(agrees(one, other), f'row {number}, column {column}: {shortened(other)}, not {shortened(one)}')

    def clean(self):
        for table in self.database.tables():
            self.database.drop(table)


def run(mode, target, words):
    failures = 0
    chosen = [(number, hazard) for number, hazard in enumerate(HAZARDS, 1)
              if not words or any(word in hazard.title for word in words)]
    with tempfile.TemporaryDirectory(prefix='kd_hazards.') as folder:
        database = databases.opened(target, folder)
        try:
            for number, hazard in chosen:
                trial = Trial(hazard, number, database, folder)
                try:
                    trial.run(mode)
                except (Wrong, databases.Failed, databases.servers.ServerError, subprocess.TimeoutExpired) as error:
                    failures += 1
                    print(f'{hazard.group}: {hazard.title} -> {target}: {error}', flush=True)
                trial.clean()
        finally:
            database.close()
    print(f'{len(chosen) - failures} of {len(chosen)} hazards right in {target} by {mode}')
    return 1 if failures or not chosen else 0


# The document

def shown(value):
    if value is None:
        return 'NULL'
    if isinstance(value, Bytes):
        text = f'bytes {bytes(value).hex()}'
    elif isinstance(value, datetime.date):
        text = value.isoformat()
    elif isinstance(value, str):
        text = ascii(str(value))
    else:
        text = str(value).lower() if isinstance(value, (bool, float)) else str(value)
    text = text if len(text) <= 44 else f'{text[:36]}... ({len(text)})'
    return '`` ' + text.replace('|', '\\|') + ' ``' if '`' in text else '`' + text.replace('|', '\\|') + '`'


def outcome(hazard, target):
    if target in hazard.fails:
        return 'fails, nothing stored'
    pieces = []
    if hazard.group == 'names' and hazard.of('columns', target):
        pieces.append('columns ' + ', '.join(shown(name) for name in hazard.of('columns', target)[:4]))
    rows = hazard.of('rows', target)
    if rows is not None:
        values = ['; '.join(', '.join(shown(value) for value in row[:4]) for row in rows[:3])] if rows else ['no rows']
        pieces += values + (['...'] if len(rows) > 3 or len(rows[0] if rows else ()) > 4 else [])
    if hazard.of('rejects', target):
        pieces.append(f'{hazard.of("rejects", target)} reported')
    return ' '.join(pieces) or 'whole'


INTRODUCTION = """# Hazards of real data

{} properties of old tables that are easy to get wrong, and the contents that the three databases must have afterwards.
`tests/server/hazards_test.py` makes each file, carries it into SQLite, PostgreSQL and MariaDB, by `kd_db convert` and
the database's own client as well as by `kd_db load`, and compares every value. This page is the output of
`hazards_test.py document`, and a test compares the two.

"N reported" means that N cells or records are reported on standard error and in `--rejects`, with status 3.
"""


def document():
    lines = INTRODUCTION.format(len(HAZARDS)).splitlines()
    group = None
    for hazard in HAZARDS:
        if hazard.group != group:
            group = hazard.group
            lines += ['', f'## {group[0].upper()}{group[1:]}', '', '| hazard | SQLite | PostgreSQL | MariaDB |',
                      '|---|---|---|---|']
        outcomes = [outcome(hazard, target) for target in TARGETS]
        same = outcomes[0] == outcomes[1] == outcomes[2]
        cells = [outcomes[0], 'the same', 'the same'] if same else outcomes
        options = ' (`' + ' '.join(hazard.options).replace('|', '\\|') + '`)' if hazard.options else ''
        lines.append('| ' + ' | '.join([hazard.title + options, *cells]) + ' |')
    return '\n'.join(lines) + '\n'


def main(words):
    if words == ['document']:
        print(document(), end='')
        return 0
    if words == ['documented']:
        return 0 if DOCUMENT.read_text() == document() else f'{DOCUMENT}: make it anew by hazards_test.py document'
    return run(words[0], words[1], words[2:])


if __name__ == '__main__':
    sys.exit(main(sys.argv[1:]))
