// A rotation to look at: the axes of the world, and the turned ones. Dragging or the arrow keys turn the view.
import { arrowKeys, draggable, draw } from './elements.js';

const size = 160,
  reach = 56;

// A vector turned by a quaternion (x, y, z, w) of any length.
export function turned([x, y, z, w], [a, b, c]) {
  const square = x * x + y * y + z * z + w * w;
  const [tx, ty, tz] = [2 * (y * c - z * b), 2 * (z * a - x * c), 2 * (x * b - y * a)].map((lane) => lane / square);
  return [a + w * tx + y * tz - z * ty, b + w * ty + z * tx - x * tz, c + w * tz + x * ty - y * tx];
}

export class RotationView {
  constructor(label) {
    this.label = label;
    [this.around, this.above] = [0.6, 0.4];
    this.picture = draw('g');
    this.element = draw(
      'svg',
      {
        viewBox: `0 0 ${size} ${size}`,
        role: 'application',
        tabindex: 0,
        class: 'rotation',
        'aria-roledescription': 'view of a rotation',
        onkeydown: arrowKeys((right, up) => this.look(this.around - 0.1 * right, this.above + 0.1 * up)),
      },
      this.picture,
    );
    draggable(this.element, (event) => {
      const { around, above } = this;
      return ({ clientX, clientY }) =>
        this.look(around - (clientX - event.clientX) / 80, above + (clientY - event.clientY) / 80);
    });
    this.show([0, 0, 0, 1]);
  }
  look(around, above) {
    [this.around, this.above] = [around, Math.min(1.5, Math.max(-1.5, above))];
    this.show(this.rotation);
  }
  // On the picture, and how near; y is up.
  seen([x, y, z]) {
    const [cosine, sine] = [Math.cos(this.around), Math.sin(this.around)];
    const [right, front] = [cosine * x - sine * z, sine * x + cosine * z];
    const [c, s] = [Math.cos(this.above), Math.sin(this.above)];
    return { x: size / 2 + reach * right, y: size / 2 - reach * (c * y - s * front), near: s * y + c * front };
  }
  show(rotation) {
    this.rotation = rotation;
    const isRotation = rotation.every(Number.isFinite) && rotation.some((lane) => lane !== 0);
    this.element.setAttribute(
      'aria-label',
      `${this.label}: ${
        isRotation ? rotation.map((lane) => lane.toFixed(3)).join(', ') : 'no rotation'
      }. Arrow keys turn the view`,
    );
    const parts = [];
    const line = (to, className, near) =>
      parts.push({
        near,
        part: draw('line', { x1: size / 2, y1: size / 2, x2: to.x.toFixed(1), y2: to.y.toFixed(1), class: className }),
      });
    [
      [1, 0, 0],
      [0, 1, 0],
      [0, 0, 1],
    ].forEach((axis, i) => {
      const still = this.seen(axis.map((lane) => 1.15 * lane));
      line(still, `still a${i}`, -2);
      if (!isRotation) return;
      const to = turned(rotation, axis),
        tip = this.seen(to),
        text = this.seen(to.map((lane) => 1.22 * lane));
      line(tip, `turned a${i}`, tip.near);
      parts.push({
        near: tip.near,
        part: draw('circle', { cx: tip.x.toFixed(1), cy: tip.y.toFixed(1), r: 3 + tip.near, class: `tip a${i}` }),
      });
      parts.push({
        near: 3,
        part: draw('text', { x: text.x.toFixed(1), y: (text.y + 4).toFixed(1), 'text-anchor': 'middle' }, 'xyz'[i]),
      });
    });
    const axis = rotation.slice(0, 3),
      length = Math.hypot(...axis);
    if (isRotation && length > 1e-6) {
      const ends = [1.3, -1.3].map((end) => this.seen(axis.map((lane) => (end * lane) / length)));
      parts.push({
        near: -1,
        part: draw('line', { x1: ends[0].x, y1: ends[0].y, x2: ends[1].x, y2: ends[1].y, class: 'about' }),
      });
    }
    parts.sort((a, b) => a.near - b.near);
    this.picture.replaceChildren(
      draw('circle', { class: 'ball', cx: size / 2, cy: size / 2, r: reach }),
      ...parts.map(({ part }) => part),
    );
  }
}
