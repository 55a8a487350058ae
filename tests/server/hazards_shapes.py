"""Shapes of tables, damage, options, delimited text."""
import datetime
from decimal import Decimal

from dbf_bytes import field, table
from hazard import Clock, Hazard

PAIR = [field('ID', 'N', 4), field('TOWN', 'C', 6)]
THREE = [['1', 'Rome'], ['2', 'Oslo'], ['3', 'Bern']]
WHOLE = [(1, 'Rome'), (2, 'Oslo'), (3, 'Bern')]


def wide_csv(cells):
    """A table of one row with many columns."""
    cells = list(cells)
    names = [f'c{i}' for i in range(len(cells))]
    return {'.csv': f'{",".join(names)}\n{",".join(cells)}\n'.encode()}


def shape(title, content, rows=None, **more):
    return Hazard('shapes', title, {'.dbf': content}, WHOLE if rows is None else rows, **more)


def option(title, rows, *options, content=None, **more):
    return Hazard('options', title, {'.dbf': content or table(PAIR, THREE)}, rows, options=options, **more)


def text(title, content, rows=None, *options, extension='.csv', **more):
    content = content if isinstance(content, bytes) else content.encode()
    return Hazard('delimited text', title, {extension: content}, rows, options=options, **more)


FLAWED = table([field('ID', 'N', 4), field('BORN', 'D', 8)], [['1', '20240229'], ['2', '20230229'], ['3', '']])
SHAPES = [
    shape('deleted records are left out', table(PAIR, THREE, marks=' * '), [(1, 'Rome'), (3, 'Bern')]),
    shape('another deletion byte is kept', table(PAIR, THREE, marks=' x '), WHOLE),
    shape('no records', table(PAIR, []), []),
    shape('no end mark', table(PAIR, THREE, end=b''), WHOLE),
    shape('bytes after the end mark', table(PAIR, THREE, end=b'\x1a' + b'junk' * 9), WHOLE, says='after'),
    shape('a record count too high', table(PAIR, THREE, count=9), WHOLE, status=3, says='9'),
    shape('a record count too low', table(PAIR, THREE, count=2), WHOLE, status=3, says='2'),
    shape('a last record cut short', table(PAIR, THREE, end=b'')[:-3], WHOLE[:2], rejects=1, says='record 3'),
    shape('an unknown version byte', table(PAIR, THREE, version=0x77), WHOLE),
    shape('no mark at the end of the descriptors', table(PAIR, THREE)[:96] + b' ' + table(PAIR, THREE)[97:], WHOLE),
    shape('a record longer than its fields', table(PAIR, THREE)[:10] + b'\x0e\0' + table(PAIR, THREE)[12:97]
          + b''.join(table(PAIR, THREE)[97 + 11 * i:108 + 11 * i] + b'zzz' for i in range(3)) + b'\x1a', WHOLE),
    shape('a record shorter than its fields', table(PAIR, THREE)[:10] + b'\x09\0' + table(PAIR, THREE)[12:],
          fails=('sqlite', 'postgresql', 'mysql')),
    shape('a record length of 0', table(PAIR, THREE)[:10] + bytes(2) + table(PAIR, THREE)[12:],
          fails=('sqlite', 'postgresql', 'mysql')),
    shape('200 columns', table([field(f'C{i}', 'N', 4) for i in range(200)], [[str(i) for i in range(200)]]),
          [tuple(range(200))]),
    shape('500 wide texts', table([field(f'C{i}', 'C', 100) for i in range(500)], [[f't{i}' for i in range(500)]]),
          [tuple(f't{i}' for i in range(500))]),
    shape('100 texts of 254', table([field(f'C{i}', 'C', 254) for i in range(100)], [['x' * 254] * 100]),
          [('x' * 254,) * 100]),
    Hazard('shapes', '1,000 columns', wide_csv(map(str, range(1000))),
           [tuple(map(str, range(1000)))]),
    Hazard('shapes', '1,601 columns', wide_csv('x' * 1601),
           [('x',) * 1601], fails=('postgresql', 'mysql')),
    Hazard('shapes', '2,001 columns', wide_csv('x' * 2001),
           fails=('sqlite', 'postgresql', 'mysql')),
    shape('5,000 records', table(PAIR, [[str(i), f'n{i}'] for i in range(5000)]), [(i, f'n{i}') for i in range(5000)]),
]

