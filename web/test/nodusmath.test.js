// The package as its users meet it, held against what holds the command: layouts, digests, the sums of
// the examples and the sessions.
import assert from "node:assert";
import { createHash } from "node:crypto";
import { readFileSync } from "node:fs";
import { test } from "node:test";
import { inflateSync } from "node:zlib";
import { NodusFault, load } from "../nodusmath.js";

const source = (name) => readFileSync(new URL("held/" + name, import.meta.url), "utf8");
const linesOf = (name) => source(name).split("\n").filter((line) => line !== "");
const messages = [];
const nodus = await load({ log: (text) => messages.push(text) });

// What nodus would be asked on a command line, asked here; null when it is none of ours.
async function evaluated(words, readText) {
    const [command, graph, ...rest] = words;
    if (command !== "eval" || graph === undefined || graph === "-") return null;
    const options = { name: graph, format: "csv" };
    for (let i = 0; i < rest.length; i += 2) {
        const [option, value] = rest.slice(i, i + 2);
        if (option === "--frames" && value !== undefined) options.frames = value;
        else if (option === "--data" && value?.endsWith(".csv"))
            Object.assign(options, { tableName: value, table: readText(value) });
        else if (option === "--out" && /^\w+\.(csv|jsonl)$/.test(value))
            options.format = value.split(".")[1];
        else if (!/^--log \w+\.log$/.test(`${option} ${value}`)) return null;
    }
    if ("tableName" in options && options.table === undefined) return null;
    const text = readText(graph);
    return text === undefined ? null : nodus.evaluate(text, options);
}

test("blocks are packed as the contract has them", () => {
    const block = ({ ports, extent }) =>
        [extent + ":", ...ports.map(({ offset, type, name }) => `${offset} ${type} ${name}`)].join(" ");
    const told = nodus.nodeTypes.map((type) =>
        `${type.name}, in ${block(type.inputs)}` +
        (type.workspace.ports.length > 0 ? `, workspace ${block(type.workspace)}` : "") +
        `, out ${block(type.outputs)}`);
    const kept = linesOf("contract/contract.txt").filter((line) => /^\w+, in /.test(line));
    assert.deepStrictEqual(told.join("\n"), kept.join("\n"));
});

test("kernels are called with values of every type", () => {
    const rows = [
        ["Add_Float3", { a: [1, 2, 3], b: [10, 20, 30] }, { result: [11, 22, 33] }],
        ["NodusAdd_UInt8_Solve", { a: 200, b: 100 }, { result: 44 }],
        ["And", { a: true, b: true }, { result: true }],
        ["Sqrt_Double", { value: 2 }, { result: Math.SQRT2 }],
        ["Slerp_Quat", { b: [0, 0, 1, 0], t: 0 }, { result: [0, 0, 0, 1] }],
        ["LogValueString", { value: "Grad \u00b0", prefix: "v " }, { result: "Grad \u00b0" }],
        ["InRange_Float2", { value: [1, 1] }, { result: true }],
        ["LogValueTQS", {}, { result: { t: [0, 0, 0, 0], q: [0, 0, 0, 1], s: [1, 1, 1, 1] } }],
    ];
    for (const [name, inputs, expected] of rows)
        assert.deepStrictEqual(nodus.call(name, inputs), expected, name);
    assert.strictEqual(messages[0], "v Grad \u00b0");
    const random = (frame) => nodus.call("RandomGenerator_Float", { seed: 7, range: 1 }, { frame }).result;
    assert.notStrictEqual(random(1), random(2));
});

test("prepared nodes keep inputs, and no results of other ones", () => {
    const node = nodus.prepare("FastBiasAndGain_Float");
    node.set("amount", 0.5);
    node.set("value", 0.25);
    node.run();
    assert.deepStrictEqual([node.outputs(), node.bits("bias")], [{ bias: 0.25, gain: 0.25 }, ["3e800000"]]);
    node.set("amount", 2);
    node.run();
    assert.deepStrictEqual(node.outputs(), { bias: 0, gain: 0 });
});

test("what is no value of a port is told", () => {
    const rows = [
        ["Add_Float3", { a: 1 }, "Add_Float3, input 'a': wants an array of 3"],
        ["Add_Float3", { a: [1, 2] }, "Add_Float3, input 'a': wants 3 lanes, not 2"],
        ["Add_UInt8", { a: 256 }, "Add_UInt8, input 'a': wants a whole number from 0 to 255"],
        ["And", { a: 2 }, "And, input 'a': wants true or false"],
        ["And", { c: true }, "And has no input 'c'; it has a, b"],
        ["LogValueString", { value: 1 }, "LogValueString, input 'value': wants a text"],
        ["Sum", {}, "unknown node type 'Sum'"],
    ];
    for (const [name, inputs, line] of rows)
        assert.throws(() => nodus.call(name, inputs), new NodusFault([line]));
    assert.throws(() => nodus.prepare("SinCos_Float").get("result"),
        new NodusFault(["SinCos_Float has no output 'result'; it has sine, cosine"]));
});

