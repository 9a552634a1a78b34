"""Frames combined and aligned, by the names that users of ccdproc and astroalign know."""

from __future__ import annotations

import os
from typing import Any, Callable, Iterable, Literal, Optional, Sequence, Tuple, Union

import numpy as np
import numpy.typing as npt
from astropy.nddata import CCDData, NDData, StdDevUncertainty

from . import _core
from ._call import Path, Progress, follow
from ._core import Image
from ._files import read, replacing
from ._nddata import image_of, to_ccddata, unit_of
from .errors import FileError, refusal

#: What stands for a frame: a CCDData or NDData, an image, an array, or the name of a file.
Frame = Union[NDData, Image, npt.ArrayLike, Path]

_METHODS = {"average": "mean", "median": "median", "sum": "sum"}
_DEVIATIONS = {"std": "sigma", "nanstd": "sigma", "mad_std": "mad"}


def combine(
    img_list: Union[str, Iterable[Frame]],
    output_file: Optional[Path] = None,
    method: Literal["average", "median", "sum"] = "average",
    weights: Optional[Sequence[float]] = None,
    scale: Union[None, Sequence[float], Callable[[np.ma.MaskedArray], float]] = None,
    mem_limit: float = 16e9,
    clip_extrema: bool = False,
    nlow: int = 1,
    nhigh: int = 1,
    minmax_clip: bool = False,
    minmax_clip_min: Optional[float] = None,
    minmax_clip_max: Optional[float] = None,
    sigma_clip: bool = False,
    sigma_clip_low_thresh: float = 3,
    sigma_clip_high_thresh: float = 3,
    sigma_clip_func: Union[str, Callable[..., Any]] = "median",
    sigma_clip_dev_func: Union[str, Callable[..., Any]] = "std",
    dtype: Optional[npt.DTypeLike] = None,
    combine_uncertainty_function: None = None,
    overwrite_output: bool = False,
    unit: Any = None,
    *,
    progress: Progress = None,
    threads: int = 0,
) -> CCDData:
    """Combine frames pixel by pixel.

    Samples that are masked, NaN or undefined do not count. Calculation is in double precision, the result is the same
    for any number of threads.

    Parameters
    ----------
    img_list : sequence of CCDData, NDData, Image, array_like or path, or str
        The frames, all of one size; a text is the names of files, with commas between them. What uncertainties they
        have does not count.
    output_file : path, optional
        FITS file for the result, with mask and uncertainty. It appears whole or not at all.
    method : {"average", "median", "sum"}, default "average"
        What is made of the values of a pixel. The median of an even number is the upper of the two in the middle, not
        their mean.
    weights : sequence of float, optional
        Of each frame in the average [at least 0]; 0 leaves it out. Weights by pixel are not taken, nor with median and
        sum.
    scale : sequence of float or callable, optional
        Each frame is multiplied by its number, or by scale(samples), before any clipping; samples are a masked array.
    mem_limit : float, default 16e9
        What the rows at work may take [bytes]; that is little. The frames themselves lie in memory, and beyond
        `corvane.memory_budget` in files of their own.
    clip_extrema : bool, default False
        Drop the lowest nlow and the highest nhigh values of a pixel; of fewer than that, and one, the middle one stays.
    nlow, nhigh : int, default 1
        How many [at least 0].
    minmax_clip : bool, default False
        Drop samples below minmax_clip_min and above minmax_clip_max, as they are before scaling.
    minmax_clip_min, minmax_clip_max : float, optional
        The bounds; without, there is none on that side.
    sigma_clip : bool, default False
        Drop values that lie farther off than so many deviations of the values of their pixel, judged once. Fewer than
        three values all stay. Not together with clip_extrema.
    sigma_clip_low_thresh, sigma_clip_high_thresh : float, default 3
        How far below and above the middle [deviations, at least 0].
    sigma_clip_func : str or callable, default "median"
        The middle: the median, by name or function, where that of an even number is the mean of two. The mean, which an
        outlier draws towards itself, is not taken.
    sigma_clip_dev_func : str or callable, default "std"
        The deviation: "std", that of a sample (by n - 1), or "mad_std", 1.4826 times the median deviation from the
        median; by name or function.
    dtype : dtype, optional
        numpy.float32, which the result has anyway.
    combine_uncertainty_function : None
        No other is taken: the uncertainty is told by how the values that count scatter.
    overwrite_output : bool, default False
        Replace output_file when it is there.
    unit : unit or str, optional
        Of the result. Without: that of the frames, which must have the same, else adu.
    progress : bool or callable, optional
        True shows a bar; else progress(stage, done, total).
    threads : int, default 0
        At most so many; 0: as many as there are processors.

    Returns
    -------
    astropy.nddata.CCDData
        With header and coordinates of the first frame and NCOMBINE. Pixels that no frame has are masked, and NaN. The
        uncertainty is the standard deviation of each value, NaN where fewer than two values count.

    Raises
    ------
    ArgumentError
        A value that is not allowed, or frames that do not go together.
    FileError
        A file that cannot be read or written.
    """
    if method not in _METHODS:
        raise refusal("method", method, "must be average, median or sum")
    if dtype is not None and np.dtype(dtype) != np.float32:
        raise refusal("dtype", np.dtype(dtype), "samples are 32-bit floats")
    if combine_uncertainty_function is not None:
        raise refusal("combine_uncertainty_function", None, "is not taken: values tell the uncertainty by their scatter")
    clip = _clip(
        (clip_extrema, nlow, nhigh),
        (sigma_clip, sigma_clip_low_thresh, sigma_clip_high_thresh),
        (sigma_clip_func, sigma_clip_dev_func),
    )
    _check_output(output_file, overwrite_output)
    images = [_image(frame) for frame in _listed(img_list)]
    _check_shapes(images)
    if unit is None:
        _check_units(images)
    weighed, factors = _weights(weights, method, len(images)), _factors(scale, images)
    if minmax_clip:
        images = [_within(image, minmax_clip_min, minmax_clip_max) for image in images]
    memory = int(np.clip(mem_limit, 0, 2**62))
    made = follow(
        progress,
        lambda heard: _core.combine(images, _METHODS[method], *clip, weighed, factors, memory, heard, threads),
    )
    image = made["image"]
    image.header["NCOMBINE"] = len(images)
    image.header.add_history(f"{method} of {len(images)} frames, rejection {clip[0]}")
    combined = to_ccddata(image, unit)
    combined.uncertainty = StdDevUncertainty(np.array(made["noise"]))
    if output_file is not None:
        with replacing(output_file) as part:
            combined.write(part, format="fits")
    return combined


