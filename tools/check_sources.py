#!/usr/bin/env python3
"""Checks the rules of the source tree that no compiler checks.

    check_sources.py [ROOT]

1. Outside VontalBase/platform/ and VontalBase/export.h the library knows no operating system: no
   condition on one in the preprocessor, and none of its headers.
2. A public header includes no private one, since private headers are not installed. A header is
   private if one of its first five lines is "/// @internal", or if it is within a half of the platform.
3. The house itself never includes VontalBase/VontalBase.h, which is for applications.
4. Headers form no circle.
5. A source of one half of the platform that has the name of a neutral header has a twin in the other half.
6. Every header says what it is: one of its first five lines is "/// @file". What is in a header without it would
   be missing from the manual without a word.
7. Each program in docs/programs/ has beside it what it prints, and a page of the manual includes both. README.md
   has the first program as a reader would write it, in a file main.cpp, and what it prints then.
8. The library throws the standard library's exceptions of memory, length and range and the error of COM,
   and nothing else. It neither throws nor catches VontalException.
9. Each benchmark tells the report of itself.
10. VontalBase/VontalBase.h leads to every public header.
11. No line of C++ is longer than 110 characters: the formatter leaves comments as they are.
12. Some things are done in few places or nowhere: see RESERVED.
13. What is within a half of the platform is included by that half alone.
"""

import pathlib
import re
import sys

CONDITION = re.compile(r"^\s*#\s*(if|ifdef|ifndef|elif|elifdef|elifndef)\b(.*)")
SYSTEM_MACRO = re.compile(
    r"\b(_?_?WIN(32|64|DOWS)(__)?|_MSC_VER|__MINGW\w*|__CYGWIN__|__linux(__)?|linux|__gnu_linux__"
    r"|__unix(__)?|unix|__APPLE__|__FreeBSD__|__GLIBC__|_POSIX\w*|__ANDROID__)\b")
INCLUDE = re.compile(r"^\s*#\s*include\s*([<\"])([^>\"]+)[>\"]")
SYSTEM_HEADER = re.compile(
    r"(windows|winbase|winsock2?|ws2tcpip|objbase|ole2|oleauto|msxml\d?|shlobj|shellapi|wincrypt|process|io|direct"
    r"|unistd|fcntl|pthread|dirent|dlfcn|poll|spawn|signal|langinfo|fnmatch|glob|pwd|grp|netdb|semaphore"
    r"|(sys|linux|arpa|netinet|libxml|libxslt|openssl)/.*)(\.h)?", re.IGNORECASE)
STANDARD = {"semaphore"}  # of the system only with its .h

# "throw;" passes on what came from elsewhere.
THROWN = re.compile(r"\bthrow\b(?!\s*(;|\(?(std::(bad_alloc|length_error|out_of_range)|_com_error)\b))"
                    r"|\bcatch\s*\([^)]*\bVontalException\b")

# What is reserved, how the code says it, and the files that may.
RESERVED = (
    ("reading the environment", r"\b(secure_|_w)?getenv(_s)?\s*\(|\bGetEnvironmentVariable",
     r"platform/posix/(places|languages)\.cpp"),
    ("reading the registry", r"\bReg(Open|Query|Get|Enum)\w*\s*\(", None),
    ("starting a thread", r"\bqvplatform::startThread\(|\bstartThread\(enter\b|\bpthread_create\b|\b_beginthread"
     r"|\bCreateThread\b|\bstd::(j?thread|async)\b",
     r"platform/(posix|windows)/threads\.cpp|concurrency/Thread\.cpp|platform/posix/xmltransform\.cpp"),
    ("joining a thread", r"\bjoinThread\(", r"platform/threads\.h|platform/(posix|windows)/threads\.cpp"
     r"|concurrency/Thread\.cpp|platform/posix/xmltransform\.cpp"),
    ("stopping a thread from outside",
     r"\b(TerminateThread|SuspendThread|pthread_(cancel|kill|detach))\b", None),
    ("another lock than ThreadMutex", r"\bstd::(\w*mutex|lock_guard|unique_lock|scoped_lock|shared_lock"
     r"|condition_variable\w*|once_flag|call_once|\w*semaphore|atomic_flag)\b", r"platform/.*"),
    ("an extension of the compiler", r"\[\[gnu::|__attribute__|__builtin_|__extension__|__int128|\btypeof\b",
     r"platform/posix/.*|platform/processor\.h|export\.h"),
)

