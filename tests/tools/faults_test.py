# What may happen to the command from outside, and what it may be given: nothing crashes, nothing half-written is taken
# for a result, memory is bounded, and each message is one clear line.
# usage: faults_test.py [sanitized] NODUS
import os
import random
import signal
import subprocess
import sys
import threading
import time
import unittest

from nodus_command import NODUS, CommandTest, nodus, run

SANITIZED = sys.argv[1:] == ['sanitized']  # which takes time, and memory that is not the command's
del sys.argv[1:]
COLUMNS = '''{"nodes": {
    "v": {"type": "Add_Float3", "inputs": {"a": [{"column": "x"}, {"column": "y"}, 1]}}},
    "outputs": ["v"]}'''
FRAMES = '''{"nodes": {
    "v": {"type": "Mul_Int32", "inputs": {"a": {"frame": true}, "b": {"frame": true}}}},
    "outputs": ["v"]}'''
INPUT, INPUT_END = '{"nodes": {"v": {"type": "Add_Float", "inputs": {"a": ', '}}}, "outputs": ["v"]}'
MANY, HUGE = 100000 // (20 if SANITIZED else 1), 10000000


def chain(first):
    """Nodes that each take from the one before; the last is the output."""
    nodes = [f'"n0": {{"type": "Add_Float", "inputs": {{"a": {first}}}}}']
    nodes += [f'"n{i}": {{"type": "Add_Float", "inputs": {{"b": 1, "a": {{"from": "n{i - 1}"}}}}}}'
              for i in range(1, MANY)]
    return f'{{"nodes": {{{", ".join(nodes)}}}, "outputs": ["n{MANY - 1}"]}}'


# Why, the text as its beginning, what is repeated how often, and its end; a part of the message, which is empty for a
# result; megabytes of memory. A text that begins with x is a table, any other a graph.
INPUTS = [
    ('an array of a million', INPUT + '[', '1,', 1000000, '1]' + INPUT_END, 'not an array of 1000001', 512),
    ('deep nesting', '', '[', 100000, '', 'nested deeper than 64', 64),
    ('65 levels', '', '[', 65, '', 'nested deeper than 64', 64),
    ('64 levels', '', '[', 64, '', 'g.json:1: column 64', 64),
    ('a huge number', INPUT, '9', 1000000, INPUT_END, 'is beyond every type of number', 64),
    ('digits without end', INPUT + '0.', '3', 1000000, INPUT_END, '', 64),
    ('a huge word', INPUT, 'x', HUGE, INPUT_END, 'g.json:1: column', 128),
    ('a huge text', INPUT + '"', 'x', HUGE, '"' + INPUT_END, 'not the text', 128),
    ('a huge name', '{"nodes": {"', 'n', HUGE, '": {"type": "Add"}}}', 'unknown node type', 128),
    ('invalid UTF-8', INPUT + '"', '\udcc3(\udcff', 1, '"' + INPUT_END, 'ill-formed UTF-8', 64),
    ('many rows', 'x,y\n', '1.5,-2\n', 10 * MANY, '', '', 64),
    ('a huge field', 'x,y\n1,', '9', HUGE, 'x\n', 'is not a number', 96),
    ('a row without end', 'x,y\n1,', '1', 7 * HUGE, '', 'the line is too long', 256),
    ('a quote without end', 'x,y\n1,"', '2\n', 1000, '', 'does not end', 64),
    ('many columns', 'x,y', ',z', 100000, '\n', "have the same name 'z'", 128),
    ('a header in no UTF-8', 'x\udcff,y\n1,2\n', '', 0, '', "no column 'x'", 64),
    ('a NUL', 'x,y\n1,2', '\0', 1, ' \n', 'is not a number', 64),
    ('cut off within a row', 'x,y\n1,2\n3', '', 0, '', 't.csv:3: 1 field, the header has 2', 64),
    ('no end of the last line', 'x,y\n1,2\n3,4', '', 0, '', '', 64),
    ('many nodes', chain('1'), '', 0, '', '', 256),
    ('a circle of many nodes', chain(f'{{"from": "n{MANY - 1}"}}'), '', 0, '', "-> 'n7' -> ... (", 256),
]


