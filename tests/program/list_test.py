"""list and memory: records as a table, CSV and JSON lines."""
import os
import unittest

from support import ProgramTest, content, json_lines, make_data, sample, table, write

CLIENTS = '''\
 ID  NAME          TOWN    SINCE          LIMIT  ACTIVE  NOTE
---  ------------  ------  ----------  --------  ------  ------------------------------------------------------------------------
101  Zoë Müller    Köln    2019-04-01   1500.00  true    Pays by invoice.\\r\\nCall before delivery: the yard is closed on Fridays.
102  Sean O'Brien  Cork    2020-11-15    250.50  true    Wants O'Brien's old rate.
104  Ines Garção   Lisboa  NULL            NULL  false   NULL
105  Pia Lund      Malmö   2024-02-29  99999.99  NULL    NULL
'''.encode().decode('latin-1')
CLIENTS_NOTES = '''\
clients.dbf: code page CP1252: language byte 03
clients.dbf: 1 deleted record left out
clients.dbf: 5 records read, 1 left out, 4 shown
'''


class List(ProgramTest):
    def check_list(self, arguments, out):
        self.check(['list', *arguments, '--quiet'], out)

    def test_records_are_aligned_under_their_names(self):
        sample('clients.dbf', 'clients.dbt')
        self.check(['list', 'clients.dbf'], CLIENTS, CLIENTS_NOTES)

    def test_quiet_leaves_notes_and_tally_out(self):
        sample('clients.dbf', 'clients.dbt')
        self.check(['list', 'clients.dbf', '-q'], CLIENTS)

    def test_select_chooses_columns_and_their_order(self):
        sample('orders.dbf')
        self.check_list(['orders.dbf', '--select', 'amount,NUMBER'],
                        ' AMOUNT  NUMBER\n-------  ------\n 310.00    7001\n  48.25    7002\n1021.40    7003\n'
                        '  75.10    7004\n')
        self.check_usage(['list', 'orders.dbf', '--select', 'total'], 'orders.dbf: there is no column total')

    def test_records_and_limit(self):
        sample('orders.dbf')
        for arguments, numbers in [(['--records', '2-3'], ['7002', '7003']), (['--records', '4-'], ['7004']),
                                   (['--records', '-1'], ['7001']), (['--limit', '2'], ['7001', '7002']),
                                   (['--records', '2-', '--limit', '1'], ['7002']), (['--records', '9-'], [])]:
            with self.subTest(arguments):
                out = self.run_program('list', 'orders.dbf', '--select', 'NUMBER', '-q', *arguments).out
                self.assertEqual(out.split()[2:], numbers)

    def test_deleted_records(self):
        sample('members.dbf')
        write('m.dbf', make_data.dbf([('A', 'C', 4, 0)], [(' ', ['r1c1']), ('*', ['r2c1']), (' ', ['r3c1'])]))
        self.check_list(['m.dbf'], 'A\n----\nr1c1\nr3c1\n')
        self.check_list(['m.dbf', '--deleted', 'keep'], 'A\n----\nr1c1\nr2c1\nr3c1\n')
        self.check_list(['m.dbf', '--deleted', 'mark'],
                        'A     _deleted\n----  --------\nr1c1  false\nr2c1  true\nr3c1  false\n')

    def test_comma_separated(self):
        sample('cities.csv')
        self.check(['list', 'cities.csv'],
                   'City     Country  Founded\n-------  -------  -------\nAldwick  Norland  1204\nBryne    Sarland  1377\n'
                   'Castor   NULL     1666\n', 'cities.csv: 3 records read, 0 left out, 3 shown\n')

    def test_tab_separated(self):
        for name in ['readings.tab', 'r.tsv', 'R.TSV']:
            write(name, make_data.READINGS_TAB)
            self.check_list([name], 'Station  Day         Level\n-------  ----------  -----\nnorth    2024-03-01  4.2\n'
                                    'south    2024-03-02  3.9\n')

    def test_fixed_columns(self):
        sample('parts.txt')
        self.check_list(['parts.txt', '--columns', 'kind:6-12,size:13-20'],
                        'kind   size\n-----  -----\nbolt   M8x40\nhinge  brass\n')
        self.check_list(['parts.txt', '--columns', '5|12|20'],
                        'field#0  field#1  field#2\n-------  -------  -------\nbolt     M8x40    hall A\n'
                        'hinge    brass    hall C\n')

    def test_extension_in_any_case_and_from(self):
        write('A.DBF', make_data.MEMBERS)
        write('members', make_data.MEMBERS)
        expected = self.run_program('list', sample('members.dbf'), '-q').out
        self.check_list(['A.DBF'], expected)
        self.check_list(['members', '--from', 'dbf'], expected)

    def test_standard_input_is_read_if_it_is_named(self):
        self.check(['list', '-', '--from', 'csv', '-q'], 'x  y\n-  -\n1  2\n', stdin=b'x,y\n1,2\n')
        self.check(['list', '-', '--from', 'dbf', '-q'], self.run_program('list', sample('members.dbf'), '-q').out,
                   stdin=make_data.MEMBERS)

    def test_other_commands_leave_standard_input_alone(self):
        sample('members.dbf')
        write('lines', 'one\ntwo\n')
        for arguments in [['list', 'members.dbf'], ['show', 'members.dbf'], ['load', 'members.dbf', '--into', 'a.db'],
                          ['query', 'a.db', 'SELECT 1'], ['verify', 'members.dbf', 'a.db']]:
            with self.subTest(arguments), open('lines', 'rb') as lines:
                self.assertEqual(self.run_program(*arguments, stdin=lines).code, 0)
                self.assertEqual(lines.read(), b'one\ntwo\n')

    def test_empty_tables(self):
        write('a.csv', 'x,y\n')
        self.check(['list', 'a.csv'], 'x  y\n-  -\n', 'a.csv: 0 records read, 0 left out, 0 shown\n')
        write('a.dbf', table([]))
        self.check_list(['a.dbf'], 'NAME  COUNT\n----  -----\n')

    def test_wide_and_combining_characters_are_aligned(self):
        write('a.csv', 'a,b\n東京,1\nu\u0308,2\n'.encode())
        self.check_list(['a.csv'], 'a     b\n----  -\n東京  1\nu\u0308     2\n'.encode().decode('latin-1'))

    def test_control_characters_are_shown(self):
        write('a.csv', 'a,b\n"x\ny\tz",\x1b[2J\n')
        self.check_list(['a.csv'], 'a        b\n-------  -------\nx\\ny\\tz  \\x1b[2J\n')

    def test_file_name_with_a_line_end_stays_on_one_line(self):
        write('a\n\x1bb.csv', 'x\n1\n')
        self.assertEqual(self.run_program('list', 'a\n\x1bb.csv').err,
                         'a\\x0a\\x1bb.csv: 1 record read, 0 left out, 1 shown\n')


