# Modules and catalogues that agree, or do not.
# usage: catalogue_test.py MODULE NODUS
import pathlib
import shutil
import sys
import unittest

from nodus_command import CommandTest, nodus

MODULE = pathlib.Path(sys.argv.pop())
TEXT = MODULE.with_name('nodusmath.json').read_text()
# What nobody reads is a fault at every level: a part of the catalogue, another in its place, what is told.
CHANGES = [
    ('"module": "', '"modul": "', "unknown member 'modul'; did you mean 'module'?"),
    ('"edges": "', '"edgez": "', "family 'Abs': unknown member 'edgez'"),
    ('"default": 1e-06', '"defualt": 1', "family 'AlmostEqual', input 'tolerance': unkn"),
    ('"typeFor": { "Double"', '"typeFor": { "Duoble"', "family 'AlmostEqual', input 'tolerance': 'typeFor' names "
     "'Duoble', which is none of the family's types; did you mean 'Double'?"),
    ('"notFor": ["Bool"]', '"notFor": [9]',
     "family 'RandomGenerator', input 'distribution': 'notFor' wants an array of texts, not an"),
    ('"value": 12, "name": "twist', '"valeu": 12, "name": "twist',
     "family 'EulerToQuaternion', input 'order', choice 'twist-swing': unknown member 'valeu'"),
    ('"doc": "', '"doc": 3, "x": "', "family 'Abs': 'doc' wants a text, not 3"),
    ('"name": "scalar", "type": "Float"', '"name": "scalar", "type": "Flaot"',
     "'MultiplyByScalar_Float2', port 'scalar': there is no value type 'Flaot'; did you mean"),
]


class Catalogue(CommandTest):
    def told(self, text):
        """The faults of the module with this catalogue; the folder is cut off."""
        module = shutil.copy(MODULE, self.folder)
        if text is not None:
            self.write('nodusmath.json', text)
        ran = nodus('--module', module, 'list')
        self.assertEqual(ran.status, 2 if ran.error else 0)
        return ran.error.replace(f'{self.folder}/', '')

    def test_agrees_with_the_module(self):
        self.assertEqual(self.told(None), 'nodus: cannot read nodusmath.json: No such file or directory\n')
        self.assertEqual(self.told(TEXT), '')
        self.assertRegex(self.told('{'), '^nodus: nodusmath.json:1: column 1: ')
        types = ['Float', 'Int32', 'UInt32', 'UInt8']
        line = TEXT[:TEXT.index('"name": "Div"')].count('\n')
        self.assertEqual(self.told(TEXT.replace('"name": "Div"', '"name": "Dib"')), ''.join(
            [f'nodus: nodusmath.json: does not describe NodusDiv_{each}_Solve, which libnodusmath.so registers\n'
             for each in types] +
            [f'nodus: nodusmath.json:{line}: describes NodusDib_{each}_Solve, which libnodusmath.so does not register\n'
             for each in types]))

    def test_what_nobody_reads_is_a_fault_at_every_level(self):
        for before, after, told in CHANGES:
            line = TEXT[:TEXT.index(before)].count('\n') + 1
            self.assertIn(f'nodusmath.json:{line}: {told}', self.told(TEXT.replace(before, after, 1)))

    def test_one_name_in_two_modules_names_both_files(self):
        copy = shutil.copy(MODULE, self.folder)
        shutil.copy(MODULE.with_name('nodusmath.json'), self.folder)
        self.assertIn(f'modules {MODULE} and {copy} both have NodusAbs_Double_Solve and ',
                      nodus('--module', MODULE, '--module', copy, 'list').error)


unittest.main(verbosity=0)
