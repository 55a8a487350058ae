"""Names of tables and columns."""
from dbf_bytes import field, table, table7
from hazard import Hazard


def column(name, **more):
    """A table of one text column of this name, with one value."""
    return {'.dbf': table([field(name, 'C', 5, **more)], [['here']])}


def csv(*names, row=None):
    quoted = ','.join('"' + name.replace('"', '""') + '"' for name in names)
    return {'.csv': f'{quoted}\n{row or ",".join(f"v{i}" for i in range(1, len(names) + 1))}\n'.encode()}


def named(title, name, expected, **more):
    return Hazard('names', title, column(name), [('here',)], columns=[expected], **more)


HAZARDS = [
    Hazard('names', 'reserved words as columns',
           {'.dbf': table([field(name, 'C', 4) for name in ('SELECT', 'ORDER', 'USER', 'GROUP', 'TABLE', 'KEY', 'DESC',
                                                            'INDEX', 'RANK', 'END')], [[f'v{i}' for i in range(10)]])},
           [tuple(f'v{i}' for i in range(10))],
           columns=['select', 'order', 'user', 'group', 'table', 'key', 'desc', 'index', 'rank', 'end']),
    Hazard('names', 'a reserved word as table', {'select.dbf': table([field('A', 'C', 4)], [['here']])}, [('here',)],
           table='select'),
    named('a blank inside a name', 'UNIT PRICE', 'unit price'),
    named('a double quote in a name', 'A"B', 'a"b'),
    named('an apostrophe in a name', "A'B", "a'b"),
    named('a backquote in a name', 'A`B', 'a`b'),
    named('a dot in a name', 'A.B', 'a.b'),
    named('a semicolon in a name', 'A;B', 'a;b'),
    named('a percent sign and a question mark in a name', 'A%S?', 'a%s?'),
    named('a dollar sign in a name', '$1', '$1'),
    named('a colon in a name', ':A', ':a'),
    named('a backslash in a name', 'A\\N', 'a\\n'),
    named('a comment in a name', '--A/*', '--a/*'),
    named('brackets in a name', 'A[B]', 'a[b]'),
    named('a name that begins with a digit', '1ST', '1st'),
    Hazard('names', 'letters beyond ASCII in a name',
           {'.dbf': table([field('GR\xd6SSE'.encode('cp1252'), 'C', 5)], [['here']], language=3)},
           [('here',)], columns=['gr\u00f6sse']),
    Hazard('names', 'Cyrillic names', {'.dbf': table([field('\u0413\u041e\u0420\u041e\u0414'.encode('cp866'), 'C', 5)],
                                                     [['here']], language=0x65)},
           [('here',)], columns=['\u0433\u043e\u0440\u043e\u0434']),
    Hazard('names', 'an empty name', {'.dbf': table([field('A', 'C', 2), field('', 'C', 2)], [['v1', 'v2']])},
           [('v1', 'v2')],
           columns=['a', 'column_2']),
    Hazard('names', 'a name that comes twice', {'.dbf': table([field('A', 'C', 2)] * 3, [['v1', 'v2', 'v3']])},
           [('v1', 'v2', 'v3')], columns=['a', 'a_2', 'a_3']),
    Hazard('names', 'names that differ by case only', {'.dbf': table7([field('Name', 'C', 2), field('NAME', 'C', 2)],
                                                                      [['v1', 'v2']])},
           [('v1', 'v2')], columns=['name', 'name_2']),
    Hazard('names', 'names kept as they are', csv('Id', 'Home Town'), [('v1', 'v2')], options=['--names', 'keep'],
           columns=['Id', 'Home Town']),
    Hazard('names', 'names kept that differ by case only', csv('Id', 'ID'), [('v1', 'v2')], options=['--names', 'keep'],
           columns=['Id', 'ID_2']),
    Hazard('names', 'a name of 63 bytes', csv('n' * 63), [('v1',)], columns=['n' * 63]),
    Hazard('names', 'a name of 64 bytes', csv('n' * 64), [('v1',)], columns=['n' * 64], columns_postgresql=['n' * 63]),
    Hazard('names', 'a name of 65 bytes', csv('n' * 65), [('v1',)], columns=['n' * 65],
           columns_postgresql=['n' * 63], columns_mysql=['n' * 64]),
    Hazard('names', 'a long name of two-byte letters', csv('\u00e4' * 40), [('v1',)], columns=['\u00e4' * 40],
           columns_postgresql=['\u00e4' * 31]),
    Hazard('names', 'two long names with the same beginning', csv('n' * 63 + 'xx', 'n' * 63 + 'xy'), [('v1', 'v2')],
           columns=['n' * 63 + 'xx', 'n' * 63 + 'xy'], columns_postgresql=['n' * 63, 'n' * 61 + '_2'],
           columns_mysql=['n' * 63 + 'x', 'n' * 62 + '_2']),
    Hazard('names', 'a dBase 7 name of 31 letters', {'.dbf': table7([field('N' * 31, 'C', 5)], [['here']])},
           [('here',)],
           columns=['n' * 31]),
    Hazard('names', 'a line end in a name', csv('a\nb'), [('v1',)], columns=['a\nb']),
    Hazard('names', 'a zero-width and a combining character', csv('e\u0301', 'z\u200bz'), [('v1', 'v2')],
           columns=['e\u0301', 'z\u200bz']),
    Hazard('names', 'letters whose lower case has another length', csv('\u1e9e'), [('v1',)], columns=['\u00df']),
    Hazard('names', 'a column that PostgreSQL owns', csv('ctid', 'xmin', 'id'), [('v1', 'v2', 'v3')],
           columns_sqlite=['ctid', 'xmin', 'id'], columns_mysql=['ctid', 'xmin', 'id']),
    Hazard('names', 'the other system columns of PostgreSQL', csv('xmax', 'cmin', 'cmax', 'tableoid'),
           [('v1', 'v2', 'v3', 'v4')]),
    Hazard('names', 'columns that InnoDB owns', csv('DB_ROW_ID', 'fts_doc_id', 'id'), [('v1', 'v2', 'v3')],
           columns=['db_row_id', 'fts_doc_id', 'id'], columns_mysql=['_db_row_id', '_fts_doc_id', 'id']),
    Hazard('names', 'a column named rowid', csv('rowid', 'id'), [('v1', 'v2')], columns=['rowid', 'id']),
    Hazard('names', 'trailing blanks', csv('id ', 'x'), [('v1', 'v2')], columns=['id ', 'x'],
           columns_mysql=['id', 'x']),
    Hazard('names', 'a line end at the end of a name', csv('id\n', 'x'), [('v1', 'v2')], columns=['id\n', 'x'],
           columns_mysql=['id', 'x']),
    Hazard('names', 'CR LF in a name', csv('a\r\nb'), [('v1',)], columns=['a\nb'], columns_postgresql=['a\r\nb']),
    Hazard('names', 'a name of one blank', csv(' ', 'x'), [('v1', 'v2')]),
    Hazard('names', 'a character above U+FFFF', csv('\U0001f600', 'x'), [('v1', 'v2')],
           columns_sqlite=['\U0001f600', 'x'],
           columns_postgresql=['\U0001f600', 'x']),
    Hazard('names', 'a dot in a file name', {'a.b.dbf': table([field('A', 'C', 4)], [['here']])}, [('here',)],
           table='a.b'),
    Hazard('names', 'a blank and a quote in a file name', {"two o'clock.dbf": table([field('A', 'C', 4)], [['here']])},
           [('here',)],
           table="two o'clock"),
    Hazard('names', 'an extension in capitals', {'LOUD.DBF': table([field('A', 'C', 4)], [['here']])}, [('here',)],
           table='loud'),
    Hazard('names', 'a table name as it is written', column('A'), [('here',)], options=['--table', 'My Table'],
           table='My Table'),
    Hazard('names', 'a table name beyond ASCII', {'gr\u00f6\u00dfe.csv': b'a\nhere\n'}, [('here',)],
           table='gr\u00f6\u00dfe'),
    Hazard('names', 'a table name of 64 ideographs', column('A'), [('here',)], options=['--table', '\u4e2d' * 64],
           table='\u4e2d' * 64, table_postgresql='\u4e2d' * 21, table_mysql='\u4e2d' * 50),
    Hazard('names', 'a table that SQLite refuses', {'sqlite_x.csv': b'a\nhere\n'}, [('here',)], table='sqlite_x',
           table_sqlite='*'),
    Hazard('names', 'descriptor bytes after the end of a name',
           {'.dbf': table([field(b'AB\0garbage', 'C', 5)], [['here']])}, [('here',)],
           columns=['ab']),
]
