# A browser for the tests of the node reference, and what all of them do with it. The script's first argument is the
# build directory.
import os
import pathlib
import sys
import time
import unittest

from selenium import webdriver
from selenium.webdriver.common.by import By

DESKTOP, PHONE = (1280, 900), (360, 740)
# Where the page is, and its screenshots go.
FOLDER = pathlib.Path(sys.argv.pop(1)).resolve() / 'reference'


class Browser(webdriver.Chrome):
    """One headless Chromium with an empty profile."""

    def __init__(self):
        options = webdriver.ChromeOptions()
        for argument in ['headless', 'disable-gpu', 'disable-quic', 'no-first-run', 'disable-sync', 'hide-scrollbars',
                         'disable-background-networking', 'disable-component-update']:
            options.add_argument('--' + argument)
        if os.geteuid() == 0:
            options.add_argument('--no-sandbox')
        options.set_capability('goog:loggingPrefs', {'browser': 'ALL', 'performance': 'ALL'})
        super().__init__(options=options)

    def run(self, script, *arguments):
        return self.execute_script('return ' + script, *arguments)

    def keys(self, text):
        webdriver.ActionChains(self).send_keys(text).perform()

    def click(self, selector):
        self.find_element(By.CSS_SELECTOR, selector).click()

    def open(self, hash=''):
        self.get('about:blank')
        self.get((FOLDER / 'index.html').as_uri() + hash)

    def until(self, script, *arguments):
        """Waits until that is true, and gives it."""
        for _ in range(500):
            if got := self.run(script, *arguments):
                return got
            time.sleep(0.02)
        raise AssertionError('never: ' + script)

    def show(self, size, scheme='light'):
        self.execute_cdp_cmd('Emulation.setDeviceMetricsOverride', {
            'width': size[0], 'height': size[1], 'deviceScaleFactor': 1, 'mobile': size == PHONE})
        self.execute_cdp_cmd('Emulation.setEmulatedMedia', {
            'features': [{'name': 'prefers-color-scheme', 'value': scheme}]})

    def screenshot(self, name):
        (FOLDER / f'{name}.png').write_bytes(picture := self.get_screenshot_as_png())
        return picture


class InABrowser(unittest.TestCase):
    """Each test begins with the page on a desktop, and ends without anything that the browser calls severe."""

    @classmethod
    def setUpClass(cls):
        cls.browser = Browser()
        cls.addClassCleanup(cls.browser.quit)

    def setUp(self):
        self.browser.show(DESKTOP)
        self.open()

    def tearDown(self):
        faults = self.browser.get_log('browser')
        self.assertEqual([fault['message'] for fault in faults if fault['level'] == 'SEVERE'], [])

    def open(self, hash=''):
        self.browser.open(hash)

    def soon(self, script, expected):
        """Links and the way back take effect a moment later."""
        self.browser.until(f'JSON.stringify({script}) === JSON.stringify(arguments[0])', expected)
