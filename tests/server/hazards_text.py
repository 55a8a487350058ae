"""Texts: quoting, blanks, control characters, code pages, memo files."""
from dbf_bytes import field, fpt, integer, memo3, memo4, table
from hazard import Bytes, Hazard


def text(title, raw, expected, width=None, **more):
    """One C column with one value."""
    raw = raw if isinstance(raw, bytes) else raw.encode('ascii')
    language = more.pop('language', 3)
    files = {'.dbf': table([field('T', 'C', width or max(len(raw), 1))], [[raw]], language=language),
             **more.pop('beside', {})}
    return Hazard(more.pop('group', 'texts'), title, files, [(expected,)], **more)


def page(name, language, raw, expected, **more):
    return text(f'code page {name}', raw, expected, width=30, language=language, group='code pages', **more)


def memo(title, version, memos, pointer, expected, extension='.dbt', kind='M', language=3, **more):
    columns = [field('ID', 'N', 3), field('NOTE', kind, len(pointer), 0, more.pop('flags', 0))]
    files = {'.dbf': table(columns, [['1', pointer]], version=version, language=language)}
    if memos is not None:
        files[extension] = memos
    return Hazard('memos', title, files, [(1, expected)], **more)


TEXTS = [
    text('an apostrophe', "O'Brien's", "O'Brien's"),
    text('two apostrophes in a row', "''", "''"),
    text('a double quote', '12" ruler', '12" ruler'),
    text('a backslash', 'C:\\new\\table', 'C:\\new\\table'),
    text('a backslash at the end', 'path\\', 'path\\'),
    text('a backslash before an apostrophe', "\\'; DROP TABLE x; --", "\\'; DROP TABLE x; --"),
    text('the NULL mark of COPY', '\\N', '\\N'),
    text('the end mark of COPY', '\\.', '\\.'),
    text('the word NULL', 'NULL', 'NULL'),
    text('a tab', 'a\tb', 'a\tb'),
    text('a line feed', 'a\nb', 'a\nb'),
    text('a carriage return', 'a\rb', 'a\rb'),
    text('CR LF', 'a\r\nb', 'a\r\nb'),
    text('CR LF at the end', 'a\r\n', 'a\r\n'),
    text('a backslash, an r and a carriage return', '\\r\\0\r\\r1\r', '\\r\\0\r\\r1\r'),
    text('dollar quotes', '$$a$x$', '$$a$x$'),
    text('marks of parameters', '%s ? :a @b $1 ${x}', '%s ? :a @b $1 ${x}'),
    text('comments and semicolons', 'a; -- b /* c */ # d', 'a; -- b /* c */ # d'),
    text('a client command at the start of a line', 'a\n\\! ls\n.quit\n', 'a\n\\! ls\n.quit\n'),
    text('DELIMITER of the MariaDB client', 'a\nDELIMITER //\nb', 'a\nDELIMITER //\nb'),
    text('leading blanks', '  a', '  a', width=8),
    text('trailing blanks', 'a  ', 'a', width=8),
    text('trailing zero bytes', b'a\0\0\0', 'a'),
    text('trailing zero bytes and blanks, mixed', b'a \0 \0  ', 'a'),
    text('all blank is the empty text', '', '', width=8),
    text('all zero bytes are the empty text', b'\0\0\0', ''),
    text('a zero byte inside', b'a\0b', 'a\0b', rows_postgresql=[(None,)], rejects_postgresql=1),
    text('control characters', bytes(range(1, 32)) + b'x', ''.join(map(chr, range(1, 32))) + 'x'),
    text('DEL and the end mark 1A', b'\x7f\x1ax', '\x7f\x1ax'),
    text('a width of 254, all two-byte letters', b'\xe9' * 254, '\u00e9' * 254),
    text('a width of 1', 'x', 'x'),
    Hazard('texts', 'C wider than 255', {'.dbf': table([field('T', 'C', 300)], [['x' * 299 + 'y']])},
           [('x' * 299 + 'y',)]),
    Hazard('texts', 'C of 8 with two decimals', {'.dbf': table([field('T', 'C', 8, 2)], [['12345678']])},
           [('12345678',)]),
    Hazard('texts', 'C flagged binary is bytes',
           {'.dbf': table([field('T', 'C', 4, 0, 4)], [[b'\xff\0a ']], version=0x30)},
           [(Bytes(b'\xff\0a '),)]),
]

