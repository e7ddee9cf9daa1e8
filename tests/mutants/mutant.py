"""What a mutant is: one small change to a source, made of edits."""

from __future__ import annotations

import re
from dataclasses import dataclass

_TOKEN = re.compile(r'"(?:\\.|[^"\\])*"' r"|'(?:\\.|[^'\\])+'" r"|//[^\n]*|/\*.*?\*/|\s+", re.DOTALL)


def flat(text: str) -> str:
    """C++ on one line, without comments."""

    def replace(match: re.Match[str]) -> str:
        return match.group() if match.group()[0] in "\"'" else " "

    return re.sub(r" +", " ", _TOKEN.sub(replace, text)).strip() if "\n" in text or "//" in text else text.strip()


@dataclass(frozen=True)
class Edit:
    """`changed` in the place of the bytes `start` to `end`; an empty place is one in front of a statement."""

    start: int
    end: int
    changed: str
    form: str = "expression"  # or condition (an expression taken as bool), or statement


@dataclass(frozen=True)
class Mutant:
    """A change whose edits belong together. `before` and `after` are its lines, each as one."""

    path: str
    line: int
    function: str
    operator: str
    before: str
    after: str
    edits: tuple[Edit, ...]

    @property
    def key(self) -> tuple[str, str, str, str, str]:
        """What stays the same when lines move."""
        return (self.path, self.function, self.operator, self.before, self.after)

    def __str__(self) -> str:
        return f"{self.path}:{self.line}: {self.operator} in {self.function}\n  - {self.before}\n  + {self.after}"


def make_mutant(path: str, text: str, function: str, operator: str, edits: tuple[Edit, ...]) -> Mutant:
    start, end = min(edit.start for edit in edits), max(edit.end for edit in edits)
    first = text.rfind("\n", 0, start) + 1
    last = text.find("\n", end)
    after, position = "", first
    for edit in sorted(edits, key=lambda edit: edit.start):
        separator = " " if edit.start == edit.end else ""
        after += text[position : edit.start] + edit.changed + separator
        position = edit.end
    after += text[position:last]
    line = text.count("\n", 0, start) + 1
    return Mutant(path, line, function, operator, flat(text[first:last]), flat(after), edits)
