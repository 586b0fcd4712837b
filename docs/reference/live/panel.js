// A node that is alive: a field for each input, and beside them what its kernel gives.
import { make, beforePaint } from './elements.js';
import { Field, colourOf, inParts } from './fields.js';
import { formatNumber } from './numbers.js';
import { RotationView } from './rotation_view.js';
import { flat, shaped, standard, valueTypes } from '../../../web/values.js';

const isValue = (value) => typeof value !== 'object' || Array.isArray(value) || 't' in value;
const isNumbers = (value) => isValue(value) && flat(value).every((lane) => ['number', 'boolean'].includes(typeof lane));

// A value of one type as one of another: lanes that are too many fall away, those that lack repeat.
export function adapted(value, type) {
  if (type === 'String') return String(value);
  const { lanes, whole } = valueTypes[type],
    numbers = flat(value).map(Number);
  const fitting = lanes
    .map((_, i) => numbers[i % numbers.length])
    .map((number) => {
      if (!whole) return number;
      return Number.isFinite(number) ? Math.min(whole[1], Math.max(whole[0], Math.round(number))) : 0;
    });
  return type === 'Bool' ? numbers[0] !== 0 : shaped(fitting, type);
}

// What the page's examples give to the ports of a family, those of the very type first.
function examplesOf(family, nodeType) {
  const { example, graph = { nodes: {} } } = family.reference;
  const nodes = [...(example ? [example] : []), ...Object.values(graph.nodes)].filter(
    ({ type }) => type === family.name || type.startsWith(family.name),
  );
  const fitting = (node) => (node.type === nodeType.name ? 0 : 1);
  return nodes.sort((a, b) => fitting(a) - fitting(b));
}

// A port's first value: an example's, else its default, or what its picture has where there is something to see.
function initialOf(family, nodeType, port, suggested) {
  const isTransform = (value) => typeof value === 'object' && 't' in value;
  for (const { inputs = {}, type } of examplesOf(family, nodeType)) {
    const value = inputs[port.name];
    if (port.type === 'String' && typeof value === 'string') return value;
    if (value === undefined || !isNumbers(value) || isTransform(value) !== (port.type === 'TQS')) continue;
    // A matrix made of another type's lanes would be none.
    if (!port.type.startsWith('Mat') || type === nodeType.name) return adapted(value, port.type);
  }
  if (suggested && port.default === undefined)
    return adapted(Number((suggested[0] + 0.7 * (suggested[1] - suggested[0])).toPrecision(2)), port.type);
  // Two rotations that are alike would leave nothing to see.
  const rotations = nodeType.inputs.ports.filter(({ type }) => type === 'Quaternion');
  return rotations.indexOf(port) > 0
    ? [0, 0, 0.5 ** 0.5, 0.5 ** 0.5].map(Math.fround)
    : adapted(standard(port), port.type);
}

// The input of a family that its first curves are drawn over, and from where to where.
function acrossOf(family) {
  for (const { kind = 'curves', curves, x, unit } of family.reference.plots ?? []) {
    const curve = kind === 'curves' && curves.find(({ type }) => type.startsWith(family.name));
    const [port] = Object.entries((curve || {}).inputs ?? {}).find(([, value]) => value.column) ?? [];
    if (port) return { port, range: x.map((end) => end * (unit === 'pi' ? Math.PI : 1)) };
  }
  return {};
}

// An input as the command takes it.
function argument({ name, type }, value) {
  if (type === 'String') return `'${name}=${value.replaceAll("'", "'\\''")}'`;
  if (type === 'Bool') return `${name}=${value}`;
  const lanes = flat(value).map((lane) =>
    formatNumber(type === 'Double' || valueTypes[type].whole ? lane : Math.fround(lane), type),
  );
  if (type !== 'TQS') return `${name}=${lanes.join()}`;
  const part = (at) =>
    `[${lanes
      .slice(at, at + 4)
      .map((lane) => (/[a-z]$/.test(lane) ? `"${lane}"` : lane))
      .join()}]`;
  return `'${name}={"t":${part(0)},"q":${part(4)},"s":${part(8)}}'`;
}

