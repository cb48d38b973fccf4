'use strict';
// The calls on their time line. Only the rows in sight are in the document.

class CallsView {
  static rowHeight = 26;
  static kinds = ['callback', 'function', 'procedure'];

  // `onCell(sheet, row, column, isAsked)` when a call of a cell is selected, and when the cell is asked for;
  // `onFilter(filter)` when it has changed.
  constructor(journal, onCell, onFilter) {
    this.journal = journal;
    this.onCell = onCell;
    this.onFilter = onFilter;
    this.order = shownOrder(journal);
    this.folded = new Uint8Array(journal.calls.count);
    this.filter = { name: -1, cell: null, marked: false, search: '', from: 0, to: journal.duration };
    this.selected = -1;
    this.box = document.getElementById('list');
    this.canvas = this.box.querySelector('.canvas');
    this.box.addEventListener('scroll', () => this.render(), { passive: true });
    this.box.addEventListener('keydown', event => this.key(event));
    this.box.addEventListener('click', event => this.click(event));
    new ResizeObserver(() => { this.render(); this.drawOverview(); }).observe(this.box);
    matchMedia('(prefers-color-scheme: dark)').addEventListener('change', () => this.drawOverview());
    this.listenToOverview();
    this.refilter();
  }

  text(index) { return index < 0 ? '' : this.journal.texts[index]; }
  took(i) { const { start, end } = this.journal.calls; return Number.isNaN(end[i]) ? this.journal.duration - start[i] : end[i] - start[i]; }
  isOpen(i) { return Number.isNaN(this.journal.calls.end[i]); }

  set(change) {
    Object.assign(this.filter, change);
    this.refilter();
    this.scrollToSelected();
    this.render();
    this.onFilter(this.filter);
  }
  get isFiltered() {
    const f = this.filter;
    return f.name >= 0 || f.cell !== null || f.marked || f.search !== '' || f.from > 0 || f.to < this.journal.duration;
  }

  matches(i) {
    const { calls, texts } = this.journal;
    const f = this.filter;
    if (f.name >= 0 && calls.name[i] !== f.name) return false;
    if (f.cell !== null && !(calls.sheet[i] === f.cell[0] && calls.row[i] === f.cell[1] && calls.column[i] === f.cell[2])) return false;
    if (f.marked && calls.marks[i] === 0 && !this.isOpen(i)) return false;
    if (calls.start[i] > f.to || calls.start[i] + this.took(i) < f.from) return false;
    if (f.search === '') return true;
    return [calls.name[i], calls.operands[i], calls.result[i], calls.note[i]]
      .some(t => t >= 0 && texts[t].toLowerCase().includes(f.search));
  }

  // What matches, with what it calls and, paler, what it is called from.
  refilter() {
    const { calls } = this.journal;
    const shown = new Uint8Array(calls.count);
    let matching = 0;
    for (const i of this.order) {
      const p = calls.parent[i];
      const matched = !this.isFiltered || this.matches(i);
      matching += matched;
      shown[i] = matched || (p >= 0 && shown[p] === 1 && !this.filter.marked) ? 1 : 0;
    }
    for (let k = this.order.length - 1; k >= 0; --k) {
      const i = this.order[k], p = calls.parent[i];
      if (shown[i] !== 0 && p >= 0 && shown[p] === 0) shown[p] = 2;
    }
    const hidden = new Uint8Array(calls.count);
    this.rows = this.order.filter(i => {
      const p = calls.parent[i];
      hidden[i] = p >= 0 && (hidden[p] !== 0 || this.folded[p] !== 0) ? 1 : 0;
      return shown[i] !== 0 && hidden[i] === 0;
    });
    this.shown = shown;
    const all = calls.count;
    document.getElementById('shown').textContent = this.isFiltered ? `${countText(matching)} of ${countText(all)} calls`
      : `${countText(all)} calls in ${timeText(this.journal.duration)}`;
    this.canvas.style.height = this.rows.length * CallsView.rowHeight + 'px';
    this.placeOf = null;
    this.render();
    this.drawOverview();
  }

