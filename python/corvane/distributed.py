"""Stacks and long lists of images on many machines, with the bytes that one process makes.

    from dask.distributed import Client
    import corvane.distributed

    night = corvane.distributed.stack("night", client=Client("scheduler:8786"), folder="/shared/m31")

Workers see the same files under the same names; samples never pass the scheduler. What a worker has finished lies in the
folder, written whole or not at all: a task that is repeated does no harm, and a run that was stopped goes on where it was.
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
from ._night import Stack, _engine, _rows
from .errors import ArgumentError, FileError

__all__ = ["map", "stack"]

_INPUTS = ("light", "bias", "dark", "flat", "flat-dark")
_LEAST_ROWS = 64  # of a band: each opens all lights, and reads a few rows twice
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


def _write(path: _Path, text: str) -> None:
    """Writes a file that appears whole or not at all."""
    part = path.with_name(f".{path.name}.{os.getpid()}.{threading.get_ident()}")
    try:
        try:
            with open(part, "w", encoding="utf-8") as file:
                file.write(text)
                file.flush()
                os.fsync(file.fileno())
            os.replace(part, path)
        finally:
            part.unlink(missing_ok=True)
    except OSError as error:
        raise FileError(f"{path}: {error.strerror}", str(path), "", str(error.strerror)) from None


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


def _apply(file: str, steps: Tuple[str, ...], made: str, threads: int) -> None:
    _bound()
    _core.write(made, _core.apply(_core.read(file), list(steps), None, threads), 0, "counts")


# What runs where the work is begun


def _done(client: Any, stage: str, futures: Sequence[Any], told: Optional[Callable[[str, int, int], object]]) -> None:
    """Waits for tasks; the first that fails ends them all."""
    from distributed import as_completed

    try:
        for count, future in enumerate(as_completed(futures), 1):
            future.result()
            if told is not None:
                told(stage, count, len(futures))
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
        A folder that all workers share, for records of lights, masters, the plan and the bands. What lies there of the same
        files, options and version is taken up again.
    bands : int, optional
        Into how many bands of rows combining is divided. Without: one for 64 rows.
    worker_threads : int, default 1
        How many threads a task works with.
    progress : bool or callable, optional
        True shows a bar; else progress(stage, done, total).
    **options
        Those of `corvane.stack`, without ``both``, ``registered``, ``drizzle`` and ``threads``.

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
        The folder for the results, which keep their names and become FITS files.
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
    place = _Path(os.path.abspath(os.fspath(output)))
    place.mkdir(parents=True, exist_ok=True)
    named = paths(files)
    made = [str(place / f"{_Path(file).stem}.fits") for file in named]
    for file, result in zip(named, made):
        if made.count(result) > 1 or os.path.abspath(file) == result:
            reason = "is both input and output" if made.count(result) == 1 else "is the result of several images"
            raise ArgumentError(f"{result}: {reason}", result, "", reason)

    def work(told: Any) -> None:
        tasks = [
            client.submit(_apply, file, tuple(steps), result, worker_threads, pure=False)
            for file, result in zip(named, made)
        ]
        _done(client, "Working on images...", tasks, told)

    follow(progress, work)
    return made
