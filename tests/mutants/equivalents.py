"""The mutants that change nothing anybody could notice, each with the reason why."""

from __future__ import annotations

from pathlib import Path

from mutant import Mutant

Key = tuple[str, str, str, str, str]


def read_equivalents(file: Path) -> dict[Key, str]:
    """An entry is `@ FILE FUNCTION OPERATOR`, `- LINE BEFORE`, `+ LINE AFTER` and `= REASON`, in that order."""
    equivalents: dict[Key, str] = {}
    entry: dict[str, str] = {}
    for number, line in enumerate(file.read_text().splitlines(), start=1):
        if not line or line.startswith("#"):
            continue
        mark, text = line[0], line[1:].strip()
        if mark != "@-+="[len(entry)]:
            raise ValueError(f'{file}:{number} is "{line}"; expected a line that begins with {"@-+="[len(entry)]}')
        entry[mark] = text
        if mark == "=":
            path, function, operator = entry["@"].split()
            equivalents[path, function, operator, entry["-"], entry["+"]] = text
            entry = {}
    if entry:
        raise ValueError(f"{file} ends within an entry")
    return equivalents


def unmatched(equivalents: dict[Key, str], mutants: list[Mutant], folder: str) -> list[Key]:
    """The folder's entries that no mutant is like."""
    keys = {mutant.key for mutant in mutants}
    return [key for key in equivalents if key[0].startswith(f"{folder}/") and key not in keys]