CODE_PAGES = [
    page('1252, the euro sign', 3, b'\x80 5,00', '\u20ac 5,00'),
    page('1252, a byte that it lacks', 3, b'a\x81b', 'a\ufffdb', rejects=1),
    page('1252, a byte that it lacks, escaped', 3, b'a\x81b', 'a\\x81b', rejects=1,
         options=['--encoding-errors', 'escape']),
    text('code page 1252, a field full of bytes that it lacks, escaped', b'\x81' * 30, '\\x81' * 30, rejects=1,
         group='code pages',
         options=['--encoding-errors', 'escape']),
    page('1252, a byte that it lacks, strict', 3, b'a\x81b', None, rejects=1, options=['--encoding-errors', 'strict']),
    page('1252 by default', 0, b'Stra\xdfe', 'Stra\u00dfe', says='CP1252'),
    page('437', 1, b'\x81\xe1', '\u00fc\u00df'),
    page('850', 2, b'\x81\xe1\xd5', '\u00fc\u00df\u0131'),
    page('852', 0x64, b'\xa9\x88\xa5', '\u0119\u0142\u0105'),
    page('866', 0x65, b'\x8c\xae\xe1\xaa\xa2\xa0', '\u041c\u043e\u0441\u043a\u0432\u0430'),
    page('737', 0x6a, b'\x80\x98', '\u0391\u03b1'),
    page('857', 0x6b, b'\x8d\xa7', '\u0131\u011f'),
    page('861', 0x67, b'\x8d\x95', '\u00de\u00fe'),
    page('865', 0x66, b'\x9b', '\u00f8'),
    page('1250', 0xc8, b'\x8a\xb3', '\u0160\u0142'),
    page('1251', 0xc9, b'\xcc\xee\xf1\xea', '\u041c\u043e\u0441\u043a'),
    page('1253', 0xcb, b'\xc1\xe1', '\u0391\u03b1'),
    page('1254', 0xca, b'\xfe\xf0', '\u015f\u011f'),
    page('1257', 0xcc, b'\xe0', '\u0105'),
    page('1255', 0x7d, b'\xe0', '\u05d0'),
    page('1256', 0x7e, b'\xc7', '\u0627'),
    page('874', 0x7c, b'\xa1', '\u0e01'),
    page('Macintosh', 4, b'\x8e\xa5', '\u00e9\u2022'),
    page('Mac Cyrillic', 0x96, b'\x80', '\u0410'),
    page('932, a backslash as second byte', 0x7b, b'\x95\x5c\x8e\xa6', '\u8868\u793a'),
    page('936, a backslash as second byte', 0x7a, b'\x81\x5c', b'\x81\x5c'.decode('gbk')),
    page('950, a backslash as second byte', 0x78, b'\xb3\x5c', '\u8a31'),
    page('949', 0x79, b'\xb0\xa1', '\uac00'),
    page('932, an apostrophe after a double-byte character', 0x7b, b"\x83\x5c'x", "\u30bd'x"),
    text('a double-byte character cut by the end of the field', b'ab\x95', 'ab\ufffd', language=0x7b, rejects=1,
         group='code pages'),
    page('Kamenicky', 0x68, b'\x87\xa9\xa8', '\u010d\u0159\u0161'),
    page('Mazovia', 0x69, b'\x86\x92', '\u0105\u0142'),
    page('UTF-8 by its language byte', 0xf0, '\u017elu\u0165'.encode(), '\u017elu\u0165'),
    page('by .cpg, over the language byte', 3, '\u017elu\u0165'.encode(), '\u017elu\u0165', beside={'.cpg': b'UTF-8'}),
    page('by .cpg, a number with a line end', 3, b'\xf2', '\u0442', beside={'.cpg': b'1251\r\n'}),
    page('by .cpg, as a language byte', 3, b'\xa9', '\u0119', beside={'.cpg': b'LDID/100'}),
    page('by option, over .cpg', 3, b'\xa9', '\u0119', beside={'.cpg': b'UTF-8'}, options=['--encoding', 'cp852']),
    page('by option, a number', 3, b'\xa9', '\u0119', options=['--encoding', '852']),
    page('of a language byte that is not known', 0x7f, b'\xe4', '\u00e4', says='CP1252'),
    page('UTF-8 with characters above U+FFFF', 0xf0, '\U0001f600'.encode(), '\U0001f600'),
    page('UTF-8, broken', 0xf0, b'a\xc3(', 'a\ufffd(', rejects=1),
]

