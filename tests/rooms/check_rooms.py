#!/usr/bin/env python3
"""Checks that no include line points upwards.

check_rooms.py ROOT ROOMS DOCUMENT

ROOMS has a line for each room, as CMake has written it: its folder, and the folders of the rooms that
it uses. Every `#include "..."` of a room's file must name a header of the room itself or of one that it
uses. The table of rooms in DOCUMENT must say the same.
"""
import pathlib
import re
import sys

INCLUDE = re.compile(r'^#include "([^"]+)"', re.MULTILINE)
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


def main(root, rooms_file, document):
    rooms = {}
    for line in pathlib.Path(rooms_file).read_text().splitlines():
        room, _, uses = line.partition(":")
        rooms[room] = set(uses.split())
    problems = list(problems_of_includes(pathlib.Path(root), rooms))
    problems += problems_of_table(pathlib.Path(document).read_text(), rooms)
    print("\n".join(problems) or f"{len(rooms)} rooms, and no arrow points upwards")
    return bool(problems)


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
