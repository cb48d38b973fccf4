'use strict';
// The page as a whole: what the session was, what was found, and how the panes know of each other.

const ACCOUNT = [
  ['lent', 'arguments lent'], ['lentAltered', 'altered', Mark.Altered], ['results', 'results given'],
  ['failures', 'calls refused'], ['allocated', 'with memory'], ['freed', 'of it freed'], ['leaked', 'leaked', Mark.Leaked],
  ['freedTwice', 'freed twice', Mark.FreedTwice], ['foreign', 'foreign', Mark.Foreign], ['unfreeable', 'unfreeable', Mark.Fault]];

// The innermost call that never came back, as a program that died leaves it.
function lastOpen(calls) {
  for (let i = calls.count - 1; i >= 0; --i) if (Number.isNaN(calls.end[i])) return i;
  return -1;
}

function showVerdict({ head, close, calls }, findings) {
  const addIns = head.addIns ?? [];
  document.title = `${addIns.join(', ')} – excelhost report`;
  document.getElementById('title').textContent = addIns.join(', ');
  const verdict = document.getElementById('verdict');
  const faults = findings.filter(finding => finding.isFault).length;
  const tell = (kind, text) => { verdict.className = kind; verdict.textContent = text; };
  if (close === null) tell('bad', lastOpen(calls) < 0 ? 'The program ended before its time' : 'The add-in ended the program');
  else if (close.ended) tell('bad', close.ended);
  else if (faults > 0) tell('bad', faults === 1 ? '1 fault' : `${countText(faults)} faults`);
  else if (findings.length > 0) tell('warn', 'The account is balanced, with a word');
  else tell('good', 'The account is balanced');
}

function showFindings(findings, calls) {
  const list = document.querySelector('#findings ul');
  for (const { text, isFault, count, mark } of findings) {
    const item = element('li', isFault ? '' : 'word-only');
    item.append(element('span', '', count > 1 ? `${text} (${countText(count)} times)` : text));
    if (mark >= 0) {
      const button = element('button', '', 'show');
      button.type = 'button';
      button.onclick = () => { calls.select(mark); calls.box.focus(); };
      item.append(button);
    }
    list.append(item);
  }
  document.getElementById('findings').hidden = findings.length === 0;
}

function showAccount(account, onMarks) {
  const box = document.getElementById('account');
  for (const [key, label, mark] of ACCOUNT) {
    const number = account[key] ?? 0;
    const bad = mark !== undefined && number > 0;
    const tile = element(bad ? 'button' : 'div', bad ? 'tile bad' : 'tile');
    if (bad) { tile.type = 'button'; tile.onclick = onMarks; tile.title = 'show the calls'; }
    tile.dataset.key = key;
    tile.append(element('b', '', countText(number)), element('span', '', label));
    box.append(tile);
  }
  box.hidden = account.lent === undefined;
}

// [name, calls, time in all, the longest], of the whole session where the journal has it, else of what is there.
function functionsOf({ close, calls, texts, duration }) {
  if (close?.functions) return close.functions.map(([name, count, all, longest]) => [name, count, all / 10, longest / 10]);
  const rows = new Map();
  for (let i = 0; i < calls.count; ++i) {
    const took = (Number.isNaN(calls.end[i]) ? duration : calls.end[i]) - calls.start[i];
    const row = rows.get(calls.name[i]) ?? [texts[calls.name[i]], 0, 0, 0];
    rows.set(calls.name[i], [row[0], row[1] + 1, row[2] + took, Math.max(row[3], took)]);
  }
  return [...rows.values()];
}

function showFunctions(rows, onChoice) {
  const body = document.querySelector('#functions tbody');
  const select = document.getElementById('function');
  rows.sort((a, b) => b[2] - a[2]);
  for (const [name, count, all, longest] of rows) {
    const row = element('tr');
    const button = element('button', '', name);
    button.type = 'button';
    button.onclick = () => onChoice(select.value === name ? '' : name);
    const first = element('td');
    first.append(button);
    row.append(first, element('td', '', countText(count)), element('td', '', timeText(all)), element('td', '', timeText(longest)));
    row.dataset.name = name;
    body.append(row);
  }
  for (const name of rows.map(row => row[0]).sort()) select.append(new Option(name, name));
}

