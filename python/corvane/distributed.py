"""Stacks and long lists of images on many machines, with the bytes that one process makes.

    from dask.distributed import Client
    import corvane.distributed

    night = corvane.distributed.stack("night", client=Client("scheduler:8786"), folder="/shared/m31")

Workers see the same files under the same names; samples never pass the scheduler. What a worker has finished lies in
the folder, written whole or not at all: a task that is repeated does no harm, and a run that was stopped goes on where
it was.
"""

from __future__ import annotations

import hashlib
import inspect
import json
import os
import threading
from pathlib import Path as _Path
from typing import Any, Callable, Iterable, List, Optional, Sequence, Tuple

from . import _core, operations
from ._call import Path, Progress, follow, paths
from ._files import replacing
from ._night import Stack, _engine, _rows
from .errors import ArgumentError, FileError

__all__ = ["apply", "map", "stack"]

_INPUTS = ("light", "bias", "dark", "flat", "flat-dark")
_LEAST_ROWS = 64  # of a band: each opens all lights, and reads a few rows twice
_SAMPLES_OF_TILE = 2**24  # 64 MiB of floats: little beside a worker's memory, much beside what a halo reads twice
_SAMPLE = 4  # bytes
_BLOCK = 2880  # bytes: a FITS file is made of such
_MEMORY_SHARE = 0.4  # of a worker's limit, from which on it would write to disk by itself
_here = threading.local()


def _digest(*texts: str) -> str:
    return hashlib.sha256("\0".join(texts).encode("utf-8", "surrogateescape")).hexdigest()


def _stamp(path: str) -> str:
    """The name, size and time of a file, of which a part may be chosen: file.fits[1]."""
    file = path if os.path.exists(path) else path[: path.rfind("[")] if path.endswith("]") else path
    try:
        known = os.stat(file)
    except OSError as error:
        raise FileError(f"{path}: {error.strerror}", path, "", str(error.strerror)) from None
    return f"{path}\n{known.st_size}\n{known.st_mtime_ns}"


def _write(path: Path, text: str) -> None:
    with replacing(path) as part, open(part, "w", encoding="utf-8") as file:
        file.write(text)
        file.flush()
        os.fsync(file.fileno())


# What runs in a worker


def _bound() -> None:
    """Leaves the engine its share of the worker's memory."""
    from distributed import get_worker

    try:
        limit = get_worker().memory_manager.memory_limit
    except ValueError:  # no worker
        return
    if limit:
        _core.set_memory_budget(int(_MEMORY_SHARE * limit))


def _job(path: str, digest: str, make: Callable[[str, str, int], Any], threads: int) -> Any:
    """The job of a text in a file, which this thread keeps for the next task: with masters and headers it has read."""
    _bound()
    key = (path, digest, threads)
    if getattr(_here, "key", None) != key:
        _here.key = _here.job = None
        text = _Path(path).read_text(encoding="utf-8")
        if _digest(text) != digest:
            raise FileError(f"{path}: has changed since the work began", path, "", "has changed since the work began")
        _here.job = make(text, path, threads)
        _here.key = key
    return _here.job


def _measure(light: int, options: str, digest: str, record: str, threads: int) -> None:
    _write(_Path(record), _job(options, digest, _core.StackJob, threads).measure(light))


def _combine(band: int, of: int, plan: str, digest: str, path: str, threads: int) -> None:
    _job(plan, digest, _core.StackJob.of_plan, threads).combine(band, of, path)


def _ranges(rows: Tuple[int, int], file: str, steps: Sequence[str]) -> list:
    _bound()
    return _core.Tiles(file, list(steps)).ranges(*rows)


def _head(file: str, steps: Sequence[str], levels: Any) -> Tuple[bytes, int]:
    """How the result begins, and how many planes it has."""
    tiles = _core.Tiles(file, list(steps))
    part = tiles.make(0, 1, levels, 1)
    return _core.fits_head(part, tiles.shape[1]), part.shape[0] if part.ndim == 3 else 1


