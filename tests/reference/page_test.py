# What the node reference says: every family and kernel is there, its graphs and calls give the results that stand
# beside them, and notes that are wrong make no page.
# usage: page_test.py BUILD-DIRECTORY
import html
import json
import math
import pathlib
import re
import shlex
import shutil
import subprocess
import sys
import tempfile
import unittest

BUILD = pathlib.Path(sys.argv.pop()).resolve()
SOURCE = pathlib.Path(__file__).resolve().parents[2]
REFERENCE = SOURCE / 'docs/reference'
MODULE = BUILD / 'lib/libnodusmath.so'
PAGE = (BUILD / 'reference/index.html').read_text()
ARTICLES = {name: body for name, body in re.findall(r'<article id="(\w+)"(.*?)</article>', PAGE, re.S)}


def run(*words):
    return subprocess.run([str(word) for word in words], capture_output=True, text=True)


def numbers(text):
    """The values of "a.result = (1, nan)" or of a CSV line; nobody promises the sign of a NaN."""
    values = re.sub(r'[\w.]+ = |\b[tqs] \(', ' ', text)
    return [value.replace('-nan', 'nan') for value in re.findall(r'[-\w.+]+', values)]


class Page(unittest.TestCase):
    def test_has_every_family_port_and_kernel(self):
        catalogue = json.loads((SOURCE / 'modules/nodusmath/nodusmath.json').read_text())
        self.assertEqual(sorted(ARTICLES), sorted(family['name'] for family in catalogue['families']))
        for family in catalogue['families']:
            rows = re.findall(r'<tr><td><code>(\w+)</code>', ARTICLES[family['name']])
            ports = [port['name'] for port in family['inputs'] + family['outputs']]
            self.assertEqual(rows, ports, family['name'])
            for text in family['edges'], family['doc']:
                self.assertGreater(len(text), 4)
                self.assertIn(html.escape(text, quote=False), ARTICLES[family['name']])
            for port in family['inputs'] + family['outputs']:
                self.assertTrue(not port['name'].startswith('angle') or port['unit'] == 'rad', family['name'])
        listed = re.findall(r'NODUS_\w+\((\w+)\)', (BUILD / 'modules/nodusmath/kernel_list/kernels.def').read_text())
        shown = re.findall(r'<li><code>(\w+)</code>', ' '.join(ARTICLES.values()))
        # The logging kernels have no underscore between family and type.
        self.assertEqual(sorted(shown), sorted(listed))

    def test_needs_nothing_from_elsewhere(self):
        self.assertNotIn('{{', PAGE)
        self.assertEqual(re.findall(r'(?:src|href)="(?!#|data:)[^"]*"|url\(|@import|https?://', PAGE), [])

    def test_graphs_give_the_results_beside_them(self):
        for name, article in ARTICLES.items():
            frames, graph = re.search(r'data-frames="(\d+)" .*?<code>(.*?)</code>', article, re.S).groups()
            shown = html.unescape(re.search(r'<samp>(.*?)</samp>', article, re.S)[1]).splitlines()
            with self.subTest(name), tempfile.TemporaryDirectory() as folder:
                path = pathlib.Path(folder, 'graph.json')
                path.write_text(html.unescape(graph))
                got = run(BUILD / 'bin/nodus', 'eval', path, '--frames', f'0:{int(frames) - 1}')
                self.assertEqual(got.returncode, 0, got.stderr)
                rows = [row.split(',', 1)[1] for row in got.stdout.splitlines()[1:]]
                results = [re.sub(r'^frame \d+: ', '', line) for line in shown if ' = ' in line]
                self.assertEqual(numbers(' '.join(results)), numbers(' '.join(rows)))
                self.assertEqual([line for line in shown if ' = ' not in line], got.stderr.splitlines())

    def test_calls_give_the_results_beside_them(self):
        calls = re.findall(r'<dd><code>(nodus .*?)</code> <output>(.*?)</output>', PAGE)
        self.assertGreater(len(calls), 100)
        for call, shown in calls:
            with self.subTest(call):
                got = run(BUILD / 'bin/nodus', *shlex.split(html.unescape(call))[1:])
                self.assertEqual(got.returncode, 0, got.stderr)
                self.assertEqual(numbers(shown), numbers(got.stdout))

    def points(self, name):
        path = re.search(r'class="c1" d="M(.*?) "', ARTICLES[name])[1]
        return [tuple(map(float, point.split())) for point in path.split('L')]

    def test_curves_lie_where_the_function_does(self):
        # In the units of the drawing: two turns on 362, from -1.25 to 1.25 on 192.
        points = self.points('Sin')
        self.assertEqual((points[0][0], points[-1][0]), (0, 362))
        self.assertGreater(len(points), 30)
        for x, y in points:
            self.assertAlmostEqual(y, 96 - 192 / 2.5 * math.sin(4 * math.pi * x / 362), delta=0.2)

    def test_curves_reach_their_ends(self):
        # To the lower edge, at 192, where the logarithm of 0 is; where the angle ends, halfway between two samples.
        for name, first, last in [('Log10', (0, 192), None),
                                  ('CosineLaw', (362 * 0.5 ** 0.5 / 1.5, 192 - 192 * (math.pi / 2 + 0.25) / 2.25),
                                   (362 * 1.5 ** 0.5 / 1.5, 192 - 192 * 0.25 / 2.25))]:
            points = self.points(name)
            self.assertAlmostEqual(points[0][0], first[0], delta=0.2)
            self.assertGreater(points[0][1], first[1] - 1)
            if last:
                self.assertAlmostEqual(points[-1][0], last[0], delta=0.2)
                self.assertAlmostEqual(points[-1][1], last[1], delta=1)

    def test_histograms_have_the_shape_of_their_distributions(self):
        # 60 bins on 362 from -1.5 to 1.5, the axis at 192: uniform from -1 to 1, normal about 0.
        uniform, normal = ([(float(x), 192 - float(y)) for x, y in re.findall(r'M([\d.]+) 192V([\d.]+)h', bars)]
                           for bars in re.findall(r'class="bars" d="(.*?)"', ARTICLES['RandomGenerator']))
        self.assertAlmostEqual(uniform[0][0], 362 / 6, delta=0.1)
        self.assertEqual(len(uniform), 40)
        self.assertGreater(min(height for _, height in uniform), 0.8 * max(height for _, height in uniform))
        self.assertAlmostEqual(max(normal, key=lambda bar: bar[1])[0], 181, delta=20)
        # Two thirds lie within one standard deviation, a quarter of the range.
        near = sum(height for x, height in normal if abs(x + 3 - 181) < 362 / 12)
        self.assertAlmostEqual(near / sum(height for _, height in normal), 0.68, delta=0.03)


