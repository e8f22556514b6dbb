"""Figures that a call has found: dictionaries whose entries are attributes, too."""
from __future__ import annotations

from typing import Any, Dict


class Figures(Dict[str, Any]):
    """A dictionary whose entries can be read as attributes: ``check["numEdges"]`` is ``check.numEdges``."""

    def __getattr__(self, name: str) -> Any:
        try:
            return self[name]
        except KeyError:
            raise AttributeError(f"there is no figure '{name}'; there are: {', '.join(self)}") from None

    def __dir__(self) -> list[str]:
        return [*super().__dir__(), *self]


class Report(Figures):
    """What a call has found and done. Hand an empty one to a call as ``report=``; it is filled in afresh.

        report = zef.Report()
        mesh = zef.reconstruct(points, report=report)
        print(report.numNotFinite, "points left out")

    The entries are the members of CallReport in the library's CallReport.h, where they are explained; ``passes`` and
    ``stages`` are lists. Some calls add an entry of their own: ``choice`` (auto_reconstruct), ``finish``, ``remesh``
    and ``fills``. After an exception ``bFinished`` is False, and the figures are as far as the call came.

    A call that reports takes some percent longer.
    """


def as_figures(found: Any) -> Any:
    """The same with all dictionaries inside made Figures."""
    if isinstance(found, dict):
        return Figures((name, as_figures(value)) for name, value in found.items())
    if isinstance(found, list):
        return [as_figures(value) for value in found]
    return found
