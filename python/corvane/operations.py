"""The operations of the catalogue as functions. Made by make_operations.py: do not edit."""

from __future__ import annotations

from typing import Any, Iterable, Literal, Optional, Sequence, Tuple, Union

import numpy as np

from ._call import ImageLike, Path, Progress, several, step
from ._core import Image
from ._night import Registration, Stack
from ._night import register as _register
from ._night import stack as _stack

#: (left, top, right, bottom) [pixels], right and bottom exclusive.
Rectangle = Tuple[int, int, int, int]
Files = Union[Path, Iterable[Path]]

__all__ = [
    "invert",
    "auto_levels",
    "levels",
    "clip",
    "autostretch",
    "mtf",
    "asinh",
    "log",
    "gamma",
    "ghs",
    "equalise",
    "brightness",
    "balance",
    "curve",
    "reduce_tone",
    "false_color",
    "add",
    "subtract",
    "multiply",
    "divide",
    "dark",
    "flat",
    "overscan",
    "vignette",
    "to_grey",
    "to_color",
    "neutral_sky",
    "white_balance",
    "scnr",
    "saturate",
    "lab",
    "debayer",
    "split",
    "mean",
    "mean_keep_edges",
    "median",
    "rank",
    "minimum",
    "maximum",
    "gaussian",
    "star_sharpen",
    "sharpen",
    "sharpen_edges",
    "laplacian",
    "unsharp",
    "lucy",
    "maxent",
    "wiener",
    "ddp",
    "background",
    "smooth_background",
    "posterize",
    "hot_pixels",
    "cosmic_rays",
    "fill",
    "contour",
    "star_mask",
    "draw_line",
    "draw_text",
    "flip",
    "rotate",
    "rotate90",
    "rotate180",
    "resize",
    "bin",
    "canvas",
    "crop",
    "scroll",
    "expand",
    "composite",
    "mosaic",
    "match",
    "rgb",
    "cmy",
    "lrgb",
    "palette",
    "continuum",
    "stats",
    "stars",
    "find_stars",
    "register",
    "stack",
]


def invert(
    image: ImageLike,
    *,
    rect: Optional[Rectangle] = None,
    mask: Optional[Union[ImageLike, Path]] = None,
    strength: float = 1.0,
    progress: Progress = None,
    threads: int = 0,
) -> Image:
    """Turn the image into its negative.

    Parameters
    ----------
    image : Image or array_like
        The image to work on.
    rect : (left, top, right, bottom), optional
        Work inside this rectangle only; right and bottom are the first column and row outside [pixels].
        Without: the whole image.
    mask : Image, array_like or path, optional
        An image of one plane that is 0 where samples stay and 1 where they change. Without: they change
        everywhere.
    strength : float, default 1.0
        How much of the change is taken [0 to 1].
    progress : bool or callable, optional
        True shows a bar; else progress(stage, done, total).
    threads : int, default 0
        At most so many; 0: as many as there are processors.

    Returns
    -------
    image : Image
        The result.

    Raises
    ------
    ArgumentError
        A value or an image that it cannot be done with.
    FileError
        A file that cannot be read or written.

    Notes
    -----
    A sample moves as far below white as it was above black: each plane is turned over within its display
    levels, which stay. Samples outside of the levels stay outside.

    A sample depends on: each sample by itself; the display levels.
    """
    return step('invert', locals())


def auto_levels(
    image: ImageLike,
    *,
    low: float = 0.2,
    high: float = 1.0,
    per_plane: bool = False,
    rect: Optional[Rectangle] = None,
    progress: Progress = None,
    threads: int = 0,
) -> Image:
    """Choose levels that show the sky dark and objects bright.

    Parameters
    ----------
    image : Image or array_like
        The image to work on.
    low : float, default 0.2
        How far black lies below the mean [-100 to 100, standard deviations].
    high : float, default 1.0
        How far white lies above the mean [-100 to 100, standard deviations].
    per_plane : bool, default False
        Give each plane of a colour image levels of its own.
    rect : (left, top, right, bottom), optional
        Work inside this rectangle only; right and bottom are the first column and row outside [pixels].
        Without: the whole image.
    progress : bool or callable, optional
        True shows a bar; else progress(stage, done, total).
    threads : int, default 0
        At most so many; 0: as many as there are processors.

    Returns
    -------
    image : Image
        The result.

    Raises
    ------
    ArgumentError
        A value or an image that it cannot be done with.
    FileError
        A file that cannot be read or written.

    Notes
    -----
    Black and white are put around the mean of the samples, as many standard deviations away as given, but
    not beyond the data. Mean and deviation of a monochrome image leave out stars. No sample changes.

    A sample depends on: each sample by itself; statistics of all samples.
    """
    return step('auto-levels', locals())


def levels(
    image: ImageLike,
    *,
    min: float,
    max: float,
    plane: Optional[int] = None,
    progress: Progress = None,
    threads: int = 0,
) -> Image:
    """Set the display levels.

    Parameters
    ----------
    image : Image or array_like
        The image to work on.
    min : float
        The sample that shows black [counts].
    max : float
        The sample that shows white [counts].
    plane : int, optional
        The plane to set: 0 red or the only one, 1 green, 2 blue [0 to 2]. Without: every plane.
    progress : bool or callable, optional
        True shows a bar; else progress(stage, done, total).
    threads : int, default 0
        At most so many; 0: as many as there are processors.

    Returns
    -------
    image : Image
        The result.

    Raises
    ------
    ArgumentError
        A value or an image that it cannot be done with.
    FileError
        A file that cannot be read or written.

    Notes
    -----
    The levels say which samples show black and white. No sample changes.

    A sample depends on: each sample by itself.
    """
    return step('levels', locals())


def clip(
    image: ImageLike,
    *,
    min: Optional[float] = None,
    max: Optional[float] = None,
    mask: Optional[Union[ImageLike, Path]] = None,
    strength: float = 1.0,
    progress: Progress = None,
    threads: int = 0,
) -> Image:
    """Cut samples off at the display levels.

    Parameters
    ----------
    image : Image or array_like
        The image to work on.
    min : float, optional
        The least sample that stays [counts]. Without: the level min of each plane.
    max : float, optional
        The greatest sample that stays [counts]. Without: the level max of each plane.
    mask : Image, array_like or path, optional
        An image of one plane that is 0 where samples stay and 1 where they change. Without: they change
        everywhere.
    strength : float, default 1.0
        How much of the change is taken [0 to 1].
    progress : bool or callable, optional
        True shows a bar; else progress(stage, done, total).
    threads : int, default 0
        At most so many; 0: as many as there are processors.

    Returns
    -------
    image : Image
        The result.

    Raises
    ------
    ArgumentError
        A value or an image that it cannot be done with.
    FileError
        A file that cannot be read or written.

    Notes
    -----
    A sample below black becomes black, one above white or not a number becomes white. Levels given here are
    set first, in every plane.

    A sample depends on: each sample by itself; the display levels.
    """
    return step('clip', locals())


def autostretch(
    image: ImageLike,
    *,
    shadows: float = -2.8,
    target: float = 0.25,
    linked: bool = True,
    curve: Literal["mtf", "asinh"] = "mtf",
    mask: Optional[Union[ImageLike, Path]] = None,
    strength: float = 1.0,
    progress: Progress = None,
    threads: int = 0,
) -> Image:
    """Show the sky dark grey and all that is above it.

    Parameters
    ----------
    image : Image or array_like
        The image to work on.
    shadows : float, default -2.8
        Where black lies, from the median [-100 to 0, standard deviations].
    target : float, default 0.25
        Where the median comes to, black 0 and white 1 [0.001 to 0.999].
    linked : bool, default True
        One stretch for all planes, by the means of their statistics, so that colours stay.
    curve : {"mtf", "asinh"}, default "mtf"
        What lifts the median; asinh keeps the colours of stars.
    mask : Image, array_like or path, optional
        An image of one plane that is 0 where samples stay and 1 where they change. Without: they change
        everywhere.
    strength : float, default 1.0
        How much of the change is taken [0 to 1].
    progress : bool or callable, optional
        True shows a bar; else progress(stage, done, total).
    threads : int, default 0
        At most so many; 0: as many as there are processors.

    Returns
    -------
    image : Image
        The result.

    Raises
    ------
    ArgumentError
        A value or an image that it cannot be done with.
    FileError
        A file that cannot be read or written.

    Notes
    -----
    Black is put so far below the median, in standard deviations of the noise (1.4826 times the median
    absolute deviation), and white on the largest sample; they become the display levels. A midtone stretch
    between them, as of mtf, or asinh, brings the median to the target. A frame that is mostly bright is
    treated as its negative would be; dead pixels alone do not make one. Blanks and NaN stay and do not
    count.

    A sample depends on: each sample by itself; statistics of all samples.
    """
    return step('autostretch', locals())


def mtf(
    image: ImageLike,
    *,
    mid: float = 0.25,
    low: Optional[float] = None,
    high: Optional[float] = None,
    rect: Optional[Rectangle] = None,
    mask: Optional[Union[ImageLike, Path]] = None,
    strength: float = 1.0,
    progress: Progress = None,
    threads: int = 0,
) -> Image:
    """Bring a brightness to the middle (midtone).

    Parameters
    ----------
    image : Image or array_like
        The image to work on.
    mid : float, default 0.25
        The x that comes to 1/2 [1e-09 to 1].
    low : float, optional
        The sample where x is 0 [counts]. Without: the level min.
    high : float, optional
        The sample where x is 1 [counts]. Without: the level max.
    rect : (left, top, right, bottom), optional
        Work inside this rectangle only; right and bottom are the first column and row outside [pixels].
        Without: the whole image.
    mask : Image, array_like or path, optional
        An image of one plane that is 0 where samples stay and 1 where they change. Without: they change
        everywhere.
    strength : float, default 1.0
        How much of the change is taken [0 to 1].
    progress : bool or callable, optional
        True shows a bar; else progress(stage, done, total).
    threads : int, default 0
        At most so many; 0: as many as there are processors.

    Returns
    -------
    image : Image
        The result.

    Raises
    ------
    ArgumentError
        A value or an image that it cannot be done with.
    FileError
        A file that cannot be read or written.

    Notes
    -----
    x becomes (m - 1) x / ((2 m - 1) x - m): the midtone m comes to 1/2. x is the place of a sample between
    low and high, cut to 0..1. The result lies between the display levels, which stay, so that they show
    black and white. Blanks and NaN stay.

    A sample depends on: each sample by itself; the display levels.
    """
    return step('mtf', locals())


def asinh(
    image: ImageLike,
    *,
    k: float = 100.0,
    per_plane: bool = False,
    low: Optional[float] = None,
    high: Optional[float] = None,
    rect: Optional[Rectangle] = None,
    mask: Optional[Union[ImageLike, Path]] = None,
    strength: float = 1.0,
    progress: Progress = None,
    threads: int = 0,
) -> Image:
    """Lift faint light and keep colours.

    Parameters
    ----------
    image : Image or array_like
        The image to work on.
    k : float, default 100.0
        How far it goes [1e-06 to 1e+09].
    per_plane : bool, default False
        Stretch each plane of a colour image by itself.
    low : float, optional
        The sample where x is 0 [counts]. Without: the level min.
    high : float, optional
        The sample where x is 1 [counts]. Without: the level max.
    rect : (left, top, right, bottom), optional
        Work inside this rectangle only; right and bottom are the first column and row outside [pixels].
        Without: the whole image.
    mask : Image, array_like or path, optional
        An image of one plane that is 0 where samples stay and 1 where they change. Without: they change
        everywhere.
    strength : float, default 1.0
        How much of the change is taken [0 to 1].
    progress : bool or callable, optional
        True shows a bar; else progress(stage, done, total).
    threads : int, default 0
        At most so many; 0: as many as there are processors.

    Returns
    -------
    image : Image
        The result.

    Raises
    ------
    ArgumentError
        A value or an image that it cannot be done with.
    FileError
        A file that cannot be read or written.

    Notes
    -----
    x becomes asinh(k x) / asinh(k). All planes of a pixel take the factor of their mean, or less where the
    brightest would be cut, so that colours stay. x is the place of a sample between low and high, cut to
    0..1. The result lies between the display levels, which stay, so that they show black and white. Blanks
    and NaN stay.

    A sample depends on: each sample by itself; the display levels.
    """
    return step('asinh', locals())


def log(
    image: ImageLike,
    *,
    k: float = 1000.0,
    low: Optional[float] = None,
    high: Optional[float] = None,
    rect: Optional[Rectangle] = None,
    mask: Optional[Union[ImageLike, Path]] = None,
    strength: float = 1.0,
    progress: Progress = None,
    threads: int = 0,
) -> Image:
    """Lift faint light by a logarithm.

    Parameters
    ----------
    image : Image or array_like
        The image to work on.
    k : float, default 1000.0
        How far it goes [1e-06 to 1e+09].
    low : float, optional
        The sample where x is 0 [counts]. Without: the level min.
    high : float, optional
        The sample where x is 1 [counts]. Without: the level max.
    rect : (left, top, right, bottom), optional
        Work inside this rectangle only; right and bottom are the first column and row outside [pixels].
        Without: the whole image.
    mask : Image, array_like or path, optional
        An image of one plane that is 0 where samples stay and 1 where they change. Without: they change
        everywhere.
    strength : float, default 1.0
        How much of the change is taken [0 to 1].
    progress : bool or callable, optional
        True shows a bar; else progress(stage, done, total).
    threads : int, default 0
        At most so many; 0: as many as there are processors.

    Returns
    -------
    image : Image
        The result.

    Raises
    ------
    ArgumentError
        A value or an image that it cannot be done with.
    FileError
        A file that cannot be read or written.

    Notes
    -----
    x becomes log(1 + k x) / log(1 + k). x is the place of a sample between low and high, cut to 0..1. The
    result lies between the display levels, which stay, so that they show black and white. Blanks and NaN
    stay.

    A sample depends on: each sample by itself; the display levels.
    """
    return step('log', locals())


def gamma(
    image: ImageLike,
    *,
    g: float = 2.2,
    low: Optional[float] = None,
    high: Optional[float] = None,
    rect: Optional[Rectangle] = None,
    mask: Optional[Union[ImageLike, Path]] = None,
    strength: float = 1.0,
    progress: Progress = None,
    threads: int = 0,
) -> Image:
    """Lift the middle by a power.

    Parameters
    ----------
    image : Image or array_like
        The image to work on.
    g : float, default 2.2
        Above 1 it brightens, below it darkens [0.01 to 100].
    low : float, optional
        The sample where x is 0 [counts]. Without: the level min.
    high : float, optional
        The sample where x is 1 [counts]. Without: the level max.
    rect : (left, top, right, bottom), optional
        Work inside this rectangle only; right and bottom are the first column and row outside [pixels].
        Without: the whole image.
    mask : Image, array_like or path, optional
        An image of one plane that is 0 where samples stay and 1 where they change. Without: they change
        everywhere.
    strength : float, default 1.0
        How much of the change is taken [0 to 1].
    progress : bool or callable, optional
        True shows a bar; else progress(stage, done, total).
    threads : int, default 0
        At most so many; 0: as many as there are processors.

    Returns
    -------
    image : Image
        The result.

    Raises
    ------
    ArgumentError
        A value or an image that it cannot be done with.
    FileError
        A file that cannot be read or written.

    Notes
    -----
    x becomes x to the power 1 / g. x is the place of a sample between low and high, cut to 0..1. The result
    lies between the display levels, which stay, so that they show black and white. Blanks and NaN stay.

    A sample depends on: each sample by itself; the display levels.
    """
    return step('gamma', locals())


def ghs(
    image: ImageLike,
    *,
    d: float = 10.0,
    b: float = 0.0,
    lp: float = 0.0,
    sp: float = 0.0,
    hp: float = 1.0,
    inverse: bool = False,
    low: Optional[float] = None,
    high: Optional[float] = None,
    rect: Optional[Rectangle] = None,
    mask: Optional[Union[ImageLike, Path]] = None,
    strength: float = 1.0,
    D: Any = None,
    LP: Any = None,
    SP: Any = None,
    HP: Any = None,
    progress: Progress = None,
    threads: int = 0,
) -> Image:
    """Stretch about a chosen brightness (generalised hyperbolic).

    Parameters
    ----------
    image : Image or array_like
        The image to work on.
    d : float, default 10.0
        How far it goes; 0 changes nothing [0 to 1e+06].
    b : float, default 0.0
        How contrast falls off [-100 to 100].
    lp : float, default 0.0
        X below which it is straight; at most sp [0 to 1].
    sp : float, default 0.0
        X of the highest contrast [0 to 1].
    hp : float, default 1.0
        X above which it is straight; at least sp [0 to 1].
    inverse : bool, default False
        Undo the stretch of these numbers.
    low : float, optional
        The sample where x is 0 [counts]. Without: the level min.
    high : float, optional
        The sample where x is 1 [counts]. Without: the level max.
    rect : (left, top, right, bottom), optional
        Work inside this rectangle only; right and bottom are the first column and row outside [pixels].
        Without: the whole image.
    mask : Image, array_like or path, optional
        An image of one plane that is 0 where samples stay and 1 where they change. Without: they change
        everywhere.
    strength : float, default 1.0
        How much of the change is taken [0 to 1].
    D
        Another name for d.
    LP
        Another name for lp.
    SP
        Another name for sp.
    HP
        Another name for hp.
    progress : bool or callable, optional
        True shows a bar; else progress(stage, done, total).
    threads : int, default 0
        At most so many; 0: as many as there are processors.

    Returns
    -------
    image : Image
        The result.

    Raises
    ------
    ArgumentError
        A value or an image that it cannot be done with.
    FileError
        A file that cannot be read or written.

    Notes
    -----
    Contrast is highest at SP and falls off to both sides as b says: exponentially with 0, like a hyperbola
    above 0, like a logarithm with -1, and more slowly below 0 otherwise. Below LP and above HP lines go on
    straight. By D. Payne and M. Cranfield. x is the place of a sample between low and high, cut to 0..1.
    The result lies between the display levels, which stay, so that they show black and white. Blanks and
    NaN stay.

    A sample depends on: each sample by itself; the display levels.
    """
    return step('ghs', locals())


def equalise(
    image: ImageLike,
    *,
    per_plane: bool = False,
    low: Optional[float] = None,
    high: Optional[float] = None,
    rect: Optional[Rectangle] = None,
    mask: Optional[Union[ImageLike, Path]] = None,
    strength: float = 1.0,
    progress: Progress = None,
    threads: int = 0,
) -> Image:
    """Make all steps of brightness equally frequent.

    Parameters
    ----------
    image : Image or array_like
        The image to work on.
    per_plane : bool, default False
        Each plane of a colour image by its own samples.
    low : float, optional
        The sample where x is 0 [counts]. Without: the level min.
    high : float, optional
        The sample where x is 1 [counts]. Without: the level max.
    rect : (left, top, right, bottom), optional
        Work inside this rectangle only; right and bottom are the first column and row outside [pixels].
        Without: the whole image.
    mask : Image, array_like or path, optional
        An image of one plane that is 0 where samples stay and 1 where they change. Without: they change
        everywhere.
    strength : float, default 1.0
        How much of the change is taken [0 to 1].
    progress : bool or callable, optional
        True shows a bar; else progress(stage, done, total).
    threads : int, default 0
        At most so many; 0: as many as there are processors.

    Returns
    -------
    image : Image
        The result.

    Raises
    ------
    ArgumentError
        A value or an image that it cannot be done with.
    FileError
        A file that cannot be read or written.

    Notes
    -----
    x becomes the part of the samples between low and high that lie below it, in 65536 steps. Of a colour
    image all planes go by the samples of all. In a rectangle, its samples alone count. x is the place of a
    sample between low and high, cut to 0..1. The result lies between the display levels, which stay, so
    that they show black and white. Blanks and NaN stay.

    A sample depends on: each sample by itself; the display levels; statistics of all samples.
    """
    return step('equalise', locals())


