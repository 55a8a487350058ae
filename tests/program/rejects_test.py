"""Values that cannot be carried: messages, statuses, and the file of --rejects."""
import os
import unittest

from support import ProgramTest, content, json_lines, make_data, table, write

# Record 1 is sound; 2 has a bad number, 3 a bad date.
COLUMNS = [('NAME', 'C', 4, 0), ('SUM', 'N', 5, 0), ('DAY', 'D', 8, 0)]
BAD = table([['r1c1', '12', '20240305'], ['r2c1', '*****', '20240306'], ['r3c1', '32', '20241399']], COLUMNS)
HEADER = 32 + 3 * 32 + 1
RECORD = 1 + 4 + 5 + 8
NUMBER = 'not a number'
DAY = 'not a day of the calendar'


def reason(result, column):
    """The reason that a message gives for a column."""
    line = next(line for line in result.err.splitlines() if f'column {column}: ' in line)
    return line.split(f'column {column}: ')[1].split(';')[0]


class Rejects(ProgramTest):
    def setUp(self):
        super().setUp()
        write('bad.dbf', BAD)
        result = self.run_program('load', 'bad.dbf', '--into', 'first.db')
        self.number, self.day = reason(result, 'SUM'), reason(result, 'DAY')
        os.remove('first.db')

    def test_unreadable_cells_become_null_and_are_reported(self):
        self.check(['load', 'bad.dbf', '--into', 'a.db'], '',
                   f'kd_db: bad.dbf: record 2, column SUM: {self.number}; stored as NULL\n'
                   f'kd_db: bad.dbf: record 3, column DAY: {self.day}; stored as NULL\n'
                   'bad.dbf: 3 records read, 0 left out, 3 stored in table bad\n', 3)
        self.assertEqual(self.rows('a.db', 'SELECT name, sum, day FROM bad'),
                         [('r1c1', 12, '2024-03-05'), ('r2c1', None, '2024-03-06'), ('r3c1', 32, None)])

    def test_records_may_be_left_out(self):
        self.check(['load', 'bad.dbf', '--into', 'a.db', '--on-error', 'skip'], '',
                   f'kd_db: bad.dbf: record 2, column SUM: {self.number}; the record is left out\n'
                   f'kd_db: bad.dbf: record 3, column DAY: {self.day}; the record is left out\n'
                   'bad.dbf: 3 records read, 2 left out, 1 stored in table bad\n', 3)
        self.assertEqual(self.values('a.db', 'SELECT name FROM bad'), ['r1c1'])

    def test_the_command_may_fail(self):
        offset = HEADER + RECORD + 1 + 4
        self.check_failure(['load', 'bad.dbf', '--into', 'a.db', '--on-error', 'stop'],
                           f'bad.dbf: record 2, column SUM, byte {offset}: {self.number}')
        self.assertEqual(self.files(), ['bad.dbf'])

    def test_all_commands_that_read_records_report_them(self):
        for arguments, verb in [(['list', 'bad.dbf'], 'shown'), (['convert', 'bad.dbf', '--to', 'csv'], 'written'),
                                (['convert', 'bad.dbf', '--to', 'mysql'], 'stored')]:
            with self.subTest(arguments):
                result = self.run_program(*arguments)
                self.assertEqual(result.code, 3)
                self.assertIn(f'column SUM: {self.number}; {verb} as NULL\n', result.err)

    def test_what_becomes_of_a_cell_or_record_is_reported(self):
        write('a.csv', b'a,b\n\xff,1\nx,2,3\n')
        for options, become, cell in [([], 'with U+FFFD', '\ufffd'), (['--encoding-errors', 'escape'], 'as \\xNN', '\\xFF'),
                                      (['--encoding-errors', 'strict'], 'as NULL', '')]:
            with self.subTest(options):
                self.check(['convert', 'a.csv', '--to', 'csv', '-q', *options],
                           f'a,b\n{cell},1\nx,2\n'.encode().decode('latin-1'),
                           f'kd_db: a.csv: record 1, column a: byte 0xFF is not UTF-8; written {become}\n'
                           'kd_db: a.csv: record 2: line 3: 3 cells instead of 2; the surplus cells are left out\n', 3)

    def test_a_missing_memo_file_is_reported_once(self):
        write('notes.dbf', table([[str(i), str(i)] for i in range(30)], [('ID', 'N', 3, 0), ('NOTE', 'M', 10, 0)]))
        self.check(['load', 'notes.dbf', '--into', 'a.db', '--rejects', 'r.jsonl'], '',
                   'kd_db: notes.dbf: memo file: notes.dbt is missing; its values cannot be read\n'
                   'notes.dbf: 30 records read, 0 left out, 30 stored in table notes\n', 3)
        lines = json_lines(content('r.jsonl').decode())
        self.assertEqual([line['record'] for line in lines], list(range(2, 31)))  # pointer 0 is NULL
        self.assertEqual({(line['column'], line['action']) for line in lines}, {('NOTE', 'null')})

    def test_quiet_leaves_errors_and_rejects(self):
        self.check(['load', 'bad.dbf', '--into', 'a.db', '-q'], '',
                   f'kd_db: bad.dbf: record 2, column SUM: {self.number}; stored as NULL\n'
                   f'kd_db: bad.dbf: record 3, column DAY: {self.day}; stored as NULL\n', 3)

    def test_type_text_makes_everything_readable(self):
        self.check(['load', 'bad.dbf', '--into', 'a.db', '--type', 'SUM=text', '--type', 'DAY=text'], '',
                   'bad.dbf: 3 records read, 0 left out, 3 stored in table bad\n')
        self.assertEqual(self.rows('a.db', 'SELECT sum, day FROM bad'),
                         [('12', '20240305'), ('*****', '20240306'), ('32', '20241399')])

    def test_rejects_go_to_a_file_as_json(self):
        result = self.run_program('load', 'bad.dbf', '--into', 'a.db', '--rejects', 'r.jsonl')
        self.assertEqual(result.code, 3)
        self.assertEqual(json_lines(content('r.jsonl').decode()), [
            {'file': 'bad.dbf', 'record': 2, 'offset': HEADER + RECORD + 5, 'column': 'SUM', 'bytes': b'*****'.hex(),
             'reason': self.number, 'action': 'null'},
            {'file': 'bad.dbf', 'record': 3, 'offset': HEADER + 2 * RECORD + 10, 'column': 'DAY',
             'bytes': b'20241399'.hex(), 'reason': self.day, 'action': 'null'}])

    def test_rejects_of_every_policy(self):
        for policy, code, actions in [('skip', 3, ['skip', 'skip']), ('stop', 1, ['stop'])]:
            with self.subTest(policy):
                result = self.run_program('load', 'bad.dbf', '--into', 'a.db', '--replace', '--on-error', policy,
                                          '--rejects', 'r')
                self.assertEqual(result.code, code)
                self.assertEqual([line['action'] for line in json_lines(content('r').decode())], actions)

    def test_file_of_rejects_is_created_without_rejects(self):
        write('good.csv', 'x\n1\n')
        write('r', 'old')
        self.assertEqual(self.run_program('load', 'good.csv', '--into', 'a.db', '--rejects', 'r').code, 0)
        self.assertEqual(content('r'), b'')

    def test_file_of_rejects_that_cannot_be_created(self):
        self.check_failure(['load', 'bad.dbf', '--into', 'a.db', '--rejects', 'no/r'], 'no/r: No such file or directory')
        self.assertEqual(self.files(), ['bad.dbf'])

    def test_rejects_on_standard_output(self):
        result = self.run_program('load', 'bad.dbf', '--into', 'a.db', '--rejects', '-')
        self.assertEqual(len(json_lines(result.out)), 2)

    def test_twenty_rejects_are_printed_and_the_rest_is_counted(self):
        write('many.dbf', table([['r', '*', '']] * 33, COLUMNS))
        lines = [f'kd_db: many.dbf: record {n}, column SUM: {self.number}; stored as NULL' for n in range(1, 21)]
        tally = 'many.dbf: 33 records read, 0 left out, 33 stored in table many'
        for options, rest in [([], '; --rejects FILE lists them all'), (['--rejects', 'r'], '')]:
            with self.subTest(options):
                result = self.run_program('load', 'many.dbf', '--into', 'a.db', '--replace', *options)
                self.assertEqual(result.err.splitlines(),
                                 [*lines, f'kd_db: many.dbf: 13 more like these{rest}', tally])
        self.assertEqual(len(json_lines(content('r').decode())), 33)

    def test_twenty_rejects_need_no_count(self):
        write('many.dbf', table([['r', '*', '']] * 20, COLUMNS))
        self.assertNotIn('more like these', self.run_program('load', 'many.dbf', '--into', 'a.db').err)


