// nodusmath in JavaScript: the kernels of nodus_kernels.wasm, called by name with plain values, and the
// graph files of nodus_graphs.wasm, which is the reader and the evaluator of the command nodus.
// nodusmath.d.ts says what each of them takes and gives.

const scalar = (size, get, set, whole) => ({ size, alignment: size, lanes: [""], get, set, whole });
const lanes = (names, alignment) => ({
    size: 4 * names.length, alignment, lanes: names, get: "getFloat32", set: "setFloat32" });
const xyzw = ["x", "y", "z", "w"];
const numbered = (first, names) => names.map((name) => first + name);

// Lanes lie one behind the other; whole: the least and the greatest number of an integer type.
export const valueTypes = {
    Bool: scalar(1, "getUint8", "setUint8"),
    UInt8: scalar(1, "getUint8", "setUint8", [0, 255]),
    Int32: scalar(4, "getInt32", "setInt32", [-(2 ** 31), 2 ** 31 - 1]),
    UInt32: scalar(4, "getUint32", "setUint32", [0, 2 ** 32 - 1]),
    Float: scalar(4, "getFloat32", "setFloat32"),
    Double: scalar(8, "getFloat64", "setFloat64"),
    Float2: lanes(["x", "y"], 4),
    Float3: lanes(["x", "y", "z"], 4),
    Float4: lanes(xyzw, 16),
    Color: lanes(["r", "g", "b", "a"], 4),
    Quaternion: lanes(xyzw, 16),
    Translation: lanes(xyzw, 16),
    Matrix4x4: lanes(["0", "1", "2", "3"].flatMap((row) => numbered("m" + row, ["0", "1", "2", "3"])), 16),
    Mat44Float: lanes(numbered("m", [...Array(16).keys()]), 4),
    TQS: lanes(["t.", "q.", "s."].flatMap((part) => numbered(part, xyzw)), 16),
    String: { size: 16, alignment: 8, lanes: [""] },
};

export class NodusFault extends Error {
    constructor(lines) {
        super(lines.join("\n"));
        this.name = "NodusFault";
        this.lines = lines;
    }
}

// The packing rule: each port at the next multiple of its alignment.
export function layout(ports) {
    let extent = 0;
    const placed = ports.map((port) => {
        const { size, alignment } = valueTypes[port.type];
        const offset = Math.ceil(extent / alignment) * alignment;
        extent = offset + size;
        return { ...port, offset };
    });
    return { ports: placed, extent };
}

// The node types of a family, or its one.
function nodeTypesOf(family) {
    return (family.types ?? [""]).map((suffix) => {
        const own = suffix === "Quat" ? "Quaternion" : suffix;  // what T stands for
        const typeOf = (name) => (name === "T" ? own : name);
        const name = family.name + (suffix && (family.separator ?? "_") + suffix);
        const block = (ports = []) =>
            layout(ports
                .filter((port) => !port.notFor?.includes(suffix))
                .map(({ typeFor, notFor, ...port }) => ({
                    ...port, type: typeOf(typeFor?.[suffix] ?? port.type) })));
        return {
            name, suffix, family: family.name, inputs: block(family.inputs),
            outputs: block(family.outputs), workspace: block(family.workspace) };
    });
}

function neutral(type) {
    if (type === "String") return "";
    const zeros = valueTypes[type].lanes.map(() => 0);
    if (type === "Quaternion") return [0, 0, 0, 1];
    if (type === "Matrix4x4") return zeros.map((_, i) => (i % 5 === 0 ? 1 : 0));
    if (type === "TQS") return { t: [0, 0, 0, 0], q: [0, 0, 0, 1], s: [1, 1, 1, 1] };
    return zeros.length === 1 ? 0 : zeros;
}