def brightness(
    image: ImageLike,
    *,
    brightness: float = 20.0,
    contrast: float = 64.0,
    centre: float = 64.0,
    rect: Optional[Rectangle] = None,
    mask: Optional[Union[ImageLike, Path]] = None,
    strength: float = 1.0,
    center: Any = None,
    progress: Progress = None,
    threads: int = 0,
) -> Image:
    """Change brightness and contrast.

    Parameters
    ----------
    image : Image or array_like
        The image to work on.
    brightness : float, default 20.0
        Added to every sample [-255 to 255, display units, black 0 and white 255].
    contrast : float, default 64.0
        256 doubles the distance from the centre, -128 halves it [-256 to 2560, 1/256].
    centre : float, default 64.0
        What contrast leaves alone [0 to 255, display units, black 0 and white 255].
    rect : (left, top, right, bottom), optional
        Work inside this rectangle only; right and bottom are the first column and row outside [pixels].
        Without: the whole image.
    mask : Image, array_like or path, optional
        An image of one plane that is 0 where samples stay and 1 where they change. Without: they change
        everywhere.
    strength : float, default 1.0
        How much of the change is taken [0 to 1].
    center
        Another name for centre.
    progress : bool or callable, optional
        True shows a bar; else progress(stage, done, total).
    threads : int, default 0
        At most so many; 0: as many as there are processors.

    Returns
    -------
    image : Image
        The result.

    Raises
    ------
    ArgumentError
        A value or an image that it cannot be done with.
    FileError
        A file that cannot be read or written.

    Notes
    -----
    A display value s becomes s + (s - centre) * contrast / 256 + brightness. Nothing is cut off. A colour
    image is changed by the levels of its red plane. The display levels stay. Without them, it chooses them
    from the sky first.

    A sample depends on: each sample by itself; the display levels.
    """
    return step('brightness', locals())


def balance(
    image: ImageLike,
    *,
    red: float = 0.0,
    green: float = 0.0,
    blue: float = 0.0,
    rect: Optional[Rectangle] = None,
    mask: Optional[Union[ImageLike, Path]] = None,
    strength: float = 1.0,
    progress: Progress = None,
    threads: int = 0,
) -> Image:
    """Brighten or darken each colour.

    Parameters
    ----------
    image : Image or array_like
        The image to work on.
    red : float, default 0.0
        Added to the red plane [-255 to 255, display units, black 0 and white 255].
    green : float, default 0.0
        Added to the green plane [-255 to 255, display units, black 0 and white 255].
    blue : float, default 0.0
        Added to the blue plane [-255 to 255, display units, black 0 and white 255].
    rect : (left, top, right, bottom), optional
        Work inside this rectangle only; right and bottom are the first column and row outside [pixels].
        Without: the whole image.
    mask : Image, array_like or path, optional
        An image of one plane that is 0 where samples stay and 1 where they change. Without: they change
        everywhere.
    strength : float, default 1.0
        How much of the change is taken [0 to 1].
    progress : bool or callable, optional
        True shows a bar; else progress(stage, done, total).
    threads : int, default 0
        At most so many; 0: as many as there are processors.

    Returns
    -------
    image : Image
        The result.

    Raises
    ------
    ArgumentError
        A value or an image that it cannot be done with.
    FileError
        A file that cannot be read or written.

    Notes
    -----
    All planes go by the levels of the red one, so that the same number is the same step in each. Nothing is
    cut off. An image of one plane takes red alone. The display levels stay. Without them, it chooses them
    from the sky first.

    A sample depends on: each sample by itself; the display levels.
    """
    return step('balance', locals())


def curve(
    image: ImageLike,
    *,
    points: Optional[Sequence[Tuple[float, float]]] = None,
    file: Optional[Path] = None,
    red: Optional[Sequence[Tuple[float, float]]] = None,
    green: Optional[Sequence[Tuple[float, float]]] = None,
    blue: Optional[Sequence[Tuple[float, float]]] = None,
    entries: int = 16384,
    rect: Optional[Rectangle] = None,
    mask: Optional[Union[ImageLike, Path]] = None,
    strength: float = 1.0,
    progress: Progress = None,
    threads: int = 0,
) -> Image:
    """Bend brightness by a curve through points.

    Parameters
    ----------
    image : Image or array_like
        The image to work on.
    points : sequence of (x, y), optional
        The master curve. Without: 0:0/0.25:0.5/0.6:0.85/1:1, or a straight line with red, green or
        blue.
    file : path, optional
        Text with the master curve: x and y on each line, or y alone at equal steps. Without: points.
    red : sequence of (x, y), optional
        Curve of the red plane of a colour image, before the master curve. Without: a straight line.
    green : sequence of (x, y), optional
        Curve of the green plane of a colour image, before the master curve. Without: a straight line.
    blue : sequence of (x, y), optional
        Curve of the blue plane of a colour image, before the master curve. Without: a straight line.
    entries : int, default 16384
        Brightness steps that the curve is cut into [2 to 65536].
    rect : (left, top, right, bottom), optional
        Work inside this rectangle only; right and bottom are the first column and row outside [pixels].
        Without: the whole image.
    mask : Image, array_like or path, optional
        An image of one plane that is 0 where samples stay and 1 where they change. Without: they change
        everywhere.
    strength : float, default 1.0
        How much of the change is taken [0 to 1].
    progress : bool or callable, optional
        True shows a bar; else progress(stage, done, total).
    threads : int, default 0
        At most so many; 0: as many as there are processors.

    Returns
    -------
    image : Image
        The result.

    Raises
    ------
    ArgumentError
        A value or an image that it cannot be done with.
    FileError
        A file that cannot be read or written.

    Notes
    -----
    In points and files black is 0 and white is 1. The curve is smooth, does not swing beyond its points,
    and is level before the first and behind the last. Samples above white go on along the curve where it
    rises there, and stop otherwise; samples below black become black unless the curve falls there. The
    display levels stay. Without them, it chooses them from the sky first.

    A sample depends on: each sample by itself; the display levels.
    """
    return step('curve', locals())


def reduce_tone(
    image: ImageLike,
    *,
    levels: int = 8,
    rect: Optional[Rectangle] = None,
    mask: Optional[Union[ImageLike, Path]] = None,
    strength: float = 1.0,
    progress: Progress = None,
    threads: int = 0,
) -> Image:
    """Leave a few grey steps of each plane.

    Parameters
    ----------
    image : Image or array_like
        The image to work on.
    levels : int, default 8
        Number of steps; 1 makes all black [1 to 256].
    rect : (left, top, right, bottom), optional
        Work inside this rectangle only; right and bottom are the first column and row outside [pixels].
        Without: the whole image.
    mask : Image, array_like or path, optional
        An image of one plane that is 0 where samples stay and 1 where they change. Without: they change
        everywhere.
    strength : float, default 1.0
        How much of the change is taken [0 to 1].
    progress : bool or callable, optional
        True shows a bar; else progress(stage, done, total).
    threads : int, default 0
        At most so many; 0: as many as there are processors.

    Returns
    -------
    image : Image
        The result.

    Raises
    ------
    ArgumentError
        A value or an image that it cannot be done with.
    FileError
        A file that cannot be read or written.

    Notes
    -----
    Steps lie at black and evenly above it; none is white. What is blacker than black becomes black, what is
    whiter than white the top step. The display levels stay. Without them, it chooses them from the sky
    first.

    A sample depends on: each sample by itself; the display levels.
    """
    return step('reduce-tone', locals())


def false_color(
    image: ImageLike,
    *,
    low: Optional[float] = None,
    high: Optional[float] = None,
    map: Union[Literal["rainbow", "spectrum", "ice", "heat"], int] = "rainbow",
    cycles: int = 1,
    rect: Optional[Rectangle] = None,
    progress: Progress = None,
    threads: int = 0,
) -> Image:
    """Show brightness as colours.

    Parameters
    ----------
    image : Image or array_like
        The image to work on [images of one plane].
    low : float, optional
        The sample where the map begins [counts]. Without: what shows black.
    high : float, optional
        The sample where the map ends [counts]. Without: what shows white.
    map : {"rainbow", "spectrum", "ice", "heat"}, default "rainbow"
        The colours, by name or number.
    cycles : int, default 1
        How many times the map runs from low to high [1 to 256].
    rect : (left, top, right, bottom), optional
        Work inside this rectangle only; right and bottom are the first column and row outside [pixels].
        Without: the whole image.
    progress : bool or callable, optional
        True shows a bar; else progress(stage, done, total).
    threads : int, default 0
        At most so many; 0: as many as there are processors.

    Returns
    -------
    image : Image
        The result.

    Raises
    ------
    ArgumentError
        A value or an image that it cannot be done with.
    FileError
        A file that cannot be read or written.

    Notes
    -----
    Maps: rainbow (blue, green, red), spectrum (the same from black to white, with jumps), ice (black, blue,
    white), heat (black, red, yellow, white). The result has three planes; outside of the rectangle they are
    grey. High below low turns the map over. Of a colour image make one plane with to-grey first. The
    display levels stay. Without them, it chooses them from the sky first.

    A sample depends on: each sample by itself; the display levels.
    """
    return step('false-color', locals())


def add(
    image: ImageLike,
    *,
    value: float,
    rect: Optional[Rectangle] = None,
    mask: Optional[Union[ImageLike, Path]] = None,
    strength: float = 1.0,
    progress: Progress = None,
    threads: int = 0,
) -> Image:
    """Add a number to every sample.

    Parameters
    ----------
    image : Image or array_like
        The image to work on.
    value : float
        What to add [counts].
    rect : (left, top, right, bottom), optional
        Work inside this rectangle only; right and bottom are the first column and row outside [pixels].
        Without: the whole image.
    mask : Image, array_like or path, optional
        An image of one plane that is 0 where samples stay and 1 where they change. Without: they change
        everywhere.
    strength : float, default 1.0
        How much of the change is taken [0 to 1].
    progress : bool or callable, optional
        True shows a bar; else progress(stage, done, total).
    threads : int, default 0
        At most so many; 0: as many as there are processors.

    Returns
    -------
    image : Image
        The result.

    Raises
    ------
    ArgumentError
        A value or an image that it cannot be done with.
    FileError
        A file that cannot be read or written.

    Notes
    -----
    Blank samples stay blank. The display levels stay.

    A sample depends on: each sample by itself.
    """
    return step('add', locals())


def subtract(
    image: ImageLike,
    *,
    value: float,
    clip_negative: bool = False,
    rect: Optional[Rectangle] = None,
    mask: Optional[Union[ImageLike, Path]] = None,
    strength: float = 1.0,
    progress: Progress = None,
    threads: int = 0,
) -> Image:
    """Take a number off every sample.

    Parameters
    ----------
    image : Image or array_like
        The image to work on.
    value : float
        What to take off [counts].
    clip_negative : bool, default False
        Make 0 of what falls below 0.
    rect : (left, top, right, bottom), optional
        Work inside this rectangle only; right and bottom are the first column and row outside [pixels].
        Without: the whole image.
    mask : Image, array_like or path, optional
        An image of one plane that is 0 where samples stay and 1 where they change. Without: they change
        everywhere.
    strength : float, default 1.0
        How much of the change is taken [0 to 1].
    progress : bool or callable, optional
        True shows a bar; else progress(stage, done, total).
    threads : int, default 0
        At most so many; 0: as many as there are processors.

    Returns
    -------
    image : Image
        The result.

    Raises
    ------
    ArgumentError
        A value or an image that it cannot be done with.
    FileError
        A file that cannot be read or written.

    Notes
    -----
    Blank samples stay blank. The display levels stay.

    A sample depends on: each sample by itself.
    """
    return step('subtract', locals())


def multiply(
    image: ImageLike,
    *,
    value: float,
    rect: Optional[Rectangle] = None,
    mask: Optional[Union[ImageLike, Path]] = None,
    strength: float = 1.0,
    progress: Progress = None,
    threads: int = 0,
) -> Image:
    """Multiply every sample by a number.

    Parameters
    ----------
    image : Image or array_like
        The image to work on.
    value : float
        The factor.
    rect : (left, top, right, bottom), optional
        Work inside this rectangle only; right and bottom are the first column and row outside [pixels].
        Without: the whole image.
    mask : Image, array_like or path, optional
        An image of one plane that is 0 where samples stay and 1 where they change. Without: they change
        everywhere.
    strength : float, default 1.0
        How much of the change is taken [0 to 1].
    progress : bool or callable, optional
        True shows a bar; else progress(stage, done, total).
    threads : int, default 0
        At most so many; 0: as many as there are processors.

    Returns
    -------
    image : Image
        The result.

    Raises
    ------
    ArgumentError
        A value or an image that it cannot be done with.
    FileError
        A file that cannot be read or written.

    Notes
    -----
    Blank samples stay blank. The display levels stay.

    A sample depends on: each sample by itself.
    """
    return step('multiply', locals())


def divide(
    image: ImageLike,
    *,
    value: float,
    rect: Optional[Rectangle] = None,
    mask: Optional[Union[ImageLike, Path]] = None,
    strength: float = 1.0,
    progress: Progress = None,
    threads: int = 0,
) -> Image:
    """Divide every sample by a number.

    Parameters
    ----------
    image : Image or array_like
        The image to work on.
    value : float
        The divisor; not 0.
    rect : (left, top, right, bottom), optional
        Work inside this rectangle only; right and bottom are the first column and row outside [pixels].
        Without: the whole image.
    mask : Image, array_like or path, optional
        An image of one plane that is 0 where samples stay and 1 where they change. Without: they change
        everywhere.
    strength : float, default 1.0
        How much of the change is taken [0 to 1].
    progress : bool or callable, optional
        True shows a bar; else progress(stage, done, total).
    threads : int, default 0
        At most so many; 0: as many as there are processors.

    Returns
    -------
    image : Image
        The result.

    Raises
    ------
    ArgumentError
        A value or an image that it cannot be done with.
    FileError
        A file that cannot be read or written.

    Notes
    -----
    Blank samples stay blank. The display levels stay.

    A sample depends on: each sample by itself.
    """
    return step('divide', locals())


def dark(
    image: ImageLike,
    *,
    file: Union[ImageLike, Path],
    mask: Optional[Union[ImageLike, Path]] = None,
    strength: float = 1.0,
    frame: Any = None,
    progress: Progress = None,
    threads: int = 0,
) -> Image:
    """Take a dark frame off.

    Parameters
    ----------
    image : Image or array_like
        The image to work on.
    file : Image, array_like or path
        The dark frame.
    mask : Image, array_like or path, optional
        An image of one plane that is 0 where samples stay and 1 where they change. Without: they change
        everywhere.
    strength : float, default 1.0
        How much of the change is taken [0 to 1].
    frame
        Another name for file.
    progress : bool or callable, optional
        True shows a bar; else progress(stage, done, total).
    threads : int, default 0
        At most so many; 0: as many as there are processors.

    Returns
    -------
    image : Image
        The result.

    Raises
    ------
    ArgumentError
        A value or an image that it cannot be done with.
    FileError
        A file that cannot be read or written.

    Notes
    -----
    What would fall below 0 becomes 0. The dark must have the image's size, and one plane or as many; a dark
    of the other order of rows (ROWORDER) is turned.

    A sample depends on: each sample by itself.
    """
    return step('dark', locals())


def flat(
    image: ImageLike,
    *,
    file: Union[ImageLike, Path],
    mask: Optional[Union[ImageLike, Path]] = None,
    strength: float = 1.0,
    frame: Any = None,
    progress: Progress = None,
    threads: int = 0,
) -> Image:
    """Divide by a flat field.

    Parameters
    ----------
    image : Image or array_like
        The image to work on.
    file : Image, array_like or path
        The flat field.
    mask : Image, array_like or path, optional
        An image of one plane that is 0 where samples stay and 1 where they change. Without: they change
        everywhere.
    strength : float, default 1.0
        How much of the change is taken [0 to 1].
    frame
        Another name for file.
    progress : bool or callable, optional
        True shows a bar; else progress(stage, done, total).
    threads : int, default 0
        At most so many; 0: as many as there are processors.

    Returns
    -------
    image : Image
        The result.

    Raises
    ------
    ArgumentError
        A value or an image that it cannot be done with.
    FileError
        A file that cannot be read or written.

    Notes
    -----
    The result keeps its scale: samples are multiplied by the mean of the flat's first plane. Where the flat
    is 0 or less they stay as they are; where it is undefined they become so, and the mean is that of the
    others. The flat must have the image's size, and one plane or as many; a flat of the other order of rows
    (ROWORDER) is turned. Take its bias off before.

    A sample depends on: each sample by itself; statistics of all samples.
    """
    return step('flat', locals())


def overscan(
    image: ImageLike,
    *,
    rect: Rectangle,
    clip: bool = False,
    mask: Optional[Union[ImageLike, Path]] = None,
    strength: float = 1.0,
    progress: Progress = None,
    threads: int = 0,
) -> Image:
    """Take off the bias that an overscan strip shows.

    Parameters
    ----------
    image : Image or array_like
        The image to work on [images of one plane].
    rect : (left, top, right, bottom)
        The strip.
    clip : bool, default False
        Leave out samples that are 3 standard deviations or more from the strip's median.
    mask : Image, array_like or path, optional
        An image of one plane that is 0 where samples stay and 1 where they change. Without: they change
        everywhere.
    strength : float, default 1.0
        How much of the change is taken [0 to 1].
    progress : bool or callable, optional
        True shows a bar; else progress(stage, done, total).
    threads : int, default 0
        At most so many; 0: as many as there are processors.

    Returns
    -------
    image : Image
        The result.

    Raises
    ------
    ArgumentError
        A value or an image that it cannot be done with.
    FileError
        A file that cannot be read or written.

    Notes
    -----
    Subtracts the absolute value of the strip's mean from the whole image; the display levels go down with
    the samples. A blank sample ends its row. Crop the strip away afterwards.

    A sample depends on: each sample by itself; statistics of all samples.
    """
    return step('overscan', locals())


def vignette(
    image: ImageLike,
    *,
    k: float,
    base: float = 1.0,
    x: Optional[int] = None,
    y: Optional[int] = None,
    rect: Optional[Rectangle] = None,
    mask: Optional[Union[ImageLike, Path]] = None,
    strength: float = 1.0,
    progress: Progress = None,
    threads: int = 0,
) -> Image:
    """Even out vignetting by a model, without a flat field.

    Parameters
    ----------
    image : Image or array_like
        The image to work on.
    k : float
        How the divisor changes outwards [per square pixel].
    base : float, default 1.0
        The divisor at the centre [1e-06 to 1e+06].
    x : int, optional
        Column of the centre [-1e+06 to 1e+06, pixels]. Without: the middle of the image.
    y : int, optional
        Row of the centre [-1e+06 to 1e+06, pixels]. Without: the middle of the image.
    rect : (left, top, right, bottom), optional
        Work inside this rectangle only; right and bottom are the first column and row outside [pixels].
        Without: the whole image.
    mask : Image, array_like or path, optional
        An image of one plane that is 0 where samples stay and 1 where they change. Without: they change
        everywhere.
    strength : float, default 1.0
        How much of the change is taken [0 to 1].
    progress : bool or callable, optional
        True shows a bar; else progress(stage, done, total).
    threads : int, default 0
        At most so many; 0: as many as there are processors.

    Returns
    -------
    image : Image
        The result.

    Raises
    ------
    ArgumentError
        A value or an image that it cannot be done with.
    FileError
        A file that cannot be read or written.

    Notes
    -----
    Multiplies each sample by 1 / (1 + (k / base) r^2), where r is its distance from the centre in pixels. A
    k below 0 lifts the corners. For corners at r = 2500 that have 80 percent of the centre's light, k =
    -0.2 / 2500^2 = -3.2e-8 with a base of 1. Take bias and dark off before. Undefined samples stay
    undefined.

    A sample depends on: each sample by itself; its place in the image.
    """
    return step('vignette', locals())


