#!/usr/bin/env python3
"""Writes the functions of the package, one for each operation of the catalogue, and a stub with their types.

usage: corvane ops --json | make_operations.py corvane/operations.py corvane/operations.pyi
"""

from __future__ import annotations

import json
import keyword
import sys
import textwrap
from pathlib import Path
from typing import NamedTuple, Optional

HEADER = '''"""The operations of the catalogue as functions. Made by make_operations.py: do not edit."""

from ._call import several, step
from ._night import register as _register
from ._night import stack as _stack
'''

STUB_HEADER = '''# The types of the operations. Made by make_operations.py: do not edit.

from typing import Any, Iterable, Literal, Optional, Sequence, Tuple, Union

import numpy as np

from ._call import ImageLike, Path, Progress
from ._core import Image
from ._night import Registration, Stack

# (left, top, right, bottom) [pixels], right and bottom exclusive.
_Rectangle = Tuple[int, int, int, int]
_Files = Union[Path, Iterable[Path]]
'''

TYPES = {
    "number": "float",
    "whole": "int",
    "flag": "bool",
    "text": "str",
    "numbers": "Union[Sequence[float], Sequence[Tuple[float, float]]]",
    "image": "Union[ImageLike, Path]",
    "file": "Path",
    "output": "Path",
    "curve": "Sequence[Tuple[float, float]]",
    "rectangle": "_Rectangle",
}
IN_WORDS = {
    "number": "float",
    "whole": "int",
    "flag": "bool",
    "text": "str",
    "numbers": "sequence of float",
    "image": "Image, array_like or path",
    "file": "path",
    "output": "path",
    "curve": "sequence of (x, y)",
    "rectangle": "(left, top, right, bottom)",
}


class Argument(NamedTuple):
    """Of a function; without a default it must be given."""

    name: str
    type: str
    default: Optional[str] = None


LIMIT = 3.4e38  # what a sample can hold is no limit that a person set

# What the night's jobs take besides, and how each is described.
NIGHT = {
    "stack": [
        (Argument("masters", "Optional[Path]", "None"), "folder in which masters are kept, to be taken up again"),
        (Argument("registered", "Optional[Path]", "None"), "folder for each light that is used, on the grid of the stack"),
        (Argument("follow", "Optional[Sequence[str]]", "None"), "two places of what moves among the stars, as X,Y@FILE"),
        (Argument("both", "bool", "False"), "with follow: stack the stars, too"),
        (Argument("maps", "bool", "False"), "tell coverage, weights, rejected values and noise of each sample"),
    ],
    "register": [
        (Argument("masters", "Optional[Path]", "None"), "folder in which masters are kept, to be taken up again"),
    ],
}


def name_of(name: str) -> str:
    """The name that Python can take."""
    name = name.replace("-", "_")
    return name + "_" if keyword.iskeyword(name) else name


def words_of(parameter: dict) -> list[str]:
    return [word for word in parameter.get("choices", []) if not word.isdigit()]


def type_of(parameter: dict) -> str:
    words = words_of(parameter)
    literal = f"Literal[{', '.join(json.dumps(word) for word in words)}]"
    if parameter["kind"] == "choice":
        has_numbers = len(words) < len(parameter["choices"])
        return f"Union[{literal}, int]" if has_numbers else literal
    kind = TYPES[parameter["kind"]]
    return f"Union[{kind}, {literal}]" if words else kind


def default_of(parameter: dict) -> str:
    text = parameter.get("default")
    if text is None:
        return "None"
    if parameter["kind"] in ("number", "whole") and text not in parameter.get("choices", []):
        number = float(text) if parameter["kind"] == "number" else int(text)
        return repr(number)
    if parameter["kind"] == "flag":
        return str(text == "yes")
    return json.dumps(text)


