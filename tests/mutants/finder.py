"""Finds the mutants of one source: walks what libclang makes of it, and tries every operator at every place where a
choice at run time can stand."""

from __future__ import annotations

import re
from collections.abc import Iterator
from contextlib import contextmanager

from clang.cindex import Cursor, CursorKind as Kind, StorageClass, TranslationUnit, TypeKind

import operators
from mutant import Edit, Mutant, make_mutant
from operators import Change, Source, type_key

FUNCTIONS = {
    Kind.FUNCTION_DECL, Kind.CXX_METHOD, Kind.CONSTRUCTOR, Kind.DESTRUCTOR, Kind.CONVERSION_FUNCTION,
    Kind.FUNCTION_TEMPLATE,
}  # fmt: skip
# What the compiler computes, or what only describes types.
_UNSWITCHABLE = {
    Kind.PARM_DECL, Kind.ENUM_DECL, Kind.STATIC_ASSERT, Kind.CXX_UNARY_EXPR, Kind.TYPE_ALIAS_DECL, Kind.TYPEDEF_DECL,
    Kind.TEMPLATE_TYPE_PARAMETER, Kind.TEMPLATE_NON_TYPE_PARAMETER, Kind.TYPE_REF, Kind.ANNOTATE_ATTR,
}  # fmt: skip
_SCOPES = FUNCTIONS | {
    Kind.COMPOUND_STMT, Kind.FOR_STMT, Kind.CXX_FOR_RANGE_STMT, Kind.IF_STMT, Kind.WHILE_STMT, Kind.LAMBDA_EXPR,
    Kind.CXX_CATCH_STMT,
}  # fmt: skip
_LITERALS = {
    Kind.INTEGER_LITERAL, Kind.FLOATING_LITERAL, Kind.STRING_LITERAL, Kind.CHARACTER_LITERAL,
    Kind.CXX_BOOL_LITERAL_EXPR,
}  # fmt: skip
_EXITS = {Kind.RETURN_STMT, Kind.CXX_THROW_EXPR}
_JUMPS = _EXITS | {Kind.BREAK_STMT, Kind.CONTINUE_STMT, Kind.GOTO_STMT}
_LABELS = {Kind.CASE_STMT, Kind.DEFAULT_STMT, Kind.LABEL_STMT}
_WHOLE = {Kind.DECL_STMT, Kind.NULL_STMT} | _LABELS  # neither deleted nor moved


def _is_constexpr(cursor: Cursor, source: Source) -> bool:
    declaration = source.text[cursor.extent.start.offset : cursor.location.offset]
    return re.search(r"\bconst(expr|eval|init)\b", declaration) is not None


def _descendants(cursor: Cursor) -> Iterator[Cursor]:
    for child in cursor.get_children():
        if child.kind != Kind.LAMBDA_EXPR:
            yield child
            yield from _descendants(child)


def _is_const(named: Cursor) -> bool:
    return bool(named.type.is_const_qualified() or named.type.get_pointee().is_const_qualified())


def _can_stand_for(other: Cursor, named: Cursor) -> bool:
    is_alike = type_key(other.type) == type_key(named.type)
    return other == named or (is_alike and (_is_const(named) or not _is_const(other)))


def _value(constant: Cursor) -> list[str]:
    """As it is written."""
    tokens = [token.spelling for token in constant.get_tokens()]
    return tokens[tokens.index("=") + 1 :] if "=" in tokens else tokens