def to_grey(
    image: ImageLike,
    *,
    progress: Progress = None,
    threads: int = 0,
) -> Image:
    """Turn a colour image into one plane of brightness.

    Parameters
    ----------
    image : Image or array_like
        The image to work on [colour images].
    progress : bool or callable, optional
        True shows a bar; else progress(stage, done, total).
    threads : int, default 0
        At most so many; 0: as many as there are processors.

    Returns
    -------
    image : Image
        The result.

    Raises
    ------
    ArgumentError
        A value or an image that it cannot be done with.
    FileError
        A file that cannot be read or written.

    Notes
    -----
    Brightness is 0.299 R + 0.587 G + 0.114 B of what the display levels show; the result has the levels of
    the red plane.

    A sample depends on: each sample by itself; the display levels.
    """
    return step('to-grey', locals())


def to_color(
    image: ImageLike,
    *,
    progress: Progress = None,
    threads: int = 0,
) -> Image:
    """Turn an image of one plane into three equal planes.

    Parameters
    ----------
    image : Image or array_like
        The image to work on [images of one plane].
    progress : bool or callable, optional
        True shows a bar; else progress(stage, done, total).
    threads : int, default 0
        At most so many; 0: as many as there are processors.

    Returns
    -------
    image : Image
        The result.

    Raises
    ------
    ArgumentError
        A value or an image that it cannot be done with.
    FileError
        A file that cannot be read or written.

    Notes
    -----
    The three planes take the samples and the display levels of the one.

    A sample depends on: each sample by itself.
    """
    return step('to-color', locals())


def neutral_sky(
    image: ImageLike,
    *,
    value: Optional[float] = None,
    mask: Optional[Union[ImageLike, Path]] = None,
    strength: float = 1.0,
    progress: Progress = None,
    threads: int = 0,
) -> Image:
    """Bring the skies of the planes to one value.

    Parameters
    ----------
    image : Image or array_like
        The image to work on [colour images].
    value : float, optional
        What the skies get [counts]. Without: the mean of them.
    mask : Image, array_like or path, optional
        An image of one plane that is 0 where samples stay and 1 where they change. Without: they change
        everywhere.
    strength : float, default 1.0
        How much of the change is taken [0 to 1].
    progress : bool or callable, optional
        True shows a bar; else progress(stage, done, total).
    threads : int, default 0
        At most so many; 0: as many as there are processors.

    Returns
    -------
    image : Image
        The result.

    Raises
    ------
    ArgumentError
        A value or an image that it cannot be done with.
    FileError
        A file that cannot be read or written.

    Notes
    -----
    Adds a number to each plane. The sky is the median of the model of the step background, so stars and
    nebulae do not count. Noise and stars stay as they are.

    A sample depends on: the whole image.
    """
    return step('neutral-sky', locals())


def white_balance(
    image: ImageLike,
    *,
    red: Optional[float] = None,
    green: Optional[float] = None,
    blue: Optional[float] = None,
    mask: Optional[Union[ImageLike, Path]] = None,
    strength: float = 1.0,
    progress: Progress = None,
    threads: int = 0,
) -> Image:
    """Make the stars white as a whole.

    Parameters
    ----------
    image : Image or array_like
        The image to work on [colour images].
    red : float, optional
        Factor of the red plane [1e-06 to 1e+06]. Without: 1 if another factor is given, else by the
        stars.
    green : float, optional
        Factor of the green plane [1e-06 to 1e+06]. Without: 1 if another factor is given, else by the
        stars.
    blue : float, optional
        Factor of the blue plane [1e-06 to 1e+06]. Without: 1 if another factor is given, else by the
        stars.
    mask : Image, array_like or path, optional
        An image of one plane that is 0 where samples stay and 1 where they change. Without: they change
        everywhere.
    strength : float, default 1.0
        How much of the change is taken [0 to 1].
    progress : bool or callable, optional
        True shows a bar; else progress(stage, done, total).
    threads : int, default 0
        At most so many; 0: as many as there are processors.

    Returns
    -------
    image : Image
        The result.

    Raises
    ------
    ArgumentError
        A value or an image that it cannot be done with.
    FileError
        A file that cannot be read or written.

    Notes
    -----
    Multiplies each plane by a factor. Without any, red and blue get those that make the median colour of
    the stars white: of those that are saturated in no plane, by their light above the sky about them. A
    note tells the factors. The skies are multiplied, too: neutral-sky comes after.

    A sample depends on: the whole image.
    """
    return step('white-balance', locals())


def scnr(
    image: ImageLike,
    *,
    mode: Literal["average", "maximum"] = "average",
    strength: float = 1.0,
    mask: Optional[Union[ImageLike, Path]] = None,
    progress: Progress = None,
    threads: int = 0,
) -> Image:
    """Take off green what neither red nor blue has.

    Parameters
    ----------
    image : Image or array_like
        The image to work on [colour images].
    mode : {"average", "maximum"}, default "average"
        What green is lowered to: the mean of red and blue or the larger one.
    strength : float, default 1.0
        Which part of the excess is taken off [0 to 1].
    mask : Image, array_like or path, optional
        An image of one plane that is 0 where samples stay and 1 where they change. Without: they change
        everywhere.
    progress : bool or callable, optional
        True shows a bar; else progress(stage, done, total).
    threads : int, default 0
        At most so many; 0: as many as there are processors.

    Returns
    -------
    image : Image
        The result.

    Raises
    ------
    ArgumentError
        A value or an image that it cannot be done with.
    FileError
        A file that cannot be read or written.

    Notes
    -----
    Nothing in the sky but a few nebulae is green. Where green is above the mean of red and blue, or above
    the larger of them, it is lowered to that. Samples are compared as they are: bring the skies to one
    value before. Pixels with an undefined sample stay.

    A sample depends on: each sample by itself.
    """
    return step('scnr', locals())


def saturate(
    image: ImageLike,
    *,
    gain: float = 1.5,
    red: Optional[float] = None,
    green: Optional[float] = None,
    yellow: Optional[float] = None,
    blue: Optional[float] = None,
    rect: Optional[Rectangle] = None,
    mask: Optional[Union[ImageLike, Path]] = None,
    strength: float = 1.0,
    a_plus: Any = None,
    a_minus: Any = None,
    b_plus: Any = None,
    b_minus: Any = None,
    progress: Progress = None,
    threads: int = 0,
) -> Image:
    """Make colours stronger or weaker.

    Parameters
    ----------
    image : Image or array_like
        The image to work on [colour images].
    gain : float, default 1.5
        Of every hue that has no gain of its own [-10 to 10].
    red : float, optional
        Gain of red and magenta, where a is not below 0 [-10 to 10]. Without: gain.
    green : float, optional
        Gain of green, where a is below 0 [-10 to 10]. Without: gain.
    yellow : float, optional
        Gain of yellow, where b is not below 0 [-10 to 10]. Without: gain.
    blue : float, optional
        Gain of blue, where b is below 0 [-10 to 10]. Without: gain.
    rect : (left, top, right, bottom), optional
        Work inside this rectangle only; right and bottom are the first column and row outside [pixels].
        Without: the whole image.
    mask : Image, array_like or path, optional
        An image of one plane that is 0 where samples stay and 1 where they change. Without: they change
        everywhere.
    strength : float, default 1.0
        How much of the change is taken [0 to 1].
    a_plus
        Another name for red.
    a_minus
        Another name for green.
    b_plus
        Another name for yellow.
    b_minus
        Another name for blue.
    progress : bool or callable, optional
        True shows a bar; else progress(stage, done, total).
    threads : int, default 0
        At most so many; 0: as many as there are processors.

    Returns
    -------
    image : Image
        The result.

    Raises
    ------
    ArgumentError
        A value or an image that it cannot be done with.
    FileError
        A file that cannot be read or written.

    Notes
    -----
    Colour is taken as CIE L*a*b* of what the display levels show: the axis a goes from green to red, b from
    blue to yellow, and each side is multiplied by its gain. 1 leaves it, 0 makes it grey, a negative gain
    turns it to the opposite hue. Lightness stays, as far as the colour can be shown. Samples below black
    and undefined ones become black; what is above white is kept. The display levels stay. Without them, it
    chooses levels that show the sky grey first.

    A sample depends on: each sample by itself; the display levels.
    """
    return step('saturate', locals())


def lab(
    image: ImageLike,
    *,
    progress: Progress = None,
    threads: int = 0,
) -> Image:
    """Turn a colour image into planes of lightness and colour.

    Parameters
    ----------
    image : Image or array_like
        The image to work on [colour images].
    progress : bool or callable, optional
        True shows a bar; else progress(stage, done, total).
    threads : int, default 0
        At most so many; 0: as many as there are processors.

    Returns
    -------
    image : Image
        The result.

    Raises
    ------
    ArgumentError
        A value or an image that it cannot be done with.
    FileError
        A file that cannot be read or written.

    Notes
    -----
    The planes become L, a and b of CIE L*a*b*, of what the display levels show: L is 0 for black and 100
    for white, a goes from green (below 0) to red, b from blue (below 0) to yellow. Samples below black
    count as black; what is above white has an L above 100. The result has display levels of 0 to 100 for L
    and -100 to 100 for a and b, so a grey image shows a and b in the middle. Without display levels, it
    chooses some that show the sky grey first. A pixel that is undefined in one plane becomes so in all.

    A sample depends on: each sample by itself; the display levels; statistics of all samples.
    """
    return step('lab', locals())


def debayer(
    image: ImageLike,
    *,
    pattern: Literal["auto", "RGGB", "GRBG", "GBRG", "BGGR"] = "auto",
    method: Literal["edge-aware", "bilinear"] = "edge-aware",
    progress: Progress = None,
    threads: int = 0,
) -> Image:
    """Make a colour image of a frame with a Bayer mosaic.

    Parameters
    ----------
    image : Image or array_like
        The image to work on [images of one plane].
    pattern : {"auto", "RGGB", "GRBG", "GBRG", "BGGR"}, default "auto"
        The filters of the first two pixels of the first row, then of the second.
    method : {"edge-aware", "bilinear"}, default "edge-aware"
        Edge-aware keeps stars sharp and round; bilinear is quicker and softer.
    progress : bool or callable, optional
        True shows a bar; else progress(stage, done, total).
    threads : int, default 0
        At most so many; 0: as many as there are processors.

    Returns
    -------
    image : Image
        The result.

    Raises
    ------
    ArgumentError
        A value or an image that it cannot be done with.
    FileError
        A file that cannot be read or written.

    Notes
    -----
    Each pixel of such a frame has a filter of one colour; the others are made from its neighbours. Do it
    after calibration, before anything that moves or mixes samples. auto goes by BAYERPAT, XBAYROFF,
    YBAYROFF and ROWORDER; a pattern that is given counts from the first row of the file. Colours are not
    balanced. The three planes take the display levels of the one; the cards that describe the mosaic are
    taken away.

    A sample depends on: samples up to all columns and 6 rows away.
    """
    return step('debayer', locals())


def split(
    image: ImageLike,
    *,
    component: Literal["r", "g", "b", "c", "m", "y"],
    progress: Progress = None,
    threads: int = 0,
) -> Image:
    """Take one component out of a colour image.

    Parameters
    ----------
    image : Image or array_like
        The image to work on [colour images].
    component : {"r", "g", "b", "c", "m", "y"}
        Which; c, m and y are the means of two planes.
    progress : bool or callable, optional
        True shows a bar; else progress(stage, done, total).
    threads : int, default 0
        At most so many; 0: as many as there are processors.

    Returns
    -------
    image : Image
        The result.

    Raises
    ------
    ArgumentError
        A value or an image that it cannot be done with.
    FileError
        A file that cannot be read or written.

    Notes
    -----
    c is (G + B) / 2, m (R + B) / 2, y (R + G) / 2. The result has one plane, the header of the image and
    the component as its FILTER; its display level is that of the plane, or the mean of two (of y as of m).
    Undefined samples become NaN.

    A sample depends on: each sample by itself; statistics of all samples.
    """
    return step('split', locals())


def mean(
    image: ImageLike,
    *,
    shape: Union[Literal["cross", "square3", "square5"], int] = "square3",
    weight: float = 1.0,
    rect: Optional[Rectangle] = None,
    mask: Optional[Union[ImageLike, Path]] = None,
    strength: float = 1.0,
    type: Any = None,
    progress: Progress = None,
    threads: int = 0,
) -> Image:
    """Smooth by the mean of the neighbourhood.

    Parameters
    ----------
    image : Image or array_like
        The image to work on.
    shape : {"cross", "square3", "square5"}, default "square3"
        Which neighbours count: 4 (cross), 8 (square3) or 20 (square5, without its corners).
    weight : float, default 1.0
        Weight of each neighbour in the mean; the sample itself has 1 [0 to 1e+06].
    rect : (left, top, right, bottom), optional
        Work inside this rectangle only; right and bottom are the first column and row outside [pixels].
        Without: the whole image.
    mask : Image, array_like or path, optional
        An image of one plane that is 0 where samples stay and 1 where they change. Without: they change
        everywhere.
    strength : float, default 1.0
        How much of the change is taken [0 to 1].
    type
        Another name for shape.
    progress : bool or callable, optional
        True shows a bar; else progress(stage, done, total).
    threads : int, default 0
        At most so many; 0: as many as there are processors.

    Returns
    -------
    image : Image
        The result.

    Raises
    ------
    ArgumentError
        A value or an image that it cannot be done with.
    FileError
        A file that cannot be read or written.

    Notes
    -----
    Weight 1 is the plain mean; below it the sample counts for more than its neighbours, which blurs less.

    A sample depends on: samples up to 1 pixel away.
    """
    return step('mean', locals())


def mean_keep_edges(
    image: ImageLike,
    *,
    shape: Union[Literal["cross", "square3", "square5"], int] = "square3",
    weight: float = 1.0,
    rect: Optional[Rectangle] = None,
    mask: Optional[Union[ImageLike, Path]] = None,
    strength: float = 1.0,
    type: Any = None,
    progress: Progress = None,
    threads: int = 0,
) -> Image:
    """Smooth flat areas by the mean, and leave edges as they are.

    Parameters
    ----------
    image : Image or array_like
        The image to work on.
    shape : {"cross", "square3", "square5"}, default "square3"
        Which neighbours count: 4 (cross), 8 (square3) or 20 (square5, without its corners).
    weight : float, default 1.0
        Weight of each neighbour in the mean; the sample itself has 1 [0 to 1e+06].
    rect : (left, top, right, bottom), optional
        Work inside this rectangle only; right and bottom are the first column and row outside [pixels].
        Without: the whole image.
    mask : Image, array_like or path, optional
        An image of one plane that is 0 where samples stay and 1 where they change. Without: they change
        everywhere.
    strength : float, default 1.0
        How much of the change is taken [0 to 1].
    type
        Another name for shape.
    progress : bool or callable, optional
        True shows a bar; else progress(stage, done, total).
    threads : int, default 0
        At most so many; 0: as many as there are processors.

    Returns
    -------
    image : Image
        The result.

    Raises
    ------
    ArgumentError
        A value or an image that it cannot be done with.
    FileError
        A file that cannot be read or written.

    Notes
    -----
    As mean, with the weight lowered to 0 where the sample differs from its four neighbours together by the
    range of the first plane's display levels. Levels that show the image well (auto-levels) suit it.

    A sample depends on: samples up to 1 pixel away; the display levels.
    """
    return step('mean-keep-edges', locals())


def median(
    image: ImageLike,
    *,
    shape: Union[Literal["cross", "square3", "square5"], int] = "square3",
    rect: Optional[Rectangle] = None,
    mask: Optional[Union[ImageLike, Path]] = None,
    strength: float = 1.0,
    type: Any = None,
    progress: Progress = None,
    threads: int = 0,
) -> Image:
    """Smooth by the median of the neighbourhood.

    Parameters
    ----------
    image : Image or array_like
        The image to work on.
    shape : {"cross", "square3", "square5"}, default "square3"
        Which neighbours count: 4 (cross), 8 (square3) or 20 (square5, without its corners).
    rect : (left, top, right, bottom), optional
        Work inside this rectangle only; right and bottom are the first column and row outside [pixels].
        Without: the whole image.
    mask : Image, array_like or path, optional
        An image of one plane that is 0 where samples stay and 1 where they change. Without: they change
        everywhere.
    strength : float, default 1.0
        How much of the change is taken [0 to 1].
    type
        Another name for shape.
    progress : bool or callable, optional
        True shows a bar; else progress(stage, done, total).
    threads : int, default 0
        At most so many; 0: as many as there are processors.

    Returns
    -------
    image : Image
        The result.

    Raises
    ------
    ArgumentError
        A value or an image that it cannot be done with.
    FileError
        A file that cannot be read or written.

    Notes
    -----
    Takes single odd samples out, hot pixels and cosmic rays, and keeps edges sharp.

    A sample depends on: samples up to 1 pixel away.
    """
    return step('median', locals())


def rank(
    image: ImageLike,
    *,
    shape: Union[Literal["cross", "square3", "square5"], int] = "square3",
    rank: int = 2,
    rect: Optional[Rectangle] = None,
    mask: Optional[Union[ImageLike, Path]] = None,
    strength: float = 1.0,
    type: Any = None,
    progress: Progress = None,
    threads: int = 0,
) -> Image:
    """Take the value of a rank in the neighbourhood.

    Parameters
    ----------
    image : Image or array_like
        The image to work on.
    shape : {"cross", "square3", "square5"}, default "square3"
        Which neighbours count: 4 (cross), 8 (square3) or 20 (square5, without its corners).
    rank : int, default 2
        Place in the ascending order, from 0 [0 to 20].
    rect : (left, top, right, bottom), optional
        Work inside this rectangle only; right and bottom are the first column and row outside [pixels].
        Without: the whole image.
    mask : Image, array_like or path, optional
        An image of one plane that is 0 where samples stay and 1 where they change. Without: they change
        everywhere.
    strength : float, default 1.0
        How much of the change is taken [0 to 1].
    type
        Another name for shape.
    progress : bool or callable, optional
        True shows a bar; else progress(stage, done, total).
    threads : int, default 0
        At most so many; 0: as many as there are processors.

    Returns
    -------
    image : Image
        The result.

    Raises
    ------
    ArgumentError
        A value or an image that it cannot be done with.
    FileError
        A file that cannot be read or written.

    Notes
    -----
    The samples of the shape are put into ascending order: rank 0 is the smallest, the middle one the
    median, the last one (4, 8 or 20 by shape) the largest.

    A sample depends on: samples up to 1 pixel away.
    """
    return step('rank', locals())


