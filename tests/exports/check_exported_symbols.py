#!/usr/bin/env python3
"""Fails when a shared library exports a symbol that its public headers do not
declare as exported.

Usage: check_exported_symbols.py LIBRARY HEADER_DIR [HEADER_DIR ...]

The exported names are read from the headers: classes and structs marked
ZUM_API or RVK_API (or declared with RVK_DECLARE_ERROR) and functions marked
with either macro, with their namespace. Every dynamic symbol that the library
defines (nm -D --defined-only) must belong to one of them: a member, vtable,
typeinfo or thunk of such a class, or such a function. Each other symbol is
printed and the exit status is 1. The indicators that AddressSanitizer adds
for exported globals (__odr_asan.*) belong to those globals and pass.
"""
import glob
import os
import re
import subprocess
import sys

PREFIXES = ("vtable for ", "typeinfo name for ", "typeinfo for ", "non-virtual thunk to ",
            "virtual thunk to ", "covariant return thunk to ", "guard variable for ")
KEYWORDS = {"void", "int", "unsigned", "char", "long", "short", "bool", "const", "signed"}


def exported_names(header_dirs):
    classes, functions = set(), set()
    for d in header_dirs:
        for path in glob.glob(os.path.join(d, "*.h")):
            namespace = ""
            for line in open(path, encoding="utf-8"):
                m = re.match(r"namespace (\w+) \{", line)
                if m:
                    namespace = m.group(1) + "::"
                elif line.startswith("}  // namespace"):
                    namespace = ""
                m = re.match(r"\s*(?:class|struct) (?:ZUM|RVK)_API (\w+)", line)
                if m:
                    classes.add(m.group(1))
                m = re.match(r"RVK_DECLARE_ERROR\((\w+)\);", line)
                if m:
                    classes.add(m.group(1))
                m = re.search(r"(?:ZUM|RVK)_API [\w :*&]*?(\w+)\(", line)
                if m and not re.match(r"\s*(?:class|struct|#define) ", line):
                    functions.add(namespace + m.group(1))
    return classes, functions


def owner(symbol):
    for prefix in PREFIXES:
        if symbol.startswith(prefix):
            symbol = symbol[len(prefix):]
            break
    for token in re.findall(r"(?:\w+::)*\w+", symbol.split("(")[0]):
        if token not in KEYWORDS:
            return token
    return symbol


def main():
    if len(sys.argv) < 3:
        sys.exit(__doc__)
    library, header_dirs = sys.argv[1], sys.argv[2:]
    classes, functions = exported_names(header_dirs)
    if not classes:
        sys.exit("no exported class found in " + " ".join(header_dirs))
    out = subprocess.run(["nm", "-D", "--defined-only", "-C", library], check=True,
                         capture_output=True, text=True).stdout
    unexpected = []
    count = 0
    for line in out.splitlines():
        parts = line.split(" ", 2)
        if len(parts) < 3:
            continue
        count += 1
        symbol = parts[2]
        if symbol.startswith("__odr_asan."):
            symbol = subprocess.run(["c++filt", symbol[len("__odr_asan."):]], check=True,
                                    capture_output=True, text=True).stdout.strip()
        name = owner(symbol)
        if name in functions or name.split("::")[0] in classes:
            continue
        unexpected.append(parts[2])
    print(f"{os.path.basename(library)}: {count} exported symbols, {len(classes)} classes and "
          f"{len(functions)} functions declared exported")
    if unexpected:
        print("unexpected exported symbols:")
        for symbol in unexpected:
            print("  " + symbol)
        sys.exit(1)


if __name__ == "__main__":
    main()
