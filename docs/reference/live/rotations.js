// One rotation in every form: quaternion, axis and angle, angles in every order. Editing one changes the others.
import { make, beforePaint } from './elements.js';
import { Field } from './fields.js';
import { formatNumber } from './numbers.js';
import { RotationView } from './rotation_view.js';
import { flat } from '../../../web/values.js';

const wanted = [
  'EulerToQuaternion',
  'QuaternionToEuler',
  'AxisAndAngleToQuaternion_Float3',
  'QuaternionToAxisAndAngle_Float3',
  'QuaternionToMatrix',
];

export class Rotations {
  // Whether the module has the nodes that it takes.
  static suit(nodus) {
    const names = nodus.nodeTypes.map(({ name }) => name);
    return wanted.every((name) => names.includes(name));
  }
  constructor(place, nodus) {
    this.nodes = Object.fromEntries(wanted.map((name) => [name, nodus.prepare(name)]));
    this.view = new RotationView('The rotation');
    const field = (port, initial, from) =>
      new Field(port, initial, () => {
        this.from = from;
        this.rotation = this.read(from);
        this.update();
      });
    this.update = beforePaint(() => this.show());
    this.quaternion = field({ name: 'quaternion', type: 'Quaternion' }, [0, 0, 0, 1], 'quaternion');
    this.axis = field({ name: 'axis', type: 'Float3' }, [0, 1, 0], 'axis');
    this.angle = field({ name: 'angle', type: 'Float', unit: 'rad' }, 0, 'axis');
    const { choices } = this.nodes.EulerToQuaternion.type.inputs.ports.find(({ name }) => name === 'order');
    // Odd orders are those below them once more.
    this.orders = choices
      .filter(({ value }) => value % 2 === 0)
      .map(({ value, name }) => ({
        order: value,
        field: field({ name, type: 'Float3', unit: 'rad' }, [0, 0, 0], value),
      }));
    this.matrix = make('output', { class: 'grid' });
    const identity = make(
      'button',
      { type: 'button', class: 'toggle', onclick: () => this.take([0, 0, 0, 1]) },
      'Identity',
    );
    place.replaceChildren(
      make('div', { class: 'bar' }, make('h3', {}, 'One rotation, every form'), identity),
      make(
        'p',
        {},
        'Change any of them: the kernels give the others. Angles are radians; a full turn is \u00b12\u03c0.',
      ),
      make(
        'div',
        { class: 'forms' },
        this.view.element,
        make(
          'div',
          { class: 'inputs' },
          this.quaternion.element,
          this.axis.element,
          this.angle.element,
          make('div', { class: 'field' }, make('span', { class: 'name' }, 'matrix'), this.matrix),
        ),
      ),
      make('div', { class: 'orders' }, ...this.orders.map(({ field: { element } }) => element)),
    );
    const first = [0.2, 0.4, 0.1, 0.889],
      length = Math.hypot(...first);
    this.take(first.map((lane) => lane / length));
  }
  run(name, inputs) {
    const node = this.nodes[name];
    for (const [port, value] of Object.entries(inputs)) node.set(port, value);
    node.run(0);
    return node.outputs();
  }
  read(from) {
    if (from === 'quaternion') return this.quaternion.value;
    if (from === 'axis')
      return this.run('AxisAndAngleToQuaternion_Float3', { axis: this.axis.value, angle: this.angle.value }).result;
    const { field } = this.orders.find(({ order }) => order === from);
    return this.run('EulerToQuaternion', { angles: [...field.value, 0], order: from }).result;
  }
  take(rotation) {
    this.from = null;
    this.rotation = rotation;
    this.show();
  }
  // All but where a person is writing.
  show() {
    const { rotation, from } = this;
    if (from !== 'quaternion') this.quaternion.set(rotation);
    if (from !== 'axis') {
      const { axis, angle } = this.run('QuaternionToAxisAndAngle_Float3', { rotation });
      this.axis.set(axis);
      this.angle.set(angle);
    }
    for (const { order, field } of this.orders)
      if (from !== order) field.set(this.run('QuaternionToEuler', { rotation, order }).result.slice(0, 3));
    const { result } = this.run('QuaternionToMatrix', { value: rotation });
    this.matrix.replaceChildren(
      ...flat(result).map((lane) => make('span', { class: 'lane' }, formatNumber(Number(lane.toFixed(5)), 'Double'))),
    );
    this.view.show(rotation);
  }
}
