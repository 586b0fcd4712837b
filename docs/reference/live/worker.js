// Evaluates graphs beside the page, which goes on meanwhile and may end it.
import { Graphs } from '../../../web/graphs.js';

let graphs;
onmessage = async ({ data }) => {
  const { files, work, graph, options } = data;
  if (files) {
    graphs = new Graphs(files.graphs, files.catalogue);
    return;
  }
  try {
    await graphs.load();
    const start = performance.now(),
      done = await graphs[work](graph, options);
    postMessage({ done, time: performance.now() - start });
  } catch (fault) {
    postMessage({ faults: fault.lines ?? [`the work failed: ${fault.message}`] });
  }
};