function start() {
  const journal = readJournal(document.getElementById('journal').textContent);
  const { calls, texts, close } = journal;
  const died = { text: journal.words, isFault: true, count: 1, call: lastOpen(calls) };
  const findings = (close?.findings ?? (journal.words === null ? [] : [died])).sort((a, b) => b.isFault - a.isFault);
  const names = new Map();
  for (let i = 0; i < calls.count; ++i) names.set(texts[calls.name[i]], calls.name[i]);

  const [select, search, marked, chips, fold] = ['function', 'search', 'marked', 'chips', 'fold'].map(id => document.getElementById(id));
  let view = null, sheet = null;

  const chip = (text, undo) => {
    const button = element('button', 'chip', text + ' ✕');
    button.type = 'button';
    button.onclick = undo;
    return button;
  };
  const set = change => view.set(change);
  const showFilter = ({ name, cell, from, to, marked: onlyMarked }) => {
    select.value = name < 0 ? '' : texts[name];
    marked.checked = onlyMarked;
    document.querySelectorAll('#functions tr').forEach(row => row.classList.toggle('chosen', name >= 0 && row.dataset.name === texts[name]));
    chips.replaceChildren();
    if (cell !== null) chips.append(chip('cell ' + cellName(cell[1], cell[2]), () => set({ cell: null })));
    if (from > 0 || to < journal.duration) chips.append(chip('zoomed', () => set({ from: 0, to: journal.duration })));
  };
  const showAll = () => {
    search.value = '';
    set({ name: -1, cell: null, marked: false, search: '', from: 0, to: journal.duration });
  };
  const choose = name => set({ name: name === '' ? -1 : names.get(name) ?? -2 });

  sheet = new SheetView(journal, (index, row, column) => {
    set({ cell: [index, row, column] });
    view.select(view.rows.length > 0 ? view.rows[0] : -1);
  });
  view = new CallsView(journal, (index, row, column, isAsked) => {
    if (journal.sheets[index] === undefined) return;
    sheet.show(index, row, column);
    if (isAsked) sheet.box.focus();
  }, showFilter);
  showVerdict(journal, findings);
  showFindings(findings.map(finding => ({ ...finding, mark: finding.call === undefined ? -1 : journal.indexOf(finding.call) })), view);
  showAccount(close?.account ?? {}, () => set({ marked: true }));
  showFunctions(functionsOf(journal), choose);
  const all = close?.calls ?? calls.count;
  const word = document.getElementById('calls-word');
  word.hidden = all <= journal.inOrder;
  word.textContent = `A report has room for the first ${countText(journal.inOrder)} of these ${countText(all)} calls, and of the others for those with a mark. `
    + 'Functions and account count them all.';

  select.onchange = () => choose(select.value);
  search.oninput = () => set({ search: search.value.trim().toLowerCase() });
  marked.onchange = () => set({ marked: marked.checked });
  fold.onclick = () => {
    const folds = fold.textContent === 'fold';
    view.foldAll(folds);
    fold.textContent = folds ? 'unfold' : 'fold';
  };
  document.addEventListener('keydown', event => {
    if (event.key === 'Escape') showAll();
    else if (event.target.matches('input[type=search], select') || event.ctrlKey || event.metaKey || event.altKey) return;
    else if (event.key === '/') search.focus();
    else if (event.key === 'n' || event.key === 'N') view.nextMark();
    else return;
    event.preventDefault();
  });
  // What a reader comes for first.
  if (close === null) view.select(lastOpen(calls));
  else if (findings[0]?.isFault && findings[0].call !== undefined) view.select(journal.indexOf(findings[0].call));
  document.documentElement.dataset.ready = 'true';
}

document.addEventListener('DOMContentLoaded', start);
