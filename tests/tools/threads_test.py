# Many frames over many threads: the same bytes, the frames in order, and files whole or not at all.
import unittest

from nodus_command import CommandTest, nodus

FRAMES = '''{"nodes": {
    "f": {"type": "Mul_Int32", "inputs": {"a": {"frame": true}, "b": 3}},
    "l": {"type": "LogValueInt32", "inputs": {"value": {"from": "f"}, "prefix": "three times: "}},
    "k": {"type": "LogValueString", "inputs": {"value": "twice"}}},
    "outputs": ["l", "k"]}'''
COLUMNS = '''{"nodes": {
    "v": {"type": "Add_Float3", "inputs": {"a": [{"column": "x"}, {"column": "y"}, 1], "b": [0.1, 0.2, 0.3]}},
    "n": {"type": "Add_Int32", "inputs": {"a": {"column": "n"}, "b": {"frame": true}}}},
    "outputs": ["v.result.x", "v.result.z", "n"]}'''
WAYS = [[*way, '--threads', threads] for threads in '127' for way in ([], ['--one-by-one'])]


def rows(count):
    return [f'{i},{i * 0.37:f},-1.5e-3' for i in range(count)]


class Threads(CommandTest):
    def made(self, graph, *options):
        """Results, log and faults; the folder is cut off."""
        out, log = self.folder / 'r.csv', self.folder / 'r.log'
        ran = nodus('eval', self.write('g.json', graph), '--out', out, '--log', log, *options)
        made = [path.read_text() if path.exists() else None for path in (out, log)]
        for path in out, log:
            path.unlink(missing_ok=True)
        return [*made, ran.error.replace(f'{self.folder}/', '')]

    def test_bytes_do_not_depend_on_them(self):
        frames = range(-9000, 9001, 3)
        # An account of its own.
        expected = ['frame,l.result,k.result\n' + ''.join(f'{frame},{3 * frame},twice\n' for frame in frames),
                    ''.join(f'frame {frame}: three times: {3 * frame}\nframe {frame}: twice\n' for frame in frames), '']
        table = self.write('t.csv', '\n'.join(['n,x,y', *rows(20000)]))
        one = self.made(COLUMNS, '--data', table)
        self.assertEqual((one[0].count('\n'), one[2]), (20001, ''))
        for way in WAYS:
            self.assertTrue(self.made(FRAMES, '--frames', '-9000:9000:3', *way) == expected, way)
            self.assertTrue(self.made(COLUMNS, '--data', table, *way) == one, way)

    def test_faults_of_the_table_come_in_order(self):
        wrong = ['1,2' if i == 25 else '1,abc,3' for i in range(30)]
        table = self.write('t.csv', '\n'.join(['n,x,y', *rows(9000), *wrong, *rows(3000)]))
        expected = [f"nodus: t.csv:{9002 + i}: column 'x': 'abc' is not a number" for i in range(20)]
        for way in WAYS:
            results, log, told = self.made(COLUMNS, '--data', table, *way)
            self.assertEqual((results, log, told.splitlines()[:-1]), (None, None, expected), way)
            self.assertTrue(told.endswith('these are the first 20 faults of the table; there may be more\n'), told)


unittest.main(verbosity=0)
