"""Checked access to decoded JSON. Callers take each value by name and type. A value that no
caller took is an error, and every error names its place."""

from __future__ import annotations

from typing import Any, List, NoReturn, Sequence

from . import LabError

_REQUIRED = object()


def fail(where: str, why: str) -> NoReturn:
    """Raises LabError for the place `where`."""
    raise LabError(f"{where}: {why}")


class Fields:
    """The members of one JSON object at the place `where`. A member without a default
    is required; `end` rejects the members that nobody asked for."""

    def __init__(self, data: Any, where: str):
        if not isinstance(data, dict):
            fail(where, "an object is expected")
        self.where = where
        self._data = data
        self._left = set(data)

    def at(self, name: str) -> str:
        """The place of a member, for messages."""
        return f"{self.where}: {name}"

    def names(self) -> List[str]:
        """All members, in their order."""
        return list(self._data)

    def text(self, name: str, default: Any = _REQUIRED) -> str:
        """A member that is text."""
        value = self._take(name, default)
        if not isinstance(value, str) or any(ord(sign) < 0x20 for sign in value):
            fail(self.at(name), "a line of text is expected")
        return value

    def choice(self, name: str, known: Sequence[str], default: Any = _REQUIRED) -> str:
        """A member that is one of `known`, or its default."""
        value = self.text(name, default)
        if value not in known and value != default:
            fail(self.at(name), f"{value} is none of {', '.join(known)}")
        return value

    def flag(self, name: str, default: bool) -> bool:
        """A member that is true or false."""
        value = self._take(name, default)
        if not isinstance(value, bool):
            fail(self.at(name), "true or false is expected")
        return value

    def number(self, name: str, default: float, least: float, most: float) -> float:
        """A member that is a number from `least` to `most`, whole if its default is."""
        value = self._take(name, default)
        kinds = (int,) if isinstance(default, int) else (int, float)
        if isinstance(value, bool) or not isinstance(value, kinds):
            fail(self.at(name), "a number is expected")
        if not least <= value <= most:
            fail(self.at(name), f"{value} is not within {least} and {most}")
        return value

    def texts(self, name: str) -> List[str]:
        """A member that is one text or an array of them."""
        value = self._take(name, _REQUIRED)
        values = [value] if isinstance(value, str) else value
        if not isinstance(values, list) or not all(isinstance(v, str) for v in values):
            fail(self.at(name), "a text or an array of texts is expected")
        return values

    def fields(self, name: str, default: Any = _REQUIRED) -> "Fields":
        """A member that is an object."""
        return Fields(self._take(name, default), self.at(name))

    def list(self, name: str, default: Any = _REQUIRED) -> "List[Fields]":
        """A member that is an array of objects."""
        value = self._take(name, default)
        if not isinstance(value, list):
            fail(self.at(name), "an array is expected")
        return [Fields(v, f"{self.at(name)}[{i}]") for i, v in enumerate(value)]

    def end(self) -> None:
        """Rejects members that nobody took."""
        if self._left:
            fail(self.where, f"unknown: {', '.join(sorted(self._left))}")

    def _take(self, name: str, default: Any) -> Any:
        self._left.discard(name)
        value = self._data.get(name, default)
        if value is _REQUIRED:
            fail(self.where, f"{name} is missing")
        return value
