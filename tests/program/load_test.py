"""load: every value arrives, and all or nothing does."""
import os
import unittest

from support import ProgramTest, content, many_records, sample, table, write

STOCK_ROWS = '''\
Desk lamp|12|34.5|2024-02-29|1|1.25|3
Painter's ladder|3|119|2023-11-05|0|14.8|7
12" ruler|240|1.95|-|1|0.04|9
Nameless box|-|-|-|-|-|11
Rope; 20 m|17|-2.5|2024-03-10|0|2.125|12
'''.splitlines()

TYPES = [('C', 'C', 14, 0), ('N0', 'N', 20, 0), ('N2', 'N', 20, 2), ('F', 'F', 20, 2), ('L', 'L', 1, 0),
         ('D', 'D', 8, 0), ('M', 'M', 10, 0), ('X', 'X', 12, 0)]

# column, text in the table, value in the database (quoted by SQLite), storage class
VALUES = [
    ('C', "it's; \"q\" `b`", None, 'text'),
    ('C', '  007', "'  007'", 'text'),
    ('C', '1e5', "'1e5'", 'text'),
    ('C', 'NULL', "'NULL'", 'text'),
    ('N0', '0', '0', 'integer'),
    ('N0', '-17', '-17', 'integer'),
    ('N0', '999999999', '999999999', 'integer'),
    ('N0', '1000000000', '1000000000', 'integer'),
    ('N0', '-9223372036854775808', '-9223372036854775808', 'integer'),
    ('N0', '********', "'********'", 'text'),
    ('N0', '1 2', "'1 2'", 'text'),
    ('N0', '-', "'-'", 'text'),
    ('N0', '.', "'.'", 'text'),
    ('N2', '12.25', '12.25', 'real'),
    ('N2', '-.5', '-0.5', 'real'),
    ('N2', '7.', '7', 'integer'),
    ('N2', '123456789012.345', '123456789012.345', 'real'),
    ('N2', '0.000000000000001', '1.0e-15', 'real'),
    ('F', '3', '3.0', 'real'),
    ('F', '-1234567.875', '-1234567.875', 'real'),
    ('L', 'T', '1', 'integer'), ('L', 't', '1', 'integer'), ('L', 'Y', '1', 'integer'), ('L', 'y', '1', 'integer'),
    ('L', 'F', '0', 'integer'), ('L', 'f', '0', 'integer'), ('L', 'N', '0', 'integer'), ('L', 'n', '0', 'integer'),
    ('L', '?', 'NULL', 'null'), ('L', '1', 'NULL', 'null'),
    ('D', '20240305', "'2024-03-05'", 'text'),
    ('D', '0012', "'0012'", 'text'),
    ('D', '1.50', "'1.50'", 'text'),
    ('D', '2024/3/5', "'2024/3/5'", 'text'),
    ('M', '12', "'12'", 'text'),
    ('X', '0012', "'0012'", 'text'),
]


def literal(text):
    return "'" + text.replace("'", "''") + "'"


