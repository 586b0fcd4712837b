#!/usr/bin/python3
# The node reference as it computes: the bits of its kernels, fields and pictures, the playground; and what every page
# owes to everybody. Leaves its screenshots beside the page. Exits with 77 where the page does not compute.
# usage: live_test.py BUILD-DIRECTORY [UNITTEST-OPTION...]
#        live_test.py BUILD-DIRECTORY --renew PORTABLE-NODUS    writes calls.txt
import base64
import concurrent.futures
import hashlib
import json
import os
import pathlib
import random
import struct
import subprocess
import sys
import tempfile
import unittest
import zlib

from selenium import webdriver
from selenium.webdriver.common.by import By
from selenium.webdriver.common.keys import Keys

import browser
from browser import DESKTOP, FOLDER, PHONE

HERE = pathlib.Path(__file__).resolve().parent
SOURCE = HERE.parents[1]
KEPT = HERE / 'calls.txt'
AXE = FOLDER / 'audit/node_modules/axe-core/axe.min.js'
CALLS = 100
INF, NAN = float('inf'), float('nan')
FLOATS = [0.0, -0.0, 1.0, -1.0, 0.5, 1.5, INF, -INF, NAN, 2.0 ** -149, 2.0 ** -126, 16777216.0, 2.0 ** 31, 1.5707964, 1e-6]
INTS = {'Int32': [0, 1, -1, 12, 13, 2 ** 31 - 1, -2 ** 31], 'UInt32': [0, 1, 255, 2 ** 31, 2 ** 32 - 1], 'UInt8': [0, 1, 127, 128, 255],
        'Bool': [0, 1]}
TEXTS = ['', 'x', 'value = ', '100 %d', '°']


def single(number):
    return struct.unpack('f', struct.pack('f', number))[0]


def lane(draw, type):
    if type in INTS:
        if type == 'Bool' or draw.random() < 0.3:
            return draw.choice(INTS[type])
        return draw.randrange(0 if type[0] == 'U' else -100, 101)
    number = draw.choice(FLOATS) if draw.random() < 0.2 else draw.uniform(-1, 1) * draw.choice([1, 1, 4, 1000])
    return number if type == 'Double' else single(number)


def inputs_of(type):
    """The inputs of a hundred calls, and the frame of each; the same for everybody."""
    draw = random.Random(type['name'])
    rows = []
    for _ in range(CALLS):
        values = {}
        for port in type['inputs']:
            if port['type'] == 'String':
                values[port['name']] = draw.choice(TEXTS)
            elif port.get('choices'):
                values[port['name']] = [draw.randrange(-1, len(port['choices']) + 1)]
            else:
                values[port['name']] = [lane(draw, port['type'] if port['lanes'] == 1 else 'Float') for _ in range(port['lanes'])]
        rows.append((values, draw.randrange(-1000, 1000)))
    return rows


def digest(rows):
    return hashlib.sha256('\n'.join(rows).encode()).hexdigest()[:16]


def bits(number, type):
    if number != number:
        return 'nan'
    if type in ('Bool', 'UInt8'):
        return f'{int(number):02x}'
    if type in ('Int32', 'UInt32'):
        return f'{int(number) & 0xffffffff:08x}'
    return struct.pack('>d' if type == 'Double' else '>f', number).hex()


