"""The operators that need nothing but an expression: each turns one cursor of libclang into changes of its text."""

from __future__ import annotations

import re
from collections.abc import Iterator
from typing import Any

from clang.cindex import Cursor, CursorKind, TypeKind

from mutant import Edit, flat

Change = tuple[str, tuple[Edit, ...]]  # the operator's name, and the edits that belong together

COMPARISONS = {
    "==": [("comparison", "!=")],
    "!=": [("comparison", "==")],
    "<": [("comparison", ">="), ("boundary", "<=")],
    "<=": [("comparison", ">"), ("boundary", "<")],
    ">": [("comparison", "<="), ("boundary", ">=")],
    ">=": [("comparison", "<"), ("boundary", ">")],
}
_ARITHMETIC = {"+": "-", "-": "+", "*": "/", "/": "*", "%": "*", "<<": ">>", ">>": "<<", "&": "|", "|": "&", "^": "|"}
_ARITHMETIC.update({f"{old}=": f"{new}=" for old, new in list(_ARITHMETIC.items())})
_STEPS = {"++": "--", "--": "++"}
_OVERLOADED = re.compile(r"operator(==|!=|<=?|>=?|[-+]=?)$")
_ESCAPES = re.compile(r'\w*"(?:\\(?:x[0-9A-Fa-f]+|[0-7]{1,3}|.))*')


class Source:
    """A source as libclang reads it: where expressions stand, and what their text is."""

    def __init__(self, path: str, text: str, macros: list[tuple[int, int]]) -> None:
        self.path = path
        self.text = text
        self.macros = macros

    def place(self, cursor: Cursor) -> tuple[int, int] | None:
        """From where to where an expression stands, unless a macro makes it or a part of its ends."""
        start, end = cursor.extent.start.offset, cursor.extent.end.offset
        if start >= end or any(low <= start < high or low < end < high for low, high in self.macros):
            # An expression that is nothing but a macro's name, as EINTR, is as good as a name.
            return (start, end) if (start, end) in self.macros and self.text[start:end].isidentifier() else None
        return start, end

    def between(self, left: Cursor, right: Cursor) -> tuple[int, int]:
        """Where the operator stands between its two operands."""
        start, end = left.extent.end.offset, right.extent.start.offset
        match = re.search(r"[-+*/%<>=!&|^]+", self.text[start:end])
        return (start + match.start(), start + match.end()) if match else (start, start)


def plain(cursor: Cursor) -> Cursor:
    """The expression below what libclang does not show, as conversions."""
    while cursor.kind in (CursorKind.UNEXPOSED_EXPR, CursorKind.PAREN_EXPR):
        children = list(cursor.get_children())
        if len(children) != 1:
            break
        cursor = children[0]
    return cursor


def type_key(kind: Any) -> str:
    """The type without const and reference: what may stand for each other is alike in it."""
    canonical = kind.get_canonical()
    if canonical.kind in (TypeKind.LVALUEREFERENCE, TypeKind.RVALUEREFERENCE):
        canonical = canonical.get_pointee()
    return re.sub(r"^const ", "", canonical.spelling)


def binary_changes(source: Source, cursor: Cursor) -> Iterator[Change]:
    operands = list(cursor.get_children())
    is_overloaded = cursor.kind == CursorKind.CALL_EXPR
    if is_overloaded:
        operands = list(cursor.get_arguments())
        if not _OVERLOADED.match(cursor.spelling) or "string" in cursor.type.spelling:
            return
    place = source.place(cursor)
    if place is None or len(operands) != 2:
        return
    low, high = source.between(*operands)
    operator = source.text[low:high]
    left, right = source.text[place[0] : low], source.text[high : place[1]]
    for name, new in COMPARISONS.get(operator, []):
        yield name, (Edit(*place, flat(left + new + right)),)
    if operator in _ARITHMETIC:
        yield "arithmetic", (Edit(*place, flat(left + _ARITHMETIC[operator] + right)),)
    if operator in ("&&", "||"):
        yield "logic", (Edit(*place, flat(left + ("||" if operator == "&&" else "&&") + right)),)
        yield "logic", (Edit(*place, flat(left), "condition"),)
        yield "logic", (Edit(*place, flat(right), "condition"),)


