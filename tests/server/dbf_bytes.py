"""Bytes of xBase tables and memo files of all kinds, for tests. A value is the raw bytes of its field."""
import struct


def field(name, kind, length, decimals=0, flags=0):
    return {'name': name if isinstance(name, bytes) else name.encode('ascii'), 'kind': kind.encode('ascii'),
            'length': length, 'decimals': decimals, 'flags': flags}


def descriptor(column):
    high = column['length'] // 256 if column['kind'] == b'C' and column['length'] > 255 else column['decimals']
    return struct.pack('<11sc4xBBB13x', column['name'][:10], column['kind'], column['length'] % 256, high,
                       column['flags'])


def padded(value, column):
    """Numbers to the right, everything else to the left, as in real files; values of full length are unchanged."""
    value = value if isinstance(value, bytes) else value.encode('latin-1')
    assert len(value) <= column['length'], (value, column)
    return value.rjust(column['length']) if column['kind'] in (b'N', b'F') else value.ljust(column['length'])


def record(columns, values, mark=b' '):
    return mark + b''.join(padded(value, column) for value, column in zip(values, columns, strict=True))


def table(columns, records, version=3, language=0, marks='', count=None, end=b'\x1a', flags=0):
    """A table with a header of 32 bytes. `marks`: the deletion bytes, if not all are blank."""
    visual = version in (0x30, 0x31, 0x32)
    header = 32 + 32 * len(columns) + 1 + (263 if visual else 0)
    length = 1 + sum(column['length'] for column in columns)
    out = bytearray(struct.pack('<4BIHH20x', version, 124, 3, 5, len(records) if count is None else count, header,
                                length))
    out[28], out[29] = flags, language
    out += b''.join(descriptor(column) for column in columns) + b'\r' + (bytes(263) if visual else b'')
    for number, values in enumerate(records):
        mark = marks[number:number + 1].encode('ascii') or b' '
        out += record(columns, values, mark)
    return bytes(out) + end


def table2(columns, records):
    """A dBase II table."""
    out = struct.pack('<BHBBBH', 2, len(records), 3, 5, 84, 1 + sum(column['length'] for column in columns))
    for column in columns:
        out += struct.pack('<11scBHB', column['name'], column['kind'], column['length'], 0, column['decimals'])
    out += b'\r'
    out += bytes(521 - len(out))
    return out + b''.join(record(columns, values) for values in records) + b'\x1a'


def table7(columns, records, version=4, language=0, driver=b''):
    """A dBase 7 table."""
    header = 68 + 48 * len(columns) + 1
    length = 1 + sum(column['length'] for column in columns)
    out = bytearray(struct.pack('<4BIHH20x', version, 124, 3, 5, len(records), header, length))
    out[29] = language
    out += driver.ljust(32, b'\0') + bytes(4)
    for column in columns:
        out += struct.pack('<32scBB13x', column['name'], column['kind'], column['length'], column['decimals'])
    return bytes(out) + b'\r' + b''.join(record(columns, values) for values in records) + b'\x1a'


def integer(value):
    return struct.pack('<i', value)


def double(value):
    return struct.pack('<d', value)


def currency(ten_thousandths):
    return struct.pack('<q', ten_thousandths)


def julian(year, month, day):
    a = (14 - month) // 12
    y, m = year + 4800 - a, month + 12 * a - 3
    return day + (153 * m + 2) // 5 + 365 * y + y // 4 - y // 100 + y // 400 - 32045


def moment(year, month, day, milliseconds):
    return struct.pack('<ii', julian(year, month, day), milliseconds)


def integer7(value):
    return struct.pack('>I', (value + 0x80000000) & 0xFFFFFFFF)


def double7(value):
    bits = struct.unpack('>Q', struct.pack('>d', value))[0]
    return struct.pack('>Q', bits | 1 << 63 if bits >> 63 == 0 else bits ^ 0xFFFFFFFFFFFFFFFF)


def moment7(year, month, day, milliseconds):
    return struct.pack('>d', (julian(year, month, day) - 1721425) * 86400000.0 + milliseconds)


def memo3(*texts):
    """A dBase III memo file; text N is at block N + 1 when each fits in one block."""
    out = bytearray(512)
    for text in texts:
        out += text + b'\x1a\x1a'
        out += bytes(-len(out) % 512)
    out[0:4] = struct.pack('<I', len(out) // 512)
    return bytes(out)


def memo4(*texts, block=512, stated=None):
    out = bytearray(struct.pack('<I4x8s4sHxx', 0, b'MEMO', b'\0\0\2\1', block if stated is None else stated))
    out += bytes(max(block, 512) - len(out))
    for text in texts:
        out += b'\xff\xff\x08\x00' + struct.pack('<I', len(text) + 8) + text
        out += bytes(-len(out) % block)
    out[0:4] = struct.pack('<I', len(out) // block)
    return bytes(out)


def fpt(*texts, block=64, kind=1):
    """A FoxPro memo file; the first text is at block 512 / `block`."""
    out = bytearray(512)
    struct.pack_into('>H', out, 6, block)
    for text in texts:
        out += struct.pack('>II', kind, len(text)) + text
        out += bytes(-len(out) % block)
    struct.pack_into('>I', out, 0, len(out) // block)
    return bytes(out)
