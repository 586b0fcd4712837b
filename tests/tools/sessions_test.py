# The command in sessions: what is typed, what it answers. sessions/README.md explains the files.
# usage: sessions_test.py MODULE EXAMPLES SESSIONS NODUS
import pathlib
import re
import sys
import unittest

from nodus_command import CommandTest, nodus

SESSIONS, EXAMPLES, MODULE = pathlib.Path(sys.argv.pop()), sys.argv.pop(), sys.argv.pop()


def lines_of(path):
    """Numbers and lines, comments left out; a row stands for the block of lines in front of it."""
    text = path.read_bytes().decode().replace('{module}', MODULE).replace('{examples}', EXAMPLES)
    block, has_rows = [], False
    for number, line in enumerate(text.split('\n'), 1):
        if line.startswith('| '):
            cells = [cell.strip(' ') for cell in re.split(r' \|(?= )', line[1:].replace('\\n', '\n'))]
            yield from ((number, re.sub('%([1-9])', lambda cell: cells[int(cell[1]) - 1], made)) for _, made in block)
            has_rows = True
        elif not line.startswith('#'):
            if has_rows or not line:
                yield from [] if has_rows else block
                block, has_rows = [], False
            block.append((number, line))
    yield from [] if has_rows else block


class Sessions(CommandTest):
    def answers(self, line, out, error):
        words = [word.replace("'", '') for word in re.findall("(?:[^ ']|'[^']*')+", line)]
        options = {}
        if words[-2:-1] == ['<']:
            options['stdin'] = open(self.folder / words[-1])
            self.addCleanup(options['stdin'].close)
            words = words[:-2]
        before = self.files()
        ran = nodus(*words, cwd=self.folder, **options)
        for text, expected in (ran.out, out), (ran.error, error):
            pattern = '.*'.join(map(re.escape, expected.split('...')))
            self.assertTrue(re.fullmatch(pattern, text, re.S), f'{text}should be\n{expected}')
        self.assertEqual(ran.status, 2 if error.startswith('nodus: ') else 0)
        if ran.status:
            self.assertEqual(self.files(), before)

    def test_answers_as_written(self):
        paths = sorted(SESSIONS.glob('*.txt'))
        self.assertGreaterEqual(len(paths), 5)
        for path in paths:
            self.play(path)

    def play(self, path):
        rest, runs = list(lines_of(path)), 0

        def following(mark):
            text = ''
            while rest and rest[0][1].startswith(mark):
                text += rest.pop(0)[1][len(mark):] + '\n'
            return text

        while rest:
            number, line = rest.pop(0)
            mark, words = line[:2], line[2:]
            with self.subTest(f'{path.name}:{number}: {line}'):
                if mark == '==':
                    self.setUp()
                elif mark == '@ ':
                    name, _, text = words.partition(' ')
                    self.write(name, text + '\n' if text else following('    '))
                elif mark == '? ':
                    self.assertEqual((self.folder / words).read_text(), following('> '))
                elif mark == '$ ':
                    self.answers(words, following('> '), following('! '))
                    runs += 1
                else:
                    self.assertEqual(line, '', 'is no line of a session')
        self.assertGreater(runs, 0)


unittest.main(verbosity=0)
