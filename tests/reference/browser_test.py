#!/usr/bin/python3
# The node reference in a browser: searching, links, keys, the clipboard, a phone, light and dark, without scripts.
# Leaves its screenshots beside the page.
# usage: browser_test.py BUILD-DIRECTORY
import json
import struct
import unittest

from selenium.webdriver.common.keys import Keys

import browser
from browser import DESKTOP, FOLDER, PHONE

FAMILIES = (FOLDER / 'index.html').read_text().count('<article ')
ENTER, ESCAPE, DOWN, UP = Keys.ENTER, Keys.ESCAPE, Keys.DOWN, Keys.UP


# Every text in sight on its background, and what stands in an empty field: the least contrast, as WCAG has it.
CONTRAST = '''(() => {
  const parts = (colour) => colour.match(/[\\d.]+/g).map(Number);
  const light = (colour) => parts(colour).slice(0, 3).map((c) => c / 255)
    .map((c) => c <= 0.04045 ? c / 12.92 : ((c + 0.055) / 1.055) ** 2.4)
    .reduce((sum, c, i) => sum + c * [0.2126, 0.7152, 0.0722][i], 0);
  const back = (part) => (parts(getComputedStyle(part).backgroundColor)[3] ?? 1) > 0
    ? getComputedStyle(part).backgroundColor : back(part.parentElement);
  const texts = [...document.querySelectorAll('body :not(option, script)')].filter((part) => part.checkVisibility()
    && [...part.childNodes].some((node) => node.nodeType === Node.TEXT_NODE && node.data.trim()));
  const pairs = texts.map((part) => [part, getComputedStyle(part)[part.matches('svg *') ? 'fill' : 'color']])
    .concat([[arguments[0], getComputedStyle(arguments[0], '::placeholder').color]]);
  return pairs.map(([part, colour]) => {
    const [a, b] = [light(colour), light(back(part))].sort((x, y) => x - y);
    return [(b + 0.05) / (a + 0.05), part.outerHTML.slice(0, 80)];
  }).sort(([a], [b]) => a - b)[0].concat(pairs.length);
})()'''


