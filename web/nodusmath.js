// nodusmath in JavaScript: the kernels of nodus_kernels.wasm, called by name with plain values, and the
// graph files of nodus_graphs.wasm, which is the reader and the evaluator of the command nodus.
// nodusmath.d.ts says what each of them takes and gives.
import { Graphs } from "./graphs.js";
import { lanesOf, nodeTypesOf, shaped, standard, valueTypes } from "./values.js";
import { bytesOf, instantiate, NodusFault, Texts } from "./wasm.js";
export { Graphs } from "./graphs.js";
export { layout, valueTypes } from "./values.js";
export { NodusFault } from "./wasm.js";

// What a block takes, up to where the next one may start.
const roomOf = ({ extent }) => Math.ceil((extent + 1) / 16) * 16;

// A node with blocks of its own. Values stay as they were set until they are set again.
class Node {
    #exports;
    #texts;
    #kernel;
    #input;
    #workspace;
    #output;

    constructor(exports, texts, type, place) {
        this.#exports = exports;
        this.#texts = texts;
        this.type = type;
        this.#input = place;
        this.#workspace = this.#input + roomOf(type.inputs);
        this.#output = this.#workspace + roomOf(type.workspace);
        new Uint8Array(exports.memory.buffer, place, Node.sizeOf(type)).fill(0);
        const kernel = "Nodus" + type.name;
        const solve = exports[kernel + "_Solve"], init = exports[kernel + "_Init"];
        this.#kernel = type.workspace.ports.length === 0
            ? () => solve(this.#input, this.#output)
            : () => {
                init(this.#input, this.#workspace);
                solve(this.#input, this.#workspace, this.#output);
            };
        for (const [block, ports] of this.#blocks())
            for (const { type: name, offset } of ports) if (name === "String") this.#makeText(block + offset, "");
        for (const port of type.inputs.ports) this.set(port.name, standard(port));
    }

    // What a node of the type takes.
    static sizeOf(type) {
        return roomOf(type.inputs) + roomOf(type.workspace) + roomOf(type.outputs);
    }

    #blocks() {
        return [[this.#input, this.type.inputs.ports], [this.#output, this.type.outputs.ports]];
    }

    // kind: "input" or "output".
    #port(kind, name) {
        const { ports } = this.type[kind + "s"];
        const port = ports.find((known) => known.name === name);
        if (port) return port;
        const names = ports.map((known) => known.name).join(", ");
        throw new NodusFault([`${this.type.name} has no ${kind} '${name}'; it has ${names}`]);
    }

    set(name, value) {
        const port = this.#port("input", name);
        const told = (wrong) => new NodusFault([`${this.type.name}, input '${name}': ${wrong}`]);
        const at = this.#input + port.offset;
        if (port.type === "String") {
            if (typeof value !== "string") throw told("wants a text");
            this.#exports.nodus_dropText(at);
            this.#makeText(at, value);
            return;
        }
        let numbers;
        try {
            numbers = lanesOf(port.type, value);
        } catch (wrong) {
            throw typeof wrong === "string" ? told(wrong) : wrong;
        }
        const view = new DataView(this.#exports.memory.buffer);
        const { size, set } = valueTypes[port.type], each = size / numbers.length;
        numbers.forEach((number, i) => view[set](at + i * each, number, true));
    }

    run(frame = 0) {
        // What a kernel leaves alone is 0, whatever it was asked before.
        if (this.type.mayKeepOutputs)
            new Uint8Array(this.#exports.memory.buffer, this.#output, this.type.outputs.extent).fill(0);
        this.#exports.nodus_setFrame(frame);
        this.#kernel();
    }

    get(name) {
        const port = this.#port("output", name), at = this.#output + port.offset;
        if (port.type === "String")
            return this.#texts.read(this.#exports.nodus_textOf(at), this.#exports.nodus_textSize(at));
        const view = new DataView(this.#exports.memory.buffer);
        const { size, get, lanes } = valueTypes[port.type], each = size / lanes.length;
        const numbers = lanes.map((_, i) => view[get](at + i * each, true));
        return port.type === "Bool" ? numbers[0] !== 0 : shaped(numbers, port.type);
    }

    outputs() {
        return Object.fromEntries(this.type.outputs.ports.map(({ name }) => [name, this.get(name)]));
    }

    bits(name) {
        const { type, offset } = this.#port("output", name);
        if (type === "String") return [];
        const { size, lanes } = valueTypes[type], each = size / lanes.length;
        const bytes = new Uint8Array(this.#exports.memory.buffer, this.#output + offset, size);
        return lanes.map((_, i) => [...bytes.subarray(i * each, (i + 1) * each)].reverse()
            .map((byte) => byte.toString(16).padStart(2, "0")).join(""));
    }

    dropTexts() {
        for (const [block, ports] of this.#blocks())
            for (const { type, offset } of ports) if (type === "String") this.#exports.nodus_dropText(block + offset);
    }

    #makeText(at, text) {
        const { at: characters, size } = this.#texts.make(text);
        this.#exports.nodus_makeText(at, characters, size);
        this.#exports.free(characters);
    }
}

class Nodus {
    #kernels;
    #texts;
    #graphs;
    #byName;

    constructor(kernels, catalogue, graphs, state) {
        this.#kernels = kernels;
        this.#texts = new Texts(kernels);
        this.#graphs = new Graphs(graphs, catalogue);
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

    prepare(name) {
        const type = this.find(name);
        return new Node(this.#kernels, this.#texts, type, this.#kernels.malloc(Node.sizeOf(type)));
    }

    call(name, inputs = {}, { frame = 0 } = {}) {
        // In the place that there is for blocks.
        const node = new Node(this.#kernels, this.#texts, this.find(name), this.#kernels.nodus_blocks());
        try {
            const faults = [];
            for (const [port, value] of Object.entries(inputs)) {
                try {
                    node.set(port, value);
                } catch (fault) {
                    if (!(fault instanceof NodusFault)) throw fault;
                    faults.push(...fault.lines);
                }
            }
            if (faults.length > 0) throw new NodusFault(faults);
            node.run(frame);
            return node.outputs();
        } finally {
            node.dropTexts();
        }
    }

    evaluate(graph, options) {
        return this.#graphs.evaluate(graph, options);
    }

    paint(graph, options) {
        return this.#graphs.paint(graph, options);
    }

    digest(seed) {
        return this.#graphs.digest(seed);
    }
}

export async function load({ base = import.meta.url, kernels, graphs, catalogue,
    log = (text) => console.log(text) } = {}) {
    const file = (name) => new URL(name, base);
    const state = {};
    const [instance, read] = await Promise.all([
        instantiate(kernels ?? file("nodus_kernels.wasm"), { nodus: { log: (at) => log(state.readToNul(at)) } }),
        catalogue ?? bytesOf(file("nodusmath.json")).then((bytes) => JSON.parse(new TextDecoder().decode(bytes))),
    ]);
    return new Nodus(instance, read, graphs ?? file("nodus_graphs.wasm"), state);
}