def argument_of(parameter: dict) -> Argument:
    name, kind = name_of(parameter["name"]), type_of(parameter)
    if parameter["required"]:
        return Argument(name, kind)
    default = default_of(parameter)
    return Argument(name, f"Optional[{kind}]" if default == "None" else kind, default)


def range_of(parameter: dict) -> str:
    low, high = parameter.get("min"), parameter.get("max")
    if low is None or parameter["kind"] == "numbers":
        return ""
    low, high = (None if abs(limit) > LIMIT else f"{limit:g}" for limit in (low, high))
    if low is not None and high is not None:
        return f"{low} to {high}"
    return f"at least {low}" if low is not None else f"at most {high}" if high is not None else ""


def entry(name: str, kind: str, text: str) -> str:
    return f"{name} : {kind}\n" + textwrap.fill(text, 100, initial_indent="    ", subsequent_indent="    ")


def parameter_entry(parameter: dict) -> str:
    kind = IN_WORDS.get(parameter["kind"], "")
    words = "{" + ", ".join(json.dumps(word) for word in words_of(parameter)) + "}"
    if parameter["kind"] == "choice":
        kind = words
    elif words != "{}":
        kind += f" or {words}"
    facts = ", ".join(fact for fact in (range_of(parameter), parameter.get("unit", "")) if fact)
    text = parameter["summary"] + (f" [{facts}]" if facts else "") + "."
    if "default" in parameter:
        kind += f", default {default_of(parameter)}"
    elif not parameter["required"]:
        kind += ", optional"
        text += f" Without: {parameter['when_absent']}."
    return entry(name_of(parameter["name"]), kind, text[0].upper() + text[1:])


def input_entry(given: dict, is_file: bool) -> str:
    many = given["count"] != "one"
    one = "path" if is_file else "Image or array_like"
    kind = f"{one}, or several" if many else one
    planes = "" if given["planes"] == "any image" else f" [{given['planes']}]"
    return entry(name_of(given["name"]), kind, given["summary"].capitalize() + planes + ".")


def returns_of(operation: dict) -> str:
    if operation["name"] in NIGHT:
        kind = "Stack" if operation["name"] == "stack" else "Registration"
        return entry(kind, "", "What was made, and what is known of the lights.").replace(" : ", "")
    kinds = {"image": "Image", "table": "numpy.ndarray", "numbers": "dict"}
    entries = [entry(made["name"], kinds[made["kind"]], made["summary"].capitalize() + ".") for made in operation["outputs"]]
    if len(entries) > 1:
        entries.append("The first one; with full=True a named tuple of all.")
    return "\n".join(entries)


def section(title: str, text: str) -> str:
    return f"{title}\n{'-' * len(title)}\n{text}"


def docstring_of(operation: dict) -> str:
    is_night = operation["name"] in NIGHT
    entries = [input_entry(given, is_night) for given in operation["inputs"]]
    entries += [parameter_entry(parameter) for parameter in operation["parameters"]]
    for parameter in operation["parameters"]:
        entries += [entry(name_of(alias), "", f"Another name for {name_of(parameter['name'])}.").replace(" : ", "")
                    for alias in parameter.get("aliases", [])]
    entries += [entry(argument.name, argument.type.replace("Optional[", "").rstrip("]"), text.capitalize() + ".")
                for argument, text in NIGHT.get(operation["name"], [])]
    if len(operation["outputs"]) > 1 and not is_night:
        entries.append(entry("full", "bool, default False", "Return all outputs, as a named tuple."))
    entries.append(entry("progress", "bool or callable, optional", "True shows a bar; else progress(stage, done, total)."))
    entries.append(entry("threads", "int, default 0", "At most so many; 0: as many as there are processors."))
    parts = [
        operation["summary"][0].upper() + operation["summary"][1:] + ".",
        section("Parameters", "\n".join(entries)),
        section("Returns", returns_of(operation)),
        section("Raises", entry("ArgumentError", "", "A value or an image that it cannot be done with.").replace(" : ", "")
                + "\n" + entry("FileError", "", "A file that cannot be read or written.").replace(" : ", "")),
        section("Notes", textwrap.fill(operation["help"], 104)
                + f"\n\nA sample depends on: {operation['looks_at']}."),
    ]
    return "\n\n".join(parts)


