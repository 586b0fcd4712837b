// Fields for the inputs of a node: numbers with sliders, dials for angles, colours, choices, texts.
import { draggable, draw, make, newId } from './elements.js';
import { formatNumber, isReal, niceNumber, parseNumber } from './numbers.js';
import { flat, shaped, valueTypes } from '../../../web/values.js';

const TURN = 2 * Math.PI;
const unitInterval = ['t', 'amount', 'tolerance'];

// Where the slider of a port begins and ends.
function rangeOf(port, numbers, suggested) {
  if (port.unit === 'rad') return [-TURN, TURN];
  if (port.unit === 'deg') return [-360, 360];
  if (port.type === 'UInt8') return [0, 255];
  if (['Color', 'UInt32'].includes(port.type)) return [0, port.type === 'Color' ? 1 : 100];
  if (port.type === 'Quaternion') return [-1, 1];
  if (unitInterval.includes(port.name)) return [0, 1];
  if (suggested) return suggested;
  const reach = Math.max(...numbers.map(Math.abs).filter(Number.isFinite), 0);
  const end = Math.min(niceNumber(Math.max(2 * reach, isReal(port.type) ? 2 : 20)), 1e6);
  return [-end, end];
}

// One number: its text, and a slider where it has a range. told is called when a person changes it.
class Lane {
  constructor(type, label, range, told, texts = {}) {
    this.type = type;
    this.whole = valueTypes[type]?.whole;
    this.told = told;
    this.text = make('input', {
      type: 'text',
      class: 'number',
      inputmode: 'text',
      autocomplete: 'off',
      autocapitalize: 'none',
      spellcheck: 'false',
      'aria-label': label,
      ...texts,
      oninput: () => this.read(),
      onblur: () => this.show(),
    });
    this.slider =
      range &&
      make('input', {
        type: 'range',
        min: range[0],
        max: range[1],
        'aria-label': label + ', slider',
        oninput: () => this.slid(),
        step: this.whole ? 1 : (range[1] - range[0]) / 200,
      });
    this.element = make('div', { class: 'lane' }, this.text, this.slider);
  }
  read() {
    const number = parseNumber(this.text.value, this.type, this.whole);
    this.text.setAttribute('aria-invalid', String(number === null));
    if (number === null) return;
    this.set(number, false);
    this.told();
  }
  slid() {
    // Not the long tail of a sum of steps.
    this.set(Number(Number(this.slider.value).toPrecision(6)));
    this.told();
  }
  set(number, showsText = true) {
    this.number = number;
    if (showsText) this.show();
    if (this.slider) this.slider.value = Number.isNaN(number) ? 0 : number;
  }
  show() {
    this.text.value = formatNumber(
      this.type === 'Double' || !isReal(this.type) ? this.number : Math.fround(this.number),
      this.type,
    );
    this.text.setAttribute('aria-invalid', 'false');
  }
}

// An angle on a disc; keys and readers meet the slider that lies in it.
class Dial extends Lane {
  constructor(type, label, told) {
    super(type, label, [-TURN, TURN], () => {
      this.turn();
      told();
    });
    this.hand = draw('line', { x1: 20, y1: 20, x2: 35, y2: 20, class: 'hand' });
    const disc = draw(
      'svg',
      { viewBox: '0 0 40 40', 'aria-hidden': 'true' },
      draw('circle', { cx: 20, cy: 20, r: 17 }),
      draw('path', { class: 'zero', d: 'M37 20h-4' }),
      this.hand,
    );
    const dial = make('div', { class: 'dial' }, disc, this.slider);
    this.element.replaceChildren(dial, this.text);
    draggable(dial, () => {
      this.slider.focus();
      const box = dial.getBoundingClientRect();
      return (event) => {
        const angle = Math.atan2(box.top + box.height / 2 - event.clientY, event.clientX - box.left - box.width / 2);
        // On from where the hand is, over the full turn.
        const nearest = angle + TURN * Math.round((this.number - angle) / TURN);
        this.set(Number(Math.min(TURN, Math.max(-TURN, Number.isFinite(nearest) ? nearest : angle)).toPrecision(5)));
        told();
      };
    });
  }
  set(number, showsText) {
    super.set(number, showsText);
    this.turn();
  }
  turn() {
    this.hand?.setAttribute(
      'transform',
      `rotate(${Number.isFinite(this.number) ? (-this.number * 360) / TURN : 0} 20 20)`,
    );
  }
}

