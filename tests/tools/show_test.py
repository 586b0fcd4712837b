# Pictures of graphs: what is drawn is what the graph says, and Graphviz takes it without a word.
# usage: show_test.py EXAMPLES NODUS
import os
import pathlib
import pty
import sys
import unittest

from nodus_command import CommandTest, nodus, run

EXAMPLES = pathlib.Path(sys.argv.pop())
WILD = r'''{"nodes": {
    "turn": {"type": "EulerToQuaternion", "inputs": {"angles": [0.5, {"pixel": "y"}, 0, 0], "order": {"frame": true}}},
    "pose": {"type": "TransformTQS", "inputs": {
        "a": {"t": [{"column": "a<b"}, 7, 0, 0], "q": {"from": "turn"}},
        "b": {"t": {"from": "back.result.t"}}}},
    "back": {"type": "TransformTQS"},
    "<&\"\\": {"type": "LogValueString", "inputs": {"value": "x<y> \"q\"\n\\N"}}},
    "outputs": ["pose.result.q.w", "pose.result.t", "<&\"\\"]}'''
# Ports are named by offset and type: 2 Int32, 4 Float, 10 Quaternion, 11 Translation, 14 TQS.
DRAWN = ['pixel_y:e -> node0:i4_4:w', 'current_frame:e -> node0:i16_2:w', 'column0:e -> node1:i0_4:w',
         'node0:o0_10:e -> node1:i16_10:w', 'node2:o0_11:e -> node1:i48_11:w', 'node1:o28_4:e -> result0:w',
         '>(0.5, y, 0, 0)<', '>t (x, 7, 0, 0)<', '>a&lt;b<', r'>&lt;&amp;&quot;\\<',
         r'>&quot;x&lt;y&gt; \\&quot;q\\&quot;\\n\\\\N&quot;<', '>identity<']


def with_path(path):
    return {'env': {**os.environ, 'PATH': str(path)}}


class Show(CommandTest):
    def drawing(self, graph):
        """Of dot, from the graph in its language."""
        self.assertEqual(nodus('show', graph, '-o', self.folder / 'g.dot').error, '')
        drawn = run('dot', '-Tsvg', self.folder / 'g.dot')
        self.assertEqual(drawn.error, '', graph)
        return drawn.out

    def test_draws_every_edge_constant_and_name(self):
        wrong = self.write('wrong.json', '{"outputs": ["a"]}')
        self.assertEqual(nodus('show', wrong).error, nodus('eval', wrong).error)
        drawing = self.drawing(self.write('g.json', WILD))
        for part in DRAWN:
            self.assertIn(part, (self.folder / 'g.dot').read_text())
        # What a viewer reads: the texts come through, none taken for an escape.
        self.assertIn(r'>&quot;x&lt;y&gt; \&quot;q\&quot;\n\\N&quot;<', drawing)

    def test_the_examples_in_every_format(self):
        graphs = list(EXAMPLES.glob('*.json'))
        self.assertGreaterEqual(len(graphs), 7)
        for graph in graphs:
            self.drawing(graph)
        svg = nodus('show', EXAMPLES / 'noise.json').out
        self.assertEqual((svg[:5], svg[-7:]), ('<?xml', '</svg>\n'))
        for name, start in [('n.png', b'\x89PNG'), ('n.pdf', b'%PDF')]:
            self.assertEqual(nodus('show', EXAMPLES / 'noise.json', '-o', self.folder / name).error, '')
            self.assertTrue(self.files()[name].startswith(start), name)

    def test_what_is_wrong_is_one_line_and_leaves_the_file_alone(self):
        graph, clouds = EXAMPLES / 'noise.json', EXAMPLES / 'clouds.json'
        out = self.write('out.svg', 'as it was')
        # A program dot that fails.
        self.write('dot', '#!/bin/sh\necho so sad >&2\nexit 3\n').chmod(0o755)
        keyboard, screen = pty.openpty()
        self.addCleanup(os.close, keyboard)
        self.addCleanup(os.close, screen)
        for words, options, told in [
            (['show', graph, '-o', out], with_path('/nowhere'), 'install the package graphviz'),
            (['show', graph, '-o', out], with_path(self.folder), 'could not draw the graph: so sad'),
            (['plot', graph, '-o', self.folder / 'x.png'], with_path('/nowhere'), 'install the package librsvg2-bin'),
            (['show', graph, '-o', self.folder / 'x.jpg'], {}, '.svg, .png, .pdf or .dot'),
            (['show', graph], {'stdout': screen}, 'a terminal shows no pictures'),
            (['eval', clouds, '--image', '-'], {'stdout': screen}, 'a terminal shows no pict'),
        ]:
            ran = nodus(*words, **options)
            self.assertEqual((ran.status, ran.error.count('\n')), (2, 1), ran.error)
            self.assertIn(told, ran.error)
            self.assertEqual(out.read_text(), 'as it was')
        self.assertTrue(nodus('eval', clouds, '--image', '-').out.startswith('\udc89PNG'))
        # Graphviz's language needs no Graphviz.
        self.assertEqual(nodus('show', graph, '-o', self.folder / 'x.dot', **with_path('/nowhere')).error, '')


unittest.main(verbosity=0)
