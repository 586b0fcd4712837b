// What the page brings along: files, compressed and written in letters.
import { inflated } from './link.js';

export const carried = (id) => inflated(document.getElementById(id).textContent.trim());

export const carriedJson = async (id) => JSON.parse(new TextDecoder().decode(await carried(id)));
