# Pictures: which value becomes which pixel, on any number of threads. Another library reads them back.
import struct
import unittest

from PIL import Image

from nodus_command import CommandTest, nodus

# Centres are halves: 0.1, 0.3, 0.5 in the first row, ten more a row.
RAMP = '''{"nodes": {
    "x": {"type": "Mul_Float", "inputs": {"a": {"pixel": "x"}, "b": 0.2}},
    "y": {"type": "Mul_Float", "inputs": {"a": {"pixel": "y"}, "b": 10}},
    "sum": {"type": "Add_Float", "inputs": {"a": {"from": "x"}, "b": {"from": "y"}}}},
    "outputs": ["sum"]}'''
COLOUR = '''{"nodes": {"c": {"type": "RandomGenerator_Color", "inputs": {"value": [0.2, 0.4, 0.8, 0.6], "range": 0}}},
    "outputs": ["c"]}'''
LANES = '{"nodes": {"v": {"type": "Abs_Float4", "inputs": {"value": [-2, 4, 8, 6]}}}, "outputs": ["v"]}'
NAN = '{"nodes": {"n": {"type": "Sqrt_Float", "inputs": {"value": -1}}}, "outputs": ["n"]}'


class Pictures(CommandTest):
    def picture(self, graph, name, size, *options):
        path = self.folder / name
        ran = nodus('eval', self.write('g.json', graph), '--image', path, '--size', size, *options)
        self.assertEqual((ran.status, ran.error), (0, ''))
        return path

    def test_values_at_pixel_centres_become_samples(self):
        for why, graph, size, options, mode, samples in [
            ('cut at white', RAMP, '3x2', ['--map=-5:-4'], 'L', [255] * 6),
            ('mapped', RAMP, '3x2', ['--map', '5:15.6'], 'L', [2, 7, 12, 243, 248, 253]),
            ('reversed', RAMP, '3x2', ['--map', '15.6:5'], 'L', [253, 248, 243, 12, 7, 2]),
            ('257 times the levels', RAMP, '3x2', ['--map', '5:15.6', '--depth', '16'], 'I',
             [618, 1855, 3091, 62444, 63680, 64917]),
            ('a colour', COLOUR, '1x1', [], 'RGBA', [(51, 102, 204, 153)]),
            ('alpha has no map', COLOUR, '1x1', ['--map', '0:2'], 'RGBA', [(26, 51, 102, 153)]),
            ('NaN is black', NAN, '2x1', ['--map=-1:1'], 'L', [0, 0]),
        ]:
            with Image.open(self.picture(graph, 'p.png', size, *options)) as image:
                self.assertEqual((image.mode, f'{image.width}x{image.height}', list(image.getdata())),
                                 (mode, size, samples), why)

    def test_floats_are_written_as_they_are(self):
        # Left to right, but the last row first.
        start, values = b'Pf\n3 2\n-1.0\n', [15.1, 15.3, 15.5, 5.1, 5.3, 5.5]
        made = self.picture(RAMP, 'p.pfm', '3x2').read_bytes()
        self.assertTrue(made.startswith(start))
        for got, value in zip(struct.unpack('<6f', made[len(start):]), values):
            self.assertAlmostEqual(got, value, delta=1e-6)
        self.assertEqual(self.picture(LANES, 'p.pfm', '1x1').read_bytes(),
                         b'PF\n1 1\n-1.0\n' + struct.pack('<3f', 2, 4, 8))

    def test_bytes_depend_neither_on_threads_nor_on_kernels_over_rows(self):
        for name, options in ('p.png', ['--map', '0:1000']), ('p.pfm', []):
            one, *others = [self.picture(RAMP, name, '2100x67', *options, *more).read_bytes()
                            for more in (['--threads', '1'], ['--threads', '2'], ['--threads', '7'],
                                         ['--threads', '1', '--one-by-one'], ['--threads', '7', '--one-by-one'])]
            self.assertEqual([other == one for other in others], [True] * 4)

    def test_frames_have_pictures_of_their_own(self):
        graph = self.write('f.json', """{"nodes": {"f": {"type": "CastInt32ToFloat", "inputs": {"value": {"frame": true}}}},
            "outputs": ["f"]}""")
        ran = nodus('eval', graph, '--image', self.folder / 'p%03d.pfm', '--size', '1x1', '--frames', '-1:10:11')
        self.assertEqual((ran.status, ran.error), (0, ''))
        samples = {name: struct.unpack('<f', data[-4:])[0] for name, data in self.files().items() if name != 'f.json'}
        self.assertEqual(samples, {'p-01.pfm': -1, 'p010.pfm': 10})

    def test_plots_are_drawings_in_pixels(self):
        graph = self.write('g.json', """{"description": "MMMM", "outputs": ["n"],
            "nodes": {"n": {"type": "Mul_Float", "inputs": {"a": "=frame", "b": 2}}}}""")
        path = self.folder / 'p.png'
        ran = nodus('plot', graph, '--frames', '0:10', '-o', path)
        self.assertEqual((ran.status, ran.error), (0, ''))
        # Two pixels for each unit: field, title and legend.
        with Image.open(path) as image:
            self.assertEqual(image.size, (1640, 580))
            middle = image.convert('RGB').crop((850, 180, 890, 380))
            title = image.convert('L').crop((140, 20, 240, 48))
        self.assertIn((29, 92, 184), [colour for _, colour in middle.getcolors(9999)])
        self.assertIn(min(title.getdata()), range(64), 'text wants a font')


unittest.main(verbosity=0)
