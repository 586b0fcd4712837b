"""A table in partitions over processes, one of which is killed: the bytes of a single run."""
import os
import pathlib
import re
import signal
import time

import dask.dataframe as dd
import numpy as np
import pandas as pd
from dask.distributed import Client, LocalCluster

import nodusmath as nm

PAGE = pathlib.Path(__file__).parents[2] / "docs/farm.md"
GRAPH = {"nodes": {
    "turn": {"type": "RandomGenerator_Float", "inputs": {"seed": 7, "value": {"column": "x"}}},
    "count": {"type": "Add_Int32", "inputs": {"a": {"frame": True}, "b": 1}}},
    "outputs": ["turn", "count"]}


def recipe():
    """The functions of the page, in a namespace of their own, for which processes ask by value."""
    [program] = re.findall(r"```python\n(.*?)```", PAGE.read_text(), re.DOTALL)
    names = {"__name__": "recipe"}
    exec(compile(program, "farm.md", "exec"), names)
    return names


def slowly(graph_part):
    time.sleep(0.3)
    return graph_part


def test_a_worker_that_is_killed_changes_no_byte():
    table = pd.DataFrame({"x": np.linspace(-5, 5, 20_000)})
    graph = nm.Graph(GRAPH)
    expected = graph.evaluate(columns=table)
    parts = dd.from_pandas(table, npartitions=16)
    with LocalCluster(n_workers=2, threads_per_worker=1, processes=True, dashboard_address=None) as cluster, \
            Client(cluster) as client:
        before = client.run(os.getpid)
        work = recipe()["evaluate"](graph, parts).map_partitions(slowly).persist()
        time.sleep(1)  # some partitions are done, some on their way
        victim, process = next(iter(before.items()))
        os.kill(process, signal.SIGKILL)
        results = work.compute()
        after = client.run(os.getpid)
    assert victim not in after or after[victim] != process
    assert results.index.equals(expected.index)
    for name in expected:
        assert results[name].to_numpy().tobytes() == expected[name].to_numpy().tobytes()
