#!/usr/bin/env python3
"""Parses XML documents with Python's xml.dom.minidom.

Usage: parse.py DOC...   Each DOC holds one element <r a="..."> with text
content. Writes the parsed text content to DOC.text and the value of the
attribute a to DOC.attr, both in UTF-8. Exits non-zero if a document does not
parse.
"""
import sys
from xml.dom import minidom


def main(paths):
    status = 0
    for path in paths:
        try:
            with open(path, "rb") as f:
                root = minidom.parse(f).documentElement
            text = "".join(node.data for node in root.childNodes)
            with open(path + ".text", "wb") as f:
                f.write(text.encode("utf-8"))
            with open(path + ".attr", "wb") as f:
                f.write(root.getAttribute("a").encode("utf-8"))
        except Exception as e:  # report and go on with the next document
            print("%s: %s" % (path, e), file=sys.stderr)
            status = 1
    return status


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