def told_by_command(nodus, type):
    """What nodus call answers to each, in bits."""
    def number(text):
        return {'true': 1, 'false': 0}[text] if text in ('true', 'false') else float(text) if 'n' in text or '.' in text or 'e' in text \
            else -0.0 if text == '-0' else int(text)

    rows = []
    for values, frame in inputs_of(type):
        words = []
        for port in type['inputs']:
            value = values[port['name']]
            if port['type'] == 'String':
                words.append(f"{port['name']}={value}")
            elif port['type'] == 'Bool':
                words.append(f"{port['name']}={'true' if value[0] else 'false'}")
            elif port['type'] == 'TQS':
                parts = {key: [x if abs(x) < INF else str(x) for x in value[at:at + 4]] for key, at in (('t', 0), ('q', 4), ('s', 8))}
                words.append(f"{port['name']}={json.dumps(parts)}")
            else:
                words.append(f"{port['name']}={','.join(map(repr, value))}")
        got = subprocess.run([nodus, 'call', type['name'], *words, '--frame', str(frame)], capture_output=True, text=True)
        if got.returncode != 0:
            raise RuntimeError(f'{words}: {got.stderr}')
        row = []
        for port, line in zip(type['outputs'], got.stdout.split('\n')):
            value = line.partition(' = ')[2]
            if port['type'] == 'String':
                row.append(value)
                continue
            lanes = value.replace('t (', '').replace('q (', '').replace('s (', '').strip('()').replace(')', '').split(', ')
            kind = port['type'] if port['lanes'] == 1 else 'Float'
            row += [bits(number(each), kind) for each in lanes]
        rows.append(' '.join(row))
    return digest(rows)


# Calls of one node type by the page's own kernels, in bits, with every NaN as one.
CALL = '''((name, rows) => {
  const node = nodus.prepare(name), { ports } = node.type.outputs;
  const shape = (type, value) => type === 'String' ? value : type === 'TQS'
    ? { t: value.slice(0, 4), q: value.slice(4, 8), s: value.slice(8) } : value.length === 1 ? value[0] : value;
  return rows.map(([values, frame]) => {
    for (const { name, type } of node.type.inputs.ports) node.set(name, shape(type, [values[name]].flat().map((lane) =>
      type === 'String' ? lane : Number({ inf: 'Infinity', '-inf': '-Infinity' }[lane] ?? lane))
      .reduce((all, lane) => type === 'String' ? lane : [...all, lane], [])));
    node.run(frame);
    return ports.map(({ name, type }) => {
      if (type === 'String') return node.get(name);
      const value = node.get(name), lanes = typeof value === 'object' ? ('t' in value ? [...value.t, ...value.q, ...value.s] : value) : [value];
      return node.bits(name).map((each, i) => Number.isNaN(lanes[i]) ? 'nan' : each).join(' ');
    }).join(' ');
  });
})(...arguments)'''
TYPES = '''nodus.nodeTypes.map(({ name, inputs, outputs, workspace }) => {
  const size = { Bool: 1, UInt8: 1, Int32: 1, UInt32: 1, Float: 1, Double: 1, String: 1, Float2: 2, Float3: 3, TQS: 12, Matrix4x4: 16, Mat44Float: 16 };
  const ports = (block) => block.ports.map((port) => ({ ...port, lanes: size[port.type] ?? 4 }));
  return { name, inputs: ports(inputs), outputs: ports(outputs), kernels: workspace.ports.length > 0 ? 2 : 1 };
})'''


def pixels_of(png):
    """The rows of a PNG file as they are filtered."""
    data, at = b'', 8
    while at < len(png):
        size, kind = struct.unpack('>I4s', png[at:at + 8])
        data += png[at + 8:at + 8 + size] if kind == b'IDAT' else b''
        at += size + 12
    return hashlib.sha256(zlib.decompress(data)).hexdigest()[:16]


class Live(browser.InABrowser):
    def open(self, hash=''):
        super().open(hash)
        self.browser.until("performance.getEntriesByName('computes').length > 0")

    def near(self, selector):
        """Scrolls there, waits until it lives, and gives it."""
        self.browser.run(f'document.querySelector("{selector}").scrollIntoView()')
        self.browser.until(f'document.querySelector("{selector} :is(.inputs, .editor)") !== null')

    def write(self, label, text, within='document'):
        """As somebody who writes into the field of that label."""
        self.browser.run('''((within, label, text) => {
            const field = [...document.querySelectorAll(within + ' :is(input, select, textarea)')].find((each) =>
              (each.getAttribute('aria-label') ?? each.labels[0]?.textContent).trim() === label);
            if (field.type === 'checkbox') field.checked = text; else field.value = text;
            field.dispatchEvent(new Event(field.tagName === 'SELECT' ? 'change' : 'input', { bubbles: true }));
        })(...arguments)''', within, label, text)

    def evaluated(self):
        self.browser.until("document.querySelector('#playground .workbench').getAttribute('aria-busy') === 'false'"
                           " && / ms\\.$/.test(document.querySelector('#playground .status').textContent)")