# A native long has 32 bits here and 64 there.
NATIVE_LONG = re.compile(r"(?<!long )\blong\b(?! long)")
KNOWS_NATIVE_LONG = re.compile(r"VontalBase/(text/integers|text/U8StringBuilder|json/Object|json/JSONSerializable"
                               r"|zip/zipwriter|platform/.*)\.h")

COMMENT_OR_TEXT = re.compile(r'//[^\n]*|/\*.*?\*/|"(?:\\.|[^"\\\n])*"', re.DOTALL)

SHOWN = re.compile(r"^\\(?:verb)?include(?:\{lineno\})? (\S+)$", re.MULTILINE)

# Where a reader of README.md may have the first program.
READERS_FILE = "/home/you/application/main.cpp"

FORMATTED = ("VontalBase", "tests", "bench", "fuzz", "examples", "docs", "packaging")
LONGEST_LINE = 110

HALF = re.compile(r"VontalBase/platform/(posix|windows)/")


def opens_with(path, wanted):
    """True if one of the first five lines of a file is exactly this one."""
    with open(path, encoding="utf-8") as file:
        return any(line.rstrip("\n") == wanted for _, line in zip(range(5), file))


def included(path):
    """The includes of a file: (line number, opening character, name)."""
    for number, line in enumerate(path.read_text(encoding="utf-8").splitlines(), 1):
        match = INCLUDE.match(line)
        if match:
            yield number, match.group(1), match.group(2)


def find_circle(graph):
    """A circle among the keys of graph as a list, or None."""
    done, path, on_path = set(), [], set()
    for start in sorted(graph):
        stack = [(start, iter(graph[start]))] if start not in done else []
        if stack:
            path, on_path = [start], {start}
        while stack:
            node, edges = stack[-1]
            step = next(edges, None)
            if step is None:
                stack.pop()
                path.pop()
                on_path.discard(node)
                done.add(node)
            elif step in on_path:
                return path[path.index(step):] + [step]
            elif step not in done and step in graph:
                stack.append((step, iter(graph[step])))
                path.append(step)
                on_path.add(step)
    return None


def unshown_programs(docs):
    """What is wrong with the programs of the manual."""
    included_files = set()
    for page in docs.glob("*.md"):
        included_files |= set(SHOWN.findall(page.read_text(encoding="utf-8")))
    programs = docs / "programs"
    for program in sorted(programs.rglob("*.cpp")):
        name = program.relative_to(programs)
        printed = program.with_suffix(".txt")
        if not printed.is_file():
            yield f"docs/programs/{name} has no {printed.name} beside it that tells what it prints"
            continue
        if name.as_posix() not in included_files:
            yield f"docs/programs/{name} is on no page of the manual"
        # Where two programs print the same, one of the two files is enough.
        same = (other for other in programs.rglob("*.txt") if other.read_bytes() == printed.read_bytes())
        if not any(other.relative_to(programs).as_posix() in included_files for other in same):
            yield f"what docs/programs/{name} prints is on no page of the manual"


def untrue_readme(root):
    """What is wrong with the first program in README.md."""
    readme = (root / "README.md").read_text(encoding="utf-8")
    first = root / "docs" / "programs" / "first.cpp"
    if f"```cpp\n{first.read_text(encoding='utf-8')}```\n" not in readme:
        yield "README.md does not have the whole of docs/programs/first.cpp"
    printed = first.with_suffix(".txt").read_text(encoding="utf-8").replace(first.name, READERS_FILE)
    if f"```\n{printed}```\n" not in readme:
        yield f"README.md does not have what docs/programs/first.cpp prints as {READERS_FILE}"


def code_of(path):
    """The text of a file with neither comments nor the insides of texts, line for line."""
    text = path.read_text(encoding="utf-8")
    return COMMENT_OR_TEXT.sub(lambda match: re.sub(r"[^\n]", " ", match.group()), text)


def places(pattern, text):
    """The numbers of the lines where something begins."""
    return (text.count("\n", 0, match.start()) + 1 for match in re.finditer(pattern, text))


