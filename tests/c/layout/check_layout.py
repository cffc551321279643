#!/usr/bin/env python3
"""Compares the compiler's own dump of virtual tables and records with a table of the public classes, and what the headers
declare with its enumerations and constants.

Usage: check_layout.py --compiler clang++ --include DIR [--include DIR...] --table layout.txt
Exit status: 0 equal, 1 different, 2 the compiler or the table cannot be used, 77 no compiler (skipped).
"""

import argparse
import difflib
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

sys.dont_write_bytecode = True  # nothing is written beside the sources
sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent))
import declarations

# What the class template ExpSchemaEnumeration, of which schema libraries have objects, is laid out with.
PROBED = """struct ProbedEnumeration : VELMAR::ExpSchemaEnumeration<ProbedEnumeration> {
  enum class Enumeration { Unset = -1, Item };
  static constexpr const char* kNames = "ITEM";
};"""


class Class:
    def __init__(self, name, base, virtual):
        self.name, self.base, self.virtual = name, base, virtual
        self.operations = []  # (override or new, signature)
        self.members = []
        self.size = "(no size)"


def read_table(path):
    """The classes, those that may change, and for each enumeration or constant its rows."""
    classes, free, values = {}, {}, {}
    for number, line in enumerate(path.read_text().splitlines(), 1):
        line = line.split("#")[0].rstrip()
        if not line:
            continue
        if match := re.fullmatch(r"class (\S+)(?: : (virtual )?(\S+))?", line):
            current = Class(match[1], match[3], match[2] is not None)
            if current.name in classes:
                sys.exit(f"{path}:{number}: class {current.name} stands here twice")
            classes[current.name] = current
        elif match := re.fullmatch(r"free (\S+)", line):
            current = free[match[1]] = Class(match[1], None, False)
        elif match := re.fullmatch(r"(enum \S+)(?: : (\w+))?", line):
            values[match[1]] = [line]
            current = values[match[1]]
        elif match := re.fullmatch(r"  value (\w+ -?\d+)", line):
            current.append(line)
        elif match := re.fullmatch(r"(constant \S+) .+", line):
            values[match[1]] = [line]
        elif match := re.fullmatch(r"  (size \d+ align \d+)", line):
            current.size = match[1]
        elif match := re.fullmatch(r"  (override|new) (.+)", line):
            current.operations.append((match[1], match[2]))
        elif match := re.fullmatch(r"  member (.+)", line):
            current.members.append(match[1])
        else:
            sys.exit(f"{path}:{number}: this is no row of the table: {line}")
    return classes, free, values


def key(signature):
    """What an override must agree in: the signature without the mark of abstract operations."""
    return signature.removesuffix(" = 0")


def parts_of(classes, name):
    """The parts of the virtual table that the rows demand, each a list of (class, signature)."""
    c = classes[name]
    parts = [list(part) for part in parts_of(classes, c.base)] if c.base else [[]]
    if c.virtual and classes[c.base].members:
        # A virtual base with data keeps its part; what is overridden gets a slot of its own as well.
        parts.insert(0, [])
    for kind, signature in c.operations:
        found = False
        for part in parts:
            for i, (_, other) in enumerate(part):
                if key(other) == key(signature):
                    part[i] = (name, signature)
                    found = True
        if kind == "override" and not found:
            raise SystemExit(f"{name}: no base has an operation {signature}")
        if kind == "new" and found:
            raise SystemExit(f"{name}: a base has the operation {signature} already")
        if not any(key(other) == key(signature) for _, other in parts[0]):
            parts[0].append((name, signature))
    return parts


def is_polymorphic(classes, name):
    return name is not None and (bool(classes[name].operations) or is_polymorphic(classes, classes[name].base))


def expected_text(classes, name):
    c = classes[name]
    lines = [f"class {name}"]
    if is_polymorphic(classes, name):
        for i, part in enumerate(parts_of(classes, name)):
            lines.append(f"  virtual table, part {i}:")
            lines += [f"    {owner}: {signature}" for owner, signature in part]
    lines.append("  members:")
    lines += [f"    {member}" for member in c.members]
    return lines + [f"  {c.size}"]


def qualified(name):
    return name if name.startswith("std::") or name == "descriptive_exception" else "VELMAR::" + name


def probe_name(name):
    return "Probe_" + re.sub(r"\W+", "_", name)


def probe_source(classes, free, headers):
    """A source that lays out every class and emits the virtual table of a class derived from each."""
    lines = ["#include <exception>"] + [f'#include "{header}"' for header in headers] + [PROBED]
    for name in free:
        lines.append(f"unsigned long {probe_name(name)} = sizeof({qualified(name)});")
    for name in classes:
        probe = probe_name(name)
        if is_polymorphic(classes, name):
            lines.append(f"struct {probe} : {qualified(name)} {{ ~{probe}() override; }};")
            lines.append(f"{probe}::~{probe}() {{}}")
        else:
            lines.append(f"unsigned long {probe} = sizeof({qualified(name)});")
    return "\n".join(lines) + "\n"


def normalise(text):
    text = declarations.plain(text).replace("VELMAR::", "").replace("(void)", "()")
    text = re.sub(r"std::_Rb_tree_iterator<std::pair<const ([\w ]+), (\w+\*)>>",
                  r"std::map<\1, \2>::iterator", text)
    text = re.sub(r"([*&])(?=[A-Za-z_])", r"\1 ", text)
    return text


