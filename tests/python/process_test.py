"""How the package lives with the rest of a program: locks, signals, threads, processes, progress."""
import _thread
import concurrent.futures
import multiprocessing
import signal
import subprocess
import sys
import threading
import time

import numpy as np
import pytest

import nodusmath as nm

NOISE = {"nodes": {f"n{i}": {"type": "Noise3D", "inputs": {"position": [{"column": "x"}, i, 0]}} for i in range(8)},
         "outputs": [f"n{i}" for i in range(8)]}
ROWS = np.linspace(0, 99, 20_000_000, dtype=np.float32)


def graph():
    made = nm.Graph()
    sums = nm.column("x")
    for _ in range(12):
        sums = made.add("Sin_Float", value=sums)
    made.output(sums)
    return made


WORK = {"kernel": lambda: nm.Tan_Float(ROWS),
        "graph": lambda: graph().evaluate(columns={"x": ROWS}, threads=2)}


@pytest.mark.parametrize("work", WORK)
def test_an_interrupt_ends_long_work(work):
    begin = time.perf_counter()
    signal.signal(signal.SIGALRM, lambda *_: _thread.interrupt_main())
    signal.setitimer(signal.ITIMER_REAL, 0.1)
    with pytest.raises(KeyboardInterrupt):
        WORK[work]()
        time.sleep(0.5)  # nothing was interrupted: the work was too short to tell
        pytest.fail("the work went on to its end")
    ended = time.perf_counter() - begin
    begin = time.perf_counter()
    WORK[work]()
    assert ended < 0.8 * (time.perf_counter() - begin) or ended < 0.4


@pytest.mark.parametrize("work", WORK)
def test_other_threads_go_on(work):
    done = threading.Event()
    ticks = 0

    def run():
        WORK[work]()
        done.set()

    worker = threading.Thread(target=run)
    worker.start()
    while not done.is_set():
        ticks += 1
        time.sleep(0.001)
    worker.join()
    assert ticks > 20


def test_progress_is_told_and_may_end_the_work():
    told = []
    expected = graph().evaluate(columns={"x": ROWS})
    results = graph().evaluate(columns={"x": ROWS}, progress=lambda done, total: told.append((done, total)))
    name = next(iter(results))
    assert results[name].tobytes() == expected[name].tobytes()
    assert told == sorted(told) and told[-1] == (ROWS.size, ROWS.size) and len(told) > 1
    assert nm.Graph(NOISE).evaluate(columns={"x": ROWS[:10]}, progress=True).keys()

    def enough(*_):
        raise RuntimeError("enough")

    with pytest.raises(RuntimeError, match="enough"):
        graph().evaluate(columns={"x": ROWS}, progress=enough)


def some(first):
    sines = nm.Sin_Float(ROWS[first:first + 400_000])
    assert sines[::100_000].tobytes() == b"".join(nm.Sin_Float(ROWS[first + i]).tobytes() for i in range(0, 400_000, 100_000))
    return sines.tobytes()[::997] + nm.Graph(NOISE).evaluate(columns={"x": ROWS[first:first + 5000]}, threads=2)["n3"].tobytes()


def test_threads_and_processes_have_the_same_bits():
    parts = range(0, 100_000, 5000)
    nm.set_threads(1)
    expected = [*map(some, parts)]
    nm.set_threads()
    assert [*map(some, parts)] == expected
    shared = nm.Graph(NOISE)
    with concurrent.futures.ThreadPoolExecutor(4) as pool:
        assert [*pool.map(some, parts)] == expected
        again = pool.map(lambda part: shared.evaluate(columns={"x": ROWS[part:part + 5000]})["n3"].tobytes(), parts)
        assert all(map(bytes.endswith, expected, again))
    for way in ("fork", "spawn"):
        with multiprocessing.get_context(way).Pool(2) as pool:
            assert pool.map_async(some, parts).get(timeout=60) == expected


def run(program):
    return subprocess.run([sys.executable, "-B", "-c", program], capture_output=True, text=True, check=False,
                          timeout=60)


def test_sub_interpreters_are_refused():
    for first in ("", "import nodusmath\n"):
        done = run(first + "import _xxsubinterpreters as sub\nsub.run_string(sub.create(), 'import nodusmath')")
        assert "nodusmath works in the main interpreter alone" in done.stderr, done.stderr
        assert done.returncode == 1


def test_nobody_listens_nobody_pays():
    program = ("import nodusmath as nm, logging\nnm.LogValueFloat(1.5)\n"
               "logging.basicConfig(level=logging.INFO, format='%(name)s %(message)s')\nnm.LogValueFloat(2.5)")
    assert run(program).stderr == "nodusmath frame 0: 2.500000\n"
