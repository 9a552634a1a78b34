"""Many processes make the bytes of one."""

import os
import shutil
import subprocess

import corvane
import numpy as np
import pytest

distributed = pytest.importorskip("distributed")
import corvane.distributed  # noqa: E402

OPTIONS = dict(combine="mean", reject="winsorized", cosmetic=True, maps=True)


@pytest.fixture(scope="module")
def cluster():
    with distributed.LocalCluster(
        n_workers=2, threads_per_worker=1, processes=True, dashboard_address=None, memory_limit="2GB"
    ) as made:
        yield made


@pytest.fixture(scope="module")
def client(cluster):
    with distributed.Client(cluster) as made:
        yield made


@pytest.fixture(scope="module")
def night(tmp_path_factory):
    folder = tmp_path_factory.mktemp("distributed")
    options = "--lights 6 --darks 3 --flats 3 --bias 0 --size 300x260 --turn 0.3 --cosmics 10".split()
    subprocess.check_call([os.environ["MAKE_NIGHT"], folder / "night", *options], stdout=subprocess.DEVNULL)
    return folder


def files_of(stack, folder):
    """The bytes of a stack and of what is known of it."""
    folder.mkdir()
    for name in ("image", "coverage", "noise", "rejected"):
        corvane.write(folder / f"{name}.fits", getattr(stack, name))
    return [path.read_bytes() for path in sorted(folder.iterdir())]


def times_of(folder):
    return {path: path.stat().st_mtime_ns for path in folder.rglob("*") if path.suffix in (".json", ".fits")}


def test_stack_has_the_bytes_of_one_process(night, client, tmp_path):
    alone = corvane.stack(night / "night", **OPTIONS)
    whole = files_of(alone, tmp_path / "whole")
    heard = []
    for bands in (1, 7):
        shared = corvane.distributed.stack(
            night / "night",
            client=client,
            folder=tmp_path / "shared",
            bands=bands,
            progress=lambda *told: heard.append(told),
            **OPTIONS,
        )
        assert files_of(shared, tmp_path / f"bands{bands}") == whole
    assert shared.rejection == alone.rejection and shared.depth == alone.depth
    assert (shared.lights == alone.lights).all()
    stages = [stage for stage, done, total in heard if done == total]
    assert stages == ["Measuring lights...", "Combining bands...", "Combining bands..."]  # lights are measured once


def test_samples_do_not_pass_the_scheduler(night, client, tmp_path, monkeypatch):
    import distributed.comm.tcp as tcp

    passed = []
    to_frames = tcp.to_frames

    async def counted(*args, **kwargs):
        frames = await to_frames(*args, **kwargs)
        passed.append(sum(memoryview(frame).nbytes for frame in frames))
        return frames

    monkeypatch.setattr(tcp, "to_frames", counted)  # of the scheduler and the client, which are in this process
    corvane.distributed.stack(night / "night", client=client, folder=tmp_path, bands=6)
    assert 12 * 300 < sum(passed) < 12 * 5000  # a record has 50 KB, a band 140


def test_restart_takes_up_what_is_finished(night, client, tmp_path):
    def work():
        return corvane.distributed.stack(night / "night", client=client, folder=tmp_path, bands=4)

    work()
    before = times_of(tmp_path)
    lost = next(tmp_path.glob("bands/*/2_of_4.fits"))
    record = next(tmp_path.glob("lights/*.json"))
    lost.unlink()
    record.unlink()
    work()
    after = times_of(tmp_path)
    changed = {path.name for path in before if before[path] != after[path]}
    assert changed == {lost.name, record.name, "plan.json", next(tmp_path.glob("options-*")).name}
    os.utime(night / "night" / "light_002.fits")  # another file, as far as one knows
    work()
    assert len(list(tmp_path.glob("lights/*.json"))) == 7


def test_worker_that_is_killed_does_no_harm(night, client, tmp_path):
    alone = corvane.stack(night / "night", maps=True)
    victim = client.submit(os.getpid, pure=False).result()
    killed = []

    def kill(stage, done, total):
        if stage.startswith("Combining") and not killed:
            killed.append(victim)
            os.kill(victim, 9)

    made = corvane.distributed.stack(
        night / "night", client=client, folder=tmp_path / "work", bands=40, progress=kill, maps=True
    )
    assert killed and files_of(made, tmp_path / "made") == files_of(alone, tmp_path / "alone")
    client.wait_for_workers(2, timeout=20)


def test_errors_of_workers_name_the_file(night, client, tmp_path):
    with pytest.raises(corvane.FileError, match="nowhere: no such file"):
        corvane.distributed.stack(night / "nowhere", client=client, folder=tmp_path)
    lights = sorted((night / "night").glob("light*"))
    gone = tmp_path / "gone.fits"
    gone.write_bytes(lights[0].read_bytes())

    def remove(stage, done, total):
        gone.unlink(missing_ok=True)

    with pytest.raises(corvane.FileError, match="gone.fits: "):
        lights[0] = gone
        corvane.distributed.stack(lights, client=client, folder=tmp_path / "work", bands=9, progress=remove)
    with pytest.raises(corvane.ArgumentError, match="registered = .*in one piece"):
        corvane.distributed.stack(night / "night", client=client, folder=tmp_path, registered=tmp_path)
    with pytest.raises(corvane.ArgumentError, match="bands = 261: must be 1 to 260"):
        corvane.distributed.stack(night / "night", client=client, folder=tmp_path, bands=261)


