// What came out of a graph: a table, and curves over frames.
import { draw, make } from './elements.js';
import { Axis, Plot, pathOf } from './plot.js';

const ROWS = 200,
  CURVES = 12,
  POINTS = 4000;

// Rows of cells; texts may be in quotation marks, with those within doubled.
export function rowsOf(csv) {
  const rows = [[]],
    cell = /(?:"((?:[^"]|"")*)"|([^,\n]*))(,|\r?\n|$)/y;
  while (cell.lastIndex < csv.length) {
    const [, quoted, plain, end] = cell.exec(csv);
    rows.at(-1).push(quoted !== undefined ? quoted.replaceAll('""', '"') : plain);
    if (end.includes('\n') && cell.lastIndex < csv.length) rows.push([]);
  }
  return rows;
}

export function tableOf([names, ...rows]) {
  const line = (tag, cells) =>
    make('tr', {}, ...cells.map((cell) => make(tag, tag === 'th' ? { scope: 'col' } : {}, cell)));
  const more =
    rows.length > ROWS &&
    make('p', { class: 'more' }, `The first ${ROWS} of ${rows.length} rows; the file has them all.`);
  return [
    make(
      'div',
      { class: 'wide table', tabindex: 0, role: 'region', 'aria-label': 'Results as a table' },
      make(
        'table',
        {},
        make('thead', {}, line('th', names)),
        make('tbody', {}, ...rows.slice(0, ROWS).map((row) => line('td', row))),
      ),
    ),
    more || '',
  ];
}

const cellNumber = (cell) => ({ true: 1, false: 0, inf: Infinity, '-inf': -Infinity, '': NaN })[cell] ?? Number(cell);

// Each column over the first, which has the frames. chosen: the columns that are drawn.
export function curvesOf([names, ...all], chosen, choose) {
  const step = Math.ceil(all.length / POINTS),
    rows = all.filter((_, i) => i % step === 0);
  const xs = rows.map(([frame]) => Number(frame));
  const columns = names
    .map((name, i) => ({ name, values: rows.map((row) => cellNumber(row[i])) }))
    .slice(1)
    .filter(({ values }) => values.some(Number.isFinite));
  chosen ??= columns.slice(0, 6).map(({ name }) => name);
  const drawn = columns.filter(({ name }) => chosen.includes(name)).slice(0, CURVES);
  const numbers = drawn.flatMap(({ values }) => values).filter(Number.isFinite);
  let [low, high] = numbers.reduce(([a, b], value) => [Math.min(a, value), Math.max(b, value)], [Infinity, -Infinity]);
  if (!(low < high)) [low, high] = [Number.isFinite(low) ? low - 1 : 0, Number.isFinite(low) ? low + 1 : 1];
  const margin = (high - low) * 0.06,
    last = Math.max(xs.at(-1), xs[0] + 1);
  const plot = new Plot(
    new Axis([xs[0], last]),
    new Axis([low - margin, high + margin]),
    `Curves of ${drawn.map(({ name }) => name).join(', ')} over frames`,
    ({ x, y }) =>
      drawn.flatMap(({ values }, i) => {
        const points = values.map((value, k) => [x.fraction(xs[k]), y.fraction(value)]);
        return [draw('path', { class: 'c' + ((i % 5) + 1), d: pathOf(points) })];
      }),
  );
  plot.show();
  const legend = make(
    'ul',
    { class: 'legend' },
    ...columns.map(({ name }) => {
      const place = drawn.findIndex((column) => column.name === name);
      const box = make('input', {
        type: 'checkbox',
        onchange: () => choose(box.checked ? [...chosen, name] : chosen.filter((each) => each !== name)),
      });
      box.checked = place >= 0;
      return make(
        'li',
        {},
        make(
          'label',
          {},
          box,
          draw(
            'svg',
            { viewBox: '0 0 26 8', 'aria-hidden': 'true' },
            place >= 0 ? draw('path', { class: 'c' + ((place % 5) + 1), d: 'M0 4H26' }) : '',
          ),
          name,
        ),
      );
    }),
  );
  return [
    make(
      'figure',
      {},
      plot.element,
      make('figcaption', {}, step > 1 ? `Over frames, one of ${step} ` : 'Over frames ', plot.controls),
    ),
    legend,
  ];
}
