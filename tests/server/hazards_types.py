"""Numbers, logicals, dates, binary types, null flags."""
import datetime
from decimal import Decimal
import math

from dbf_bytes import currency, double, double7, field, integer, integer7, moment, moment7, table, table2, table7
from hazard import Bytes, Hazard, Moment

NO_NUMBER = {'rejects': 1}


def number(title, raw, expected, width=8, decimals=2, kind='N', **more):
    raw = raw if isinstance(raw, bytes) else raw.encode('ascii')
    return Hazard('numbers', title, {'.dbf': table([field('N', kind, width, decimals)], [[raw]])}, [(expected,)],
                  **more)


def whole(title, raw, expected, width, **more):
    return number(title, raw, expected, width, 0, **more)


def visual(title, kind, length, raw, expected, flags=0, **more):
    return Hazard('binary types', title, {'.dbf': table([field('V', kind, length, 0, flags)], [[raw]], version=0x30)},
                  [(expected,)], **more)


def seven(title, kind, length, raw, expected, **more):
    return Hazard('dBase 7', title, {'.dbf': table7([field('V', kind, length)], [[raw]])}, [(expected,)], **more)


def one(group, title, kind, length, raw, expected, **more):
    return Hazard(group, title, {'.dbf': table([field('V', kind, length)], [[raw]])}, [(expected,)], **more)


NUMBERS = [
    number('two decimals', '34.50', Decimal('34.50')),
    number('a negative number', '-2.50', Decimal('-2.50')),
    number('a plus sign', '+5.25', Decimal('5.25')),
    number('leading zeros', '0007.10', Decimal('7.1')),
    number('no digit before the point', '.5', Decimal('0.5')),
    number('no digit before the point, negative', '-.5', Decimal('-0.5')),
    number('no digit after the point', '5.', 5),
    number('minus zero', '-0.00', 0),
    number('an exponent', '1.5E+03', 1500),
    number('a small exponent', '1.5e-01', Decimal('0.15')),
    number('a number without its decimals', '12', 12),
    number('more decimals than the column', '1.23456', Decimal('1.23456')),
    number('all digits, no decimals', '12345678', 12345678),
    number('all decimals', '.1234567', Decimal('0.1234567')),
    number('blank', '', None),
    number('zero bytes', bytes(8), None),
    number('left-justified', b'12.50   ', Decimal('12.5')),
    number('padded with zero bytes', b'12.50\0\0\0', Decimal('12.5')),
    number('asterisks', '********', None, **NO_NUMBER),
    number('a comma', '12,50', None, **NO_NUMBER),
    number('a blank inside', '1 2.50', None, **NO_NUMBER),
    number('a sign after the number', '12.50-', None, **NO_NUMBER),
    number('a sign alone', '-', None, **NO_NUMBER),
    number('a point alone', '.', None, **NO_NUMBER),
    number('two points', '1.2.3', None, **NO_NUMBER),
    number('NaN', 'NaN', None, **NO_NUMBER),
    number('inf', 'inf', None, **NO_NUMBER),
    number('hexadecimal', '0x10', None, **NO_NUMBER),
    number('an exponent without digits', '1E', None, **NO_NUMBER),
    number('an exponent beyond all numbers', '1E999999', None, 10, rows_postgresql=None, rejects=None, status=None,
           rows_sqlite=None, rows_mysql=[(None,)]),
    whole('width 1', '7', 7, 1),
    whole('width 4, negative', '-999', -999, 4),
    whole('width 9', '999999999', 999999999, 9),
    whole('width 10', '9999999999', 9999999999, 10),
    whole('width 18', '9' * 18, int('9' * 18), 18),
    whole('width 19', '9' * 19, int('9' * 19), 19),
    whole('width 20', '9' * 20, int('9' * 20), 20),
    whole('width 20, in 64 bits', '-9223372036854775808', -9223372036854775808, 20),
    whole('decimals in a column without decimals', '1.5', None, 9, rejects=1, rows_sqlite=None, rejects_sqlite=None),
    whole('decimals of zero in a column without decimals', '15.0', 15, 9, rejects=None),
    whole('an exponent beyond 32 bits in width 9', '1E12', None, 9, rejects=1, rows_sqlite=[(10 ** 12,)],
          rejects_sqlite=0),
    number('a wide decimal that is not a double', '123456789012345.6789', Decimal('123456789012345.6789'), 20, 4),
    number('a wide decimal that is a double', '4503599627370496.5', Decimal('4503599627370496.5'), 20, 4),
    number('nineteen digits and a point', '99999999999999.99999', Decimal('99999999999999.99999'), 20, 5),
    number('width 15 with decimals', '123456789012.34', Decimal('123456789012.34'), 15, 2),
    number('width 16 with decimals', '1234567890123.45', Decimal('1234567890123.45'), 16, 2),
    number('F with an exponent', '1.234567890120e+004', Decimal('12345.6789012'), 20, 10, 'F'),
    number('F, negative with an exponent', '-1.23456789012e-002', Decimal('-0.0123456789012'), 20, 11, 'F'),
    number('F without decimals', '42', 42, 10, 0, 'F'),
    number('one third to nineteen places', '0.33333333333333333', Decimal('0.33333333333333333'), 19, 17),
]

