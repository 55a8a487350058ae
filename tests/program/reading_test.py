"""show, list and memory on sound files."""
import os
import unittest

from support import ProgramTest, make_data, sample, table, write

STOCK_HEADER = '''\
Header information
------------------
Database      : {path}
Table         : stock
xBase version : 3
Header length : 257
Fields        : 7
Last update   : 202435
Records       : 6

Fields:
0\tarticle\tchar\t1\t18\t0\t0
1\tpieces\tinteger\t19\t6\t0\t0
2\tprice\tinteger\t25\t9\t2\t0
3\tcounted\tdate\t34\t8\t0\t0
4\ton_sale\tboolean\t42\t1\t0\t0
5\tweight\tfloat\t43\t8\t3\t0
6\tremark\tmemo\t51\t10\t0\t0

'''

STOCK_LIST = '''\
           article pieces     price  counted on_sale   weight     remark
------------------------------------------------------------------------
         Desk lamp     12     34.50 20240229       T    1.250          3
  Painter's ladder      3    119.00 20231105       F   14.800          7
         12" ruler    240      1.95                Y    0.040          9
      Nameless box                                 ?                  11
        Rope; 20 m     17     -2.50 20240310       n    2.125         12
'''


class Show(ProgramTest):
    def test_xbase_header_and_columns(self):
        sample('stock.dbf')
        self.check(['show', 'stock.dbf'], STOCK_HEADER.format(path=''), 'Table: stock.dbf\n')

    def test_table_in_another_folder(self):
        os.mkdir('store')
        os.chdir('store')
        sample('stock.dbf')
        os.chdir('..')
        self.check(['show', 'store/stock.dbf'], STOCK_HEADER.format(path='store'), 'Table: store/stock.dbf\n')

    def test_home_directory(self):
        sample('stock.dbf')
        code, out, _ = self.run_program('show', '~/stock.dbf', env={**os.environ, 'HOME': self.folder})
        self.assertEqual((code, out), (0, STOCK_HEADER.format(path='~')))

    def test_delimited_table_has_the_count_as_one_character(self):
        sample('cities.csv')
        self.check(['show', 'cities.csv'],
                   'Header information for table : cities\nFields:\n0\tcity\tunknown\t0\t0\t0\t0\n'
                   '1\tcountry\tunknown\t0\t0\t0\t0\n2\tfounded\tunknown\t0\t0\t0\t0\nNumber of records: \0\n',
                   'Table: cities.csv\n')

    def test_positional_table(self):
        sample('parts.txt')
        self.check(['show', 'parts.txt', '--columns', '5|12|20'],
                   'Header information for table : parts\nFields:\n0\tfield#0\tunknown\t5\t5\t0\t0\n'
                   '1\tfield#1\tunknown\t12\t7\t0\t0\n2\tfield#2\tunknown\t20\t8\t0\t0\nNumber of records: \0\n',
                   'Table: parts.txt\n')

    def test_extension_in_any_case(self):
        write('A.DBF', make_data.MEMBERS)
        self.check(['list', 'A.DBF'], self.run_program('list', sample('members.dbf')).out, 'Table: A.DBF\n')
        write('B.Csv', 'x,y\n1,2\n')
        self.check(['list', 'B.Csv'], 'x\ty\n1\t2\n', 'Table: B.Csv\n')

    def test_name_with_dots_and_blanks(self):
        write('a.b c.csv', 'x\n1\n')
        self.check(['list', 'a.b c.csv'], 'x\n1\n', 'Table: a.b c.csv\n')