OPTIONS = [
    option('columns chosen and reordered', [('Rome', 1), ('Oslo', 2), ('Bern', 3)], '--select', 'TOWN,ID',
           columns=['town', 'id']),
    option('a range of records', WHOLE[1:], '--records', '2-3'),
    option('a range without a beginning', WHOLE[:2], '--records', '-2'),
    option('a range without an end', WHOLE[2:], '--records', '3-'),
    option('deleted records kept', WHOLE, '--deleted', 'keep', content=table(PAIR, THREE, marks=' * ')),
    option('deleted records marked', [(1, 'Rome', False), (2, 'Oslo', True), (3, 'Bern', False)], '--deleted', 'mark',
           content=table(PAIR, THREE, marks=' * '), columns=['id', 'town', '_deleted']),
    option('a range counts deleted records', [(3, 'Bern')], '--records', '2-3',
           content=table(PAIR, THREE, marks=' * ')),
    option('a key', [(1, 1, 'Rome'), (2, 2, 'Oslo'), (3, 3, 'Bern')], '--key', 'nr', columns=['nr', 'id', 'town']),
    option('a number as text', [('1', 'Rome'), ('2', 'Oslo'), ('3', 'Bern')], '--type', 'ID=text'),
    option('a flawed cell is NULL', [(1, datetime.date(2024, 2, 29)), (2, None), (3, None)], content=FLAWED, rejects=1),
    option('a flawed record left out', [(1, datetime.date(2024, 2, 29)), (3, None)], '--on-error', 'skip',
           content=FLAWED, rejects=1),
    option('a flawed cell stops', None, '--on-error', 'stop', content=FLAWED, fails=('sqlite', 'postgresql', 'mysql')),
    option('a flawed date as text', [(1, '20240229'), (2, '20230229'), (3, '')], '--type', 'BORN=text', content=FLAWED,
           rejects=0),
    Hazard('options', 'fixed columns', {'.txt': b'Rome    12\nOslo     3\n'}, [('Rome', '  12'), ('Oslo', '   3')],
           options=['--columns', 'town:1-6,qty:7-10'], columns=['town', 'qty']),
]

