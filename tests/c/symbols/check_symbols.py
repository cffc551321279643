#!/usr/bin/env python3
"""Checks what a shared library needs or exports.

Usage: check_symbols.py needed LIBRARY [OTHER...]
       check_symbols.py exported LIBRARY [SYMBOL...]
       check_symbols.py table LIBRARY TABLE COMPILER FOLDER... [--update]
OTHER are libraries that it may need beside the standard runtime, SYMBOL some that it exports; without them, a few
of the runtime library. Nothing of the EXPRESS front end is exported by any. TABLE lists what programs may rely on,
with the types that COMPILER, a clang++, finds in the headers of the FOLDERs; --update writes it anew.
Exit status: 0 as it should be, 1 not so, 2 the headers do not compile, 77 no compiler (skipped).
"""

import difflib
import pathlib
import re
import shutil
import subprocess
import sys

sys.dont_write_bytecode = True  # nothing is written beside the sources
sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent))
import declarations

RUNTIME = {"libstdc++.so.6", "libgcc_s.so.1", "libm.so.6", "libc.so.6",
           "ld-linux-x86-64.so.2", "ld-linux-aarch64.so.1"}

# A mangled name of the interface: a function, a variable, or what describes a class, with thunks and guards.
INTERFACE = re.compile(r"_Z(T[ISTVC]|GVZ?|Z|Th[n\d]+_|Tv[n\d_]+_)?"
                       r"(NK?6VELMAR(?!7Express)|(NK?)?21descriptive_exception|\d+coco_string_)")

# The interface is there at all: a few of its symbols, of every kind.
STRING = "std::__cxx11::basic_string<char, std::char_traits<char>, std::allocator<char> >"
EXPECTED = [
    f"VELMAR::ExpFile::Read({STRING} const&)",
    "VELMAR::page16",
    f"VELMAR::ToUpperString({STRING})",
    "VELMAR::ExpLogical::explogical_map",
    "typeinfo for VELMAR::ExpEntity",
    "typeinfo for descriptive_exception",
    "vtable for VELMAR::ExpAttribute",
    "coco_string_length(wchar_t const*)",
]


def output(*command):
    return subprocess.run(command, check=True, stdout=subprocess.PIPE, text=True).stdout


def needed(library, others):
    libraries = re.findall(r"\(NEEDED\).*\[(.+)\]", output("readelf", "-d", "-W", library))
    if not libraries:
        print("the library needs nothing: this is no shared library")
        return 1
    foreign = [name for name in libraries if name not in RUNTIME and name not in others]
    print("needs", ", ".join(libraries))
    for name in foreign:
        print("not of the standard runtime:", name)
    return 1 if foreign else 0


def exported_names(library):
    listing = output("nm", "-D", "--defined-only", library)
    return [line.split()[-1].split("@")[0] for line in listing.splitlines()]


def exported(library, expected):
    names = exported_names(library)
    readable = output("c++filt", *names).replace("[abi:cxx11]", "").splitlines()
    foreign = [text for name, text in zip(names, readable) if not INTERFACE.match(name)]
    missing = [text for text in expected or EXPECTED if text not in readable]
    for text in foreign:
        print("exported, but not of the interface:", text)
    for text in missing:
        print("not exported:", text)
    print(f"{len(names)} symbols, {len(foreign)} foreign, {len(missing)} missing")
    return 1 if foreign or missing else 0


def readable_names(names):
    return [declarations.plain(text) for text in output("c++filt", *names).splitlines()]


def result_of(function):
    """The result in the type of a function: what stands before the parentheses of its parameters."""
    depth = 0
    for place in range(function.rindex(")"), -1, -1):
        depth += {")": 1, "(": -1}.get(function[place], 0)
        if depth == 0:
            return function[:place].strip()
    return function


def rows_of(library, declared):
    """What programs may rely on, a line for each. The variants of constructors and destructors are one line."""
    types, private = {}, set()
    for name, readable in zip(declared.types, readable_names(declared.types)):
        types[readable] = declared.types[name]
        if name in declared.private:
            private.add(readable)
    rows = set()
    names = exported_names(library)
    for name, readable in zip(names, readable_names(names)):
        if readable in private or readable.startswith("construction vtable"):
            continue  # tables for objects under construction serve the class alone; not all compilers show them
        kind = types.get(readable)
        if kind is None or re.search(r"(\w+)::~?\1\(", readable):
            rows.add(readable)
        elif "(" in readable:
            rows.add(f"{readable} -> {result_of(kind)}")
        else:
            rows.add(f"{readable}: {kind}")
    return sorted(rows)


def compare_table(library, table, compiler, *folders):
    update = folders[-1] == "--update"
    folders = [pathlib.Path(folder) for folder in folders if folder != "--update"]
    if shutil.which(compiler) is None:
        print(f"skipped: {compiler} is not installed, and no other compiler dumps declarations")
        return 77
    try:
        declared = declarations.parse(compiler, folders)
    except subprocess.CalledProcessError as error:
        print(error.stderr)
        return 2
    path = pathlib.Path(table)
    lines = path.read_text().splitlines()
    comments = [line for line in lines if line.startswith("#")]
    expected = [line for line in lines if line and not line.startswith("#")]
    found = rows_of(library, declared)
    if update:
        path.write_text("\n".join([*comments, "", *found]) + "\n")
        expected = found
    for line in difflib.ndiff(expected, found):
        if line[0] in "+-":
            print({"-": "gone or changed: ", "+": "not in the table: "}[line[0]] + line[2:])
    gone, new = len(set(expected) - set(found)), len(set(found) - set(expected))
    print(f"{len(found)} symbols, {gone} gone or changed, {new} not in {path.name}")
    return 1 if expected != found else 0


def main():
    if len(sys.argv) >= 3 and sys.argv[1] == "needed":
        return needed(sys.argv[2], sys.argv[3:])
    if len(sys.argv) >= 3 and sys.argv[1] == "exported":
        return exported(sys.argv[2], sys.argv[3:])
    if len(sys.argv) >= 6 and sys.argv[1] == "table":
        return compare_table(*sys.argv[2:])
    sys.exit(__doc__)


if __name__ == "__main__":
    sys.exit(main())