class Faults(CommandTest):
    def test_inputs_of_every_kind_are_results_or_one_clear_line(self):
        good, out = self.write('good.json', COLUMNS), self.folder / 'out.csv'
        for why, begin, repeated, count, end, told, megabytes in INPUTS:
            with self.subTest(why):
                file = self.folder / ('t.csv' if begin.startswith('x') else 'g.json')
                # In pieces: a child's peak of memory begins with that of its parent.
                with file.open('w', errors='surrogateescape') as text:
                    text.write(begin)
                    for first in range(0, count, 10000):
                        text.write(repeated * min(10000, count - first))
                    text.write(end)
                graph = [good, '--data', file] if begin.startswith('x') else [file]
                ran = nodus('eval', *graph, '--out', out)
                self.assertEqual(ran.status, 2 if told else 0, ran.error[:1000])
                self.assertIn(told, ran.error[:1000])
                self.assertRegex(ran.error.partition('\n')[0], '^nodus: [ -~]{,990}$' if told else '^$')
                # A result is there when the status says so, and then alone.
                self.assertEqual(out.exists(), not told)
                out.unlink(missing_ok=True)
                if not SANITIZED:
                    self.assertLess(ran.megabytes, megabytes)

    def test_killed_at_any_moment_it_leaves_a_whole_file_or_none(self):
        out = self.folder / 'r.csv'
        evaluate = ['eval', self.write('g.json', FRAMES), '--frames', '0:200000', '--out', out]
        start = time.monotonic()
        self.assertEqual(nodus(*evaluate).status, 0)
        whole = time.monotonic() - start
        result = out.read_bytes()
        numbers = random.Random(20261123)
        for attempt in range(42):
            number = [signal.SIGTERM, signal.SIGINT, signal.SIGKILL][attempt % 3]
            before = b'as it was' if attempt % 2 else None
            out.unlink(missing_ok=True)
            if before:
                out.write_bytes(before)
            moment = whole * numbers.uniform(0, 1.1)
            ran = nodus(*evaluate, started=lambda process: (time.sleep(moment), os.kill(process.pid, number)))
            with self.subTest(number=number, attempt=attempt):
                left = self.files()
                self.assertIn(ran.status, (0, -number))
                # A kill right behind the moment at which the file appears finds it whole.
                self.assertIn(left.get('r.csv'), [result] if ran.status == 0 else [result, before])
                for name in left:
                    if name.startswith('.'):
                        # Only a kill in the very moment in which a file takes another's place leaves the new one,
                        # whole, under its hidden name.
                        self.assertTrue(number == signal.SIGKILL and before, name)
                        self.assertEqual(left[name], result)
                        (self.folder / name).unlink()

    def test_a_table_that_becomes_shorter_while_it_is_read(self):
        graph, table = self.write('g.json', COLUMNS), self.write('t.csv', 'x,y\n' + '1.5,-2\n' * 1000000)
        reader, writer = os.pipe()
        rest = threading.Thread(target=lambda: [None for _ in iter(lambda: os.read(reader, 65536), b'')])

        def started(_):
            os.close(writer)
            # The first results: it reads, and cannot come to an end before it is read from.
            self.assertEqual(os.read(reader, 1), b'f')
            os.truncate(table, 11)
            rest.start()

        ran = nodus('eval', graph, '--data', table, stdout=writer, started=started)
        rest.join()
        os.close(reader)
        self.assertEqual((ran.status, ran.error), (2, f'nodus: {table}: became shorter while it was read\n'))

    def test_a_full_disk_leaves_nothing(self):
        # A disk that only the shell below has.
        own_mounts = ['unshare', '--mount', *([] if os.geteuid() == 0 else ['--map-root-user'])]
        disk = self.folder / 'disk'
        disk.mkdir()
        mount = ['mount', '-t', 'tmpfs', '-o', 'size=256k', 'none', disk]
        if subprocess.run([*own_mounts, *mount], capture_output=True).returncode:
            self.skipTest("this machine allows no file system of one's own")
        ran = run(*own_mounts, 'sh', '-c', '''disk=$1 graph=$2; shift 2; "$@"; cd "$disk"; echo old >r.csv
            "$0" eval "$graph" --frames 0:200000 --out "$disk/r.csv"; s=$?; ls -A; cat r.csv; exit $s''',
                  NODUS, disk, self.write('g.json', FRAMES), *mount)
        self.assertEqual((ran.status, ran.error),
                         (2, f'nodus: cannot write {disk}/r.csv: No space left on device\n'))
        self.assertEqual(ran.out, 'r.csv\nold\n')


unittest.main(verbosity=0)