DELIMITED = [
    text('a byte order mark', b'\xef\xbb\xbfid,town\n1,Rome\n', [('1', 'Rome')], columns=['id', 'town']),
    text('CR LF', 'id,town\r\n1,Rome\r\n', [('1', 'Rome')]),
    text('CR alone', 'id,town\r1,Rome\r2,Oslo\r', [('1', 'Rome'), ('2', 'Oslo')]),
    text('no line end at the end', 'id,town\n1,Rome', [('1', 'Rome')]),
    text('a delimiter in quotes', 'id,town\n1,"Rome, Lazio"\n', [('1', 'Rome, Lazio')]),
    text('doubled quotes', 'id,town\n1,"the ""eternal"" city"\n', [('1', 'the "eternal" city')]),
    text('a line end in quotes', 'id,town\n1,"Ro\nme"\n2,"a\r\nb"\n', [('1', 'Ro\nme'), ('2', 'a\r\nb')]),
    text('an empty cell and an empty text', 'id,town\n1,\n2,""\n', [('1', None), ('2', '')]),
    text('blanks are kept', 'id,town\n 1 , Rome \n', [(' 1 ', ' Rome ')]),
    text('a quote inside an unquoted cell', 'id,town\n1,12" disk\n', [('1', '12" disk')]),
    text('empty lines', 'id,town\n\n1,Rome\n\n\n2,Oslo\n', [('1', 'Rome'), ('2', 'Oslo')]),
    text('empty lines in one column', 'town\nRome\n\nOslo\n', [('Rome',), (None,), ('Oslo',)]),
    text('a short row', 'id,town\n1\n2,Oslo\n', [('1', None), ('2', 'Oslo')], rejects=1),
    text('a long row', 'id,town\n1,Rome,x\n2,Oslo\n', [('1', 'Rome'), ('2', 'Oslo')], rejects=1),
    text('a long row left out', 'id,town\n1,Rome,x\n2,Oslo\n', [('2', 'Oslo')], '--on-error', 'skip', rejects=1),
    text('text after a closing quote', 'id,town\n1,"Rome"x\n', fails=('sqlite', 'postgresql', 'mysql')),
    text('a quote never closed', 'id,town\n1,"Rome\n2,Oslo\n', fails=('sqlite', 'postgresql', 'mysql')),
    text('no header', '1,Rome\n2,Oslo\n', [('1', 'Rome'), ('2', 'Oslo')], '--no-header',
         columns=['column_1', 'column_2']),
    text('tabs', 'id\ttown\n1\tRome, Lazio\n', [('1', 'Rome, Lazio')], extension='.tsv'),
    text('semicolons', 'id;town\n1;Rome, Lazio\n', [('1', 'Rome, Lazio')], '--delimiter', ';'),
    text('semicolons found', 'id;town\n1;Rome\n2;Oslo\n', [('1', 'Rome'), ('2', 'Oslo')], '--delimiter', 'auto',
         says=';'),
    text('apostrophes as quotes', "id,town\n1,'Rome, Lazio'\n", [('1', 'Rome, Lazio')], '--quote', "'"),
    text('no quotes', 'id,town\n1,"Rome\n', [('1', '"Rome')], '--quote', 'none'),
    text('UTF-16 without an option', '\ufeffid,town\n1,Rome\n'.encode('utf-16-le'),
         fails=('sqlite', 'postgresql', 'mysql'), says='UTF-16'),
    text('UTF-16', '\ufeffid,town\n1,K\u00f6ln\n'.encode('utf-16-le'), [('1', 'K\u00f6ln')], '--encoding', 'UTF-16'),
    text('Latin-1', 'id,town\n1,K\u00f6ln\n'.encode('latin-1'), [('1', 'K\u00f6ln')], '--encoding', 'latin1'),
    text('broken UTF-8', b'id,town\n1,K\xf6ln\n', [('1', 'K\ufffdln')], rejects=1),
    text('types inferred', 'a,b,c,d\n1,1.50,2024-02-29,x\n22,-3,2023-12-31,\n',
         [(1, Decimal('1.5'), datetime.date(2024, 2, 29), 'x'), (22, -3, datetime.date(2023, 12, 31), None)],
         '--infer'),
    text('leading zeros are text', 'a,b\n007,+1\n008,2\n', [('007', '+1'), ('008', '2')], '--infer'),
    text('a date that does not exist is text', 'a\n2024-02-29\n2023-02-29\n', [('2024-02-29',), ('2023-02-29',)],
         '--infer'),
    text('a word for NULL', 'a,b\nNA,"NA"\n', [(None, 'NA')], '--null', 'NA'),
    text('a formula', 'a,b\n=1+1,@x\n', [('=1+1', '@x')]),
    text('a cell of a million bytes', 'a,b\n1,"' + 'x,"",\n' * 200000 + '"\n', [('1', 'x,",\n' * 200000)]),
    text('a zero byte in a cell', b'a,b\n1,x\0y\n', [('1', 'x\0y')], rows_postgresql=[('1', None)],
         rejects_postgresql=1),
    text('a type by option', 'a,b\n1,yes\n2,x\n', [(1, 'yes'), (2, 'x')], '--type', 'a=integer'),
    text('a type that does not fit', 'a,b\n1,yes\nx,y\n', [(1, 'yes'), (None, 'y')], '--type', 'a=integer', rejects=1),
    text('a time by option', 'a\n13:14:15\n', [(Clock('13:14:15'),)], '--type', 'a=time'),
]

HAZARDS = SHAPES + OPTIONS + DELIMITED
