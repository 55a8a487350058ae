#!/usr/bin/env python3
"""Makes the sample files of this folder, byte by byte. What they hold is invented.

usage: make_data.py [DIRECTORY]    (this folder, unless another one is named)
"""
import os
import struct
import sys


def dbf(columns, records, date=(124, 3, 5), version=3, language=0, encoding='ascii'):
    """A .dbf table. A column is (name, type, length, decimals); a record is (deletion mark, values)."""
    header_length = 32 + 32 * len(columns) + 1
    record_length = 1 + sum(length for _, _, length, _ in columns)
    out = bytearray(struct.pack('<BBBBIHH20x', version, *date, len(records), header_length, record_length))
    out[29] = language
    for name, kind, length, decimals in columns:
        out += struct.pack('<11scIBB14x', name.encode('ascii'), kind.encode('ascii'), 0, length, decimals)
    out += b'\r'
    for mark, values in records:
        out += mark.encode('ascii')
        for (name, kind, length, _), value in zip(columns, values, strict=True):
            if len(value) > length:
                raise ValueError(f'{name}: {value!r} is longer than {length}')
            value = value.rjust(length) if kind in 'NF' else value.ljust(length)
            out += value.encode(encoding)
    return bytes(out + b'\x1a')


def mem_entry(name, kind, length, decimals, value):
    """An entry of a .mem file: a 32-byte header and the value."""
    out = b'\0' + name.encode('ascii').ljust(10, b'\0') + kind.encode('ascii') + bytes(4)
    return out + bytes([length, decimals]) + bytes(14) + value


def dbt(texts, encoding):
    """A dBase III memo file and the number of each text's first block."""
    out, numbers = bytearray(512), []
    for text in texts:
        numbers.append(str(len(out) // 512).rjust(10))
        out += text.encode(encoding) + b'\x1a\x1a'
        out += bytes(-len(out) % 512)
    out[0:4] = struct.pack('<I', len(out) // 512)
    return bytes(out), numbers


NOTES = ['Pays by invoice.\r\nCall before delivery: the yard is closed on Fridays.', "Wants O'Brien's old rate."]
CLIENTS_DBT, NOTE = dbt(NOTES, 'cp1252')
CLIENTS = dbf(
    [('ID', 'N', 4, 0), ('NAME', 'C', 16, 0), ('TOWN', 'C', 10, 0), ('SINCE', 'D', 8, 0), ('LIMIT', 'N', 9, 2),
     ('ACTIVE', 'L', 1, 0), ('NOTE', 'M', 10, 0)],
    [(' ', ['101', 'Zo\u00eb M\u00fcller', 'K\u00f6ln', '20190401', '1500.00', 'T', NOTE[0]]),
     (' ', ['102', "Sean O'Brien", 'Cork', '20201115', '250.50', 'T', NOTE[1]]),
     ('*', ['103', 'Old entry', 'Nowhere', '19991231', '0.01', 'F', '']),
     (' ', ['104', 'Ines Gar\u00e7\u00e3o', 'Lisboa', '', '', 'F', '']),
     (' ', ['105', 'Pia Lund', 'Malm\u00f6', '20240229', '99999.99', '?', ''])],
    version=0x83, language=3, encoding='cp1252')

ORDERS = dbf(
    [('NUMBER', 'N', 6, 0), ('CLIENT', 'N', 4, 0), ('PLACED', 'D', 8, 0), ('AMOUNT', 'N', 9, 2)],
    [(' ', ['7001', '101', '20240105', '310.00']), (' ', ['7002', '102', '20240108', '48.25']),
     (' ', ['7003', '101', '20240202', '1021.40']), (' ', ['7004', '105', '20240301', '75.10'])])

# Every memo has a number: the script of a table writes nothing for an empty one, which is not SQL.
STOCK = dbf(
    [('ARTICLE', 'C', 18, 0), ('PIECES', 'N', 6, 0), ('PRICE', 'N', 9, 2), ('COUNTED', 'D', 8, 0),
     ('ON_SALE', 'L', 1, 0), ('WEIGHT', 'F', 8, 3), ('REMARK', 'M', 10, 0)],
    [(' ', ['Desk lamp', '12', '34.50', '20240229', 'T', '1.250', '3']),
     (' ', ["Painter's ladder", '3', '119.00', '20231105', 'F', '14.800', '7']),
     ('*', ['Broken vase', '0', '0.01', '19991231', 'F', '0.900', '5']),
     (' ', ['12" ruler', '240', '1.95', '', 'Y', '0.040', '9']),
     (' ', ['Nameless box', '', '', '', '?', '', '11']),
     (' ', ['Rope; 20 m', '17', '-2.50', '20240310', 'n', '2.125', '12'])])

MEMBERS = dbf(
    [('ID', 'N', 5, 0), ('NAME', 'C', 14, 0), ('JOINED', 'D', 8, 0), ('FEE', 'N', 8, 2)],
    [(' ', ['101', 'Ada Quill', '20190401', '24.00']),
     (' ', ['102', 'Ben Osier', '20201115', '18.50']),
     (' ', ['103', 'Cleo Marsh', '20220630', '31.75'])])

CITIES_CSV = b'City,Country,Founded\nAldwick,Norland,1204\n"Bryne",Sarland,1377\nCastor,,1666\n'

READINGS_TAB = b'Station\tDay\tLevel\nnorth\t2024-03-01\t4.2\nsouth\t2024-03-02\t3.9\n'

# For --columns 5|12|20: a column starts at its number and is as wide as the distance before it.
PARTS_TXT = b''.join(
    b'%-5s%-7s%-8s%-8s\n' % row for row in
    [(b'-----', b'bolt', b'M8x40', b'hall A'), (b'-----', b'hinge', b'brass', b'hall C')])

SETTINGS_MEM = (mem_entry('OWNER', 'C', 9, 0, b'Ada Quill') + mem_entry('SINCE', 'D', 8, 0, b'20190401') +
                mem_entry('OPEN', 'L', 1, 0, b'T') + mem_entry('LIMIT', 'N', 5, 2, b'12.50@'))

FILES = {'clients.dbf': CLIENTS, 'clients.dbt': CLIENTS_DBT, 'orders.dbf': ORDERS, 'stock.dbf': STOCK, 'members.dbf': MEMBERS, 'cities.csv': CITIES_CSV, 'readings.tab': READINGS_TAB,
         'parts.txt': PARTS_TXT, 'settings.mem': SETTINGS_MEM}


def main():
    directory = sys.argv[1] if len(sys.argv) > 1 else os.path.dirname(os.path.abspath(__file__))
    for name, content in FILES.items():
        with open(os.path.join(directory, name), 'wb') as file:
            file.write(content)


if __name__ == '__main__':
    main()
