#!/usr/bin/env python3
"""ten_minutes.py MARKDOWN PREFIX FOLDER [FLAGS]

Does in FOLDER, which is emptied, what a guide says: a block behind a line that ends with "`NAME`:" becomes the file NAME; of a
block of the language console, the lines that begin with "$ " are run, and print what stands below them, where "..." stands for any
lines. Blocks of sh are what a user does before: PREFIX has the result. FLAGS are for the compiler. Exit status: 0 all is as the guide
says, 1 it is not.
"""

import os
import pathlib
import re
import shutil
import subprocess
import sys


def blocks(text):
    """Each block: its language, what it holds, and the text before it."""
    end = 0
    for found in re.finditer(r"^```(\w+)\n(.*?)^```$", text, re.S | re.M):
        yield found[1], found[2], text[end:found.start()]
        end = found.end()


def steps(console):
    """The commands of a console block, each with the lines that it prints."""
    for part in re.split(r"^\$ ", console, flags=re.M)[1:]:
        command, _, expected = part.partition("\n")
        yield command, expected


def pattern(expected):
    lines = [r"(?:.*\n)*?" if line == "..." else re.escape(line) + r"\n" for line in expected.splitlines()]
    return re.compile("".join(lines))


def main():
    if len(sys.argv) not in (4, 5):
        sys.exit(__doc__)
    prefix, folder = map(pathlib.Path, sys.argv[2:4])
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)
    environment = {**os.environ, "VELMAR": str(prefix), "PATH": f"{prefix}/bin:{os.environ['PATH']}",
                   "CXXFLAGS": sys.argv[4] if len(sys.argv) == 5 else ""}
    run = 0
    for language, held, before in blocks(pathlib.Path(sys.argv[1]).read_text(encoding="utf-8")):
        name = re.search(r"`([\w./]+)`:\n+$", before)
        if name:
            path = folder / name[1]
            path.parent.mkdir(exist_ok=True)
            path.write_text(held, encoding="utf-8")
        elif language == "console":
            for command, expected in steps(held):
                done = subprocess.run(["sh", "-c", f"{{ {command}; }} 2>&1"], cwd=folder, env=environment, stdout=subprocess.PIPE,
                                      text=True, errors="replace")
                run += 1
                if not pattern(expected).fullmatch(done.stdout):
                    sys.exit(f"$ {command}\nprints\n{done.stdout}\nand not\n{expected}")
        elif language != "sh":
            sys.exit(f"no line says what to do with this block of {language}:\n{held}")
    if run == 0:
        sys.exit("the guide runs nothing")
    print(f"{run} commands do what the guide says")


if __name__ == "__main__":
    sys.exit(main())
