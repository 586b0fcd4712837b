# A module of one's own stands beside ours.
# usage: modules_test.py MODULE OWN-MODULE NODUS
import shutil
import sys
import unittest

from nodus_command import CommandTest, nodus

OWN = sys.argv.pop()
MODULE = sys.argv.pop()
GRAPH = """{"nodes": {
    "sum": {"type": "Add_Float", "inputs": {"a": 1, "b": 2}},
    "twice": {"type": "Twice_Float", "inputs": {"value": {"from": "sum"}}},
    "odd": {"type": "Add_Bool", "inputs": {"a": true}}}, "outputs": ["twice", "odd"]}"""


def answer(*arguments):
    ran = nodus('--module', OWN, *arguments)
    return ran.error or ran.out


class Modules(CommandTest):
    def test_are_joined(self):
        self.assertEqual(answer('eval', self.write('g.json', GRAPH)), 'frame,twice.result,odd.result\n0,6,true\n')
        # Whose a node is, stands with it; where there is one module, nobody asks.
        listed = answer('list')
        for family in 'The double of value. (own)', 'The sum modulo 2. (own)', ' a + b, lane by lane. (nodusmath)':
            self.assertIn(family + '\n', listed)
        self.assertNotIn('(nodusmath)', nodus('list').out)
        for owner in MODULE, OWN:
            self.assertIn(f'Of the module {owner}.\n', answer('describe', 'Add'))
        # Ours is not what is asked for there.
        self.assertNotIn('Slerp', answer('digest'))

    def test_of_one_name_are_told_apart(self):
        copy = shutil.copy(OWN, self.folder / 'libcopy.so')
        self.assertEqual(answer('--module', copy, 'list'),
                         f'nodus: modules {OWN} and {copy} both have NodusTwice_Float_Solve and 1 more kernel\n')


unittest.main(verbosity=0)
