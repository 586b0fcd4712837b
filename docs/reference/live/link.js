// A graph in a link: its text, deflated, in the letters that a fragment may have.

async function through(bytes, stream) {
  const result = new Blob([bytes]).stream().pipeThrough(stream);
  return new Uint8Array(await new Response(result).arrayBuffer());
}

export async function packed(value) {
  const bytes = await through(new TextEncoder().encode(JSON.stringify(value)), new CompressionStream('deflate-raw'));
  const letters = Array.from(bytes, (byte) => String.fromCharCode(byte)).join('');
  return btoa(letters).replaceAll('+', '-').replaceAll('/', '_').replace(/=+$/, '');
}

// Throws when the text is none of ours.
export async function unpacked(text) {
  const letters = atob(text.replaceAll('-', '+').replaceAll('_', '/'));
  const bytes = await through(
    Uint8Array.from(letters, (letter) => letter.charCodeAt(0)),
    new DecompressionStream('deflate-raw'),
  );
  return JSON.parse(new TextDecoder().decode(bytes));
}
