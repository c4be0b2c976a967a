#!/usr/bin/env python3
"""Lays ready the objects of a finished build tree for another one that would compile the same.

    reuse_objects.py BUILD SOURCE TREE COPY

BUILD was made from the source tree SOURCE; TREE is configured and not yet built, from SOURCE itself or from the copy
COPY of it. Where both compile the same source file of the library with the same arguments, the object goes into
TREE/reusable, where the compiler launcher reuse-object finds it. Switches for warnings that are errors and for lists
of dependencies do not matter.
"""

import filecmp
import json
import pathlib
import shlex
import shutil
import sys

IRRELEVANT = {"-MD", "-Werror"}
IRRELEVANT_WITH_VALUE = {"-MT", "-MF", "-o"}


def objects(tree, root):
    """What is compiled for the library: (arguments that do not know where the tree stands, source file, object)."""
    for entry in json.loads((tree / "compile_commands.json").read_text(encoding="utf-8")):
        command = shlex.split(entry["command"])
        made = command[command.index("-o") + 1]
        if "CMakeFiles/VontalBase.dir/" not in made:
            continue
        compiler = next(place for place, word in enumerate(command) if "g++" in pathlib.Path(word).name)
        arguments, words = [], iter(command[compiler:])
        for word in words:
            if word in IRRELEVANT_WITH_VALUE:
                next(words)
            elif word not in IRRELEVANT:
                arguments.append(word.replace(root, "ROOT"))
        yield tuple(arguments), entry["file"], made


def main():
    build, source, tree, copy = sys.argv[1:]
    build, tree = pathlib.Path(build), pathlib.Path(tree)
    finished = {arguments: (file, build / made) for arguments, file, made in objects(build, source)}
    reused = count = 0
    for arguments, file, made in objects(tree, copy):
        count += 1
        same_file, ready = finished.get(arguments, (None, None))
        if ready and ready.exists() and filecmp.cmp(same_file, file, shallow=False):
            (tree / "reusable" / made).parent.mkdir(parents=True, exist_ok=True)
            shutil.copyfile(ready, tree / "reusable" / made)
            reused += 1
    print(f"{reused} of {count} objects are reused")


main()
