"""What the public headers declare, from clang's dump of its syntax tree."""

import json
import pathlib
import re
import subprocess
import tempfile

# clang dumps what has one of these in its qualified name; all that the library shows does.
NAMES = ["VELMAR", "coco_string_", "descriptive_exception"]


def plain(text):
    """A type or a name in the form in which it is written most shortly."""
    text = re.sub(r"\b(class|struct|enum|union) ", "", text)
    text = text.replace("std::__cxx11::", "std::").replace("_Bool", "bool").replace("_IO_FILE", "FILE")
    text = re.sub(r" +>", ">", text)
    text = re.sub(r"std::basic_string<char(, std::char_traits<char>, std::allocator<char>)?>", "std::string", text)
    text = re.sub(r"std::basic_(istream|ostream)<char(, std::char_traits<char>)?>", r"std::\1", text)
    return re.sub(r" +([*&])", r"\1", text)


class Declarations:
    def __init__(self):
        self.records = set()  # classes that users can lay out: defined, no templates, not private
        self.enums = {}       # name: (fixed underlying type or None, [(enumerator, value)])
        self.constants = {}   # name: (type, value)
        self.types = {}       # mangled name: type of a variable, or a function's type
        self.private = set()  # mangled names of what nothing outside of the library refers to


def parse(compiler, folders):
    """The declarations of all headers in the folders; a subprocess.CalledProcessError where they do not compile."""
    found = Declarations()
    with tempfile.TemporaryDirectory() as temporary:
        source = pathlib.Path(temporary) / "headers.cpp"
        source.write_text("".join(f'#include "{header}"\n' for header in headers_of(folders)))
        for name in NAMES:
            command = [compiler, "-std=c++17", "-w", "-fsyntax-only", *(f"-I{folder}" for folder in folders),
                       "-Xclang", "-ast-dump=json", "-Xclang", f"-ast-dump-filter={name}", str(source)]
            run = subprocess.run(command, capture_output=True, text=True, errors="replace", check=True)
            mangled, used = {}, set()  # the names of nodes, and the nodes that code in the headers refers to
            for node in documents(run.stdout):
                collect(node, "", False, found, mangled, used)
            found.private -= {mangled[node] for node in used if node in mangled}
    return found


def headers_of(folders):
    """Of folders with sources, too, the headers that are installed: those that use VelmarApi.h."""
    return sorted(header.name for folder in folders for header in folder.glob("*.h")
                  if header.name == "VelmarApi.h" or '#include "VelmarApi.h"' in header.read_text())


def documents(text):
    decoder, place = json.JSONDecoder(), 0
    while (match := re.compile(r"\S").search(text, place)) is not None:
        node, place = decoder.raw_decode(text, match.start())
        yield node


def collect(node, outer, private, found, mangled, used):
    kind, name = node.get("kind", ""), node.get("name", "")
    if kind.endswith("Expr"):
        for key in ("referencedDecl", "referencedMemberDecl", "foundReferencedDecl"):
            if key in node:
                reference = node[key]
                used.add(reference["id"] if isinstance(reference, dict) else reference)
    if "mangledName" in node:
        mangled[node["id"]] = node["mangledName"]
        found.types[node["mangledName"]] = plain(node["type"]["qualType"])
        if private and not node.get("virtual"):
            found.private.add(node["mangledName"])
    if kind == "VarDecl" and node.get("constexpr") and not private:
        found.constants[plain(outer + name)] = (plain(node["type"]["qualType"]), value_in(node))
    if kind == "EnumDecl" and not private and "inner" in node:
        collect_enum(node, outer + name, found)
    if kind in ("ClassTemplateDecl", "FunctionTemplateDecl", "ClassTemplatePartialSpecializationDecl"):
        private = True  # laid out by whoever uses it
    if kind == "CXXRecordDecl" and node.get("completeDefinition") and not private:
        found.records.add(outer + name)
    if kind in ("NamespaceDecl", "CXXRecordDecl"):
        outer += f"{name}::"
    access = private or node.get("tagUsed") == "class"
    for inner in node.get("inner", []):
        if inner.get("kind") == "AccessSpecDecl":
            access = private or inner["access"] == "private"
        else:
            collect(inner, outer, access, found, mangled, used)


def collect_enum(node, name, found):
    values, value = [], -1
    for inner in node["inner"]:
        if inner["kind"] == "EnumConstantDecl":
            written = value_in(inner)
            value = value + 1 if written is None else int(written)
            values.append((inner["name"], value))
    underlying = node.get("fixedUnderlyingType", {}).get("qualType")
    if values:
        found.enums[name] = (underlying, values)


def value_in(node):
    """The value of the first constant expression below a node; None where there is none."""
    for inner in node.get("inner", []):
        value = inner.get("value") if inner["kind"].endswith(("Expr", "Literal")) else None
        if value is None:
            value = value_in(inner)
        if value is not None:
            return value
    return None
