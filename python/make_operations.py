#!/usr/bin/env python3
"""Writes the functions of the package, one for each operation of the catalogue.

usage: corvane ops --json | make_operations.py > corvane/operations.py
"""

from __future__ import annotations

import json
import keyword
import sys
import textwrap

HEADER = '''"""The operations of the catalogue as functions. Made by make_operations.py: do not edit."""

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
    "rectangle": "Rectangle",
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
LIMIT = 3.4e38  # what a sample can hold is no limit that a person set

# What the night's jobs take besides, and how each is described.
NIGHT = {
    "stack": [
        ("masters", "Optional[Path]", "None", "folder in which masters are kept, to be taken up again"),
        ("registered", "Optional[Path]", "None", "folder for each light that is used, on the grid of the stack"),
        ("follow", "Optional[Sequence[str]]", "None", "two places of what moves among the stars, as X,Y@FILE"),
        ("both", "bool", "False", "with follow: stack the stars, too"),
        ("maps", "bool", "False", "tell coverage, weights, rejected values and noise of each sample"),
    ],
    "register": [
        ("masters", "Optional[Path]", "None", "folder in which masters are kept, to be taken up again"),
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


def argument_of(parameter: dict, required: bool) -> str:
    kind = type_of(parameter)
    if required:
        return f"{name_of(parameter['name'])}: {kind}"
    default = default_of(parameter)
    return f"{name_of(parameter['name'])}: {f'Optional[{kind}]' if default == 'None' else kind} = {default}"


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
    entries += [entry(name, kind.replace("Optional[", "").rstrip("]"), text.capitalize() + ".")
                for name, kind, _, text in NIGHT.get(operation["name"], [])]
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


def parameters_of(operation: dict) -> list[str]:
    required = [argument_of(p, True) for p in operation["parameters"] if p["required"]]
    others = [argument_of(p, False) for p in operation["parameters"] if not p["required"]]
    aliases = [f"{name_of(alias)}: Any = None" for p in operation["parameters"] for alias in p.get("aliases", [])]
    return required + others + aliases


def body_of(operation: dict) -> tuple[list[str], str, str]:
    """Arguments besides those of the catalogue, what is returned, and the call."""
    name = operation["name"]
    inputs = tuple(given["name"] for given in operation["inputs"])
    if name in NIGHT:
        more = [f"{argument}: {kind} = {default}" for argument, kind, default, _ in NIGHT[name]]
        return more, "Stack" if name == "stack" else "Registration", f"_{name}({inputs}, locals())"
    if operation["step"]:
        return [], "Image", f"step({name!r}, locals())"
    outputs = {output["name"]: output["kind"] for output in operation["outputs"]}
    call = f"several({name!r}, {inputs}, {outputs}, locals())"
    made = {"image": "Image", "table": "np.ndarray", "numbers": "dict"}[next(iter(outputs.values()))]
    return (["full: bool = False"], "Any", call) if len(outputs) > 1 else ([], made, call)


def inputs_of(operation: dict) -> tuple[list[str], list[str]]:
    """Those that come by position, and those that come by name."""
    is_night = operation["name"] in NIGHT
    kind = "Files" if is_night else "ImageLike"
    first, others = [], []
    for given in operation["inputs"]:
        name = name_of(given["name"])
        if given["count"] == "any number":
            others.append(f"{name}: Optional[{kind}] = None")
        elif given["count"] == "several" and not is_night:
            first.append(f"{name}: Sequence[ImageLike]")
        else:
            first.append(f"{name}: {kind}")
    return first, others


def function_of(operation: dict) -> str:
    first, others = inputs_of(operation)
    more, made, call = body_of(operation)
    ends = ["progress: Progress = None", "threads: int = 0"]
    arguments = first + ["*"] + others + parameters_of(operation) + more + ends
    lines = [f"def {name_of(operation['name'])}("]
    lines += [f"    {argument}," for argument in arguments]
    lines += [f") -> {made}:", '    """' + textwrap.indent(docstring_of(operation), "    ").lstrip(), '    """']
    return "\n".join(lines) + f"\n    return {call}\n"


def main() -> None:
    operations = json.load(sys.stdin)
    names = ",\n".join(f"    {json.dumps(name_of(operation['name']))}" for operation in operations)
    parts = [HEADER + f"\n__all__ = [\n{names},\n]\n"] + [function_of(operation) for operation in operations]
    sys.stdout.write("\n\n".join(parts))


if __name__ == "__main__":
    main()
