"""Exact and fast image processing for astronomical frames.

    import corvane

    light = corvane.read("light.fits")
    sharp = corvane.unsharp(corvane.median(light))
    corvane.write("sharp.fits", sharp)

    night = corvane.stack("2024-03-01", progress=True)
    stars = corvane.find_stars(night.image)

Every operation of the ``corvane`` command is a function of the same name; images go in as `Image` or as arrays, and new
ones come out. What goes in stays as it is.
"""

from __future__ import annotations

from . import _core, _report, operations as _operations
from ._call import ImageLike, Progress, follow as _follow
from ._core import Header, Image, __version__, memory_budget, set_memory_budget, set_threads, threads
from ._files import read, write
from ._night import Registration, Stack
from ._pictures import develop, render
from .errors import ArgumentError, Error, FileError
from .operations import *  # noqa: F403

__all__ = [
    "ArgumentError",
    "Error",
    "FileError",
    "Header",
    "Image",
    "Registration",
    "Stack",
    "apply",
    "develop",
    "memory_budget",
    "read",
    "render",
    "set_memory_budget",
    "set_threads",
    "threads",
    "write",
]
__all__ += _operations.__all__


def __dir__() -> list[str]:
    return __all__


def apply(image: ImageLike, *steps: str, progress: Progress = None, threads: int = 0) -> Image:
    """Work on an image, step by step.

    Parameters
    ----------
    image : Image or array_like
        The image to work on.
    *steps : str
        What to do, as the command takes it: ``name[:key=value,...]``, as ``"clip:min=0,max=65535"``.
    progress : bool or callable, optional
        True shows a bar; else progress(stage, done, total).
    threads : int, default 0
        At most so many; 0: as many as there are processors.

    Returns
    -------
    Image
        The result, whose header has a HISTORY line for each step.

    Raises
    ------
    ArgumentError
        A step that is unknown, a value that is not allowed, or an image that a step cannot be done with.
    FileError
        A file that a step reads or writes and cannot.
    """
    return _follow(progress, lambda heard: _core.apply(image, list(steps), heard, threads))
