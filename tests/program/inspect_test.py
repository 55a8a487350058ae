"""inspect: the bytes of a file, and its damage."""
import unittest

from support import ProgramTest, bent, make_data, sample, table, write

GOOD = table([['r1c1', '12'], ['r2c1', '22'], ['r3c1', '32']])
HEADER = 97
RECORD = 11

# damage: (bytes, a part of the damaged line)
DAMAGED = {
    'cut in a record': GOOD[:HEADER + RECORD + 4],
    'header length': bent(GOOD, 8, b'\0\x10'),
    'record length 0': bent(GOOD, 10, b'\0\0'),
    'record length too small': bent(GOOD, 10, b'\x0a\0'),
    'count too large': bent(GOOD, 4, b'\xc8'),
    'number': bent(GOOD, HEADER + RECORD + 7, b'x'),
    'nothing': b'',
    'header alone': GOOD[:32],
}


class Inspect(ProgramTest):
    def test_sound_table_is_explained_to_its_last_byte(self):
        write('a.dbf', GOOD)
        result = self.run_program('inspect', 'a.dbf')
        self.assertEqual((result.code, result.err), (0, ''))
        lines = result.out.splitlines()
        self.assertEqual(lines[0].split()[:3], ['0', '03', 'version'])
        self.assertIn('97  20                                      record 1', result.out)
        self.assertIn('98  72 31 63 31 20 20                         NAME                "r1c1"', result.out)
        self.assertEqual(lines[-1].split()[:2], [str(len(GOOD) - 1), '1a'])
        self.assertFalse(any(line.endswith(' ') for line in lines))

    def test_damage_is_marked_with_status_3(self):
        for name, content in DAMAGED.items():
            with self.subTest(name):
                write('a.dbf', content)
                result = self.run_program('inspect', 'a.dbf')
                self.assertEqual((result.code, result.err), (3, ''))
                self.assertIn('DAMAGED: ', result.out)

    def test_wrong_record_count_is_damage_of_the_header(self):
        write('a.dbf', bent(GOOD, 4, b'\xc8'))
        damaged = [line for line in self.run_program('inspect', 'a.dbf').out.splitlines() if 'DAMAGED' in line]
        self.assertEqual([line.split() for line in damaged],
                         ['4 c8 00 00 00 record count DAMAGED: the header counts 200 records, the file holds 3'.split()])

    def test_every_length_of_a_table_is_explained(self):
        for size in range(len(GOOD)):
            write('a.dbf', GOOD[:size])
            self.assertIn(self.run_program('inspect', 'a.dbf').code, [0, 3], size)

    def test_memo_and_memory_files(self):
        sample('clients.dbf', 'clients.dbt', 'settings.mem')
        self.assertEqual(self.run_program('inspect', 'clients.dbf').code, 0)
        out = self.run_program('inspect', 'clients.dbt').out
        self.assertIn('O\'Brien', out)
        self.assertIn('"Ada Quill"', self.run_program('inspect', 'settings.mem').out)
        write('settings.mem', make_data.SETTINGS_MEM[:-3])
        self.assertEqual(self.run_program('inspect', 'settings.mem').code, 3)

    def test_missing_and_other_files(self):
        self.check_failure(['inspect', 'none.dbf'], 'none.dbf: No such file or directory')
        sample('cities.csv')
        self.assertEqual(self.run_program('inspect', 'cities.csv').code, 1)


if __name__ == '__main__':
    unittest.main()