def limit_files(size):
    """No file of this process can become larger: as if the disk were full."""
    import resource
    import signal

    signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
    resource.setrlimit(resource.RLIMIT_FSIZE, (size, resource.RLIM_INFINITY))


def test_full_disk_names_the_file_and_leaves_none(night, client, tmp_path):
    client.run(limit_files, 100_000)
    try:
        with pytest.raises(corvane.FileError, match="1_of_1.fits: "):
            corvane.distributed.stack(night / "night", client=client, folder=tmp_path, bands=1)
    finally:
        import resource

        client.run(limit_files, resource.RLIM_INFINITY)
    assert not list(tmp_path.glob("bands/*/*"))
    made = corvane.distributed.stack(night / "night", client=client, folder=tmp_path, bands=1)
    assert made.image.shape == (260, 300)


def test_map_has_the_bytes_of_the_command(night, client, tmp_path):
    steps = ["median:type=1", "unsharp"]
    lights = sorted((night / "night").glob("light*"))
    made = corvane.distributed.map(lights, steps, client=client, output=tmp_path / "made")
    subprocess.check_call([os.environ["CORVANE"], "apply", *lights, "-o", f"{tmp_path}/alone/", *steps])
    for light, file in zip(lights, made):
        assert open(file, "rb").read() == (tmp_path / "alone" / light.name).read_bytes()
    with pytest.raises(corvane.ArgumentError, match="is both input and output"):
        corvane.distributed.map(lights, steps, client=client, output=night / "night")
    with pytest.raises(corvane.ArgumentError, match="sky.fits: would be written for each image"):
        corvane.distributed.map(lights, ["background:model-file=sky.fits"], client=client, output=tmp_path / "made")


def test_map_makes_what_is_not_made(night, client, tmp_path):
    shutil.copytree(night / "night", tmp_path / "night")
    lights = sorted((tmp_path / "night").glob("light*"))[:3]
    mask = tmp_path / "mask.fits"
    corvane.write(mask, np.ones(corvane.read(lights[0]).shape, np.float32))

    def made(*steps):
        """Which results are written, by their numbers."""
        before = [os.stat(file).st_ino if os.path.exists(file) else 0 for file in results]
        corvane.distributed.map(lights, steps, client=client, output=tmp_path / "made")
        return [i for i, file in enumerate(results) if os.stat(file).st_ino != before[i]]

    results = [tmp_path / "made" / light.name for light in lights]
    assert made(f"median:mask={mask}") == [0, 1, 2]
    assert made(f"median:mask={mask}") == []
    os.utime(lights[1])
    results[2].write_bytes(results[2].read_bytes()[:-2880])
    assert made(f"median:mask={mask}") == [1, 2]
    os.utime(mask)
    assert made(f"median:mask={mask}") == [0, 1, 2]
    assert made("invert") == [0, 1, 2]


@pytest.mark.parametrize(
    "steps",
    [
        ["median:type=1", "gaussian:sigma=2", "clip:min=900,max=2000"],
        ["unsharp", "invert:rect=10:40:200:180", "log"],  # the display levels are those of the whole
        ["debayer", "median"],  # tiles begin at even rows
    ],
)
def test_tiles_have_the_bytes_of_the_whole(night, client, tmp_path, monkeypatch, steps):
    monkeypatch.setattr(corvane.distributed, "_SAMPLES_OF_TILE", 300 * 37)
    image = corvane.read(night / "night" / "light_001.fits")
    for name, value in {"BAYERPAT": "RGGB", "CTYPE1": "RA---TAN", "CTYPE2": "DEC--TAN", "CRPIX2": 120.5}.items():
        image.header[name] = value
    corvane.write(tmp_path / "image.fits", image)
    corvane.write(tmp_path / "whole.fits", corvane.apply(corvane.read(tmp_path / "image.fits"), *steps))
    heard = []
    made = corvane.distributed.apply(
        tmp_path / "image.fits",
        *steps,
        client=client,
        output=tmp_path / "tiles.fits",
        progress=lambda *told: heard.append(told),
    )
    assert heard[-1] == ("Working on tiles...", 8, 8)
    assert open(made, "rb").read() == (tmp_path / "whole.fits").read_bytes()


def test_what_tiles_cannot_do_is_refused(night, client, tmp_path):
    light = night / "night" / "light_001.fits"
    for step, reason in [
        ("autostretch", "statistics"),
        ("flip:direction=vertical", "other places"),
        (f"dark:file={light}", "another one"),
    ]:
        with pytest.raises(corvane.ArgumentError, match=f"{step[:4]}.*: an image is worked on as a whole.*{reason}"):
            corvane.distributed.apply(light, step, client=client, output=tmp_path / "tiles.fits")
    with pytest.raises(corvane.FileError, match="no.fits"):
        corvane.distributed.apply(tmp_path / "no.fits", "median", client=client, output=tmp_path / "tiles.fits")
    assert not list(tmp_path.iterdir())
