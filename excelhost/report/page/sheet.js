'use strict';
// The calculated sheets. Only the cells in sight are in the document.

class SheetView {
  static rowHeight = 24;
  static indexWidth = 52;

  // `onOpen(sheet, row, column)` when a cell is clicked or Enter is pressed on it.
  constructor(journal, onOpen) {
    this.journal = journal;
    this.onOpen = onOpen;
    this.box = document.getElementById('grid');
    this.canvas = this.box.querySelector('.canvas');
    this.index = 0;
    this.row = 0;
    this.column = 0;
    this.noteCalls();
    const tabs = document.querySelector('.tabs');
    journal.sheets.forEach((sheet, index) => {
      const tab = element('button', '', sheet.name);
      tab.type = 'button';
      tab.setAttribute('role', 'tab');
      tab.onclick = () => this.show(index);
      tabs.append(tab);
    });
    this.box.addEventListener('scroll', () => this.render(), { passive: true });
    this.box.addEventListener('keydown', event => this.key(event));
    this.box.addEventListener('click', event => this.click(event));
    new ResizeObserver(() => this.render()).observe(this.box);
    document.getElementById('sheet').hidden = journal.sheets.length === 0;
    if (journal.sheets.length > 0) this.show(0);
  }

  // Which cells called an add-in, and which of their calls have a mark.
  noteCalls() {
    const { calls } = this.journal;
    this.called = this.journal.sheets.map(() => new Map());
    for (let i = 0; i < calls.count; ++i) {
      const cells = this.called[calls.sheet[i]];
      if (cells === undefined) continue;
      const key = calls.row[i] * 16384 + calls.column[i];
      cells.set(key, (cells.get(key) ?? 0) | calls.marks[i]);
    }
  }

  get sheet() { return this.journal.sheets[this.index]; }

  show(index, row = 0, column = 0) {
    if (index === this.index && this.left !== undefined) return this.select(row, column);
    this.index = index;
    document.querySelectorAll('.tabs button').forEach((tab, i) => tab.setAttribute('aria-selected', i === index));
    const { sheet } = this;
    const paint = document.createElement('canvas').getContext('2d');
    paint.font = getComputedStyle(this.box).font;
    this.left = [SheetView.indexWidth];
    for (let c = 0; c < sheet.columns; ++c) {
      let widest = 40;
      for (let r = 0; r < Math.min(sheet.fields.length, 200); ++r) {
        widest = Math.max(widest, paint.measureText(this.text(r, c).slice(0, 100)).width);
      }
      this.left.push(this.left[c] + Math.min(Math.ceil(widest) + 22, 220));
    }
    this.canvas.style.width = this.left.at(-1) + 'px';
    this.canvas.style.height = (sheet.fields.length + 1) * SheetView.rowHeight + 'px';
    const missing = sheet.rows - sheet.fields.length;
    const word = document.getElementById('sheet-word');
    word.hidden = missing <= 0;
    word.textContent = `The first ${countText(sheet.fields.length)} of ${countText(sheet.rows)} rows are shown.`;
    this.select(row, column);
  }

