"""How calls run: progress, Ctrl-C, threads, messages, errors."""
import math
import multiprocessing
import os
import signal
import threading
import time

import numpy as np
import pytest
from conftest import same_bits

import zef


def test_progress_goes_up_to_one_on_the_calling_thread(cloud):
    seen = []
    zef.reconstruct(cloud, progress=lambda name, part: seen.append((name, part, threading.get_ident())))
    parts = [part for _, part, _ in seen]
    assert parts and parts == sorted(parts) and parts[-1] == 1.0
    assert {(name, thread) for name, _, thread in seen} == {("Reconstruct", threading.get_ident())}


def test_what_progress_raises_stops_the_call(large_cloud):
    class Enough(Exception):
        pass

    def stop(name, part):
        if part > 0.1:
            raise Enough(part, time.monotonic())

    with pytest.raises(Enough) as raised:
        zef.reconstruct(large_cloud, progress=stop)
    part, when = raised.value.args
    assert part < 1.0 and time.monotonic() - when < 0.25


@pytest.mark.parametrize("with_tqdm", [True, False])
def test_progress_true_writes_to_the_error_stream(with_tqdm, cloud, capsys, monkeypatch):
    bars = []

    class Bar:
        def __init__(self, **kwargs):
            self.n = 0
            bars.append(self)

        def set_description(self, name, refresh):
            self.name = name

        def update(self, step):
            self.n += step

        def close(self):
            self.closed = True

    fake = type("fake", (), {"tqdm": Bar}) if with_tqdm else None
    monkeypatch.setitem(__import__("sys").modules, "tqdm", fake)
    zef.reconstruct(cloud, progress=True)
    if with_tqdm:
        assert (bars[0].n, bars[0].name, bars[0].closed) == (100, "Reconstruct", True)
    else:
        assert capsys.readouterr().err.endswith("Reconstruct 100 %\n")


def test_progress_of_another_kind_is_refused(cloud):
    with pytest.raises(TypeError, match="progress"):
        zef.reconstruct(cloud, progress="yes")


# Each lasts well above the time after which it is interrupted.
LONG_CALLS = {
    "reconstruct": lambda points, mesh: zef.reconstruct(points),
    "finish": lambda points, mesh: zef.finish(mesh, points),
    "anneal": lambda points, mesh: zef.anneal(mesh),
    "compare": lambda points, mesh: zef.compare(mesh, mesh, numSamples=5_000_000),
}


@pytest.fixture(scope="module")
def large_mesh(large_cloud):
    return zef.reconstruct(large_cloud)


def seconds_to_stop(call, delay):
    """From a real SIGINT, that long after the beginning, to the KeyboardInterrupt; infinite if the call was over."""
    sent = []
    over = False

    def send():
        sent.append(time.monotonic())
        os.kill(os.getpid(), signal.SIGINT)

    timer = threading.Timer(delay, send)
    timer.start()
    try:
        call()
        over = True
        time.sleep(60)
    except KeyboardInterrupt:
        stopped = time.monotonic()
    timer.join()
    return math.inf if over else stopped - sent[0]


@pytest.mark.parametrize("name", LONG_CALLS)
def test_control_c_stops_within_a_quarter_of_a_second(name, large_cloud, large_mesh):
    call = LONG_CALLS[name]
    # Now and then other programs hold the processors.
    assert any(seconds_to_stop(lambda: call(large_cloud, large_mesh), 0.1 + 0.05 * i) < 0.25 for i in range(8))
    assert len(large_mesh.triangles) > 0
    assert zef.check(large_mesh, bFindIntersections=False).numNotFinite == 0


def test_a_handler_that_does_not_raise_lets_the_call_go_on(cloud, large_cloud):
    handled = []
    before = signal.signal(signal.SIGUSR1, lambda *_: handled.append(threading.get_ident()))
    try:
        timer = threading.Timer(0.1, os.kill, (os.getpid(), signal.SIGUSR1))
        timer.start()
        assert zef.reconstruct(large_cloud)
        timer.join()
    finally:
        signal.signal(signal.SIGUSR1, before)
    assert handled == [threading.get_ident()]


