// Brings the page to life, once it has been painted: kernels, fields, pictures, and the two workbenches.
import { carried, carriedJson } from './carried.js';
import { make } from './elements.js';
import { bringFiguresAlive } from './figures.js';
import { Panel } from './panel.js';
import { Playground } from './playground.js';
import { Rotations } from './rotations.js';
import { load } from '../../../web/nodusmath.js';

async function copyFrom(text, button) {
  await copy(text);
  const { textContent } = button;
  button.textContent = 'Copied';
  setTimeout(() => {
    button.textContent = textContent === 'Copied' ? 'Copy' : textContent;
  }, 1500);
}

// Works once for each element, when it comes near to what is seen.
function whenNear(elements, work) {
  const watcher = new IntersectionObserver(
    (entries) => {
      for (const { target, isIntersecting } of entries) {
        if (!isIntersecting) continue;
        watcher.unobserve(target);
        work(target);
      }
    },
    { rootMargin: '600px 0px' },
  );
  for (const element of elements) watcher.observe(element);
}

async function start() {
  const log = [];
  const [kernels, catalogue] = await Promise.all([carried('kernels'), carriedJson('catalogue')]);
  const nodus = await load({ kernels, catalogue, log: (text) => log.push(text) });
  const families = new Map(catalogue.families.map((family) => [family.name, family]));
  // A curve without a type is of the example's.
  for (const {
    reference: { example, plots = [] },
  } of families.values())
    for (const curve of plots.flatMap(({ curves = [] }) => curves)) curve.type ??= example?.type;
  whenNear(document.querySelectorAll('article'), (article) => {
    const panel = new Panel(article.querySelector('.live'), families.get(article.id), nodus, log, copyFrom);
    bringFiguresAlive(article, panel);
  });

  const place = (id) => document.querySelector(`#${id} .workbench`);
  if (Rotations.suit(nodus))
    whenNear([document.getElementById('rotations')], () => new Rotations(place('rotations'), nodus));
  else document.querySelectorAll('.of-rotations').forEach((part) => part.remove());
  let playground = null;
  const played = () => (playground ??= new Playground(place('playground'), catalogue, copyFrom));
  whenNear([document.getElementById('playground')], async () => {
    await played().ready;
    // One over frames: curves say more at first sight than tables do.
    const names = [...played().examples.keys()],
      overFrames = names.filter((name) => played().examples.get(name).frames !== '');
    if (!played().isTaken) played().example(overFrames.at(-1) ?? names[0]);
  });
  for (const snippet of document.querySelectorAll('.snippet')) {
    const name = snippet.closest('article').id,
      graph = snippet.querySelector('.graph');
    snippet.querySelector('.copy').before(
      make(
        'button',
        {
          type: 'button',
          class: 'copy-call',
          'aria-label': `Try the graph of ${name}`,
          onclick: () => {
            const frames = Number(graph.dataset.frames);
            played().open(graph.textContent, { frames: frames > 1 ? `0:${frames - 1}` : '' });
            if (location.hash === '#playground') follow();
            else location.hash = 'playground';
          },
        },
        'Try',
      ),
    );
  }
  const followLink = () => {
    const letters = new URLSearchParams(location.hash.slice(1)).get('graph');
    if (letters === null) return;
    played().openLink(letters);
    document.getElementById('playground').scrollIntoView();
  };
  window.addEventListener('hashchange', followLink);
  followLink();
  // For the console: nodus.call('Add_Float3', { a: [1, 2, 3], b: [10, 20, 30] }).
  window.nodus = nodus;
  performance.mark('computes');
}

// Not before the first picture; engines that lack something keep the page that is for reading.
if (document.documentElement.classList.contains('computes')) {
  requestAnimationFrame(() =>
    setTimeout(() =>
      start().catch((fault) => {
        document.documentElement.classList.remove('computes');
        console.warn(`no live nodes: ${fault.message}`);
      }),
    ),
  );
}
