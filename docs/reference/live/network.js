// The nodes of a picture, connected: what they give for an x, or for a pixel.
import { adapted } from './panel.js';
import { flat, valueTypes } from '../../../web/values.js';

const isSource = (value) =>
  typeof value === 'object' && !Array.isArray(value) && ['column', 'pixel', 'from'].some((key) => key in value);
const isFed = (value) => isSource(value) || (Array.isArray(value) && value.some(isSource));

export class Network {
  // nodes: { name: { type, inputs } }, each behind those that feed it. column is the family's input that x goes to.
  constructor(nodus, nodes, family) {
    this.steps = new Map();
    this.constants = [];
    for (const [name, { type, inputs = {} }] of Object.entries(nodes)) {
      const node = nodus.prepare(type),
        feeds = [];
      for (const port of node.type.inputs.ports) {
        const value = inputs[port.name],
          isOfFamily = node.type.family === family;
        if (isFed(value)) {
          feeds.push([port, value]);
          if (value.column && isOfFamily) this.column ??= port.name;
        } else {
          if (value !== undefined) node.set(port.name, adapted(value, port.type));
          if (isOfFamily) this.constants.push([node, port]);
        }
      }
      this.steps.set(name, { node, feeds, family: node.type.family });
    }
  }
  // Nodes of the family take the inputs that no other node feeds from here.
  take(valueOf) {
    for (const [node, { name, type }] of this.constants)
      if (valueOf(name) !== undefined) node.set(name, adapted(valueOf(name), type));
  }
  // source: { x } or { pixel: { x, y } }.
  evaluate(source) {
    for (const { node, feeds } of this.steps.values()) {
      for (const [port, value] of feeds) node.set(port.name, this.read(value, source));
      node.run(0);
    }
  }
  read(value, source) {
    if (Array.isArray(value)) return value.map((lane) => (typeof lane === 'object' ? this.read(lane, source) : lane));
    if (value.column) return source.x;
    if (value.pixel) return source.pixel[value.pixel];
    return this.output(value.from);
  }
  // "node", "node.port" or "node.port.lane".
  output(path) {
    const [name, port, lane] = path.split('.'),
      { node } = this.steps.get(name);
    const { name: only, type } =
      node.type.outputs.ports.find((each) => each.name === port) ?? node.type.outputs.ports[0];
    const value = node.get(only);
    return lane ? flat(value)[valueTypes[type].lanes.indexOf(lane)] : value;
  }
}