class Proof(Live):
    def test_bits_are_those_of_the_command(self):
        types = self.browser.run(TYPES)
        kept = dict(line.split() for line in KEPT.read_text().splitlines() if not line.startswith('#'))
        self.assertEqual(sum(type['kernels'] for type in types), 291)
        for type in types:
            rows = [({name: [str(x) for x in value] if isinstance(value, list) else value for name, value in values.items()}, frame)
                    for values, frame in inputs_of(type)]
            self.assertEqual(digest(self.browser.run(CALL, type['name'], rows)), kept[type['name']], type['name'])

    def test_examples_give_the_bytes_of_the_command(self):
        self.near('#playground')
        self.browser.execute_cdp_cmd('Browser.setDownloadBehavior', {'behavior': 'deny'})
        self.browser.run('''void (window.make = URL.createObjectURL, URL.createObjectURL = (blob) => {
            if (blob.type !== '') return window.make.call(URL, blob);
            window.saved = blob.arrayBuffer().then((bytes) => btoa(Array.from(new Uint8Array(bytes), (b) => String.fromCharCode(b)).join('')));
            return window.make.call(URL, blob);
        })''')
        kept = {}
        for line in (SOURCE / 'tests/digests/examples.txt').read_text().splitlines():
            sum, file, _, _, graph, *options = line.split()
            if file == 'standard_output' and graph.startswith('examples/') and not {'--out', '--image'} & {*options}:
                kept[pathlib.Path(graph).name] = sum
        kept['clouds.json'] = dict(line.split() for line in KEPT.read_text().splitlines()[1:])['clouds.json']
        self.assertGreater(len(kept), 5)
        for name, sum in kept.items():
            self.browser.run('void (window.saved = null)')
            self.browser.until('[...document.querySelectorAll("#playground option")].some(({ value }) => value === arguments[0])', name)
            self.write('Example', name, '#playground')
            self.browser.until('document.querySelector("#playground .call code").textContent.includes(arguments[0])', name)
            self.evaluated()
            self.browser.run("[...document.querySelectorAll('#playground button')].find((b) => b.textContent === 'Save results').click()")
            saved = base64.b64decode(self.browser.until('window.saved'))
            got = pixels_of(saved) if name == 'clouds.json' else hashlib.sha256(saved).hexdigest()[:16]
            self.assertEqual(got, sum, name)