  place(i) {
    this.placeOf ??= new Map(Array.from(this.rows, (call, place) => [call, place]));
    return this.placeOf.get(i) ?? -1;
  }

  select(i) {
    const { calls } = this.journal;
    let unfolded = false;
    for (let p = calls.parent[i]; i >= 0 && p >= 0; p = calls.parent[p]) {
      unfolded ||= this.folded[p] !== 0;
      this.folded[p] = 0;
    }
    if (unfolded) this.refilter();
    this.selected = i;
    showDetails(this, i);
    if (i >= 0) this.openCell(i, false);
    this.box.setAttribute('aria-activedescendant', 'call' + i);
    this.scrollToSelected();
    this.render();
  }

  scrollToSelected() {
    const place = this.place(this.selected);
    if (place >= 0) {
      const top = place * CallsView.rowHeight, { box } = this;
      if (top < box.scrollTop || top + CallsView.rowHeight > box.scrollTop + box.clientHeight) {
        box.scrollTop = Math.max(0, top - box.clientHeight / 3);
      }
    }
  }

  openCell(i, isAsked) {
    const { calls } = this.journal;
    if (calls.sheet[i] >= 0) this.onCell(calls.sheet[i], calls.row[i], calls.column[i], isAsked);
  }

  // The next call with a mark, or one that never came back, round the end.
  nextMark() {
    const { calls } = this.journal;
    const at = this.order.indexOf(this.selected);
    for (let k = 1; k <= this.order.length; ++k) {
      const i = this.order[(at + k) % this.order.length];
      if (calls.marks[i] !== 0 || this.isOpen(i)) { this.select(i); this.box.focus(); return; }
    }
  }

  fold(i, folded) {
    this.folded[i] = folded ? 1 : 0;
    this.refilter();
  }
  foldAll(folded) {
    this.folded.fill(folded ? 1 : 0);
    this.refilter();
  }

  click(event) {
    const row = event.target.closest('.call');
    if (row === null) return;
    const i = Number(row.dataset.call);
    if (event.target.classList.contains('fold')) this.fold(i, this.folded[i] === 0);
    else this.select(i);
  }

  key(event) {
    const page = Math.max(1, Math.floor(this.box.clientHeight / CallsView.rowHeight) - 1);
    const moves = { ArrowUp: -1, ArrowDown: 1, PageUp: -page, PageDown: page, Home: -Infinity, End: Infinity };
    const { calls } = this.journal;
    const i = this.selected;
    if (moves[event.key] !== undefined) {
      const place = Math.max(0, Math.min(this.rows.length - 1, Math.max(this.place(i), i < 0 ? -1 : 0) + moves[event.key]));
      if (this.rows.length > 0) this.select(this.rows[place]);
    } else if (event.key === 'ArrowLeft' && i >= 0) {
      if (calls.children[i] > 0 && this.folded[i] === 0) this.fold(i, true);
      else if (calls.parent[i] >= 0) this.select(calls.parent[i]);
    } else if (event.key === 'ArrowRight' && i >= 0 && this.folded[i] !== 0) {
      this.fold(i, false);
    } else if (event.key === 'Enter' && i >= 0) {
      this.openCell(i, true);
    } else {
      return;
    }
    event.preventDefault();
  }

  render() {
    const height = CallsView.rowHeight;
    const first = Math.max(0, Math.floor(this.box.scrollTop / height) - 2);
    const last = Math.min(this.rows.length, first + Math.ceil(this.box.clientHeight / height) + 4);
    const rows = [];
    for (let place = first; place < last; ++place) rows.push(this.row(this.rows[place], place));
    this.canvas.replaceChildren(...rows);
  }

