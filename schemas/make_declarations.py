#!/usr/bin/env python3
"""Writes an EXPRESS schema of declarations from tables of facts.

    make_declarations.py FACTS.tsv [EARLIER.tsv ...] > schema.exp

A table says what a schema declares, without rules and functions. Further tables are those of earlier editions, the
newest first: what they declare under a name that no table before has is added. Fields are separated by tabs; the kind
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

# The tables break off behind "LIST OF" where UNIQUE follows: the remainder of the type,
# (entity, attribute or entity.attribute) -> element type, and below the attributes that stand behind it.
UNIQUE_ELEMENTS = {
    ("annotation_placeholder_leader_line", "geometric_elements"): "des_apll_point_select",
    ("basic_round_hole_occurrence_in_assembly", "modified_components"): "multi_level_reference_designator",
    ("chain_based_item_identified_representation_usage", "nodes"): "representation",
    ("characterized_chain_based_item_within_representation", "nodes"): "representation",
    ("class", "described_by"): "property_bsu",
    ("counterbore_hole_definition", "counterbore"): "explicit_round_hole",
    ("counterbore_hole_occurrence_in_assembly", "modified_components"): "multi_level_reference_designator",
    ("counterdrill_hole_occurrence_in_assembly", "modified_components"): "multi_level_reference_designator",
    ("countersink_hole_occurrence_in_assembly", "modified_components"): "multi_level_reference_designator",
    ("datum_system", "constituents"): "datum_reference_compartment",
    ("dictionary", "contained_classes"): "class_bsu",
    ("edge_blended_solid", "blended_edges"): "edge_curve",
    ("explicit_model_class_extension", "instance_identification"): "property_bsu",
    ("externally_defined_item_with_multiple_references", "references"): "source_item",
    ("faceted_primitive", "points"): "cartesian_point",
    ("functional_view_class", "view_control_variables"): "property_bsu",
    ("independent_limits_of_linear_dimensional_size_characteristic_representation", "limits"):
        "shape_dimension_representation",
    ("kinematic_loop", "path.edge_list"): "oriented_joint",
    ("level_type", "levels"): "level",
    ("multi_level_reference_designator", "location"): "next_assembly_usage_occurrence",
    ("path", "edge_list"): "oriented_edge",
    ("poly_loop", "polygon"): "cartesian_point",
    ("polygonal_area", "bounds"): "cartesian_point",
    ("present_translations", "language_codes"): "language_code",
    ("quantifier_expression", "variables"): "generic_variable",
    ("spotface_hole_definition", "counterbore_hole_definition.counterbore"): "spotface_definition",
    ("uuid_provenance", "content"): "uuid_relationship",
}
ATTRIBUTES_BEHIND = {
    "chain_based_item_identified_representation_usage": "undirected_link : list [1 : ?] of chained_representation_link",
    "characterized_chain_based_item_within_representation":
        "undirected_link : list [1 : ?] of chained_representation_link",
    "class": "defined_types : set of data_type_bsu",
    "counterbore_hole_definition": "drilled_hole_depth : optional positive_length_measure_with_unit; "
        "drilled_hole_depth_tolerance : optional tolerance_value; "
        "drilled_hole_diameter : positive_length_measure_with_unit; "
        "drilled_hole_diameter_tolerance : optional tolerance_value_or_limits_and_fits; "
        "through_hole : boolean",
    "dictionary": "a_posteriori_semantic_relationships : set of a_posteriori_semantic_relationship; "
        "names : item_names; note : optional note_type; remark : optional remark_type",
    "explicit_model_class_extension": "population : list [1 : ?] of unique dic_class_instance; table_like : boolean",
    "functional_view_class": "view_properties : list of unique property_bsu",
    "level_type": "value_type : simple_type",
}
# Redeclared as derived, and missing in the tables for the same reason.
DERIVED_LISTS = {
    "abstracted_expression_function": "quantifier_expression.variables : * list [1 : ?] of unique generic_variable",
    "definite_integral_expression": "quantifier_expression.variables : * list [1 : 1] of unique generic_variable",
    "functional_view_class": "class.described_by : * list of unique property_bsu",
    "non_instantiable_functional_view_class":
        "functional_view_class.view_properties : * list of unique property_bsu",
    "oriented_path": "path.edge_list : * list [1 : ?] of unique oriented_edge",
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


def attribute_type(entity, attribute, kind):
    element = UNIQUE_ELEMENTS.get((entity, attribute))
    if element and kind.endswith(" of"):
        kind += f" unique {element}"
    return express(kind)


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
    redeclared = "; ".join(filter(None, [redeclared, DERIVED_LISTS.get(name)]))
    for attribute, kind in attributes(redeclared):
        if not kind.startswith("* "):
            lines.append(f"  SELF\\{attribute} : {attribute_type(name, attribute, kind)};")
    if explicit.endswith(" of") and name in ATTRIBUTES_BEHIND:
        explicit += f" unique {UNIQUE_ELEMENTS[name, attributes(explicit)[-1][0]]}; {ATTRIBUTES_BEHIND[name]}"
    for attribute, kind in attributes(explicit):
        lines.append(f"  {attribute} : {attribute_type(name, attribute, kind)};")
    derived = [(attribute, kind[2:]) for attribute, kind in attributes(redeclared) if kind.startswith("* ")]
    if derived:
        lines.append("DERIVE")
        lines += [f"  SELF\\{attribute} : {express(kind)} := ?;" for attribute, kind in derived]
    if inverse:
        lines.append("INVERSE")
        lines += [f"  {attribute} : {express(kind)};" for attribute, kind in attributes(inverse)]
    return "\n".join(lines) + "\nEND_ENTITY;\n"


def main(paths):
    declarations = []
    schema = None
    known = set()
    for path in paths:
        with open(path, encoding="utf-8") as table:
            rows = [line.rstrip("\n").split("\t") for line in table]
        new = set()
        for kind, *fields in rows:
            if kind == "schema":
                schema = schema or fields[0]
            elif kind in ("type", "entity") and fields[0] not in known:
                new.add(fields[0])
                declarations.append((type_declaration if kind == "type" else entity_declaration)(*fields))
        known |= new
    print(f"-- The declarations of the schema {schema.upper()}: its types and entities with their attributes.")
    if len(paths) > 1:
        print("-- Behind those of the newest edition stand the ones that only earlier editions have.")
    print("-- Rules and functions are left out, and derived attributes that redeclare an explicit one have the")
    print("-- indeterminate value '?' for their expression: what matters here is what a Part 21 file holds.")
    print(f"SCHEMA {schema};\n")
    print("\n".join(declarations))
    print("END_SCHEMA;")


if __name__ == "__main__":
    if len(sys.argv) < 2:
        sys.exit(__doc__)
    main(sys.argv[1:])