class Nodes(Live):
    def results(self, family):
        return f'[...document.querySelectorAll("#{family} output .lane > :first-child")].map((lane) => lane.textContent)'

    def test_values_as_they_are(self):
        for family, type, inputs, results, bits in [
                ('Add', 'Add_Float3', {'a, x': '-0', 'b, x': '-0', 'a, y': '1e-3', 'b, y': 'inf', 'a, z': '0x7fc00000'},
                 ['-0', 'inf', 'nan'], ['80000000', '7f800000', None]),
                ('Add', 'Add_UInt8', {'a': '200', 'b': '100'}, ['44'], ['2c']),
                ('Sin', 'Sin_Double', {'value': 'pi/2'}, ['1'], ['3ff0000000000000']),
                # Halfway between two texts that read back: the even one.
                ('Abs', 'Abs_Float', {'value': '2328.53125'}, ['2328.5312'], ['45118880']),
                ('And', None, {'a': True, 'b': True}, ['true'], ['01']),
                ('RandomGenerator', 'RandomGenerator_UInt8', {'seed': '7', 'value': '9', 'range': '0', 'frame': '12'}, ['9'], ['09'])]:
            with self.subTest(type or family):
                self.near('#' + family)
                if type:
                    self.write('Type of ' + family, type, '#' + family)
                for label, text in inputs.items():
                    self.write(label, text, '#' + family)
                self.soon(self.results(family), results)
                self.browser.click(f'#{family} .live .toggle')
                shown = self.browser.run(f'[...document.querySelectorAll("#{family} output .bits")].map((b) => b.textContent)')
                self.assertEqual([got for got, want in zip(shown, bits) if want], [want for want in bits if want])
                self.browser.click(f'#{family} .live .toggle')

    def test_what_is_no_number_is_told(self):
        self.near('#BitwiseNot')
        self.write('Type of BitwiseNot', 'BitwiseNot_UInt8', '#BitwiseNot')
        self.write('value', '1', '#BitwiseNot')
        self.soon(self.results('BitwiseNot'), ['254'])
        for text in ('256', '1.5', 'one', ''):
            self.write('value', text, '#BitwiseNot')
            self.soon('document.querySelector("#BitwiseNot .number").getAttribute("aria-invalid")', 'true')
        self.assertEqual(self.browser.run(self.results('BitwiseNot')), ['254'])

    def test_pictures_follow_and_can_be_dragged(self):
        self.near('#Clamp')
        self.browser.until('document.querySelector("#Clamp .handle") !== null')
        handle = self.browser.find_element(By.CSS_SELECTOR, '#Clamp .handle')
        webdriver.ActionChains(self.browser).drag_and_drop_by_offset(handle, -90, 0).perform()
        # A quarter of the field is a unit and a half; it had been at 1.5.
        self.browser.until('Math.abs(document.querySelector("#Clamp .number").value) < 0.1')
        own = 'document.querySelector("#Clamp .own").getAttribute("d")'
        before = self.browser.run(own)
        self.write('max', '0.5', '#Clamp')
        self.browser.until(own + ' !== arguments[0]', before)
        plot = self.browser.find_element(By.CSS_SELECTOR, '#Clamp .live-plot')
        labels = '[...document.querySelectorAll("#Clamp .live-plot text")].map((text) => text.textContent).join()'
        before = self.browser.run(labels)
        webdriver.ActionChains(self.browser).move_to_element_with_offset(plot, 60, 60).click_and_hold().move_by_offset(-120, 0).release().perform()
        self.browser.until(labels + ' !== arguments[0]', before)
        self.near('#RandomGenerator')
        self.write('value', '0.5', '#RandomGenerator')
        self.browser.until('document.querySelector("#RandomGenerator figcaption").textContent.includes("value 0.5")')
        self.near('#Noise2D')
        shades = self.browser.find_element(By.CSS_SELECTOR, '#Noise2D .shades')
        webdriver.ActionChains(self.browser).move_to_element(shades).click().perform()
        # The middle of (0, 0) to (12, 6).
        self.browser.until('Math.abs(document.querySelectorAll("#Noise2D .number")[0].value - 6) < 0.1'
                           ' && Math.abs(document.querySelectorAll("#Noise2D .number")[1].value - 3) < 0.1')

    def test_one_rotation_in_every_form(self):
        self.near('#rotations')
        numbers = '((name) => [...[...document.querySelectorAll("#rotations .field")].find((field) =>' \
            'field.querySelector(".name").textContent === name).querySelectorAll(".number")].map((field) => Number(field.value)))'
        for label, text in (('quaternion, x', '0'), ('quaternion, y', '0'), ('quaternion, z', '0'), ('quaternion, w', '1'), ('XYZ, z', 'pi/2')):
            self.write(label, text, '#rotations')
        half = 0.5 ** 0.5
        expected = {'quaternion': [0, 0, half, half], 'axis': [0, 0, 1], 'angle': [1.5707964], 'ZYX': [0, 0, 1.5707964]}
        self.browser.until(f'Math.abs({numbers}("ZYX")[2] - 1.5708) < 1e-3')
        for name, lanes in expected.items():
            for got, want in zip(self.browser.run(f'{numbers}(arguments[0])', name), lanes):
                self.assertAlmostEqual(got, want, delta=1e-4, msg=name)
        self.write('angle', '0', '#rotations')
        self.browser.until(f'Math.abs({numbers}("XYZ")[2]) < 1e-4')