class Formats(ProgramTest):
    def test_csv(self):
        sample('clients.dbf', 'clients.dbt')
        self.check(['list', 'clients.dbf', '-q', '--format', 'csv', '--select', 'NAME,SINCE,LIMIT,ACTIVE'],
                   "NAME,SINCE,LIMIT,ACTIVE\nZoë Müller,2019-04-01,1500.00,true\nSean O'Brien,2020-11-15,250.50,true\n"
                   'Ines Garção,,,false\nPia Lund,2024-02-29,99999.99,\n'.encode().decode('latin-1'))

    def test_json_lines(self):
        sample('members.dbf')
        out = self.run_program('list', 'members.dbf', '--format', 'jsonl', '--limit', '1').out
        self.assertEqual(json_lines(out), [{'ID': 101, 'NAME': 'Ada Quill', 'JOINED': '2019-04-01', 'FEE': 24.0}])

    def test_output_is_a_file_written_whole(self):
        sample('members.dbf')
        for form in ['table', 'csv', 'jsonl']:
            out = self.run_program('list', 'members.dbf', '--format', form).out
            self.check(['list', 'members.dbf', '-q', '--format', form, '-o', 'out'])
            self.assertEqual(content('out').decode(), out)

    def test_failed_output_leaves_the_old_file(self):
        write('bad.csv', 'x\n1\n"2')
        write('out', 'precious')
        self.assertEqual(self.run_program('list', 'bad.csv', '-o', 'out').code, 1)
        self.assertEqual(content('out'), b'precious')
        self.assertEqual(self.files(), ['bad.csv', 'out'])

    def test_records_before_a_failure_are_shown(self):
        write('bad.csv', 'x,y\n1,2\n3,4\n"5')
        result = self.run_program('list', 'bad.csv')
        self.assertEqual((result.code, result.out), (1, 'x  y\n-  -\n1  2\n3  4\n'))

    def test_input_is_not_the_output(self):
        write('a.csv', 'x\n1\n')
        os.symlink('a.csv', 'b')
        for output in ['a.csv', './a.csv', 'b']:
            self.check_usage(['list', 'a.csv', '-o', output], f'{output}: is the input file')
        self.assertEqual(content('a.csv'), b'x\n1\n')


class Memory(ProgramTest):
    def test_variables(self):
        sample('settings.mem')
        result = self.run_program('memory', 'settings.mem', '--format', 'jsonl')
        self.assertEqual((result.code, [row['name'] for row in json_lines(result.out)]),
                         (0, ['OWNER', 'SINCE', 'OPEN', 'LIMIT']))

    def test_table(self):
        sample('settings.mem')
        out = self.run_program('memory', 'settings.mem').out
        self.assertEqual(out.splitlines()[0].split(), ['name', 'type', 'value'])

    def test_extension_does_not_matter(self):
        write('settings', make_data.SETTINGS_MEM)
        self.assertEqual(self.run_program('memory', 'settings').out, self.run_program('memory', sample('settings.mem')).out)


class Samples(ProgramTest):
    def test_sample_files_are_those_of_their_script(self):
        for name, expected in make_data.FILES.items():
            with self.subTest(name):
                self.assertEqual(content(os.path.join(os.environ['KD_EXAMPLES'], name)), expected)


if __name__ == '__main__':
    unittest.main()
