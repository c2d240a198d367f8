#!/usr/bin/env python3
"""Generates palvet/charset/chinese_tables.cpp, the Big5 <-> GB2312 tables.

Every double-byte code of each table's shape is decoded with ICU's own
converter (the same "BIG5" and "GB2312" converters the engine opens at run
time), mapped through ICU's Traditional-Simplified (or Simplified-Traditional)
transliterator and encoded into the other set. ICU is reached through
`uconv` (Debian package icu-devtools), one call per step over a file that
holds one character per line, so a code that does not decode or encode
leaves an empty line rather than shifting the others.

A code without a counterpart maps to the other set's ideographic space
(GB 0xA1A1, Big5 0xA140); the Big5 columns for trail bytes 0x7F..0xA0, which
Big5 does not use, map to the input pair itself.

  gen_chinese_tables.py [OUTPUT]      write the table source (default: the
                                      checked-in file)
  gen_chinese_tables.py --check FILE  regenerate and exit 1 if FILE differs
"""
import os
import subprocess
import sys

HERE = os.path.dirname(os.path.abspath(__file__))
DEFAULT_OUT = os.path.join(HERE, '..', 'palvet', 'charset', 'chinese_tables.cpp')

BIG5_LEADS = range(0xA1, 0xFF)            # 94 rows
BIG5_TRAILS = range(0x40, 0xFF)           # 191 columns
BIG5_GAP = range(0x7F, 0xA1)              # trail bytes Big5 leaves unused
GB_LEADS = list(range(0xA1, 0xAA)) + list(range(0xB0, 0xFF))   # 88 rows
GB_TRAILS = range(0xA1, 0xFF)             # 94 columns

GB_SPACE = (0xA1, 0xA1)
BIG5_SPACE = (0xA1, 0x40)


def uconv(args, data):
    """Runs uconv over newline-separated items; returns one bytes item per
    input line. Items that fail to convert come back empty (skip callbacks)."""
    out = subprocess.run(['uconv', '--from-callback', 'skip', '--to-callback', 'skip'] + args,
                         input=data, stdout=subprocess.PIPE, check=True,
                         env=dict(os.environ, LC_ALL='C')).stdout
    items = out.split(b'\n')
    if items and items[-1] == b'':
        items.pop()
    return items


def in_gb2312(lead, trail):
    return 0xA1 <= lead <= 0xF7 and 0xA1 <= trail <= 0xFE


def in_big5(lead, trail):
    return 0xA1 <= lead <= 0xF9 and (0x40 <= trail <= 0x7E or 0xA1 <= trail <= 0xFE)


def convert(pairs, from_set, translit, to_set, in_chart):
    """Maps each (lead, trail) of from_set to a (lead, trail) of to_set, or
    None when there is no double-byte counterpart."""
    src = b''.join(bytes(p) + b'\n' for p in pairs)
    decoded = uconv(['-f', from_set, '-t', 'UTF-8'], src)
    assert len(decoded) == len(pairs), 'decoding lost line alignment'
    # Only a pair decoded as one whole non-ASCII character counts: an invalid
    # lead is skipped and a trail byte in the ASCII range decodes on its own.
    # Private-use results are the converters' user-defined and empty cells.
    chars = [d.decode('utf-8') for d in decoded]
    valid = [len(c) == 1 and ord(c) >= 0x80 and not 0xE000 <= ord(c) <= 0xF8FF for c in chars]
    mapped = uconv(['-f', 'UTF-8', '-t', 'UTF-8', '-x', translit],
                   ''.join((c if ok else '') + '\n' for c, ok in zip(chars, valid)).encode('utf-8'))
    assert len(mapped) == len(pairs), 'transliteration lost line alignment'
    encoded = uconv(['-f', 'UTF-8', '-t', to_set], b'\n'.join(mapped) + b'\n')
    assert len(encoded) == len(pairs), 'encoding lost line alignment'
    result = []
    for ok, enc in zip(valid, encoded):
        if ok and len(enc) == 2 and in_chart(enc[0], enc[1]):
            result.append((enc[0], enc[1]))
        else:
            result.append(None)
    return result


def big5_to_gb():
    pairs = [(l, t) for l in BIG5_LEADS for t in BIG5_TRAILS]
    mapped = convert(pairs, 'BIG5', 'Traditional-Simplified', 'GB2312', in_gb2312)
    table, unmapped = [], 0
    for (l, t), m in zip(pairs, mapped):
        if t in BIG5_GAP:
            table.append((l, t))
        elif m is None:
            table.append(GB_SPACE)
            unmapped += 1
        else:
            table.append(m)
    return table, unmapped


def gb_to_big5():
    pairs = [(l, t) for l in GB_LEADS for t in GB_TRAILS]
    mapped = convert(pairs, 'GB2312', 'Simplified-Traditional', 'BIG5', in_big5)
    table, unmapped = [], 0
    for m in mapped:
        if m is None:
            table.append(BIG5_SPACE)
            unmapped += 1
        else:
            table.append(m)
    return table, unmapped


def emit(name, table, columns):
    lines = ['PALVET_API extern unsigned char const %s[%d][2] = {' % (name, len(table))]
    for row in range(0, len(table), columns):
        # One table row per line group, eight entries per line.
        for i in range(row, row + columns, 8):
            chunk = table[i:min(i + 8, row + columns)]
            lines.append('    ' + ' '.join('{0x%02X,0x%02X},' % e for e in chunk))
    lines.append('};')
    return '\n'.join(lines)


def generate():
    b2g, b2g_unmapped = big5_to_gb()
    g2b, g2b_unmapped = gb_to_big5()
    assert len(b2g) == 17954 and len(g2b) == 8272
    icu = subprocess.run(['uconv', '--version'], stdout=subprocess.PIPE, text=True).stdout.split()
    icu_version = icu[-1] if icu else 'unknown'
    text = '\n'.join([
        '// Generated by tools/gen_chinese_tables.py from ICU %s converters and' % icu_version,
        '// transliterators. Do not edit; rerun the generator instead.',
        '//',
        '// Big5 -> GB2312: %d entries, %d without a simplified counterpart (GB 0xA1A1).' % (len(b2g), b2g_unmapped),
        '// GB2312 -> Big5: %d entries, %d without a traditional counterpart (Big5 0xA140).' % (len(g2b), g2b_unmapped),
        '',
        '#include <palvet/charset/charset_convert.h>',
        '',
        '// 94 Big5 leads 0xA1..0xFE by 191 trails 0x40..0xFE.',
        emit('g_pBIGToGBTable', b2g, 191),
        'PALVET_API extern int const g_pBIGToGBTableSize = %d;' % len(b2g),
        '',
        '// GB leads 0xA1..0xA9 and 0xB0..0xFE (88 rows) by 94 trails 0xA1..0xFE.',
        emit('g_pGBToBigTable', g2b, 94),
        'PALVET_API extern int const g_pGBToBigTableSize = %d;' % len(g2b),
        '',
    ])
    return text


def main():
    args = sys.argv[1:]
    if args and args[0] == '--check':
        with open(args[1], encoding='utf-8') as f:
            current = f.read()
        if current != generate():
            sys.stderr.write('%s differs from what tools/gen_chinese_tables.py generates\n' % args[1])
            return 1
        return 0
    out = args[0] if args else DEFAULT_OUT
    with open(out, 'w', encoding='utf-8') as f:
        f.write(generate())
    return 0


if __name__ == '__main__':
    sys.exit(main())