def minimum(
    image: ImageLike,
    *,
    shape: Union[Literal["cross", "square3", "square5"], int] = "square3",
    rect: Optional[Rectangle] = None,
    mask: Optional[Union[ImageLike, Path]] = None,
    strength: float = 1.0,
    type: Any = None,
    progress: Progress = None,
    threads: int = 0,
) -> Image:
    """Take the smallest sample of the neighbourhood.

    Parameters
    ----------
    image : Image or array_like
        The image to work on.
    shape : {"cross", "square3", "square5"}, default "square3"
        Which neighbours count: 4 (cross), 8 (square3) or 20 (square5, without its corners).
    rect : (left, top, right, bottom), optional
        Work inside this rectangle only; right and bottom are the first column and row outside [pixels].
        Without: the whole image.
    mask : Image, array_like or path, optional
        An image of one plane that is 0 where samples stay and 1 where they change. Without: they change
        everywhere.
    strength : float, default 1.0
        How much of the change is taken [0 to 1].
    type
        Another name for shape.
    progress : bool or callable, optional
        True shows a bar; else progress(stage, done, total).
    threads : int, default 0
        At most so many; 0: as many as there are processors.

    Returns
    -------
    image : Image
        The result.

    Raises
    ------
    ArgumentError
        A value or an image that it cannot be done with.
    FileError
        A file that cannot be read or written.

    Notes
    -----
    Shrinks what is bright: faint stars vanish.

    A sample depends on: samples up to 1 pixel away.
    """
    return step('minimum', locals())


def maximum(
    image: ImageLike,
    *,
    shape: Union[Literal["cross", "square3", "square5"], int] = "square3",
    rect: Optional[Rectangle] = None,
    mask: Optional[Union[ImageLike, Path]] = None,
    strength: float = 1.0,
    type: Any = None,
    progress: Progress = None,
    threads: int = 0,
) -> Image:
    """Take the largest sample of the neighbourhood.

    Parameters
    ----------
    image : Image or array_like
        The image to work on.
    shape : {"cross", "square3", "square5"}, default "square3"
        Which neighbours count: 4 (cross), 8 (square3) or 20 (square5, without its corners).
    rect : (left, top, right, bottom), optional
        Work inside this rectangle only; right and bottom are the first column and row outside [pixels].
        Without: the whole image.
    mask : Image, array_like or path, optional
        An image of one plane that is 0 where samples stay and 1 where they change. Without: they change
        everywhere.
    strength : float, default 1.0
        How much of the change is taken [0 to 1].
    type
        Another name for shape.
    progress : bool or callable, optional
        True shows a bar; else progress(stage, done, total).
    threads : int, default 0
        At most so many; 0: as many as there are processors.

    Returns
    -------
    image : Image
        The result.

    Raises
    ------
    ArgumentError
        A value or an image that it cannot be done with.
    FileError
        A file that cannot be read or written.

    Notes
    -----
    Grows what is bright.

    A sample depends on: samples up to 1 pixel away.
    """
    return step('maximum', locals())


def gaussian(
    image: ImageLike,
    *,
    sigma: float = 1.0,
    rect: Optional[Rectangle] = None,
    mask: Optional[Union[ImageLike, Path]] = None,
    strength: float = 1.0,
    progress: Progress = None,
    threads: int = 0,
) -> Image:
    """Smooth by a Gaussian.

    Parameters
    ----------
    image : Image or array_like
        The image to work on.
    sigma : float, default 1.0
        Standard deviation [0.1 to 5, pixels].
    rect : (left, top, right, bottom), optional
        Work inside this rectangle only; right and bottom are the first column and row outside [pixels].
        Without: the whole image.
    mask : Image, array_like or path, optional
        An image of one plane that is 0 where samples stay and 1 where they change. Without: they change
        everywhere.
    strength : float, default 1.0
        How much of the change is taken [0 to 1].
    progress : bool or callable, optional
        True shows a bar; else progress(stage, done, total).
    threads : int, default 0
        At most so many; 0: as many as there are processors.

    Returns
    -------
    image : Image
        The result.

    Raises
    ------
    ArgumentError
        A value or an image that it cannot be done with.
    FileError
        A file that cannot be read or written.

    Notes
    -----
    The Gaussian is cut off at twice its deviation. Stars become wider by it: their deviations add as
    squares.

    A sample depends on: samples up to 2 pixels away.
    """
    return step('gaussian', locals())


def star_sharpen(
    image: ImageLike,
    *,
    shape: Union[Literal["cross", "square3", "square5"], int] = "square3",
    rank: float = 2.0,
    threshold: float = 0.1,
    keep_peaks: bool = True,
    rect: Optional[Rectangle] = None,
    mask: Optional[Union[ImageLike, Path]] = None,
    strength: float = 1.0,
    type: Any = None,
    progress: Progress = None,
    threads: int = 0,
) -> Image:
    """Tighten stars by a low rank of the neighbourhood.

    Parameters
    ----------
    image : Image or array_like
        The image to work on.
    shape : {"cross", "square3", "square5"}, default "square3"
        Which neighbours count: 4 (cross), 8 (square3) or 20 (square5, without its corners).
    rank : float, default 2.0
        Place in the ascending order, from 0 [0 to 20].
    threshold : float, default 0.1
        Least difference that counts, as a part of the largest sample; 0: everywhere [0 to 1].
    keep_peaks : bool, default True
        Leave samples that are the largest of their neighbourhood.
    rect : (left, top, right, bottom), optional
        Work inside this rectangle only; right and bottom are the first column and row outside [pixels].
        Without: the whole image.
    mask : Image, array_like or path, optional
        An image of one plane that is 0 where samples stay and 1 where they change. Without: they change
        everywhere.
    strength : float, default 1.0
        How much of the change is taken [0 to 1].
    type
        Another name for shape.
    progress : bool or callable, optional
        True shows a bar; else progress(stage, done, total).
    threads : int, default 0
        At most so many; 0: as many as there are processors.

    Returns
    -------
    image : Image
        The result.

    Raises
    ------
    ArgumentError
        A value or an image that it cannot be done with.
    FileError
        A file that cannot be read or written.

    Notes
    -----
    A sample becomes the value of the rank, interpolated between whole ranks, where that differs from the
    largest sample of the neighbourhood by at least the threshold: on the slopes of stars. Low ranks tighten
    more.

    A sample depends on: samples up to 1 pixel away.
    """
    return step('star-sharpen', locals())


def sharpen(
    image: ImageLike,
    *,
    shape: Union[Literal["cross", "square3", "square5"], int] = "square3",
    strength: float = 1.0,
    rect: Optional[Rectangle] = None,
    mask: Optional[Union[ImageLike, Path]] = None,
    type: Any = None,
    progress: Progress = None,
    threads: int = 0,
) -> Image:
    """Sharpen by the difference from the neighbours.

    Parameters
    ----------
    image : Image or array_like
        The image to work on.
    shape : {"cross", "square3", "square5"}, default "square3"
        Which neighbours count: 4 (cross), 8 (square3) or 20 (square5, without its corners).
    strength : float, default 1.0
        0 changes nothing, 1 adds the whole difference from the neighbours [0 to 1.9].
    rect : (left, top, right, bottom), optional
        Work inside this rectangle only; right and bottom are the first column and row outside [pixels].
        Without: the whole image.
    mask : Image, array_like or path, optional
        An image of one plane that is 0 where samples stay and 1 where they change. Without: they change
        everywhere.
    type
        Another name for shape.
    progress : bool or callable, optional
        True shows a bar; else progress(stage, done, total).
    threads : int, default 0
        At most so many; 0: as many as there are processors.

    Returns
    -------
    image : Image
        The result.

    Raises
    ------
    ArgumentError
        A value or an image that it cannot be done with.
    FileError
        A file that cannot be read or written.

    Notes
    -----
    A sample c becomes (2 c - strength * m) / (2 - strength), with m the mean of its neighbours. Noise is
    sharpened too: calibrated, stacked frames gain most.

    A sample depends on: samples up to 1 pixel away.
    """
    return step('sharpen', locals())


def sharpen_edges(
    image: ImageLike,
    *,
    shape: Union[Literal["cross", "square3", "square5"], int] = "square3",
    strength: float = 1.0,
    rect: Optional[Rectangle] = None,
    mask: Optional[Union[ImageLike, Path]] = None,
    type: Any = None,
    progress: Progress = None,
    threads: int = 0,
) -> Image:
    """Sharpen edges, and leave flat areas as they are.

    Parameters
    ----------
    image : Image or array_like
        The image to work on.
    shape : {"cross", "square3", "square5"}, default "square3"
        Which neighbours count: 4 (cross), 8 (square3) or 20 (square5, without its corners).
    strength : float, default 1.0
        The strength at the strongest edges [0 to 1.9].
    rect : (left, top, right, bottom), optional
        Work inside this rectangle only; right and bottom are the first column and row outside [pixels].
        Without: the whole image.
    mask : Image, array_like or path, optional
        An image of one plane that is 0 where samples stay and 1 where they change. Without: they change
        everywhere.
    type
        Another name for shape.
    progress : bool or callable, optional
        True shows a bar; else progress(stage, done, total).
    threads : int, default 0
        At most so many; 0: as many as there are processors.

    Returns
    -------
    image : Image
        The result.

    Raises
    ------
    ArgumentError
        A value or an image that it cannot be done with.
    FileError
        A file that cannot be read or written.

    Notes
    -----
    As sharpen, with the strength times the square of the edge: 0 in flat areas, 1 where the sample differs
    from its four neighbours together by the range of the display levels or more. Levels that show the image
    well (auto-levels) suit it.

    A sample depends on: samples up to 1 pixel away; the display levels.
    """
    return step('sharpen-edges', locals())


def laplacian(
    image: ImageLike,
    *,
    shape: Union[Literal["cross", "square3", "weighted"], int] = "cross",
    rect: Optional[Rectangle] = None,
    mask: Optional[Union[ImageLike, Path]] = None,
    strength: float = 1.0,
    type: Any = None,
    progress: Progress = None,
    threads: int = 0,
) -> Image:
    """Turn the image into one of its edges.

    Parameters
    ----------
    image : Image or array_like
        The image to work on.
    shape : {"cross", "square3", "weighted"}, default "cross"
        Which neighbours count: 4 (cross), 8 (square3), or 4 twice less those at the corners (weighted).
    rect : (left, top, right, bottom), optional
        Work inside this rectangle only; right and bottom are the first column and row outside [pixels].
        Without: the whole image.
    mask : Image, array_like or path, optional
        An image of one plane that is 0 where samples stay and 1 where they change. Without: they change
        everywhere.
    strength : float, default 1.0
        How much of the change is taken [0 to 1].
    type
        Another name for shape.
    progress : bool or callable, optional
        True shows a bar; else progress(stage, done, total).
    threads : int, default 0
        At most so many; 0: as many as there are processors.

    Returns
    -------
    image : Image
        The result.

    Raises
    ------
    ArgumentError
        A value or an image that it cannot be done with.
    FileError
        A file that cannot be read or written.

    Notes
    -----
    How much a sample differs from its neighbours, regardless of the sign, above black. The display levels
    stay, black being that of the first plane.

    A sample depends on: samples up to 1 pixel away; the display levels.
    """
    return step('laplacian', locals())


def unsharp(
    image: ImageLike,
    *,
    amount: float = 1.0,
    shape: Union[Literal["cross", "square3", "square5"], int] = "square5",
    weight: float = 1.0,
    threshold: float = 0.0,
    rect: Optional[Rectangle] = None,
    mask: Optional[Union[ImageLike, Path]] = None,
    strength: float = 1.0,
    type: Any = None,
    progress: Progress = None,
    threads: int = 0,
) -> Image:
    """Sharpen by the difference from a blurred image.

    Parameters
    ----------
    image : Image or array_like
        The image to work on.
    amount : float, default 1.0
        How much of the difference is added [0 to 100].
    shape : {"cross", "square3", "square5"}, default "square5"
        Which neighbours count: 4 (cross), 8 (square3) or 20 (square5, without its corners).
    weight : float, default 1.0
        Weight of each neighbour in the mean; the sample itself has 1 [0 to 1e+06].
    threshold : float, default 0.0
        Contrast below which a sample stays, as a part of the sample; 0 sharpens all [0 to 1000].
    rect : (left, top, right, bottom), optional
        Work inside this rectangle only; right and bottom are the first column and row outside [pixels].
        Without: the whole image.
    mask : Image, array_like or path, optional
        An image of one plane that is 0 where samples stay and 1 where they change. Without: they change
        everywhere.
    strength : float, default 1.0
        How much of the change is taken [0 to 1].
    type
        Another name for shape.
    progress : bool or callable, optional
        True shows a bar; else progress(stage, done, total).
    threads : int, default 0
        At most so many; 0: as many as there are processors.

    Returns
    -------
    image : Image
        The result.

    Raises
    ------
    ArgumentError
        A value or an image that it cannot be done with.
    FileError
        A file that cannot be read or written.

    Notes
    -----
    Adds amount times the difference from the weighted mean of the neighbourhood. Samples that differ from
    its plain mean by a smaller part of themselves than the threshold stay.

    A sample depends on: samples up to 2 pixels away.
    """
    return step('unsharp', locals())


def lucy(
    image: ImageLike,
    *,
    sigma: Optional[float] = None,
    fwhm: Optional[Union[float, Literal["auto"]]] = None,
    gain: Optional[float] = None,
    read_noise: Optional[float] = None,
    iterations: int = 20,
    rect: Optional[Rectangle] = None,
    mask: Optional[Union[ImageLike, Path]] = None,
    strength: float = 1.0,
    progress: Progress = None,
    threads: int = 0,
) -> Image:
    """Sharpen by undoing the blur, after Richardson and Lucy.

    Parameters
    ----------
    image : Image or array_like
        The image to work on.
    sigma : float, optional
        How wide the blur is, as the standard deviation of a Gaussian [0.3 to 9, pixels]. Without: by
        fwhm.
    fwhm : float or {"auto"}, optional
        How wide the blur is, as the full width of a star at half its height [0.7 to 21.2, pixels].
        Without: auto: measured with the stars of the image.
    gain : float, optional
        Electrons that make one count [1e-06 to 1e+12, electrons per count]. Without: EGAIN of the
        header, else 1; times NCOMBINE.
    read_noise : float, optional
        Noise of reading out a pixel [0 to 1e+09, electrons]. Without: RDNOISE of the header, else 0;
        times the root of NCOMBINE.
    iterations : int, default 20
        Ends after so many, if it is not done before [1 to 10000].
    rect : (left, top, right, bottom), optional
        Work inside this rectangle only; right and bottom are the first column and row outside [pixels].
        Without: the whole image.
    mask : Image, array_like or path, optional
        An image of one plane that is 0 where samples stay and 1 where they change. Without: they change
        everywhere.
    strength : float, default 1.0
        How much of the change is taken [0 to 1].
    progress : bool or callable, optional
        True shows a bar; else progress(stage, done, total).
    threads : int, default 0
        At most so many; 0: as many as there are processors.

    Returns
    -------
    image : Image
        The result.

    Raises
    ------
    ArgumentError
        A value or an image that it cannot be done with.
    FileError
        A file that cannot be read or written.

    Notes
    -----
    Finds the image that, blurred, fits the samples best for the noise of photons and of reading out. It
    ends when the fit is as good as the noise allows (chi-square 1), or after the iterations; more of them
    make stars narrower, and noise coarser. Samples should be counts with any pedestal taken off; those far
    below 0 take no part. Of a mean of n frames, gain is n times that of the camera and the read-out noise
    the root of n times; NCOMBINE of the header is seen to.

    A sample depends on: the whole image.
    """
    return step('lucy', locals())


def maxent(
    image: ImageLike,
    *,
    sigma: Optional[float] = None,
    fwhm: Optional[Union[float, Literal["auto"]]] = None,
    noise: Optional[float] = None,
    iterations: int = 100,
    resample: bool = False,
    rect: Optional[Rectangle] = None,
    mask: Optional[Union[ImageLike, Path]] = None,
    strength: float = 1.0,
    progress: Progress = None,
    threads: int = 0,
) -> Image:
    """Undo the blur, with the smoothest image that fits.

    Parameters
    ----------
    image : Image or array_like
        The image to work on.
    sigma : float, optional
        How wide the blur is, as the standard deviation of a Gaussian [0.3 to 9, pixels]. Without: by
        fwhm.
    fwhm : float or {"auto"}, optional
        How wide the blur is, as the full width of a star at half its height [0.7 to 21.2, pixels].
        Without: auto: measured with the stars of the image.
    noise : float, optional
        Standard deviation of the noise [1e-30 to 1e+12, counts]. Without: measured from neighbouring
        samples.
    iterations : int, default 100
        Ends after so many, if it is not done before [1 to 10000].
    resample : bool, default False
        Keep samples in their places, and the reference pixel as it is.
    rect : (left, top, right, bottom), optional
        Work inside this rectangle only; right and bottom are the first column and row outside [pixels].
        Without: the whole image.
    mask : Image, array_like or path, optional
        An image of one plane that is 0 where samples stay and 1 where they change. Without: they change
        everywhere.
    strength : float, default 1.0
        How much of the change is taken [0 to 1].
    progress : bool or callable, optional
        True shows a bar; else progress(stage, done, total).
    threads : int, default 0
        At most so many; 0: as many as there are processors.

    Returns
    -------
    image : Image
        The result.

    Raises
    ------
    ArgumentError
        A value or an image that it cannot be done with.
    FileError
        A file that cannot be read or written.

    Notes
    -----
    Of all images above 0 that, blurred, agree with the samples to within the noise, it finds the one of
    greatest entropy: what the samples do not ask for stays even. The restored samples lie half a pixel to
    the left of and above those of the image; the reference pixel of world coordinates (CRPIX) follows, so
    that stars keep their right ascension and declination. With resample, with a mask or a strength below 1,
    and inside a rectangle, samples stay in their places instead.

    A sample depends on: the whole image.
    """
    return step('maxent', locals())


def wiener(
    image: ImageLike,
    *,
    sigma: Optional[float] = None,
    fwhm: Optional[Union[float, Literal["auto"]]] = None,
    noise: float = 0.01,
    rect: Optional[Rectangle] = None,
    mask: Optional[Union[ImageLike, Path]] = None,
    strength: float = 1.0,
    progress: Progress = None,
    threads: int = 0,
) -> Image:
    """Sharpen by undoing the blur, in one pass.

    Parameters
    ----------
    image : Image or array_like
        The image to work on.
    sigma : float, optional
        How wide the blur is, as the standard deviation of a Gaussian [0.3 to 9, pixels]. Without: by
        fwhm.
    fwhm : float or {"auto"}, optional
        How wide the blur is, as the full width of a star at half its height [0.7 to 21.2, pixels].
        Without: auto: measured with the stars of the image.
    noise : float, default 0.01
        Power of the noise, over that of the image; more is smoother [1e-09 to 1].
    rect : (left, top, right, bottom), optional
        Work inside this rectangle only; right and bottom are the first column and row outside [pixels].
        Without: the whole image.
    mask : Image, array_like or path, optional
        An image of one plane that is 0 where samples stay and 1 where they change. Without: they change
        everywhere.
    strength : float, default 1.0
        How much of the change is taken [0 to 1].
    progress : bool or callable, optional
        True shows a bar; else progress(stage, done, total).
    threads : int, default 0
        At most so many; 0: as many as there are processors.

    Returns
    -------
    image : Image
        The result.

    Raises
    ------
    ArgumentError
        A value or an image that it cannot be done with.
    FileError
        A file that cannot be read or written.

    Notes
    -----
    Divides the blur out, frequency by frequency, as far as the noise allows. The quickest way, but bright
    stars get dark rings and samples may fall below 0. The filter itself makes an image fainter, by about
    1000 sigma^2; this step gives the flux back. sigma is that of the blur.

    A sample depends on: the whole image.
    """
    return step('wiener', locals())