class WrongCatalogue(unittest.TestCase):
    CATALOGUE = json.loads((SOURCE / 'modules/nodusmath/nodusmath.json').read_text())

    def refuse(self, change, *words):
        catalogue = json.loads(json.dumps(self.CATALOGUE))
        change(catalogue)
        with tempfile.TemporaryDirectory() as folder:
            module = shutil.copy(MODULE, folder)
            pathlib.Path(folder, 'nodusmath.json').write_text(json.dumps(catalogue))
            output = pathlib.Path(folder, 'index.html')
            got = run(BUILD / 'bin/nodus_reference', module, REFERENCE, output)
            self.assertEqual((got.returncode, output.exists()), (2, False))
            for word in words:
                self.assertIn(word, got.stderr)

    def test_are_refused(self):
        def node(name, **changes):
            return lambda catalogue: of(catalogue, name)['reference'].update(changes)

        def of(catalogue, name):
            return next(family for family in catalogue['families'] if family['name'] == name)

        for change, *words in [
            (lambda catalogue: of(catalogue, 'Slerp').pop('reference'), "nodusmath.json:1: Slerp: 'reference' is missing"),
            (lambda catalogue: catalogue['groups'].pop(), "LogValue: 'groups' has no 'diagnostics'"),
            (node('Add', tpyo=1), "nodusmath.json:1: Add: unknown member 'tpyo'"),
            (node('Add', see=['Plus']), "Add, see: there is no family 'Plus'"),
            (node('Add', example={'type': 'Sub_Float'}), 'Add, example: has no node of the family'),
            (node('Add', example={'type': 'Add_Float', 'inputs': {'c': 1}}), 'Add, example', "no input 'c'"),
            (node('Add', edges=[{'why': 'x', 'inputs': {'a': 'one'}}]), 'Add, edges', 'wants Float3'),
            (node('Sin', plots=[{'caption': 'x', 'x': [1, 0], 'y': [0, 1], 'curves': []}]), 'lesser number first'),
        ]:
            with self.subTest(words[0]):
                self.refuse(change, *words)


class WrongScripts(unittest.TestCase):
    def test_are_refused(self):
        for script, told in [("import { a } from './gone.js';", 'gone.js: No such file'),
                             ("import { a } from './main.js';", 'main.js: imports itself'),
                             ("import { a as b } from './link.js';", 'wants import { names }'), ('import a;', 'wants import { names }')]:
            with self.subTest(script), tempfile.TemporaryDirectory() as folder:
                copy = pathlib.Path(shutil.copytree(REFERENCE, folder + '/docs/reference'))
                shutil.copytree(SOURCE / 'web', folder + '/web')
                for name in ('nodus_kernels.wasm', 'nodus_graphs.wasm'):
                    (copy / name).write_text('x')
                (copy / 'live/main.js').write_text(script)
                got = run(BUILD / 'bin/nodus_reference', MODULE, copy, copy / 'index.html', copy, SOURCE / 'examples')
                self.assertEqual((got.returncode, (copy / 'index.html').exists()), (2, False))
                self.assertIn(told, got.stderr)


unittest.main(verbosity=0)
