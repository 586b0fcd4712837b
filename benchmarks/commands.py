"""Times whole commands, as a user calls them, and writes what Google Benchmark writes of functions.

usage: commands.py NODUS TABLE RESULTS.json
"""
import json
import os
import pathlib
import subprocess
import sys
import time

REPETITIONS = 9
COMMANDS = {
    'command/1 thread/table': '{nodus} eval benchmarks/table.json --data {table} --out {table}.out.csv --threads 1',
    'command/2 threads/table': '{nodus} eval benchmarks/table.json --data {table} --out {table}.out.csv --threads 2',
}

nodus, table, results = sys.argv[1:]
runs = []
for index, (name, command) in enumerate([*COMMANDS.items()] * REPETITIONS):
    words = command.format(nodus=nodus, table=table).split()
    start = time.perf_counter()
    # A process starts with the memory of the one that it is made of: that of time is small.
    done = subprocess.run(['time', '--format=%M', *words], stderr=subprocess.PIPE, text=True)
    seconds = time.perf_counter() - start
    if done.returncode:
        sys.exit(done.stderr)
    runs.append({'name': name, 'family_index': index, 'run_type': 'iteration', 'items_per_second': 1 / seconds,
                 'megabytes_a_second': os.path.getsize(table) / 1e6 / seconds,
                 'megabytes_of_memory': int(done.stderr) * 1024 / 1e6})
pathlib.Path(results).write_text(json.dumps({'benchmarks': runs}))
