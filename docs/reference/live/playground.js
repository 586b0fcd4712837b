// Graphs to try: their text and their picture, a table, frames, and what comes out.
import { carriedJson } from './carried.js';
import { Editor } from './editor.js';
import { make } from './elements.js';
import { Evaluation } from './evaluation.js';
import { pictureOf } from './graph_picture.js';
import { packed, unpacked } from './link.js';
import { curvesOf, rowsOf, tableOf } from './results.js';

// While a person writes, and until it is worth saying that it takes time.
const PAUSE = 250,
  PATIENCE = 200;
const GRAPH = 'graph.json',
  SIZE = '512x512',
  MAP = '0:1';

// How each example is evaluated, in the words of what comes with them.
function runsOf(files) {
  const found = new Map();
  for (const [, name, words] of (files['README.md'] ?? '').matchAll(/eval \S*?([\w.]+\.json)([^`\n]*)/g)) {
    const option = (pattern) => words.match(pattern)?.[1];
    if (!files[name] || found.has(name)) continue;
    const [width, height] = (option(/--size (\d+x\d+)/) ?? SIZE).split('x').map(Number);
    found.set(name, {
      frames: option(/--frames (\S+)/) ?? '',
      table: option(/--data \S*?([\w.]+\.csv)/),
      width,
      height,
    });
  }
  return found;
}

// Whether the graph has a source of that kind: it is made for pictures, or wants a table.
const reads = (text, kind) => new RegExp(`\\{\\s*"${kind}"\\s*:`).test(text);

export class Playground {
  constructor(place, catalogue, copy) {
    Object.assign(this, { place, copy, evaluation: new Evaluation(catalogue), view: 'curves', name: GRAPH });
    this.editor = new Editor('Graph', () => this.soon());
    const button = (text, work, attributes = {}) =>
      make('button', { type: 'button', onclick: work, ...attributes }, text);
    this.choice = make(
      'select',
      { 'aria-label': 'Example', onchange: () => this.example(this.choice.value) },
      make('option', { value: '' }, 'Choose an example'),
    );
    this.file = make('input', {
      type: 'file',
      accept: '.json,.csv',
      multiple: true,
      hidden: true,
      'aria-label': 'Graph or table',
      onchange: () => this.take([...this.file.files]),
    });
    const option = (id, attributes) =>
      make('input', {
        type: 'text',
        id,
        autocomplete: 'off',
        spellcheck: 'false',
        oninput: () => this.soon(),
        ...attributes,
      });
    this.frames = option('frames', { placeholder: '0:48' });
    this.map = option('map', { value: MAP });
    this.size = option('size', { value: SIZE });
    this.table = make('span', { class: 'chip', hidden: true });
    this.pictureOptions = make(
      'span',
      { class: 'options' },
      make('label', { for: 'size' }, 'Size '),
      this.size,
      make('label', { for: 'map' }, 'Black:white '),
      this.map,
    );
    this.stop = button('Stop', () => this.halt(), { hidden: true });
    this.status = make('p', { class: 'status', role: 'status' });
    this.faults = make('ul', { class: 'faults' });
    this.drawing = make('div', { class: 'drawing', tabindex: 0, role: 'region', 'aria-label': 'Picture of the graph' });
    this.views = make(
      'div',
      { class: 'views', role: 'group', 'aria-label': 'Show results as' },
      ...['curves', 'table'].map((view) =>
        button(view[0].toUpperCase() + view.slice(1), () => this.look(view), { 'data-view': view }),
      ),
    );
    this.results = make('div', { class: 'results' });
    this.log = make('pre', { class: 'log', hidden: true, 'aria-label': 'Log' });
    this.line = make('code');
    place.replaceChildren(
      make(
        'div',
        { class: 'tools' },
        this.choice,
        button('Open\u2026', () => this.file.click()),
        this.file,
        make('span', { class: 'hint' }, 'or drop a graph or a table (CSV) here, or paste'),
      ),
      this.editor.element,
      make('div', { role: 'alert' }, this.faults),
      make(
        'div',
        { class: 'tools' },
        make('label', { for: 'frames' }, 'Frames '),
        this.frames,
        this.pictureOptions,
        this.table,
        this.stop,
        this.status,
      ),
      make(
        'div',
        { class: 'call' },
        this.line,
        make(
          'div',
          { class: 'tools' },
          button('Copy', (event) => this.copy(this.line.textContent, event.target), {
            'aria-label': 'Copy the command',
          }),
          button('Copy link', (event) => this.link(event.target)),
        ),
      ),
      make(
        'div',
        { class: 'tools' },
        this.views,
        make('span', { class: 'space' }),
        button('Save results', () => this.save()),
      ),
      this.results,
      this.log,
      make('h3', {}, 'Its nodes'),
      this.drawing,
    );
    this.drops();
    this.ready = carriedJson('examples').then((files) => {
      this.files = files;
      this.examples = runsOf(files);
      this.choice.append(
        ...[...this.examples.keys()].map((name) => make('option', { value: name }, name.replace('.json', ''))),
      );
    });
  }

  drops() {
    const { place } = this,
      over = (isOver) => place.classList.toggle('over', isOver);
    place.addEventListener('dragover', (event) => {
      event.preventDefault();
      over(true);
    });
    place.addEventListener('dragleave', () => over(false));
    place.addEventListener('drop', (event) => {
      event.preventDefault();
      over(false);
      this.take([...event.dataTransfer.files]);
    });
  }
  async take(files) {
    for (const file of files) {
      if (/\.csv$/i.test(file.name)) this.data = { name: file.name, text: await file.text() };
      else this.show(await file.text(), { name: file.name, keepsTable: true });
    }
    this.changed();
  }
  async example(name) {
    await this.ready;
    if (!this.examples.has(name)) return;
    const { frames, table, width, height } = this.examples.get(name);
    this.data = table ? { name: table, text: this.files[table] } : null;
    this.size.value = `${width}x${height}`;
    this.map.value = MAP;
    this.show(this.files[name], { name, frames, keepsTable: true });
    this.changed();
  }
  // isTaken: there is a graph, or one is on its way.
  show(text, { name = GRAPH, frames = '', keepsTable = false } = {}) {
    this.isTaken = true;
    this.chosen = undefined;
    if (!keepsTable) this.data = null;
    this.name = name;
    this.editor.text = text;
    this.frames.value = frames;
    if ([...this.choice.options].some(({ value }) => value === name)) this.choice.value = name;
    else this.choice.value = '';
  }
  // From a node's example, or from a link.
  open(text, options) {
    this.show(text, options);
    this.changed();
  }
  async openLink(letters) {
    this.isTaken = true;
    try {
      const { graph, frames = '', table, size, map } = await unpacked(letters);
      if (typeof graph !== 'string') throw new Error();
      this.show(graph, { frames: String(frames) });
      if (table) this.data = { name: String(table.name), text: String(table.text) };
      this.size.value = String(size ?? SIZE);
      this.map.value = String(map ?? MAP);
      this.changed();
    } catch {
      this.tell(['this link holds no graph: it was cut, or changed on its way']);
    }
  }

  soon() {
    clearTimeout(this.timer);
    this.timer = setTimeout(() => this.changed(), PAUSE);
  }
  get isPicture() {
    return reads(this.editor.text, 'pixel');
  }
  changed() {
    const { data } = this;
    this.pictureOptions.hidden = !this.isPicture;
    this.table.hidden = !data || this.isPicture;
    if (data) {
      this.table.replaceChildren(
        data.name,
        make(
          'button',
          {
            type: 'button',
            'aria-label': `Remove ${data.name}`,
            onclick: () => {
              this.data = null;
              this.changed();
            },
          },
          '\u00d7',
        ),
      );
    }
    this.line.textContent = this.command();
    this.sketch();
    this.evaluate();
  }
  command() {
    const quoted = (word) => (/^[\w.:/-]+$/.test(word) ? word : `'${word.replaceAll("'", "'\\''")}'`);
    const frames = this.frames.value.trim(),
      words = ['nodus', 'eval', this.name];
    if (this.isPicture) words.push('--image', 'picture.png', '--size', this.size.value.trim());
    if (this.isPicture && this.map.value.trim() !== MAP) words.push('--map', this.map.value.trim());
    if (!this.isPicture && this.data) words.push('--data', this.data.name);
    if (frames !== '') words.push('--frames', frames);
    return words.map(quoted).join(' ');
  }
  sketch() {
    let graph = null;
    try {
      graph = JSON.parse(this.editor.text);
    } catch {
      /* the reader says what is wrong, in its own words */
    }
    if (graph) this.drawing.replaceChildren(pictureOf(graph, (name) => this.editor.goToText(`"${name}"`)));
  }

  async evaluate() {
    this.place.setAttribute('aria-busy', 'true');
    const { name } = this,
      { text } = this.editor;
    if (text.trim() === '') {
      this.evaluation.stop();
      this.tell([]);
      return;
    }
    const slow = setTimeout(() => {
      this.stop.hidden = false;
      this.status.textContent = 'Evaluating\u2026';
    }, PATIENCE);
    try {
      const [work, options] = this.isPicture
        ? ['paint', this.paintOptions(name)]
        : ['evaluate', { frames: this.frames.value.trim(), name, table: this.data?.text, tableName: this.data?.name }];
      const answer = await this.evaluation.run(work, text, options);
      if (!answer) return;
      this.stop.hidden = true;
      this.results.classList.toggle('stale', Boolean(answer.faults));
      if (answer.done) this.came(work, answer.done, answer.time);
      this.tell(answer.faults ?? []);
    } catch (fault) {
      this.tell([fault.message]);
    } finally {
      clearTimeout(slow);
    }
  }
  paintOptions(name) {
    const told = (line) => {
      throw new Error(line);
    };
    const size = this.size.value.match(/^\s*(\d+)x(\d+)\s*$/),
      map = this.map.value.split(':').map(Number);
    const frame = this.frames.value.trim() || '0';
    if (!size || [size[1], size[2]].some((side) => side < 1 || side > 8192))
      told(`--size wants WIDTHxHEIGHT, each from 1 to 8192, not '${this.size.value}'`);
    if (map.length !== 2 || !map.every(Number.isFinite) || map[0] === map[1])
      told(`--map wants MIN:MAX, two different finite numbers, not '${this.map.value}'`);
    if (!/^-?\d+$/.test(frame)) told(`--image wants one frame, not ${frame}`);
    return {
      name,
      width: Number(size[1]),
      height: Number(size[2]),
      black: map[0],
      white: map[1],
      frame: Number(frame),
    };
  }
  halt() {
    this.evaluation.stop();
    this.stop.hidden = true;
    this.place.setAttribute('aria-busy', 'false');
    this.status.textContent = 'Stopped.';
  }
  // Faults stand below the text; those that name a line lead to it.
  tell(lines) {
    this.stop.hidden = true;
    this.place.setAttribute('aria-busy', 'false');
    const own = this.name.replace(/[^\w]/g, '\\$&');
    const at = lines.map((line) => Number(line.match(new RegExp(`^${own}:(\\d+)`))?.[1] ?? 0));
    this.editor.mark(at.filter(Boolean));
    this.faults.replaceChildren(
      ...lines.map((line, i) =>
        make('li', {}, at[i] ? make('button', { type: 'button', onclick: () => this.editor.goTo(at[i]) }, line) : line),
      ),
    );
    if (lines.length > 0) this.status.textContent = '';
  }
  came(work, done, time) {
    this.done = done;
    this.views.hidden = work === 'paint';
    if (work === 'paint') {
      URL.revokeObjectURL(this.image);
      this.image = URL.createObjectURL(new Blob([done], { type: 'image/png' }));
      this.results.replaceChildren(
        make('img', { src: this.image, alt: 'What the graph gives, a value a pixel', class: 'painted' }),
      );
      this.log.hidden = true;
    } else {
      this.rows = rowsOf(done.text);
      this.log.hidden = done.log === '';
      this.log.textContent = done.log.slice(0, 20000);
      this.look(this.rows.length < 3 ? 'table' : this.view, false);
    }
    const count =
      work === 'paint' ? 'The picture' : `${this.rows.length - 1} frame${this.rows.length === 2 ? '' : 's'}`;
    this.status.textContent = `${count} in ${time < 10 ? time.toFixed(1) : Math.round(time)} ms.`;
  }
  look(view, isChosen = true) {
    if (isChosen) this.view = view;
    for (const button of this.views.children) button.setAttribute('aria-pressed', String(button.dataset.view === view));
    if (!this.rows) return;
    this.results.replaceChildren(
      ...(view === 'table'
        ? tableOf(this.rows)
        : curvesOf(this.rows, this.chosen, (names) => {
            this.chosen = names;
            this.look('curves');
            this.results.querySelector('input:focus')?.focus();
          })),
    );
  }
  async link(button) {
    const { data } = this,
      graph = this.editor.text,
      value = { graph };
    if (this.frames.value.trim()) value.frames = this.frames.value.trim();
    if (this.isPicture) Object.assign(value, { size: this.size.value, map: this.map.value });
    else if (data) value.table = data;
    await this.copy(location.href.replace(/#.*/, '') + '#graph=' + (await packed(value)), button);
  }
  save() {
    if (!this.done) return;
    const isPicture = this.done instanceof Uint8Array;
    const url = URL.createObjectURL(new Blob([isPicture ? this.done : this.done.text]));
    make('a', { href: url, download: isPicture ? 'picture.png' : 'results.csv' }).click();
    setTimeout(() => URL.revokeObjectURL(url), 1000);
  }
}