  row(i, place) {
    const { calls } = this.journal;
    const node = element('div', 'call');
    node.id = 'call' + i;
    node.dataset.call = i;
    node.style.top = place * CallsView.rowHeight + 'px';
    node.setAttribute('role', 'treeitem');
    node.setAttribute('aria-level', calls.depth[i] + 1);
    if (i === this.selected) node.setAttribute('aria-selected', 'true');
    if (this.shown[i] === 2) node.classList.add('context');
    if (calls.marks[i] & ~Mark.Word || this.isOpen(i)) node.classList.add('marked');
    node.append(this.what(i), this.result(i), element('span', 'took', this.isOpen(i) ? '' : timeText(this.took(i))), this.lane(i));
    return node;
  }

  what(i) {
    const { calls } = this.journal;
    const node = element('span', 'what');
    node.style.paddingLeft = calls.depth[i] * 16 + 'px';
    const fold = element('span', 'fold', calls.children[i] === 0 ? '' : this.folded[i] !== 0 ? '▸' : '▾');
    const procedure = calls.kind[i] === Step.Procedure;
    node.append(fold, element('b', '', this.text(calls.name[i])),
      procedure ? element('i', '', ' of ' + this.text(calls.operands[i])) : '(' + this.text(calls.operands[i]) + ')');
    if (calls.kind[i] === Step.Function && calls.sheet[i] >= 0) {
      node.append(element('i', '', ' in ' + cellName(calls.row[i], calls.column[i])));
    }
    return node;
  }

  result(i) {
    const { calls } = this.journal;
    const node = element('span', 'result');
    if (this.isOpen(i)) node.append(element('span', 'mark', 'never returned'));
    for (const [mark, word] of MARK_WORDS) {
      if (calls.marks[i] & mark) node.append(element('span', mark === Mark.Word ? 'mark word-only' : 'mark', word));
    }
    const text = calls.code[i] !== 0 ? 'failed with code ' + calls.code[i] : this.text(calls.result[i]);
    if (calls.code[i] !== 0 || text.startsWith('#')) node.classList.add('error');
    node.append(text);
    return node;
  }

  lane(i) {
    const { calls } = this.journal;
    const { from, to } = this.filter;
    const bar = element('span', CallsView.kinds[calls.kind[i]]);
    const share = time => (time - from) / (to - from) * 100;
    bar.style.left = Math.min(share(calls.start[i]), 99.6) + '%';
    bar.style.width = this.took(i) / (to - from) * 100 + '%';
    const lane = element('span', 'lane');
    lane.append(bar);
    return lane;
  }

  // All calls by depth from left to right; marks are flags at the top.
  drawOverview() {
    const canvas = document.getElementById('overview');
    const { clientWidth: width, clientHeight: height } = canvas;
    if (width === 0) return;
    const ratio = window.devicePixelRatio || 1;
    canvas.width = width * ratio;
    canvas.height = height * ratio;
    const paint = canvas.getContext('2d');
    paint.scale(ratio, ratio);
    const style = getComputedStyle(document.documentElement);
    const colour = name => style.getPropertyValue(name).trim();
    const colours = [colour('--inner'), colour('--call'), colour('--procedure')];
    const { calls, duration } = this.journal;
    const level = (height - 14) / 4;
    const drawn = [0, 1, 2, 3].map(() => -1);  // how far each level is painted already
    for (let i = 0; i < calls.count; ++i) {
      const x = calls.start[i] / duration * width, right = x + Math.max(this.took(i) / duration * width, 1);
      const depth = Math.min(calls.depth[i], 3);
      if (right <= drawn[depth] + 0.5) continue;
      drawn[depth] = right;
      paint.globalAlpha = !this.isFiltered || this.shown[i] === 1 ? 1 : 0.25;
      paint.fillStyle = colours[calls.kind[i]];
      paint.fillRect(x, 12 + depth * level, right - x, level - 1);
    }
    paint.globalAlpha = 1;
    paint.fillStyle = colour('--bad');
    let flagged = -9;
    for (let i = 0; i < calls.count; ++i) {
      if (!(calls.marks[i] & ~Mark.Word) && !this.isOpen(i)) continue;
      const x = Math.round(calls.start[i] / duration * width);
      if (x < flagged + 2) continue;
      flagged = x;
      paint.fillRect(x, 1, 2, 10);
      paint.fillRect(x + 2, 1, 4, 4);
    }
    document.getElementById('axis-from').textContent = timeText(this.filter.from);
    document.getElementById('axis-to').textContent = timeText(this.filter.to);
    const zoom = document.getElementById('window');
    zoom.hidden = this.filter.from === 0 && this.filter.to === duration;
    zoom.style.left = this.filter.from / duration * 100 + '%';
    zoom.style.width = (this.filter.to - this.filter.from) / duration * 100 + '%';
  }