class List(ProgramTest):
    def test_xbase_table_leaves_deleted_records_out(self):
        sample('stock.dbf')
        self.check(['list', 'stock.dbf'], STOCK_LIST, 'Table: stock.dbf\n')

    def test_deleted_records_are_listed_with_a_mark(self):
        sample('stock.dbf')
        lines = STOCK_LIST.splitlines()
        marked = ['  ' + line for line in lines]
        marked[1] = lines[1] + '--'
        marked.insert(4, '*        Broken vase      0      0.01 19991231       F    0.900          5')
        self.check(['list', 'stock.dbf', '--deleted'], '\n'.join(marked) + '\n', 'Table: stock.dbf\n')

    def test_comma_separated(self):
        sample('cities.csv')
        self.check(['list', 'cities.csv'],
                   'city\tcountry\tfounded\nAldwick\tNorland\t1204\n"Bryne"\tSarland\t1377\nCastor\t\t1666\n',
                   'Table: cities.csv\n')

    def test_unquote_takes_quotes_off_names_and_values(self):
        write('q.csv', '"One",\'two\',three"\n"r1c1",r1c2,"r1c3"\n')
        self.check(['list', 'q.csv'], '"one"\t\'two\'\tthree"\n"r1c1"\tr1c2\t"r1c3"\n', 'Table: q.csv\n')
        self.check(['list', 'q.csv', '--unquote'], 'one\ttwo\tthree"\nr1c1\tr1c2\tr1c3\n', 'Table: q.csv\n')

    def test_tab_separated(self):
        sample('readings.tab')
        expected = make_data.READINGS_TAB.decode().replace('Station\tDay\tLevel', 'station\tday\tlevel')
        self.check(['list', 'readings.tab'], expected, 'Table: readings.tab\n')
        os.rename('readings.tab', 'readings.tsv')
        self.check(['list', 'readings.tsv'], expected, 'Table: readings.tsv\n')

    def test_positional(self):
        sample('parts.txt')
        self.check(['list', 'parts.txt', '--columns', '5|12|20'],
                   'field#0 field#1  field#2\n------------------------\n'
                   '   bolt   M8x40   hall A\n  hinge   brass   hall C\n', 'Table: parts.txt\n')

    def test_carriage_returns_at_line_ends_belong_to_no_value(self):
        write('a.csv', 'x,y\r\nr1c1,r1c2\r\n,\r\n')
        self.check(['list', 'a.csv'], 'x\ty\nr1c1\tr1c2\n\t\n', 'Table: a.csv\n')
        write('a.txt', 'abcdef\r\n')
        self.check(['list', 'a.txt', '--columns', '2:4'], 'field#0 field#1\n---------------\n     cd      ef\n',
                   'Table: a.txt\n')

    def test_byte_order_mark_belongs_to_no_name(self):
        write('a.csv', b'\xef\xbb\xbfx,y\n1,2\n')
        self.check(['list', 'a.csv'], 'x\ty\n1\t2\n', 'Table: a.csv\n')

    def test_last_line_needs_no_end(self):
        write('a.csv', 'x,y\nr1c1,r1c2\nr2c1,r2c2')
        self.check(['list', 'a.csv'], 'x\ty\nr1c1\tr1c2\nr2c1\tr2c2\n', 'Table: a.csv\n')

    def test_table_without_records(self):
        for content in ['x,y', 'x,y\n']:
            write('a.csv', content)
            self.check(['list', 'a.csv'], 'x\ty\n', 'Table: a.csv\n')
        write('a.dbf', table([]))
        self.check(['list', 'a.dbf'], '  name count\n------------\n', 'Table: a.dbf\n')
        write('a.txt', '')
        self.check(['list', 'a.txt', '--columns', '2'], 'field#0\n-------\n', 'Table: a.txt\n')

    def test_line_of_1_mebibyte(self):
        write('a.csv', 'x,y\n' + 'v' * (1048576 - 2) + ',w\n')
        code, out, _ = self.run_program('list', 'a.csv')
        self.assertEqual((code, out), (0, 'x\ty\n' + 'v' * (1048576 - 2) + '\tw\n'))

    def test_records_end_at_the_end_mark(self):
        write('a.dbf', table([['r1c1', '12']]) + b'rubbish behind the end, longer than a record')
        self.check(['list', 'a.dbf'], '  name count\n------------\n  r1c1    12\n', 'Table: a.dbf\n')

    def test_end_mark_may_be_missing(self):
        write('a.dbf', table([['r1c1', '12']])[:-1])
        self.check(['list', 'a.dbf'], '  name count\n------------\n  r1c1    12\n', 'Table: a.dbf\n')

    def test_bytes_read_as_blanks_are_counted(self):
        content = table([['Wurz', '12'], ['Ort', '9']])
        write('a.dbf', content.replace(b'Wurz', b'W\xfcrz').replace(b'Ort ', b'Or\x07\0'))
        self.check(['list', 'a.dbf'], '  name count\n------------\n  W rz    12\n    Or     9\n',
                   'Table: a.dbf\na.dbf: 2 bytes outside printable ASCII read as blanks\n')

    def test_more_records_than_the_header_counts(self):
        content = table([['r1c1', '12'], ['r2c1', '22']])
        write('a.dbf', content[:4] + b'\1' + content[5:])
        self.check(['list', 'a.dbf'], '  name count\n------------\n  r1c1    12\n  r2c1    22\n',
                   'Table: a.dbf\na.dbf: the header counts 1 record, the file holds 2\n')

    def test_data_behind_the_descriptors_are_no_columns(self):
        content = table([['r1c1', '12']])
        header = bytearray(content[:97] + bytes(263))
        header[8:10] = len(header).to_bytes(2, 'little')
        write('a.dbf', bytes(header) + content[97:])
        self.check(['list', 'a.dbf'], '  name count\n------------\n  r1c1    12\n', 'Table: a.dbf\n')


class Memory(ProgramTest):
    def test_listing_is_the_library_s_own(self):
        sample('settings.mem')
        self.check(['memory', 'settings.mem'],
                   'OWNER C 9.0  Ada Quill|\nSINCE D 8.0  20190401l|\nOPEN L 1.0  T0190401l|\n'
                   'LIMIT N 5.2 49505348|\nLIMIT N 5.2 |\n', 'Table: settings.mem\n')

    def test_extension_in_any_case(self):
        write('S.MEM', make_data.mem_entry('A', 'L', 1, 0, b'F'))
        self.check(['memory', 'S.MEM'], 'A L 1.0  F|\nA L 1.0  F|\n', 'Table: S.MEM\n')


class Samples(ProgramTest):
    def test_sample_files_are_what_their_script_makes(self):
        folder = os.environ['KD_EXAMPLES']
        for name, content in make_data.FILES.items():
            with self.subTest(name), open(os.path.join(folder, name), 'rb') as file:
                self.assertEqual(file.read(), content)


if __name__ == '__main__':
    unittest.main()
