# Arrays of NumPy go in and come out: what numpy.save writes nodus reads, and numpy.load the other way.
import os
import unittest

import numpy as np

from nodus_command import CommandTest, nodus

GRAPH = """{"nodes": {
    "v": {"type": "Add_Float3", "inputs": {"a": [{"column": "x"}, {"column": "y"}, 1], "b": [0.5, 0, 0]}},
    "d": {"type": "Abs_Double", "inputs": {"value": {"column": "y"}}},
    "n": {"type": "Add_Int32", "inputs": {"a": {"column": "n"}, "b": {"frame": true}}},
    "u": {"type": "Abs_UInt32", "inputs": {"value": {"column": "it's"}}},
    "b": {"type": "Not", "inputs": {"value": {"column": "on"}}}},
    "outputs": ["v", "d", "n", "u", "b"]}"""
TEXT = '{"nodes": {"t": {"type": "LogValueString"}}, "outputs": ["t"]}'
PLAIN = [('x', '<f4'), ('y', '<f8'), ('n', '<i4'), ("it's", '<u4'), ('on', '?')]


def table(rows, types):
    made, index = np.zeros(rows, dtype=types), np.arange(rows)
    made['x'], made['y'], made['n'], made["it's"], made['on'] = index * 0.1, -index / 3, index % 7, index, index % 2
    return made


class Arrays(CommandTest):
    def evaluate(self, *options, graph=GRAPH):
        ran = nodus('eval', self.write('g.json', graph), '--out', self.folder / 'out.npy', *options, cwd=self.folder)
        return ran.status, ran.error

    def test_go_in_and_come_out(self):
        for rows, types in [
            (5000, PLAIN),
            (0, PLAIN),
            (300, [('y', '>f8'), ('on', 'u1'), ('x', 'f8'), ('n', '>i2'), ("it's", '<i8')]),
            (300, np.dtype([('on', 'i1'), ('x', 'f8'), ('n', 'f4'), ("it's", 'f8'), ('y', 'f4'),
                            ('gr\u00f6\u00dfe', 'u8')], align=True)),
        ]:
            data, frames = table(rows, types), np.arange(rows)
            np.save(self.folder / 'in.npy', data)
            expected = {'frame': frames, 'v.result.x': data['x'].astype('f4') + np.float32(0.5),
                        'v.result.y': data['y'].astype('f4') + np.float32(0), 'v.result.z': np.ones(rows, 'f4'),
                        'd.result': np.abs(data['y'].astype('f8')), 'n.result': (data['n'] + frames).astype('i4'),
                        'u.result': data["it's"].astype('u4'), 'b.result': data['on'] == 0}
            for options in [], ['--threads', '3'], ['--one-by-one']:
                self.assertEqual(self.evaluate('--data', 'in.npy', *options), (0, ''))
                out = np.load(self.folder / 'out.npy')
                self.assertEqual((out.shape, out.dtype.names), ((rows,), tuple(expected)))
                for name in list(expected)[1:]:
                    self.assertEqual(out[name].tobytes(), expected[name].tobytes(), name)
                self.assertTrue(np.array_equal(out['frame'], frames))

    def test_what_is_wrong_is_told(self):
        wide = table(3, [('x', '<f8'), ('y', '<f8'), ('n', '<f8'), ("it's", '<i4'), ('on', 'i1')])
        wide['x'][1], wide['n'][2], wide["it's"][2], wide['on'][2] = 1e300, 0.5, -1, 2
        for data, *told in [
            (wide, "row 1: column 'x': '1e+300' is beyond every Float", "row 2: column 'n': '0.5' is not a whole number",
             "row 2: column 'it's': '-1' is outside UInt32 (0 to 4294967295)",
             "row 2: column 'on': '2' is not true, false, 1 or 0"),
            (np.zeros(3), 'wants a structured array, a field with a name for each column'),
            (table(3, PLAIN).reshape(1, 3), 'wants one dimension, the rows, not 2'),
            (np.zeros(3, [('x', 'f4', (3,))]), "field 'x' has several numbers a row; give a field for each"),
            (np.zeros(3, [('x', 'S3')]), "field 'x' is '|S3'; a column is b1, i1 to i8, u1 to u8, f4 or f8"),
            (table(3, PLAIN), 'ends in row 2 of 3'),
        ]:
            file = self.folder / 'in.npy'
            np.save(file, data)
            os.truncate(file, file.stat().st_size - (told == ['ends in row 2 of 3']))
            self.assertEqual(self.evaluate('--data', 'in.npy'), (2, ''.join(f'nodus: in.npy: {line}\n' for line in told)))
        self.assertEqual(self.evaluate(graph=TEXT),
                         (2, "nodus: output 't.result' is a text, for which an .npy file has no room\n"))
        self.assertFalse((self.folder / 'out.npy').exists())


unittest.main(verbosity=0)
