# A browser for the tests of the node reference.
import os
import pathlib
import time

from selenium import webdriver
from selenium.webdriver.common.by import By

DESKTOP, PHONE = (1280, 900), (360, 740)


def folder_of(build):
    """Where the page is, and its screenshots go."""
    return pathlib.Path(build).resolve() / 'reference'


class Browser(webdriver.Chrome):
    """One headless Chromium with an empty profile."""

    def __init__(self, folder):
        self.folder = folder
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
        self.get((self.folder / 'index.html').as_uri() + hash)

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
        (self.folder / f'{name}.png').write_bytes(picture := self.get_screenshot_as_png())
        return picture