def in_threads(count, work):
    results = [None] * count

    def run(i):
        results[i] = work(i)

    threads = [threading.Thread(target=run, args=(i,)) for i in range(count)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    return results


def test_threads_call_at_the_same_time(cloud):
    expected = zef.finish(zef.reconstruct(cloud), cloud)
    for mesh in in_threads(6, lambda i: zef.finish(zef.reconstruct(cloud), cloud)):
        assert same_bits(mesh, expected)


def test_the_lock_is_free_during_a_call(large_cloud):
    turns = []
    done = threading.Event()

    def count():
        while not done.is_set():
            turns.append(time.monotonic())
            time.sleep(0.002)

    counter = threading.Thread(target=count)
    counter.start()
    zef.reconstruct(large_cloud)
    done.set()
    counter.join()
    assert max(np.diff(turns)) < 0.25


def test_one_mesh_in_many_threads_is_changed_by_one_at_a_time(cloud):
    mesh = zef.reconstruct(cloud)
    expected = zef.reconstruct(cloud)
    for _ in range(6):
        zef.smooth(expected, 1)
    in_threads(6, lambda i: zef.smooth(mesh, 1))
    assert same_bits(mesh, expected)


def test_a_progress_callable_may_call_the_library(cloud):
    mesh = zef.reconstruct(cloud)
    sizes = []
    zef.anneal(mesh, progress=lambda name, part: sizes.append((len(mesh.triangles), zef.spacing(cloud[:100]))))
    assert sizes


def test_messages_of_a_thread_come_before_its_call_returns(cloud, messages):
    dirty = np.vstack([cloud, [[np.nan] * 3]])

    def work(i):
        zef.reconstruct(dirty)
        return sum(text.startswith("Skipped") for _, text in messages())

    assert min(in_threads(4, work)) >= 1
    assert sum(text.startswith("Skipped") for _, text in messages()) == 4


def test_nothing_is_printed(cloud, capfd):
    zef.reconstruct(np.vstack([cloud, [[np.nan] * 3]]))
    with pytest.raises(zef.BadArgument):
        zef.reconstruct(cloud, spacingFactor=-1.0)
    assert capfd.readouterr() == ("", "")


ERRORS = {
    "argument": (lambda cloud: zef.reconstruct(cloud, spacingFactor=-1), zef.BadArgument, ValueError, "above 0"),
    "points": (lambda cloud: zef.spacing(cloud[:1]), zef.UnusablePoints, ValueError, "point"),
    "file": (lambda cloud: zef.read_points("no_such.ply"), zef.BadFile, ValueError, "no_such.ply"),
    "limit": (lambda cloud: zef.reconstruct(cloud, memoryLimit=1), zef.OverMemoryLimit, MemoryError, "memory"),
    "option": (lambda cloud: zef.remesh(cloud, tolerance=2.0), zef.BadArgument, ValueError, "tolerance"),
    "NaN": (lambda cloud: zef.reduce(zef.reconstruct(cloud), np.nan), zef.BadArgument, ValueError, "not a number"),
}


@pytest.mark.parametrize("case", ERRORS)
def test_refusals_have_a_type_and_the_text_of_the_library(case, cloud, messages):
    call, kind, builtin, text = ERRORS[case]
    with pytest.raises(kind, match=text) as refused:
        call(cloud)
    assert isinstance(refused.value, (zef.Error, builtin)) and issubclass(kind, zef.Error)
    assert not [message for message in messages() if message[1] == str(refused.value)], "said once is enough"


WRONG_TYPES = {
    "unknown option": (lambda mesh: zef.finish(mesh, bEven=True), "bEven"),
    "option": (lambda mesh: zef.finish(mesh, maxMove="far"), "maxMove must be a number"),
    "negative count": (lambda mesh: zef.finish(mesh, longestHole=-1), "longestHole must be a whole number of at least"),
    "argument": (lambda mesh: zef.reconstruct(mesh.vertices, spacingFactor="1"), "spacingFactor must be a number"),
    "iterations": (lambda mesh: zef.smooth(zef.Mesh(mesh), 1.5), "numIterations must be a whole number"),
    "report": (lambda mesh: zef.finish(mesh, report={}), "zef.Report"),
    "no mesh": (lambda mesh: zef.check(42), "a mesh is wanted"),
    "in place": (lambda mesh: zef.flips(tuple(mesh)), "in place"),
}


@pytest.mark.parametrize("case", WRONG_TYPES)
def test_wrong_types_are_named(case, mesh):
    call, text = WRONG_TYPES[case]
    with pytest.raises(TypeError, match=text):
        call(mesh)


def call_in_child(points, queue):
    queue.put(zef.reconstruct(points).vertices.tobytes())


def test_a_forked_child_can_call(cloud):
    expected = zef.reconstruct(cloud).vertices.tobytes()
    context = multiprocessing.get_context("fork")
    queue = context.Queue()
    child = context.Process(target=call_in_child, args=(cloud, queue))
    child.start()
    assert queue.get(timeout=60) == expected
    child.join()
