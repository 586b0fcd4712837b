// nodusmath in JavaScript: kernels called by name with plain values, graph files evaluated as the
// command nodus evaluates them, with the bits of every portable build.

/** A number for scalars, a boolean for Bool, a text for String, else an array with a number a lane. */
export type Value = number | boolean | string | number[] | ArrayLike<number> | Transform;

/** A TQS: translation, rotation (x, y, z, w) and scale, four lanes each. */
export interface Transform {
    t: number[];
    q: number[];
    s: number[];
}

export interface ValueType {
    size: number;
    alignment: number;
    /** The names of the lanes; one empty name for a scalar. */
    lanes: string[];
}

/** By name: Bool, UInt8, Int32, UInt32, Float, Double, Float2, ... TQS, String. */
export const valueTypes: Record<string, ValueType>;

export interface Port {
    name: string;
    type: string;
    /** "rad" where it is an angle. */
    unit?: string;
    default?: unknown;
    choices?: { value: number; name: string }[];
}

/** The ports of a block, where each begins, and where the last one ends. */
export interface Layout {
    ports: (Port & { offset: number })[];
    extent: number;
}

/** The packing rule: every port at the next multiple of its alignment, in their order. */
export function layout(ports: Port[]): Layout;

export interface NodeType {
    /** "Add_Float3"; its kernel is called NodusAdd_Float3_Solve. */
    name: string;
    /** "Float3"; empty when the family has no types. */
    suffix: string;
    family: string;
    /** Some inputs have no result: outputs are 0 then. */
    mayKeepOutputs: boolean;
    inputs: Layout;
    outputs: Layout;
    /** Without ports for most. */
    workspace: Layout;
}

/** Wrong input: each line says where and what would be right, in the words of the command nodus. */
export class NodusFault extends Error {
    readonly lines: string[];
}

export interface EvaluateOptions {
    /** "A:B", "A:B:STEP" or one frame. Without: a frame for each row of the table, or frame 0. */
    frames?: string | number;
    /** The text of a CSV table, for the graph's columns: frame N reads row N. */
    table?: string;
    /** Without: "csv". */
    format?: "csv" | "jsonl";
    /** What messages call the graph and the table. */
    name?: string;
    tableName?: string;
}

export interface Results {
    /** What `nodus eval` writes, byte for byte. */
    text: string;
    /** The lines "frame 12: text" of logging nodes. */
    log: string;
}

export interface PaintOptions {
    /** Without: 512 by 512 pixels. */
    width?: number;
    height?: number;
    /** The values that become black and white; without: 0 and 1. */
    black?: number;
    white?: number;
    frame?: number;
    /** What messages call the graph. */
    name?: string;
}

/** A node with inputs that stay as they are set, for many calls with little between them. */
export interface Node {
    readonly type: NodeType;
    /** Inputs begin with the catalogue's defaults. Throws NodusFault as `call` does. */
    set(input: string, value: Value): void;
    run(frame?: number): void;
    /** An output of the last run. */
    get(output: string): Value;
    /** All of them by name. */
    outputs(): Record<string, Value>;
    /** An output's bits in hexadecimal, a text for each lane; none for a String. */
    bits(output: string): string[];
}

/** Not for two calls at once, which JavaScript does not make. */
export interface Nodus {
    /** nodusmath.json as it stands: families with their documentation. */
    readonly catalogue: { module: string; families: Record<string, unknown>[] };
    readonly nodeTypes: NodeType[];
    /** By node type or by kernel. Throws NodusFault when there is none. */
    find(name: string): NodeType;

    /**
     * Calls a kernel. An input that is not given has the catalogue's default; outputs by name. Numbers
     * are rounded to their lane's type. Throws NodusFault: an unknown name, a value of another type.
     */
    call(name: string, inputs?: Record<string, Value>, options?: { frame?: number }): Record<string, Value>;

    /** A node in memory that it keeps for good: for as many as a program has, not one a call. */
    prepare(name: string): Node;

    /** Which numbers noise draws its tables from; for before its first call. Without: 1. */
    seed(number: number): void;

    /**
     * Evaluates a graph, as text or as the object that the text describes. Throws NodusFault with the
     * lines that `nodus eval` would print.
     */
    evaluate(graph: string | object, options?: EvaluateOptions): Promise<Results>;

    /**
     * Evaluates a graph with one output once a pixel, as `nodus eval --image` does. Gives a PNG file with
     * the same pixels. Throws NodusFault as `evaluate` does.
     */
    paint(graph: string | object, options?: PaintOptions): Promise<Uint8Array>;

    /** The report of `nodus digest --seed N`: the same on every processor. */
    digest(seed?: number): Promise<string>;

    /**
     * The WebAssembly exports, for blocks of one's own: kernels under their names, taking addresses of
     * blocks within `memory` at multiples of 16; `nodus_blocks()` is where there is room for them,
     * `nodus_blocksSize()` how much. A call takes no memory.
     */
    readonly exports: WebAssembly.Exports;
}

export interface LoadOptions {
    /** The folder with the .wasm files and nodusmath.json, its last slash included. Without: beside the
     * module. */
    base?: string | URL;
    /** What a page carries itself instead: the files' bytes and the catalogue. */
    kernels?: Uint8Array;
    graphs?: Uint8Array;
    catalogue?: object;
    /** Where the messages of logging kernels go; those of graphs come with their results. */
    log?: (text: string) => void;
}

export function load(options?: LoadOptions): Promise<Nodus>;

/** Graph files alone, for a worker that needs no kernels of its own. */
export class Graphs {
    constructor(source: Uint8Array | URL | string, catalogue: object);
    /** Ready to evaluate; else the first evaluation waits for that. */
    load(): Promise<void>;
    evaluate(graph: string | object, options?: EvaluateOptions): Promise<Results>;
    paint(graph: string | object, options?: PaintOptions): Promise<Uint8Array>;
    digest(seed?: number): Promise<string>;
}