def _tile(
    rows: Tuple[int, int], file: str, steps: Sequence[str], levels: Any, made: str, start: int, threads: int
) -> None:
    """Makes some rows and writes them to their places in a file."""
    _bound()
    tiles = _core.Tiles(file, list(steps))
    _, height, width = tiles.shape
    part = tiles.make(*rows, levels, threads)
    try:
        with open(made, "r+b", buffering=0) as result:
            for plane in range(part.shape[0] if part.ndim == 3 else 1):
                result.seek(start + _SAMPLE * width * (plane * height + rows[0]))
                left = memoryview(_core.fits_part(part, plane))
                while left:
                    left = left[result.write(left) :]
            os.fsync(result.fileno())
    except OSError as error:
        raise FileError(f"{made}: {error.strerror}", made, "", str(error.strerror)) from None


def _apply(file: str, steps: Tuple[str, ...], made: str, key: str, threads: int) -> None:
    _bound()
    _core.write(made, _core.apply(_core.read(file), list(steps), None, threads), 0, "counts")
    _write(_note(made), f"{key}\n{_stamp(made)}")


def _note(made: str) -> _Path:
    """The file that tells what a result was made of."""
    return _Path(made).with_name(".made") / f"{_Path(made).name}.txt"


def _is_made(made: str, key: str) -> bool:
    try:
        return _note(made).read_text(encoding="utf-8") == f"{key}\n{_stamp(made)}"
    except OSError:
        return False


# What runs where the work is begun


def _done(client: Any, stage: str, futures: Sequence[Any], told: Optional[Callable[[str, int, int], object]]) -> list:
    """What tasks give, in their order; the first that fails ends them all."""
    from distributed import as_completed

    try:
        for count, future in enumerate(as_completed(futures), 1):
            future.result()
            if told is not None:
                told(stage, count, len(futures))
        return [future.result() for future in futures]
    finally:
        client.cancel(list(futures))


def _arguments(light: Any, options: dict) -> dict:
    """The arguments of corvane.stack, with what is not given as it is there."""
    try:
        bound = inspect.signature(operations.stack).bind(light, **options)
    except TypeError as error:
        raise ArgumentError(str(error)) from None
    bound.apply_defaults()
    return dict(bound.arguments)


class _Records:
    """The files that keep what was measured of each light."""

    def __init__(self, folder: _Path, text: str, job: Any) -> None:
        options = json.loads(text)["options"]
        lights, sets, of = options.pop("lights"), options.pop("sets"), options.pop("set_of_light")
        frames = options.pop("frames")
        others = json.dumps([_core.__version__, options])
        self.paths = []
        for i, light in enumerate(lights):
            own = sets[of[i]] if sets else frames
            files = [file for kind in own.values() if isinstance(kind, list) for file in kind]
            key = _digest(others, json.dumps(own), job.way_of_reading(i), *(_stamp(file) for file in [light, *files]))
            self.paths.append(folder / f"{key[:32]}.json")

    def missing(self) -> List[int]:
        return [i for i, path in enumerate(self.paths) if not path.exists()]


def _plan(folder: _Path, text: str, client: Any, threads: int, told: Any) -> str:
    """Has the lights measured, and places them."""
    digest = _digest(text)
    options = folder / f"options-{digest[:16]}.json"
    _write(options, text)
    job = _core.StackJob(text, str(options), 0)
    job.calibrate()
    (folder / "lights").mkdir(exist_ok=True)
    records = _Records(folder / "lights", text, job)
    tasks = [
        client.submit(_measure, i, str(options), digest, str(records.paths[i]), threads, pure=False)
        for i in records.missing()
    ]
    _done(client, "Measuring lights...", tasks, told)
    for i, path in enumerate(records.paths):
        job.take(i, path.read_text(encoding="utf-8"), str(path))
    return job.plan()