class Encoding(ProgramTest):
    """A byte that the code page lacks: 0x81 in CP1252."""

    def setUp(self):
        super().setUp()
        write('a.dbf', table([['W\x81rz', '1']], encoding='latin-1', language=3))

    def loaded(self, *options):
        result = self.run_program('load', 'a.dbf', '--into', 'a.db', '--replace', '--rejects', 'r', *options)
        return result.code, self.values('a.db', 'SELECT name FROM a'), json_lines(content('r').decode())

    def test_byte_is_replaced(self):
        code, values, rejects = self.loaded()
        self.assertEqual((code, values), (3, ['W\ufffdrz']))
        self.assertEqual([(r['action'], r['bytes']) for r in rejects], [('replace', b'W\x81rz  '.hex())])

    def test_byte_is_escaped(self):
        code, values, rejects = self.loaded('--encoding-errors', 'escape')
        self.assertEqual((code, values, [r['action'] for r in rejects]), (3, ['W\\x81rz'], ['escape']))

    def test_cell_is_unreadable(self):
        code, values, rejects = self.loaded('--encoding-errors', 'strict')
        self.assertEqual((code, values, [r['action'] for r in rejects]), (3, [None], ['null']))

    def test_other_code_page(self):
        code, values, rejects = self.loaded('--encoding', 'cp850')
        self.assertEqual((code, values, rejects), (0, ['Würz'], []))
        self.assertEqual(self.loaded('--encoding', '850')[1], ['Würz'])

    def test_unknown_code_page_is_wrong_usage(self):
        result = self.run_program('load', 'a.dbf', '--into', 'new.db', '--encoding', 'klingon')
        self.assertEqual(result.code, 2)
        self.assertIn('klingon', result.err)
        self.assertNotIn('new.db', self.files())


