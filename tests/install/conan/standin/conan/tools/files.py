import fnmatch
import os
import shutil


def copy(_conanfile, pattern, src, dst):
    """Copies the files whose path below src matches; a star matches slashes as well. Returns the copies."""
    copied = []
    top = pattern.split("/")[0] if "/" in pattern else ""
    for folder, _, names in os.walk(os.path.join(src, top) if top else src):
        if not top and folder != src:
            break
        for name in names:
            path = os.path.relpath(os.path.join(folder, name), src)
            if fnmatch.fnmatchcase(path, pattern):
                target = os.path.join(dst, path)
                os.makedirs(os.path.dirname(target), exist_ok=True)
                shutil.copyfile(os.path.join(src, path), target)
                copied.append(target)
    return copied


def rmdir(_conanfile, path):
    if os.path.isdir(path):
        shutil.rmtree(path)
