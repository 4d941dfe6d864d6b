#!/usr/bin/env python3
"""Installs the library, moves the tree, and builds and runs programs against it that know only what is installed.

usage: check_consumer.py BUILD-FOLDER LIBRARY-FOLDER(relative) CXX
"""

import os
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path

BUILD, LIBRARIES, CXX = Path(sys.argv[1]), sys.argv[2], sys.argv[3]
SOURCES = Path(__file__).resolve().parent / "consumer"
TREE = SOURCES.parent.parent.parent


def run(*command, **environment):
    command = [str(part) for part in command]
    result = subprocess.run(command, text=True, capture_output=True, env={**os.environ, **environment})
    if result.returncode:
        sys.exit(f"failed: {' '.join(command)}\n{result.stdout}{result.stderr}")
    return result.stdout


def expect_no_path_of_this_machine(prefix, *paths):
    files = [*(prefix / LIBRARIES / "cmake").rglob("*.cmake"), *(prefix / LIBRARIES / "pkgconfig").glob("*.pc")]
    if len(files) < 4:
        sys.exit(f"package files are missing from {prefix}: {files}")
    for file in files:
        for path in paths:
            if str(path) in file.read_text():
                sys.exit(f"{file.name} names {path}: the installed tree can't be moved")


def expect_manual_beside_the_tool(prefix):
    if not (prefix / "bin" / "qorl").exists():
        return
    for name, word in (("man/man1/qorl.1", ".TH QORL"), ("bash-completion/completions/qorl", "complete -F")):
        path = prefix / "share" / name
        if not path.exists() or word not in path.read_text():
            sys.exit(f"the tool is installed, but {path} is not")


def build_by_cmake(prefix, scratch):
    run("cmake", "-S", SOURCES, "-B", scratch / "cmake", "-G", "Ninja", f"-DCMAKE_CXX_COMPILER={CXX}",
        f"-DCMAKE_PREFIX_PATH={prefix}", "-DCMAKE_BUILD_TYPE=Debug")
    run("cmake", "--build", scratch / "cmake")
    return scratch / "cmake" / "derives", scratch / "cmake" / "hosts"


def build_by_pkg_config(prefix, scratch):
    def flags(package):
        return run("pkg-config", "--cflags", "--libs", package,
                   PKG_CONFIG_PATH=str(prefix / LIBRARIES / "pkgconfig")).split()

    derives, hosts = scratch / "derives", scratch / "hosts"
    run(CXX, SOURCES / "derives.cpp", "-o", derives, *flags("qorl-classes"))
    run(CXX, "-std=c++17", SOURCES / "hosts.cpp", "-o", hosts, *flags("qorl-frame"))
    return derives, hosts


def main():
    scratch = Path(tempfile.mkdtemp(prefix="qorl-consumer-"))
    try:
        installed, moved = scratch / "installed", scratch / "moved" / "elsewhere"
        run("cmake", "--install", BUILD, "--prefix", installed)
        moved.parent.mkdir()
        installed.rename(moved)
        expect_no_path_of_this_machine(moved, TREE, BUILD, installed)
        expect_manual_beside_the_tool(moved)
        for derives, hosts in (build_by_cmake(moved, scratch), build_by_pkg_config(moved, scratch)):
            print(run(derives), end="")
            print(run(hosts, LD_LIBRARY_PATH=str(moved / LIBRARIES)), end="")
    finally:
        shutil.rmtree(scratch, ignore_errors=True)


main()
