"""How the functions of this package call the engine."""

from __future__ import annotations

import os
import sys
from collections import namedtuple
from typing import Any, Callable, Iterable, Optional, Union

import numpy as np
import numpy.typing as npt

from . import _core

#: An image, or an array of (rows, columns) or (planes, rows, columns).
ImageLike = Union[_core.Image, npt.ArrayLike]
#: Called as progress(stage, done, total); True shows a bar.
Progress = Union[None, bool, Callable[[str, int, int], object]]
Path = Union[str, "os.PathLike[str]"]


class _Line:
    """Tells on one line of standard error how far a stage is."""

    def __call__(self, stage: str, done: int, total: int) -> None:
        percent = f"{100 * done // total:3d} %" if total > 0 else ""
        sys.stderr.write(f"\r\x1b[K{stage} {percent}")

    def close(self) -> None:
        sys.stderr.write("\r\x1b[K")


class _Bar:
    """A bar of tqdm for each stage."""

    def __init__(self, tqdm: Any) -> None:
        self._tqdm = tqdm
        self._stage = ""
        self._bar: Any = None

    def __call__(self, stage: str, done: int, total: int) -> None:
        if stage != self._stage or self._bar is None:
            self.close()
            self._stage = stage
            self._bar = self._tqdm(total=total if total > 0 else None, desc=stage, leave=False)
        self._bar.update(done - self._bar.n)

    def close(self) -> None:
        if self._bar is not None:
            self._bar.close()


def _shown() -> Any:
    try:
        from tqdm.auto import tqdm
    except ImportError:
        return _Line()
    return _Bar(tqdm)


def follow(progress: Progress, work: Callable[[Optional[Callable[[str, int, int], object]]], Any]) -> Any:
    """What work(listener) makes, shown while it goes on where progress is True."""
    if progress is None or progress is False:
        return work(None)
    if progress is not True:
        return work(progress)
    shown = _shown()
    try:
        return work(shown)
    finally:
        shown.close()


def _array(cells: list, digits: int) -> np.ndarray:
    known = [cell for cell in cells if cell is not None]
    if any(isinstance(cell, str) for cell in known):
        return np.array(["" if cell is None else cell for cell in cells], dtype=str)
    if any(isinstance(cell, list) for cell in known):
        return np.array([",".join(cell or ()) for cell in cells], dtype=str)
    if known and all(isinstance(cell, bool) for cell in cells):
        return np.array(cells, dtype=bool)
    if known and digits == 0 and len(known) == len(cells):
        return np.array(cells, dtype=np.int64)
    return np.array([np.nan if cell is None else cell for cell in cells], dtype=float)


def table(columns: list) -> np.ndarray:
    """A structured array of (name, digits, cells) of each column."""
    arrays = [(name, _array(cells, digits)) for name, digits, cells in columns]
    rows = np.empty(len(arrays[0][1]), dtype=[(name, array.dtype) for name, array in arrays])
    for name, array in arrays:
        rows[name] = array
    return rows


def numbers(columns: list) -> dict:
    """The one row of (name, digits, cells) of each column."""
    return {name: cells[0] for name, _, cells in columns}


def step(operation: str, given: dict) -> Any:
    """The image that a step makes, given the arguments of its function."""
    progress, threads = given.pop("progress"), given.pop("threads")
    images = {"image": given.pop("image")}
    if progress is None:
        return _core.run(operation, images, given, None, threads)
    return follow(progress, lambda listener: _core.run(operation, images, given, listener, threads))


_READERS: dict = {"image": lambda image: image, "table": table, "numbers": numbers}


def taken(names: Iterable[str], given: dict) -> dict:
    """The inputs of those names, taken out of the arguments of a function."""
    inputs = {name: given.pop(name.replace("-", "_")) for name in names}
    return {name: value for name, value in inputs.items() if value is not None}


def several(operation: str, inputs: Iterable[str], kinds: dict, given: dict) -> Any:
    """What an operation on several images makes: the first output, or all of them by name."""
    progress, threads, full = given.pop("progress"), given.pop("threads"), given.pop("full", False)
    images = taken(inputs, given)
    made = follow(progress, lambda listener: _core.run(operation, images, given, listener, threads))
    outputs = {name: _READERS[kinds[name]](output) for name, output in made.items()}
    if not full:
        return next(iter(outputs.values()))
    return namedtuple("Outputs", outputs)(**outputs)  # type: ignore[misc]


def paths(files: Union[None, Path, Iterable[Path]]) -> list:
    """File names as texts, of one or several."""
    if files is None:
        return []
    if isinstance(files, (str, os.PathLike)):
        files = [files]
    return [os.fspath(file) for file in files]
