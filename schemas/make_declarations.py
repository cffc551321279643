#!/usr/bin/env python3
"""Writes an EXPRESS schema of declarations from a table of facts.

    make_declarations.py FACTS.tsv > schema.exp

The table says what a schema declares, without rules and functions. Its fields are separated by tabs; the kind
of a row stands in its first field, and rows that begin with '#' are headings:

    schema  name
    type    name  underlying type
    entity  name  "abstract" or nothing  supertypes  explicit attributes  redeclared attributes
            inverse attributes  supertype constraint

Attributes are "name : type" separated by "; ". A redeclared attribute is "entity.name : type"; with a "*" before the
type it is derived. As the table does not say from what, its expression is written as the indeterminate value "?".
An inverse attribute is "name : type for attribute".
"""

import re
import sys

# What the tables leave open or say in words that need a function: (entity or type, attribute) -> EXPRESS.
COMPLETED = {
    ("path", "edge_list"): "LIST [1:?] OF UNIQUE oriented_edge",
    ("poly_loop", "polygon"): "LIST [3:?] OF UNIQUE cartesian_point",
}
COMPLETED_TYPES = {
    # The bounds are given as numbers of the first and the last item of ypr_enumeration.
    "array [ypr_index (yaw) : ypr_index (roll)] of plane_angle_measure": "ARRAY [1:3] OF plane_angle_measure",
}

RESERVED = set(
    """abstract aggregate andor and array as bag based_on binary boolean by enumeration extensible fixed for from
    generic generic_entity integer inverse list logical number of oneof optional or real select set string subtype
    supertype unique with""".split()
)


def express(text):
    """The words of the language in upper case, bounds without blanks."""
    text = re.sub(r"[a-z_0-9]+", lambda word: word[0].upper() if word[0] in RESERVED else word[0], text)
    text = re.sub(r"\[(\S+) : (\S+)\]", r"[\1:\2]", text)
    return re.sub(r"\)(?=[A-Z])", ") ", text)


def wrapped(text, indent):
    """Breaks a line behind a comma before it gets longer than 110 characters."""
    lines = [""]
    for piece in re.split(r"(?<=, )", text):
        if len(lines[-1]) + len(piece.rstrip()) > 109:
            lines[-1] = lines[-1].rstrip()
            lines.append(indent)
        lines[-1] += piece
    return "\n".join(lines)


def attributes(field):
    """The attributes of a field as pairs of name and type."""
    return [tuple(part.split(" : ", 1)) for part in field.split("; ")] if field else []


def type_declaration(name, underlying):
    text = COMPLETED_TYPES.get(underlying) or express(underlying)
    return wrapped(f"TYPE {name} = {text};", "    ") + "\nEND_TYPE;\n"


def entity_declaration(name, abstract, supertypes, explicit, redeclared, inverse, constraint):
    head = [f"ENTITY {name}"]
    if constraint:
        head.append(("  ABSTRACT " if abstract else "  ") + "SUPERTYPE OF " + express(constraint))
    elif abstract:
        head[0] += " ABSTRACT SUPERTYPE"
    if supertypes:
        head.append(f"  SUBTYPE OF ({supertypes})")
    lines = [wrapped(line, "      ") for line in head]
    lines[-1] += ";"
    for attribute, kind in attributes(redeclared):
        if not kind.startswith("* "):
            lines.append(f"  SELF\\{attribute} : {express(kind)};")
    for attribute, kind in attributes(explicit):
        lines.append(f"  {attribute} : {COMPLETED.get((name, attribute)) or express(kind)};")
    derived = [(attribute, kind[2:]) for attribute, kind in attributes(redeclared) if kind.startswith("* ")]
    if derived:
        lines.append("DERIVE")
        lines += [f"  SELF\\{attribute} : {express(kind)} := ?;" for attribute, kind in derived]
    if inverse:
        lines.append("INVERSE")
        lines += [f"  {attribute} : {express(kind)};" for attribute, kind in attributes(inverse)]
    return "\n".join(lines) + "\nEND_ENTITY;\n"


def main(path):
    declarations = []
    schema = None
    with open(path, encoding="utf-8") as table:
        for line in table:
            kind, *fields = line.rstrip("\n").split("\t")
            if kind == "schema":
                schema = fields[0]
            elif kind == "type":
                declarations.append(type_declaration(*fields))
            elif kind == "entity":
                declarations.append(entity_declaration(*fields))
    print(f"-- The declarations of the schema {schema.upper()}: its types and entities with their attributes.")
    print("-- Rules and functions are left out, and derived attributes that redeclare an explicit one have the")
    print("-- indeterminate value '?' for their expression: what matters here is what a Part 21 file holds.")
    print(f"SCHEMA {schema};\n")
    print("\n".join(declarations))
    print("END_SCHEMA;")


if __name__ == "__main__":
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    main(sys.argv[1])