def breaches_in_code(root, headers, private, files):
    """What the code says that it must not."""
    for path in files:
        name = path.relative_to(root).as_posix()
        code = code_of(path)
        for number in places(THROWN, code):
            yield f"{name}:{number}: an exception that applications do not expect"
        for what, pattern, allowed in RESERVED:
            if allowed is None or not re.fullmatch("VontalBase/(" + allowed + ")", name):
                yield from (f"{name}:{number}: {what} belongs elsewhere or nowhere" for number in places(pattern, code))
        if name in headers and name not in private and not KNOWS_NATIVE_LONG.fullmatch(name):
            yield from (f"{name}:{number}: a native long in a public header" for number in places(NATIVE_LONG, code))


def strays(root, files):
    """Includes of what is within a half of the platform from outside of that half."""
    for path in files:
        name = path.relative_to(root).as_posix()
        for number, _, target in included(path):
            half = HALF.match(target)
            if half and not name.startswith(half.group()):
                yield f"{name}:{number}: {target} is for its own half of the platform"


def unreachable_headers(headers, private):
    """Public headers that an application does not get by including the one for all."""
    reached, waiting = set(), ["VontalBase/VontalBase.h"]
    while waiting:
        name = waiting.pop()
        if name in headers and name not in reached:
            reached.add(name)
            waiting += (target for _, _, target in included(headers[name]))
    for name in sorted(headers.keys() - private - reached):
        yield f"{name}: VontalBase/VontalBase.h does not lead to it"


def long_lines(root):
    """Lines that are too long."""
    for path in sorted(p for folder in FORMATTED for p in (root / folder).rglob("*") if p.suffix in (".h", ".cpp")):
        for number, line in enumerate(path.read_text(encoding="utf-8").splitlines(), 1):
            if len(line) > LONGEST_LINE:
                yield f"{path.relative_to(root).as_posix()}:{number}: a line of {len(line)} characters"


def main():
    root = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else ".").resolve()
    library = root / "VontalBase"
    files = sorted(p for p in library.rglob("*") if p.suffix in (".h", ".cpp"))
    headers = {p.relative_to(root).as_posix(): p for p in files if p.suffix == ".h"}
    private = {name for name, path in headers.items()
               if HALF.match(name) or opens_with(path, "/// @internal")}
    complaints = []

    for path in files:
        name = path.relative_to(root).as_posix()
        knows_systems = name.startswith("VontalBase/platform/") or name == "VontalBase/export.h"
        if not knows_systems:
            for number, line in enumerate(path.read_text(encoding="utf-8").splitlines(), 1):
                match = CONDITION.match(line)
                if match and SYSTEM_MACRO.search(match.group(2)):
                    complaints.append(f"{name}:{number}: a condition on the operating system")
        for number, quote, target in included(path):
            if not knows_systems and quote == "<" and target not in STANDARD \
                    and SYSTEM_HEADER.fullmatch(target):
                complaints.append(f"{name}:{number}: a header of the operating system, <{target}>")
            if target == "VontalBase/VontalBase.h":
                complaints.append(f"{name}:{number}: the header for applications is not for the library")
            if name in headers and name not in private and target in private:
                complaints.append(f"{name}:{number}: a public header includes a private one, {target}")

    for name, path in headers.items():
        if not opens_with(path, "/// @file"):
            complaints.append(f"{name}:1: the header does not say what it is, with /// @file")

    circle = find_circle({name: [target for _, _, target in included(path)]
                          for name, path in headers.items()})
    if circle:
        complaints.append("headers include each other in a circle: " + " -> ".join(circle))

    neutral = {p.stem for p in (library / "platform").glob("*.h")}
    halves = [{p.name for p in (library / "platform" / half).glob("*.cpp")} for half in ("posix", "windows")]
    for name in sorted(halves[0] ^ halves[1]):
        if name.removesuffix(".cpp") in neutral:
            here, there = ("posix", "windows") if name in halves[0] else ("windows", "posix")
            complaints.append(f"VontalBase/platform/{here}/{name} has no twin in {there}/")

    complaints += unshown_programs(root / "docs")
    complaints += untrue_readme(root)
    complaints += breaches_in_code(root, headers, private, files)
    complaints += strays(root, files)
    complaints += unreachable_headers(headers, private)
    complaints += long_lines(root)
    complaints += (f"bench/{path.name} does not call bench::describe" for path in sorted(root.glob("bench/*_bench.cpp"))
                   if "bench::describe(" not in path.read_text(encoding="utf-8"))

    for complaint in complaints:
        print(complaint)
    if not complaints:
        print(f"{len(files)} source files keep the rules of the tree ({len(private)} private headers)")
    return 1 if complaints else 0


if __name__ == "__main__":
    sys.exit(main())
