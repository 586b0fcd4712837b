"""Times whole commands, as a user calls them, and writes what Google Benchmark writes of functions.

usage: commands.py NODUS MINIMAL TABLE RESULTS.json
MINIMAL is bench_minimal. Times of groups but "command" are the processor's, of all threads together. Polars and DuckDB
take part when the folder node_modules here has nodejs-polars and @duckdb/node-api.
"""
import json
import os
import pathlib
import subprocess
import sys
import time

REPETITIONS = 9

nodus, minimal, table, results = sys.argv[1:]


def commands():
    """Name, what it is held against, words."""
    formulas = f'{nodus} eval benchmarks/formulas.json --data {table} --out {table}.out.csv --threads'
    whole = f'{nodus} eval benchmarks/table.json --data {table} --out {table}.out.csv --threads'
    picture = f'{nodus} eval benchmarks/picture.json --image {table}.png --size 2048x2048 --threads 1'
    large = f'{nodus} eval {table}.large.json --out {table}.out.csv --frames 0:15 --threads 1'
    for threads in ('1', '2'):
        yield f'command/{threads} thread/table', '', f'{whole} {threads}'
        ours = f'csv/{threads}/nodus'
        yield ours, '', f'{formulas} {threads}'
        if threads == '1':
            yield f'csv/{threads}/minimal program', ours, f'{minimal} {table} {table}.out.csv'
        for package, library in (('nodejs-polars', 'polars'), ('@duckdb/node-api', 'DuckDB')):
            if os.path.exists(f'node_modules/{package}'):
                yield (f'csv/{threads}/{library}', ours,
                       f'node benchmarks/peers/tables.mjs {library} {table} {table}.out.csv {threads}')
    for job, words in (('picture', picture), ('16 frames of 100,000 nodes', large)):
        yield f'calls/{job}/rows', '', words
        yield f'calls/{job}/one by one', f'calls/{job}/rows', f'{words} --one-by-one'


def write_large_graph(file):
    """Chains of sums, all of which the frame changes."""
    nodes = {'0': {'type': 'CastInt32ToFloat', 'inputs': {'value': {'frame': True}}}}
    for index in range(1, 100000):
        nodes[str(index)] = {'type': 'Add_Float', 'inputs': {'a': {'from': str(index // 2)}, 'b': index % 10}}
    outputs = [str(index) for index in range(50000, 100000, 10)]
    pathlib.Path(file).write_text(json.dumps({'nodes': nodes, 'outputs': outputs}))


write_large_graph(f'{table}.large.json')
runs = []
for index, (name, beside, command) in enumerate([*commands()] * REPETITIONS):
    start = time.perf_counter()
    # A process starts with the memory of the one that it is made of: that of time is small.
    done = subprocess.run(['time', '--format=%M %U %S', *command.split()], stderr=subprocess.PIPE, text=True)
    seconds = time.perf_counter() - start
    if done.returncode:
        sys.exit(done.stderr)
    memory, *processor = map(float, done.stderr.split())
    if not name.startswith('command/'):
        seconds = sum(processor)
    run = {'name': name, 'family_index': index, 'run_type': 'iteration', 'label': beside, 'items_per_second': 1 / seconds}
    if name.startswith('command/'):
        run |= {'megabytes_a_second': os.path.getsize(table) / 1e6 / seconds, 'megabytes_of_memory': memory * 1024 / 1e6}
    runs.append(run)
pathlib.Path(results).write_text(json.dumps({'benchmarks': runs}))