def ddp(
    image: ImageLike,
    *,
    offset: Optional[float] = None,
    weight: float = 1.0,
    plane: Literal["red", "green", "blue", "all"] = "all",
    rect: Optional[Rectangle] = None,
    mask: Optional[Union[ImageLike, Path]] = None,
    strength: float = 1.0,
    progress: Progress = None,
    threads: int = 0,
) -> Image:
    """Show bright cores and faint detail together, as film does.

    Parameters
    ----------
    image : Image or array_like
        The image to work on.
    offset : float, optional
        The smaller, the more bright areas are held back; above black [counts]. Without: what makes
        bright areas tend to white.
    weight : float, default 1.0
        Weight of each neighbour in the mean; the sample itself has 1 [0 to 1e+06].
    plane : {"red", "green", "blue", "all"}, default "all"
        Which plane of a colour image is blurred to divide all; colours stay.
    rect : (left, top, right, bottom), optional
        Work inside this rectangle only; right and bottom are the first column and row outside [pixels].
        Without: the whole image.
    mask : Image, array_like or path, optional
        An image of one plane that is 0 where samples stay and 1 where they change. Without: they change
        everywhere.
    strength : float, default 1.0
        How much of the change is taken [0 to 1].
    progress : bool or callable, optional
        True shows a bar; else progress(stage, done, total).
    threads : int, default 0
        At most so many; 0: as many as there are processors.

    Returns
    -------
    image : Image
        The result.

    Raises
    ------
    ArgumentError
        A value or an image that it cannot be done with.
    FileError
        A file that cannot be read or written.

    Notes
    -----
    Divides each sample by a blurred one plus the offset, both counted from black, as film saturates where
    it is bright. A flat area as bright as the mean stays; what is at or below black stays too. About blown
    cores samples keep half of their brightness at least, so that none is outlined in black. Without display
    levels, it chooses them from the sky first. The result is made for the levels that it has: show it with
    those.

    A sample depends on: samples up to 1 pixel away; the display levels; statistics of all samples.
    """
    return step('ddp', locals())


def background(
    image: ImageLike,
    *,
    mode: Literal["subtract", "divide"] = "subtract",
    model: Literal["polynomial", "spline", "mesh"] = "polynomial",
    degree: Optional[int] = None,
    model_file: Optional[Path] = None,
    mask: Optional[Union[ImageLike, Path]] = None,
    strength: float = 1.0,
    progress: Progress = None,
    threads: int = 0,
) -> Image:
    """Take gradients out of the sky.

    Parameters
    ----------
    image : Image or array_like
        The image to work on.
    mode : {"subtract", "divide"}, default "subtract"
        What is done with the model.
    model : {"polynomial", "spline", "mesh"}, default "polynomial"
        What the sky is made of.
    degree : int, optional
        Of the polynomial, also below the spline; a lower one where the sky is hidden [1 to 4]. Without:
        the lowest that the sky needs.
    model_file : path, optional
        An image to write: the sky that was taken off or divided out. Without: none is written.
    mask : Image, array_like or path, optional
        An image of one plane that is 0 where samples stay and 1 where they change. Without: they change
        everywhere.
    strength : float, default 1.0
        How much of the change is taken [0 to 1].
    progress : bool or callable, optional
        True shows a bar; else progress(stage, done, total).
    threads : int, default 0
        At most so many; 0: as many as there are processors.

    Returns
    -------
    image : Image
        The result.

    Raises
    ------
    ArgumentError
        A value or an image that it cannot be done with.
    FileError
        A file that cannot be read or written.

    Notes
    -----
    Measures the sky of each plane, takes it off or divides it out, and brings its median back. Stars are
    clipped off in cells of the frame, and cells that stand above their surroundings, as nebulae and
    galaxies make them, are left out: those more than 3 standard deviations of the darker ones from the
    model, or about which half of the cells are more than 0.75 above it, round after round. A polynomial is
    told by the rest of the frame and keeps the light of a nebula that fills half of it; spline follows what
    is left as well, and mesh all that is wider than a hundred pixels, nebulae too. Subtract what light
    adds, as the moon or a town; divide out what a flat should have. Cells of one value are no sky.

    A sample depends on: the whole image.
    """
    return step('background', locals())


def smooth_background(
    image: ImageLike,
    *,
    level: Optional[float] = None,
    shape: Union[Literal["cross", "square3", "square5"], int] = "square5",
    weight: float = 1.0,
    rect: Optional[Rectangle] = None,
    mask: Optional[Union[ImageLike, Path]] = None,
    strength: float = 1.0,
    type: Any = None,
    progress: Progress = None,
    threads: int = 0,
) -> Image:
    """Smooth the sky and keep what is brighter.

    Parameters
    ----------
    image : Image or array_like
        The image to work on.
    level : float, optional
        The sample up to which is smoothed [counts]. Without: 3 standard deviations above the sky.
    shape : {"cross", "square3", "square5"}, default "square5"
        Which neighbours count: 4 (cross), 8 (square3) or 20 (square5, without its corners).
    weight : float, default 1.0
        Weight of each neighbour in the mean; the sample itself has 1 [0 to 1e+06].
    rect : (left, top, right, bottom), optional
        Work inside this rectangle only; right and bottom are the first column and row outside [pixels].
        Without: the whole image.
    mask : Image, array_like or path, optional
        An image of one plane that is 0 where samples stay and 1 where they change. Without: they change
        everywhere.
    strength : float, default 1.0
        How much of the change is taken [0 to 1].
    type
        Another name for shape.
    progress : bool or callable, optional
        True shows a bar; else progress(stage, done, total).
    threads : int, default 0
        At most so many; 0: as many as there are processors.

    Returns
    -------
    image : Image
        The result.

    Raises
    ------
    ArgumentError
        A value or an image that it cannot be done with.
    FileError
        A file that cannot be read or written.

    Notes
    -----
    Samples up to the level become the weighted mean of their neighbourhood. Smoothing fades out below the
    level, over a twentieth of the range of the display levels. A colour image is judged by its brightness.
    Without display levels, it chooses them from the sky first.

    A sample depends on: samples up to 2 pixels away; the display levels; statistics of all samples.
    """
    return step('smooth-background', locals())


def posterize(
    image: ImageLike,
    *,
    steps: int = 8,
    rect: Optional[Rectangle] = None,
    mask: Optional[Union[ImageLike, Path]] = None,
    strength: float = 1.0,
    progress: Progress = None,
    threads: int = 0,
) -> Image:
    """Cut brightness into a few steps with smooth edges.

    Parameters
    ----------
    image : Image or array_like
        The image to work on.
    steps : int, default 8
        Number of steps above black [1 to 65535].
    rect : (left, top, right, bottom), optional
        Work inside this rectangle only; right and bottom are the first column and row outside [pixels].
        Without: the whole image.
    mask : Image, array_like or path, optional
        An image of one plane that is 0 where samples stay and 1 where they change. Without: they change
        everywhere.
    strength : float, default 1.0
        How much of the change is taken [0 to 1].
    progress : bool or callable, optional
        True shows a bar; else progress(stage, done, total).
    threads : int, default 0
        At most so many; 0: as many as there are processors.

    Returns
    -------
    image : Image
        The result.

    Raises
    ------
    ArgumentError
        A value or an image that it cannot be done with.
    FileError
        A file that cannot be read or written.

    Notes
    -----
    Between black and white of the display levels; colours become grey. Without display levels, it chooses
    them from the sky first. Noise makes edges rough: smooth it before.

    A sample depends on: samples up to 1 pixel away; the display levels; its place in the image.
    """
    return step('posterize', locals())


def hot_pixels(
    image: ImageLike,
    *,
    shape: Union[Literal["cross", "square3", "square5"], int] = "square3",
    threshold: float = 0.5,
    hot: bool = True,
    cool: bool = True,
    rect: Optional[Rectangle] = None,
    mask: Optional[Union[ImageLike, Path]] = None,
    strength: float = 1.0,
    type: Any = None,
    progress: Progress = None,
    threads: int = 0,
) -> Image:
    """Replace pixels that stand out by the median about them.

    Parameters
    ----------
    image : Image or array_like
        The image to work on.
    shape : {"cross", "square3", "square5"}, default "square3"
        Which neighbours count: 4 (cross), 8 (square3) or 20 (square5, without its corners).
    threshold : float, default 0.5
        Contrast above which a pixel is replaced; 0.5: twice the median or more [0 to 1000].
    hot : bool, default True
        Replace pixels above the median.
    cool : bool, default True
        Replace pixels below the median.
    rect : (left, top, right, bottom), optional
        Work inside this rectangle only; right and bottom are the first column and row outside [pixels].
        Without: the whole image.
    mask : Image, array_like or path, optional
        An image of one plane that is 0 where samples stay and 1 where they change. Without: they change
        everywhere.
    strength : float, default 1.0
        How much of the change is taken [0 to 1].
    type
        Another name for shape.
    progress : bool or callable, optional
        True shows a bar; else progress(stage, done, total).
    threads : int, default 0
        At most so many; 0: as many as there are processors.

    Returns
    -------
    image : Image
        The result.

    Raises
    ------
    ArgumentError
        A value or an image that it cannot be done with.
    FileError
        A file that cannot be read or written.

    Notes
    -----
    A sample c is replaced by the median m of its neighbourhood where |m / c - 1| is above the threshold.
    The bias counts too: a frame that it was subtracted from needs a higher threshold. Sharp stars are in
    danger below 0.4.

    A sample depends on: samples up to 1 pixel away.
    """
    return step('hot-pixels', locals())


def cosmic_rays(
    image: ImageLike,
    *,
    sigma: float = 4.5,
    fraction: float = 0.3,
    limit: float = 5.0,
    gain: Optional[float] = None,
    read_noise: Optional[float] = None,
    iterations: int = 4,
    mask_file: Optional[Path] = None,
    mask: Optional[Union[ImageLike, Path]] = None,
    strength: float = 1.0,
    progress: Progress = None,
    threads: int = 0,
) -> Image:
    """Take cosmic rays out of a single frame.

    Parameters
    ----------
    image : Image or array_like
        The image to work on.
    sigma : float, default 4.5
        How far a hit stands out [1 to 1000, standard deviations of the noise].
    fraction : float, default 0.3
        Part of sigma that suffices beside a hit [0 to 1].
    limit : float, default 5.0
        How many times sharper a hit is than what lies beneath it [0 to 1000].
    gain : float, optional
        Electrons that make one count [1e-06 to 1e+12, electrons per count]. Without: EGAIN of the
        header times NCOMBINE, else by the sky: its noise is that of its light.
    read_noise : float, optional
        Noise of reading out a pixel, of a frame whose counts are light alone; needs gain [0 to 1e+09,
        electrons]. Without: the noise of the sky is measured.
    iterations : int, default 4
        Most rounds, each of which may uncover more [1 to 20].
    mask_file : path, optional
        An image to write, 1 where a cosmic ray has hit and 0 elsewhere. Without: none is written.
    mask : Image, array_like or path, optional
        An image of one plane that is 0 where samples stay and 1 where they change. Without: they change
        everywhere.
    strength : float, default 1.0
        How much of the change is taken [0 to 1].
    progress : bool or callable, optional
        True shows a bar; else progress(stage, done, total).
    threads : int, default 0
        At most so many; 0: as many as there are processors.

    Returns
    -------
    image : Image
        The result.

    Raises
    ------
    ArgumentError
        A value or an image that it cannot be done with.
    FileError
        A file that cannot be read or written.

    Notes
    -----
    Finds samples whose edges are sharper than those of anything that comes through the optics, and gives
    them the median of those about them. The frame must be as the camera took it, calibrated but not
    resized, turned or smoothed; of a filter mosaic `stack --cosmic` takes each colour by itself. A lower
    sigma finds fainter hits, a higher limit spares the cores of stars that cover few pixels. Saturated
    stars stay.

    A sample depends on: the whole image.
    """
    return step('cosmic-rays', locals())


def fill(
    image: ImageLike,
    *,
    with_: Literal["neighbours", "sky", "value"] = "neighbours",
    value: Optional[float] = None,
    mask: Optional[Union[ImageLike, Path]] = None,
    strength: float = 1.0,
    progress: Progress = None,
    threads: int = 0,
) -> Image:
    """Give values to undefined samples.

    Parameters
    ----------
    image : Image or array_like
        The image to work on.
    with_ : {"neighbours", "sky", "value"}, default "neighbours"
        Where the values come from.
    value : float, optional
        The value, in every plane [counts]. Without: needed with with=value alone.
    mask : Image, array_like or path, optional
        An image of one plane that is 0 where samples stay and 1 where they change. Without: they change
        everywhere.
    strength : float, default 1.0
        How much of the change is taken [0 to 1].
    progress : bool or callable, optional
        True shows a bar; else progress(stage, done, total).
    threads : int, default 0
        At most so many; 0: as many as there are processors.

    Returns
    -------
    image : Image
        The result.

    Raises
    ------
    ArgumentError
        A value or an image that it cannot be done with.
    FileError
        A file that cannot be read or written.

    Notes
    -----
    Undefined are blank samples, NaN and infinities; all others stay as they are. From neighbours a hole
    closes ring by ring, each sample being the mean of those defined among the eight about it, which count
    by the inverse square of their distance. The sky is the median of the plane.

    A sample depends on: the whole image.
    """
    return step('fill', locals())


def contour(
    image: ImageLike,
    *,
    levels: int = 8,
    overlay: bool = True,
    rect: Optional[Rectangle] = None,
    mask: Optional[Union[ImageLike, Path]] = None,
    strength: float = 1.0,
    progress: Progress = None,
    threads: int = 0,
) -> Image:
    """Draw isophotes: lines of equal brightness.

    Parameters
    ----------
    image : Image or array_like
        The image to work on.
    levels : int, default 8
        Number of lines between black and white [1 to 65535].
    overlay : bool, default True
        Draw on the image; otherwise white on black.
    rect : (left, top, right, bottom), optional
        Work inside this rectangle only; right and bottom are the first column and row outside [pixels].
        Without: the whole image.
    mask : Image, array_like or path, optional
        An image of one plane that is 0 where samples stay and 1 where they change. Without: they change
        everywhere.
    strength : float, default 1.0
        How much of the change is taken [0 to 1].
    progress : bool or callable, optional
        True shows a bar; else progress(stage, done, total).
    threads : int, default 0
        At most so many; 0: as many as there are processors.

    Returns
    -------
    image : Image
        The result.

    Raises
    ------
    ArgumentError
        A value or an image that it cannot be done with.
    FileError
        A file that cannot be read or written.

    Notes
    -----
    At levels spaced evenly between black and white of the display levels. Without display levels, it
    chooses them from the sky first. Noise makes lines rough: smooth it before.

    A sample depends on: samples up to 1 pixel away; the display levels.
    """
    return step('contour', locals())


def star_mask(
    image: ImageLike,
    *,
    sigmas: float = 5.0,
    limit: float = 1.0,
    grow: float = 1.0,
    soft: float = 3.0,
    min: Optional[float] = None,
    max: Optional[float] = None,
    invert: bool = False,
    plane: Optional[int] = None,
    progress: Progress = None,
    threads: int = 0,
) -> Image:
    """Make a mask that is 1 on the stars and 0 elsewhere.

    Parameters
    ----------
    image : Image or array_like
        The image to work on.
    sigmas : float, default 5.0
        How far a star rises above the sky, in its standard deviations [1 to 1000].
    limit : float, default 1.0
        Where the light of a star ends, in standard deviations of the sky [0.05 to 1000].
    grow : float, default 1.0
        Covers so much more about each star; below 0 less [-100 to 100, pixels].
    soft : float, default 3.0
        Over which the edge fades [0 to 100, pixels].
    min : float, optional
        The least star, by the width of what it covers [0 to 1000, pixels]. Without: none is too small.
    max : float, optional
        The largest star, by the same [0 to 1000, pixels]. Without: none is too large.
    invert : bool, default False
        0 on the stars and 1 elsewhere.
    plane : int, optional
        The plane in which stars are looked for: 0 red or the only one, 1 green, 2 blue [0 to 2].
        Without: every plane.
    progress : bool or callable, optional
        True shows a bar; else progress(stage, done, total).
    threads : int, default 0
        At most so many; 0: as many as there are processors.

    Returns
    -------
    image : Image
        The result.

    Raises
    ------
    ArgumentError
        A value or an image that it cannot be done with.
    FileError
        A file that cannot be read or written.

    Notes
    -----
    Each star is covered out to where its light, ring by ring, is lost in the noise or in what it stands on:
    so bright stars are covered further out than faint ones, and saturated ones with their halos and trails.
    Galaxies and hot pixels are no stars. The mask has the size of the image; other steps take it by
    mask=FILE. With invert=yes they work beside the stars.

    A sample depends on: the whole image.
    """
    return step('star-mask', locals())


def draw_line(
    image: ImageLike,
    *,
    x1: float,
    y1: float,
    x2: float,
    y2: float,
    thickness: float = 1.0,
    value: float = 255.0,
    units: Literal["display", "raw"] = "display",
    plane: Optional[int] = None,
    rect: Optional[Rectangle] = None,
    mask: Optional[Union[ImageLike, Path]] = None,
    strength: float = 1.0,
    progress: Progress = None,
    threads: int = 0,
) -> Image:
    """Draw a straight line.

    Parameters
    ----------
    image : Image or array_like
        The image to work on.
    x1 : float
        Column of one end [pixels, 0 is the middle of the first].
    y1 : float
        Row of one end [pixels, 0 is the middle of the first].
    x2 : float
        Column of the other end [pixels, 0 is the middle of the first].
    y2 : float
        Row of the other end [pixels, 0 is the middle of the first].
    thickness : float, default 1.0
        Width of the pen [0.1 to 10000, pixels].
    value : float, default 255.0
        What covered samples become.
    units : {"display", "raw"}, default "display"
        The scale of value: display, black 0 and white 255; or raw, the sample itself.
    plane : int, optional
        The plane to draw on: 0 red or the only one, 1 green, 2 blue [0 to 2]. Without: every plane.
    rect : (left, top, right, bottom), optional
        Work inside this rectangle only; right and bottom are the first column and row outside [pixels].
        Without: the whole image.
    mask : Image, array_like or path, optional
        An image of one plane that is 0 where samples stay and 1 where they change. Without: they change
        everywhere.
    strength : float, default 1.0
        How much of the change is taken [0 to 1].
    progress : bool or callable, optional
        True shows a bar; else progress(stage, done, total).
    threads : int, default 0
        At most so many; 0: as many as there are processors.

    Returns
    -------
    image : Image
        The result.

    Raises
    ------
    ArgumentError
        A value or an image that it cannot be done with.
    FileError
        A file that cannot be read or written.

    Notes
    -----
    The line has round ends; equal ends make a dot. What lies outside of the image is left out. Edges are
    smooth: a sample that is partly covered becomes a mean. Undefined samples are replaced where half of
    them or more is covered. The display levels stay. Without them, it chooses them from the sky first, for
    display values. For a colour, draw on each plane with a value of its own.

    A sample depends on: each sample by itself; the display levels; its place in the image.
    """
    return step('draw-line', locals())


