// Search as you type, links into the page, the copy buttons and the theme. Without it the page is for reading.
'use strict';
const byId = (id) => document.getElementById(id);
const search = byId('search'), type = byId('type'), results = byId('results'), found = byId('found'), missing = byId('missing');

const nodes = [...document.querySelectorAll('article')].map((article) => {
  const split = article.id.replace(/([a-z\d])([A-Z])/g, '$1 $2').toLowerCase();
  const prose = [...article.querySelectorAll('.doc, h4 + p, td:first-child code')].map((part) => part.textContent);
  return {
    article, home: article.parentNode, name: article.id.toLowerCase(), split: split.split(' '),
    words: article.dataset.words.split(' '), types: article.dataset.types.split(' '),
    kernels: [...article.querySelectorAll('.kernels code')].map((code) => code.textContent.toLowerCase()),
    prose: prose.join(' ').toLowerCase().split(/[^a-z\d]+/),
  };
});

// How far a node is from a term of the search: 0 is its very name, Infinity is nothing in common.
function distance(node, term) {
  const begins = (word) => word.startsWith(term);
  if (node.name === term) return 0;
  if (begins(node.name)) return 1;
  if (node.split.some(begins)) return 2;
  // The words of a node stand with the fittest in front.
  if (node.words.includes(term)) return 3 + node.words.indexOf(term) / 20;
  if (node.words.some(begins)) return 4 + node.words.findIndex(begins) / 20;
  if (term.length > 2 && node.name.includes(term)) return 5;
  if (node.prose.some(begins) || node.kernels.some((kernel) => begins(kernel) || begins(kernel.slice(5)))) return 8;
  return Infinity;
}

function matches() {
  const terms = search.value.toLowerCase().split(/\s+/).filter(Boolean);
  return nodes
    .filter((node) => type.value === '' || node.types.includes(type.value))
    .map((node) => ({ node, far: terms.reduce((sum, term) => sum + distance(node, term), 0) }))
    .filter(({ far }) => far < Infinity)
    .sort((a, b) => a.far - b.far)
    .map(({ node }) => node);
}

// Shows what matches, best first, or everything in its groups when nothing is looked for.
function show() {
  const isSearch = search.value.trim() !== '' || type.value !== '';
  const hits = isSearch ? matches() : [];
  for (const node of nodes) node.home.append(node.article);
  found.replaceChildren(...hits.map(({ article }) => article));
  results.replaceChildren(...hits.map(({ article }) => {
    const item = document.createElement('li');
    const link = item.appendChild(document.createElement('a'));
    link.href = '#' + article.id;
    link.textContent = article.id;
    return item;
  }));
  results.hidden = found.hidden = !isSearch;
  missing.hidden = true;
  for (const part of [byId('index'), byId('intro'), ...document.querySelectorAll('section')]) part.hidden = isSearch;
  byId('count').textContent = !isSearch ? '' : hits.length === 0 ? 'No node matches. Esc clears the search.'
    : `${hits.length} of ${nodes.length} nodes`;
}

function searched() {
  const query = new URLSearchParams();
  if (search.value.trim() !== '') query.set('q', search.value.trim());
  if (type.value !== '') query.set('type', type.value);
  history.replaceState(null, '', '#' + query);
  show();
  window.scrollTo(0, 0);
}

function clear() {
  search.value = type.value = '';
  show();
}

// A text as it stands in a link; one that was cut or never encoded is taken as it is.
function decoded(text) {
  try {
    return decodeURIComponent(text);
  } catch {
    return text;
  }
}

// How many letters must be put in, taken out, exchanged, or swapped with the next, to make one word of the other.
function edits(a, b) {
  const count = [];
  for (let i = 0; i <= a.length; ++i) {
    count.push([]);
    for (let j = 0; j <= b.length; ++j) {
      const isSwapped = i > 1 && j > 1 && a[i - 1] === b[j - 2] && a[i - 2] === b[j - 1];
      count[i].push(i === 0 || j === 0 ? i + j : Math.min(
        count[i - 1][j] + 1, count[i][j - 1] + 1, count[i - 1][j - 1] + (a[i - 1] === b[j - 1] ? 0 : 1),
        isSwapped ? count[i - 2][j - 2] + 1 : Infinity));
    }
  }
  return count[a.length][b.length];
}

// Says that a link leads nowhere, and where it may have wanted to lead: the nearest of the places, with how far each is.
function report(what, text, places) {
  const near = places.filter(({ far }) => far < Infinity).sort((a, b) => a.far - b.far).slice(0, 3);
  const links = near.map(({ href, name }) => Object.assign(document.createElement('a'), { href, textContent: name }));
  missing.replaceChildren(`There is no ${what} “${text.slice(0, 60)}${text.length > 60 ? '…' : ''}”`,
    ...links.flatMap((link, i) => [i === 0 ? '; did you mean ' : i < links.length - 1 ? ', ' : ' or ', link]),
    links.length > 0 ? '?' : '.');
  missing.hidden = false;
  missing.focus({ preventScroll: true });
  window.scrollTo(0, 0);
}

