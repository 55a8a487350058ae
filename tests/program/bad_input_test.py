"""Bent and missing files: one error line that names the file, exit code 1, no result, nothing left."""
import os
import unittest

from support import ProgramTest, bent, limits, sample, table, write

GOOD = table([['r1c1', '12'], ['r2c1', '22'], ['r3c1', '32']])
HEADER = 97   # 32 + 2 * 32 + 1
RECORD = 11

# name: (bytes, reason); the same for every command that reads records.
BENT_TABLES = {
    'nothing': (b'', "the file is too short for a table's header"),
    'one byte': (GOOD[:1], "the file is too short for a table's header"),
    'cut in the header': (GOOD[:31], "the file is too short for a table's header"),
    'header alone': (GOOD[:32], "the header's length does not fit the file"),
    'cut in a descriptor': (GOOD[:70], "the header's length does not fit the file"),
    'header length 0': (bent(GOOD, 8, b'\0\0'), "the header's length does not fit the file"),
    'header length 31': (bent(GOOD, 8, b'\x1f\0'), "the header's length does not fit the file"),
    'header length 32': (bent(GOOD, 8, b'\x20\0'), 'the header defines no columns'),
    'header length 33': (bent(GOOD, 8, b'\x21\0'), 'the header defines no columns'),
    'header longer than the file': (bent(GOOD, 8, b'\0\x10'), "the header's length does not fit the file"),
    'header length over 32767': (bent(GOOD, 8, b'\0\x80'), "the header's length does not fit the file"),
    'record length 0': (bent(GOOD, 10, b'\0\0'), "the header's record length is not usable"),
    'record length 1': (bent(GOOD, 10, b'\1\0'), 'the columns need 11 bytes, a record has 1'),
    'record length too small': (bent(GOOD, 10, b'\x0a\0'), 'the columns need 11 bytes, a record has 10'),
    'record length over 32767': (bent(GOOD, 10, b'\0\x80'), "the header's record length is not usable"),
    'field length 255': (bent(GOOD, 32 + 16, b'\xff'), 'the columns need 260 bytes, a record has 11'),
}

BENT_RECORDS = {
    'cut in a record': (GOOD[:HEADER + RECORD + 4], 'record 2 is cut by the end of the file'),
    'cut behind a record': (GOOD[:HEADER + 2 * RECORD], 'record 3 is missing: the header counts 3'),
    'count too large': (bent(GOOD, 4, b'\xc8'), 'record 4 is missing: the header counts 200'),
    'largest count': (bent(GOOD, 4, b'\xff' * 4), 'record 4 is missing: the header counts 4294967295'),
    'record length too large': (bent(GOOD, 10, b'\x40\0'), 'record 1 is cut by the end of the file'),
}

# name: (bytes, arguments behind the file, reason)
BENT_TEXTS = {
    'empty.csv': (b'', [], 'the file is empty'),
    'few.csv': (b'a,b,c\n1,2,3\n4,5\n', [], 'record 2 holds 2 values for 3 columns'),
    'many.csv': (b'a,b\n1,2\n3,4\n5,6,7\n', [], 'record 3 holds 3 values for 2 columns'),
    'blank_line.csv': (b'a,b\n1,2\n\n', [], 'record 2 holds 1 value for 2 columns'),
    'quoted.csv': (b'a,b\n"1,2",3\n', [], 'record 1 holds 3 values for 2 columns'),
    'zero_name.csv': (b'a\0,b\n1,2\n', [], 'the line of names holds a zero byte'),
    'zero.csv': (b'a,b\n1,2\n3,\x004\n', [], 'record 2 holds a zero byte'),
    'zero_last.csv': (b'a,b\n1,2\0', [], 'record 1 holds a zero byte'),
    'long_names.csv': (b'a' * 1048577 + b'\n', [], 'the line of names is too long'),
    'long.csv': (b'a\n' + b'v' * 1048577 + b'\n', [], 'record 1 is longer than 1048576 bytes'),
    'tabs.tab': (b'a\tb\n1\n', [], 'record 1 holds 1 value for 2 columns'),
    'short.txt': (b'abcdefgh\nabcdefg\n', ['--columns', '4'], 'record 2 has 7 bytes, its columns need 8'),
    'behind.txt': (b'ab\n', ['--columns', '9'], 'record 1 has 2 bytes, its columns need 18'),
    'carriage.txt': (b'abcdefg\r\n', ['--columns', '4'], 'record 1 has 7 bytes, its columns need 8'),
    'zero.txt': (b'abcd\0fgh\n', ['--columns', '4'], 'record 1 holds a zero byte'),
}

BAD_COLUMNS = {
    'x': '--columns must be numbers separated by | : or ;',
    '5|': '--columns must be numbers separated by | : or ;',
    '5|12a': '--columns must be numbers separated by | : or ;',
    '-5': '--columns must be numbers separated by | : or ;',
    '99999999999999999999': '--columns must be numbers separated by | : or ;',
    '12|5': '--columns must be numbers that rise',
}


