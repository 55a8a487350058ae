"""Defines a hazard of real data, and compares a value that a database returns with the expected one."""
import datetime
import decimal
import math

TARGETS = ('sqlite', 'postgresql', 'mysql')


class Bytes(bytes):
    """A value of a column of bytes."""


class Moment(str):
    """A timestamp, YYYY-MM-DD HH:MM:SS.mmm."""


class Clock(str):
    """A time of the day, HH:MM:SS without a fraction."""


class Hazard:
    """A file, and the contents of each database after the file was carried into it.

    `rows`: the values expected; for a target that differs, `rows_TARGET`. `rejects`: how many cells and records are
    reported, `rejects_TARGET` likewise. `status`: of the program; by default 3 with rejects and 0 without.
    `columns`: the expected names, if they matter. `fails`: targets that refuse the file, with status 1.
    """

    def __init__(self, group, title, files, rows=None, options=(), columns=None, rejects=0, status=None, fails=(),
                 table=None, says=None, **differing):
        self.group, self.title, self.options, self.fails = group, title, list(options), fails
        self.files = files  # a name that begins with a point belongs to the table's file: only its ending
        self.rows, self.columns, self.rejects, self.status = rows, columns, rejects, status
        self.table, self.says, self.differing = table, says, differing

    def of(self, what, target):
        return self.differing.get(f'{what}_{target}', getattr(self, what))

    def expected_status(self, target):
        if target in self.fails:
            return 1
        status = self.of('status', target)
        return status if status is not None else 3 if self.of('rejects', target) else 0


def agrees(expected, actual):
    """`actual` is the database's value: of SQLite's own type, or a text or bytes from a server."""
    if expected is None or actual is None:
        return expected is None and actual is None
    if isinstance(expected, bool):
        return str(actual).lower() in (('1', 't', 'true') if expected else ('0', 'f', 'false'))
    if isinstance(expected, Bytes):
        return isinstance(actual, bytes) and bytes(expected) == actual
    if isinstance(expected, (int, decimal.Decimal)):
        if isinstance(actual, bytes):
            return False
        try:
            return decimal.Decimal(repr(actual) if isinstance(actual, float) else actual) == expected
        except decimal.InvalidOperation:
            return False
    if isinstance(expected, float):
        try:
            value = float(actual)
        except (TypeError, ValueError):
            return False
        return math.isnan(expected) and math.isnan(value) or value == expected
    if isinstance(expected, datetime.date):
        return actual == expected.isoformat().rjust(10, '0')
    if isinstance(expected, Moment):
        text = str(actual).replace('T', ' ')
        seconds, _, part = text.partition('.')
        return f'{seconds}.{part.ljust(3, "0")[:3]}' == expected and not part[3:].strip('0')
    if isinstance(expected, Clock):
        seconds, _, part = str(actual).partition('.')
        return seconds == expected and not part.strip('0')
    return isinstance(actual, str) and actual == expected
