'use strict';
// The journal of a session, which stands at the end of the page: a line a step, each an array in JSON, without its
// brackets, whose first element says what it is. Texts are given once and by their number from then on. Times are
// counted from one step to the next, in tenths of a microsecond, and cells from one to the next in rows and columns. A
// program that died has left the lines until then, the last one perhaps not whole.

const Step = { Callback: 0, Function: 1, Procedure: 2, End: 3, Thread: 4, Head: 5, Marks: 6, Sheet: 7, Fields: 8,
  Values: 9, Close: 10, Apart: 11, Words: 13 };
const Mark = { Leaked: 1, FreedTwice: 2, Foreign: 4, Altered: 8, Fault: 16, Word: 32 };
const MARK_WORDS = [[Mark.Leaked, 'leaked'], [Mark.FreedTwice, 'freed twice'], [Mark.Foreign, 'foreign'],
  [Mark.Altered, 'altered while lent'], [Mark.Fault, 'fault'], [Mark.Word, 'note']];

function parseLines(source) {
  const lines = source.split('\n').filter(line => line !== '');
  const whole = list => JSON.parse('[' + list.map(line => '[' + line + ']').join(',') + ']');
  try {
    return whole(lines);
  } catch {
    return lines.flatMap(line => {
      try {
        return whole([line]);
      } catch {
        return [];
      }
    });
  }
}

// Calls in columns, in the order in which they began. An index is -1 where there is none.
function columns(length) {
  const numbers = () => new Int32Array(length).fill(-1);
  return { count: 0, number: numbers(), kind: new Uint8Array(length), marks: new Uint8Array(length), name: numbers(),
    operands: numbers(), result: numbers(), note: numbers(), code: new Int32Array(length), parent: numbers(),
    depth: new Uint8Array(length), sheet: numbers(), row: numbers(), column: numbers(), thread: new Int32Array(length),
    start: new Float64Array(length), end: new Float64Array(length).fill(NaN), children: new Int32Array(length) };
}

function readJournal(source) {
  const lines = parseLines(source);
  const calls = columns(lines.length);
  const texts = [];
  const sheets = [];
  const open = new Map([[0, []]]);  // by thread, the innermost call last
  const apart = new Map();          // indices of calls that are told apart, by number
  let head = {}, close = null, words = null, thread = 0, now = 0, sheet = null, inOrder = 0;
  const indexOf = number => number < inOrder ? number : apart.get(number) ?? -1;
  const text = slot => {
    if (typeof slot === 'string') return texts.push(slot) - 1;
    return typeof slot === 'number' ? slot : -1;
  };
  const last = { row: 0, column: 0, id: 1 };
  const place = (i, rows, columns, id) => {
    if (rows === undefined) return;
    calls.row[i] = last.row += rows;
    calls.column[i] = last.column += columns;
    calls.sheet[i] = (last.id = id ?? last.id) - 1;
  };
  const end = (i, result, code, note, marks) => {
    calls.result[i] = text(result);
    calls.code[i] = code ?? 0;
    calls.note[i] = text(note);
    calls.marks[i] |= marks ?? 0;
  };
  const begin = (kind, [, name, operands, , ...cell]) => {
    const i = calls.count++;
    const stack = open.get(thread);
    calls.number[i] = inOrder++;
    calls.kind[i] = kind;
    calls.name[i] = text(name);
    calls.operands[i] = text(operands);
    calls.thread[i] = thread;
    calls.start[i] = now;
    place(i, ...cell);
    if (stack.length > 0) {
      const parent = stack[stack.length - 1];
      calls.parent[i] = parent;
      calls.depth[i] = calls.depth[parent] + 1;
      calls.children[parent]++;
      if (calls.sheet[i] < 0 && calls.sheet[parent] >= 0) {
        for (const column of [calls.sheet, calls.row, calls.column]) column[i] = column[parent];
      }
    }
    stack.push(i);
  };
  for (const line of lines) {
    switch (line[0]) {
      case Step.Callback: case Step.Function: case Step.Procedure:
        now += line[3] / 10;
        begin(line[0], line);
        break;
      case Step.End: {
        now += line[1] / 10;
        const i = open.get(thread).pop();
        calls.end[i] = now;
        end(i, line[2], line[3], line[4], line[5]);
        break;
      }
      case Step.Thread:
        thread = line[1];
        if (!open.has(thread)) open.set(thread, []);
        break;
      case Step.Apart: {
        const [, number, kind, name, operands, start, took, result, code, note, marks, ...cell] = line;
        const i = calls.count++;
        apart.set(number, i);
        calls.number[i] = number;
        calls.kind[i] = kind;
        calls.name[i] = text(name);
        calls.operands[i] = text(operands);
        calls.start[i] = start / 10;
        calls.end[i] = (start + took) / 10;
        end(i, result, code, note, marks);
        place(i, ...cell);
        break;
      }
      case Step.Marks: {
        let number = 0;
        for (const delta of line.slice(2)) {
          number += delta;
          const i = indexOf(number);
          if (i >= 0) calls.marks[i] |= line[1];
        }
        break;
      }
      case Step.Words: words = line[1]; break;
      case Step.Head: head = line[1]; break;
      case Step.Sheet: {
        const [, index, name, rows, cols] = line;
        sheet = sheets[index] ??= { name, rows, columns: cols, fields: [], values: [] };
        break;
      }
      case Step.Fields: sheet.fields[line[1]] = line.slice(2); break;
      case Step.Values: {
        const values = sheet.values[line[1]] ??= [];
        for (let k = 2; k < line.length; k += 2) values[line[k]] = line[k + 1];
        break;
      }
      case Step.Close: close = line[1]; break;
    }
  }
  const latest = calls.end.subarray(0, calls.count).reduce((a, b) => b > a ? b : a, 1e-3);
  return { head, close, words, calls, texts, sheets, duration: Math.max(now, latest), threads: open.size, inOrder, indexOf };
}

// The order in which calls are shown: nested ones under the call that they are in, whatever other threads do.
function shownOrder({ calls, threads }) {
  const order = Int32Array.from({ length: calls.count }, (_, i) => i);
  if (threads === 1) return order;
  const root = new Int32Array(calls.count);
  for (let i = 0; i < calls.count; ++i) root[i] = calls.parent[i] < 0 ? i : root[calls.parent[i]];
  return order.sort((a, b) => root[a] - root[b] || a - b);
}

const timeText = us => us < 0.05 ? '0 µs' : us < 10 ? us.toFixed(1) + ' µs' : us < 1000 ? us.toFixed(0) + ' µs'
  : us < 1e6 ? (us / 1000).toPrecision(3) + ' ms' : (us / 1e6).toPrecision(3) + ' s';
const countText = n => n.toLocaleString('en');

function columnName(column) {
  let name = '';
  for (let n = column + 1; n > 0; n = Math.floor((n - 1) / 26)) name = String.fromCharCode(65 + (n - 1) % 26) + name;
  return name;
}
const cellName = (row, column) => columnName(column) + (row + 1);

function element(tag, className, text) {
  const node = document.createElement(tag);
  if (className) node.className = className;
  if (text !== undefined) node.textContent = text;
  return node;
}
