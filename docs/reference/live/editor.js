// The text of a graph with the numbers of its lines, of which some are marked.
import { make } from './elements.js';

export class Editor {
  constructor(label, changed) {
    this.numbers = make('div', { class: 'numbers', 'aria-hidden': 'true' });
    this.area = make('textarea', {
      'aria-label': label,
      spellcheck: 'false',
      autocomplete: 'off',
      autocapitalize: 'none',
      wrap: 'off',
      rows: 14,
      oninput: () => {
        this.number();
        changed();
      },
      onscroll: () => {
        this.numbers.scrollTop = this.area.scrollTop;
      },
    });
    this.element = make('div', { class: 'editor' }, this.numbers, this.area);
    this.marked = [];
  }
  get text() {
    return this.area.value;
  }
  set text(text) {
    this.area.value = text;
    this.area.scrollTop = 0;
    this.number();
  }
  number() {
    const count = this.text.split('\n').length;
    this.numbers.replaceChildren(
      ...Array.from({ length: count }, (_, i) =>
        make('span', { class: this.marked.includes(i + 1) && 'wrong' }, String(i + 1)),
      ),
    );
    this.numbers.scrollTop = this.area.scrollTop;
  }
  mark(lines) {
    this.marked = lines;
    this.number();
  }
  // Goes to a line and selects it, or the first that holds a text.
  goTo(line) {
    const lines = this.text.split('\n');
    const begin = lines.slice(0, line - 1).reduce((sum, each) => sum + each.length + 1, 0);
    this.area.focus();
    this.area.setSelectionRange(begin, begin + (lines[line - 1] ?? '').length);
    this.area.scrollTop = ((line - 4) * this.area.scrollHeight) / Math.max(1, lines.length);
  }
  goToText(text) {
    const at = this.text.split('\n').findIndex((line) => line.includes(text));
    if (at >= 0) this.goTo(at + 1);
  }
}
