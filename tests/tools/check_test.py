# nodus check: every fault that the broken module has is named, and our module has none.
# usage: check_test.py MODULE [BROKEN-MODULE] NODUS
import json
import sys
import unittest

from nodus_command import NODUS, CommandTest, nodus

MODULE, BROKEN = sys.argv[1], sys.argv[2:]
del sys.argv[1:]
# Of which kernel, by which check, a part of what is told and of the input.
FAULTS = [
    ('Null', 'signal', 'SIGSEGV at a null pointer', 'nan'),
    ('Beyond', 'signal', 'SIGSEGV at byte 16 of its input block, which has 16', 'value=('),
    ('Before', 'signal', 'SIGSEGV 4 bytes before its input block', 'value=('),
    ('Divides', 'signal', 'SIGFPE', ', 255, '),
    ('Illegal', 'signal', 'SIGILL', 'inf'),
    ('Aborts', 'signal', 'SIGABRT', 'value=('),
    ('Bus', 'signal', 'SIGBUS', 'value=(-'),
    ('Leaves', 'process', 'status 3', ', 0.5), frame '),
    ('Hangs', 'hang', 'does not return', 'value=(-2147483648, '),
    ('WritesInput', 'input', 'writes to its input block', 'value=(255, '),
    ('WritesBehind', 'output', 'behind its output ports', 'value=('),
    ('WritesBetween', 'output', 'between', 'frame '),
    ('Forgets', 'written', 'does not write', 'value=(-'),
    ('Counts', 'again', 'called again', 'value=('),
    ('Address', 'elsewhere', 'another address', 'value=('),
    ('ReadsBetween', 'padding', 'between and behind the input ports', 'flag='),
    ('Threads', 'threads', 'two threads', 'value=('),
    ('Text', 'texts', 'keeps references to texts', ''),
    ('Flushes', 'control', 'control state', 'value=('),
    ('Precision', 'control', 'control state', 'value=('),
    ('Raises', 'exceptions', 'no value explains', ', 255, '),
    ('Overflows', 'exceptions', 'no value explains', ', 255, '),
    ('Direction', 'control', 'control state', 'value=('),
    ('Stack', 'stack', 'on the stack of the x87 unit', 'value=('),
    ('Remembers', 'far', "bytes of the module's own data", ''),
    ('FarBehind', 'signal', 'SIGSEGV at byte 4194304 of its output block', ', 255, '),
    ('ReadsOutput', 'gaps', 'between and behind the output ports', 'frame '),
    ('Keeps', 'leaks', 'bytes of memory over', ''),
    ('First', 'first', 'eight threads make the first calls', 'value=('),
    ('Forked', 'fork', 'another result in a forked process', ''),
    (None, 'reload', 'bytes of memory each time it is loaded', ''),
    ('Logs', 'again', 'called again', 'value=('),
    ('History', 'history', 'other frames', 'frame '),
    ('Workspace', 'output', 'output ports', 'frame '),
    ('Unregistered', 'records', 'is exported, but not registered', ''),
    ('Hidden', 'records', 'is registered, but not exported', ''),
    ('Moved', 'records', 'not the exported symbol', ''),
    ('Undescribed', 'records', 'does not describe', ''),
    ('Signature', 'records', 'is described as (*,*), but registered as (*,*,*)', ''),
    ('Missing', 'records', 'does not register', ''),
]


def check(module):
    ran = nodus('check', module, '--seconds', '1', '--json')
    return ran, json.loads(ran.out or '{}')


class Check(CommandTest):
    def test_our_module_has_no_fault(self):
        ran, report = check(MODULE)
        self.assertEqual((ran.status, report['faults']), (0, []), ran.error)
        self.assertGreater(report['kernels'], 290)
        self.assertEqual(report['tried'], report['kernels'])
        self.assertGreater(report['inputs'], 50000)

    @unittest.skipUnless(BROKEN, 'the sanitizers end a process in ways of their own')
    def test_every_fault_of_a_broken_module_is_named(self):
        ran, report = check(BROKEN[0])
        self.assertEqual(ran.status, 1, ran.error)
        # Of nobody anything else is told.
        self.assertEqual(len(report['faults']), len(FAULTS), ran.out)
        for kernel, name, text, given in FAULTS:
            found = [fault['input'] for fault in report['faults'] if fault['check'] == name and text in fault['text'] and
                     (kernel is None or f'NodusBroken{kernel}_' in fault['kernel'] + fault['text'])]
            self.assertEqual(len(found), 1, f'{kernel} in {ran.out}')
            self.assertIn(given, found[0], kernel)

    def test_what_is_no_module_is_wrong_input(self):
        for file in '/nowhere/libx.so', NODUS:
            ran, _ = check(file)
            self.assertEqual((ran.status, ran.out), (2, ''))
            self.assertRegex(ran.error, '^nodus: cannot load module ')


unittest.main(verbosity=0)