  listenToOverview() {
    const box = document.querySelector('.overview');
    const time = event => {
      const { left, width } = box.getBoundingClientRect();
      return Math.max(0, Math.min(1, (event.clientX - left) / width)) * this.journal.duration;
    };
    let began = null;
    box.addEventListener('pointerdown', event => { began = time(event); box.setPointerCapture(event.pointerId); });
    box.addEventListener('pointermove', event => {
      if (began === null) return;
      const [from, to] = [began, time(event)].sort((a, b) => a - b);
      if (to - from > this.journal.duration / 500) this.set({ from, to });
    });
    box.addEventListener('pointerup', event => {
      const still = Math.abs(time(event) - began) <= this.journal.duration / 500;
      began = null;
      if (still) this.set({ from: 0, to: this.journal.duration });
    });
  }
}

// Everything that is known of a call.
function showDetails(view, i) {
  const box = document.getElementById('details');
  box.hidden = i < 0;
  if (i < 0) return;
  const { calls, duration } = view.journal;
  const list = element('dl');
  const tell = (term, ...content) => {
    const definition = element('dd');
    definition.append(...content);
    list.append(element('dt', '', term), definition);
  };
  const link = (text, act) => {
    const button = element('button', 'link', text);
    button.type = 'button';
    button.onclick = act;
    return button;
  };
  const name = j => view.text(calls.name[j]);
  const node = element('h3', '', name(i));
  for (const [mark, word] of MARK_WORDS) {
    if (calls.marks[i] & mark) node.append(' ', element('span', mark === Mark.Word ? 'mark word-only' : 'mark', word));
  }
  if (calls.note[i] >= 0) tell('Found', view.text(calls.note[i]));
  else if (calls.marks[i] & Mark.Leaked) tell('Found', 'what this call gave never came back through xlFree');
  if (calls.kind[i] === Step.Procedure) tell('Add-in', view.text(calls.operands[i]));
  else tell('Operands', element('code', '', view.text(calls.operands[i]) || 'none'));
  if (view.isOpen(i)) tell('Result', 'none: the program ended in this call');
  else if (calls.code[i] !== 0) tell('Result', 'failed with code ' + calls.code[i]);
  else if (calls.result[i] >= 0) tell('Result', element('code', '', view.text(calls.result[i])));
  if (calls.sheet[i] >= 0) {
    tell('Cell', link(cellName(calls.row[i], calls.column[i]), () => view.openCell(i, true)));
  }
  let inner = 0;
  for (let j = i + 1; j < calls.count && calls.start[j] <= calls.start[i] + view.took(i); ++j) {
    if (calls.parent[j] === i) inner += view.took(j);
  }
  const own = calls.children[i] > 0 ? `, of it ${timeText(Math.max(0, view.took(i) - inner))} its own and the rest in ${countText(calls.children[i])} ${calls.children[i] === 1 ? 'call' : 'calls'} within` : '';
  tell('Time', `${timeText(view.took(i))}${own}; began at ${timeText(calls.start[i])} of ${timeText(duration)}`
    + (view.journal.threads > 1 ? `, on thread ${calls.thread[i] + 1}` : ''));
  if (calls.parent[i] >= 0) tell('Called from', link(name(calls.parent[i]), () => view.select(calls.parent[i])));
  tell('Number', countText(calls.number[i] + 1));
  box.replaceChildren(node, list);
}