def _bands(folder: _Path, text: str, rows: int, bands: Optional[int]) -> "dict[int, _Path]":
    """The files of the bands, by their numbers."""
    of = max(1, rows // _LEAST_ROWS) if bands is None else bands
    if not 1 <= of <= rows:
        raise ArgumentError(f"bands = {of}: must be 1 to {rows}", "bands", str(of), f"must be 1 to {rows}")
    place = folder / "bands" / _digest(text)[:16]
    place.mkdir(parents=True, exist_ok=True)
    return {band: place / f"{band}_of_{of}.fits" for band in range(1, of + 1)}


def stack(
    light: Any,
    *,
    client: Any,
    folder: Path,
    bands: Optional[int] = None,
    worker_threads: int = 1,
    progress: Progress = None,
    **options: Any,
) -> Stack:
    """Calibrate, align and combine the frames of a night on the workers of a cluster.

    Workers calibrate and measure each light; here the lights are matched, and reference, weights and normalisation
    settled, in ``plan.json`` of the folder; workers combine a band of rows each. The stack has the bytes of
    `corvane.stack`, for any number of bands and workers.

    Parameters
    ----------
    light : path, or several
        The frames of the night, or folders that hold them, by names that all workers know them by.
    client : distributed.Client
        Where the work is done.
    folder : path
        A folder that all workers share, for records of lights, masters, the plan and the bands. What lies there of the
        same files, options and version is taken up again.
    bands : int, optional
        Into how many bands of rows combining is divided. Without: one for 64 rows.
    worker_threads : int, default 1
        How many threads a task works with.
    progress : bool or callable, optional
        True shows a bar; else progress(stage, done, total).
    **options
        Those of `corvane.stack`, without ``both``, ``registered`` and ``threads``.

    Returns
    -------
    Stack
        What was made, and what is known of the lights.

    Raises
    ------
    ArgumentError
        An option that is unknown, or cannot be had in parts.
    FileError
        A file that cannot be read or written, here or by a worker.
    """
    home = _Path(os.path.abspath(os.fspath(folder)))
    given = _arguments(light, options)
    given["masters"] = given["masters"] or home / "masters"
    text = _engine(_core.night_options, _INPUTS, given)
    home.mkdir(parents=True, exist_ok=True)
    return follow(progress, lambda told: _stack(text, client, home, bands, worker_threads, told))


def _stack(text: str, client: Any, home: _Path, bands: Optional[int], threads: int, told: Any) -> Stack:
    planned = _plan(home, text, client, threads, told)
    plan = home / "plan.json"
    _write(plan, planned)
    job = _core.StackJob.of_plan(planned, str(plan), 0)
    files = _bands(home, planned, job.rows, bands)
    tasks = [
        client.submit(_combine, band, len(files), str(plan), _digest(planned), str(path), threads, pure=False)
        for band, path in files.items()
        if not path.exists()
    ]
    _done(client, "Combining bands...", tasks, told)
    made = job.join([str(path) for path in files.values()])
    return Stack(lights=_rows(made.pop("frames")), **made)


def map(
    files: Iterable[Path],
    steps: Sequence[str],
    *,
    client: Any,
    output: Path,
    worker_threads: int = 1,
    progress: Progress = None,
) -> "list[str]":
    """Work on many images, a task for each.

    Parameters
    ----------
    files : several paths
        The images, by names that all workers know them by.
    steps : list of str
        What to do, as `corvane.apply` takes it.
    client : distributed.Client
        Where the work is done.
    output : path
        The folder for the results, which keep their names and become FITS files. Those that lie there, made of the
        same files and steps by this version, are not made again.
    worker_threads : int, default 1
        How many threads a task works with.
    progress : bool or callable, optional
        True shows a bar; else progress(stage, done, total).

    Returns
    -------
    list of str
        The files that were written.

    Raises
    ------
    ArgumentError
        A step that is unknown, or two images of one name.
    FileError
        A file that cannot be read or written.
    """
    read, written = _core.files_of(list(steps))
    if written:
        reason = "would be written for each image"
        raise ArgumentError(f"{written[0]}: {reason}", written[0], "", reason)
    place = _Path(os.path.abspath(os.fspath(output)))
    (place / ".made").mkdir(parents=True, exist_ok=True)
    named = paths(files)
    made = [str(place / f"{_Path(file).stem}.fits") for file in named]
    for file, result in zip(named, made):
        if made.count(result) > 1 or os.path.abspath(file) == result:
            reason = "is both input and output" if made.count(result) == 1 else "is the result of several images"
            raise ArgumentError(f"{result}: {reason}", result, "", reason)

    others = [_core.__version__, *steps, *(_stamp(file) for file in read)]
    keys = [_digest(*others, _stamp(file)) for file in named]

    def work(told: Any) -> None:
        tasks = [
            client.submit(_apply, file, tuple(steps), result, key, worker_threads, pure=False)
            for file, result, key in zip(named, made, keys)
            if not _is_made(result, key)
        ]
        _done(client, "Working on images...", tasks, told)

    follow(progress, work)
    return made


def apply(
    file: Path,
    *steps: str,
    client: Any,
    output: Path,
    worker_threads: int = 1,
    progress: Progress = None,
) -> str:
    """Work on one image that is too large for one machine, in tiles of whole rows.

    A worker reads the rows of a tile and those about it that the steps look at, and writes its rows of the result. The
    file has the bytes that `corvane.apply` and `corvane.write` make.

    Parameters
    ----------
    file : path
        The image, by a name that all workers know it by.
    *steps : str
        What to do, as `corvane.apply` takes it. Steps that need the whole image, or read another one, are refused:
        ``corvane ops NAME`` tells what a step looks at.
    client : distributed.Client
        Where the work is done.
    output : path
        The FITS file to write, which appears whole or not at all.
    worker_threads : int, default 1
        How many threads a task works with.
    progress : bool or callable, optional
        True shows a bar; else progress(stage, done, total).

    Returns
    -------
    str
        The file that was written.

    Raises
    ------
    ArgumentError
        A step that is unknown, or cannot be done in tiles.
    FileError
        A file that cannot be read or written.
    """
    made = os.path.abspath(os.fspath(output))
    if not made.endswith((".fits", ".fit", ".fts")):
        raise ArgumentError(f"{made}: must be a FITS file", made, "", "must be a FITS file")
    return follow(progress, lambda told: _apply_tiles(os.fspath(file), list(steps), client, made, worker_threads, told))


def _apply_tiles(file: str, steps: List[str], client: Any, made: str, threads: int, told: Any) -> str:
    tiles = _core.Tiles(file, steps)
    planes, height, width = tiles.shape
    size = max(1, _SAMPLES_OF_TILE // (width * planes))
    rows = [(first, min(first + size, height)) for first in range(0, height, size)]
    levels = None
    if tiles.need_levels:
        tasks = [client.submit(_ranges, tile, file, steps, pure=False) for tile in rows]
        levels = _levels(_done(client, "Looking for the levels...", tasks, told))
    head, planes = client.submit(_head, file, steps, levels, pure=False).result()
    samples = _SAMPLE * width * height * planes
    with replacing(made) as part:
        with open(part, "wb") as result:
            result.write(head)
            result.truncate(len(head) + -(-samples // _BLOCK) * _BLOCK)
        tasks = [client.submit(_tile, tile, file, steps, levels, part, len(head), threads, pure=False) for tile in rows]
        _done(client, "Working on tiles...", tasks, told)
    return made


def _levels(ranges: "list[list]") -> "list[Tuple[float, float]]":
    """The levels of an image without levels of its own, given the smallest and largest samples of its tiles."""
    levels = []
    for of in zip(*ranges):
        known = [pair for pair in of if pair is not None]
        low = min((pair[0] for pair in known), default=0.0)
        high = max((pair[1] for pair in known), default=0.0)
        levels.append((low, high if high > low else low + 1.0))
    return levels
