// The pictures of a node, alive: curves, histograms and fields that follow its inputs and can be dragged.
import { draggable, draw, make, beforePaint } from './elements.js';
import { Network } from './network.js';
import { Axis, Plot, field, frame, pathOf } from './plot.js';
import { flat, valueTypes } from '../../../web/values.js';

const SAMPLES = 480,
  HALVINGS = 14;

const first = (value) => Number(typeof value === 'object' ? flat(value)[0] : value);

class Curves {
  constructor(figure, plot, panel) {
    Object.assign(this, { plot, panel, unit: plot.unit === 'pi' ? Math.PI : 1 });
    const { family, nodus } = panel;
    const nodes = { ...plot.nodes };
    plot.curves.forEach((curve, i) => {
      nodes['curve' + i] = curve;
    });
    [this.kept, this.own] = [new Network(nodus, nodes, family.name), new Network(nodus, nodes, family.name)];
    // Curves that differ in constants alone become one with inputs of its own.
    this.mine = plot.curves
      .map((_, i) => i)
      .filter(
        (i) =>
          plot.curves.findIndex(
            ({ type, output }) => type === plot.curves[i].type && output === plot.curves[i].output,
          ) === i && this.leadsToFamily('curve' + i),
      );
    this.view = new Plot(new Axis(plot.x, plot.unit === 'pi'), new Axis(plot.y), plot.caption, () => this.lines());
    this.handles = this.mine.map(() => draw('circle', { class: 'handle', r: 6 }));
    for (const handle of this.handles) draggable(handle, () => (event) => this.drag(event));
    this.view.over.append(...this.handles);
    figure.querySelector('svg').replaceWith(this.view.element);
    figure.querySelector('figcaption').append(this.view.controls);
    this.view.show();
    this.update = beforePaint(() => this.view.show());
    panel.listeners.push(() => this.update());
  }
  leadsToFamily(name) {
    const { family, feeds } = this.own.steps.get(name);
    return (
      family === this.panel.family.name ||
      feeds.some(([, value]) => [value].flat().some((part) => part.from && this.leadsToFamily(part.from.split('.')[0])))
    );
  }
  at(network, i, x) {
    network.evaluate({ x });
    return first(network.output(`curve${i}.${this.plot.curves[i].output ?? 'result'}`));
  }
  line(network, i) {
    const { x, y } = this.view,
      points = [];
    const pointAt = (fraction) => [
      fraction,
      y.fraction(this.at(network, i, (x.from + fraction * (x.to - x.from)) * this.unit)),
    ];
    for (let k = 0; k <= SAMPLES; ++k) {
      const point = pointAt(k / SAMPLES),
        before = points.at(-1);
      // To where it ends, within a sample.
      if (before && Number.isFinite(before[1]) !== Number.isFinite(point[1])) {
        let [a, b] = [before, point];
        for (let round = 0; round < HALVINGS; ++round) {
          const middle = pointAt((a[0] + b[0]) / 2);
          if (Number.isFinite(middle[1]) === Number.isFinite(a[1])) a = middle;
          else b = middle;
        }
        points.push(a, b);
      }
      points.push(point);
    }
    return pathOf(points, this.plot.steps ? 0.1 : Infinity);
  }
  lines() {
    const { panel, plot, view } = this,
      { column } = this.own;
    const lines = plot.curves.map((_, i) => draw('path', { class: 'c' + (i + 1), d: this.line(this.kept, i) }));
    this.own.take((port) => panel.value(port));
    if (panel.isTouched) lines.push(...this.mine.map((i) => draw('path', { class: 'own', d: this.line(this.own, i) })));
    const x = column === undefined ? NaN : first(panel.value(column));
    this.mine.forEach((i, k) => {
      const across = view.x.fraction(x / this.unit),
        up = view.y.fraction(this.at(this.own, i, x));
      const isSeen = across >= 0 && across <= 1 && up >= 0 && up <= 1;
      this.handles[k].setAttribute('visibility', isSeen ? 'visible' : 'hidden');
      if (!isSeen) return;
      this.handles[k].setAttribute('cx', (frame.left + field.width * across).toFixed(1));
      this.handles[k].setAttribute('cy', (frame.top + field.height * (1 - up)).toFixed(1));
    });
    return lines;
  }
  drag({ clientX }) {
    const { element, x } = this.view,
      { column } = this.own;
    const at = (clientX - element.getBoundingClientRect().left) * this.view.scale() - frame.left;
    const value = (x.from + Math.min(1, Math.max(0, at / field.width)) * (x.to - x.from)) * this.unit;
    const old = this.panel.value(column),
      rounded = Number(value.toPrecision(4));
    this.panel.change(column, typeof old === 'object' ? [rounded, ...old.slice(1)] : rounded);
  }
}

