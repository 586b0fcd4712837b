# Arrays of NumPy go in and come out: what numpy.save writes nodus reads, and numpy.load the other way.
import os
import unittest
import zipfile

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


class Archives(CommandTest):
    def evaluate(self, *options, graph=GRAPH):
        ran = nodus('eval', self.write('g.json', graph), *options, cwd=self.folder)
        return ran.status, ran.error

    # Columns alone and as lanes of a vector come in, an array for each output goes out, and in again. Above 250,000
    # rows they wait in a file.
    def test_go_in_and_come_out(self):
        place = GRAPH.replace('"x"', '"place.x"').replace('"y"', '"place.y"').replace('"on"', '"gr\u00f6\u00dfe"')
        again = ('{"nodes": {"a": {"type": "Abs_Float", "inputs": {"value": {"column": "v.result.z"}}}}, '
                 '"outputs": ["a"]}')
        for rows, save, types in [
            (300000, np.savez, PLAIN),
            (0, np.savez, PLAIN),
            (5000, np.savez_compressed, [('y', '>f8'), ('on', 'u1'), ('x', 'f8'), ('n', '>i2'), ("it's", '<i8')]),
        ]:
            data = table(rows, types)
            vector = np.stack([data['x'], data['y']], axis=1)
            save(self.folder / 'in.npz', place=vector, n=data['n'],
                 **{"it's": data["it's"], 'gr\u00f6\u00dfe': data['on']})
            for out, *options in ('out.npz',), ('other.npz', '--threads', '3', '--one-by-one'):
                self.assertEqual(self.evaluate('--data', 'in.npz', '--out', out, *options, graph=place), (0, ''))
            files = self.files()
            self.assertEqual(files['out.npz'], files['other.npz'])
            with zipfile.ZipFile(self.folder / 'out.npz') as file:
                self.assertIsNone(file.testzip())
            out = np.load(self.folder / 'out.npz')
            self.assertEqual(out.files, ['frame', 'v.result', 'd.result', 'n.result', 'u.result', 'b.result'])
            v = np.ones((rows, 3), 'f4')
            v[:, :2] = vector.astype('f4') + np.array([0.5, 0], 'f4')
            for name, array in {'frame': np.arange(rows, dtype='i4'), 'v.result': v, 'b.result': data['on'] == 0,
                                'n.result': (data['n'] + np.arange(rows)).astype('i4')}.items():
                self.assertEqual((out[name].shape, out[name].dtype, out[name].tobytes()),
                                 (array.shape, array.dtype, array.tobytes()), name)
            self.assertEqual(self.evaluate('--data', 'out.npz', '--out', 'again.npz', graph=again), (0, ''))
            self.assertEqual(np.load(self.folder / 'again.npz')['a.result'].tobytes(), v[:, 2].tobytes())

    def refused(self, told):
        self.assertEqual(self.evaluate('--data', 'in.npz', '--out', 'no.npz'), (2, f'nodus: {told}\n'))
        self.assertFalse((self.folder / 'no.npz').exists())

    def test_what_is_wrong_is_told(self):
        file = self.folder / 'in.npz'
        self.refused('cannot read in.npz: No such file')
        for more, told in [
            ({'z': np.zeros(4)}, "array 'z': has 4 rows, 'x' has 3"),
            ({'z': np.array(['a'] * 3)}, "array 'z': its type is '<U1'; a column is b1, i1 to i8, u1 to u8, f4 or f8"),
            ({'z': np.zeros(3, [('a', 'f4')])},
             "array 'z': is no array of numbers; structured arrays are for .npy"),
            ({'z': 1.0}, "array 'z': wants one dimension, the rows, or two, not 0"),
            ({'z': np.zeros((3, 5))},
             "array 'z': has 5 numbers a row; a vector has 1 to 4, 12 (TQS) or 16 (Matrix4x4)"),
            ({'z': np.asfortranarray(np.zeros((3, 2)))},
             "array 'z': is in Fortran's order; save numpy.ascontiguousarray of it"),
            ({'p': np.zeros((3, 2)), 'p.x': np.zeros(3)}, "columns 3 and 5 have the same name 'p.x'"),
        ]:
            np.savez(file, x=np.zeros(3), y=np.zeros(3), **more)
            self.refused('in.npz: ' + told)
        with zipfile.ZipFile(file, 'w') as archive:
            archive.writestr('read.me', '')
        self.refused("in.npz: its member 'read.me' is no array (.npy)")

        np.savez(file, **{name: np.arange(3000) % 2 for name in ('x', 'y', 'n', "it's", 'on')})
        whole = bytearray(file.read_bytes())
        # The last number of the array in the middle.
        whole[whole.index(b"it's.npy") - 40] ^= 1
        file.write_bytes(whole)
        self.refused("in.npz: array 'n': CRC error")
        file.write_bytes(whole[:9000])
        self.refused('cannot read in.npz: Not a zip archive')


unittest.main(verbosity=0)
