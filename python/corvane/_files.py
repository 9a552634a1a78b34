"""Images from and to files."""

from __future__ import annotations

import os
import threading
from contextlib import contextmanager
from typing import Iterator, Literal

from . import _core
from ._call import ImageLike, Path
from ._core import Image
from .errors import FileError


@contextmanager
def replacing(path: Path) -> Iterator[str]:
    """The name of a file to write beside the path, whose place it takes: what appears there is whole."""
    folder, name = os.path.split(os.fspath(path))
    part = os.path.join(folder, f".{os.getpid()}.{threading.get_ident()}.{name}")
    try:
        try:
            yield part
            os.replace(part, path)
        finally:
            if os.path.exists(part):
                os.remove(part)
    except OSError as error:
        if error.errno is None:  # it names its file, or is no matter of files
            raise
        reason = str(error.strerror)
        raise FileError(f"{os.fspath(path)}: {reason}", os.fspath(path), "", reason) from None


def read(path: Path) -> Image:
    """Read an image: FITS, TIFF, PNG, JPEG or camera raw.

    Parameters
    ----------
    path : path
        The file; ``"file.fits[1]"`` chooses an extension.

    Returns
    -------
    Image
        Samples as 32-bit floats in physical units, with the header.

    Raises
    ------
    FileError
        There is no such file, or it is damaged or none of these.
    """
    return _core.read(os.fspath(path))


def write(
    path: Path,
    image: ImageLike,
    *,
    bits: Literal[0, 8, 16, 32, -32, -64] = 0,
    scale: Literal["counts", "none", "levels", "minmax", "unit"] = "counts",
) -> None:
    """Write an image: FITS, TIFF or PNG, by the end of the path.

    The file appears whole or not at all.

    Parameters
    ----------
    path : path
        The file to write.
    image : Image or array_like
        What to write.
    bits : {0, 8, 16, 32, -32, -64}, default 0
        Bits of a sample, negative for floats; 0: floats, in PNG 16.
    scale : {"counts", "none", "levels", "minmax", "unit"}, default "counts"
        How samples become integers: counts are refused where they do not fit, none cuts them; levels, minmax and unit
        bring black to white, the smallest to the largest, or 0 to 1, to the whole range.

    Raises
    ------
    ArgumentError
        Bits or a scale that the format lacks, or samples that would be lost.
    FileError
        A file that cannot be written.
    """
    _core.write(os.fspath(path), image if isinstance(image, Image) else Image(image), bits, scale)