def draw_text(
    image: ImageLike,
    *,
    text: str,
    x: float,
    y: float,
    height: float = 16.0,
    angle: float = 0.0,
    align: Literal["left", "centre", "right"] = "left",
    thickness: Optional[float] = None,
    value: float = 255.0,
    units: Literal["display", "raw"] = "display",
    plane: Optional[int] = None,
    rect: Optional[Rectangle] = None,
    mask: Optional[Union[ImageLike, Path]] = None,
    strength: float = 1.0,
    progress: Progress = None,
    threads: int = 0,
) -> Image:
    """Write a line of text.

    Parameters
    ----------
    image : Image or array_like
        The image to work on.
    text : str
        What to write.
    x : float
        Column of the point that the text is put at [pixels, 0 is the middle of the first].
    y : float
        Row of the line that the letters stand on [pixels, 0 is the middle of the first].
    height : float, default 16.0
        Height of capitals [1 to 10000, pixels].
    angle : float, default 0.0
        Turns the text about its point, clockwise [-360 to 360, degrees].
    align : {"left", "centre", "right"}, default "left"
        Which part of the text is put at its point.
    thickness : float, optional
        Width of the pen [0.1 to 10000, pixels]. Without: an eighth of the height.
    value : float, default 255.0
        What covered samples become.
    units : {"display", "raw"}, default "display"
        The scale of value: display, black 0 and white 255; or raw, the sample itself.
    plane : int, optional
        The plane to draw on: 0 red or the only one, 1 green, 2 blue [0 to 2]. Without: every plane.
    rect : (left, top, right, bottom), optional
        Work inside this rectangle only; right and bottom are the first column and row outside [pixels].
        Without: the whole image.
    mask : Image, array_like or path, optional
        An image of one plane that is 0 where samples stay and 1 where they change. Without: they change
        everywhere.
    strength : float, default 1.0
        How much of the change is taken [0 to 1].
    progress : bool or callable, optional
        True shows a bar; else progress(stage, done, total).
    threads : int, default 0
        At most so many; 0: as many as there are processors.

    Returns
    -------
    image : Image
        The result.

    Raises
    ------
    ArgumentError
        A value or an image that it cannot be done with.
    FileError
        A file that cannot be read or written.

    Notes
    -----
    The text reads upright on the screen, in whichever order the rows are. A comma within it is written
    twice. What lies outside of the image is left out. Edges are smooth: a sample that is partly covered
    becomes a mean. Undefined samples are replaced where half of them or more is covered. The display levels
    stay. Without them, it chooses them from the sky first, for display values. For a colour, draw on each
    plane with a value of its own.

    A sample depends on: each sample by itself; the display levels; its place in the image.
    """
    return step('draw-text', locals())


def flip(
    image: ImageLike,
    *,
    direction: Literal["horizontal", "vertical"],
    progress: Progress = None,
    threads: int = 0,
) -> Image:
    """Mirror the image.

    Parameters
    ----------
    image : Image or array_like
        The image to work on.
    direction : {"horizontal", "vertical"}
        Horizontal exchanges left and right, vertical top and bottom.
    progress : bool or callable, optional
        True shows a bar; else progress(stage, done, total).
    threads : int, default 0
        At most so many; 0: as many as there are processors.

    Returns
    -------
    image : Image
        The result.

    Raises
    ------
    ArgumentError
        A value or an image that it cannot be done with.
    FileError
        A file that cannot be read or written.

    Notes
    -----
    Samples do not change. World coordinates follow. Cards that describe a colour filter mosaic follow.

    A sample depends on: samples of other places.
    """
    return step('flip', locals())


def rotate(
    image: ImageLike,
    *,
    angle: float,
    expand: bool = False,
    background: Optional[float] = None,
    progress: Progress = None,
    threads: int = 0,
) -> Image:
    """Turn the image by an angle.

    Parameters
    ----------
    image : Image or array_like
        The image to work on.
    angle : float
        Clockwise on the screen [-360 to 360, degrees].
    expand : bool, default False
        Enlarge the canvas, so that no corner is cut off.
    background : float, optional
        The sample where the image leaves the canvas free [counts]. Without: the level min of each
        plane.
    progress : bool or callable, optional
        True shows a bar; else progress(stage, done, total).
    threads : int, default 0
        At most so many; 0: as many as there are processors.

    Returns
    -------
    image : Image
        The result.

    Raises
    ------
    ArgumentError
        A value or an image that it cannot be done with.
    FileError
        A file that cannot be read or written.

    Notes
    -----
    Bilinear between samples, about the middle of the image. Screens show the first row where ROWORDER says,
    at the bottom when it says nothing. World coordinates follow to the half pixel. Samples of a colour
    filter mosaic are mixed: the cards that describe it are taken away.

    A sample depends on: samples of other places; the display levels.
    """
    return step('rotate', locals())


def rotate90(
    image: ImageLike,
    *,
    direction: Literal["clockwise", "anticlockwise"] = "clockwise",
    progress: Progress = None,
    threads: int = 0,
) -> Image:
    """Turn the image by a quarter.

    Parameters
    ----------
    image : Image or array_like
        The image to work on.
    direction : {"clockwise", "anticlockwise"}, default "clockwise"
        Which way, on the screen.
    progress : bool or callable, optional
        True shows a bar; else progress(stage, done, total).
    threads : int, default 0
        At most so many; 0: as many as there are processors.

    Returns
    -------
    image : Image
        The result.

    Raises
    ------
    ArgumentError
        A value or an image that it cannot be done with.
    FileError
        A file that cannot be read or written.

    Notes
    -----
    Samples do not change. Screens show the first row where ROWORDER says, at the bottom when it says
    nothing. World coordinates follow, of pictures that are not square too. Cards that describe a colour
    filter mosaic follow.

    A sample depends on: samples of other places.
    """
    return step('rotate90', locals())


def rotate180(
    image: ImageLike,
    *,
    progress: Progress = None,
    threads: int = 0,
) -> Image:
    """Turn the image upside down.

    Parameters
    ----------
    image : Image or array_like
        The image to work on.
    progress : bool or callable, optional
        True shows a bar; else progress(stage, done, total).
    threads : int, default 0
        At most so many; 0: as many as there are processors.

    Returns
    -------
    image : Image
        The result.

    Raises
    ------
    ArgumentError
        A value or an image that it cannot be done with.
    FileError
        A file that cannot be read or written.

    Notes
    -----
    Samples do not change. World coordinates follow, of pictures that are not square too. Cards that
    describe a colour filter mosaic follow.

    A sample depends on: samples of other places.
    """
    return step('rotate180', locals())


def resize(
    image: ImageLike,
    *,
    width: Optional[int] = None,
    height: Optional[int] = None,
    factor: Optional[float] = None,
    progress: Progress = None,
    threads: int = 0,
) -> Image:
    """Enlarge or reduce the image.

    Parameters
    ----------
    image : Image or array_like
        The image to work on.
    width : int, optional
        The new width [1 to 1e+06, pixels]. Without: in proportion to the height.
    height : int, optional
        The new height [1 to 1e+06, pixels]. Without: in proportion to the width.
    factor : float, optional
        The new size in place of width and height [1e-06 to 1000, times the old]. Without: width and
        height.
    progress : bool or callable, optional
        True shows a bar; else progress(stage, done, total).
    threads : int, default 0
        At most so many; 0: as many as there are processors.

    Returns
    -------
    image : Image
        The result.

    Raises
    ------
    ArgumentError
        A value or an image that it cannot be done with.
    FileError
        A file that cannot be read or written.

    Notes
    -----
    Interpolates between samples, with the first ones of old and new image in one place. Nothing is
    averaged: bin first to reduce an image by much. World coordinates follow, to the half pixel. Samples of
    a colour filter mosaic are mixed: the cards that describe it are taken away.

    A sample depends on: samples of other places.
    """
    return step('resize', locals())


def bin(
    image: ImageLike,
    *,
    x: int = 2,
    y: Optional[int] = None,
    keep_partial: bool = False,
    scale_levels: bool = True,
    progress: Progress = None,
    threads: int = 0,
) -> Image:
    """Add blocks of pixels up into one.

    Parameters
    ----------
    image : Image or array_like
        The image to work on.
    x : int, default 2
        Columns that become one [1 to 1000, pixels].
    y : int, optional
        Rows that become one [1 to 1000, pixels]. Without: as many as columns.
    keep_partial : bool, default False
        Keep blocks that the right and last edge cut, as sums of what is there.
    scale_levels : bool, default True
        Multiply the display levels, so that the image looks as before.
    progress : bool or callable, optional
        True shows a bar; else progress(stage, done, total).
    threads : int, default 0
        At most so many; 0: as many as there are processors.

    Returns
    -------
    image : Image
        The result.

    Raises
    ------
    ArgumentError
        A value or an image that it cannot be done with.
    FileError
        A file that cannot be read or written.

    Notes
    -----
    The result is the sum of a block, not its mean. World coordinates follow. XBINNING, YBINNING, XPIXSZ and
    YPIXSZ are multiplied. Samples of a colour filter mosaic are mixed: the cards that describe it are taken
    away.

    A sample depends on: samples of other places.
    """
    return step('bin', locals())


def canvas(
    image: ImageLike,
    *,
    width: Optional[int] = None,
    height: Optional[int] = None,
    anchor: Literal["top-left", "top", "top-right", "left", "centre", "right", "bottom-left", "bottom", "bottom-right"] = "centre",
    background: float = 0.0,
    progress: Progress = None,
    threads: int = 0,
) -> Image:
    """Cut the image or give it a border, without resampling.

    Parameters
    ----------
    image : Image or array_like
        The image to work on.
    width : int, optional
        The new width [1 to 1e+06, pixels]. Without: the width stays.
    height : int, optional
        The new height [1 to 1e+06, pixels]. Without: the height stays.
    anchor : {"top-left", "top", "top-right", "left", "centre", "right", "bottom-left", "bottom", "bottom-right"}, default "centre"
        Where the picture lies on the canvas, as the screen shows it.
    background : float, default 0.0
        What the border shows: 0 black, 255 white [0 to 255, display value].
    progress : bool or callable, optional
        True shows a bar; else progress(stage, done, total).
    threads : int, default 0
        At most so many; 0: as many as there are processors.

    Returns
    -------
    image : Image
        The result.

    Raises
    ------
    ArgumentError
        A value or an image that it cannot be done with.
    FileError
        A file that cannot be read or written.

    Notes
    -----
    The border has one brightness on the screen, counted by the levels of the first plane. Screens show the
    first row where ROWORDER says, at the bottom when it says nothing. World coordinates follow. Cards that
    describe a colour filter mosaic follow.

    A sample depends on: samples of other places; the display levels.
    """
    return step('canvas', locals())


def crop(
    image: ImageLike,
    *,
    rect: Rectangle,
    progress: Progress = None,
    threads: int = 0,
) -> Image:
    """Keep a rectangle of the image.

    Parameters
    ----------
    image : Image or array_like
        The image to work on.
    rect : (left, top, right, bottom)
        What is kept; right and bottom are the first column and row outside [pixels].
    progress : bool or callable, optional
        True shows a bar; else progress(stage, done, total).
    threads : int, default 0
        At most so many; 0: as many as there are processors.

    Returns
    -------
    image : Image
        The result.

    Raises
    ------
    ArgumentError
        A value or an image that it cannot be done with.
    FileError
        A file that cannot be read or written.

    Notes
    -----
    Rows count in the file's order. Samples do not change. World coordinates follow. Cards that describe a
    colour filter mosaic follow.

    A sample depends on: samples of other places.
    """
    return step('crop', locals())


def scroll(
    image: ImageLike,
    *,
    x: int = 0,
    y: int = 0,
    progress: Progress = None,
    threads: int = 0,
) -> Image:
    """Shift the image in a circle.

    Parameters
    ----------
    image : Image or array_like
        The image to work on.
    x : int, default 0
        Columns to the right [-1e+06 to 1e+06, pixels].
    y : int, default 0
        Rows, in the file's order, towards the last [-1e+06 to 1e+06, pixels].
    progress : bool or callable, optional
        True shows a bar; else progress(stage, done, total).
    threads : int, default 0
        At most so many; 0: as many as there are processors.

    Returns
    -------
    image : Image
        The result.

    Raises
    ------
    ArgumentError
        A value or an image that it cannot be done with.
    FileError
        A file that cannot be read or written.

    Notes
    -----
    What leaves the image on one side comes in on the other. World coordinates follow. They are right for
    the larger part of the picture, on either axis. Cards that describe a colour filter mosaic follow.

    A sample depends on: samples of other places.
    """
    return step('scroll', locals())


def expand(
    image: ImageLike,
    *,
    x: int = 2,
    y: Optional[int] = None,
    progress: Progress = None,
    threads: int = 0,
) -> Image:
    """Enlarge the image by whole factors.

    Parameters
    ----------
    image : Image or array_like
        The image to work on.
    x : int, default 2
        Columns that one becomes [1 to 1000, pixels].
    y : int, optional
        Rows that one becomes [1 to 1000, pixels]. Without: as many as columns.
    progress : bool or callable, optional
        True shows a bar; else progress(stage, done, total).
    threads : int, default 0
        At most so many; 0: as many as there are processors.

    Returns
    -------
    image : Image
        The result.

    Raises
    ------
    ArgumentError
        A value or an image that it cannot be done with.
    FileError
        A file that cannot be read or written.

    Notes
    -----
    Every sample becomes a block of equal ones. World coordinates follow. Cards that describe a colour
    filter mosaic are taken away.

    A sample depends on: samples of other places.
    """
    return step('expand', locals())


def composite(
    base: ImageLike,
    overlay: ImageLike,
    *,
    mode: Literal["sum", "mean", "blend", "difference", "product", "quotient", "absdiff", "max", "min", "desaturate"],
    ratio: Optional[float] = None,
    display: bool = False,
    clamp: bool = False,
    fraction: float = 0.95,
    radius: int = 0,
    rect: Optional[Rectangle] = None,
    align: Optional[Literal["none", "points"]] = None,
    points: Optional[Union[Sequence[float], Sequence[Tuple[float, float]]]] = None,
    overlay_points: Optional[Union[Sequence[float], Sequence[Tuple[float, float]]]] = None,
    box: int = 21,
    dx: float = 0.0,
    dy: float = 0.0,
    angle: float = 0.0,
    full: bool = False,
    progress: Progress = None,
    threads: int = 0,
) -> Any:
    """Combine two images, pixel by pixel.

    Parameters
    ----------
    base : Image or array_like
        The image that the other is placed on.
    overlay : Image or array_like
        The image that is placed on it.
    mode : {"sum", "mean", "blend", "difference", "product", "quotient", "absdiff", "max", "min", "desaturate"}
        How values are combined.
    ratio : float, optional
        Blend: weight of OVERLAY, 0 to 1; desaturate: exposure of BASE over that of OVERLAY [0 to
        1e+06]. Without: 0.5; desaturate needs it.
    display : bool, default False
        Combine what the display levels show, 0 to 255, instead of the samples as they are.
    clamp : bool, default False
        Difference of colour images: negative ones become 0.
    fraction : float, default 0.95
        Desaturate: from which part of the maximum on a sample is saturated [0 to 1].
    radius : int, default 0
        Desaturate: look for saturation as far around a pixel [0 to 2, pixels].
    rect : (left, top, right, bottom), optional
        Work inside this rectangle only; right and bottom are the first column and row outside [pixels].
        Without: the whole image.
    align : {"none", "points"}, optional
        Points: find shift and turn from stars. Without: points where stars are given.
    points : sequence of float, optional
        Roughly where one star, or two, are in BASE [pixels]. Without: none.
    overlay_points : sequence of float, optional
        Roughly where the same stars are in OVERLAY [pixels]. Without: none.
    box : int, default 21
        Side of the square in which a star's centre is measured [5 to 255, pixels].
    dx : float, default 0.0
        Shift to the right, on top of what stars say [-1e+06 to 1e+06, pixels].
    dy : float, default 0.0
        Shift downwards, on top of what stars say [-1e+06 to 1e+06, pixels].
    angle : float, default 0.0
        Turn, clockwise where the first row is the top, on top of what stars say [-360 to 360, degrees].
    full : bool, default False
        Return all outputs, as a named tuple.
    progress : bool or callable, optional
        True shows a bar; else progress(stage, done, total).
    threads : int, default 0
        At most so many; 0: as many as there are processors.

    Returns
    -------
    image : Image
        The result.
    fit : dict
        Where the second image lies on the first: dx, dy, angle; and by how many stars it is known.
    The first one; with full=True a named tuple of all.

    Raises
    ------
    ArgumentError
        A value or an image that it cannot be done with.
    FileError
        A file that cannot be read or written.

    Notes
    -----
    The result has the size, planes and header of BASE. OVERLAY may have any size; of a colour one a
    monochrome BASE gets the brightness. Without stars the turn is about the middle of OVERLAY, with stars
    about the first. Pixels beyond OVERLAY become undefined. Two stars give the turn as exactly as their
    centres are measured.

    A sample depends on: samples of other places; the display levels; statistics of all samples; its place in the image.
    """
    return several('composite', ('base', 'overlay'), {'image': 'image', 'fit': 'numbers'}, locals())


def mosaic(
    first: ImageLike,
    second: ImageLike,
    *,
    mode: Literal["over", "key", "lighter", "darker", "under"] = "over",
    key: Optional[Union[Sequence[float], Sequence[Tuple[float, float]]]] = None,
    average: bool = False,
    display: bool = False,
    background: Optional[float] = None,
    align: Optional[Literal["none", "points"]] = None,
    points: Optional[Union[Sequence[float], Sequence[Tuple[float, float]]]] = None,
    second_points: Optional[Union[Sequence[float], Sequence[Tuple[float, float]]]] = None,
    box: int = 21,
    dx: float = 0.0,
    dy: float = 0.0,
    angle: float = 0.0,
    full: bool = False,
    progress: Progress = None,
    threads: int = 0,
) -> Any:
    """Join two images on a canvas that holds both.

    Parameters
    ----------
    first : Image or array_like
        The image that the other is placed on.
    second : Image or array_like
        The image that is placed on it.
    mode : {"over", "key", "lighter", "darker", "under"}, default "over"
        What shows where both are: SECOND (over), FIRST (under), or FIRST where SECOND is key.
    key : sequence of float, optional
        Mode = key: the sample of SECOND that lets FIRST through [counts]. Without: none.
    average : bool, default False
        Make every pixel the mean of both; where one image is missing, of the other and the background.
    display : bool, default False
        Join what the display levels show, 0 to 255, instead of the samples as they are.
    background : float, optional
        With display: what shows where no image is [0 to 255, display value]. Without: 0.
    align : {"none", "points"}, optional
        Points: find shift and turn from stars. Without: points where stars are given.
    points : sequence of float, optional
        Roughly where one star, or two, are in FIRST [pixels]. Without: none.
    second_points : sequence of float, optional
        Roughly where the same stars are in SECOND [pixels]. Without: none.
    box : int, default 21
        Side of the square in which a star's centre is measured [5 to 255, pixels].
    dx : float, default 0.0
        Shift to the right, on top of what stars say [-1e+06 to 1e+06, pixels].
    dy : float, default 0.0
        Shift downwards, on top of what stars say [-1e+06 to 1e+06, pixels].
    angle : float, default 0.0
        Turn, clockwise where the first row is the top, on top of what stars say [-360 to 360, degrees].
    full : bool, default False
        Return all outputs, as a named tuple.
    progress : bool or callable, optional
        True shows a bar; else progress(stage, done, total).
    threads : int, default 0
        At most so many; 0: as many as there are processors.

    Returns
    -------
    image : Image
        The result.
    fit : dict
        Where the second image lies on the first: dx, dy, angle; and by how many stars it is known.
    The first one; with full=True a named tuple of all.

    Raises
    ------
    ArgumentError
        A value or an image that it cannot be done with.
    FileError
        A file that cannot be read or written.

    Notes
    -----
    The result has the planes and header of FIRST; its world coordinates move along. over and under put
    SECOND on or below FIRST. Without stars the turn is about the middle of SECOND, with stars about the
    first. Two stars give the turn as exactly as their centres are measured.

    A sample depends on: samples of other places; the display levels; statistics of all samples; its place in the image.
    """
    return several('mosaic', ('first', 'second'), {'image': 'image', 'fit': 'numbers'}, locals())


