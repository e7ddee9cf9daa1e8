"""Writes sources in which every mutant can be switched on at run time, each statement on the line where it was, and
leaves out the mutants that do not compile."""

from __future__ import annotations

import re
from collections.abc import Callable
from dataclasses import dataclass
from pathlib import Path

from clang.cindex import Diagnostic, Index, TranslationUnit

from finder import Finder
from mutant import Edit, Mutant, flat

# While a source is put together, each choice stands between these, behind its number.
_OPEN, _BEHIND_NUMBER, _CLOSE = "\x01", "\x02", "\x03"
_MARKS = re.compile(f"{_OPEN}(\\d+){_BEHIND_NUMBER}|{_CLOSE}")


@dataclass(frozen=True)
class Choice:
    """Where one mutant is chosen in a switched source."""

    start: int
    end: int
    number: int


def _choose(number: int, edit: Edit, rest: str) -> str:
    changed = flat(edit.changed)
    if edit.form == "statement":
        otherwise = f" else {{{rest}}}" if rest else ""
        choice = f"if (mutant({number})) {{{changed}}}{otherwise}"
    elif edit.form == "condition":
        choice = f"(mutant({number}) ? static_cast<bool>({changed}) : static_cast<bool>({rest}))"
    else:
        choice = f"(mutant({number}) ? ({changed}) : ({rest}))"
    return f"{_OPEN}{number}{_BEHIND_NUMBER}{choice}{_CLOSE}"


def switched(text: str, mutants: dict[int, Mutant]) -> tuple[str, list[Choice]]:
    """The source with a choice for each mutant, and where the choices stand. What lies within another choice stands in
    the part that is taken without it."""
    places: dict[tuple[int, int], list[tuple[int, Edit]]] = {}
    for number, mutant in mutants.items():
        for edit in mutant.edits:
            places.setdefault((edit.start, edit.end), []).append((number, edit))
    # From the back: the last one is the next in the text, outer ones before inner ones.
    pending = sorted(places, key=lambda place: (place[0], place[1] != place[0], -place[1]), reverse=True)

    def render(start: int, end: int) -> str:
        pieces, position = [], start
        while pending and pending[-1][1] <= end and pending[-1][0] < max(end, start + 1):
            low, high = pending.pop()
            pieces.append(text[position:low])
            rest = render(low, high) if low < high else ""
            for number, edit in places[low, high]:
                choice = _choose(number, edit, rest if low < high else "")
                rest = choice if low < high else rest + choice + " "
            pieces.append(rest)
            position = high
        return "".join(pieces) + text[position:end]

    return _without_marks(render(0, len(text)))


def _without_marks(marked: str) -> tuple[str, list[Choice]]:
    pieces: list[str] = []
    choices: list[Choice] = []
    opened: list[tuple[int, int]] = []
    length = position = 0
    for mark in _MARKS.finditer(marked):
        pieces.append(marked[position : mark.start()])
        length += mark.start() - position
        position = mark.end()
        if mark.group(1):
            opened.append((length, int(mark.group(1))))
        else:
            start, number = opened.pop()
            choices.append(Choice(start, length, number))
    return "".join(pieces) + marked[position:], choices