  field(row, column) { return this.sheet.fields[row]?.[column] ?? ''; }
  isFormula(row, column) { const f = this.field(row, column); return f.length > 1 && f[0] === '=' && !/^="([^"]|"")*"$/.test(f); }
  text(row, column) {
    if (!this.isFormula(row, column)) return this.field(row, column);
    return this.sheet.values[row]?.[column] ?? '…';
  }

  select(row, column) {
    const { sheet } = this;
    this.row = Math.max(0, Math.min(row, sheet.fields.length - 1));
    this.column = Math.max(0, Math.min(column, sheet.columns - 1));
    document.getElementById('cell-name').textContent = cellName(this.row, this.column);
    document.getElementById('cell-formula').textContent = this.field(this.row, this.column);
    const top = this.row * SheetView.rowHeight, x = this.left[this.column], right = this.left[this.column + 1];
    const { box } = this;
    if (top < box.scrollTop) box.scrollTop = top;
    if (top + 2 * SheetView.rowHeight > box.scrollTop + box.clientHeight) box.scrollTop = top + 2 * SheetView.rowHeight - box.clientHeight;
    if (x - SheetView.indexWidth < box.scrollLeft) box.scrollLeft = x - SheetView.indexWidth;
    if (right > box.scrollLeft + box.clientWidth) box.scrollLeft = right - box.clientWidth;
    this.render();
  }

  click(event) {
    const cell = event.target.closest('.cell');
    if (cell === null) return;
    this.select(Number(cell.dataset.row), Number(cell.dataset.column));
    this.onOpen(this.index, this.row, this.column);
  }

  key(event) {
    const page = Math.max(1, Math.floor(this.box.clientHeight / SheetView.rowHeight) - 2);
    const moves = { ArrowUp: [-1, 0], ArrowDown: [1, 0], ArrowLeft: [0, -1], ArrowRight: [0, 1], PageUp: [-page, 0],
      PageDown: [page, 0], Home: [0, -Infinity], End: [0, Infinity] };
    if (event.key === 'Enter') this.onOpen(this.index, this.row, this.column);
    else if (moves[event.key] === undefined) return;
    else this.select(this.row + moves[event.key][0], this.column + moves[event.key][1]);
    event.preventDefault();
  }

  render() {
    const { sheet, box, left } = this;
    if (sheet === undefined) return;
    const height = SheetView.rowHeight;
    const first = Math.floor(box.scrollTop / height);
    const last = Math.min(sheet.fields.length, first + Math.ceil(box.clientHeight / height) + 1);
    let from = 0;
    while (from + 1 < sheet.columns && left[from + 1] < box.scrollLeft) ++from;
    let to = from;
    while (to < sheet.columns && left[to] < box.scrollLeft + box.clientWidth) ++to;
    const at = (node, x, y, width) => {
      node.style.cssText = `left:${x}px;top:${y}px;width:${width}px`;
      return node;
    };
    const cells = [], names = [], numbers = [];
    for (let c = from; c < to; ++c) names.push(at(element('div', '', columnName(c)), left[c], 0, left[c + 1] - left[c]));
    for (let r = first; r < last; ++r) {
      numbers.push(at(element('div', '', r + 1), 0, (r + 1) * height, SheetView.indexWidth));
      for (let c = from; c < to; ++c) cells.push(at(this.cell(r, c), left[c], (r + 1) * height, left[c + 1] - left[c]));
    }
    this.canvas.replaceChildren(...cells);
    const [head, side] = [box.querySelector('.columns'), box.querySelector('.rows')];
    head.style.transform = `translateY(${box.scrollTop}px)`;
    side.style.transform = `translateX(${box.scrollLeft}px)`;
    const corner = at(element('div'), box.scrollLeft, 0, SheetView.indexWidth);
    head.replaceChildren(...names, corner);
    side.replaceChildren(...numbers);
  }

  cell(row, column) {
    const text = this.text(row, column);
    const node = element('div', 'cell', text.length > 300 ? text.slice(0, 300) + '…' : text);
    const marks = this.called[this.index].get(row * 16384 + column);
    const computed = this.isFormula(row, column);
    node.setAttribute('role', 'gridcell');
    node.dataset.row = row;
    node.dataset.column = column;
    if (text !== '' && Number.isFinite(Number(text))) node.classList.add('number');
    if (/^#[A-Z0-9/]+[!?]?$/.test(text)) node.classList.add('error');
    if (computed) { node.classList.add('computed'); node.title = this.field(row, column); }
    if (marks !== undefined) node.classList.add('called');
    if (marks & ~Mark.Word) node.classList.add('marked');
    if (row === this.row && column === this.column) node.setAttribute('aria-selected', 'true');
    return node;
  }
}