def dumped_tables(dump, classes):
    """Virtual tables by class, in the form of parts_of."""
    probes = {probe_name(name): name for name in classes}
    tables = {}
    for match in re.finditer(r"^Vtable for '(\w+)' \(\d+ entries\)\.\n((?:.+\n)*)", dump, re.M):
        if match[1] not in probes:
            continue
        parts = []
        for entry in re.findall(r"^ *\d+ \| (.*)$", match[2], re.M):
            if entry.startswith("offset_to_top"):
                parts.append([])
            entry = re.sub(r" \[\w+ = \w+\]$", "", entry)  # the arguments of templates
            operation = re.fullmatch(r"(.*?)([\w:]*?)(\w+(?:<\w+>)?)::(~?\w+)\((.*)\)( const)?( \[pure\])?",
                                     normalise(entry))
            if entry.endswith("[complete]"):
                # A class that declares no destructor has one all the same, so every table has its own.
                parts[-1].append((probes[match[1]], "~"))
            elif operation and not entry.endswith("[deleting]"):
                result, outer, owner, name, arguments, const, pure = operation.groups()
                signature = f"{result}{name}({arguments}){const or ''}{' = 0' if pure else ''}"
                parts[-1].append((outer + owner, signature))
        tables[probes[match[1]]] = parts
    return tables


def dumped_records(dump, classes):
    """The data members of each class itself, in the order of their places, and the sizes of the classes."""
    members, sizes = {}, {}
    for block in dump.split("*** Dumping AST Record Layout\n")[1:]:
        lines = block.splitlines()
        head = re.fullmatch(r" *0 \| (?:class|struct) (\S.*?)(?: \(empty\))?", lines[0])
        name = head and normalise(head[1])
        if name not in classes:
            continue
        fields = []
        for line in lines[1:]:
            row = re.fullmatch(r" *\d+ \|   (\S.*)", line)
            if row and not re.search(r"\((primary )?(virtual )?base\)|vtable pointer\)", row[1]):
                fields.append(normalise(row[1].replace(" (empty)", "")))
        members[name] = fields
        size = re.search(r"\[sizeof=(\d+), dsize=\d+, align=(\d+),", block)
        sizes[name] = f"size {size[1]} align {size[2]}"
    return members, sizes


def declared_values(declared):
    """The rows of the enumerations and constants that the headers declare."""
    rows = {}
    for name, (underlying, values) in declared.enums.items():
        name = "enum " + name.removeprefix("VELMAR::")
        head = f"{name} : {underlying}" if underlying else name
        rows[name] = [head] + [f"  value {enumerator} {value}" for enumerator, value in values]
    for name, (kind, value) in declared.constants.items():
        name = "constant " + name.removeprefix("VELMAR::")
        rows[name] = [f"{name} {kind} {value}"]
    return rows


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--compiler", required=True)
    parser.add_argument("--include", required=True, type=pathlib.Path, action="append")
    parser.add_argument("--table", required=True, type=pathlib.Path)
    options = parser.parse_args()

    if shutil.which(options.compiler) is None:
        print(f"skipped: {options.compiler} is not installed, and no other compiler dumps layouts")
        return 77
    classes, free, values = read_table(options.table)

    headers = declarations.headers_of(options.include)
    if not headers:
        print("no headers in", *options.include)
        return 2
    try:
        declared = declarations.parse(options.compiler, options.include)
    except subprocess.CalledProcessError as error:
        print(error.stderr)
        return 2
    errors = []
    for name in sorted(declared.records):
        name = name.removeprefix("VELMAR::")
        if name not in classes and name not in free:
            errors.append(f"class {name} is missing in {options.table.name}")
    found_values = declared_values(declared)
    for name in sorted(values.keys() | found_values.keys()):
        expected, found = values.get(name, []), found_values.get(name, [])
        if expected != found:
            errors.append("\n".join(difflib.unified_diff(expected, found, f"{name} as the table has it",
                                                         f"{name} as it is declared", n=3, lineterm="")))

    with tempfile.TemporaryDirectory() as folder:
        source = pathlib.Path(folder) / "probe.cpp"
        source.write_text(probe_source(classes, free, headers))
        command = [options.compiler, "-std=c++17", "-w", *(f"-I{folder}" for folder in options.include),
                   "-S", "-o", "/dev/null",
                   "-Xclang", "-fdump-vtable-layouts", "-Xclang", "-fdump-record-layouts", str(source)]
        run = subprocess.run(command, capture_output=True, text=True, errors="replace")
    if run.returncode != 0:
        print(run.stderr)
        print("the compiler cannot lay out the classes of the table")
        return 2

    tables = dumped_tables(run.stdout, classes)
    members, sizes = dumped_records(run.stdout, {**classes, **free})
    compared = 0
    for name in classes:
        expected = expected_text(classes, name)
        found = [f"class {name}"]
        for i, part in enumerate(tables.get(name, [])):
            found.append(f"  virtual table, part {i}:")
            found += [f"    {owner}: {signature}" for owner, signature in part]
        found.append("  members:")
        found += [f"    {member}" for member in members.get(name, ["(the compiler shows no layout)"])]
        found.append(f"  {sizes.get(name)}")
        compared += 1
        if expected != found:
            errors.append("\n".join(difflib.unified_diff(expected, found, f"{name} as the table has it",
                                                         f"{name} as it is compiled", n=3, lineterm="")))
    for name, c in free.items():
        if sizes.get(name) != c.size:
            errors.append(f"{name} as the table has it: {c.size}, as it is compiled: {sizes.get(name)}")
    for error in errors:
        print(error)
        print()
    slots = sum(len(part) for parts in tables.values() for part in parts)
    print(f"{compared} classes, {slots} slots, {sum(len(members.get(name, [])) for name in classes)} members, "
          f"{len(sizes)} sizes, {len(found_values)} enumerations and constants compared, {len(errors)} differences")
    return 1 if errors else 0


if __name__ == "__main__":
    sys.exit(main())