def match(
    reference: ImageLike,
    image: ImageLike,
    *,
    start: Optional[Union[Sequence[float], Sequence[Tuple[float, float]]]] = None,
    range: Optional[int] = None,
    least: float = 0.7,
    progress: Progress = None,
    threads: int = 0,
) -> dict:
    """Find where a cut-out lies in an image.

    Parameters
    ----------
    reference : Image or array_like
        The cut-out to find.
    image : Image or array_like
        The image to find it in.
    start : sequence of float, optional
        Where the first sample of REFERENCE is expected in IMAGE [pixels]. Without: it is looked for
        everywhere.
    range : int, optional
        With start: width of the square that is searched about it [0 to 1024, pixels]. Without: 64.
    least : float, default 0.7
        The least correlation that is taken for a match [0 to 1].
    progress : bool or callable, optional
        True shows a bar; else progress(stage, done, total).
    threads : int, default 0
        At most so many; 0: as many as there are processors.

    Returns
    -------
    place : dict
        X, y, correlation, rms, rival.

    Raises
    ------
    ArgumentError
        A value or an image that it cannot be done with.
    FileError
        A file that cannot be read or written.

    Notes
    -----
    Tells the column and row of IMAGE on which the first sample of REFERENCE falls, to a tenth of a pixel;
    the correlation, which is 1 where the two differ by pedestal and gain alone, and about 0 where they have
    nothing in common; the difference that is left (rms), in the units of IMAGE; and the correlation of the
    best other place (rival): where it is nearly as good, nothing is found. REFERENCE must lie whole in
    IMAGE. Undefined samples take no part.

    A sample depends on: samples of other places; the display levels; statistics of all samples; its place in the image.
    """
    return several('match', ('reference', 'image'), {'place': 'numbers'}, locals())


def rgb(
    r: ImageLike,
    g: ImageLike,
    b: ImageLike,
    *,
    align: Optional[Literal["stars", "none", "shift", "points"]] = None,
    at: Optional[Union[Sequence[float], Sequence[Tuple[float, float]]]] = None,
    size: int = 33,
    range: int = 64,
    box: int = 21,
    points: Optional[Union[Sequence[float], Sequence[Tuple[float, float]]]] = None,
    points2: Optional[Union[Sequence[float], Sequence[Tuple[float, float]]]] = None,
    points3: Optional[Union[Sequence[float], Sequence[Tuple[float, float]]]] = None,
    shift1: Optional[Union[Sequence[float], Sequence[Tuple[float, float]]]] = None,
    angle1: float = 0.0,
    shift2: Optional[Union[Sequence[float], Sequence[Tuple[float, float]]]] = None,
    angle2: float = 0.0,
    shift3: Optional[Union[Sequence[float], Sequence[Tuple[float, float]]]] = None,
    angle3: float = 0.0,
    balance: Literal["none", "sky", "stars", "light"] = "none",
    outside: int = 0,
    full: bool = False,
    progress: Progress = None,
    threads: int = 0,
) -> Any:
    """Make a colour image of frames for red, green and blue.

    Parameters
    ----------
    r : Image or array_like
        The frame for red.
    g : Image or array_like
        The frame for green.
    b : Image or array_like
        The frame for blue.
    align : {"stars", "none", "shift", "points"}, optional
        How the frames are brought onto R: stars matches all stars, shift looks for one, points measures
        stars that are pointed at. Without: stars; none where a shift, a turn or a scale is given by
        hand.
    at : sequence of float, optional
        Align = shift: roughly where the star is in R [pixels]. Without: none.
    size : int, default 33
        Align = shift: side of the square about the star that is looked for [9 to 255, pixels].
    range : int, default 64
        Align = shift: width of the square that is searched [4 to 1024, pixels].
    box : int, default 21
        Side of the square in which a star's centre is measured [5 to 255, pixels].
    points : sequence of float, optional
        Align = points: roughly where one star, or two, are in R [pixels]. Without: none.
    points2 : sequence of float, optional
        Align = points: roughly where the same stars are in G [pixels]. Without: none.
    points3 : sequence of float, optional
        Align = points: roughly where the same stars are in B [pixels]. Without: none.
    shift1 : sequence of float, optional
        Shift of R to the right and down, on top of what stars say [pixels]. Without: none.
    angle1 : float, default 0.0
        Turn of R, clockwise where the first row is the top, on top of what stars say [-360 to 360,
        degrees].
    shift2 : sequence of float, optional
        Shift of G to the right and down, on top of what stars say [pixels]. Without: none.
    angle2 : float, default 0.0
        Turn of G, clockwise where the first row is the top, on top of what stars say [-360 to 360,
        degrees].
    shift3 : sequence of float, optional
        Shift of B to the right and down, on top of what stars say [pixels]. Without: none.
    angle3 : float, default 0.0
        Turn of B, clockwise where the first row is the top, on top of what stars say [-360 to 360,
        degrees].
    balance : {"none", "sky", "stars", "light"}, default "none"
        What is made equal in all frames.
    outside : int, default 0
        The value of samples outside of a frame [counts].
    full : bool, default False
        Return all outputs, as a named tuple.
    progress : bool or callable, optional
        True shows a bar; else progress(stage, done, total).
    threads : int, default 0
        At most so many; 0: as many as there are processors.

    Returns
    -------
    image : Image
        The result.
    fits : numpy.ndarray
        Where each frame lies on the first: dx, dy, angle, scale; and by how many stars it is known.
    The first one; with full=True a named tuple of all.

    Raises
    ------
    ArgumentError
        A value or an image that it cannot be done with.
    FileError
        A file that cannot be read or written.

    Notes
    -----
    Samples keep their values unless balance says otherwise. The result has the size and header of R, each
    plane the display levels of its frame. A colour frame gives its plane of that colour. What is undefined
    in a frame stays so. With balance = sky a number is added to each of the other frames, so that all skies
    have the value of the first. With stars they are multiplied before, so that the median star is equally
    bright in all and comes out white; with light, so that the brightest half percent of blocks of 16
    pixels, which is nebula, rises as far above the sky; a rise of less than twice the noise of a sample
    counts as that. The first frame is never changed. A note and HISTORY tell the numbers. With align =
    stars, which is what happens when nothing is said, the stars of the others are matched with those of the
    first: they may be shifted, turned and of another scale, and are read between their samples by Lanczos'
    kernel, as lights of a stack are. With align = none they are taken as they lie. The star of align =
    shift should be the brightest within the square and the range, and wider than two pixels. What stars say
    is told, to a tenth of a pixel with shift; shifts and turns by hand are added to it. A frame turns about
    its star, without one about its middle.

    A sample depends on: samples of other places; the display levels; statistics of all samples; its place in the image.
    """
    return several('rgb', ('r', 'g', 'b'), {'image': 'image', 'fits': 'table'}, locals())


def cmy(
    c: ImageLike,
    m: ImageLike,
    y: ImageLike,
    *,
    align: Optional[Literal["stars", "none", "shift", "points"]] = None,
    at: Optional[Union[Sequence[float], Sequence[Tuple[float, float]]]] = None,
    size: int = 33,
    range: int = 64,
    box: int = 21,
    points: Optional[Union[Sequence[float], Sequence[Tuple[float, float]]]] = None,
    points2: Optional[Union[Sequence[float], Sequence[Tuple[float, float]]]] = None,
    points3: Optional[Union[Sequence[float], Sequence[Tuple[float, float]]]] = None,
    shift1: Optional[Union[Sequence[float], Sequence[Tuple[float, float]]]] = None,
    angle1: float = 0.0,
    shift2: Optional[Union[Sequence[float], Sequence[Tuple[float, float]]]] = None,
    angle2: float = 0.0,
    shift3: Optional[Union[Sequence[float], Sequence[Tuple[float, float]]]] = None,
    angle3: float = 0.0,
    balance: Literal["none", "sky", "stars", "light"] = "none",
    outside: int = 0,
    full: bool = False,
    progress: Progress = None,
    threads: int = 0,
) -> Any:
    """Make a colour image of frames for cyan, magenta, yellow.

    Parameters
    ----------
    c : Image or array_like
        The frame for cyan [images of one plane].
    m : Image or array_like
        The frame for magenta [images of one plane].
    y : Image or array_like
        The frame for yellow [images of one plane].
    align : {"stars", "none", "shift", "points"}, optional
        How the frames are brought onto C: stars matches all stars, shift looks for one, points measures
        stars that are pointed at. Without: stars; none where a shift, a turn or a scale is given by
        hand.
    at : sequence of float, optional
        Align = shift: roughly where the star is in C [pixels]. Without: none.
    size : int, default 33
        Align = shift: side of the square about the star that is looked for [9 to 255, pixels].
    range : int, default 64
        Align = shift: width of the square that is searched [4 to 1024, pixels].
    box : int, default 21
        Side of the square in which a star's centre is measured [5 to 255, pixels].
    points : sequence of float, optional
        Align = points: roughly where one star, or two, are in C [pixels]. Without: none.
    points2 : sequence of float, optional
        Align = points: roughly where the same stars are in M [pixels]. Without: none.
    points3 : sequence of float, optional
        Align = points: roughly where the same stars are in Y [pixels]. Without: none.
    shift1 : sequence of float, optional
        Shift of C to the right and down, on top of what stars say [pixels]. Without: none.
    angle1 : float, default 0.0
        Turn of C, clockwise where the first row is the top, on top of what stars say [-360 to 360,
        degrees].
    shift2 : sequence of float, optional
        Shift of M to the right and down, on top of what stars say [pixels]. Without: none.
    angle2 : float, default 0.0
        Turn of M, clockwise where the first row is the top, on top of what stars say [-360 to 360,
        degrees].
    shift3 : sequence of float, optional
        Shift of Y to the right and down, on top of what stars say [pixels]. Without: none.
    angle3 : float, default 0.0
        Turn of Y, clockwise where the first row is the top, on top of what stars say [-360 to 360,
        degrees].
    balance : {"none", "sky", "stars", "light"}, default "none"
        What is made equal in all frames.
    outside : int, default 0
        The value of samples outside of a frame [counts].
    full : bool, default False
        Return all outputs, as a named tuple.
    progress : bool or callable, optional
        True shows a bar; else progress(stage, done, total).
    threads : int, default 0
        At most so many; 0: as many as there are processors.

    Returns
    -------
    image : Image
        The result.
    fits : numpy.ndarray
        Where each frame lies on the first: dx, dy, angle, scale; and by how many stars it is known.
    The first one; with full=True a named tuple of all.

    Raises
    ------
    ArgumentError
        A value or an image that it cannot be done with.
    FileError
        A file that cannot be read or written.

    Notes
    -----
    Red becomes Y + M - C, green C + Y - M, blue C + M - Y. The result has the size and header of C, and
    display levels between those of the frames. What is undefined in a frame stays so. With balance = sky a
    number is added to each of the other frames, so that all skies have the value of the first. With stars
    they are multiplied before, so that the median star is equally bright in all and comes out white; with
    light, so that the brightest half percent of blocks of 16 pixels, which is nebula, rises as far above
    the sky; a rise of less than twice the noise of a sample counts as that. The first frame is never
    changed. A note and HISTORY tell the numbers. With align = stars, which is what happens when nothing is
    said, the stars of the others are matched with those of the first: they may be shifted, turned and of
    another scale, and are read between their samples by Lanczos' kernel, as lights of a stack are. With
    align = none they are taken as they lie. The star of align = shift should be the brightest within the
    square and the range, and wider than two pixels. What stars say is told, to a tenth of a pixel with
    shift; shifts and turns by hand are added to it. A frame turns about its star, without one about its
    middle.

    A sample depends on: samples of other places; the display levels; statistics of all samples; its place in the image.
    """
    return several('cmy', ('c', 'm', 'y'), {'image': 'image', 'fits': 'table'}, locals())


def lrgb(
    l: ImageLike,
    rgb: ImageLike,
    *,
    align: Optional[Literal["stars", "none", "shift", "points"]] = None,
    at: Optional[Union[Sequence[float], Sequence[Tuple[float, float]]]] = None,
    size: int = 33,
    range: int = 64,
    box: int = 21,
    points: Optional[Union[Sequence[float], Sequence[Tuple[float, float]]]] = None,
    points2: Optional[Union[Sequence[float], Sequence[Tuple[float, float]]]] = None,
    shift1: Optional[Union[Sequence[float], Sequence[Tuple[float, float]]]] = None,
    angle1: float = 0.0,
    shift2: Optional[Union[Sequence[float], Sequence[Tuple[float, float]]]] = None,
    angle2: float = 0.0,
    average: bool = False,
    scale: float = 1.0,
    full: bool = False,
    progress: Progress = None,
    threads: int = 0,
) -> Any:
    """Give the colours of one image to the luminance of another.

    Parameters
    ----------
    l : Image or array_like
        The luminance frame.
    rgb : Image or array_like
        The colour frame [colour images].
    align : {"stars", "none", "shift", "points"}, optional
        How the frames are brought onto L: stars matches all stars, shift looks for one, points measures
        stars that are pointed at. Without: stars; none where a shift, a turn or a scale is given by
        hand.
    at : sequence of float, optional
        Align = shift: roughly where the star is in L [pixels]. Without: none.
    size : int, default 33
        Align = shift: side of the square about the star that is looked for [9 to 255, pixels].
    range : int, default 64
        Align = shift: width of the square that is searched [4 to 1024, pixels].
    box : int, default 21
        Side of the square in which a star's centre is measured [5 to 255, pixels].
    points : sequence of float, optional
        Align = points: roughly where one star, or two, are in L [pixels]. Without: none.
    points2 : sequence of float, optional
        Align = points: roughly where the same stars are in RGB [pixels]. Without: none.
    shift1 : sequence of float, optional
        Shift of L to the right and down, on top of what stars say [pixels]. Without: none.
    angle1 : float, default 0.0
        Turn of L, clockwise where the first row is the top, on top of what stars say [-360 to 360,
        degrees].
    shift2 : sequence of float, optional
        Shift of RGB to the right and down, on top of what stars say [pixels]. Without: none.
    angle2 : float, default 0.0
        Turn of RGB, clockwise where the first row is the top, on top of what stars say [-360 to 360,
        degrees].
    average : bool, default False
        Take the mean of both instead of lightness and colour in CIE L*a*b*.
    scale : float, default 1.0
        By hand: pixels of RGB that go on one of L; 0.5 enlarges an RGB that was binned 2 x 2 [0.01 to
        100].
    full : bool, default False
        Return all outputs, as a named tuple.
    progress : bool or callable, optional
        True shows a bar; else progress(stage, done, total).
    threads : int, default 0
        At most so many; 0: as many as there are processors.

    Returns
    -------
    image : Image
        The result.
    fits : numpy.ndarray
        Where each frame lies on the first: dx, dy, angle, scale; and by how many stars it is known.
    The first one; with full=True a named tuple of all.

    Raises
    ------
    ArgumentError
        A value or an image that it cannot be done with.
    FileError
        A file that cannot be read or written.

    Notes
    -----
    Both are taken as their display levels show them. A file that has none gets, for this work alone, black
    just below the sky of each plane and white at its largest sample. So levels matter: where one file shows
    faint parts brighter than the other, colours get paler or stronger. Set them with the steps auto-levels
    or levels first. What lies below black is cut off, and so is what is more than 19.6 times as far above
    it as white; not so with average. The result has the size, header and levels of L. Where RGB is not, L
    is grey; undefined samples become black, but with average stay undefined. With a scale by hand the
    middle of RGB lies on that of L. With align = stars, which is what happens when nothing is said, the
    stars of the others are matched with those of the first: they may be shifted, turned and of another
    scale, and are read between their samples by Lanczos' kernel, as lights of a stack are. With align =
    none they are taken as they lie. The star of align = shift should be the brightest within the square and
    the range, and wider than two pixels. What stars say is told, to a tenth of a pixel with shift; shifts
    and turns by hand are added to it. A frame turns about its star, without one about its middle.

    A sample depends on: samples of other places; the display levels; statistics of all samples; its place in the image.
    """
    return several('lrgb', ('l', 'rgb'), {'image': 'image', 'fits': 'table'}, locals())


def palette(
    lines: Sequence[ImageLike],
    *,
    palette: Union[Path, Literal["sho", "hoo", "hos"]],
    align: Literal["stars", "none"] = "stars",
    balance: Literal["none", "sky", "stars", "light"] = "light",
    outside: int = 0,
    full: bool = False,
    progress: Progress = None,
    threads: int = 0,
) -> Any:
    """Make a colour image of frames through narrow filters.

    Parameters
    ----------
    lines : Image or array_like, or several
        The frames: ha, oiii and sii, or those that the matrix is for [images of one plane].
    palette : path or {"sho", "hoo", "hos"}
        What part of each frame goes into red, green and blue.
    align : {"stars", "none"}, default "stars"
        How the others are brought onto the first: by their stars, or as they lie.
    balance : {"none", "sky", "stars", "light"}, default "light"
        What is made equal in all frames.
    outside : int, default 0
        The value of samples outside of a frame [counts].
    full : bool, default False
        Return all outputs, as a named tuple.
    progress : bool or callable, optional
        True shows a bar; else progress(stage, done, total).
    threads : int, default 0
        At most so many; 0: as many as there are processors.

    Returns
    -------
    image : Image
        The result.
    fits : numpy.ndarray
        Where each frame lies on the first: dx, dy, angle, scale; and by how many stars it is known.
    The first one; with full=True a named tuple of all.

    Raises
    ------
    ArgumentError
        A value or an image that it cannot be done with.
    FileError
        A file that cannot be read or written.

    Notes
    -----
    Each sample of red, green and blue is the sum of those of the frames, each times a number. The palettes,
    with a number for each frame in its order: sho, of Ha, OIII, SII: red 0 0 1, green 1 0 0, blue 0 1 0;
    hoo, of Ha, OIII: red 1 0, green 0 1, blue 0 1; hos, of Ha, OIII, SII: red 1 0 0, green 0 1 0, blue 0 0
    1. FILE is a text file of such numbers: three lines, for red, green and blue, with a number for each
    frame; # begins a comment. The result has the size and header of the first frame, onto which the others
    are brought by their stars. The usual balance is light, since oxygen and sulphur shine fainter than
    hydrogen and all would be green without. With balance = sky a number is added to each of the other
    frames, so that all skies have the value of the first. With stars they are multiplied before, so that
    the median star is equally bright in all and comes out white; with light, so that the brightest half
    percent of blocks of 16 pixels, which is nebula, rises as far above the sky; a rise of less than twice
    the noise of a sample counts as that. The first frame is never changed. A note and HISTORY tell the
    numbers. Take gradients of the sky out of the frames first, with the step background. What is undefined
    in a frame that has a part in a colour is undefined there.

    A sample depends on: samples of other places; the display levels; statistics of all samples; its place in the image.
    """
    return several('palette', ('lines',), {'image': 'image', 'fits': 'table'}, locals())


