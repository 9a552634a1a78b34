"""What a notebook shows of a night."""

from __future__ import annotations

import base64
import html
from typing import Any

import numpy as np

from . import _core
from ._night import Registration, Stack

_COLUMNS = {"stars": 0, "fwhm": 2, "background": 0, "noise": 2, "dx": 2, "dy": 2, "angle": 3, "weight": 2}


def _row(cells: "list[str]", tag: str = "td") -> str:
    return "<tr>" + "".join(f"<{tag}>{html.escape(cell)}</{tag}>" for cell in cells) + "</tr>"


def _number(value: Any, digits: int) -> str:
    return "" if np.isnan(value) else f"{value:.{digits}f}"


def _table(lights: np.ndarray) -> str:
    rows = [_row(["light", *_COLUMNS, "left out"], "th")]
    for light in lights:
        rows.append(_row([light["file"], *(_number(light[name], _COLUMNS[name]) for name in _COLUMNS), light["reason"]]))
    return "<table>" + "".join(rows) + "</table>"


def _repr_html(self: Registration) -> str:
    """The stack as a picture, what should be known, and its lights."""
    parts = []
    if isinstance(self, Stack):
        picture = base64.b64encode(_core.png(self.image, "", 800)).decode()
        parts.append(f'<img alt="the stack" src="data:image/png;base64,{picture}">')
        if self.depth is not None:
            one, ideal, depth = self.depth
            parts.append(f"<p>Noise of the sky: {one:.3g} in a light, {depth:.3g} in the stack, at best {ideal:.3g}.</p>")
    parts += [f"<p>{html.escape(note)}</p>" for note in self.notes]
    return "\n".join([*parts, _table(self.lights)])


Registration._repr_html_ = _repr_html  # type: ignore[attr-defined]