def unary_changes(source: Source, cursor: Cursor) -> Iterator[Change]:
    place = source.place(cursor)
    if place is None:
        return
    text = source.text[place[0] : place[1]]
    if text[:2] in _STEPS:
        yield "arithmetic", (Edit(*place, _STEPS[text[:2]] + text[2:]),)
    elif text[-2:] in _STEPS:
        yield "arithmetic", (Edit(*place, text[:-2] + _STEPS[text[-2:]]),)
    elif text[0] == "!":
        yield "negation", (Edit(*place, flat(text[1:]), "condition"),)
    elif text[0] in "-~":
        yield "arithmetic", (Edit(*place, flat(text[1:])),)


def negation(source: Source, condition: Cursor) -> Iterator[Change]:
    """What is a comparison or a negation already changes as that."""
    place = source.place(condition)
    inner = plain(condition)
    if place is None or inner.kind == CursorKind.UNARY_OPERATOR and source.text[inner.extent.start.offset] == "!":
        return
    operands = list(inner.get_arguments() if inner.kind == CursorKind.CALL_EXPR else inner.get_children())
    if len(operands) == 2:
        low, high = source.between(*operands)
        if source.text[low:high] in COMPARISONS:
            return
    yield "negation", (Edit(*place, f"!({flat(source.text[place[0] : place[1]])})", "condition"),)


def _next_number(text: str) -> str | None:
    match = re.fullmatch(r"(0[xX][0-9A-Fa-f']+|[0-9']+)(\D*)", text)
    if match:
        digits = match.group(1).replace("'", "")
        number = int(digits, 16 if digits[:2].lower() == "0x" else 10) + 1
        return (hex(number) if digits[:2].lower() == "0x" else str(number)) + match.group(2)
    return f"{text} + 1" if re.fullmatch(r"[0-9.]+[fF]?", text) else None


def _next_string(text: str) -> str | None:
    """Another string of the same length, hence of the same type."""
    match = _ESCAPES.match(text)
    if not match or text[: text.find('"')].endswith("R"):
        return None
    at = match.end()
    if text[at] != '"':
        return text[:at] + ("Y" if text[at] == "X" else "X") + text[at + 1 :]
    if at > text.find('"') + 1:
        return None if text[at - 2 : at] not in ("\\n", "\\t") else text[: at - 1] + "r" + text[at:]
    return text[:at] + "X" + text[at:]


def literal_changes(source: Source, cursor: Cursor) -> Iterator[Change]:
    place = source.place(cursor)
    if place is None:
        return
    text = source.text[place[0] : place[1]]
    name, new = "constant", None
    if cursor.kind == CursorKind.STRING_LITERAL:
        name, new = "string", _next_string(text)
    elif text in ("true", "false"):
        new = "false" if text == "true" else "true"
    elif cursor.kind == CursorKind.CHARACTER_LITERAL:
        new = f"static_cast<char>({text} + 1)"
    else:
        new = _next_number(text)
    if new is not None:
        yield name, (Edit(*place, new),)


def argument_changes(source: Source, cursor: Cursor) -> Iterator[Change]:
    """Two neighbouring arguments, or elements of a list in braces, of one type, where their order may matter."""
    is_list = cursor.kind == CursorKind.INIT_LIST_EXPR
    arguments = list(cursor.get_children() if is_list else cursor.get_arguments())
    if cursor.spelling.startswith("operator") or cursor.spelling in ("min", "max"):
        return
    for left, right in zip(arguments, arguments[1:]):
        places = source.place(left), source.place(right)
        if places[0] is None or places[1] is None or type_key(left.type) != type_key(right.type):
            continue
        texts = [flat(source.text[low:high]) for low, high in places if low < high]
        # A list in braces is no expression that could be chosen.
        is_choice = not any(text.startswith("{") for text in texts)
        if len(texts) == 2 and texts[0] != texts[1] and places[0][1] <= places[1][0] and is_choice:
            yield "arguments", (Edit(*places[0], texts[1]), Edit(*places[1], texts[0]))
