"""The exceptions of the package. Their texts are the library's: which value is wrong, and what to do."""
from __future__ import annotations


class Error(Exception):
    """What a call of the library ended with. All other exceptions of the package derive from it."""


class BadArgument(Error, ValueError):
    """An argument has a value that cannot be used."""


class UnusablePoints(Error, ValueError):
    """The points have no spacing that could be detected, or coordinates that cannot be worked with."""


class TooManyPoints(Error, ValueError):
    """More points, or cells to be filled with points, than the library can number."""


class BadFile(Error, ValueError):
    """A file cannot be read or written: the text tells the file, the place in it, and the reason."""


class Refused(Error, RuntimeError):
    """A call was refused where no argument would help."""


class Bug(Error, RuntimeError):
    """A fault of the library. It stays usable."""


class OutOfMemory(Error, MemoryError):
    """The system gave no memory. The next call works; a mesh that was being changed in place is lost."""


class OverMemoryLimit(Error, MemoryError):
    """By forecast a call would have taken more memory than its memoryLimit.

    Attributes:
        forecast: bytes that the call would take.
        fittingSpacing: a larger spacing that the limit allows, in units of the points; 0.0 if none does.
    """

    def __init__(self, text: str, forecast: int = 0, fittingSpacing: float = 0.0) -> None:
        super().__init__(text, forecast, fittingSpacing)
        self.forecast = forecast
        self.fittingSpacing = fittingSpacing

    def __str__(self) -> str:
        return str(self.args[0])
