// Graph files, read and evaluated as the command nodus does it.
import { instantiate, NodusFault, Texts } from "./wasm.js";

// nodus_graphs.wasm, read when something wants it for the first time.
export class Graphs {
    #source;
    #catalogue;
    #loaded;

    constructor(source, catalogue) {
        this.#source = source;
        this.#catalogue = catalogue;
    }

    async load() {
        await this.#evaluator();
    }

    #evaluator() {
        this.#loaded ??= instantiate(this.#source, {}).then((exports) => {
            const texts = new Texts(exports);
            const put = (name, text) => {
                const bytes = new TextEncoder().encode(text);
                const at = texts.with([name], (name) => exports.nodus_putText(name, bytes.length));
                new Uint8Array(exports.memory.buffer).set(bytes, at);
            };
            const takeBytes = (name) => texts.with([name], (name) => new Uint8Array(
                exports.memory.buffer, exports.nodus_getText(name), exports.nodus_getSize(name)).slice());
            const take = (name) => new TextDecoder().decode(takeBytes(name));
            put(`<module>/${this.#catalogue.module}.json`, JSON.stringify(this.#catalogue));
            return { exports, texts, put, take, takeBytes };
        });
        return this.#loaded;
    }

    // Calls and says what came out, or throws the faults.
    static #finished({ take }, status) {
        if (status === 0) return;
        const lines = take("<faults>").split("\n").filter((line) => line !== "");
        throw status === 2 ? new NodusFault(lines) : new Error(lines.join("\n"));
    }

    static #textOf(graph) {
        return typeof graph === "string" ? graph : JSON.stringify(graph, null, 1);
    }

    async evaluate(graph, { frames = "", table, format = "csv", name = "graph", tableName = "table" } = {}) {
        if (!["csv", "jsonl"].includes(format))
            throw new NodusFault([`results are written as csv or jsonl, not '${format}'`]);
        const evaluator = await this.#evaluator();
        evaluator.put(name, Graphs.#textOf(graph));
        if (table !== undefined) evaluator.put(tableName, table);
        const status = evaluator.texts.with(
            [name, String(frames), table === undefined ? "" : tableName],
            (...texts) => evaluator.exports.nodus_evaluate(...texts, Number(format === "jsonl")));
        Graphs.#finished(evaluator, status);
        return { text: evaluator.take("<results>"), log: evaluator.take("<log>") };
    }

    async paint(graph, { width = 512, height = 512, black = 0, white = 1, frame = 0, name = "graph" } = {}) {
        const evaluator = await this.#evaluator();
        evaluator.put(name, Graphs.#textOf(graph));
        const status = evaluator.texts.with(
            [name], (name) => evaluator.exports.nodus_paint(name, width, height, black, white, frame));
        Graphs.#finished(evaluator, status);
        return evaluator.takeBytes("<results>");
    }

    async digest(seed = 1) {
        const evaluator = await this.#evaluator();
        Graphs.#finished(evaluator, evaluator.exports.nodus_digest(seed));
        return evaluator.take("<results>");
    }
}