NAMES = {True: 'true', False: 'false', None: 'NULL'}
LOGICALS = [one('logicals', f'{raw.decode()!r} is {NAMES[expected]}', 'L', 1, raw, expected, rejects=rejects)
            for raw, expected, rejects in [
    (b'T', True, 0), (b't', True, 0), (b'Y', True, 0), (b'y', True, 0), (b'F', False, 0), (b'f', False, 0),
    (b'N', False, 0), (b'n', False, 0), (b'?', None, 0), (b' ', None, 0), (b'\0', None, 0), (b'1', None, 1),
    (b'J', None, 1)]]

DATES = [
    one('dates', 'a leap day', 'D', 8, '20240229', datetime.date(2024, 2, 29)),
    one('dates', 'the first day', 'D', 8, '00010101', datetime.date(1, 1, 1)),
    one('dates', 'the last day', 'D', 8, '99991231', datetime.date(9999, 12, 31)),
    one('dates', 'before the Gregorian calendar', 'D', 8, '15001231', datetime.date(1500, 12, 31)),
    one('dates', 'blank', 'D', 8, '', None),
    one('dates', 'eight zeros', 'D', 8, '00000000', None),
    one('dates', 'zero bytes', 'D', 8, bytes(8), None),
    one('dates', '29 February in another year', 'D', 8, '20230229', None, rejects=1),
    one('dates', '1900 was not a leap year', 'D', 8, '19000229', None, rejects=1),
    one('dates', '2000 was a leap year', 'D', 8, '20000229', datetime.date(2000, 2, 29)),
    one('dates', 'month 13 and day 99', 'D', 8, '20241399', None, rejects=1),
    one('dates', 'month 0', 'D', 8, '20240015', None, rejects=1),
    one('dates', 'day 0', 'D', 8, '20240500', None, rejects=1),
    one('dates', 'year 0', 'D', 8, '00000101', None, rejects=1),
    one('dates', 'another form of date', 'D', 8, '2024-1-1', None, rejects=1),
    one('dates', 'cut short', 'D', 8, '202402', None, rejects=1),
]

