// WebAssembly files: from a URL or from bytes, and the texts in their memory.

export class NodusFault extends Error {
    constructor(lines) {
        super(lines.join("\n"));
        this.name = "NodusFault";
        this.lines = lines;
    }
}

// Of a file by its URL; bytes are what they are.
export async function bytesOf(source) {
    if (source instanceof URL && source.protocol === "file:") {
        const { readFile } = await import("node:fs/promises");
        return readFile(source);
    }
    if (!(source instanceof URL) && typeof source !== "string") return source;
    const response = await fetch(source);
    if (!response.ok) throw new Error(`${source}: ${response.status} ${response.statusText}`);
    return response.arrayBuffer();
}

export async function instantiate(source, imports) {
    const made = await WebAssembly.instantiate(await bytesOf(source), {
        env: { emscripten_notify_memory_growth() {} },
        wasi_snapshot_preview1: new Proxy({}, { get: () => () => 52 }),  // there is no such thing here
        ...imports });
    const instance = made.instance ?? made;
    instance.exports._initialize();
    return instance.exports;
}

// Texts in the memory of an instance, which may move whenever something is allocated.
export class Texts {
    constructor(exports) {
        this.exports = exports;
    }
    // As malloc gave it, with a NUL behind it.
    make(text) {
        const bytes = new TextEncoder().encode(text);
        const at = this.exports.malloc(bytes.length + 1);
        const memory = new Uint8Array(this.exports.memory.buffer);
        memory.set(bytes, at);
        memory[at + bytes.length] = 0;
        return { at, size: bytes.length };
    }
    read(at, size) {
        return new TextDecoder().decode(new Uint8Array(this.exports.memory.buffer, at, size));
    }
    readToNul(at) {
        const memory = new Uint8Array(this.exports.memory.buffer);
        return this.read(at, memory.indexOf(0, at) - at);
    }
    // Calls work with the addresses of texts that are gone afterwards.
    with(texts, work) {
        const made = texts.map((text) => this.make(text).at);
        try {
            return work(...made);
        } finally {
            made.forEach((at) => this.exports.free(at));
        }
    }
}