class Load(ProgramTest):
    def test_sample_table(self):
        sample('stock.dbf')
        self.check(['load', 'stock.dbf', '--into', 'stock.db'], '',
                   'Table: stock.dbf\nstock.dbf: 6 records read, 1 left out, 5 stored in table stock\n')
        columns = "||'|'||".join(f"ifnull({name},'-')"
                                 for name in 'article pieces price counted on_sale weight remark'.split())
        self.assertEqual(self.rows('stock.db', f'SELECT {columns} FROM stock'), STOCK_ROWS)
        self.check_intact('stock.db')

    def test_definition(self):
        write('t.dbf', table([], TYPES))
        self.run_program('load', 't.dbf', '--into', 't.db')
        self.assertEqual(self.rows('t.db', 'SELECT sql FROM sqlite_master'),
                         ['CREATE TABLE "t" ("c" char(14), "n0" integer, "n2" decimal(20,2), "f" float, "l" boolean,'
                          ' "d" date text, "m" text, "x" text)'])

    def test_every_kind_of_value(self):
        names = [name for name, *_ in TYPES]
        records = [[text if name == column else '' for name in names] for column, text, *_ in VALUES]
        write('t.dbf', table(records, TYPES))
        self.check(['load', 't.dbf', '--into', 't.db'], '',
                   f'Table: t.dbf\nt.dbf: {len(VALUES)} records read, 0 left out, {len(VALUES)} stored in table t\n')
        for number, (column, text, value, kind) in enumerate(VALUES, 1):
            with self.subTest(column=column, text=text):
                if value is None:  # a literal with a backquote cannot be written in a query
                    value = self.rows('t.db', f'SELECT quote(replace({literal(text)}, char(34), char(96)))')[0]
                    found = self.rows('t.db', "SELECT quote(replace(c, char(34), char(96))) FROM t WHERE rowid = 1")
                    self.assertEqual(found, [value])
                    continue
                found = self.rows('t.db', f'SELECT quote({column})||typeof({column}) FROM t WHERE rowid = {number}')
                self.assertEqual(found, [value + kind])

    def test_empty_values_are_null(self):
        write('t.dbf', table([[''] * len(TYPES)], TYPES))
        self.run_program('load', 't.dbf', '--into', 't.db')
        nulls = ' AND '.join(f'{name} IS NULL' for name, *_ in TYPES)
        self.assertEqual(self.rows('t.db', f'SELECT count(*) FROM t WHERE {nulls}'), ['1'])

    def test_numbers_with_more_digits_than_sqlite_keeps_are_counted(self):
        records = [['1234567890.123456', '1'], ['12345678901234.5', '123456789012345'], ['0.10', '1234567890123456'],
                   ['9223372036854775807', '1'], ['9223372036854775808', '1']]
        write('t.dbf', table(records, [('N', 'N', 20, 6), ('F', 'F', 20, 0)]))
        self.check(['load', 't.dbf', '--into', 't.db'], '',
                   'Table: t.dbf\nt.dbf: 3 numbers rounded: more digits than SQLite keeps\n'
                   't.dbf: 5 records read, 0 left out, 5 stored in table t\n')

    def test_delimited_values_arrive_verbatim(self):
        write('A.csv', 'x,"y"\n 1,"a ""b"\n,\n')
        self.check(['load', 'A.csv', '--into', 'a.db'], '',
                   'Table: A.csv\nA.csv: 2 records read, 0 left out, 2 stored in table a\n')
        self.assertEqual(self.rows('a.db', 'SELECT quote(x)||quote("""y""") FROM a'),
                         ["' 1''\"a \"\"b\"'", 'NULLNULL'])

    def test_unquote(self):
        write('a.csv', '"x"\n"007"\n""\n')
        self.run_program('load', 'a.csv', '--into', 'a.db', '--unquote')
        self.assertEqual(self.rows('a.db', 'SELECT quote(x) FROM a'), ["'007'", 'NULL'])

    def test_positional_table(self):
        sample('parts.txt')
        self.run_program('load', 'parts.txt', '--columns', '5|12|20', '--into', 'p.db', '--table', 'Parts')
        self.assertEqual(self.rows('p.db', 'SELECT quote("field#0")||"field#1"||"field#2" FROM Parts'),
                         ["'bolt'M8x40hall A", "'hinge'brasshall C"])

    def test_bytes_read_as_blanks_are_told(self):
        write('a.dbf', table([['Wurz', '12']]).replace(b'Wurz', b'W\xfcrz'))
        self.check(['load', 'a.dbf', '--into', 'a.db'], '',
                   'Table: a.dbf\na.dbf: 1 byte outside printable ASCII read as blanks\n'
                   'a.dbf: 1 record read, 0 left out, 1 stored in table a\n')

    def test_second_table_into_the_same_database(self):
        sample('stock.dbf')
        sample('members.dbf')
        for name in ['stock', 'members']:
            self.assertEqual(self.run_program('load', name + '.dbf', '--into', 'all.db').code, 0)
        self.assertEqual(self.rows('all.db', "SELECT name FROM sqlite_master ORDER BY name"), ['members', 'stock'])