def register(
    source: Frame,
    target: Frame,
    fill_value: Optional[float] = None,
    propagate_mask: bool = False,
    max_control_points: int = 50,
    detection_sigma: float = 5,
    min_area: int = 5,
    *,
    progress: Progress = None,
    threads: int = 0,
) -> Tuple[Union[CCDData, np.ndarray], np.ndarray]:
    """Bring an image onto the grid of another by the stars of both.

    It may be shifted, turned and of another scale, and where the stars need and bear it, the map bends. Between samples
    lies what Lanczos' kernel of six makes of them.

    Parameters
    ----------
    source : CCDData, NDData, Image, array_like or path
        What is moved; of three planes, those are the first axis.
    target : CCDData, NDData, Image, array_like or path
        What it is brought onto. An image: lists of positions are not taken.
    fill_value : float, optional
        What stands where the source has nothing; without, NaN.
    propagate_mask : bool, default False
        Count samples that are masked in the source as nothing, and so what is made of them. Else they are moved like
        others. They are never taken for stars.
    max_control_points : int, default 50
        So many stars of each are compared, the brightest [at least 3].
    detection_sigma : float, default 5
        How far stars rise above the sky, in deviations of its noise [1 to 1000].
    min_area : int, default 5
        No other is taken: what is too narrow for a star is told by the width of the others.
    progress : bool or callable, optional
        True shows a bar; else progress(stage, done, total).
    threads : int, default 0
        At most so many; 0: as many as there are processors.

    Returns
    -------
    aligned : CCDData or numpy.ndarray
        The source on the grid of the target, 32-bit floats. An array where the source is an array; else a CCDData with
        the source's header, the target's coordinates, and the footprint as its mask.
    footprint : numpy.ndarray of bool
        True where the source has nothing, in any plane.

    Raises
    ------
    ArgumentError
        A value that is not allowed, or stars that do not match.
    FileError
        A file that cannot be read.
    """
    if min_area != 5:
        raise refusal("min_area", min_area, "must be 5: stars are told by their width")
    if max_control_points < 3:
        raise refusal("max_control_points", max_control_points, "must be at least 3")
    if not 1 <= detection_sigma <= 1000:
        raise refusal("detection_sigma", detection_sigma, "must be 1 to 1000")
    seen, onto = _image(source), _image(target)
    if onto.shape[-1] == 2:
        raise refusal("target", None, "must be an image; positions are not taken")
    moved = image_of(source, with_mask=False) if isinstance(source, NDData) and not propagate_mask else seen
    image = follow(
        progress,
        lambda heard: _core.bring_onto(seen, onto, moved, detection_sigma, max_control_points, heard, threads),
    )
    aligned = np.array(image)
    nothing = np.isnan(aligned)
    if fill_value is not None:
        aligned[nothing] = fill_value
    footprint = nothing.any(axis=0) if nothing.ndim > 2 else nothing
    if not isinstance(source, (str, os.PathLike, NDData, Image)):
        return aligned, footprint
    made = to_ccddata(image)
    made.data, made.mask = aligned, nothing
    return made, footprint