class Playground(Live):
    STATUS = 'document.querySelector("#playground .status").textContent'

    def take(self, graph, **options):
        self.near('#playground')
        for label, text in options.items():
            self.write(label, text, '#playground')
        self.write('Graph', graph if isinstance(graph, str) else json.dumps(graph, indent=1), '#playground')

    def cells(self):
        return '[...document.querySelectorAll("#playground tr")].map((row) => [...row.children].map((cell) => cell.textContent))'

    def test_faults_lead_to_their_lines(self):
        self.take({'nodes': {'a': {'type': 'Ad_Float', 'inputs': {'a': 1}}}, 'outputs': ['a', 'b']})
        faults = '[...document.querySelectorAll("#playground .faults li")].map((line) => line.textContent)'
        self.browser.until(faults + '.length > 0')
        with tempfile.TemporaryDirectory() as folder:
            (pathlib.Path(folder) / 'graph.json').write_text(self.browser.run('document.querySelector("#playground textarea").value'))
            name = self.browser.run('document.querySelector("#playground .call code").textContent').split()[2]
            os.rename(f'{folder}/graph.json', f'{folder}/{name}')
            got = subprocess.run([FOLDER.parent / 'bin/nodus', 'eval', name], cwd=folder, capture_output=True, text=True)
        self.assertEqual(self.browser.run(faults), [line.removeprefix('nodus: ') for line in got.stderr.splitlines()])
        self.browser.click('#playground .faults button')
        self.assertIn('Ad_Float', self.browser.run('((area) => area.value.slice(area.selectionStart, area.selectionEnd))'
                                                   '(document.querySelector("#playground textarea"))'))

    def test_tables_frames_and_links(self):
        graph = {'nodes': {'twice': {'type': 'Mul_Float', 'inputs': {'a': {'column': 'x'}, 'b': 2}}}, 'outputs': ['twice']}
        self.take('')
        self.browser.run("""void ((files) => {
            const event = new Event('drop', { bubbles: true });
            event.dataTransfer = { files };
            document.querySelector('#playground .workbench').dispatchEvent(event);
        })([new File([arguments[0]], 'mine.json'), new File(['x\\n1.5\\n-0\\n'], 'mine.csv')])""", json.dumps(graph))
        self.browser.until(self.STATUS + '.startsWith("2 frames")')
        self.browser.run('[...document.querySelectorAll("#playground .views button")].at(-1).click()')
        self.assertEqual(self.browser.run(self.cells()), [['frame', 'twice.result'], ['0', '3'], ['1', '-0']])
        self.assertEqual(self.browser.run('document.querySelector("#playground .call code").textContent'), 'nodus eval mine.json --data mine.csv')
        self.write('Frames', '1:1', '#playground')
        self.browser.until(self.STATUS + '.startsWith("1 frame ")')
        self.browser.execute_cdp_cmd('Browser.grantPermissions', {'permissions': ['clipboardReadWrite']})
        self.browser.run('[...document.querySelectorAll("#playground button")].find((b) => b.textContent === "Copy link").click()')
        self.browser.until('[...document.querySelectorAll("#playground button")].some((b) => b.textContent === "Copied")')
        link = self.browser.run('navigator.clipboard.readText()')
        self.open('#' + link.partition('#')[2])
        self.browser.until('document.querySelector("#playground .status")?.textContent.startsWith("1 frame ")')
        self.assertEqual(self.browser.run(self.cells())[1:], [['1', '-0']])
        self.open('#graph=nonsense')
        self.browser.until('document.querySelector("#playground .faults")?.textContent.includes("holds no graph")')

    def test_long_work_can_be_stopped(self):
        self.take(json.dumps({'nodes': {'a': {'type': 'CastInt32ToFloat', 'inputs': {'value': {'frame': True}}}}, 'outputs': ['a']}),
                  Frames='0:30000000')
        self.browser.until('[...document.querySelectorAll("#playground button")].some((b) => b.textContent === "Stop" && b.checkVisibility())')
        self.browser.run('[...document.querySelectorAll("#playground button")].find((b) => b.textContent === "Stop").click()')
        self.soon(self.STATUS, 'Stopped.')
        self.write('Frames', '0:9', '#playground')
        self.browser.until(self.STATUS + '.startsWith("10 frames")')

    def test_nodes_bring_their_graphs(self):
        self.near('#Slerp')
        self.browser.run('document.querySelector("#Slerp [aria-label=\'Try the graph of Slerp\']").click()')
        self.browser.until('document.querySelector("#playground .status")?.textContent.startsWith("5 frames")')


