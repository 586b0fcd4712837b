"""Counts the instructions that each kernel executes a call; benchmarks/instructions builds first and calls this.

Only the module's own instructions count, so that the table does not depend on the C library: a call of sinf is the few
instructions that call it. exit status: 0 done, 1 a kernel grew or the work failed, 2 wrong usage, 77 another compiler
"""
import argparse
import math
import pathlib
import re
import statistics
import subprocess
import sys
import tempfile

HERE = pathlib.Path(__file__).resolve().parent
KEPT = HERE / 'instructions.txt'
HEAD = '''# {}
# Instructions a call inside the module, mean over 64 fixed inputs; callees in other libraries are not counted.
# "loading" is all that the module runs while it is being loaded.
# Made by benchmarks/instructions --update.
'''


def count(build):
    """The compiler that the counts hold for, and instructions a call by name."""
    module = (build / 'lib/libnodusmath.so').resolve()
    with tempfile.TemporaryDirectory() as folder:
        profile = pathlib.Path(folder, 'profile')
        done = subprocess.run(['valgrind', '--tool=callgrind', '--combine-dumps=yes', '--compress-strings=no',
                               '--compress-pos=no', '--dump-line=no', f'--callgrind-out-file={profile}',
                               build / 'benchmarks/bench_count', module], capture_output=True, text=True)
        if done.returncode:
            sys.exit(f'callgrind failed:\n{done.stderr}')
        dumps = profile.read_text().split('\npart:')
    return done.stdout.strip(), dict(read(dump, module) for dump in dumps if 'Client Request' in dump)


def read(dump, module):
    """The name that heads a dump of callgrind's, and instructions a call in the functions of the module."""
    calls, name = re.search(r'Client Request: (\d+) (.*)', dump).groups()
    own = re.sub(r'\ncalls=.*\n.*', '', dump)  # behind calls= stands what the callee cost
    sections = [section for section in own.split('\nob=') if section.startswith(f'{module}\n')]
    costs = [int(cost) for section in sections for cost in re.findall(r'^\d+ (\d+)$', section, re.M)]
    if not costs:
        sys.exit(f'callgrind counted nothing for {name}')
    return name, sum(costs) / int(calls)


def rows_of(file):
    rows = [line.rsplit(' ', 1) for line in file.read_text().splitlines() if not line.startswith('#')]
    return {name.rstrip(): float(number) for name, number in rows}


def table(compiler, counts):
    return HEAD.format(compiler) + ''.join(f'{name:60} {number:7.1f}\n' for name, number in counts.items())


def check(compiler, counts):
    """Fails for a row that grew by an instruction, that the table does not have or that only the table has."""
    if not KEPT.read_text().startswith(f'# {compiler}\n'):
        print(f'skipped: the counts of {compiler} are others, and that is no news')
        sys.exit(77)
    kept = rows_of(KEPT)
    grown = [name for name in kept | counts if counts.get(name, math.inf) >= kept.get(name, 0) + 0.5]
    for name in grown:
        print(f'{name}: {counts.get(name, "not counted")}, the table says {kept.get(name, "nothing of it")}')
    if grown:
        sys.exit('If this is meant, renew the table: benchmarks/instructions --update')
    print(f'{len(counts)} rows, none has grown')


def against(counts, floors):
    ratios = {name: counts[name] / floor for name, floor in floors.items()}
    for name, floor in floors.items():
        print(f'{name:60} {counts[name]:7.1f}  {floor:5.0f}  {ratios[name]:5.2f}')
    print(f'geometric mean of {len(ratios)} rows: {statistics.geometric_mean(ratios.values()):.3f}')


parser = argparse.ArgumentParser(prog='instructions', description='Prints the table of instructions a call.')
todo = parser.add_mutually_exclusive_group()
todo.add_argument('--update', action='store_true', help=f'write it to {KEPT.name}')
todo.add_argument('--check', action='store_true', help='fail when a kernel grew beyond that file')
todo.add_argument('--against', metavar='FILE', nargs='?', const=HERE / 'floors.txt', type=pathlib.Path,
                  help='print it beside other counts, by default floors.txt')
parser.add_argument('--build', default=HERE.parent / 'build/release', type=pathlib.Path, help='the tree that was built')
options = parser.parse_args()
compiler, counts = count(options.build)
if options.check:
    check(compiler, counts)
elif options.against:
    against(counts, rows_of(options.against))
elif options.update:
    KEPT.write_text(table(compiler, counts))
else:
    print(table(compiler, counts), end='')