BINARY = [
    visual('I, the largest', 'I', 4, integer(2147483647), 2147483647),
    visual('I, the smallest', 'I', 4, integer(-2147483648), -2147483648),
    visual('B, a tenth', 'B', 8, double(0.1), 0.1),
    visual('B, the largest', 'B', 8, double(1.7976931348623157e308), 1.7976931348623157e308),
    visual('B, the smallest', 'B', 8, double(5e-324), 5e-324),
    visual('B, minus zero', 'B', 8, double(-0.0), -0.0),
    visual('B, NaN', 'B', 8, double(math.nan), None, rejects=1, rows_postgresql=[(math.nan,)], rejects_postgresql=0),
    visual('B, infinity', 'B', 8, double(math.inf), math.inf, rows_mysql=[(None,)], rejects_mysql=1),
    visual('B, minus infinity', 'B', 8, double(-math.inf), -math.inf, rows_mysql=[(None,)], rejects_mysql=1),
    visual('Y', 'Y', 8, currency(180001), Decimal('18.0001')),
    visual('Y, the largest', 'Y', 8, currency(2 ** 63 - 1), Decimal('922337203685477.5807')),
    visual('Y, the smallest', 'Y', 8, currency(-2 ** 63), Decimal('-922337203685477.5808')),
    visual('T to the millisecond', 'T', 8, moment(2024, 3, 5, 47655678), Moment('2024-03-05 13:14:15.678')),
    visual('T, a millisecond before midnight', 'T', 8, moment(9999, 12, 31, 86399999),
           Moment('9999-12-31 23:59:59.999')),
    visual('T, the first day', 'T', 8, moment(1, 1, 1, 0), Moment('0001-01-01 00:00:00.000')),
    visual('T, all zero bytes', 'T', 8, bytes(8), None),
    visual('T, blank', 'T', 8, b' ' * 8, None),
    visual('T, a day of 25 hours', 'T', 8, moment(2024, 3, 5, 90000000), None, rejects=1),
    visual('T, a day beyond year 9999', 'T', 8, moment(9999, 12, 31, 0)[:2] + b'\xff\x7f' + bytes(4), None, rejects=1),
    visual('V that fills its field', 'V', 5, b'ab  c', 'ab  c'),
    visual('I as text', 'I', 4, integer(-2147483648), '-2147483648', options=['--type', 'V=text']),
    visual('T as text', 'T', 8, moment(2024, 3, 5, 47655678), '2024-03-05T13:14:15.678', options=['--type', 'V=text']),
    visual('Y as text', 'Y', 8, currency(-2 ** 63), '-922337203685477.5808', options=['--type', 'V=text']),
    visual('an unknown type is bytes', '7', 8, b'\x01\xff\0abcd ', Bytes(b'\x01\xff\0abcd ')),
    Hazard('binary types', 'null flags',
           {'.dbf': table([field('V', 'V', 10, 0, 2), field('I', 'I', 4, 0, 2), field('Q', 'Q', 10, 0, 2),
                           field('_NullFlags', '0', 1, 0, 5)],
                          [[b'qwe'.ljust(9, b'\0') + b'\3', integer(1), b'\1\2'.ljust(9) + b'\2', b'\x09'],
                           [b'', integer(2), b'', b'\x1b'],
                           [b'0123456789', integer(3), b'0123456789', b'\x04']], version=0x32)},
           [('qwe', 1, Bytes(b'\1\2')), (None, 2, None), ('0123456789', None, Bytes(b'0123456789'))],
           columns=['v', 'i', 'q']),
    Hazard('binary types', 'a number that may be NULL',
           {'.dbf': table([field('N', 'N', 5, 0, 2), field('_NullFlags', '0', 1, 0, 5)], [['12', b'\1'], ['13', b'\0']],
                          version=0x30)}, [(None,), (13,)]),
]

SEVEN = [
    seven('I', 'I', 4, integer7(-1), -1),
    seven('I, the largest', 'I', 4, integer7(2147483647), 2147483647),
    seven('+', '+', 4, integer7(10), 10),
    seven('O', 'O', 8, double7(-199.99), -199.99),
    seven('O, zero', 'O', 8, double7(0.0), 0.0),
    seven('O, all zero bytes', 'O', 8, bytes(8), None),
    seven('@, 1970', '@', 8, bytes.fromhex('42CC418BA99A0000'), Moment('1970-01-01 00:00:00.000')),
    seven('@ to the millisecond', '@', 8, moment7(2024, 2, 29, 86399999), Moment('2024-02-29 23:59:59.999')),
    seven('@, all zero bytes', '@', 8, bytes(8), None),
    Hazard('dBase 7', 'the driver name gives the code page', {'.dbf': table7([field('T', 'C', 6)], [[b'\x8c\xae\xe1']],
                                                                             driver=b'DB866RU0')},
                                                                             [('\u041c\u043e\u0441',)]),
    Hazard('dBase 7', 'a driver of Windows', {'.dbf': table7([field('T', 'C', 6)], [[b'\x80']], driver=b'DBWINUS0')},
           [('\u20ac',)]),
    Hazard('dBase 7', 'dBase II', {'.dbf': table2([field('ZIP:CODE', 'C', 5), field('QTY', 'N', 4)],
                                                  [['01234', '17']])},
           [('01234', 17)], columns=['zip:code', 'qty']),
]

HAZARDS = NUMBERS + LOGICALS + DATES + BINARY + SEVEN