class Rows(ProgramTest):
    """Rows of delimited text that are too short or too long."""

    def setUp(self):
        super().setUp()
        write('a.csv', 'x,y\n1\n2,3,4\n5,6\n')

    def test_short_rows_get_nulls_and_long_ones_are_cut(self):
        result = self.run_program('load', 'a.csv', '--into', 'a.db', '--rejects', 'r')
        self.assertEqual(result.code, 3)
        self.assertEqual(self.rows('a.db', 'SELECT x, y FROM a'), [('1', None), ('2', '3'), ('5', '6')])
        rejects = json_lines(content('r').decode())
        self.assertEqual([(r['record'], r['column'], r['action']) for r in rejects], [(1, None, 'null'), (2, None, 'cut')])
        for line in ['line 2', 'line 3']:
            self.assertIn(line, result.err)

    def test_rows_may_be_left_out_or_end_the_command(self):
        self.assertEqual(self.run_program('load', 'a.csv', '--into', 'a.db', '--on-error', 'skip').code, 3)
        self.assertEqual(self.values('a.db', 'SELECT x FROM a'), ['5'])
        self.assertEqual(self.run_program('load', 'a.csv', '--into', 'b.db', '--on-error', 'stop').code, 1)
        self.assertNotIn('b.db', self.files())


class Memos(ProgramTest):
    def setUp(self):
        super().setUp()
        write('clients.dbf', make_data.CLIENTS)

    def test_missing_memo_file_is_reported(self):
        result = self.run_program('load', 'clients.dbf', '--into', 'a.db')
        self.assertEqual(result.code, 3)
        self.assertIn('clients.dbt', result.err)
        self.assertEqual(self.values('a.db', 'SELECT note FROM clients'), [None] * 4)

    def test_memo_columns_may_be_left_out(self):
        result = self.run_program('load', 'clients.dbf', '--into', 'a.db', '--no-memo')
        self.assertEqual(result.code, 0)
        self.assertNotIn('note', [row[1] for row in self.rows('a.db', 'PRAGMA table_info(clients)')])

    def test_memo_file_may_be_named(self):
        write('other', make_data.CLIENTS_DBT)
        self.assertEqual(self.run_program('load', 'clients.dbf', '--into', 'a.db', '--memo', 'other').code, 0)
        self.assertEqual(self.values('a.db', 'SELECT note FROM clients')[1], "Wants O'Brien's old rate.")


if __name__ == '__main__':
    unittest.main()
