// Deflated bytes in letters: what the page carries, and a graph in a link, in those that a fragment may have.

async function through(bytes, stream) {
  const result = new Blob([bytes]).stream().pipeThrough(stream);
  return new Uint8Array(await new Response(result).arrayBuffer());
}

// Of bytes in base64.
export function inflated(base64) {
  const bytes = Uint8Array.from(atob(base64), (letter) => letter.charCodeAt(0));
  return through(bytes, new DecompressionStream('deflate-raw'));
}

export async function packed(value) {
  const bytes = await through(new TextEncoder().encode(JSON.stringify(value)), new CompressionStream('deflate-raw'));
  const letters = Array.from(bytes, (byte) => String.fromCharCode(byte)).join('');
  return btoa(letters).replaceAll('+', '-').replaceAll('/', '_').replace(/=+$/, '');
}

// Throws when the text is none of ours.
export async function unpacked(text) {
  const bytes = await inflated(text.replaceAll('-', '+').replaceAll('_', '/'));
  return JSON.parse(new TextDecoder().decode(bytes));
}
