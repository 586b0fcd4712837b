"""Ratios of what was measured. Times are of one machine and one moment and are not passed on.

usage: report.py RATIOS.json FILE...   writes the ratios, and prints them as tables
FILEs are Google Benchmark's. A measurement is named GROUP/ROW/COLUMN, and its label names the one that it is held
against: their ratio is a cell of a table.
"""
import json
import pathlib
import re
import statistics
import subprocess
import sys

MODULE = pathlib.Path(__file__).resolve().parents[1] / 'build/release/lib/libnodusmath.so'
WAYS = {'back_to_back': 'back to back', 'latency': 'latency', 'fresh_ports': 'fresh ports'}
FACTS = ('distance', 'ulps', 'megabytes_a_second', 'megabytes_of_memory')
TEXT = '{:74} {:>13} {:>13} {:>13}  {}'
MARKDOWN = '| {} | {} | {} | {} | {} |'


def fastest(files):
    """By name, in the order of registration: what disturbs a repetition makes it slower."""
    best = {}
    for file in files:
        runs = json.loads(pathlib.Path(file).read_text())['benchmarks']
        for run in sorted(runs, key=lambda run: run['family_index']):
            name = re.sub('/(real_time|threads:).*', '', run['name'])
            if run['run_type'] == 'iteration':
                best[name] = max(best.get(name, run), run, key=lambda run: run['items_per_second'])
    return best


def ratios_of(runs):
    """ratios[group][row][column]: the time of a measurement over that of the one beside it; and the row's facts."""
    ratios = {}
    speed = {name: run['items_per_second'] for name, run in runs.items()}
    for name, run in runs.items():
        group, row, column = name.split('/')
        cells = {fact: run[fact] for fact in FACTS if fact in run}
        if beside := run.get('label'):
            if beside not in speed:
                sys.exit(f'{name} was measured without {beside}')
            cells[column] = speed[beside] / speed[name]
            if column == 'over_kernels':
                cells['nanoseconds_beyond_kernels'] = 1e9 / speed[name] - 1e9 / speed[beside]
        if cells:
            ratios.setdefault(group, {}).setdefault(row, {}).update(cells)
    if 'loading' in ratios:
        listed = subprocess.run(['readelf', '--relocs', '--wide', MODULE], stdout=subprocess.PIPE, text=True, check=True)
        ratios['loading']['module']['relocations'] = listed.stdout.count('R_X86_64_')
        ratios['loading']['module']['relative_relocations'] = listed.stdout.count('R_X86_64_RELATIVE')
    return ratios


def comparable(peer):
    """Results further apart are another computation."""
    return peer.get('distance', 1) <= 1e-3


def distance(peer):
    if 'distance' not in peer:
        return 'other values'
    if peer['distance'] == 0:
        return 'equal'
    apart = 'NaN in one of them' if peer['distance'] >= 1e99 else f'{peer["distance"]:.1e}, {peer["ulps"]:.0f} ulp'
    return apart if comparable(peer) else f'another computation: {apart}'


def means(rows):
    return {way: statistics.geometric_mean(row[way] for row in rows) for way in WAYS}


def fastest_peers(peers):
    """Of each kernel, those that compute the same."""
    best = {}
    for name, peer in peers.items():
        if comparable(peer):
            kernel = name.partition(': ')[0]
            best[kernel] = {way: min(peer[way], best.get(kernel, peer)[way]) for way in WAYS}
    return best.values()


def table(style, head, remark, rows):
    lines = [style.format(head, *WAYS.values(), remark)]
    if style is MARKDOWN:
        lines.append('|---|---:|---:|---:|---|')
    lines += [style.format(name, *(f'{row[way]:.2f}' for way in WAYS), remark) for name, row, remark in rows]
    return '\n'.join(lines)


def rows_table(head, rows):
    """Of ratios with columns of their own; what was not measured stays empty."""
    columns = list(dict.fromkeys(column for row in rows.values() for column in row))
    lines = [[head, *columns], ['---', *['---:'] * len(columns)]]
    lines += [[name, *(f'{row[column]:.2f}' if column in row else '' for column in columns)] for name, row in rows.items()]
    return '\n'.join(f'| {" | ".join(line)} |' for line in lines)


TABLES = {
    'rows': ('graph of so many nodes, many rows', {'one_by_one': 'time of calls over that of rows',
                                                   'over_fused': 'over a loop written by hand',
                                                   'with_two_threads': 'speed of two threads over one'}),
    'csv': ('CSV to CSV, three formulas, threads', {}),
    'calls': ('command', {'one by one': 'processor time one by one over that of rows'}),
}


def told(ratios, style):
    """The tables and sentences of kernels, graphs of calls and stages."""
    if peers := ratios.get('peer'):
        rows = [(name, peer, distance(peer)) for name, peer in peers.items()]
        if best := fastest_peers(peers):
            rows.append((f'fastest comparable peer of each of {len(best)} kernels, geometric mean', means(best), ''))
        yield table(style, 'peer over kernel (above 1: the kernel is faster)', 'distance from our result', rows)
    if kernels := ratios.get('kernel'):
        rows = [(name, kernel, '') for name, kernel in kernels.items()]
        rows.append((f'all {len(kernels)}, geometric mean', means(kernels.values()), ''))
        yield table(style, 'kernel over an empty call of its shape', '', rows)
    for loading in ratios.get('loading', {}).values():
        relative = loading['relative_relocations']
        yield (f'Loading and unloading takes {loading["time"]:.2f} times as long as an empty library with the same '
               f'needs: {relative} relative relocations, {loading["relocations"] - relative} by name.')
    for nodes, graph in ratios.get('graph', {}).items():
        yield (f'A graph of {nodes} nodes takes {graph["over_kernels"]:.2f} times as long as its kernels alone: '
               f'{graph["nanoseconds_beyond_kernels"]:.1f} ns a node beyond them. '
               f'Two threads evaluate {graph["with_two_threads"]:.2f} times as many frames as one.')
    for until in ratios.get('table', {}).values():
        shares = [f'{stage} {100 * (share - before):.0f} %'
                  for (stage, share), before in zip(until.items(), [0, *until.values()])]
        one, two = ratios['command'].values()
        yield (f'A table of a million rows through ten nodes: {", ".join(shares)}, of one thread\'s work. '
               f'The command takes {one["megabytes_a_second"]:.0f} MB of table a second with one thread, '
               f'{two["megabytes_a_second"]:.0f} with two, and '
               f'{max(one["megabytes_of_memory"], two["megabytes_of_memory"]):.0f} MB of memory.')
    for group, rows in ratios.items():
        if group not in ('peer', 'kernel', 'loading', 'graph', 'table', 'command', *TABLES):
            yield '\n'.join(f'- {group}, {row}, {column}: {cell:.2f}'
                            for row, cells in rows.items() for column, cell in cells.items())


def told_of_rows(ratios):
    """The tables of what many rows at once gain."""
    for group, (head, columns) in TABLES.items():
        if rows := ratios.get(group):
            yield rows_table(head, {name: {columns.get(column, f'time of {column} over ours'): cell
                                           for column, cell in row.items()} for name, row in rows.items()})


if __name__ == '__main__':
    ratios = ratios_of(fastest(sys.argv[2:]))
    pathlib.Path(sys.argv[1]).write_text(json.dumps(ratios, indent=2) + '\n')
    print('\n\n'.join([*told(ratios, TEXT), *told_of_rows(ratios)]))