// The numbers of a value, a lane each. Throws what is wrong in words.
function lanesOf(type, value) {
    const { lanes, whole } = valueTypes[type];
    let numbers = [value];
    if (type === "TQS") {
        const parts = value ?? {};
        if (Object.keys(parts).sort().join() !== "q,s,t") throw "wants an object with t, q and s";
        numbers = ["t", "q", "s"].flatMap((part) => lanesOf("Float4", parts[part]));
    } else if (lanes.length > 1) {
        if (!Array.isArray(value) && !ArrayBuffer.isView(value)) throw `wants an array of ${lanes.length}`;
        numbers = Array.from(value);
    }
    if (numbers.length !== lanes.length)
        throw `wants ${lanes.length} lanes, not ${numbers.length}`;
    return numbers.map((number) => {
        if (type === "Bool" && typeof number === "boolean") return Number(number);
        if (typeof number !== "number" || type === "Bool" && ![0, 1].includes(number))
            throw type === "Bool" ? "wants true or false" : "wants a number in every lane";
        if (whole && !(Number.isInteger(number) && whole[0] <= number && number <= whole[1]))
            throw `wants a whole number from ${whole[0]} to ${whole[1]}`;
        return number;
    });
}

async function instantiate(source, imports) {
    if (source instanceof URL && source.protocol === "file:") {
        const { readFile } = await import("node:fs/promises");
        source = await readFile(source);
    } else if (source instanceof URL || typeof source === "string") {
        const response = await fetch(source);
        if (!response.ok) throw new Error(`${source}: ${response.status} ${response.statusText}`);
        source = await response.arrayBuffer();
    }
    const made = await WebAssembly.instantiate(source, {
        env: { emscripten_notify_memory_growth() {} },
        wasi_snapshot_preview1: new Proxy({}, { get: () => () => 52 }),  // there is no such thing here
        ...imports });
    const instance = made.instance ?? made;
    instance.exports._initialize();
    return instance.exports;
}

// Texts in the memory of an instance, which may move whenever something is allocated.
class Texts {
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

class Nodus {
    #kernels;
    #texts;
    #graphs;
    #graphsSource;
    #byName;

    constructor(kernels, catalogue, graphsSource, state) {
        this.#kernels = kernels;
        this.#texts = new Texts(kernels);
        this.#graphsSource = graphsSource;
        this.catalogue = catalogue;
        this.nodeTypes = catalogue.families.flatMap(nodeTypesOf);
        this.#byName = new Map(this.nodeTypes.map((type) => [type.name, type]));
        state.readToNul = (at) => this.#texts.readToNul(at);
    }

    // What the kernels compute with, for blocks of one's own: kernels are exported under their names.
    get exports() {
        return this.#kernels;
    }

    find(name) {
        const type = this.#byName.get(name.replace(/^Nodus(.*)_Solve$/, "$1"));
        if (!type) throw new NodusFault([`unknown node type '${name}'`]);
        return type;
    }

    seed(number) {
        this.#kernels.nodus_seed(number);
    }