class BentTables(ProgramTest):
    def check_all(self, name, reason, commands):
        for arguments in commands:
            with self.subTest(arguments[0]):
                code, out, err = self.run_program(*arguments)
                self.assertEqual((code, err), (1, f'Table: {name}\nkd_db: {name}: {reason}\n'))
                self.assertTrue(arguments[0] == 'list' or out == '')
                self.assertEqual(os.listdir('.'), [name])

    def test_header_that_does_not_fit(self):
        write('a.dbf', b'')
        for name, (content, reason) in BENT_TABLES.items():
            with self.subTest(name):
                write('a.dbf', content)
                self.check_all('a.dbf', reason, [['show', 'a.dbf'], ['list', 'a.dbf'], ['script', 'a.dbf'],
                                                 ['load', 'a.dbf', '--into', 'a.db']])

    def test_records_that_do_not_fit(self):
        for name, (content, reason) in BENT_RECORDS.items():
            with self.subTest(name):
                write('a.dbf', content)
                self.check_all('a.dbf', reason, [['list', 'a.dbf'], ['script', 'a.dbf'],
                                                 ['load', 'a.dbf', '--into', 'a.db']])

    def test_records_before_the_bad_one_are_listed(self):
        write('a.dbf', BENT_RECORDS['cut in a record'][0])
        self.check(['list', 'a.dbf'], '  name count\n------------\n  r1c1    12\n',
                   'Table: a.dbf\nkd_db: a.dbf: record 2 is cut by the end of the file\n', 1)

    def test_table_cut_at_every_byte_ends_in_one_line(self):
        for size in range(len(GOOD) - 1):
            write('a.dbf', GOOD[:size])
            code, _, err = self.run_program('load', 'a.dbf', '--into', 'a.db')
            self.assertEqual(code, 1, size)
            self.assertRegex(err, r'\ATable: a\.dbf\nkd_db: a\.dbf: [^\n]+\n\Z')
            self.assertEqual(os.listdir('.'), ['a.dbf'])

    def test_every_type_byte_can_be_listed_and_loaded(self):
        for byte in range(256):
            write('a.dbf', bent(GOOD, 32 + 11, bytes([byte])))
            self.assertEqual(self.run_program('list', 'a.dbf').code, 0, byte)
            self.assertEqual(self.run_program('load', 'a.dbf', '--into', 'a.db', '--table', f't{byte}').code, 0, byte)

    def test_every_byte_in_a_record_can_be_listed_and_loaded(self):
        for byte in range(256):
            if byte != 0x1a:
                write('a.dbf', bent(GOOD, HEADER, bytes([byte]) * RECORD))
                self.assertEqual(self.run_program('list', 'a.dbf').code, 0, byte)
                self.assertEqual(self.run_program('load', 'a.dbf', '--into', 'a.db', '--table', f't{byte}').code, 0)

    def test_names_of_11_bytes_and_control_bytes(self):
        write('a.dbf', bent(bent(GOOD, 32, b'ABCDEFGHIJK'), 64, b'\x01\x1b[2J'))
        self.check(['list', 'a.dbf'],
                   'abcdefghijk \x01\x1b[2j\n-----------------\n       r1c1    12\n'
                   '       r2c1    22\n       r3c1    32\n', 'Table: a.dbf\n')


class BentTexts(ProgramTest):
    def test_list_and_load_name_the_record(self):
        for name, (content, arguments, reason) in BENT_TEXTS.items():
            with self.subTest(name):
                write(name, content)
                _, _, err = listed = self.run_program('list', name, *arguments)
                self.assertEqual((listed.code, err), (1, f'Table: {name}\nkd_db: {name}: {reason}\n'))
                self.check_failure(['load', name, '--into', 'a.db', *arguments], f'{name}: {reason}',
                                   f'Table: {name}\n')
                self.assertEqual(os.listdir('.'), [name])
                os.remove(name)

    def test_columns_that_are_no_rising_numbers(self):
        sample('parts.txt')
        for columns, reason in BAD_COLUMNS.items():
            with self.subTest(columns):
                self.check_failure(['list', 'parts.txt', '--columns=' + columns], 'parts.txt: ' + reason)


class NoFile(ProgramTest):
    COMMANDS = [['show', 'a.dbf'], ['list', 'a.dbf'], ['list', 'a.csv'], ['show', 'a.txt', '--columns', '1'],
                ['script', 'a.dbf'], ['load', 'a.dbf', '--into', 'x.db'], ['import', 'a.sql', '--into', 'x.db'],
                ['query', 'a.db', 'SELECT 1'], ['memory', 'a.mem']]

    def test_missing_file(self):
        for arguments in self.COMMANDS:
            with self.subTest(arguments):
                self.check_failure(arguments, arguments[1] + ': File does not exist')
                self.assertEqual(os.listdir('.'), [])

    def test_folder(self):
        for arguments in self.COMMANDS:
            with self.subTest(arguments):
                os.mkdir(arguments[1])
                self.check_failure(arguments, arguments[1] + ': is a directory')
                os.rmdir(arguments[1])

    def test_pipe_is_not_opened(self):
        for arguments in self.COMMANDS:
            with self.subTest(arguments):
                os.mkfifo(arguments[1])
                self.check_failure(arguments, arguments[1] + ': is no regular file')
                os.remove(arguments[1])

    def test_endless_device_behind_a_link(self):
        os.symlink('/dev/zero', 'a.csv')
        self.check_failure(['list', 'a.csv'], 'a.csv: is no regular file')

    def test_file_name_with_a_line_end_stays_on_one_line(self):
        self.check_failure(['show', 'a\n\x1bb.dbf'], 'a\\x0a\\x1bb.dbf: File does not exist')

    def test_extension_alone_names_no_table(self):
        write('.dbf', GOOD)
        self.check_failure(['show', '.dbf'], '.dbf: No file name provided for table file')

    @unittest.skipIf(os.geteuid() == 0, 'everything can be read by root')
    def test_file_without_permission(self):
        os.chmod(sample('members.dbf'), 0)
        self.check_failure(['list', 'members.dbf'], 'members.dbf: No permission to read file')

    def test_no_descriptor_left(self):
        sample('members.dbf')
        code, _, err = self.run_program('list', 'members.dbf', preexec_fn=limits(NOFILE=3), close_fds=False)
        self.assertNotEqual(code, 0)
        self.assertNotEqual(err, '')


if __name__ == '__main__':
    unittest.main()
