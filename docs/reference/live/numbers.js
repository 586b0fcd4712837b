// Numbers as people write and read them: NaN, infinities and -0 as such, multiples of pi, bits in hexadecimal.

const words = { nan: NaN, inf: Infinity, infinity: Infinity };

export const isReal = (type) => !['Bool', 'UInt8', 'Int32', 'UInt32', 'String'].includes(type);

// The least of 1, 2 and 5 times a power of ten that is not below the value.
export function niceNumber(value) {
  const decade = 10 ** Math.floor(Math.log10(value));
  return [1, 2, 5, 10].map((factor) => factor * decade).find((each) => each >= value * (1 - 1e-9));
}

// Of the bits that 0x begins, most significant first.
function ofBits(digits, isDouble) {
  const view = new DataView(new ArrayBuffer(8));
  if (digits.length > (isDouble ? 16 : 8)) return null;
  view.setBigUint64(0, BigInt('0x' + digits));
  return isDouble ? view.getFloat64(0) : view.getFloat32(4);
}

// The number of a lane of the type, or null when the text is none. whole: the ends of an integer type.
export function parseNumber(text, type, whole) {
  const plain = text
    .trim()
    .toLowerCase()
    .replace(/^\u2212/, '-');
  const bits = plain.match(/^0x([\da-f]+)$/);
  if (bits && !whole) return ofBits(bits[1], type === 'Double');
  const word = plain.match(/^([+-]?)(nan|inf|infinity)$/);
  if (word && !whole) return (word[1] === '-' ? -1 : 1) * words[word[2]];
  const turns = plain.match(/^([+-]?)(\d*\.?\d*)\s*\*?\s*(?:pi|\u03c0)(?:\s*\/\s*(\d+\.?\d*))?$/);
  if (turns && !whole) return ((turns[1] === '-' ? -1 : 1) * Number(turns[2] || 1) * Math.PI) / Number(turns[3] || 1);
  if (plain === '' || !/^(0x[\da-f]+|[+-]?(\d+\.?\d*|\.\d+)(e[+-]?\d+)?)$/.test(plain)) return null;
  const number = Number(plain);
  if (whole && !(Number.isInteger(number) && whole[0] <= number && number <= whole[1])) return null;
  return number;
}

// The fewest digits that read back as the same Float; halfway between two of them the even one.
function shortestSingle(value) {
  const isSame = (text) => Math.fround(Number(text)) === value;
  const count = [0, 1, 2, 3, 4, 5, 6, 7].find((digits) => isSame(value.toExponential(digits))) ?? 8;
  const [exact, exponent] = value.toExponential(100).split('e'),
    end = exact.indexOf('.') + 1 + count;
  const below = exact.slice(0, end).replace(/\.$/, '');
  const isTie = /^50*$/.test(exact.slice(end)) && /[02468]$/.test(below) && isSame(below + 'e' + exponent);
  return isTie ? below + 'e' + exponent : value.toExponential(count);
}

// The fewest digits that read back as the same number, plain where that is not longer, as the command has them.
export function formatNumber(value, type) {
  if (Number.isNaN(value)) return 'nan';
  if (value === 0) return Object.is(value, -0) ? '-0' : '0';
  if (!Number.isFinite(value)) return value < 0 ? '-inf' : 'inf';
  if (!isReal(type)) return String(value);
  const shortest = type === 'Double' ? value.toExponential() : shortestSingle(value);
  const [, sign, lead, rest = '', exponent] = shortest.match(/^(-?)(\d)(?:\.(\d+))?e(.*)$/);
  const digits = (lead + rest).replace(/0+$/, ''),
    power = Number(exponent);
  const scientific =
    `${digits[0]}${digits.length > 1 ? '.' + digits.slice(1) : ''}e${power < 0 ? '-' : '+'}` +
    String(Math.abs(power)).padStart(2, '0');
  let plain = '0.' + '0'.repeat(Math.max(0, -power - 1)) + digits;
  if (power >= digits.length - 1) plain = power < 22 ? BigInt(Math.abs(value)).toString() : '0'.repeat(power + 1);
  else if (power >= 0) plain = digits.slice(0, power + 1) + '.' + digits.slice(power + 1);
  return sign + (plain.length <= scientific.length ? plain : scientific);
}