// How unlike a name a word is; half of it may be wrong, or its end may be missing.
function unlike(word, name) {
  if (name.startsWith(word)) return 1;
  const count = edits(word.slice(0, 60), name);
  return count <= Math.max(2, word.length / 2) ? count : Infinity;
}

// "#Slerp", "#add_float3" and "#NodusAdd_Float3_Solve" lead to a node, "#q=noise&type=Float2" to a search.
function follow() {
  const hash = location.hash.slice(1), query = new URLSearchParams(hash);
  clear();
  if (query.has('graph')) return;  // the playground's
  if (query.has('q') || query.has('type')) {
    const wanted = query.get('type') ?? '', types = [...type.options].map((option) => option.value);
    search.value = query.get('q') ?? '';
    type.value = types.includes(wanted) ? wanted : '';
    show();
    window.scrollTo(0, 0);
    if (type.value !== wanted) {
      report('type', wanted, types.slice(1).map((name) =>
        ({ name, href: '#type=' + name, far: unlike(wanted.toLowerCase(), name.toLowerCase()) })));
    }
    return;
  }
  const text = decoded(hash), wanted = text.toLowerCase();
  const node = nodes.find(({ name, kernels }) =>
    name === wanted || kernels.includes(wanted) || kernels.includes(`nodus${wanted}_solve`));
  const target = node ? node.article : document.querySelector(`:is(main, section)#${CSS.escape(text || 'nodes')}`);
  if (target) {
    if (hash) target.scrollIntoView();
    target.focus({ preventScroll: true });
    if (!hash) window.scrollTo(0, 0);
    return;
  }
  const word = wanted.replace(/^nodus/, '').replace(/_.*/, '');
  report('node', text, nodes.map((near) => ({
    name: near.article.id, href: '#' + near.article.id,
    // What a search finds comes first, then what is written alike.
    far: word === '' ? Infinity : Math.min(distance(near, word), 10 + unlike(word, near.name)),
  })));
}

search.addEventListener('input', searched);
type.addEventListener('change', searched);
search.form.addEventListener('submit', (event) => {
  event.preventDefault();
  const first = results.querySelector('a');
  if (first) first.click();
});
window.addEventListener('hashchange', follow);
// A click on the link to where one already is changes no hash, but should still lead there.
document.addEventListener('click', (event) => {
  const link = event.target.closest('a[href^="#"]');
  if (link && link.getAttribute('href') === (location.hash || '#')) {
    event.preventDefault();
    follow();
  }
});

document.addEventListener('keydown', (event) => {
  if (event.ctrlKey || event.metaKey || event.altKey) return;
  const isTyping = event.target.matches('select') || (event.target === search && search.value !== '');
  if (event.key === '/' && !isTyping) {
    event.preventDefault();
    search.focus();
    search.select();
  } else if (event.key === 'Escape' && !results.hidden) {
    event.preventDefault();
    clear();
    history.replaceState(null, '', '#');
    search.focus();
  } else if (event.key === 'Escape') {
    search.blur();
  } else if (event.key === 'ArrowDown' || event.key === 'ArrowUp') {
    const links = [...document.querySelectorAll(results.hidden ? '#index[open] li li a' : '#results a')];
    const at = links.indexOf(event.target);
    if (at < 0 && event.target !== search) return;
    event.preventDefault();
    (links[at + (event.key === 'ArrowDown' ? 1 : -1)] ?? (at <= 0 && event.key === 'ArrowUp' ? search : event.target)).focus();
  }
});

// Old browsers, and pages that are no secure context, have no clipboard to write to.
async function copy(text) {
  try {
    await navigator.clipboard.writeText(text);
  } catch {
    const area = document.body.appendChild(document.createElement('textarea'));
    area.value = text;
    area.select();
    document.execCommand('copy');
    area.remove();
  }
}
document.addEventListener('click', async (event) => {
  const button = event.target.closest('.copy');
  if (!button) return;
  await copy(button.closest('.snippet').querySelector('.graph').textContent);
  button.textContent = 'Copied';
  setTimeout(() => { button.textContent = 'Copy'; }, 1500);
});

byId('theme').addEventListener('click', () => {
  const root = document.documentElement;
  const isDark = root.dataset.theme ? root.dataset.theme === 'dark' : matchMedia('(prefers-color-scheme: dark)').matches;
  root.dataset.theme = isDark ? 'light' : 'dark';
  try { localStorage.setItem('theme', root.dataset.theme); } catch { /* no storage, no memory */ }
});

// The list shows where one is.
const watcher = new IntersectionObserver((entries) => {
  for (const { target, isIntersecting } of entries) {
    const link = document.querySelector(`#index a[href="#${target.id}"]`);
    if (isIntersecting) link.setAttribute('aria-current', 'location');
    else link.removeAttribute('aria-current');
    if (isIntersecting && matchMedia('(min-width: 56.01rem)').matches) {
      const list = link.closest('nav'), place = link.getBoundingClientRect(), frame = list.getBoundingClientRect();
      if (place.top < frame.top + 40 || place.bottom > frame.bottom - 40) list.scrollTop += place.top - frame.top - frame.height / 3;
    }
  }
}, { rootMargin: '-20% 0px -75% 0px' });
for (const { article } of nodes) watcher.observe(article);

if (location.hash) follow();
