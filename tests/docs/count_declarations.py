#!/usr/bin/env python3
"""Checks the numbers of lines that docs/java-application.md states for the editor's declarations.

count_declarations.py ROOT

The rows of its table name a file and the number of lines, without blank ones, between the lines
`// declarations` and `// end`. Files with SettingKey may have 35.
"""
import pathlib
import re
import sys

LIMIT = 35
ROW = re.compile(r"^\|[^|]*\| `(examples/\S+)` \| (\d+) \|$", re.MULTILINE)

root = pathlib.Path(sys.argv[1])
rows = ROW.findall((root / "docs/java-application.md").read_text())
wrong = [] if len(rows) == 3 else ["the document has another number of rows"]
for file, stated in rows:
    text = (root / file).read_text()
    declarations = re.search(r"// declarations\n(.*)// end\n", text, re.DOTALL)[1]
    count = sum(bool(line.strip()) for line in declarations.splitlines())
    if count != int(stated):
        wrong.append(f"{file} has {count} lines, and the document says {stated}")
    if "prefs" not in text and count > LIMIT:
        wrong.append(f"{file} has {count} lines, more than {LIMIT}")
print("\n".join(wrong) or "the document has the numbers of lines")
sys.exit(bool(wrong))