class AllOrNothing(ProgramTest):
    def test_existing_table_is_an_error_and_stays(self):
        sample('stock.dbf')
        self.run_program('load', 'stock.dbf', '--into', 'a.db')
        before = content('a.db')
        self.check_failure(['load', 'stock.dbf', '--into', 'a.db', '--table', 'STOCK'],
                           'a.db: table "STOCK" already exists [#1]', 'Table: stock.dbf\n')
        self.assertEqual(content('a.db'), before)
        self.assertEqual(sorted(os.listdir('.')), ['a.db', 'stock.dbf'])

    def test_bad_record_behind_many_good_ones_leaves_nothing(self):
        good = many_records(20000)
        write('m.dbf', good[:-5])
        sample('members.dbf')
        self.run_program('load', 'members.dbf', '--into', 'old.db')
        before = content('old.db')
        for database in ['old.db', 'new.db']:
            self.check_failure(['load', 'm.dbf', '--into', database],
                               'm.dbf: record 20000 is cut by the end of the file', 'Table: m.dbf\n')
        self.assertEqual(content('old.db'), before)
        self.assertEqual(sorted(os.listdir('.')), ['m.dbf', 'members.dbf', 'old.db'])

    def test_database_that_is_none(self):
        sample('members.dbf')
        write('x.db', 'no database at all, but long enough to be looked at: ' * 40)
        self.check_failure(['load', 'members.dbf', '--into', 'x.db'], 'x.db: file is not a database [#26]',
                           'Table: members.dbf\n')

    def test_folder_of_the_database_is_missing(self):
        sample('members.dbf')
        self.check_failure(['load', 'members.dbf', '--into', 'no/x.db'], 'no/x.db: No such file or directory',
                           'Table: members.dbf\n')

    def test_database_that_is_a_folder(self):
        sample('members.dbf')
        os.mkdir('x.db')
        self.check_failure(['load', 'members.dbf', '--into', 'x.db'], 'x.db: unable to open database file [#14]',
                           'Table: members.dbf\n')
        self.assertTrue(os.path.isdir('x.db'))

    def test_duplicate_and_empty_names(self):
        write('d.csv', 'a,A\n1,2\n')
        self.check_failure(['load', 'd.csv', '--into', 'x.db'], 'x.db: duplicate column name: a [#1]',
                           'Table: d.csv\n')
        write('e.csv', 'a,\n1,2\n')
        self.check_failure(['load', 'e.csv', '--into', 'x.db'], 'e.csv: column 2 has no name', 'Table: e.csv\n')
        self.assertEqual(sorted(os.listdir('.')), ['d.csv', 'e.csv'])


class Names(ProgramTest):
    """Names cannot break out of their quotes. A backquote arrives as a double quote."""
    NAMES = ['a"b', 'a`b', "a'b", 'a;b', 'a b', '"', '`', '``', '"); DROP TABLE keep; --', '`); DROP TABLE keep; --',
             'x\x01\x1b[2J', 'select', 'a\nb', '$1', '?', ':a', '[a]', 'a/*', 'a--', '\xe4']

    def check_name(self, name, sql, *arguments):
        """Loads t.csv beside a table that must stay; `sql` tells the name that arrived."""
        write('keep.csv', 'k\nkept\n')
        self.assertEqual(self.run_program('load', 'keep.csv', '--into', 'a.db').code, 0)
        self.assertEqual(self.run_program('load', 't.csv', '--into', 'a.db', *arguments).code, 0)
        self.assertEqual('\n'.join(self.rows('a.db', sql)), name.replace('`', '"'))
        self.assertEqual(self.rows('a.db', 'SELECT k FROM keep'), ['kept'])
        os.remove('a.db')

    def test_table_names(self):
        write('t.csv', 'x\n1\n')
        for name in self.NAMES:
            with self.subTest(name):
                self.check_name(name, 'SELECT name FROM sqlite_master ORDER BY rowid DESC LIMIT 1',
                                '--table', name.encode('latin-1'))

    def test_column_names(self):
        for name in self.NAMES:
            if '\n' not in name:
                with self.subTest(name):
                    write('t.csv', name + '\n1\n')
                    self.check_name(name.lower(), "SELECT name FROM pragma_table_info('t')")

    def test_values(self):
        for name in self.NAMES:
            if '\n' not in name:
                with self.subTest(name):
                    write('t.csv', 'x\n' + name + '\n')
                    # A result shows no difference between the two, so the backquote is made another byte.
                    self.check_name(name.replace('`', '~'), 'SELECT replace(x, char(96), char(126)) FROM t')

    def test_database_names_are_files_whatever_they_look_like(self):
        write('t.csv', 'x\n1\n')
        for name in [':memory:', 'file:other.db?mode=memory', "it's; a \"name\".db"]:
            with self.subTest(name):
                self.assertEqual(self.run_program('load', 't.csv', '--into', name).code, 0)
                self.assertTrue(os.path.isfile(name))
                self.assertEqual(self.rows(name, 'SELECT x FROM t'), ['1'])


if __name__ == '__main__':
    unittest.main()