export class Panel {
  constructor(place, family, nodus, log, copy) {
    Object.assign(this, { place, family, nodus, log });
    this.nodeTypes = nodus.nodeTypes.filter((type) => type.family === family.name);
    this.listeners = [];
    this.nodes = {};
    this.update = beforePaint(() => this.compute());
    this.across = acrossOf(family);
    // The one that the examples are about.
    const names = this.nodeTypes.map(({ name }) => name);
    const first =
      [
        family.reference.example?.type,
        ...Object.values(family.reference.graph?.nodes ?? {}).map(({ type }) => type),
      ].find((name) => names.includes(name)) ?? names[0];
    this.types =
      this.nodeTypes.length > 1 &&
      make(
        'select',
        { 'aria-label': `Type of ${family.name}`, onchange: () => this.choose(this.types.value) },
        ...this.nodeTypes.map(({ name, suffix }) => make('option', { value: name }, suffix)),
      );
    this.showsBits = make(
      'button',
      {
        type: 'button',
        class: 'toggle',
        'aria-pressed': 'false',
        onclick: () => {
          this.showsBits.setAttribute('aria-pressed', String(this.showsBits.getAttribute('aria-pressed') === 'false'));
          this.compute();
        },
      },
      'Bits',
    );
    this.inputs = make('div', { class: 'inputs', role: 'group', 'aria-label': `Inputs of ${family.name}` });
    this.outputs = make('div', { class: 'outputs', role: 'group', 'aria-label': `Outputs of ${family.name}` });
    this.message = make('p', { class: 'message' });
    this.line = make('code');
    this.call = make(
      'div',
      { class: 'call' },
      this.line,
      make(
        'button',
        {
          type: 'button',
          class: 'copy-call',
          onclick: (event) => copy(this.line.textContent, event.target),
          'aria-label': `Copy the call of ${family.name}`,
        },
        'Copy',
      ),
    );
    this.choose(first);
    if (this.types) this.types.value = first;
    place.replaceChildren(
      make(
        'div',
        { class: 'bar' },
        make('h4', {}, 'Try it'),
        make('div', { class: 'tools' }, this.types || null, this.showsBits),
      ),
      make('div', { class: 'sides' }, this.inputs, this.outputs),
      this.call,
    );
  }

  // Values of ports that the types share go along, where they can be the other type's.
  choose(name) {
    const before = Object.fromEntries((this.fields ?? []).map((field) => [field.port.name, field]));
    const isOfItsKind = (type) => ['String', 'TQS', 'Quaternion'].includes(type) || type.startsWith('Mat');
    this.node = this.nodes[name] ??= this.nodus.prepare(name);
    const { type } = this.node,
      frame = this.frame?.value ?? 0;
    this.fields = type.inputs.ports.map((port) => {
      const known = before[port.name],
        suggested = port.name === this.across.port ? this.across.range : null;
      const mayKeep = known && (known.port.type === port.type || ![known.port.type, port.type].some(isOfItsKind));
      const initial = mayKeep ? adapted(known.value, port.type) : initialOf(this.family, type, port, suggested);
      return new Field(port, initial, () => this.touched(), suggested);
    });
    this.frame =
      type.workspace.ports.length > 0
        ? new Field({ name: 'frame', type: 'Int32' }, frame, () => this.touched(), [0, 240])
        : null;
    this.inputs.replaceChildren(...[...this.fields, this.frame].filter(Boolean).map(({ element }) => element));
    this.results = type.outputs.ports.map((port) => {
      const value = make('output', {}),
        part = make('div', { class: 'result-port' }, make('span', { class: 'name' }, port.name), value);
      const swatch =
        port.type === 'Color' && part.appendChild(make('span', { class: 'swatch', 'aria-hidden': 'true' }));
      return { port, value, part, swatch };
    });
    const rotation = type.outputs.ports.find((port) => port.type === 'Quaternion');
    this.view = rotation && new RotationView(`${rotation.name} of ${this.family.name}`);
    this.outputs.replaceChildren(...this.results.map(({ part }) => part), this.view?.element ?? '', this.message);
    this.compute();
  }

  touched() {
    this.isTouched = true;
    this.update();
  }

  value(port) {
    return this.fields.find((field) => field.port.name === port)?.value;
  }

  // As if a person had.
  change(port, value) {
    this.fields.find((field) => field.port.name === port).set(value);
    this.touched();
  }

  compute() {
    const { node } = this;
    this.log.length = 0;
    for (const { port, value } of this.fields) node.set(port.name, value);
    node.run(this.frame?.value ?? 0);
    const isBits = this.showsBits.getAttribute('aria-pressed') === 'true';
    for (const { port, value, swatch } of this.results) {
      const result = node.get(port.name);
      const laneType = valueTypes[port.type].lanes.length > 1 ? 'Float' : port.type;
      const lanes =
        port.type === 'String'
          ? [result]
          : flat(result).map((lane) => (port.type === 'Bool' ? String(lane) : formatNumber(lane, laneType)));
      const bits = isBits ? node.bits(port.name) : [];
      value.className = port.type === 'TQS' ? 'grid parts' : lanes.length > 4 ? 'grid' : '';
      value.replaceChildren(
        ...inParts(
          port.type,
          lanes.map((lane, i) =>
            make(
              'span',
              { class: 'lane' },
              make('span', {}, lane),
              bits[i] && make('span', { class: 'bits' }, bits[i]),
            ),
          ),
        ),
      );
      if (swatch) swatch.style.background = colourOf(flat(result));
      if (port.type === 'Quaternion') this.view?.show(result);
    }
    this.message.textContent = this.log.length > 0 ? 'Logs: ' + this.log.join('\n') : '';
    this.line.textContent =
      `nodus call ${node.type.name} ${this.fields.map(({ port, value }) => argument(port, value)).join(' ')}` +
      (this.frame ? ` --frame ${this.frame.value}` : '');
    for (const listener of this.listeners) listener(this);
  }
}
