#!/usr/bin/env python3
"""Reads the dynamic section of the shared library: what it offers, what it is called, what would pin it.

usage: check_exports.py LIBRARY SONAME
"""

import subprocess
import sys

LIBRARY, SONAME = sys.argv[1:3]
EXPORTS = {"GetHostClasses", "TerminateModule"}


def lines(*command):
    return subprocess.run(command, text=True, capture_output=True, check=True).stdout.splitlines()


def defined_symbols():
    """Name and kind of each dynamic symbol that the library defines."""
    fields = (line.split() for line in lines("nm", "-D", "--defined-only", LIBRARY))
    return {field[-1].split("@")[0]: field[-2] for field in fields}


def dynamic_entries(tag):
    return [line.split("[")[1].rstrip("]") for line in lines("readelf", "-dW", LIBRARY) if f"({tag})" in line]


def faults():
    symbols = defined_symbols()
    for name in sorted(EXPORTS - symbols.keys()):
        yield f"{name} is not exported"
    for name in sorted(symbols.keys() - EXPORTS):
        yield f"{name} is exported and should be hidden"
    for name in sorted(EXPORTS & symbols.keys()):
        if symbols[name] != "T":
            yield f"{name} is of kind {symbols[name]}, not a function"
    if dynamic_entries("SONAME") != [SONAME]:
        yield f"the SONAME is {dynamic_entries('SONAME')}, not {SONAME}"
    for path in dynamic_entries("RUNPATH") + dynamic_entries("RPATH"):
        yield f"it looks for libraries in {path}"
    imported = {line.split()[-1].split("@")[0] for line in lines("nm", "-D", "--undefined-only", LIBRARY)}
    if "__cxa_thread_atexit" in imported or "__cxa_thread_atexit_impl" in imported:
        yield "a thread_local with a destructor pins it in memory"
    if any("NODELETE" in line for line in lines("readelf", "-dW", LIBRARY)):
        yield "it is marked as never to be unloaded"


found = list(faults())
print("\n".join(f"{LIBRARY}: {fault}" for fault in found) or "exports: " + " ".join(sorted(EXPORTS)))
sys.exit(1 if found else 0)
