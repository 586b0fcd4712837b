// Making elements, without a word of markup in texts that people wrote.

const drawingSpace = document.querySelector('svg').namespaceURI;

function fill(element, attributes, children) {
  for (const [name, value] of Object.entries(attributes)) {
    if (name.startsWith('on')) element.addEventListener(name.slice(2), value);
    else if (value === true) element.setAttribute(name, '');
    else if (value !== false && value !== undefined) element.setAttribute(name, value);
  }
  element.append(...children.flat().filter((child) => child !== null && child !== undefined));
  return element;
}

export const make = (tag, attributes = {}, ...children) => fill(document.createElement(tag), attributes, children);
export const draw = (tag, attributes = {}, ...children) =>
  fill(document.createElementNS(drawingSpace, tag), attributes, children);

let count = 0;
export const newId = (stem) => `${stem}-${++count}`;

// Calls once before the next picture, however often it is asked to.
export function beforePaint(work) {
  let isAsked = false;
  return () => {
    if (isAsked) return;
    isAsked = true;
    requestAnimationFrame(() => {
      isAsked = false;
      work();
    });
  };
}

// Listens to keys: work(right, up) is called with steps of 1.
export const arrowKeys = (work) => (event) => {
  const step = { ArrowLeft: [-1, 0], ArrowRight: [1, 0], ArrowUp: [0, 1], ArrowDown: [0, -1] }[event.key];
  if (!step) return;
  event.preventDefault();
  work(...step);
};

// Follows a pointer from where it goes down: begin(event) says with what while it moves, or with that and with what in the
// end; with nothing when the pointer is not for us.
export function draggable(element, begin) {
  element.addEventListener('pointerdown', (event) => {
    const [move, finish] = event.button === 0 ? [begin(event)].flat() : [];
    if (!move) return;
    event.preventDefault();
    element.setPointerCapture(event.pointerId);
    const end = (last) => {
      element.removeEventListener('pointermove', move);
      for (const name of ['pointerup', 'pointercancel']) element.removeEventListener(name, end);
      if (last.type === 'pointerup') finish?.(last);
    };
    element.addEventListener('pointermove', move);
    for (const name of ['pointerup', 'pointercancel']) element.addEventListener(name, end);
  });
}
