#!/usr/bin/env python3
"""Checks that no include line points upwards.

check_rooms.py ROOT ROOMS DOCUMENT

ROOMS has a line for each room, as CMake has written it: its folder, and the folders of the rooms that
it uses. Every `#include "..."` of a room's file must name a header of the room itself or of one that it
uses. The table of rooms in DOCUMENT must say the same, and every file that DOCUMENT names must exist:
one that it names without its folder, somewhere in the source tree. The names of docs/contract-names.md
must be in their files.
"""
import pathlib
import re
import sys

INCLUDE = re.compile(r'^#include "([^"]+)"', re.MULTILINE)
CONTRACT_NAME = re.compile(r"^\| `([^`]+)` \| `([^`]+)` \|", re.MULTILINE)
FILE_NAME = re.compile(r"[\w./-]*\w\.(?:h|cpp|java|cmake|md|py)\b")
TABLE_ROW = re.compile(r"^\| `([a-z_/]+)/` \|.*\|([^|]*)\|$", re.MULTILINE)


def room_of(file, rooms):
    """The room whose folder holds the file directly; None when no room does."""
    folder = file.rpartition("/")[0]
    return folder if folder in rooms else None


def problems_of_includes(root, rooms):
    for room, uses in rooms.items():
        for path in sorted((root / room).glob("*.*")):
            for header in INCLUDE.findall(path.read_text()):
                name = f"{room}/{path.name}"
                if not (root / header).exists():
                    yield f"{name} includes {header}, which is not there"
                elif room_of(header, rooms) not in {room} | uses:
                    yield f"{name} includes {header}, and {room} does not use that room"


def problems_of_table(document, rooms):
    table = {
        room: set(re.findall(r"`([a-z_/]+)/`", uses))
        for room, uses in TABLE_ROW.findall(document)
    }
    for room in sorted(rooms.keys() | table.keys()):
        if table.get(room) != rooms.get(room):
            yield (
                f"the table of rooms says that {room} uses {sorted(table.get(room) or [])},"
                f" and the build {sorted(rooms.get(room) or [])}"
            )


def problems_of_file_names(document, root):
    folders = ("base", "bridge", "cmake", "docs", "host", "java", "nativesettings", "service", "values")
    present = {path.name for folder in folders for path in (root / folder).rglob("*.*")}
    for name in sorted(set(FILE_NAME.findall(document))):
        folder, _, last = name.rpartition("/")
        is_whole = folder and "..." not in folder
        if not ((root / name).exists() if is_whole else last in present):
            yield f"the document names {name}, which is not there"


def problems_of_contract_names(root):
    page = (root / "docs/contract-names.md").read_text()
    for name, file in CONTRACT_NAME.findall(page):
        word = re.split(r"::|\$", name)[-1]
        if not re.search(rf"\b{word}\b", (root / file).read_text()):
            yield f"docs/contract-names.md has {name}, which {file} does not"


def main(root, rooms_file, document):
    root = pathlib.Path(root)
    document = pathlib.Path(document).read_text()
    rooms = {}
    for line in pathlib.Path(rooms_file).read_text().splitlines():
        room, _, uses = line.partition(":")
        rooms[room] = set(uses.split())
    problems = list(problems_of_includes(root, rooms))
    problems += problems_of_table(document, rooms)
    problems += problems_of_file_names(document, root)
    problems += problems_of_contract_names(root)
    print("\n".join(problems) or f"{len(rooms)} rooms, and no arrow points upwards")
    return bool(problems)


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