def continuum(
    narrow: ImageLike,
    broad: ImageLike,
    *,
    align: Literal["stars", "none"] = "stars",
    factor: Optional[float] = None,
    full: bool = False,
    progress: Progress = None,
    threads: int = 0,
) -> Any:
    """Take a broad band off a narrow one.

    Parameters
    ----------
    narrow : Image or array_like
        The frame through the narrow filter [images of one plane].
    broad : Image or array_like
        The frame through the broad filter [images of one plane].
    align : {"stars", "none"}, default "stars"
        How the others are brought onto NARROW: by their stars, or as they lie.
    factor : float, optional
        What the broad band is multiplied by [0 to 1e+06]. Without: by the light of stars in both.
    full : bool, default False
        Return all outputs, as a named tuple.
    progress : bool or callable, optional
        True shows a bar; else progress(stage, done, total).
    threads : int, default 0
        At most so many; 0: as many as there are processors.

    Returns
    -------
    image : Image
        The result.
    fit : dict
        Where the second image lies on the first: dx, dy, angle; and by how many stars it is known.
    The first one; with full=True a named tuple of all.

    Raises
    ------
    ArgumentError
        A value or an image that it cannot be done with.
    FileError
        A file that cannot be read or written.

    Notes
    -----
    What is left shines in the line of the narrow band: stars go, nebulae stay. The broad band is brought
    onto the narrow one by its stars; its sky, the median of the model of the step background, is taken off,
    so that the narrow band keeps its own; and it is multiplied by the factor: the light of stars in the
    narrow band over that in the broad one, the median over those that are bright in both and saturated in
    neither. A note and HISTORY tell it, with its standard error. Stars of other colours, saturated ones,
    and those of another width in the broad band leave traces. A broad band that holds the line, too, takes
    about the factor of the nebula's light with it. What either frame lacks is undefined. Take gradients of
    the sky out of both first, with the step background.

    A sample depends on: samples of other places; the display levels; statistics of all samples; its place in the image.
    """
    return several('continuum', ('narrow', 'broad'), {'image': 'image', 'fit': 'numbers'}, locals())


def stats(
    image: ImageLike,
    *,
    rect: Optional[Rectangle] = None,
    progress: Progress = None,
    threads: int = 0,
) -> np.ndarray:
    """Measure the samples of an image or of a region of it.

    Parameters
    ----------
    image : Image or array_like
        The image to measure.
    rect : (left, top, right, bottom), optional
        Measure this rectangle only; right and bottom are the first column and row outside [pixels].
        Without: the whole image.
    progress : bool or callable, optional
        True shows a bar; else progress(stage, done, total).
    threads : int, default 0
        At most so many; 0: as many as there are processors.

    Returns
    -------
    planes : numpy.ndarray
        Extremes, mean and median of each plane, and of how many samples.

    Raises
    ------
    ArgumentError
        A value or an image that it cannot be done with.
    FileError
        A file that cannot be read or written.

    Notes
    -----
    Blank samples, NaN and infinities are left out, and counted. The median of an even number of samples is
    the upper of the two in the middle.

    A sample depends on: samples of other places; the display levels; statistics of all samples; its place in the image.
    """
    return several('stats', ('image',), {'planes': 'table'}, locals())


def stars(
    image: ImageLike,
    *,
    sigmas: float = 10.0,
    limit: int = 500,
    plane: Optional[int] = None,
    at: Optional[Union[Sequence[float], Sequence[Tuple[float, float]]]] = None,
    full: bool = False,
    progress: Progress = None,
    threads: int = 0,
) -> Any:
    """Measure how wide the stars of an image are.

    Parameters
    ----------
    image : Image or array_like
        The image to look at.
    sigmas : float, default 10.0
        How far a star rises above the sky, in standard deviations of the sky [1 to 1000].
    limit : int, default 500
        Find the brightest stars, at most this many [1 to 1e+06].
    plane : int, optional
        The plane to look at: 0 red or the only one, 1 green, 2 blue [0 to 2]. Without: green of a
        colour image.
    at : sequence of float, optional
        Roughly where the stars are [pixels]. Without: they are found.
    full : bool, default False
        Return all outputs, as a named tuple.
    progress : bool or callable, optional
        True shows a bar; else progress(stage, done, total).
    threads : int, default 0
        At most so many; 0: as many as there are processors.

    Returns
    -------
    stars : numpy.ndarray
        Place, light, sky and width of each star, or why it has none.
    field : dict
        Plane, stars that count, mean and median of their widths.
    The first one; with full=True a named tuple of all.

    Raises
    ------
    ArgumentError
        A value or an image that it cannot be done with.
    FileError
        A file that cannot be read or written.

    Notes
    -----
    FWHM is the full width at half maximum along the row and the column of a star's peak, to which the
    samples rise from the place that is named. Columns and rows count from 0 in the middle of the file's
    first sample; x and y are the centroid.

    A sample depends on: samples of other places; the display levels; statistics of all samples; its place in the image.
    """
    return several('stars', ('image',), {'stars': 'table', 'field': 'numbers'}, locals())


def find_stars(
    image: ImageLike,
    *,
    sigmas: float = 5.0,
    limit: int = 10000,
    plane: Optional[int] = None,
    saturation: Optional[float] = None,
    full: bool = False,
    progress: Progress = None,
    threads: int = 0,
) -> Any:
    """Find the stars of an image and list what is known of each.

    Parameters
    ----------
    image : Image or array_like
        The image to look at.
    sigmas : float, default 5.0
        How far a star rises above the sky, in standard deviations of the sky [1 to 1000].
    limit : int, default 10000
        Find the brightest stars, at most this many [1 to 1e+06].
    plane : int, optional
        The plane to look at: 0 red or the only one, 1 green, 2 blue [0 to 2]. Without: green of a
        colour image.
    saturation : float, optional
        Samples from this value on are saturated [counts]. Without: judged by the image.
    full : bool, default False
        Return all outputs, as a named tuple.
    progress : bool or callable, optional
        True shows a bar; else progress(stage, done, total).
    threads : int, default 0
        At most so many; 0: as many as there are processors.

    Returns
    -------
    stars : numpy.ndarray
        Place, light, sky, width and flags of each star.
    field : dict
        Plane, sky, noise, width of the stars, how many there are.
    The first one; with full=True a named tuple of all.

    Raises
    ------
    ArgumentError
        A value or an image that it cannot be done with.
    FileError
        A file that cannot be read or written.

    Notes
    -----
    Columns and rows count from 0 in the middle of the file's first sample. Flags tell what speaks against
    measuring with a star: saturated, hot (a hot pixel or a particle's hit), elongated, edge, crowded.

    A sample depends on: samples of other places; the display levels; statistics of all samples; its place in the image.
    """
    return several('find-stars', ('image',), {'stars': 'table', 'field': 'numbers'}, locals())


def register(
    light: Files,
    *,
    bias: Optional[Files] = None,
    dark: Optional[Files] = None,
    flat: Optional[Files] = None,
    flat_dark: Optional[Files] = None,
    pedestal: float = 0.0,
    cosmetic: bool = False,
    cosmic: bool = False,
    bayer: Optional[Literal["RGGB", "GRBG", "GBRG", "BGGR", "none"]] = None,
    filter: Optional[str] = None,
    allow_mixed: bool = False,
    debayer: Literal["edge-aware", "bilinear"] = "edge-aware",
    align: Literal["stars", "shift", "none"] = "stars",
    reference: Optional[Union[ImageLike, Path]] = None,
    onto: Optional[Union[ImageLike, Path]] = None,
    scale: bool = False,
    transform: Literal["auto", "similarity", "affine", "homography", "distortion"] = "auto",
    star: Optional[Union[Sequence[float], Sequence[Tuple[float, float]]]] = None,
    size: int = 32,
    search: int = 64,
    reject_fwhm: Optional[float] = None,
    reject_stars: Optional[float] = None,
    reject_background: Optional[float] = None,
    masters: Optional[Path] = None,
    progress: Progress = None,
    threads: int = 0,
) -> Registration:
    """Show how the lights of a night lie on each other.

    Parameters
    ----------
    light : path, or several
        The frames of the night, or folders that hold them.
    bias : path, or several
        Bias frames.
    dark : path, or several
        Dark frames; with bias frames they are scaled by exposure.
    flat : path, or several
        Flat fields.
    flat_dark : path, or several
        Darks of the flats' exposure, in place of the bias.
    pedestal : float, default 0.0
        Added before a dark is taken off, so that noise below 0 is kept [0 to 1e+09, counts].
    cosmetic : bool, default False
        Replace the pixels that are hot in the darks.
    cosmic : bool, default False
        Replace what cosmic rays have hit in single lights.
    bayer : {"RGGB", "GRBG", "GBRG", "BGGR", "none"}, optional
        Filters of the first pixels, two rows of two; none keeps the filter mosaic. Without: by the
        header.
    filter : str, optional
        Take the lights of this filter alone. Without: of folders, one stack for each.
    allow_mixed : bool, default False
        Take frames together that do not fit, with a warning.
    debayer : {"edge-aware", "bilinear"}, default "edge-aware"
        How colours are made of a filter mosaic.
    align : {"stars", "shift", "none"}, default "stars"
        How lights are brought onto the reference.
    reference : Image, array_like or path, optional
        The light that others are placed on. Without: the best by its stars; with align = shift the
        first.
    onto : Image, array_like or path, optional
        Stars: a frame from outside the night, such as another filter's stack, whose grid is taken.
        Without: the reference's.
    scale : bool, default False
        Stars: look for lights of another scale, too.
    transform : {"auto", "similarity", "affine", "homography", "distortion"}, default "auto"
        Stars: how a light may lie on the reference; auto goes by its residuals.
    star : sequence of float, optional
        Shift: centre of the star to align by [pixels]. Without: the brightest that stands alone.
    size : int, default 32
        Shift: width of the patch around that star [8 to 256, pixels].
    search : int, default 64
        Shift: largest shift to look for [0 to 2048, pixels].
    reject_fwhm : float, optional
        Leave out lights whose stars are wider than the median of all by more than so many [0 to 1000,
        sigmas]. Without: no limit.
    reject_stars : float, optional
        Leave out lights that show fewer stars than the median of all by more than so many [0 to 1000,
        sigmas]. Without: no limit.
    reject_background : float, optional
        Leave out lights whose sky is brighter than the median of all by more than so many [0 to 1000,
        sigmas]. Without: no limit.
    masters : Path
        Folder in which masters are kept, to be taken up again.
    progress : bool or callable, optional
        True shows a bar; else progress(stage, done, total).
    threads : int, default 0
        At most so many; 0: as many as there are processors.

    Returns
    -------
    Registration
        What was made, and what is known of the lights.

    Raises
    ------
    ArgumentError
        A value or an image that it cannot be done with.
    FileError
        A file that cannot be read or written.

    Notes
    -----
    Does what `stack` does before it combines, and writes no image. Shifts go to the right and down the
    file's rows, turns are about the middle, clockwise where the first row is the top.

    A sample depends on: samples of other places; the display levels; statistics of all samples; its place in the image.
    """
    return _register(('light', 'bias', 'dark', 'flat', 'flat-dark'), locals())


def stack(
    light: Files,
    *,
    bias: Optional[Files] = None,
    dark: Optional[Files] = None,
    flat: Optional[Files] = None,
    flat_dark: Optional[Files] = None,
    pedestal: float = 0.0,
    cosmetic: bool = False,
    cosmic: bool = False,
    bayer: Optional[Literal["RGGB", "GRBG", "GBRG", "BGGR", "none"]] = None,
    filter: Optional[str] = None,
    allow_mixed: bool = False,
    debayer: Literal["edge-aware", "bilinear"] = "edge-aware",
    align: Literal["stars", "shift", "none"] = "stars",
    reference: Optional[Union[ImageLike, Path]] = None,
    onto: Optional[Union[ImageLike, Path]] = None,
    scale: bool = False,
    transform: Literal["auto", "similarity", "affine", "homography", "distortion"] = "auto",
    star: Optional[Union[Sequence[float], Sequence[Tuple[float, float]]]] = None,
    size: int = 32,
    search: int = 64,
    reject_fwhm: Optional[float] = None,
    reject_stars: Optional[float] = None,
    reject_background: Optional[float] = None,
    combine: Optional[Literal["mean", "median", "sum", "max", "min"]] = None,
    reject: Optional[Literal["auto", "none", "sigma", "winsorized", "linear-fit", "esd", "mad", "minmax"]] = None,
    low: Optional[float] = None,
    high: Optional[float] = None,
    iterations: int = 0,
    method: Optional[Literal["median", "clipped-median", "clipped-mean"]] = None,
    normalise: Optional[Literal["none", "offset", "scale", "both", "local"]] = None,
    weight: Optional[Literal["none", "noise", "fwhm", "stars", "snr"]] = None,
    canvas: Literal["reference", "union", "common"] = "reference",
    coverage: Literal["any", "all"] = "any",
    interpolate: Literal["bilinear", "bicubic", "lanczos3", "lanczos4"] = "lanczos3",
    drizzle: Optional[float] = None,
    drop: float = 0.7,
    drop_shape: Literal["square", "point"] = "square",
    masters: Optional[Path] = None,
    registered: Optional[Path] = None,
    follow: Optional[Sequence[str]] = None,
    both: bool = False,
    maps: bool = False,
    progress: Progress = None,
    threads: int = 0,
) -> Stack:
    """Calibrate, align and combine the frames of a night.

    Parameters
    ----------
    light : path, or several
        The frames of the night, or folders that hold them.
    bias : path, or several
        Bias frames.
    dark : path, or several
        Dark frames; with bias frames they are scaled by exposure.
    flat : path, or several
        Flat fields.
    flat_dark : path, or several
        Darks of the flats' exposure, in place of the bias.
    pedestal : float, default 0.0
        Added before a dark is taken off, so that noise below 0 is kept [0 to 1e+09, counts].
    cosmetic : bool, default False
        Replace the pixels that are hot in the darks.
    cosmic : bool, default False
        Replace what cosmic rays have hit in single lights.
    bayer : {"RGGB", "GRBG", "GBRG", "BGGR", "none"}, optional
        Filters of the first pixels, two rows of two; none keeps the filter mosaic. Without: by the
        header.
    filter : str, optional
        Take the lights of this filter alone. Without: of folders, one stack for each.
    allow_mixed : bool, default False
        Take frames together that do not fit, with a warning.
    debayer : {"edge-aware", "bilinear"}, default "edge-aware"
        How colours are made of a filter mosaic.
    align : {"stars", "shift", "none"}, default "stars"
        How lights are brought onto the reference.
    reference : Image, array_like or path, optional
        The light that others are placed on. Without: the best by its stars; with align = shift the
        first.
    onto : Image, array_like or path, optional
        Stars: a frame from outside the night, such as another filter's stack, whose grid is taken.
        Without: the reference's.
    scale : bool, default False
        Stars: look for lights of another scale, too.
    transform : {"auto", "similarity", "affine", "homography", "distortion"}, default "auto"
        Stars: how a light may lie on the reference; auto goes by its residuals.
    star : sequence of float, optional
        Shift: centre of the star to align by [pixels]. Without: the brightest that stands alone.
    size : int, default 32
        Shift: width of the patch around that star [8 to 256, pixels].
    search : int, default 64
        Shift: largest shift to look for [0 to 2048, pixels].
    reject_fwhm : float, optional
        Leave out lights whose stars are wider than the median of all by more than so many [0 to 1000,
        sigmas]. Without: no limit.
    reject_stars : float, optional
        Leave out lights that show fewer stars than the median of all by more than so many [0 to 1000,
        sigmas]. Without: no limit.
    reject_background : float, optional
        Leave out lights whose sky is brighter than the median of all by more than so many [0 to 1000,
        sigmas]. Without: no limit.
    combine : {"mean", "median", "sum", "max", "min"}, optional
        What is made of the values that count at a place. Without: mean.
    reject : {"auto", "none", "sigma", "winsorized", "linear-fit", "esd", "mad", "minmax"}, optional
        How values that do not count are told: those beyond limits of the deviation (sigma), of one that
        outliers hardly widen (winsorized), of the median deviation (mad), off a line through the sorted
        values (linear-fit), extreme deviates by Rosner's test (esd), or the ends (minmax). Without:
        auto for the mean, by the number of lights; else none.
    low : float, optional
        Values farther below than so many deviations are rejected; with minmax so many of the lowest [0
        to 1000, deviations]. Without: 3; with reject = minmax 1.
    high : float, optional
        The same above [0 to 1000, deviations]. Without: 3; with reject = minmax 1.
    iterations : int, default 0
        Most rounds of rejection; 0: until nothing changes [0 to 100].
    method : {"median", "clipped-median", "clipped-mean"}, optional
        In place of combine and reject: one of the composites' own statistics. Without: as combine and
        reject tell.
    normalise : {"none", "offset", "scale", "both", "local"}, optional
        Bring lights to the brightness of the reference first. Without: both; none without align =
        stars.
    weight : {"none", "noise", "fwhm", "stars", "snr"}, optional
        Mean: what lights count by. Without: snr for combine = mean with align = stars, else none.
    canvas : {"reference", "union", "common"}, default "reference"
        What part of the sky the stack shows: of the lights, or all.
    coverage : {"any", "all"}, default "any"
        Keep pixels that any light has, or only those that all have.
    interpolate : {"bilinear", "bicubic", "lanczos3", "lanczos4"}, default "lanczos3"
        How samples of moved lights are taken between their pixels.
    drizzle : float, optional
        Drop the pixels of the lights, made smaller, onto a grid of so many pixels to one [0.5 to 4,
        pixels to one of a light]. Without: no drizzle.
    drop : float, default 0.7
        Drizzle: width of a dropped pixel [0.1 to 1, pixels of a light].
    drop_shape : {"square", "point"}, default "square"
        Drizzle: what a dropped pixel is.
    masters : Path
        Folder in which masters are kept, to be taken up again.
    registered : Path
        Folder for each light that is used, on the grid of the stack.
    follow : Sequence[str
        Two places of what moves among the stars, as x,y@file.
    both : bool
        With follow: stack the stars, too.
    maps : bool
        Tell coverage, weights, rejected values and noise of each sample.
    progress : bool or callable, optional
        True shows a bar; else progress(stage, done, total).
    threads : int, default 0
        At most so many; 0: as many as there are processors.

    Returns
    -------
    Stack
        What was made, and what is known of the lights.

    Raises
    ------
    ArgumentError
        A value or an image that it cannot be done with.
    FileError
        A file that cannot be read or written.

    Notes
    -----
    Calibration frames of one kind are combined by median. Lights that cannot be placed with certainty are
    left out and named.

    A sample depends on: samples of other places; the display levels; statistics of all samples; its place in the image.
    """
    return _stack(('light', 'bias', 'dark', 'flat', 'flat-dark'), locals())