test("examples give the bytes of the command", async () => {
    let held = 0;
    for (const line of linesOf("digests/examples.txt")) {
        const [sum, file, , ...words] = line.split(" ");
        const results = file === "standard_error" ? null : await evaluated(words, source);
        if (results === null || (words.includes("--out") && file === "standard_output")) continue;
        const bytes = file.endsWith(".log") ? results.log : results.text;
        assert.strictEqual(createHash("sha256").update(bytes).digest("hex").slice(0, 16), sum, line);
        ++held;
    }
    assert.ok(held >= 7, String(held));
});

test("pictures have the pixels of the command", async () => {
    const png = Buffer.from(await nodus.paint(source("examples/clouds.json"), { width: 900, height: 420 }));
    const parts = [];
    for (let at = 8; at < png.length; at += png.readUInt32BE(at) + 12)
        if (png.toString("latin1", at + 4, at + 8) === "IDAT") parts.push(png.subarray(at + 8, at + 8 + png.readUInt32BE(at)));
    const sum = createHash("sha256").update(inflateSync(Buffer.concat(parts))).digest("hex").slice(0, 16);
    assert.ok(linesOf("reference/calls.txt").includes(`clouds.json ${sum}`), sum);
    await assert.rejects(nodus.paint({ nodes: { a: { type: "And" } }, outputs: ["a"] }), new NodusFault(
        ["graph:7: an image wants one output that is a Float, a Color or a Float4; the graph has a.result (Bool)"]));
});

// Lines of sessions: those before a row "| A | B" stand for it, with A for %1 and B for %2.
function sessionLines(text) {
    const lines = [];
    let block = [], hasRows = false;
    const end = () => {
        if (!hasRows) lines.push(...block);
        [block, hasRows] = [[], false];
    };
    for (const line of text.split("\n")) {
        if (line.startsWith("| ")) {
            const cells = line.slice(1).replaceAll("\\n", "\n").split(" | ").map((cell) => cell.trim());
            lines.push(...block.map((text) =>
                cells.reduce((made, cell, i) => made.replaceAll(`%${i + 1}`, () => cell), text)));
            hasRows = true;
        } else if (!line.startsWith("#")) {
            if (hasRows || line === "") end();
            block.push(line);
        }
    }
    end();
    return lines;
}

// The sessions of the command: files, what is asked, and what is answered.
test("graphs have the results and the faults of the command", async () => {
    let held = 0;
    for (const session of ["eval", "graph_faults"]) {
        let files = {}, asked = null;
        const hold = async () => {
            if (asked === null) return;
            const { words, out, error, at } = asked;
            asked = null;
            const read = (name) => name.startsWith("{examples}/")
                ? source(name.replace("{examples}", "examples")) : files[name];
            let told = "", wrong = "";
            try {
                const results = await evaluated(words, read);
                if (results === null) return;
                if (!words.includes("--out")) told = results.text;
                if (!words.includes("--log")) wrong = results.log;
            } catch (fault) {
                if (!(fault instanceof NodusFault)) throw fault;
                wrong = fault.lines.map((line) => `nodus: ${line}\n`).join("");
            }
            const pattern = (lines) => new RegExp("^" + lines.map((line) =>
                line.replace(/[\\^$*+?()[\]{}|]/g, "\\$&").replaceAll("...", "\u0000").replaceAll(".", "\\.")
                    .replaceAll("\u0000", "[^]*") + "\n").join("") + "$");
            assert.match(told, pattern(out), at);
            assert.match(wrong, pattern(error), at);
            ++held;
        };
        const lines = sessionLines(source(`sessions/${session}.txt`));
        for (let i = 0; i < lines.length; ++i) {
            const [mark, rest] = [lines[i][0], lines[i].slice(2)];
            if ("=@$?".includes(mark ?? "#")) await hold();
            if (mark === "=") files = {};
            if (mark === "$")
                asked = { words: rest.match(/'[^']*'|\S+/g).map((word) => word.replace(/^'(.*)'$/, "$1")),
                    out: [], error: [], at: `${session}: ${rest}` };
            if (mark === ">") asked?.out.push(rest);
            if (mark === "!") asked?.error.push(rest);
            if (mark === "@") {
                const name = rest.split(" ")[0];
                files[name] = rest.slice(name.length + 1) + "\n";
                if (rest === name) files[name] = "";
                while (rest === name && /^ /.test(lines[i + 1])) files[name] += lines[++i].trim() + "\n";
            }
        }
        await hold();
    }
    assert.ok(held >= 80, String(held));
});

test("digests of many seeds are those of other processors", async () => {
    for (const line of linesOf("digests/seeds.txt")) {
        const [seed, , sum] = line.split(" ");
        const report = await nodus.digest(Number(seed));
        assert.ok(report.endsWith(sum + "\n"), report);
    }
});
