"""The page about Python works as it stands."""

import re
from pathlib import Path

PAGE = Path(__file__).parents[2] / "docs" / "python.md"


def test_page(night, tmp_path, monkeypatch, capsys):
    monkeypatch.chdir(tmp_path)
    Path("night").symlink_to(night)
    blocks = re.findall(r"```python\n(.*?)```", PAGE.read_text(), re.DOTALL)
    assert len(blocks) >= 5
    names = {}
    for block in blocks:
        exec(compile(block, str(PAGE), "exec"), names)
    assert (tmp_path / "stack.fits").exists()
    assert "rank = 99: must be 0 to 20 - rank 99 must be 0 to 20" in capsys.readouterr().out
