"""A night's frames, calibrated, aligned and combined."""

from __future__ import annotations

import os
from dataclasses import dataclass, field
from typing import Any, Iterable, Optional

import numpy as np

from . import _core
from ._call import Path, follow as followed, paths, table, taken


@dataclass
class Registration:
    """How the lights of a night lie on the reference, and what was seen in them.

    Attributes
    ----------
    lights : numpy.ndarray
        A row for each light, in their order: file, used, reason, dx, dy [pixels], angle [degrees], scale, matched,
        residual [pixels], stars, fwhm [pixels], background, noise [counts], flux_ratio, weight, rejected. What is not
        known is NaN.
    reference : int
        The row of the light that the others are placed on.
    notes : list of str
        What the user should know, a sentence each.
    seconds : dict
        How long each part of the work took.
    """

    lights: np.ndarray
    reference: int
    notes: "list[str]"
    seconds: "dict[str, float]"


@dataclass
class Stack(Registration):
    """A finished stack.

    Attributes
    ----------
    image : Image
        The stack with its header.
    coverage, weights, rejected, noise : Image or None
        What is known of each sample, where maps were asked for: how many lights have it, by drizzle what has fallen
        into it, how many values were dropped (below, above, both), and its standard deviation.
    stars : Image or None
        The stack of the stars beside that of what was followed.
    rejection : str or None
        Which values were dropped.
    depth : tuple of float or None
        Noise of the sky: of a light, of the best mean of all, and of the stack [counts].
    """

    image: Any = None
    coverage: Any = None
    weights: Any = None
    rejected: Any = None
    noise: Any = None
    stars: Any = None
    rejection: Optional[str] = None
    depth: "Optional[tuple[float, float, float]]" = field(default=None)


def _rows(frames: "list[dict]") -> np.ndarray:
    digits = dict.fromkeys(("matched", "stars"), 0)  # whole numbers
    return table([(name, digits.get(name, -1), [frame[name] for frame in frames]) for name in frames[0]])


def _engine(work: Any, inputs: Iterable[str], given: dict) -> Any:
    """What the engine makes, given the arguments of a function."""
    progress, threads = given.pop("progress"), given.pop("threads")
    files = {name: paths(of) for name, of in taken(inputs, given).items()}
    folders = {name: _path(given.pop(name)) for name in ("masters", "registered") if name in given}
    others = {name: given.pop(name) for name in ("both", "maps") if name in given}
    if "follow" in given:
        others["follow"] = list(given.pop("follow") or ())
    return followed(progress, lambda heard: work(files, given, **folders, **others, progress=heard, threads=threads))


def _path(path: Optional[Path]) -> str:
    return "" if path is None else os.fspath(path)


def stack(inputs: Iterable[str], given: dict) -> Stack:
    """A stack, given the arguments of its function."""
    made = _engine(_core.stack, inputs, given)
    return Stack(lights=_rows(made.pop("frames")), **made)


def register(inputs: Iterable[str], given: dict) -> Registration:
    """How lights lie, given the arguments of its function."""
    made = _engine(_core.register, inputs, given)
    return Registration(lights=_rows(made.pop("frames")), **made)