class Switching:
    """The sources of a folder on their way to switched ones, which stand in a copy of the tree."""

    def __init__(
        self, origin: Path, tree: Path, paths: list[str], arguments: Callable[[str], list[str]], switch: Path
    ) -> None:
        self.tree = tree
        self.texts = {path: (origin / path).read_bytes().decode("latin-1") for path in paths}
        self.arguments = arguments
        self.switch = switch
        self.mutants: dict[int, Mutant] = {}
        self.dropped = 0
        self._switched: dict[str, tuple[str, list[Choice]]] = {}

    def find(self) -> None:
        """Every source is read with the headers that it includes."""
        found: dict[str, list[Mutant]] = {}
        for source in self._compiled():
            unit = self._parse(source, {}, TranslationUnit.PARSE_DETAILED_PROCESSING_RECORD, [])
            included = {str(include.include) for include in unit.get_includes()} | {str(self.tree / source)}
            for path in set(self.texts) - set(found):
                if str(self.tree / path) in included:
                    finder = Finder(unit, str(self.tree / path), path, self.texts[path])
                    found[path] = list(finder.mutants.values())
        everything = [mutant for mutants in found.values() for mutant in mutants]
        ordered = sorted(everything, key=lambda mutant: (mutant.path, mutant.edits[0].start, mutant.operator))
        self.mutants = dict(enumerate(ordered, start=1))

    def drop_what_does_not_compile(self) -> None:
        self._switched = {path: self._switch(path) for path in self.texts}
        for source in self._compiled():
            while True:
                texts = {path: text for path, (text, _) in self._switched.items()}
                unit = self._parse(source, texts, 0, ["-include", str(self.switch)])
                errors = [each for each in unit.diagnostics if each.severity >= Diagnostic.Error]
                if not errors:
                    break
                culprits = {number for error in errors for number in self._culprits(error)}
                if not culprits:
                    raise RuntimeError(f"{source} does not compile: {errors[0]}")
                self._drop(culprits)

    def write(self) -> None:
        """Leaves what is the same, so that it is not built again."""
        for path, (text, _) in self._switched.items():
            if (self.tree / path).read_bytes() != text.encode("latin-1"):
                (self.tree / path).write_bytes(text.encode("latin-1"))

    def _compiled(self) -> list[str]:
        return [path for path in self.texts if path.endswith(".cpp")]

    def _switch(self, path: str) -> tuple[str, list[Choice]]:
        here = {number: mutant for number, mutant in self.mutants.items() if mutant.path == path}
        return switched(self.texts[path], here)

    def _drop(self, numbers: set[int]) -> None:
        self.dropped += len(numbers)
        for path in {self.mutants.pop(number).path for number in numbers}:
            self._switched[path] = self._switch(path)

    def _parse(self, source: str, texts: dict[str, str], options: int, include: list[str]) -> TranslationUnit:
        unsaved = [(str(self.tree / path), text.encode("latin-1")) for path, text in {**self.texts, **texts}.items()]
        arguments = [*self.arguments(source), *include, "-ferror-limit=0", "-Werror=vla"]
        return Index.create().parse(str(self.tree / source), args=arguments, unsaved_files=unsaved, options=options)

    def _culprits(self, error: Diagnostic) -> set[int]:
        """The mutants at an error, or at what its notes name when it lies elsewhere, as in a library's template."""
        for diagnostic in [error, *error.children]:
            file = diagnostic.location.file
            path = file.name[len(str(self.tree)) + 1 :] if file else ""
            if path in self._switched:
                numbers = self._at(path, diagnostic)
                if numbers:
                    return numbers
        return set()

    def _at(self, path: str, diagnostic: Diagnostic) -> set[int]:
        """The choice that the error lies in; without one, those in what the compiler underlines, or on that line."""
        text, choices = self._switched[path]
        at = diagnostic.location.offset
        around = [choice for choice in choices if choice.start <= at < choice.end]
        if around:
            innermost = min(around, key=lambda choice: choice.end - choice.start)
            places = [(innermost.start, innermost.end)] if not self._is_otherwise(text, innermost, at) else []
            if places:
                return {innermost.number}
        ranges = [(each.start.offset, each.end.offset) for each in diagnostic.ranges]
        line = (text.rfind("\n", 0, at) + 1, text.find("\n", at))
        for low, high in [*ranges, (at, line[1]), line]:
            within = {choice.number for choice in choices if low <= choice.start and choice.end <= high}
            if within:
                return within
        return {min(around, key=lambda choice: choice.end - choice.start).number} if around else set()

    def _is_otherwise(self, text: str, choice: Choice, at: int) -> bool:
        """Whether the place lies in the part that is taken without the mutant. There the text of the source stands."""
        mutant = self.mutants[choice.number]
        head = len(f"(mutant({choice.number}) ? (") + max(len(flat(edit.changed)) for edit in mutant.edits)
        return at > choice.start + head + len("static_cast<bool>()  : (static_cast<bool>(")
