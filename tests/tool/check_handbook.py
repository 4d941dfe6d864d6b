#!/usr/bin/env python3
"""Tries every skin that the documents show: none may have a fault, and all can be drawn.

    check_handbook.py QORL DOCUMENT...
"""
import re
import subprocess
import sys
import tempfile
from pathlib import Path


def examples(text):
    """The blocks of XML in a document, indented or fenced, each with the line that it begins in."""
    block, start, is_fenced = [], 0, False
    for number, line in enumerate(text.splitlines() + [""], 1):
        if line.startswith("```"):
            is_fenced = not is_fenced
        inside = (is_fenced and not line.startswith("```")) or line.startswith("    ") or (block and not line.strip()
                                                                                           and is_fenced)
        if inside:
            start = start or number
            block.append(line)
        elif block:
            if block[0].lstrip().startswith("<"):
                yield start, "\n".join(block)
            block, start = [], 0


def complete(example):
    """What stands alone as a document; views are put into a template."""
    if example.lstrip().startswith("<skin"):
        return example
    return ('<skin><templates><template name="Example" size="0,0,400,240">\n' + example +
            '\n</template></templates></skin>')


def try_example(qorl, document, folder):
    skin = folder / "skin.xml"
    skin.write_text(document)
    for included in re.findall(r'<include file="([^"]+)"', document):
        (folder / included).write_text("<skin/>")
    runs = [[qorl, "check", "--strict", skin]]
    runs += [[qorl, "render", skin, name, "-o", folder / "picture.png"]
             for name in re.findall(r'<template name="([^"]+)"', document)]
    for run in runs:
        result = subprocess.run(run, capture_output=True, text=True, timeout=60)
        if result.returncode or result.stderr:
            yield result.stderr or f"exit status {result.returncode}"


def main():
    qorl, *documents = sys.argv[1:]
    tried, faults = 0, 0
    for path in map(Path, documents):
        found = list(examples(path.read_text()))
        if not found:
            print(f"{path}: no examples found")
            faults += 1
        for line, example in found:
            with tempfile.TemporaryDirectory(prefix="qorl-") as folder:
                for fault in try_example(qorl, complete(example), Path(folder)):
                    print(f"{path}:{line}: the example has a fault:\n{fault}")
                    faults += 1
            tried += 1
    print(f"{tried} examples, {faults} faults")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
