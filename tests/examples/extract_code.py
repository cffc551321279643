#!/usr/bin/env python3
"""extract_code.py MARKDOWN CODE [OUTPUT]

Writes the C++ blocks of a Markdown file to CODE, one behind the other, and its text blocks to OUTPUT.
"""
import re
import sys


def blocks(text, language):
    found = re.findall(rf"^```{language}\n(.*?)^```$", text, re.S | re.M)
    if not found:
        sys.exit(f"{sys.argv[1]} has no block of {language}")
    return "\n".join(found)


with open(sys.argv[1], encoding="utf-8") as markdown:
    text = markdown.read()
for language, path in zip(("cpp", "text"), sys.argv[2:]):
    with open(path, "w", encoding="utf-8") as file:
        file.write(blocks(text, language))