MEMOS = [
    memo('dBase III', 0x83, memo3(b"It's a memo\\"), '         1', "It's a memo\\"),
    memo('dBase III, padded with zeros', 0x83, memo3(b'text'), '0000000001', 'text'),
    memo('dBase III, left-justified', 0x83, memo3(b'text'), '1         ', 'text'),
    memo('dBase III, a blank pointer', 0x83, memo3(b'text'), '          ', None),
    memo('dBase III, pointer 0', 0x83, memo3(b'text'), '         0', None),
    memo('dBase III, no end mark', 0x83, memo3(b'x')[:512] + b'to the end', '         1', 'to the end'),
    memo('dBase III, over several blocks', 0x83, memo3(b'y' * 2000), '         1', 'y' * 2000),
    memo('dBase III, line ends and blanks kept', 0x83, memo3(b' a\r\nb \n'), '         1', ' a\r\nb \n'),
    memo('dBase III, code page', 0x83, memo3(b'\xe9t\xe9'), '         1', '\u00e9t\u00e9'),
    memo('dBase III, a pointer past the end', 0x83, memo3(b'text'), '        99', None, rejects=1),
    memo('dBase III, a pointer that is not a number', 0x83, memo3(b'text'), '       x1 ', None, rejects=1),
    memo('dBase IV', 0x8b, memo4(b'First memo'), '         1', 'First memo'),
    memo('dBase IV, block size 1024', 0x8b, memo4(b'First memo', block=1024), '         1', 'First memo'),
    memo('dBase IV, block size 0 is 512', 0x8b, memo4(b'First memo', stated=0), '         1', 'First memo'),
    memo('dBase IV, length 0 is the empty text', 0x8b, memo4(b''), '         1', ''),
    memo('dBase IV, a length past the end', 0x8b, memo4(b'x')[:516] + b'\xff\xff\0\0' + b'x' * 20, '         1', None,
         rejects=1),
    memo('FoxPro', 0xf5, fpt(b'fox text'), '         8', 'fox text', '.fpt'),
    memo('FoxPro, block size 512', 0xf5, fpt(b'fox text', block=512), '         1', 'fox text', '.fpt'),
    memo('FoxPro, length 0 is the empty text', 0xf5, fpt(b''), '         8', '', '.fpt'),
    memo('FoxPro, a pointer into the header', 0xf5, fpt(b'fox'), '         1', None, '.fpt', rejects=1),
    memo('FoxPro, extension in capitals', 0xf5, fpt(b'fox text'), '         8', 'fox text', '.FPT'),
    memo('Visual FoxPro, a binary pointer', 0x30, fpt(b'vfp text'), integer(8), 'vfp text', '.fpt'),
    memo('Visual FoxPro, block 32 is not a blank', 0x30, fpt(*[b'x' * 40] * 24, b'block 32'), integer(32), 'block 32',
         '.fpt'),
    memo('Visual FoxPro, no memo', 0x30, fpt(b'vfp'), integer(0), None, '.fpt'),
    memo('Visual FoxPro, flagged binary', 0x30, fpt(b'\xff\0'), integer(8), Bytes(b'\xff\0'), '.fpt', flags=4),
    memo('Visual FoxPro, a blob', 0x32, fpt(b'\x89PNG\0', kind=0), integer(8), Bytes(b'\x89PNG\0'), '.fpt', kind='W'),
    memo('an object', 0x30, fpt(b'ole\0', kind=2), integer(8), Bytes(b'ole\0'), '.fpt', kind='G'),
    memo('a zero byte in a memo', 0x30, fpt(b'a\0b'), integer(8), 'a\0b', '.fpt', rows_postgresql=[(1, None)],
         rejects_postgresql=1),
    memo('a memo of a million bytes', 0x30, fpt(b"it's\\" * 200000), integer(8), "it's\\" * 200000, '.fpt'),
    memo('a memo of thousands of lines', 0x30, fpt(b"it's a line\r\n" * 3000), integer(8), "it's a line\r\n" * 3000,
         '.fpt'),
    memo('the memo file is missing', 0x83, None, '         1', None, status=3, rejects=None),
    memo('the memo file is missing, no pointer set', 0x83, None, '          ', None, status=0),
    Hazard('memos', 'without memo columns',
           {'.dbf': table([field('ID', 'N', 3), field('NOTE', 'M', 10)], [['1', '1']], version=0x83)},
           [(1,)], options=['--no-memo'], columns=['id']),
]

HAZARDS = TEXTS + CODE_PAGES + MEMOS
