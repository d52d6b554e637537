// Vantrel reports: search boxes, sortable tables, a jump list and the chart page.
// Every page is complete without this script. Text from the database is only ever handled as text.
'use strict';

const make = (name, attributes = {}, text = '') => {
  const element = document.createElement(name);
  for (const [key, value] of Object.entries(attributes)) element.setAttribute(key, value);
  element.textContent = text;
  return element;
};

// Search box: shows the entries of the list named by data-filter that hold every word typed.
// Enter opens the first of them. A list that is taken in at a glance needs none.
const glance = 8;
for (const box of document.querySelectorAll('input[data-filter]')) {
  const entries = [...document.getElementById(box.dataset.filter).children]
    .map((element) => ({ element, text: element.textContent.toLowerCase() }));
  if (entries.length <= glance) continue;
  const answer = box.parentElement.querySelector('output');
  const filter = () => {
    const words = box.value.toLowerCase().split(/\s+/).filter(Boolean);
    let shown = 0;
    for (const { element, text } of entries) {
      element.hidden = !words.every((word) => text.includes(word));
      shown += element.hidden ? 0 : 1;
    }
    answer.textContent = words.length ? `${shown} of ${entries.length}` : `${entries.length}`;
  };
  box.addEventListener('input', filter);
  box.addEventListener('keydown', (event) => {
    const first = entries.find(({ element }) => !element.hidden);
    if (event.key === 'Enter' && box.value && first) first.element.querySelector('a').click();
  });
  box.parentElement.hidden = false;
  filter();
}

// The links to the devices before and after this one; the first and the last lack one.
const steps = document.querySelector('.steps');
if (steps) {
  const step = (rel, folder, before, word, after) => {
    if (!folder) return;
    const link = make('a', { rel, href: `../${folder}/DEVREP.HTM`, 'aria-label': `${word} device` }, before);
    link.append(make('span', { class: 'wide-word' }, word), after);
    steps.append(link);
  };
  step('prev', steps.dataset.prev, '\u2190 ', 'Previous', '');
  step('next', steps.dataset.next, '', 'Next', ' \u2192');
  steps.hidden = !steps.childElementCount;
}

// A page with several sections: a jump list, and all tables at once for reading through and for paper.
const items = document.querySelectorAll('.item[id]');
if (items.length > 1) {
  const jump = make('nav', { class: 'jump', 'aria-label': 'On this page' });
  for (const item of items)
    jump.append(make('a', { href: `#${item.id}` }, item.querySelector('h2').textContent));

  const button = make('button', { type: 'button', 'aria-pressed': 'false' }, 'Open all tables');
  button.addEventListener('click', () => {
    const open = button.getAttribute('aria-pressed') !== 'true';
    button.setAttribute('aria-pressed', open);
    for (const fold of document.querySelectorAll('.item details')) fold.open = open;
  });

  const over = make('div', { class: 'over' });
  over.append(jump, button);
  document.querySelector('.items').before(over);
}

// Sortable tables: a click on a column's title sorts, another one turns the order round. The total
// stays last, and so do cells without a number. A first column of times sorts by row order.
function makeSortable(table) {
  const body = table.tBodies[0];
  const rows = [...body.rows];
  const last = rows.at(-1);
  const total = last && last.cells[0].querySelector('b') ? rows.pop() : null;
  const byTime = table.closest('[data-rows="times"]') !== null;
  const heads = [...table.tHead.rows[0].cells];
  const names = new Intl.Collator(undefined, { numeric: true, sensitivity: 'base' });

  const number = (row, column) => Number.parseFloat(row.cells[column].textContent.replace(/,/g, ''));
  const compare = (column, sign) => {
    if (column === 0 && byTime) return (a, b) => sign * (a.order - b.order);
    if (column === 0) return (a, b) => sign * names.compare(a.name, b.name);
    return (a, b) => {
      const [x, y] = [number(a.row, column), number(b.row, column)];
      if (Number.isNaN(x) || Number.isNaN(y)) return Number.isNaN(x) - Number.isNaN(y);
      return sign * (x - y) || a.order - b.order;
    };
  };
  const keyed = rows.map((row, order) => ({ row, order, name: row.cells[0].textContent }));

  heads.forEach((head, column) => {
    const button = make('button', { type: 'button' });
    button.append(...head.childNodes);
    head.append(button);
    button.addEventListener('click', () => {
      const down = head.getAttribute('aria-sort') === 'ascending';
      for (const other of heads) other.removeAttribute('aria-sort');
      head.setAttribute('aria-sort', down ? 'descending' : 'ascending');
      body.append(...keyed.sort(compare(column, down ? -1 : 1)).map(({ row }) => row));
      if (total) body.append(total);
    });
  });
}

// The chart page: its series stand in the page as lists separated by commas, a blank where a
// bucket has no samples.
const plot = document.querySelector('.plot[data-chart]');
if (plot) showChart();

function showChart() {
  const list = (id) => document.getElementById(id).textContent.split(',').map((entry) => entry.trim());
  const labels = list('labels');
  const texts = [list('series1'), list('series2'), list('series3')];
  const decimals = texts.map((text) => (text.every((entry) => Number.isInteger(Number(entry))) ? 0 : 2));
  const table = document.getElementById('values');
  labels.forEach((label, i) => {
    const row = table.tBodies[0].insertRow();
    row.append(make('th', { scope: 'row' }, label));
    texts.forEach((text, k) => row.append(make('td', {}, text[i] ? pretty(text[i], decimals[k]) : 'n/a')));
    if (plot.dataset.chart === 'state') row.dataset.failed = texts[1][i] || '0';
  });
  table.parentElement.hidden = false;
  document.querySelector('.raw').hidden = true;

  const values = texts.map((text) => text.map((entry) => (entry ? Number.parseFloat(entry) : NaN)));
  const state = plot.dataset.chart === 'state';
  draw(labels, state
    ? { line: values[2], name: 'success rate', unit: ' %', floor: 0, ceiling: 100 }
    : { line: values[0], low: values[1], high: values[2], name: 'mean', unit: '' });
}