def _image(frame: Frame) -> Image:
    if isinstance(frame, (str, os.PathLike)):
        return read(frame)
    return image_of(frame) if isinstance(frame, NDData) else Image(frame)


def _listed(frames: Any) -> list:
    if isinstance(frames, str):
        return [name.strip() for name in frames.split(",")]
    listed = [frames] if isinstance(frames, (os.PathLike, NDData, Image)) else list(frames)
    if not listed:
        raise refusal("img_list", None, "has no frame")
    return listed


def _check_shapes(images: Sequence[Image]) -> None:
    for number, image in enumerate(images, 1):
        if image.shape != images[0].shape:
            raise refusal("img_list", None, f"frame {number} has the shape {image.shape}, the first {images[0].shape}")


def _check_units(images: Sequence[Image]) -> None:
    units = {str(unit_of(image.header["BUNIT"])) for image in images if "BUNIT" in image.header}
    if len(units) > 1:
        raise refusal("unit", None, f"frames have {' and '.join(sorted(units))}; unit says that of the result")


def _weights(weights: Any, method: str, frames: int) -> "list[float]":
    if weights is None:
        return [1.0] * frames
    if method != "average":
        raise refusal("weights", None, f"must not be given with method = {method}")
    given = _one_each("weights", weights, frames)
    if min(given) < 0 or max(given) == 0:
        raise refusal("weights", given, "must be at least 0, and not all 0")
    return given


def _factors(scale: Any, images: Sequence[Image]) -> "list[float]":
    if scale is None:
        return [1.0] * len(images)
    if callable(scale):
        scale = [scale(np.ma.masked_invalid(np.asarray(image))) for image in images]
    return _one_each("scale", scale, len(images))


def _one_each(name: str, given: Any, frames: int) -> "list[float]":
    numbers = np.asarray(given, dtype=float)
    if numbers.shape != (frames,) or not np.isfinite(numbers).all():
        raise refusal(name, None, f"must be a number for each of {frames} frames")
    return numbers.tolist()


def _clip(extrema: tuple, sigmas: tuple, functions: tuple) -> Tuple[str, float, float]:
    """Which values do not count, and the limits below and above."""
    if extrema[0] and sigmas[0]:
        raise refusal("clip_extrema", None, "must not be given with sigma_clip")
    if extrema[0]:
        return "minmax", _limit("nlow", extrema[1]), _limit("nhigh", extrema[2])
    if not sigmas[0]:
        return "none", 0.0, 0.0
    middle, deviation = (str(getattr(function, "__name__", function)) for function in functions)
    if middle not in ("median", "nanmedian"):
        raise refusal("sigma_clip_func", middle, "must be median")
    if deviation not in _DEVIATIONS:
        raise refusal("sigma_clip_dev_func", deviation, "must be std or mad_std")
    low, high = _limit("sigma_clip_low_thresh", sigmas[1]), _limit("sigma_clip_high_thresh", sigmas[2])
    return _DEVIATIONS[deviation], low, high


def _limit(name: str, value: float) -> float:
    if not 0 <= value < 1e9:
        raise refusal(name, value, "must be at least 0")
    return float(value)


def _within(image: Image, low: Optional[float], high: Optional[float]) -> Image:
    """The image with NaN for what lies beyond the bounds."""
    samples = np.asarray(image)
    outside = np.zeros(samples.shape, bool)
    if low is not None:
        outside |= samples < low
    if high is not None:
        outside |= samples > high
    if not outside.any():
        return image
    clipped = image.copy()
    clipped[outside] = np.nan
    return clipped


def _check_output(path: Optional[Path], overwrite: bool) -> None:
    if path is not None and os.path.exists(path) and not overwrite:
        reason = "exists; overwrite_output = True replaces it"
        raise FileError(f"{os.fspath(path)}: {reason}", os.fspath(path), "", reason)