class Page(browser.InABrowser):
    def shown(self):
        return self.browser.run('[...document.querySelectorAll("article")].filter((a) => a.checkVisibility())'
                                '.map((a) => a.id)')

    def leads_to(self, name):
        """The page has scrolled to that node, below the bar, and it has the focus."""
        self.soon('[location.hash, document.activeElement.id]', ['#' + name, name])
        self.soon(f'((top, bar) => top >= bar && top < bar + 40)(document.getElementById("{name}")'
                  '.getBoundingClientRect().top, document.querySelector(".top").offsetHeight)', True)

    def shows_everything(self):
        self.soon('[...document.querySelectorAll("article")].filter((a) => a.checkVisibility()).length',
                  FAMILIES)

    def test_search_then_follow_links(self):
        self.shows_everything()
        self.assertEqual(self.browser.run('[...document.images].map((image) => image.naturalWidth)'), [480, 240, 240])
        self.browser.keys('/slerp')
        self.assertEqual(self.browser.run('document.getElementById("search").value'), 'slerp')
        self.assertEqual(self.shown()[0], 'Slerp')
        self.assertLess(len(self.shown()), 5)
        self.assertEqual(self.browser.run('location.hash'), '#q=slerp')
        self.browser.keys(ENTER)
        self.leads_to('Slerp')
        self.shows_everything()
        self.assertGreater(len(self.browser.screenshot('desktop')), 40000)
        self.browser.click('#Slerp .see a[href="#RotateVector"]')
        self.leads_to('RotateVector')

    def test_words_of_other_trades_find_nodes(self):
        for words, first in [('sin', 'Sin'), ('remap', 'Rescale'), ('look at', 'QuatArcRotate'), ('int', 'CastFloatToInt32'),
                             ('perlin', 'Noise1D'), ('interpolate', 'Lerp'), ('gaussian', 'RandomGenerator'),
                             ('square root', 'Sqrt'), ('noduslogvaluetqs', 'LogValue')]:
            with self.subTest(words):
                self.browser.keys('/' + words)
                self.assertEqual(self.shown()[:1], [first])
                self.browser.keys(ESCAPE)
        self.browser.keys('/zzz')
        self.assertEqual(self.shown(), [])
        self.assertIn('No node matches', self.browser.run('document.getElementById("count").textContent'))

    def test_links_from_outside(self):
        self.browser.open('#q=noise&type=Float2')
        self.assertEqual(self.shown(), ['Noise2D'])
        for hash in ('Add', 'add_float3', 'NodusAdd_Float3_Solve'):
            self.browser.open('#' + hash)
            self.soon('document.activeElement.id', 'Add')
        self.browser.click('#Add a.type[title=Add_Translation]')
        self.soon('document.getElementById("type").value', 'Translation')
        self.assertIn('Negate', self.shown())
        self.assertNotIn('Sub', self.shown())
        self.browser.run('history.back()')
        self.shows_everything()

    def test_links_that_lead_nowhere_say_what_is_near(self):
        told = 'document.getElementById("missing")'
        for hash, text, near in [('Nope', 'no node “Nope”', 'Not'),
                                 ('nodusslrep_quat_solve', 'no node “nodusslrep_quat_solve”', 'Slerp'),
                                 ('remap', 'no node “remap”', 'Rescale'),
                                 ('%E0%A4%A', 'no node “%E0%A4%A”', None), ('results', 'no node “results”', None),
                                 ('x%3Cb%3Ey' * 20, 'no node “x<b>yx<b>', None),
                                 ('type=Quat', 'no type “Quat”', 'Quaternion')]:
            with self.subTest(hash):
                self.browser.open('#' + hash)
                self.soon(told + '.checkVisibility()', True)
                self.assertIn(text, self.browser.run(told + '.textContent'))
                links = self.browser.run(f'[...{told}.querySelectorAll("a")].map((link) => link.textContent)')
                self.assertLessEqual(len(links), 3)
                self.assertEqual(near, links[0] if links else None)
                self.shows_everything()
        self.browser.open('#Nope')
        self.soon('document.activeElement.id', 'missing')
        self.browser.click('#missing a')
        self.leads_to('Not')
        self.assertFalse(self.browser.run(told + '.checkVisibility()'))
        # What is no text in a link may be one of a search.
        for hash, value in [('q=50%', '50%'), ('q=a%26b', 'a&b')]:
            self.browser.open('#' + hash)
            self.soon('document.getElementById("search").value', value)

    def test_keys_move_through_the_results(self):
        focus = 'document.activeElement.textContent || document.activeElement.id'
        self.browser.keys('/log')
        self.browser.keys(DOWN)
        first = self.browser.run(focus)
        self.browser.keys(DOWN)
        self.assertEqual([first, self.browser.run(focus)], self.shown()[:2])
        self.browser.keys(UP + UP)
        self.assertEqual(self.browser.run(focus), 'search')
        self.browser.keys(DOWN + DOWN + ENTER)
        self.shows_everything()
        self.browser.keys('/' + ESCAPE)
        self.assertEqual(self.browser.run('document.activeElement.id'), '')

    def test_copies_a_graph(self):
        self.browser.execute_cdp_cmd('Browser.grantPermissions', {'permissions': ['clipboardReadWrite']})
        self.browser.click('#Slerp .copy')
        self.soon('document.querySelector("#Slerp .copy").textContent', 'Copied')
        copied = self.browser.run('navigator.clipboard.readText()')
        self.assertEqual(json.loads(copied)['nodes']['blend']['type'], 'Slerp_Quat')

    def test_fits_a_phone(self):
        self.browser.show(PHONE)
        for hash in ('', '#q=rotation', '#EulerToQuaternion', '#Noise2D'):
            self.browser.open(hash)
            self.assertLessEqual(self.browser.run('document.documentElement.scrollWidth'), PHONE[0], hash)
            # Nor does a table hide a part of itself.
            self.assertEqual(self.browser.run('[...document.querySelectorAll(".wide")].filter((table) =>'
                                              'table.scrollWidth > table.clientWidth).length'), 0)
        picture = self.browser.screenshot('phone')
        self.assertEqual(struct.unpack('>II', picture[16:24]), PHONE)
        self.assertGreater(len(picture), 20000)

    def test_light_and_dark(self):
        back = 'getComputedStyle(document.body).backgroundColor'
        backs = []
        for scheme in ('light', 'dark'):
            self.browser.show(DESKTOP, scheme)
            for hash in ('', '#Slerp', '#Nope', '#q=noise'):
                self.browser.open(hash)
                search = self.browser.run('document.getElementById("search")')
                contrast, text, count = self.browser.run(CONTRAST, search)
                self.assertGreaterEqual(contrast, 4.5, f'{text} on {hash}, {scheme}')
                self.assertGreater(count, 30)
            backs.append(self.browser.run(back))
        self.assertNotEqual(*backs)
        self.browser.screenshot('dark')
        self.browser.click('#theme')
        self.browser.open()
        self.assertEqual(self.browser.run(back), backs[0])
        self.browser.run('localStorage.clear()')

    def test_can_be_read_without_scripts(self):
        self.browser.execute_cdp_cmd('Emulation.setScriptExecutionDisabled', {'value': True})
        try:
            self.browser.open()
            self.assertEqual(len(self.shown()), FAMILIES)
            self.assertFalse(self.browser.run('document.getElementById("search").checkVisibility()'))
        finally:
            self.browser.execute_cdp_cmd('Emulation.setScriptExecutionDisabled', {'value': False})


unittest.main(verbosity=0)
