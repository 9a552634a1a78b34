"""What several tests work on."""

import os
import subprocess

import pytest


@pytest.fixture(scope="session")
def night(tmp_path_factory):
    """The folder of a night whose truth is known: lights, darks and flats."""
    folder = tmp_path_factory.mktemp("nights") / "night"
    options = "--lights 5 --darks 3 --flats 3 --bias 0 --size 320x300".split()
    subprocess.check_call([os.environ["MAKE_NIGHT"], folder, *options], stdout=subprocess.DEVNULL)
    return folder