    call(name, inputs = {}, { frame = 0 } = {}) {
        const type = this.find(name);
        const faults = Object.keys(inputs)
            .filter((port) => !type.inputs.ports.some((known) => known.name === port))
            .map((port) => `${type.name} has no input '${port}'; it has ` +
                type.inputs.ports.map((known) => known.name).join(", "));
        const values = type.inputs.ports.map(
            (port) => inputs[port.name] ?? port.default ?? neutral(port.type));
        const packed = type.inputs.ports.map((port, i) => {
            try {
                if (port.type !== "String") return lanesOf(port.type, values[i]);
                if (typeof values[i] !== "string") throw "wants a text";
            } catch (wrong) {
                if (typeof wrong !== "string") throw wrong;
                faults.push(`${type.name}, input '${port.name}': ${wrong}`);
            }
        });
        if (faults.length > 0) throw new NodusFault(faults);

        // Three blocks in the place that there is for them.
        const step = this.#kernels.nodus_blocksSize() / 4;
        const input = this.#kernels.nodus_blocks(), workspace = input + step, output = workspace + step;
        new Uint8Array(this.#kernels.memory.buffer, input, 4 * step).fill(0);
        const texts = [];
        try {
            type.inputs.ports.forEach((port, i) => {
                if (port.type === "String") texts.push(this.#makeText(input + port.offset, values[i]));
                else this.#write(port, input, packed[i]);
            });
            for (const port of type.outputs.ports)
                if (port.type === "String") texts.push(this.#makeText(output + port.offset, ""));
            this.#kernels.nodus_setFrame(frame);
            const kernel = "Nodus" + type.name;
            if (type.workspace.ports.length > 0) {
                this.#kernels[kernel + "_Init"](input, workspace);
                this.#kernels[kernel + "_Solve"](input, workspace, output);
            } else {
                this.#kernels[kernel + "_Solve"](input, output);
            }
            return Object.fromEntries(
                type.outputs.ports.map((port) => [port.name, this.#read(port, output)]));
        } finally {
            texts.forEach((at) => this.#kernels.nodus_dropText(at));
        }
    }

    #makeText(at, text) {
        const { at: characters, size } = this.#texts.make(text);
        this.#kernels.nodus_makeText(at, characters, size);
        this.#kernels.free(characters);
        return at;
    }

    #write(port, block, numbers) {
        const view = new DataView(this.#kernels.memory.buffer);
        const { size, set } = valueTypes[port.type], each = size / numbers.length;
        numbers.forEach((number, i) => view[set](block + port.offset + i * each, number, true));
    }

    #read(port, block) {
        const at = block + port.offset;
        if (port.type === "String")
            return this.#texts.read(this.#kernels.nodus_textOf(at), this.#kernels.nodus_textSize(at));
        const view = new DataView(this.#kernels.memory.buffer);
        const { size, get, lanes } = valueTypes[port.type], each = size / lanes.length;
        const numbers = lanes.map((_, i) => view[get](at + i * each, true));
        if (port.type === "Bool") return numbers[0] !== 0;
        if (port.type === "TQS")
            return { t: numbers.slice(0, 4), q: numbers.slice(4, 8), s: numbers.slice(8) };
        return lanes.length === 1 ? numbers[0] : numbers;
    }

    // The second file, when something wants it for the first time.
    #evaluator() {
        this.#graphs ??= instantiate(this.#graphsSource, {}).then((exports) => {
            const texts = new Texts(exports);
            const put = (name, text) => {
                const bytes = new TextEncoder().encode(text);
                const at = texts.with([name], (name) => exports.nodus_putText(name, bytes.length));
                new Uint8Array(exports.memory.buffer).set(bytes, at);
            };
            const take = (name) => texts.with([name], (name) =>
                texts.read(exports.nodus_getText(name), exports.nodus_getSize(name)));
            put("<module>/nodusmath.json", JSON.stringify(this.catalogue));
            return { exports, texts, put, take };
        });
        return this.#graphs;
    }

    // Calls and says what came out, or throws the faults.
    static #finished({ take }, status) {
        if (status === 0) return;
        const lines = take("<faults>").split("\n").filter((line) => line !== "");
        throw status === 2 ? new NodusFault(lines) : new Error(lines.join("\n"));
    }

    async evaluate(graph, { frames = "", table, format = "csv", name = "graph", tableName = "table" } = {}) {
        if (!["csv", "jsonl"].includes(format))
            throw new NodusFault([`results are written as csv or jsonl, not '${format}'`]);
        const evaluator = await this.#evaluator();
        evaluator.put(name, typeof graph === "string" ? graph : JSON.stringify(graph, null, 1));
        if (table !== undefined) evaluator.put(tableName, table);
        const status = evaluator.texts.with(
            [name, String(frames), table === undefined ? "" : tableName],
            (...texts) => evaluator.exports.nodus_evaluate(...texts, Number(format === "jsonl")));
        Nodus.#finished(evaluator, status);
        return { text: evaluator.take("<results>"), log: evaluator.take("<log>") };
    }

    async digest(seed = 1) {
        const evaluator = await this.#evaluator();
        Nodus.#finished(evaluator, evaluator.exports.nodus_digest(seed));
        return evaluator.take("<results>");
    }
}

export async function load({ base = import.meta.url, log = (text) => console.log(text) } = {}) {
    const file = (name) => new URL(name, base);
    const state = {};
    const [kernels, catalogue] = await Promise.all([
        instantiate(file("nodus_kernels.wasm"), { nodus: { log: (at) => log(state.readToNul(at)) } }),
        json(file("nodusmath.json")),
    ]);
    return new Nodus(kernels, catalogue, file("nodus_graphs.wasm"), state);
}

async function json(url) {
    if (url.protocol !== "file:") return (await fetch(url)).json();
    const { readFile } = await import("node:fs/promises");
    return JSON.parse(await readFile(url, "utf8"));
}