class Everybody(Live):
    """What axe-core has to say, and what it cannot see."""

    def test_no_request_leaves(self):
        self.near('#playground')
        self.evaluated()
        asked = [json.loads(entry['message'])['message'] for entry in self.browser.get_log('performance')]
        urls = [entry['params']['request']['url'] for entry in asked if entry['method'] == 'Network.requestWillBeSent']
        self.assertTrue(any(url.startswith('file:') for url in urls))
        self.assertEqual([url for url in urls if not url.startswith(('file:', 'data:', 'blob:'))], [])
        self.assertLess((FOLDER / 'index.html').stat().st_size, 1000000)

    def test_nothing_jumps_and_paint_comes_first(self):
        for size in (DESKTOP, PHONE):
            for hash in ('', '#Slerp', '#RandomGenerator', '#TransformTQS'):
                self.browser.show(size)
                self.open(hash)
                self.browser.run("""void (window.shift = 0, new PerformanceObserver((list) => {
                    for (const entry of list.getEntries()) if (!entry.hadRecentInput) window.shift += entry.value;
                }).observe({ type: 'layout-shift', buffered: true }))""")
                self.browser.run('window.scrollBy(0, 1500)')
                self.browser.until('document.querySelectorAll(".live .inputs").length > 0')
                self.assertLess(self.browser.run('window.shift'), 0.02, f'{hash} {size}')
                self.assertLess(self.browser.run("performance.getEntriesByName('first-contentful-paint')[0].startTime"),
                                self.browser.run("performance.getEntriesByName('computes')[0].startTime"))

    def test_fits_a_phone_and_leaves_pictures(self):
        for name, hash in (('live', '#Clamp'), ('rotations', '#rotations'), ('playground', '#playground')):
            for size, scheme in ((DESKTOP, 'light'), (PHONE, 'light'), (DESKTOP, 'dark')):
                self.browser.show(size, scheme)
                self.open(hash)
                self.near(hash)
                if hash == '#playground':
                    self.evaluated()
                self.assertLessEqual(self.browser.run('document.documentElement.scrollWidth'), size[0], hash)
                self.browser.screenshot(f"{name}_{'phone' if size == PHONE else 'desktop'}_{scheme}")

    def test_reads_without_webassembly(self):
        made = self.browser.execute_cdp_cmd('Page.addScriptToEvaluateOnNewDocument', {'source': 'delete window.WebAssembly'})
        self.addCleanup(self.browser.execute_cdp_cmd, 'Page.removeScriptToEvaluateOnNewDocument', made)
        self.browser.open()
        self.assertEqual(self.browser.run('[...document.querySelectorAll(".needs-kernels")].filter((e) => e.checkVisibility()).length'), 0)
        self.assertTrue(self.browser.run('document.querySelector("#Slerp figure").checkVisibility()'))

    def test_keys_reach_what_pointers_do(self):
        self.near('#EulerToQuaternion')
        self.browser.run('document.querySelector("#EulerToQuaternion .dial input").focus()')
        self.browser.keys(Keys.ARROW_RIGHT)
        self.browser.until('Number(document.querySelector("#EulerToQuaternion .number").value) > 0.1')
        self.browser.run('document.querySelector("#EulerToQuaternion .rotation").focus()')
        before = self.browser.run('document.querySelector("#EulerToQuaternion .rotation").innerHTML')
        self.browser.keys(Keys.ARROW_LEFT)
        self.browser.until('document.querySelector("#EulerToQuaternion .rotation").innerHTML !== arguments[0]', before)


