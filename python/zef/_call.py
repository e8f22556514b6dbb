"""How a function of the package becomes a call of the library: options, progress, report, memory limit."""
from __future__ import annotations

import contextlib
import functools
import inspect
import operator
import sys
import textwrap
from collections.abc import Iterator
from typing import Any, Callable, Optional, Tuple, TypeVar, Union

from . import _zef
from ._errors import BadArgument
from ._figures import Report, as_figures

ProgressFunction = Callable[[str, float], object]
Progress = Union[ProgressFunction, bool, None]
F = TypeVar("F", bound=Callable[..., Any])


class _Bar:
    """Shows progress on the error stream: by tqdm if it is there, else as plain text."""

    def __init__(self) -> None:
        self._bar: Any = None
        self._percent = -1
        try:
            from tqdm import tqdm  # type: ignore[import]
        except ImportError:
            return
        self._bar = tqdm(total=100, unit="%", leave=False)

    def __call__(self, name: str, fraction: float) -> None:
        percent = int(100 * fraction)
        if percent == self._percent:
            return
        self._percent = percent
        if self._bar is not None:
            self._bar.set_description(name, refresh=False)
            self._bar.update(percent - self._bar.n)
        else:
            sys.stderr.write(f"\r{name} {percent:3d} %")
            sys.stderr.flush()

    def close(self) -> None:
        if self._bar is not None:
            self._bar.close()
        elif self._percent >= 0:
            sys.stderr.write("\n")


@contextlib.contextmanager
def running(progress: Progress, report: Optional[Report] = None, memoryLimit: Optional[int] = None) -> Iterator[Any]:
    """What the functions of _zef take as their last argument; fills in the report however the call ends."""
    if report is not None and not isinstance(report, Report):
        raise TypeError(f"report must be a zef.Report, not {report!r}")
    bar = _Bar() if progress is True else None
    told = bar if bar is not None else progress or None
    if told is not None and not callable(told):
        raise TypeError(f"progress must be True or a callable of a name and a fraction, not {progress!r}")
    if memoryLimit is not None and memoryLimit < 0:
        raise BadArgument(f"memoryLimit is {memoryLimit}; give bytes, or None for no limit")
    call = _zef.Call(told, report is not None, None if memoryLimit is None else int(memoryLimit))
    try:
        yield call
    finally:
        if bar is not None:
            bar.close()
        if report is not None:
            report.clear()
            report.update(as_figures(call.report))


def as_number(value: Any, name: str) -> float:
    """A float, for an argument of that name."""
    if isinstance(value, (str, bytes)) or not hasattr(value, "__float__"):
        raise TypeError(f"{name} must be a number, not {value!r}")
    return float(value)


def as_whole_number(value: Any, name: str) -> int:
    """An int of 32 bits, for an argument of that name."""
    if not hasattr(value, "__index__"):
        raise TypeError(f"{name} must be a whole number, not {value!r}")
    return max(-(2**31), min(operator.index(value), 2**31 - 1))


def add_to(report: Optional[Report], name: str, found: Any) -> None:
    """An entry that only one kind of call has."""
    if report is not None:
        report[name] = as_figures(found)


def with_options(struct: str, without: Tuple[str, ...] = ()) -> Callable[[F], F]:
    """Puts the options of that struct in place of ``**options``: into the signature with the library's defaults, and
    into the documentation, so that help() and inspect tell them."""
    table = [entry for entry in _zef.options[struct] if entry[0] not in without]

    def decorate(function: F) -> F:
        signature = inspect.signature(function)
        parameters = [p for p in signature.parameters.values() if p.kind is not p.VAR_KEYWORD]
        first_keyword = next((i for i, p in enumerate(parameters) if p.kind is p.KEYWORD_ONLY), len(parameters))
        parameters[first_keyword:first_keyword] = [
            inspect.Parameter(name, inspect.Parameter.KEYWORD_ONLY, default=default, annotation=type(default).__name__)
            for name, default, _ in table
        ]
        whole = signature.replace(parameters=parameters)

        @functools.wraps(function)
        def call(*args: Any, **kwargs: Any) -> Any:
            try:
                whole.bind(*args, **kwargs)
            except TypeError as error:
                raise TypeError(f"{function.__name__}(): {error}") from None
            return function(*args, **kwargs)

        call.__signature__ = whole  # type: ignore[attr-defined]
        listed = "\n".join(f"    {name}: {what} (default {default!r})" for name, default, what in table)
        call.__doc__ = f"{textwrap.dedent('    ' + (function.__doc__ or '')).rstrip()}\n\nOptions:\n{listed}\n"
        return call  # type: ignore[return-value]

    return decorate
