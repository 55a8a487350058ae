"""Damaged and missing files. Either one error line names the file, with exit status 1 and nothing left; or everything
that can be carried is carried, and the rest is reported with status 3."""
import os
import re
import unittest

from support import SANITIZED, ProgramTest, bent, limits, make_data, sample, table, write

GOOD = table([['r1c1', '12'], ['r2c1', '22'], ['r3c1', '32']])
HEADER = 97   # 32 + 2 * 32 + 1
RECORD = 11

# Headers that fit no table.
BENT_TABLES = {
    'nothing': b'',
    'one byte': GOOD[:1],
    'cut in the header': GOOD[:31],
    'header alone': GOOD[:32],
    'cut in a descriptor': GOOD[:70],
    'header length 0': bent(GOOD, 8, b'\0\0'),
    'header length 31': bent(GOOD, 8, b'\x1f\0'),
    'header length 32': bent(GOOD, 8, b'\x20\0'),
    'header longer than the file': bent(GOOD, 8, b'\0\x10'),
    'header length over 32767': bent(GOOD, 8, b'\0\x80'),
    'record length 0': bent(GOOD, 10, b'\0\0'),
    'record length 1': bent(GOOD, 10, b'\1\0'),
    'record length too small': bent(GOOD, 10, b'\x0a\0'),
    'field length 255': bent(GOOD, 32 + 16, b'\xff'),
}

# (bytes, records stored, a part of the line that reports it)
BENT_RECORDS = {
    'cut in a record': (GOOD[:HEADER + RECORD + 4], ['r1c1'], 'record 2'),
    'cut after a record': (GOOD[:HEADER + 2 * RECORD], ['r1c1', 'r2c1'], '3'),
    'count too large': (bent(GOOD, 4, b'\xc8'), ['r1c1', 'r2c1', 'r3c1'], '200'),
    'largest count': (bent(GOOD, 4, b'\xff' * 4), ['r1c1', 'r2c1', 'r3c1'], '4294967295'),
    'count too small': (bent(GOOD, 4, b'\1'), ['r1c1', 'r2c1', 'r3c1'], '1'),
}

# (bytes, arguments after the file, a part of the reason)
BENT_TEXTS = {
    'open.csv': (b'a,b\n1,2\n"3,4\n', [], 'line 3'),
    'after.csv': (b'a,b\n1,2\n"3"x,4\n', [], 'line 3'),
    'utf16.csv': (b'\xff\xfea\0,\0b\0\n\0', [], 'UTF-16'),
}


class BentTables(ProgramTest):
    def test_header_that_does_not_fit(self):
        for name, content in BENT_TABLES.items():
            write('a.dbf', content)
            for arguments in [['show', 'a.dbf'], ['list', 'a.dbf'], ['script', 'a.dbf'],
                              ['convert', 'a.dbf', '--to', 'csv', '-o', 'out'], ['load', 'a.dbf', '--into', 'a.db'],
                              ['query', 'a.dbf', 'SELECT * FROM a'], ['verify', 'a.dbf', 'b.db']]:
                with self.subTest(name, command=arguments[0]):
                    result = self.run_program(*arguments, '-q')
                    self.assertEqual((result.code, result.out), (1, ''))
                    self.assertRegex(result.err, r'\Akd_db: a\.dbf: [^\n]+\n\Z')
                    self.assertEqual(self.files(), ['a.dbf'])

    def test_records_that_do_not_fit(self):
        for name, (content, stored, told) in BENT_RECORDS.items():
            with self.subTest(name):
                write('a.dbf', content)
                result = self.run_program('load', 'a.dbf', '--into', 'a.db', '--replace')
                self.assertEqual(result.code, 3)
                self.assertRegex(result.err, r'\Akd_db: a\.dbf: [^\n]*' + told)
                self.assertEqual(self.values('a.db', 'SELECT name FROM a'), stored)

    def test_classic_script_refuses_tables_that_do_not_fit(self):
        for name in ['cut in a record', 'cut after a record', 'count too large']:
            with self.subTest(name):
                write('a.dbf', BENT_RECORDS[name][0])
                result = self.run_program('script', 'a.dbf')
                self.assertEqual((result.code, result.out), (1, ''))
                self.assertEqual(self.files(), ['a.dbf'])

    def test_cut_record_ends_the_command_on_request(self):
        write('a.dbf', BENT_RECORDS['cut in a record'][0])
        result = self.run_program('load', 'a.dbf', '--into', 'a.db', '--on-error', 'stop')
        self.assertEqual(result.code, 1)
        self.assertEqual(self.files(), ['a.dbf'])

    def test_table_cut_at_every_byte(self):
        sizes = range(len(GOOD))
        names = [write(f'{size:03}.dbf', GOOD[:size]) for size in sizes]
        result = self.run_program('load', *names, '--into', 'a.db', '-q')
        self.assertEqual(result.code, 1)
        named = re.findall(r'^kd_db: (\d+)\.dbf: [^\n]+$', result.err, re.M)
        # Only the last byte, which ends the records, is not missed.
        self.assertEqual(sorted(set(map(int, named))), [*sizes[:-1]])
        self.assertEqual(len(result.err.splitlines()), len(named))
        self.assertEqual(self.tables('a.db'), [f'{size:03}' for size in sizes[HEADER:]])

    def test_every_type_byte_can_be_loaded(self):
        names = [write(f't{byte:03}.dbf', bent(GOOD, 32 + 11, bytes([byte]))) for byte in range(256)]
        self.assertEqual(self.run_program('load', *names, '--into', 'a.db').code, 3)
        self.assertEqual([f'{table}.dbf' for table in self.tables('a.db')], names)

    def test_every_byte_in_a_record_can_be_listed(self):
        values = [byte for byte in range(256) if byte != 0x1A]  # which ends the table
        whole = table([['', '']] * len(values))
        write('a.dbf', whole[:HEADER] + b''.join(bytes([byte]) * RECORD for byte in values))
        result = self.run_program('list', 'a.dbf', '--deleted', 'keep')
        self.assertEqual(result.code, 3)
        self.assertEqual(result.out.count('\n'), 2 + len(values))
        write('a.dbf', bent(GOOD, HEADER, b'\x1a' * RECORD))
        self.assertIn(self.run_program('list', 'a.dbf').code, [0, 3])