// The parts of a transform have their letters in front.
export const inParts = (type, elements) =>
  elements.flatMap((element, i) =>
    type === 'TQS' && i % 4 === 0 ? [make('span', { class: 'part' }, 'tqs'[i / 4]), element] : [element],
  );

// A field for one port. value is what a kernel takes; changed is called when a person has changed it.
export class Field {
  constructor(port, initial, changed, suggested) {
    this.port = port;
    this.changed = changed;
    const id = newId('field');
    this.control = this.controlOf(initial, suggested, id);
    this.element = make(
      'div',
      { class: `field ${this.kind}` },
      make(
        this.labelled ? 'label' : 'span',
        this.labelled ? { for: id, class: 'name' } : { class: 'name', id },
        port.name,
      ),
      this.control,
    );
    if (!this.labelled && this.lanes)
      Object.entries({ role: 'group', 'aria-labelledby': id }).forEach(([name, value]) =>
        this.control.setAttribute(name, value),
      );
    this.set(initial);
  }
  get value() {
    if (this.input) return this.port.type === 'Bool' ? this.input.checked : this.input.value;
    if (this.select) return Number(this.select.value);
    return shaped(
      this.lanes.map((lane) => lane.number),
      this.port.type,
    );
  }
  set(value) {
    if (this.input) this.input[this.port.type === 'Bool' ? 'checked' : 'value'] = value;
    else if (this.select) this.select.value = String(value);
    else flat(value).forEach((number, i) => this.lanes[i].set(number));
    this.showColour();
  }
  controlOf(initial, suggested, id) {
    const { port } = this,
      { lanes } = valueTypes[port.type];
    this.labelled = true;
    if (port.type === 'Bool' || port.type === 'String') {
      this.kind = port.type === 'Bool' ? 'flag' : 'words';
      this.input = make('input', {
        id,
        type: port.type === 'Bool' ? 'checkbox' : 'text',
        oninput: this.changed,
        autocomplete: 'off',
      });
      return this.input;
    }
    if (port.choices) {
      this.kind = 'choice';
      this.select = make(
        'select',
        { id, onchange: this.changed },
        ...port.choices.map(({ value, name }) => make('option', { value }, `${value} ${name}`)),
      );
      return this.select;
    }
    const isSingle = lanes.length === 1,
      isAngles = port.unit === 'rad' && !isSingle;
    this.kind = lanes.length > 4 ? 'grid' : isAngles ? 'dials' : isSingle ? 'single' : 'lanes';
    this.labelled = isSingle;
    const range = lanes.length > 4 ? null : rangeOf(port, flat(initial), suggested);
    const told = () => {
      this.showColour();
      this.changed();
    };
    // Angles stand in x, y and z; the fourth lane takes no part.
    this.lanes = lanes.map((lane, i) =>
      isAngles && i < 3
        ? new Dial('Float', `${port.name}, ${lane}`, told)
        : new Lane(
            lanes.length > 1 ? 'Float' : port.type,
            lane ? `${port.name}, ${lane}` : port.name,
            isAngles ? null : range,
            told,
            isSingle ? { id } : { placeholder: lane },
          ),
    );
    const parts = this.lanes.map((lane) => lane.element);
    if (port.type === 'Color') {
      this.colour = make('input', {
        type: 'color',
        'aria-label': `${port.name}, colour`,
        oninput: () => {
          [1, 3, 5].forEach((at, i) =>
            this.lanes[i].set(Math.fround(parseInt(this.colour.value.slice(at, at + 2), 16) / 255)),
          );
          this.changed();
        },
      });
      parts.unshift(this.colour);
    }
    return make(
      'div',
      { class: port.type === 'TQS' ? 'control parts' : 'control', style: `--lanes: ${Math.min(lanes.length, 4)}` },
      ...inParts(port.type, parts),
    );
  }
  showColour() {
    if (this.colour) this.colour.value = colourOf(this.lanes.map((lane) => lane.number));
  }
}

// Numbers from 0 to 1 as a colour of the page; what is beyond is cut.
export const colourOf = (lanes) =>
  '#' +
  lanes
    .slice(0, 3)
    .map((lane) =>
      Math.round(255 * (lane > 0 ? Math.min(lane, 1) : 0))
        .toString(16)
        .padStart(2, '0'),
    )
    .join('');