class Finder:
    def __init__(self, unit: TranslationUnit, file: str, path: str, text: str) -> None:
        self.file = file
        here = [cursor for cursor in unit.cursor.get_children() if self._is_here(cursor)]
        macros = [
            (cursor.extent.start.offset, cursor.extent.end.offset)
            for cursor in here
            if cursor.kind == Kind.MACRO_INSTANTIATION
        ]
        self.source = Source(path, text, macros)
        self.mutants: dict[tuple[str, tuple[Edit, ...]], Mutant] = {}
        self.locals: list[Cursor] = []
        self.function: Cursor | None = None
        self.name = ""
        self.idle_breaks: set[int] = set()  # behind which nothing but others follows in a switch
        self.goes_on = False  # whether something follows the statement, before the function ends
        self.constants: dict[str, Cursor] = {}
        for cursor in here:
            if cursor.kind.is_declaration():
                self._visit(cursor)

    def _is_here(self, cursor: Cursor) -> bool:
        return cursor.location.file is not None and cursor.location.file.name == self.file

    def _add(self, changes: Iterator[Change]) -> None:
        for operator, edits in changes:
            if all(edit.changed != self.source.text[edit.start : edit.end] for edit in edits):
                mutant = make_mutant(self.source.path, self.source.text, self.name, operator, edits)
                self.mutants.setdefault((operator, edits), mutant)

    @contextmanager
    def _within(self, cursor: Cursor) -> Iterator[None]:
        known, outer = len(self.locals), (self.function, self.name, self.goes_on)
        if cursor.kind in FUNCTIONS or cursor.kind == Kind.LAMBDA_EXPR:
            self.function, self.goes_on = cursor, False
            owner = cursor.semantic_parent
            if cursor.kind in FUNCTIONS:
                is_member = owner.kind in (Kind.CLASS_DECL, Kind.STRUCT_DECL, Kind.CLASS_TEMPLATE)
                self.name = f"{owner.spelling}::{cursor.spelling}" if is_member else cursor.spelling
                self._add(self._macro_argument_changes(cursor))
            self.locals += [child for child in _descendants(cursor) if child.kind == Kind.PARM_DECL]
        yield
        del self.locals[known:]
        self.function, self.name, self.goes_on = outer

    def _visit(self, cursor: Cursor) -> None:
        if cursor.kind in _UNSWITCHABLE:
            return
        if cursor.kind in FUNCTIONS and not self._is_here(cursor):  # included within extern "C", for example
            return
        if cursor.kind in FUNCTIONS and (not cursor.is_definition() or _is_constexpr(cursor, self.source)):
            return
        if cursor.kind in _SCOPES:
            with self._within(cursor):
                self._visit_inside(cursor)
        else:
            self._visit_inside(cursor)

    def _visit_inside(self, cursor: Cursor) -> None:
        if cursor.kind == Kind.COMPOUND_STMT:
            self._visit_block(cursor)
            return
        if cursor.kind == Kind.SWITCH_STMT:
            self._note_idle_breaks(cursor)
        self._add(self._changes(cursor))
        for child in self._switchable_children(cursor):
            self._visit(child)
        if cursor.kind == Kind.VAR_DECL:
            self.locals.append(cursor) if self.function else self.constants.setdefault(cursor.spelling, cursor)

    def _switchable_children(self, cursor: Cursor) -> list[Cursor]:
        children = list(cursor.get_children())
        if cursor.kind == Kind.CASE_STMT:
            return children[1:]
        if cursor.kind in FUNCTIONS:
            return [child for child in children if child.extent.start.offset > cursor.location.offset]
        if cursor.kind in (Kind.VAR_DECL, Kind.FIELD_DECL):
            is_fixed = cursor.storage_class == StorageClass.STATIC or _is_constexpr(cursor, self.source)
            if is_fixed or (self.function is None and cursor.kind == Kind.VAR_DECL):
                return []
            name_end = cursor.location.offset + len(cursor.spelling)
            self.name = self.name or cursor.semantic_parent.spelling
            return [child for child in children if child.extent.end.offset >= name_end]
        return children

    def _changes(self, cursor: Cursor) -> Iterator[Change]:
        source, kind = self.source, cursor.kind
        if kind in (Kind.BINARY_OPERATOR, Kind.COMPOUND_ASSIGNMENT_OPERATOR, Kind.CALL_EXPR):
            yield from operators.binary_changes(source, cursor)
        if kind in (Kind.CALL_EXPR, Kind.INIT_LIST_EXPR):
            yield from operators.argument_changes(source, cursor)
        elif kind == Kind.UNARY_OPERATOR:
            yield from operators.unary_changes(source, cursor)
        elif kind in _LITERALS:
            yield from operators.literal_changes(source, cursor)
        elif kind in (Kind.DECL_REF_EXPR, Kind.MEMBER_REF_EXPR):
            yield from self._name_changes(cursor)
        elif kind in (Kind.IF_STMT, Kind.WHILE_STMT, Kind.CONDITIONAL_OPERATOR):
            children = list(cursor.get_children())
            conditions = [child for child in children if child.kind.is_expression()]
            if conditions and not any(child.kind.is_declaration() for child in children):
                yield from operators.negation(source, conditions[0])
        elif kind in (Kind.CASE_STMT, Kind.DEFAULT_STMT):
            yield from self._deletion(list(cursor.get_children())[-1])

    # Names: another variable of the same type, and a constant's next value.

    def _name_changes(self, cursor: Cursor) -> Iterator[Change]:
        place, named = self.source.place(cursor), cursor.referenced
        if place is None or named is None or place[0] == named.location.offset:  # in a condition that declares it
            return
        if self.source.text[place[1] - len(named.spelling) : place[1]] != named.spelling:
            return
        if self._is_number(named):
            yield "constant", (Edit(*place, self._next(named, self.source.text[place[0] : place[1]])),)
        other = self._sibling(named)
        if other:
            text = self.source.text[place[0] : place[1] - len(named.spelling)] + other
            yield "sibling", (Edit(*place, text),)

    @staticmethod
    def _is_number(named: Cursor) -> bool:
        is_namespace_scope = named.kind == Kind.VAR_DECL and named.semantic_parent.kind not in FUNCTIONS
        numbers = (TypeKind.BOOL.value, TypeKind.LONGDOUBLE.value)
        canonical = named.type.get_canonical()
        is_arithmetic = numbers[0] <= canonical.kind.value <= numbers[1]
        return is_namespace_scope and canonical.is_const_qualified() and is_arithmetic

    @staticmethod
    def _next(constant: Cursor, name: str) -> str:
        """Nobody could tell true from what is more than it."""
        is_boolean = constant.type.get_canonical().kind == TypeKind.BOOL
        return f"!{name}" if is_boolean else f"increased({name})"

    def _sibling(self, named: Cursor) -> str | None:
        """The next one declared that has the same type, or the first."""
        if named.kind not in (Kind.VAR_DECL, Kind.PARM_DECL, Kind.FIELD_DECL, Kind.ENUM_CONSTANT_DECL):
            return None
        family = [cursor for cursor in self.locals if cursor.spelling]
        if named not in family:
            owner = named.semantic_parent
            if owner is None or owner.kind in FUNCTIONS or owner.kind == Kind.TRANSLATION_UNIT:
                return None
            family = [
                child
                for child in owner.get_children()
                if child.kind == named.kind
                and child.location.file is not None
                and child.location.file.name == named.location.file.name
            ]
        family = [cursor for cursor in family if _can_stand_for(cursor, named)]
        if self._is_number(named):
            family = [cursor for cursor in family if cursor == named or _value(cursor) != _value(named)]
        names = [cursor.spelling for cursor in family]
        if named.spelling not in names or len(names) < 2:
            return None
        return names[(names.index(named.spelling) + 1) % len(names)]

    def _macro_argument_changes(self, function: Cursor) -> Iterator[Change]:
        """libclang does not tell where the expressions in a macro's arguments stand: the names of constants do."""
        for low, high in self.source.macros:
            if not function.extent.start.offset <= low < function.extent.end.offset:
                continue
            for match in re.finditer(r"(?<=[(,\s])[A-Za-z_]\w*", self.source.text[low:high]):
                constant = self.constants.get(match.group())
                if constant is not None and self._is_number(constant):
                    place = low + match.start(), low + match.end()
                    yield "constant", (Edit(*place, self._next(constant, match.group())),)
                    other = self._sibling(constant)
                    if other:
                        yield "sibling", (Edit(*place, other),)

    # Statements: deleted, in another order, or behind a return.

    def _note_idle_breaks(self, switch: Cursor) -> None:
        body = list(switch.get_children())[-1]
        for statement in reversed(list(body.get_children())):
            while statement.kind in _LABELS:
                statement = list(statement.get_children())[-1]
            if statement.kind != Kind.BREAK_STMT:
                break
            self.idle_breaks.add(statement.extent.start.offset)

    def _visit_block(self, block: Cursor) -> None:
        statements = list(block.get_children())
        outer = self.goes_on
        is_body = self.function is not None and block == list(self.function.get_children())[-1]
        for index, statement in enumerate(statements):
            self.goes_on = outer or index + 1 < len(statements)
            self._add(self._deletion(statement))
            if is_body and self.function.kind != Kind.LAMBDA_EXPR:
                self._add(self._early_return(statement, is_last=index + 1 == len(statements)))
            if index + 1 < len(statements):
                self._add(self._other_order(statement, statements[index + 1]))
            self._visit(statement)

    def _statement_place(self, statement: Cursor) -> tuple[int, int] | None:
        start, end = statement.extent.start.offset, statement.extent.end.offset
        semicolon = re.compile(r"\s*;").match(self.source.text, end)
        end = semicolon.end() if semicolon else end
        if start >= end or self.source.text[end - 1] not in ";}":
            return None
        return None if any(low < start < high for low, high in self.source.macros) else (start, end)

    def _returns_nothing(self) -> bool:
        assert self.function is not None
        return self.function.kind in (Kind.CONSTRUCTOR, Kind.DESTRUCTOR) or (
            self.function.result_type.kind == TypeKind.VOID
        )

    def _deletion(self, statement: Cursor) -> Iterator[Change]:
        """Not where a function that returns something would end without a return: that has no meaning to test."""
        place = self._statement_place(statement)
        if place is None or statement.kind in _WHOLE or self.function is None or place[0] in self.idle_breaks:
            return
        ends = statement.kind in _EXITS or any(child.kind in _EXITS for child in _descendants(statement))
        if not ends or self.goes_on or self._returns_nothing():
            yield "deletion", (Edit(*place, "", "statement"),)

    def _early_return(self, statement: Cursor, is_last: bool) -> Iterator[Change]:
        place = self._statement_place(statement)
        if place is None or self.function is None:
            return
        values = {TypeKind.BOOL: ["{}", "true"]}.get(self.function.result_type.kind, ["{}"])
        if self._returns_nothing():
            values = [] if is_last else [""]
        elif self.function.result_type.kind == TypeKind.LVALUEREFERENCE:
            values = []
        for value in values:
            if statement.kind == Kind.RETURN_STMT and self._is_same_value(statement, value):
                continue
            yield "return", (Edit(place[0], place[0], f"return {value};".replace(" ;", ";"), "statement"),)

    def _is_same_value(self, statement: Cursor, value: str) -> bool:
        text = self.source.text[statement.extent.start.offset : statement.extent.end.offset]
        returned = text[len("return") :].strip()
        names = [child.referenced for child in _descendants(statement) if child.kind == Kind.DECL_REF_EXPR]
        named_value = _value(names[0]) if len(names) == 1 and names[0] else []
        is_first = bool(names) and names[-1].kind == Kind.ENUM_CONSTANT_DECL and names[-1].enum_value == 0
        is_zero = returned in ("0", "false", "nullptr", "{}", '""', "std::nullopt") or named_value == ["0"] or is_first
        return is_zero if value == "{}" else returned == value

    def _other_order(self, first: Cursor, second: Cursor) -> Iterator[Change]:
        """Only of statements that have a variable, or the log, in common: nobody could see the order of others."""
        places = self._statement_place(first), self._statement_place(second)
        if places[0] is None or places[1] is None or {first.kind, second.kind} & (_WHOLE | _JUMPS):
            return
        if self._share_something(first, second):
            low, high = places[0]
            texts = self.source.text[low:high], self.source.text[places[1][0] : places[1][1]]
            if texts[0] != texts[1]:
                yield "order", (
                    Edit(low, high, "", "statement"),
                    Edit(*places[1], f"{texts[1]} {texts[0]}", "statement"),
                )

    def _share_something(self, first: Cursor, second: Cursor) -> bool:
        used = [self._used(first), self._used(second)]
        return any(
            one == other or one.startswith(f"{other}.") or other.startswith(f"{one}.")
            for one in used[0]
            for other in used[1]
        )

    def _used(self, cursor: Cursor) -> set[str]:
        """The variables that a statement names, with the members that it names of them."""
        names: set[str] = set()
        start, end = cursor.extent.start.offset, cursor.extent.end.offset
        macros = [self.source.text[low:high] for low, high in self.source.macros if start <= low < end]
        if any("(" in macro for macro in macros):
            names.add("what macros with arguments write")
        pending = [cursor]
        while pending:
            current = pending.pop()
            place = self.source.place(current)
            named = current.referenced if current.kind in (Kind.DECL_REF_EXPR, Kind.MEMBER_REF_EXPR) else None
            is_variable = named is not None and named.kind in (Kind.VAR_DECL, Kind.PARM_DECL, Kind.FIELD_DECL)
            if is_variable and place is not None:
                if not _is_const(named):
                    names.add(self.source.text[place[0] : place[1]].replace("->", "."))
            else:
                pending += current.get_children()
        return names
