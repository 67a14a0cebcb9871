#!/usr/bin/env python3
"""Checks that the code in the documents is the code of programs that the tests run.

check_snippets.py ROOT

Every block of C++, Java, CMake or XML in a document of the project stands below a line with the file
that it is cut from, as in

    <!-- examples/java/ReadmeExample.java -->
    ```java

and its lines are lines of that file, one after the other, whatever their indentation. A line `...`
stands for any number of lines.
"""
import pathlib
import re
import sys

BLOCK = re.compile(
    r"(?:^<!-- (?P<file>\S+) -->\n)?^```(?P<language>java|cpp|cmake|xml)\n(?P<code>.*?)^```$",
    re.MULTILINE | re.DOTALL)


def lines_of(text):
    return [line.strip() for line in text.splitlines() if line.strip()]


def is_cut_from(code, source):
    """Whether the parts of the code between the lines `...` follow each other in the source."""
    parts = [[]]
    for line in code:
        if line == "...":
            parts.append([])
        else:
            parts[-1].append(line)
    start = 0
    for part in parts:
        ends = [end for end in range(start + len(part), len(source) + 1)
                if source[end - len(part):end] == part]
        if not ends:
            return False
        start = ends[0]
    return True


def problems(root):
    documents = [*root.glob("*.md"), *root.glob("docs/**/*.md"), *root.glob("service/*.md")]
    for document in sorted(documents):
        text = document.read_text()
        for block in BLOCK.finditer(text):
            where = f"{document.relative_to(root)}:{text.count(chr(10), 0, block.start()) + 1}"
            if not block["file"]:
                yield f"{where}: the {block['language']} block names no file that it is cut from"
            elif not (root / block["file"]).exists():
                yield f"{where}: there is no file {block['file']}"
            elif not is_cut_from(lines_of(block["code"]), lines_of((root / block["file"]).read_text())):
                yield f"{where}: the block is not in {block['file']}"


found = list(problems(pathlib.Path(sys.argv[1])))
print("\n".join(found) or "every block of code is in its file")
sys.exit(bool(found))