// How draws spread over frames, each of them a draw with the panel's inputs.
class Histogram {
  constructor(figure, plot, panel) {
    Object.assign(this, { plot, panel });
    const [curve] = plot.curves;
    this.node = panel.nodus.prepare(curve.type);
    for (const [port, value] of Object.entries(curve.inputs)) this.node.set(port, value);
    // A picture is of one choice; numbers may be other ones.
    this.ports = this.node.type.inputs.ports.filter(
      ({ type, choices }) => !choices && valueTypes[type].lanes.length === 1,
    );
    this.output = curve.output ?? 'result';
    this.count();
    const most = Math.max(...this.bars(new Axis(plot.x)));
    this.view = new Plot(new Axis(plot.x), new Axis([0, most * 1.1]), plot.caption, (view) => this.drawn(view), '%');
    this.view.show();
    figure.querySelector('svg').replaceWith(this.view.element);
    this.caption = figure.querySelector('figcaption').firstChild;
    figure.querySelector('figcaption').append(this.view.controls);
    const update = beforePaint(() => this.follow());
    panel.listeners.push(() => panel.isTouched && update());
  }
  follow() {
    const { panel, node, ports } = this;
    const given = ports.map(({ name }) => [name, first(panel.value(name))]).filter(([, value]) => !Number.isNaN(value));
    for (const [port, value] of given) node.set(port, value);
    this.caption.data = `${this.plot.caption}; here ${given.map(([port, value]) => `${port} ${Number(value.toPrecision(6))}`).join(', ')} `;
    this.count();
    this.view.show();
  }
  count() {
    const { node, plot } = this;
    this.draws = new Float32Array(plot.frames);
    for (let i = 0; i < plot.frames; ++i) {
      node.run(i);
      this.draws[i] = node.get(this.output);
    }
  }
  bars(axis) {
    const { bins } = this.plot,
      shares = new Array(bins).fill(0),
      scale = bins / (axis.to - axis.from);
    for (const draw of this.draws) {
      const bin = Math.floor((draw - axis.from) * scale);
      if (bin >= 0 && bin < bins) shares[bin] += 100 / this.draws.length;
    }
    return shares;
  }
  drawn(view) {
    const shares = this.bars(view.x),
      width = field.width / shares.length;
    const foot = field.height * (1 - view.y.fraction(0));
    return [
      draw('path', {
        class: 'bars',
        d: shares
          .map((share, i) =>
            share === 0
              ? ''
              : `M${(width * i).toFixed(2)} ${foot}V${(field.height * (1 - view.y.fraction(share))).toFixed(2)}h${(width - 1).toFixed(2)}V${foot}z`,
          )
          .join(''),
      }),
    ];
  }
}

// A field in shades: it can be dragged, and a cross marks where the node's position is.
class Shades {
  constructor(figure, plot, panel) {
    Object.assign(this, { plot, panel, offset: [0, 0] });
    this.network = new Network(panel.nodus, plot.nodes, panel.family.name);
    const image = figure.querySelector('img');
    const [width, height] = plot.size;
    this.canvas = make('canvas', { width, height, role: 'img', 'aria-label': plot.caption });
    this.cross = make('span', { class: 'cross', 'aria-hidden': 'true' });
    const place = make('div', { class: 'shades' }, this.canvas, this.cross);
    image.replaceWith(place);
    this.context = this.canvas.getContext('2d');
    const { feeds } = [...this.network.steps.values()].find(({ family }) => family === panel.family.name);
    [[this.port, this.source]] = feeds;
    this.context.drawImage(image, 0, 0);
    const paint = beforePaint(() => this.paint());
    draggable(place, (event) => {
      const scale = width / place.getBoundingClientRect().width,
        [x, y] = this.offset;
      const from = [event.clientX, event.clientY];
      let hasMoved = false;
      return [
        ({ clientX, clientY }) => {
          hasMoved ||= Math.hypot(clientX - from[0], clientY - from[1]) > 3;
          if (!hasMoved) return;
          this.offset = [x - (clientX - from[0]) * scale, y - (clientY - from[1]) * scale];
          paint();
        },
        ({ clientX, clientY }) => {
          const box = place.getBoundingClientRect();
          if (!hasMoved) this.choose((clientX - box.left) * scale, (clientY - box.top) * scale);
        },
      ];
    });
    panel.listeners.push(() => this.mark());
    this.mark();
  }
  // What the node is given for a pixel.
  positionAt(x, y) {
    const source = { pixel: { x: x + this.offset[0], y: y + this.offset[1] } };
    this.network.evaluate(source);
    return flat(this.network.read(this.source, source));
  }
  choose(x, y) {
    this.panel.change(
      this.port.name,
      this.positionAt(x, y).map((lane) => Number(lane.toPrecision(4))),
    );
  }
  mark() {
    const [width, height] = this.plot.size,
      wanted = flat(this.panel.value(this.port.name));
    const [start, end] = [this.positionAt(0, 0), this.positionAt(width, height)];
    // The lanes that change over the picture say where.
    const moving = start
      .map((_, i) => i)
      .filter((i) => start[i] !== end[i])
      .slice(0, 2);
    const [x, y] = moving.map((i) => (wanted[i] - start[i]) / (end[i] - start[i]));
    this.cross.hidden = !(x >= 0 && x <= 1 && y >= 0 && y <= 1);
    Object.assign(this.cross.style, { left: 100 * x + '%', top: 100 * y + '%' });
  }
  paint() {
    const { plot, network, context } = this,
      [width, height] = plot.size,
      { black, white } = plot;
    const picture = context.createImageData(width, height);
    for (let y = 0, at = 0; y < height; ++y) {
      for (let x = 0; x < width; ++x, at += 4) {
        network.evaluate({ pixel: { x: x + 0.5 + this.offset[0], y: y + 0.5 + this.offset[1] } });
        const level = (255 * (network.output(plot.output) - black)) / (white - black);
        picture.data.fill(level > 0 ? Math.min(255, Math.floor(level + 0.5)) : 0, at, at + 3);
        picture.data[at + 3] = 255;
      }
    }
    context.putImageData(picture, 0, 0);
    this.mark();
  }
}

export function bringFiguresAlive(article, panel) {
  const kinds = { curves: Curves, histogram: Histogram, image: Shades };
  const figures = article.querySelectorAll('figure');
  (panel.family.reference.plots ?? []).forEach((plot, i) => new kinds[plot.kind ?? 'curves'](figures[i], plot, panel));
}
