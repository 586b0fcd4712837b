# What the command does to files, pipes and slices of the frames. What it answers is in sessions/.
import os
import pathlib
import resource
import signal
import unittest

from nodus_command import CommandTest, nodus

SQUARE = '''{"nodes": {
    "square": {"type": "Mul_Int32", "inputs": {"a": {"frame": true}, "b": {"frame": true}}},
    "told":   {"type": "LogValueInt32", "inputs": {"value": {"from": "square"}, "prefix": "= "}}},
    "outputs": ["square"]}'''
# A result with quotes, commas and line ends in it, and log lines of several lines.
TOLD = r'''{"nodes": {
    "frame":  {"type": "Add_Int32", "inputs": {"a": {"frame": true}}},
    "counts": {"type": "LogValueInt32", "inputs": {"value": {"from": "frame"}, "prefix": "at\nlast "}},
    "says":   {"type": "LogValueString", "inputs": {"value": "a \"b\",\nc"}}},
    "outputs": ["frame", "says"]}'''


class Files(CommandTest):
    def test_a_sink_that_takes_no_more_is_one_line(self):
        evaluate = ['eval', self.write('g.json', SQUARE), '--frames', '0:60000', '--log', '/dev/null']
        before = self.files()
        result = self.folder / 'r.csv'
        with open('/dev/full', 'w') as full:
            for more, options, told in [
                ([], {'stdout': full}, 'standard output: No space left on device'),
                ([], {'before': lambda: os.close(1)}, 'standard output: Bad file descriptor'),
                (['--out', result], {'before': lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (100000, 100000))},
                 f'{result}: File too large'),
            ]:
                ran = nodus(*evaluate, *more, **options)
                self.assertEqual((ran.status, ran.error), (2, f'nodus: cannot write {told}\n'))
        self.assertEqual(self.files(), before)
        self.assertTrue(pathlib.Path('/dev/null').is_char_device(), 'a device is written, not replaced')

    def test_a_reader_that_has_enough_is_no_fault(self):
        # Frames without end: nobody may wait for them.
        evaluate = ['eval', self.write('g.json', SQUARE), '--frames', '0:2000000000']
        before = self.files()
        reader, writer = os.pipe()
        os.close(reader)
        self.addCleanup(os.close, writer)
        no_messages = {'before': lambda: os.dup2(writer, 2)}
        for words in [[*evaluate, '--log', self.folder / 'r.log'], ['list'], ['describe', 'Add'], ['call', 'Add_Float'],
                      ['digest'], ['manual', 'man'], ['show', '--help'], ['--version']]:
            ran = nodus(*words, stdout=writer)
            self.assertEqual((ran.status, ran.error), (-signal.SIGPIPE, ''), words)
        self.assertEqual(nodus(*evaluate, **no_messages).status, -signal.SIGPIPE)
        self.assertEqual(self.files(), before)

        # A file of results, and the one result of a call, do not depend on who reads messages.
        evaluate[-1:] = ['0:99999', '--out', self.folder / 'r.csv']
        self.assertEqual(nodus(*evaluate, **no_messages).status, 0)
        self.assertTrue(self.files()['r.csv'].endswith(b'\n99999,1409865409\n'))
        self.assertEqual(nodus('call', 'LogValueInt32', 'value=7', **no_messages).out, 'result = 7\n')

    def test_a_link_stays_a_link_and_a_mode_stays_a_mode(self):
        graph, real, link = self.write('g.json', SQUARE), self.write('real.csv', 'old'), self.folder / 'link.csv'
        real.chmod(0o600)
        link.symlink_to('real.csv')
        self.assertEqual(nodus('eval', graph, '--out', link).status, 0)
        self.assertTrue(link.is_symlink())
        self.assertEqual((real.read_text(), real.stat().st_mode & 0o777), ('frame,square.result\n0,0\n', 0o600))


class Shards(CommandTest):
    def test_any_number_of_them_merges_to_the_bytes_of_one_run(self):
        graph, table = self.write('g.json', TOLD), self.write('t.csv', 'x\n1\n2\n3\n4\n5\n')

        def made(name, *words):
            self.assertEqual(nodus(*words).error, '')
            return self.files()[name]

        for frames in ['--frames', '-7:30:3'], ['--data', table]:
            for form in 'csv', 'jsonl':
                log, one, whole = self.folder / 'one.log', self.folder / f'one.{form}', self.folder / f'all.{form}'
                expected = made(one.name, 'eval', graph, '--out', one, '--log', log, *frames)
                lines = self.files()['one.log']
                self.assertGreater(len(lines), 100)
                for count in 1, 4, 20:
                    # From the last to the first: the order of the arguments says nothing.
                    parts = [self.folder / f'{part}.{form}' for part in range(count, 0, -1)]
                    logs = [part.with_suffix('.log') for part in parts]
                    for part in parts:
                        made(part.name, 'eval', graph, '--shard', f'{part.stem}/{count}', '--out', part,
                             '--log', part.with_suffix('.log'), *frames)
                    self.assertEqual(made(whole.name, 'merge', '--out', whole, *frames, *parts), expected)
                    self.assertEqual(made('all.log', 'merge', '--out', self.folder / 'all.log', *logs), lines)

    def test_the_last_of_very_many_ends_with_the_last_frame(self):
        ran = nodus('eval', self.write('g.json', '{"nodes": {}}'), '--frames', '-2147483648:2147483647',
                    '--shard', '1000000/1000000')
        self.assertEqual((ran.out[:17], ran.out[-12:]), ('frame\n2147479353\n', '\n2147483647\n'))

    def test_a_file_that_is_not_whole_is_refused(self):
        first, out = self.write('a.csv', 'frame,x\n0,1\n1,1\n'), self.write('out.csv', 'as it was')
        for text, told in [('frame,x\n2,1\n3,', ':3: the file breaks off within this line'),
                           ('', ':1: the file is empty, it wants a header line')]:
            part = self.write('b.csv', text)
            ran = nodus('merge', part, first, '--frames', '0:3', '--out', out)
            self.assertEqual((ran.status, ran.error), (2, f'nodus: {part}{told}\n'))
            self.assertEqual(out.read_text(), 'as it was')


unittest.main(verbosity=0)