class BentTexts(ProgramTest):
    def test_the_line_is_named(self):
        for name, (content, arguments, reason) in BENT_TEXTS.items():
            with self.subTest(name):
                write(name, content)
                for command in [['list', name], ['load', name, '--into', 'a.db']]:
                    result = self.run_program(*command, *arguments)
                    self.assertEqual(result.code, 1)
                    self.assertRegex(result.err, f'\\Akd_db: {name}: [^\n]*{reason}[^\n]*\n\\Z')
                    self.assertEqual(self.files(), [name])
                os.remove(name)

    def test_invalid_columns(self):
        sample('parts.txt')
        for columns in ['x', '5|12a', '-5', '99999999999999999999', '12|5', 'a:5-3', 'a:0-3', 'a:1-99999999999999']:
            with self.subTest(columns):
                result = self.run_program('list', 'parts.txt', '--columns=' + columns)
                self.assertEqual((result.code, result.out), (2, ''))
                self.assertRegex(result.err, r'\Akd_db: parts\.txt: [^\n]+\n')

    @unittest.skipIf(SANITIZED, 'the sanitizers need more memory than there is')
    def test_far_columns_and_wide_lines_need_no_further_memory(self):
        write('far.txt', 'x\n')
        result = self.run_program('list', 'far.txt', '--columns', '999999999', preexec_fn=limits(AS=200000000))
        self.assertIn(result.code, [0, 1, 2, 3])
        self.assertNotIn('memory', result.err)


class NoFile(ProgramTest):
    COMMANDS = [['show', 'a.dbf'], ['list', 'a.dbf'], ['list', 'a.csv'], ['show', 'a.txt', '--columns', '1'],
                ['convert', 'a.dbf', '--to', 'csv'], ['script', 'a.dbf'], ['load', 'a.dbf', '--into', 'x.db'],
                ['import', 'a.sql', '--into', 'x.db', '-q'], ['query', 'a.db', 'SELECT 1'],
                ['query', 'a.dbf', 'SELECT 1'], ['memory', 'a.mem'], ['inspect', 'a.dbf'], ['verify', 'a.dbf', 'x.db']]

    def test_missing_file(self):
        for arguments in self.COMMANDS:
            with self.subTest(arguments):
                self.check_failure(arguments, arguments[1] + ': No such file or directory')
                self.assertEqual(self.files(), [])

    def test_folder(self):
        for arguments in self.COMMANDS:
            if arguments[0] in ['load', 'query', 'show']:
                continue  # a folder means the tables in it
            with self.subTest(arguments):
                os.mkdir(arguments[1])
                self.check_failure(arguments, arguments[1] + ': Is a directory')
                os.rmdir(arguments[1])

    def test_loop_of_links(self):
        for arguments in self.COMMANDS:
            with self.subTest(arguments):
                os.symlink(arguments[1], arguments[1])
                self.check_failure(arguments, arguments[1] + ': Too many levels of symbolic links')
                os.remove(arguments[1])

    def test_file_name_with_a_line_end_stays_on_one_line(self):
        self.check_failure(['show', 'a\n\x1bb.dbf'], 'a\\x0a\\x1bb.dbf: No such file or directory')

    @unittest.skipIf(os.geteuid() == 0, 'everything can be read by root')
    def test_file_without_permission(self):
        os.chmod(sample('members.dbf'), 0)
        self.check_failure(['list', 'members.dbf'], 'members.dbf: Permission denied')

    @unittest.skipIf(SANITIZED, 'the sanitizers need descriptors themselves')
    def test_no_descriptor_left(self):
        sample('members.dbf')
        code, _, err = self.run_program('list', 'members.dbf', preexec_fn=limits(NOFILE=3), close_fds=False)
        self.assertNotEqual(code, 0)
        self.assertNotEqual(err, '')

    def test_folder_on_the_way_is_a_file(self):
        sample('members.dbf')
        self.check_failure(['list', 'members.dbf/x.dbf'], 'members.dbf/x.dbf: Not a directory')


class Damage(ProgramTest):
    def test_memo_pointers_outside_the_file(self):
        write('clients.dbf', make_data.CLIENTS.replace(b'         1', b' 999999999'))
        sample('clients.dbt')
        result = self.run_program('load', 'clients.dbf', '--into', 'a.db')
        self.assertEqual(result.code, 3)
        self.assertRegex(result.err, r'\Akd_db: clients\.dbf: record 1, column NOTE: [^\n]+; stored as NULL\n')


if __name__ == '__main__':
    unittest.main()
