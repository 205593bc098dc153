#!/usr/bin/env python3
r"""Writes headers as Doxygen is to read them; the headers themselves have plain comments.

    doxygen_filter.py FOLDER HEADER...      under FOLDER they get the same relative names

- A comment documents every declaration of the run below it, up to a blank line or the next comment; but where one of
  the later ones has a comment behind it, only that.
- A comment behind a declaration documents that declaration.
- A comment with a blank line below it documents the file, or within a class the declarations that follow and have
  none of their own, up to the next such comment or heading.
- "---- A heading" groups what follows. Where it says more behind a semicolon, it is a comment as the one before, too.
- What a struct or an enum has without a comment refers to the comment above it.
- Text is plain text: nothing in it is a command. Deeper indented lines are kept as they are; `name` is a name.

Left out is what is not public and has no comment; what is deleted; and destructors, default constructors and copying
of which a class has nothing to say.
"""
import contextlib
import pathlib
import re
import sys

HEADING = re.compile(r"-{3,4} (.*?)(?: -+)?$")
SCOPE = re.compile(r"(?:template <.*> )?(class|struct|(?:inline )?namespace|enum(?: class)?)\b[^;()=]*\{$")
ACCESS = re.compile(r"(public|protected|private):$")
SILENT = re.compile(r"(?:virtual )?~|\w+\(\) = default;|.*\(const \w+&\) = default;|.* = delete;")
BEHIND = re.compile(r"(.*[;{},])\s*// (?!NOLINT)(.*)$")


def code_of(line):
    """The line without comments, and with nothing in its literals."""
    return re.sub(r'"(?:\\.|[^"\\])*"|\'(?:\\.|[^\'\\])*\'', "0", line).split("//")[0].strip()


def plain(text):
    return re.sub(r"`([^`]*)`", r"<tt>\1</tt>", re.sub(r'([\\@&$#<>%"|])', r"\\\1", text))


def print_comment(lines, opening="/**"):
    if not lines:
        return
    print(opening)
    verbatim = False
    for line in lines:
        if (line.startswith("    ") or verbatim and not line) != verbatim:
            verbatim = not verbatim
            print(r"\verbatim" if verbatim else r"\endverbatim")
        print(line if verbatim else plain(re.sub(r"^ *\d+\. ", "-# ", line)))
    print(r"\endverbatim */" if verbatim else "*/")


class Scope:
    def __init__(self, kind, access):
        self.kind, self.access = kind, access
        self.general = []  # documents what has no comment of its own
        self.grouped = False

    def end_group(self):
        if self.grouped:
            print("///@}")
        self.grouped, self.general = False, []

    def begin_group(self, heading, more):
        self.end_group()
        print(f"/// \\name {plain(heading)}\n///@{{")
        self.grouped = True
        self.general = more or ([heading + "."] if ";" in heading else [])


class Header:
    def __init__(self, lines):
        self.lines, self.at = lines, 0
        self.scopes = [Scope("file", "public")]
        self.comment = []  # above what comes
        self.in_run = False  # not the first below that comment

    def filter(self):
        print(r"/// \file")
        while self.at < len(self.lines):
            self.step(code_of(self.lines[self.at]))
        self.scopes[0].end_group()

    def step(self, code):
        scope = self.scopes[-1]
        if self.lines[self.at].strip().startswith("//"):
            self.read_comment(scope)
        elif not code or code.startswith("#"):
            if code.startswith("#define"):
                print_comment(self.comment)
            self.comment, self.in_run = [], False
            self.copy_line()
        elif code.startswith("}"):
            scope.end_group()
            self.scopes.pop()
            self.copy_line()
        elif ACCESS.match(code):
            scope.end_group()
            scope.access = code[:-1]
            self.copy_line()
        elif SCOPE.match(code):
            self.enter_scope(scope, code)
        else:
            self.copy_declaration(scope, code)

    def copy_line(self):
        print(self.lines[self.at])
        self.at += 1

    def read_comment(self, scope):
        comment = []
        while self.at < len(self.lines) and self.lines[self.at].strip().startswith("//"):
            text = self.lines[self.at].strip()[2:].removeprefix(" ")
            if not text.startswith(("clang-format", "NOLINT")):
                comment.append(text)
            self.at += 1
        follows = self.lines[self.at] if self.at < len(self.lines) else ""
        heading = HEADING.match(comment[0]) if comment else None
        self.comment, self.in_run = [], False
        if heading:
            scope.begin_group(heading[1], comment[1:])
        elif follows.strip() and not follows.startswith("namespace"):
            self.comment = comment
        elif scope.kind in ("file", "namespace"):
            print_comment(comment, r"/** \file")
        else:
            scope.general = comment

    def enter_scope(self, scope, code):
        text = self.comment or scope.general
        print_comment(text)
        self.comment = []
        kind = SCOPE.match(code)[1]
        inner = Scope(kind, "private" if kind == "class" else scope.access)
        if text and kind.startswith(("struct", "enum")):
            inner.general = ["See " + re.findall(r"\w+", code.split(" : ")[0])[-1] + "."]
        self.scopes.append(inner)
        self.copy_line()

    def copy_declaration(self, scope, code):
        lines = self.lines[self.at : self.end_of_declaration(scope.kind.startswith("enum"))]
        self.at += len(lines)
        behind = any(BEHIND.match(line) for line in lines)
        silent = SILENT.match(code)
        text = self.comment
        if self.in_run and (behind or silent):
            text = []
        elif not text and not silent:
            text = scope.general
        self.in_run = True
        if not text and not behind and (silent or scope.access != "public"):
            print(r"/** \cond */", *lines, r"/** \endcond */", sep="\n")
            return
        print_comment(text)
        for line in lines:
            found = BEHIND.match(line)
            print(f"{found[1]} ///< {plain(found[2])}" if found else line)

    def end_of_declaration(self, enumerator):
        """The index behind the declaration that begins here."""
        depth, i = 0, self.at
        ends = r"[,;}]$|^[^,;]*$" if enumerator else r"[;}]$"
        while i < len(self.lines):
            code = code_of(self.lines[i])
            i += 1
            depth += sum(map(code.count, "{(")) - sum(map(code.count, "})"))
            if depth <= 0 and re.search(ends, code):
                break
        return i


for name in sys.argv[2:]:
    target = pathlib.Path(sys.argv[1], name)
    target.parent.mkdir(parents=True, exist_ok=True)
    with target.open("w", encoding="utf-8") as out, contextlib.redirect_stdout(out):
        Header(pathlib.Path(name).read_text(encoding="utf-8").splitlines()).filter()