// Two decimals, or three digits of what is below one; grouped by commas like the other tables. A
// column of numbers of which some are broken shows both decimals throughout.
function pretty(text, decimals = 0) {
  const value = Number.parseFloat(text);
  return value.toLocaleString('en', Math.abs(value) < 1
    ? { maximumSignificantDigits: 3 } : { minimumFractionDigits: decimals, maximumFractionDigits: 2 });
}

// A number for the axis: thousands and more by their prefix.
function short(value) {
  const power = Math.min(4, Math.floor(Math.log10(Math.abs(value) || 1) / 3 + 1e-9));
  return power < 1 ? pretty(value) : `${pretty(value / 1000 ** power)} ${' kMGT'[power]}`;
}

// Draws one line with gaps and, for counters, the band from the least to the greatest value.
function draw(labels, { line, low = line, high = line, name, unit, floor, ceiling }) {
  const known = [...low, ...high].filter((value) => !Number.isNaN(value));
  if (!known.length) {
    plot.append(make('figcaption', { class: 'note' }, 'No data in this period'));
    plot.hidden = false;
    return;
  }
  const [from, to] = [floor ?? Math.min(0, ...known), ceiling ?? Math.max(0, ...known)];
  const step = roundStep(to - from);
  const least = Math.floor(from / step) * step;
  const greatest = from === to ? step : Math.ceil(to / step) * step;
  plot.hidden = false;
  const width = Math.max(320, plot.clientWidth - 20);
  const height = width < 600 ? 220 : 320;
  const [left, right, top, bottom] = [64, 12, 12, 26];
  const x = (i) => left + ((i + .5) / labels.length) * (width - left - right);
  const y = (value) => top + ((greatest - value) / (greatest - least)) * (height - top - bottom);
  const shape = (kind, attributes, text = '') => {
    const element = document.createElementNS('http://www.w3.org/2000/svg', kind);
    for (const [key, value] of Object.entries(attributes)) element.setAttribute(key, value);
    element.textContent = text;
    return element;
  };

  const svg = shape('svg', { viewBox: `0 0 ${width} ${height}`, 'aria-hidden': 'true' });
  const lines = Math.round((greatest - least) / step);
  for (let k = 0; k <= lines; ++k) {
    const value = least + k * step;
    svg.append(
      shape('line', { class: 'grid', x1: left, x2: width - right, y1: y(value), y2: y(value) }),
      shape('text', { x: left - 6, y: y(value) + 4, 'text-anchor': 'end' }, short(value) + unit));
  }
  const ticks = Math.min(Math.floor(width / 150), labels.length);
  for (let t = 0; t < ticks; ++t) {
    const i = ticks === 1 ? 0 : Math.round((t * (labels.length - 1)) / (ticks - 1));
    const anchor = t === 0 ? 'start' : t === ticks - 1 ? 'end' : 'middle';
    svg.append(shape('text', { x: x(i), y: height - 6, 'text-anchor': ticks === 1 ? 'middle' : anchor }, labels[i]));
  }
  for (const run of runs(line)) {
    const points = (series, order) => order.map((i) => `${x(i).toFixed(1)},${y(series[i]).toFixed(1)}`).join(' ');
    if (high !== line)
      svg.append(shape('polygon', { class: 'band', points: `${points(high, run)} ${points(low, [...run].reverse())}` }));
    svg.append(run.length > 1
      ? shape('polyline', { class: 'line', points: points(line, run) })
      : shape('circle', { class: 'dot', cx: x(run[0]), cy: y(line[run[0]]), r: 2.5 }));
  }

  // The values under the pointer.
  const cursor = shape('line', { class: 'grid', y1: top, y2: height - bottom, visibility: 'hidden' });
  svg.append(cursor);
  const hint = 'Point at the drawing to read its values; all of them stand in the table below.';
  const caption = make('figcaption', { class: 'note' }, hint);
  svg.addEventListener('pointermove', (event) => {
    const box = svg.getBoundingClientRect();
    const at = ((event.clientX - box.left) / box.width * width - left) / (width - left - right);
    const i = Math.min(labels.length - 1, Math.max(0, Math.floor(at * labels.length)));
    const range = high === line ? '' : `, ${pretty(low[i])} to ${pretty(high[i])}`;
    for (const end of ['x1', 'x2']) cursor.setAttribute(end, x(i));
    cursor.setAttribute('visibility', 'visible');
    caption.textContent = Number.isNaN(line[i]) ? `${labels[i]}: no data`
      : `${labels[i]}: ${name} ${pretty(line[i])}${unit}${range}`;
  });
  svg.addEventListener('pointerleave', () => {
    cursor.setAttribute('visibility', 'hidden');
    caption.textContent = hint;
  });
  plot.append(svg, caption);
}

// A round step (1, 2 or 5 times a power of ten) that cuts a span into at most five parts.
function roundStep(span) {
  const rough = (span || 1) / 5;
  const power = 10 ** Math.floor(Math.log10(rough));
  return power * [1, 2, 5, 10].find((factor) => factor * power >= rough * .999999);
}

// The stretches of a series without a gap, as lists of indices.
function runs(series) {
  const found = [];
  series.forEach((value, i) => {
    if (Number.isNaN(value)) return;
    if (i === 0 || Number.isNaN(series[i - 1])) found.push([]);
    found.at(-1).push(i);
  });
  return found;
}

document.querySelectorAll('table.sortable').forEach(makeSortable);