def parameters_of(operation: dict) -> list[Argument]:
    parameters = sorted(operation["parameters"], key=lambda parameter: not parameter["required"])
    aliases = [Argument(name_of(alias), "Any", "None") for p in operation["parameters"] for alias in p.get("aliases", [])]
    return [argument_of(parameter) for parameter in parameters] + aliases


def body_of(operation: dict) -> tuple[list[Argument], str, str]:
    """Arguments besides those of the catalogue, what is returned, and the call."""
    name = operation["name"]
    inputs = tuple(given["name"] for given in operation["inputs"])
    if name in NIGHT:
        more = [argument for argument, _ in NIGHT[name]]
        return more, "Stack" if name == "stack" else "Registration", f"_{name}({inputs}, locals())"
    if operation["step"]:
        return [], "Image", f"step({name!r}, locals())"
    outputs = {output["name"]: output["kind"] for output in operation["outputs"]}
    call = f"several({name!r}, {inputs}, {outputs}, locals())"
    made = {"image": "Image", "table": "np.ndarray", "numbers": "dict"}[next(iter(outputs.values()))]
    return ([Argument("full", "bool", "False")], "Any", call) if len(outputs) > 1 else ([], made, call)


def inputs_of(operation: dict) -> tuple[list[Argument], list[Argument]]:
    """Those that come by position, and those that come by name."""
    is_night = operation["name"] in NIGHT
    kind = "_Files" if is_night else "ImageLike"
    first, others = [], []
    for given in operation["inputs"]:
        name = name_of(given["name"])
        if given["count"] == "any number":
            others.append(Argument(name, f"Optional[{kind}]", "None"))
        elif given["count"] == "several" and not is_night:
            first.append(Argument(name, "Sequence[ImageLike]"))
        else:
            first.append(Argument(name, kind))
    return first, others


def plain(argument: Argument) -> str:
    return argument.name if argument.default is None else f"{argument.name}={argument.default}"


def typed(argument: Argument) -> str:
    return f"{argument.name}: {argument.type}" + ("" if argument.default is None else f" = {argument.default}")


def signature_of(operation: dict, with_types: bool) -> str:
    first, others = inputs_of(operation)
    more, made, _ = body_of(operation)
    by_name = others + parameters_of(operation) + more
    by_name += [Argument("progress", "Progress", "None"), Argument("threads", "int", "0")]
    as_text = typed if with_types else plain
    arguments = [*map(as_text, first), "*", *map(as_text, by_name)]
    lines = "".join(f"\n    {argument}," for argument in arguments)
    return f"def {name_of(operation['name'])}({lines}\n)" + (f" -> {made}:" if with_types else ":")


def function_of(operation: dict) -> str:
    docstring = textwrap.indent(docstring_of(operation), "    ").lstrip()
    return f'{signature_of(operation, False)}\n    """{docstring}\n    """\n    return {body_of(operation)[2]}\n'


def main(module: str, stub: str) -> None:
    operations = json.load(sys.stdin)
    names = ",\n".join(f"    {json.dumps(name_of(operation['name']))}" for operation in operations)
    parts = [HEADER + f"\n__all__ = [\n{names},\n]\n"] + [function_of(operation) for operation in operations]
    Path(module).write_text("\n\n".join(parts), encoding="utf-8")
    types = [f"{signature_of(operation, True)} ...\n" for operation in operations]
    Path(stub).write_text(STUB_HEADER + f"\n__all__ = [\n{names},\n]\n\n" + "\n".join(types), encoding="utf-8")


if __name__ == "__main__":
    main(*sys.argv[1:])
