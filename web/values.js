// The types of values, how ports are packed into blocks, and what the ports of a catalogue are.

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
export function nodeTypesOf(family) {
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
            name, suffix, family: family.name, mayKeepOutputs: family.mayKeepOutputs === true, inputs: block(family.inputs),
            outputs: block(family.outputs), workspace: block(family.workspace) };
    });
}

// The value of a type from the numbers of its lanes, and back.
export function shaped(numbers, type) {
    if (type === "TQS") return { t: numbers.slice(0, 4), q: numbers.slice(4, 8), s: numbers.slice(8) };
    return numbers.length === 1 ? numbers[0] : numbers;
}
export const flat = (value) =>
    [value].flatMap((part) =>
        typeof part === "object" ? ("t" in part ? [part.t, part.q, part.s] : [...part]).flat() : [part]);

function neutral(type) {
    if (type === "String") return "";
    const zeros = valueTypes[type].lanes.map(() => 0);
    if (type === "Quaternion") return [0, 0, 0, 1];
    if (type === "Matrix4x4") return zeros.map((_, i) => (i % 5 === 0 ? 1 : 0));
    if (type === "TQS") return { t: [0, 0, 0, 0], q: [0, 0, 0, 1], s: [1, 1, 1, 1] };
    return shaped(zeros, type);
}

// One number stands for all lanes.
export function standard({ type, default: value }) {
    const { lanes } = valueTypes[type];
    return typeof value === "number" && lanes.length > 1 ? lanes.map(() => value) : value ?? neutral(type);
}

// The numbers of a value, a lane each. Throws what is wrong in words.
export function lanesOf(type, value) {
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
