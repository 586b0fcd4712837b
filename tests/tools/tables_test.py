# Tables: which rows are read from them, and where. What is wrong with one is a session.
import json
import re
import unittest

from nodus_command import CommandTest, nodus


def graph_of(*columns):
    nodes = {f'n{i}': {'type': 'Abs_Double', 'inputs': {'value': {'column': column}}} for i, column in enumerate(columns)}
    return json.dumps({'nodes': nodes, 'outputs': list(nodes)})


class Tables(CommandTest):
    def evaluated(self, table, *columns):
        """The results without the header, or lines and texts of what is no number."""
        ran = nodus('eval', self.write('g.json', graph_of(*columns)), '--data', self.write('t.csv', table))
        return re.findall(r"csv:(\d+): column 'x': '(.*)' is", ran.error) if ran.status else ran.out.splitlines()[1:]

    def test_rows_are_found_whatever_ends_them(self):
        for table, expected in [
            ('x,y\n1,2\n3,4\n', ['0,1', '1,3']),
            ('x,y\r\n1,2\r\n3,4', ['0,1', '1,3']),
            ('\ufeffx\n1\n\n\r\n', ['0,1']),
            ('x\n', []),
            ('x', []),
            # Blank lines count once a row follows.
            ('x\n1\n\n\n2\nz\n', [('3', ''), ('4', ''), ('6', 'z')]),
            # A line break in quotes belongs to the field, and lines are counted on.
            ('y,x\n"a\nb",2\n3,4\n', ['0,2', '1,4']),
            ('y,x\n"a\nb",2\n3,z\n', [('4', 'z')]),
        ]:
            self.assertEqual(self.evaluated(table, 'x'), expected, table)

    def test_long_tables_come_whole(self):
        # Rows across the ends of the reader's buffer, with and without quotes anywhere in it.
        for field in '12345', '"1\n""2"':
            table = 'x,y\n' + ''.join(f'{i},{field}\n' for i in range(60000)) + '60000,' + '7' * 600000
            self.assertEqual(self.evaluated(table, 'x'), [f'{i},{i}' for i in range(60001)])
            self.assertEqual(self.evaluated(table + '\nz,', 'x'), [(str(table.count('\n') + 2), 'z')])

    def test_column_names(self):
        names = ['time', 'a, "b"', '\nz', '']
        self.assertEqual(self.evaluated('\ufeff time , "a, ""b""","\nz",\n1,2,3,4', *names), ['0,1,2,3,4'])


unittest.main(verbosity=0)
