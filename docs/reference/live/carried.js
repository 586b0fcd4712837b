// What the page brings along: files, compressed and written in letters.

export function carries(id) {
  return document.getElementById(id) !== null;
}

export async function carried(id) {
  const letters = atob(document.getElementById(id).textContent.trim());
  const packed = Uint8Array.from(letters, (letter) => letter.charCodeAt(0));
  const stream = new Blob([packed]).stream().pipeThrough(new DecompressionStream('deflate-raw'));
  return new Uint8Array(await new Response(stream).arrayBuffer());
}

export const carriedJson = async (id) => JSON.parse(new TextDecoder().decode(await carried(id)));
