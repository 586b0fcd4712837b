// Graphs given to a worker, one at a time; a new one ends what still runs.
import { carried } from './carried.js';

export class Evaluation {
  constructor(catalogue) {
    this.catalogue = catalogue;
  }
  async #start() {
    this.graphs ??= await carried('graphs');
    const source = new Blob([document.getElementById('worker').textContent], { type: 'text/javascript' });
    const url = URL.createObjectURL(source),
      worker = new Worker(url);
    worker.postMessage({ files: { graphs: this.graphs, catalogue: this.catalogue } });
    return { worker, url };
  }
  // work is "evaluate" or "paint". Gives { done } or { faults }; nothing when it was stopped.
  async run(work, graph, options) {
    this.stop();
    const ticket = (this.ticket = {});
    this.ready ??= this.#start();
    const { worker } = await this.ready;
    if (this.ticket !== ticket) return null;
    return new Promise((resolve, reject) => {
      this.resolve = resolve;
      worker.onmessage = ({ data }) => {
        this.resolve = null;
        resolve(data);
      };
      worker.onerror = (event) => reject(new Error(event.message));
      worker.postMessage({ work, graph, options });
    });
  }
  stop() {
    this.ticket = null;
    if (!this.resolve) return;
    this.resolve(null);
    this.resolve = null;
    this.ready.then(({ worker, url }) => {
      worker.terminate();
      URL.revokeObjectURL(url);
    });
    this.ready = null;
  }
}
