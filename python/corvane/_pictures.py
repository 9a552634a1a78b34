"""Images as people look at them."""

from __future__ import annotations

import os
from typing import Literal, Optional, Union

from . import _core
from ._call import ImageLike, Path, Progress, follow
from ._core import Image


def render(
    image: ImageLike,
    path: Optional[Path] = None,
    *,
    stretch: Optional[Literal["auto", "asinh", "linear"]] = None,
    size: int = 0,
    bits: Literal[0, 8, 16] = 0,
    quality: int = 90,
) -> Optional[bytes]:
    """Make a picture for the screen, the right way up.

    Parameters
    ----------
    image : Image or array_like
        The image, which stays as it is.
    path : path, optional
        The picture to write: .png, .jpg or .tif. Without: the bytes of a PNG are returned.
    stretch : {"auto", "asinh", "linear"}, optional
        auto shows the sky dark grey, asinh so with the colours of stars, linear by the levels of the sky. Without: the
        levels that an operation has given the image, else auto.
    size : int, default 0
        The longer side at most [pixels]; 0: as it is.
    bits : {0, 8, 16}, default 0
        Of a sample; 0: 16 in TIFF, else 8.
    quality : int, default 90
        Of a JPEG [1 to 100].

    Returns
    -------
    bytes or None
        A PNG where no path is given.

    Raises
    ------
    ArgumentError
        A stretch or a format that there is not.
    FileError
        A file that cannot be written.
    """
    shown = image if isinstance(image, Image) else Image(image)
    if path is None:
        return _core.png(shown, stretch or "", size)
    _core.render(shown, os.fspath(path), stretch or "", size, bits, quality)
    return None


def develop(
    image: ImageLike, recipe: Union[str, Path] = "galaxy", *, progress: Progress = None, threads: int = 0
) -> Image:
    """Make a picture of a stack by a recipe: sky, colours, stretch, sharpness.

    Parameters
    ----------
    image : Image or array_like
        The stack.
    recipe : str or path, default "galaxy"
        galaxy, nebula, cluster or moon, or a file with a step a line. Steps that the image does not fit are left out.
    progress : bool or callable, optional
        True shows a bar; else progress(stage, done, total).
    threads : int, default 0
        At most so many; 0: as many as there are processors.

    Returns
    -------
    Image
        The developed image, whose levels show it: `render` writes it.

    Raises
    ------
    ArgumentError
        There is no such recipe.
    FileError
        A recipe that cannot be read, with the line.
    """
    return follow(progress, lambda heard: _core.develop(image, os.fspath(recipe), heard, threads))


def _repr_png(self: Image) -> bytes:
    """How a notebook shows it."""
    return _core.png(self, "", 800)


Image._repr_png_ = _repr_png  # type: ignore[attr-defined]
