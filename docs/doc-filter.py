#!/usr/bin/env python3
"""Reads a public header and writes it as Doxygen reads it.

The headers document each class and operation in plain // comments just
above it, and a field in a // comment after it on the same line. Doxygen
reads only ///-style comments as documentation, so whole-line // comments
become ///, and a // comment after a declaration becomes ///<. A comment
above a run of one-line declarations (an overload set, the copy operations)
describes each of them: the run becomes one member group whose first
member's text the others share. Line numbers are kept, so Doxygen's messages
point into the header itself.
"""
import re
import sys

COMMENT = re.compile(r'^(\s*)//(?!/)')
TRAILING = re.compile(r'([;,])(\s*)//(?![/<])')


def one_line_declaration(line):
    text = line.strip()
    return ((text.endswith(';') or text.endswith('}')) and not text.startswith(('#', '//', '}'))
            and text.count('{') == text.count('}'))


def main(path):
    with open(path, encoding='utf-8') as f:
        lines = f.read().split('\n')
    out = list(lines)
    i = 0
    while i < len(lines):
        if not COMMENT.match(lines[i]):
            m = TRAILING.search(lines[i])
            if m and not lines[i].lstrip().startswith('#'):
                out[i] = lines[i][:m.start()] + m.group(1) + m.group(2) + '///<' + lines[i][m.end():]
            i += 1
            continue
        start = i
        while i < len(lines) and COMMENT.match(lines[i]):
            out[i] = COMMENT.sub(r'\1///', lines[i], count=1)
            i += 1
        end = i
        while end < len(lines) and one_line_declaration(lines[end]):
            end += 1
        if end - i >= 2:
            indent = COMMENT.match(lines[start]).group(1)
            out[start] = indent + '/**@{*/ ' + out[start][len(indent):]
            for j in range(i, end):
                m = TRAILING.search(lines[j])
                out[j] = lines[j][:m.start()] + m.group(1) if m else lines[j]
            out[end - 1] += ' /**@}*/'
        for j in range(i, end):
            m = TRAILING.search(lines[j])
            if m and end - i < 2:
                out[j] = lines[j][:m.start()] + m.group(1) + m.group(2) + '///<' + lines[j][m.end():]
        i = max(end, i)
    sys.stdout.write('\n'.join(out))


if __name__ == '__main__':
    main(sys.argv[1])
