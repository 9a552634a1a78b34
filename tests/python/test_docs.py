"""The page about Python works as it stands."""

import os
import re
import subprocess
from pathlib import Path

PAGE = Path(__file__).parents[2] / "docs" / "python.md"


def test_page(tmp_path, monkeypatch, capsys):
    monkeypatch.chdir(tmp_path)
    options = "--lights 3 --darks 2 --flats 2 --bias 0 --size 320x300".split()
    subprocess.check_call([os.environ["MAKE_NIGHT"], "night", *options], stdout=subprocess.DEVNULL)
    blocks = re.findall(r"```python\n(.*?)```", PAGE.read_text(), re.DOTALL)
    assert len(blocks) >= 5
    names = {}
    for block in blocks:
        exec(compile(block, str(PAGE), "exec"), names)
    assert (tmp_path / "stack.fits").exists()
    assert "rank = 99: must be 0 to 20 - rank 99 must be 0 to 20" in capsys.readouterr().out
