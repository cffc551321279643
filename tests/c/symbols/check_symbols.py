#!/usr/bin/env python3
"""Checks what a shared library needs or exports.

Usage: check_symbols.py needed LIBRARY [OTHER...]
       check_symbols.py exported LIBRARY [SYMBOL...]
OTHER are libraries that it may need beside the standard runtime, SYMBOL some that it exports; without them, a few
of the runtime library. Nothing of the EXPRESS front end is exported by any.
Exit status: 0 as it should be, 1 not so.
"""

import re
import subprocess
import sys

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


def exported(library, expected):
    listing = output("nm", "-D", "--defined-only", library)
    names = [line.split()[-1].split("@")[0] for line in listing.splitlines()]
    readable = output("c++filt", *names).replace("[abi:cxx11]", "").splitlines()
    foreign = [text for name, text in zip(names, readable) if not INTERFACE.match(name)]
    missing = [text for text in expected or EXPECTED if text not in readable]
    for text in foreign:
        print("exported, but not of the interface:", text)
    for text in missing:
        print("not exported:", text)
    print(f"{len(names)} symbols, {len(foreign)} foreign, {len(missing)} missing")
    return 1 if foreign or missing else 0


if __name__ == "__main__":
    if len(sys.argv) < 3 or sys.argv[1] not in ("needed", "exported"):
        sys.exit(__doc__)
    sys.exit({"needed": needed, "exported": exported}[sys.argv[1]](sys.argv[2], sys.argv[3:]))
