// A graph as a picture: sources on the left, each node behind what feeds it, a line for each value that goes on.
import { draw } from './elements.js';

const WIDTH = 164,
  HEIGHT = 34,
  ACROSS = 48,
  DOWN = 14;

// All { from }, { column }, { frame } and { pixel } within a value.
function feedsOf(value) {
  if (typeof value !== 'object' || value === null) return [];
  if (typeof value.from === 'string') return [{ node: value.from.split('.')[0] }];
  for (const kind of ['column', 'frame', 'pixel'])
    if (kind in value) return [{ source: kind === 'frame' ? 'frame' : `${kind} ${value[kind]}` }];
  return Object.values(value).flatMap(feedsOf);
}

// The boxes by name, each with what feeds it; nothing when the text is no graph yet.
function boxesOf(graph) {
  const boxes = new Map();
  for (const [name, node] of Object.entries(graph?.nodes ?? {})) {
    const feeds = feedsOf(node?.inputs).map(({ node, source }) => {
      if (source && !boxes.has('<' + source))
        boxes.set('<' + source, { name: source, type: '', feeds: [], kind: 'source' });
      return node ?? '<' + source;
    });
    boxes.set(name, { name, type: String(node?.type ?? ''), feeds: [...new Set(feeds)], kind: 'node' });
  }
  for (const output of Array.isArray(graph?.outputs) ? graph.outputs : []) {
    if (typeof output === 'string')
      boxes.set('>' + output, { name: output, type: '', feeds: [output.split('.')[0]], kind: 'result' });
  }
  return boxes;
}

// How far from the left; circles, which are faults, are cut.
function placeInColumns(boxes) {
  const columnOf = (box, above = new Set()) => {
    if (box.column !== undefined || above.has(box)) return box.column ?? 0;
    above.add(box);
    const feeding = box.feeds.map((name) => boxes.get(name)).filter(Boolean);
    box.column = Math.max(-1, ...feeding.map((each) => columnOf(each, above))) + 1;
    above.delete(box);
    return box.column;
  };
  const columns = [];
  for (const box of boxes.values()) (columns[columnOf(box)] ??= []).push(box);
  // Near to what feeds them, and then to what they feed, so that lines cross less.
  const order = (box) => box.row;
  const settle = (column, near) => {
    const middle = new Map(
      column.map((box) => {
        const others = near(box).filter(Boolean).map(order);
        return [box, others.length > 0 ? others.reduce((a, b) => a + b) / others.length : box.row];
      }),
    );
    column.sort((a, b) => middle.get(a) - middle.get(b));
  };
  const number = (column) =>
    column.forEach((box, i) => {
      box.row = i - column.length / 2;
    });
  columns.forEach(number);
  const fed = new Map();
  for (const box of boxes.values()) for (const name of box.feeds) fed.set(name, [...(fed.get(name) ?? []), box]);
  const keys = new Map([...boxes].map(([key, box]) => [box, key]));
  for (let round = 0; round < 4; ++round) {
    for (const column of columns) {
      settle(column, (box) => box.feeds.map((name) => boxes.get(name)));
      number(column);
    }
    for (const column of [...columns].reverse()) {
      settle(column, (box) => fed.get(keys.get(box)) ?? []);
      number(column);
    }
  }
  return columns;
}

const cut = (text, count) => (text.length > count ? text.slice(0, count - 1) + '\u2026' : text);

// choose(name) is called for a node that is pressed.
export function pictureOf(graph, choose) {
  const boxes = boxesOf(graph),
    columns = placeInColumns(boxes);
  const rows = Math.max(1, ...columns.map((column) => column.length));
  const width = Math.max(1, columns.length) * (WIDTH + ACROSS) - ACROSS + 4,
    height = rows * (HEIGHT + DOWN) - DOWN + 4;
  for (const box of boxes.values()) {
    box.x = 2 + box.column * (WIDTH + ACROSS);
    box.y = 2 + (box.row + rows / 2) * (HEIGHT + DOWN);
  }
  const lines = [...boxes.values()].flatMap((box) =>
    box.feeds
      .map((name) => boxes.get(name))
      .filter(Boolean)
      .map((from) => {
        const [x, y, tx, ty] = [from.x + WIDTH, from.y + HEIGHT / 2, box.x, box.y + HEIGHT / 2],
          bend = Math.max(30, (tx - x) / 2);
        return draw('path', { class: 'wire', d: `M${x} ${y}C${x + bend} ${y} ${tx - bend} ${ty} ${tx} ${ty}` });
      }),
  );
  const shapes = [...boxes.values()].map((box) =>
    draw(
      'g',
      {
        class: box.kind,
        transform: `translate(${box.x} ${box.y})`,
        onclick: () => box.kind === 'node' && choose(box.name),
      },
      draw('title', {}, box.type ? `${box.name}: ${box.type}` : box.name),
      draw('rect', { width: WIDTH, height: HEIGHT, rx: box.kind === 'node' ? 6 : HEIGHT / 2 }),
      draw(
        'text',
        { x: WIDTH / 2, y: box.type ? 14 : 21, 'text-anchor': 'middle', class: 'called' },
        cut(box.name, 21),
      ),
      draw('text', { x: WIDTH / 2, y: 27, 'text-anchor': 'middle', class: 'of' }, cut(box.type, 25)),
    ),
  );
  const told = [...boxes.values()]
    .filter(({ kind }) => kind === 'node')
    .map(({ name, type }) => `${name} (${type})`)
    .join(', ');
  return draw(
    'svg',
    { viewBox: `0 0 ${width} ${height}`, width, height, role: 'img', 'aria-label': `Nodes: ${told || 'none yet'}` },
    ...lines,
    ...shapes,
  );
}
