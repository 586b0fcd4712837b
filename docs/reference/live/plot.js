// Drawing curves on axes that can be moved: in the units and with the marks of the page's other pictures.
import { arrowKeys, draggable, draw, make } from './elements.js';
import { niceNumber } from './numbers.js';

export const frame = { width: 420, height: 230, left: 46, right: 12, top: 10, bottom: 28 };
export const field = { width: frame.width - frame.left - frame.right, height: frame.height - frame.top - frame.bottom };

export class Axis {
  constructor([from, to], isPi = false) {
    Object.assign(this, { from, to, isPi });
  }
  fraction(value) {
    return (value - this.from) / (this.to - this.from);
  }
  // At most so many, and one more at an end.
  marks(most) {
    const step = niceNumber((this.to - this.from) / most),
      marks = [];
    for (let i = Math.ceil(this.from / step - 1e-9); i * step <= this.to + step * 1e-9; ++i) marks.push(i * step);
    return marks;
  }
  label(value) {
    if (Math.abs(value) < (this.to - this.from) * 1e-9) return '0';
    const size = Number(Math.abs(value).toPrecision(6));
    return (value < 0 ? '\u2212' : '') + (this.isPi ? (size === 1 ? '' : size) + '\u03c0' : size);
  }
  moved(fraction) {
    return new Axis(
      [this.from + fraction * (this.to - this.from), this.to + fraction * (this.to - this.from)],
      this.isPi,
    );
  }
  scaled(factor) {
    const centre = (this.from + this.to) / 2,
      half = ((this.to - this.from) / 2) * factor;
    return new Axis([centre - half, centre + half], this.isPi);
  }
}

// Points of a line in the field, broken where there is no number.
export function pathOf(points, breaksAt = Infinity) {
  let path = '',
    last = null;
  for (const [x, y] of points) {
    if (!Number.isFinite(y)) {
      last = null;
      continue;
    }
    const height = field.height * (1 - Math.min(9, Math.max(-9, y)));
    path +=
      (last === null || Math.abs(y - last) > breaksAt ? 'M' : 'L') +
      (field.width * x).toFixed(1) +
      ' ' +
      height.toFixed(1);
    last = y;
  }
  return path;
}

// A picture with axes. redraw(axes) gives what lies in the field, as elements; it is asked when the axes move.
export class Plot {
  constructor(x, y, label, redraw, unit = '') {
    Object.assign(this, { redraw, unit, start: [x, y], x, y });
    this.grid = draw('path', { class: 'grid' });
    this.axes = draw('path', { class: 'axis' });
    this.labels = draw('g');
    this.field = draw('svg', { x: frame.left, y: frame.top, width: field.width, height: field.height });
    this.over = draw('g');
    this.element = draw(
      'svg',
      { viewBox: `0 0 ${frame.width} ${frame.height}`, role: 'img', class: 'live-plot', 'aria-label': label },
      this.grid,
      this.axes,
      this.labels,
      this.field,
      this.over,
    );
    draggable(this.element, (event) => {
      if (event.target.closest('.handle')) return null;
      const { x, y } = this,
        scale = this.scale();
      return ({ clientX, clientY }) =>
        this.move(
          x.moved(((event.clientX - clientX) * scale) / field.width),
          y.moved(((clientY - event.clientY) * scale) / field.height),
        );
    });
    const button = (text, label, work) => make('button', { type: 'button', 'aria-label': label, onclick: work }, text);
    this.controls = make(
      'span',
      {
        class: 'zoom',
        role: 'group',
        'aria-label': 'View of the picture',
        onkeydown: arrowKeys((right, up) => this.move(this.x.moved(0.1 * right), this.y.moved(0.1 * up))),
      },
      button('+', 'Nearer; arrow keys move', () => this.move(this.x.scaled(0.5), this.y.scaled(0.5))),
      button('\u2212', 'Farther; arrow keys move', () => this.move(this.x.scaled(2), this.y.scaled(2))),
      button('\u21ba', 'As it was', () => this.move(...this.start)),
    );
  }
  // Units of the drawing for a pixel of the screen.
  scale() {
    return frame.width / this.element.getBoundingClientRect().width;
  }
  move(x, y) {
    [this.x, this.y] = [x, y];
    this.show();
  }
  show() {
    const { x, y } = this,
      { left, top, height } = frame;
    const across = (at) => left + field.width * x.fraction(at),
      up = (at) => top + field.height * (1 - y.fraction(at));
    const vertical = (at) => `M${across(at).toFixed(1)} ${top}v${field.height}`;
    const level = (at) => `M${left} ${up(at).toFixed(1)}h${field.width}`;
    this.grid.setAttribute('d', x.marks(8).map(vertical).join('') + y.marks(5).map(level).join(''));
    this.axes.setAttribute(
      'd',
      (x.from < 0 && x.to > 0 ? vertical(0) : '') + (y.from <= 0 && y.to > 0 ? level(0) : ''),
    );
    this.labels.replaceChildren(
      ...x.marks(8).map((at) => draw('text', { x: across(at), y: height - 9, 'text-anchor': 'middle' }, x.label(at))),
      ...y
        .marks(5)
        .map((at) => draw('text', { x: left - 7, y: up(at) + 4, 'text-anchor': 'end' }, y.label(at) + this.unit)),
    );
    this.field.replaceChildren(...this.redraw(this));
  }
}