class Audit(Live):
    def test_axe_finds_nothing(self):
        axe = AXE.read_text()
        for size, scheme in ((DESKTOP, 'light'), (DESKTOP, 'dark'), (PHONE, 'light')):
            self.browser.show(size, scheme)
            self.open('#playground')
            # All of it alive, and the playground with faults.
            self.browser.run("void (async () => { for (const article of document.querySelectorAll('article')) {"
                             "article.scrollIntoView(); await new Promise(requestAnimationFrame); } window.walked = true; })()")
            self.browser.until('window.walked')
            self.browser.until("document.querySelectorAll('.live .inputs').length === document.querySelectorAll('article').length")
            self.near('#rotations')
            self.near('#playground')
            self.write('Graph', '{', '#playground')
            self.browser.until('document.querySelector("#playground .faults").textContent !== ""')
            self.browser.execute_script(axe)
            found = self.browser.execute_async_script("""const done = arguments[arguments.length - 1];
                axe.run(document, { runOnly: ['wcag2a', 'wcag2aa', 'wcag21a', 'wcag21aa', 'wcag22aa', 'best-practice'] })
                  .then(({ violations, passes }) => done([passes.length, violations.map(({ id, nodes }) =>
                    [id, nodes.length, ...nodes.slice(0, 3).map(({ html, failureSummary }) => html.slice(0, 160) + failureSummary)])]));""")
            self.assertGreater(found[0], 20)
            self.maxDiff = None
            self.assertEqual(found[1], [], f'{size} {scheme}')


def renew(nodus):
    """Asks the portable command, which is what the page is held to."""
    page = browser.Browser()
    try:
        page.open()
        page.until("performance.getEntriesByName('computes').length > 0")
        types = page.run(TYPES)
    finally:
        page.quit()
    with concurrent.futures.ThreadPoolExecutor(2) as pool, tempfile.TemporaryDirectory() as folder:
        sums = list(pool.map(lambda type: told_by_command(nodus, type), types))
        picture = pathlib.Path(folder, 'clouds.png')
        subprocess.run([nodus, 'eval', SOURCE / 'examples/clouds.json', '--image', picture, '--size', '900x420'], check=True)
        lines = [f"{type['name']} {sum}\n" for type, sum in zip(types, sums)] + [f'clouds.json {pixels_of(picture.read_bytes())}\n']
    KEPT.write_text(f'# what a portable nodus call answers to {CALLS} inputs each, and the pixels of an example\n' + ''.join(lines))


if '--renew' in sys.argv:
    renew(pathlib.Path(sys.argv[-1]).resolve())
elif 'id="kernels"' not in (FOLDER / 'index.html').read_text():
    print('the page does not compute: the preset wasm has not been built', file=sys.stderr)
    sys.exit(77)
elif 'Audit' in sys.argv and not AXE.exists():
    print('axe-core is not there: npm ci could not get it', file=sys.stderr)
    sys.exit(77)
else:
    unittest.main(verbosity=0)
