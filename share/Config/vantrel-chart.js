// Vantrel reports: the interactive chart of one data item. The series stand in the page as lists
// separated by commas, a blank where a bucket has no samples, and beside them the statistics of the
// whole period: the script draws and reads out, it computes no figure. A view is a stretch of
// buckets, [from, to), that need not begin or end at a bucket's edge. Comes after vantrel.js.
'use strict';

{
const figure = document.querySelector('.plot[data-chart]');
const state = figure.dataset.chart === 'state';
const entries = (id) => document.getElementById(id).textContent.split(',').map((entry) => entry.trim());
const numbers = (list) => Float64Array.from(list, (text) => (text ? Number(text) : NaN));
const labels = entries('labels');
const texts = ['series1', 'series2', 'series3'].map(entries);
const [first, second, third] = texts.map(numbers);
const unit = document.getElementById('unit')?.textContent.trim() ?? '';
const count = labels.length;
const leastSpan = Math.min(count, 6);

// ---- Numbers as text

// Units that take prefixes; numbers of all others get one only when they grow too long to read.
const prefixing = /^(bits?|b|bps|Hz|W|V|A|J|Wh|VA)$/.test(unit.split('/')[0].trim());
const binary = /^(B|bytes?)$/i.test(unit.split('/')[0].trim()) && !unit.startsWith('b/');

function prefixFor(greatest) {
  if (!greatest || (!prefixing && !binary && greatest < 1e5)) return { factor: 1, text: '' };
  const base = binary ? 1024 : 1000;
  let power = 0;
  while (power < 6 && greatest / base ** power >= base) ++power;
  while (prefixing && power > -3 && greatest / base ** power < 1) --power;
  const letter = ['n', 'µ', 'm', '', 'k', 'M', 'G', 'T', 'P', 'E'][power + 3];
  return { factor: base ** power, text: binary && letter ? `${letter.toUpperCase()}i` : letter };
}

// Four digits are enough to read and to compare.
const digits = (value) => value.toLocaleString('en', {
  maximumFractionDigits: Math.min(12, Math.max(0, 3 - Math.floor(Math.log10(Math.abs(value) || 1)))) });

function valueText(value) {
  if (Number.isNaN(value)) return 'no data';
  const prefix = prefixFor(Math.abs(value));
  const apart = prefix.text && !prefixing && !binary ? ' ' : '';
  return `${digits(value / prefix.factor)} ${prefix.text}${apart}${unit}`.trimEnd();
}
const rateText = (value) => `${value.toFixed(value > 99.9 && value < 100 ? 3 : 2)} %`;

// ---- What can be switched on and off

// A level of the whole period, a further line: null where the page says nothing of it.
function level(key, name, id) {
  const [value] = document.getElementById(id) ? numbers(entries(id)) : [NaN];
  return Number.isNaN(value) ? null
    : { key, name: name(value), level: value, data: new Float64Array(count).fill(value), at: () => valueText(value) };
}
function line(key, name, id) {
  const element = document.getElementById(id);
  if (!element) return null;
  const data = numbers(entries(id));
  return { key, name: name(element.dataset.period), data, at: (i) => valueText(data[i]) };
}

// `at` reads a bucket; `data` (or `low` and `high`) is what is drawn.
const series = (state ? [
  { key: 'success', name: 'All tests succeeded' },
  { key: 'failure', name: 'With failures' },
  { key: 'nodata', name: 'No data' },
  level('overall', (value) => `Overall ${rateText(value)}`, 'overall'),
] : [
  { key: 'mean', name: 'Mean', data: first, at: (i) => valueText(first[i]) },
  { key: 'band', name: 'Least to greatest single sample', low: second, high: third,
    at: (i) => `${valueText(second[i])} to ${valueText(third[i])}` },
  level('percentile', () => '95th percentile of interval means', 'percentile'),
  line('moving', (period) => `Moving \u00d7${period} of interval means`, 'moving'),
  level('average', () => 'Average of interval means', 'average'),
]).filter(Boolean);
const shown = (key) => series.find((one) => one.key === key).on;
for (const one of series) one.on = true;

// ---- The table of values

function fillTable() {
  const table = document.getElementById('values');
  const fold = table.closest('details');
  const whole = texts.map((list) => list.every((text) => Number.isInteger(Number(text))));
  const cell = (text, k) => (text ? Number(text).toLocaleString('en', { useGrouping: !state,
    minimumFractionDigits: whole[k] ? 0 : 2, maximumFractionDigits: whole[k] ? 0 : 6 - 4 * state }) : 'n/a');
  const fill = () => {
    if (table.tBodies[0].rows.length) return;
    labels.forEach((label, i) => {
      const row = make('tr');
      row.append(make('th', { scope: 'row' }, label));
      texts.forEach((list, k) => row.append(make('td', {}, cell(list[i], k))));
      if (state) row.dataset.failed = texts[1][i] || '0';
      table.tBodies[0].append(row);
    });
    makeSortable(table);
  };
  fold.querySelector('summary').append(` (${count} rows)`);
  fold.addEventListener('toggle', fill);
  fold.open = count <= 31;
  fold.hidden = false;
  if (unit && !state) table.append(make('caption', {}, `Values in ${unit}`));
}

// ---- Drawing

const svgElement = (kind, attributes = {}, ...children) => {
  const element = document.createElementNS('http://www.w3.org/2000/svg', kind);
  for (const [key, value] of Object.entries(attributes)) element.setAttribute(key, value);
  element.append(...children);
  return element;
};
const path = (name) => svgElement('path', { class: name });
const round = (value) => Math.round(value * 10) / 10;

const hatch = svgElement('pattern', { id: 'hatch', width: 6, height: 6, patternUnits: 'userSpaceOnUse', patternTransform: 'rotate(45)' },
  svgElement('rect', { class: 'nodata-ground', width: 6, height: 6 }), svgElement('rect', { class: 'nodata-line', width: 1.5, height: 6 }));
const paths = Object.fromEntries((state ? ['nodata', 'success', 'partial', 'failure', 'overall']
  : ['band', 'mean', 'moving', 'average', 'percentile']).map((name) => [name, path(name)]));
const grid = svgElement('g', { class: 'grid' });
const axis = svgElement('g', { class: 'axis' });
const cursorMark = path('cursor');
const selection = path('selection');
const inner = svgElement('svg', {}, ...Object.values(paths), cursorMark, selection); // clips
const overview = svgElement('svg', { class: 'overview' });
const windowMark = path('window');
const drawing = svgElement('svg', { 'aria-hidden': 'true' }, svgElement('defs', {}, hatch), grid, inner, axis, overview);

const view = { from: 0, to: count };
let cursor = -1; // the bucket that is read, none when negative
const size = { left: 58, right: 14, top: 10, width: 0, height: 0, overview: 26 };
const x = (bucket) => (bucket - view.from) / (view.to - view.from) * size.width;

// Buckets or, where they are narrower than a pixel, groups of them: calls draw(begin, end).
function eachColumn(from, to, width, draw) {
  const size = Math.max(1, Math.floor((to - from) / width));
  const last = Math.min(count, Math.ceil(to));
  for (let i = Math.floor(Math.max(0, from) / size) * size; i < last; i += size) draw(i, Math.min(i + size, count));
}
function least(data, begin, end) {
  let found = Infinity;
  for (let i = begin; i < end; ++i) if (data[i] < found) found = data[i];
  return found;
}
function greatest(data, begin, end) {
  let found = -Infinity;
  for (let i = begin; i < end; ++i) if (data[i] > found) found = data[i];
  return found;
}

// A line through the middles of the buckets; columns of many are spanned from least to greatest.
function linePath(data, y) {
  let text = '';
  let pen = false;
  eachColumn(view.from - 1, view.to + 1, size.width, (begin, end) => {
    const low = least(data, begin, end);
    if (low === Infinity) { pen = false; return; }
    const at = round(x((begin + end) / 2));
    const [a, b] = [round(y(greatest(data, begin, end))), round(y(low))];
    text += `${pen ? 'L' : 'M'}${at} ${a}${a === b ? (pen ? '' : 'h.1') : `V${b}`}`;
    pen = true;
  });
  return text;
}

function bandPath(low, high, y) {
  let text = '';
  let [above, below] = [[], []];
  const close = () => {
    if (above.length === 1) { // alone: as wide as its bucket
      const half = Math.max(1, (x(1) - x(0)) / 2 - .5);
      const shift = (point, by) => `${round(point[0] + by)} ${point[1]}`;
      text += `M${shift(above[0], -half)}L${shift(above[0], half)}L${shift(below[0], half)}L${shift(below[0], -half)}Z`;
    } else if (above.length) {
      text += `M${[...above, ...below.reverse()].map((point) => point.join(' ')).join('L')}Z`;
    }
    [above, below] = [[], []];
  };
  eachColumn(view.from - 1, view.to + 1, size.width, (begin, end) => {
    const bottom = least(low, begin, end);
    if (bottom === Infinity) return close();
    const at = round(x((begin + end) / 2));
    above.push([at, round(y(greatest(high, begin, end)))]);
    below.push([at, round(y(bottom))]);
  });
  close();
  return text;
}

// State buckets as columns: the worst of a group stands for it, so that no failure is lost.
function columnPaths(from, to, width, height, left) {
  const text = { nodata: '', success: '', partial: '', failure: '' };
  const scale = width / (to - from);
  eachColumn(from, to, width, (begin, end) => {
    const gap = scale > 8 ? 1 : 0;
    const [a, b] = [round(left + (begin - from) * scale), round(left + (end - from) * scale) - gap];
    const box = (top, bottom) => `M${a} ${round(top)}H${b}V${round(bottom)}H${a}Z`;
    const rate = least(third, begin, end);
    if (rate === Infinity) text.nodata += box(0, height);
    else if (rate === 100) text.success += box(0, height);
    else {
      const cut = Math.min(height, Math.max(3, height * (1 - rate / 100)));
      text.failure += box(0, cut);
      text.partial += box(cut, height);
    }
  });
  return text;
}

function roundStep(span, parts) {
  const rough = (span || 1) / parts;
  const power = 10 ** Math.floor(Math.log10(rough));
  return power * [1, 2, 5, 10].find((factor) => factor * power >= rough * .999999);
}

// The range of the values that are seen, with zero where it is near, cut at round values.
function valueScale() {
  const parts = Math.max(2, Math.floor(size.height / 55));
  if (state) return { low: 0, high: 100, step: parts < 4 ? 50 : 25, factor: 1, suffix: ' %' };
  const [begin, end] = [Math.floor(view.from), Math.ceil(view.to)];
  let [low, high] = [Infinity, -Infinity];
  for (const one of series.filter(({ on }) => on)) {
    low = Math.min(low, least(one.low ?? one.data, begin, end));
    high = Math.max(high, greatest(one.high ?? one.data, begin, end));
  }
  if (low === Infinity) [low, high] = [0, 1];
  if (low > 0 && low < high / 2) low = 0;
  if (high < 0 && high > low / 2) high = 0;
  if (low === high) [low, high] = low > 0 ? [0, 2 * low] : low < 0 ? [2 * low, 0] : [0, 1];
  const prefix = prefixFor(Math.max(Math.abs(low), Math.abs(high)));
  const step = roundStep((high - low) / prefix.factor, parts) * prefix.factor;
  return { low: Math.floor(low / step + 1e-9) * step, high: Math.ceil(high / step - 1e-9) * step, step,
    factor: prefix.factor, suffix: prefix.text && !prefixing && !binary ? ` ${prefix.text}` : '',
    unit: `${prefixing || binary ? prefix.text : ''}${unit}` };
}

// Minutes since midnight, where the labels end in a time of day.
const minutes = labels.map((label) => (/(\d\d):(\d\d)$/.exec(label) ?? []).slice(1).reduce((all, part) => all * 60 + Number(part), 0));
const timed = labels.every((label) => /\d\d:\d\d$/.test(label));
const dayOf = (i) => labels[i].replace(/[\s-]*\d\d:\d\d$/, '');
const bucketMinutes = minutes.reduce((best, minute, i) => (i && minute > minutes[i - 1] ? Math.min(best, minute - minutes[i - 1]) : best), 1440);

// Ticks at round times: [bucket, text, whether a day begins].
function timeTicks() {
  const [begin, end] = [Math.ceil(view.from - 1e-9), Math.min(count, Math.ceil(view.to))];
  const ticks = [];
  const room = (pixels) => (view.to - view.from) * pixels / size.width; // in buckets
  if (!timed) {
    const step = Math.max(1, Math.ceil(room(92)));
    for (let i = Math.ceil(begin / step) * step; i < end; i += step) ticks.push([i + .5, labels[i], false]);
    return ticks;
  }
  const wanted = room(62) * bucketMinutes;
  const step = [1, 5, 10, 15, 30, 60, 120, 180, 240, 360, 720].find((each) => each >= wanted) ?? 1440;
  const days = Math.ceil(wanted / 1440);
  let day = 0;
  for (let i = 1; i < end; ++i) {
    const midnight = dayOf(i) !== dayOf(i - 1);
    const due = midnight ? day++ % days === 0
      : step < 1440 && Math.floor(minutes[i] / step) !== Math.floor(minutes[i - 1] / step);
    if (due && i >= begin) ticks.push([i, midnight ? dayOf(i) : labels[i].slice(-5), midnight]);
  }
  if (!ticks.length) ticks.push([(view.from + view.to) / 2, labels[begin], false]); // too short a stretch
  return ticks;
}

function drawAxes(scale, y) {
  const lines = [];
  const words = [];
  const base = size.top + size.height;
  for (let k = 0; k <= Math.round((scale.high - scale.low) / scale.step); ++k) {
    const value = scale.low + k * scale.step;
    const at = size.top + round(y(value));
    lines.push(svgElement('path', { d: `M${size.left} ${at}h${size.width}` }));
    words.push(svgElement('text', { x: size.left - 7, y: at + 4, 'text-anchor': 'end' }, `${digits(value / scale.factor)}${value || state ? scale.suffix : ''}`));
  }
  let free = -Infinity; // where the last label ends
  for (const [bucket, text, strong] of timeTicks()) {
    const at = size.left + round(x(bucket));
    const half = text.length * 3.4 + 3;
    lines.push(svgElement('path', { d: `M${at} ${size.top}V${base + 4}`, class: strong ? 'day' : '' }));
    if (Math.max(at - half, size.left - 4) < free || at + half > size.left + size.width + size.right) continue;
    const middle = Math.max(at, size.left - 4 + half); // clear of the lowest value's label
    free = middle + half;
    words.push(svgElement('text', { x: middle, y: base + 17, 'text-anchor': 'middle', class: strong ? 'day' : '' }, text));
  }
  grid.replaceChildren(...lines);
  axis.replaceChildren(...words);
  unitMark.textContent = state ? 'Success rate by bucket, %' : scale.unit ? `Value, ${scale.unit}` : 'Value';
}

function drawOverview() {
  const [width, height] = [size.width, size.overview];
  const marks = [];
  if (state) {
    const text = columnPaths(0, count, width, height, 0);
    for (const [key, d] of Object.entries(text)) marks.push(svgElement('path', { class: key, d }));
  } else {
    const [low, high] = [Math.min(0, least(first, 0, count)), Math.max(0, greatest(first, 0, count))];
    const kept = { ...view };
    Object.assign(view, { from: 0, to: count });
    marks.push(svgElement('path', { class: 'mean', d: linePath(first, (value) => 2 + (high - value) / ((high - low) || 1) * (height - 4)) }));
    Object.assign(view, kept);
  }
  overview.replaceChildren(...marks, windowMark);
}

function drawCursor(y) {
  const seen = cursor >= 0 && cursor + 1 > view.from && cursor < view.to;
  const at = round(x(cursor + .5));
  const half = state ? Math.max(1, (x(1) - x(0)) / 2) : 0;
  let d = '';
  if (seen && state) d = `M${round(at - half)} 0h${round(2 * half)}v${size.height}h${round(-2 * half)}Z`;
  else if (seen) {
    d = `M${at} 0v${size.height}`;
    for (const { on, data } of series) {
      if (on && data && !Number.isNaN(data[cursor])) d += `M${at - 3.5} ${round(y(data[cursor]))}a3.5 3.5 0 1 0 7 0a3.5 3.5 0 1 0 -7 0`;
    }
  }
  cursorMark.setAttribute('d', d);
}

function paint() {
  if (size.width <= 0) return;
  const scale = valueScale();
  const y = (value) => (scale.high - value) / (scale.high - scale.low) * size.height;
  drawAxes(scale, y);
  const text = state ? columnPaths(view.from, view.to, size.width, size.height, 0) : {};
  if (state) {
    if (!shown('success')) text.success = '';
    if (!shown('nodata')) text.nodata = '';
    if (!shown('failure')) text.failure = text.partial = '';
  }
  for (const one of series) {
    if ('level' in one) text[one.key] = one.on ? `M0 ${round(y(one.level))}h${size.width}` : '';
    else if (one.data) text[one.key] = one.on ? linePath(one.data, y) : '';
    else if (one.low) text[one.key] = one.on ? bandPath(one.low, one.high, y) : '';
  }
  for (const [key, element] of Object.entries(paths)) element.setAttribute('d', text[key] ?? '');
  const [a, b] = [view.from, view.to].map((bucket) => round(bucket / count * size.width));
  windowMark.setAttribute('d', `M0 0h${size.width}v${size.overview}h${-size.width}ZM${a} .5V${size.overview - .5}H${b}V.5Z`);
  drawCursor(y);
}

// ---- What is read out: a bucket, or the stretch that is shown

const fact = (name, text) => {
  const element = make('span', {}, `${name} `);
  element.append(make('b', {}, text));
  return element;
};
const facts = (...pairs) => pairs.flatMap(([name, text]) => [fact(name, text), ' ']);

function bucketFacts(i) {
  const empty = Number.isNaN(third[i]);
  if (empty) return facts(['Samples', 'no data']);
  if (state) {
    return facts(['Success rate', rateText(third[i])], ['Success', String(first[i])], ['Failed', String(second[i])],
      ['Tests', String(first[i] + second[i])]);
  }
  return facts(...series.map(({ name, at }) => [name, at(i)]));
}

function stretchFacts(begin, end) {
  const empty = third.subarray(begin, end).filter(Number.isNaN).length;
  const gaps = ['No data', `${empty} of ${end - begin}`];
  if (empty === end - begin) return facts(gaps);
  if (state) return facts(['Lowest success rate', rateText(least(third, begin, end))], gaps);
  return facts(['Least single sample', valueText(least(second, begin, end))],
    ['Greatest single sample', valueText(greatest(third, begin, end))], gaps);
}

function tell() {
  const [begin, end] = [Math.floor(view.from + 1e-9), Math.min(count, Math.ceil(view.to - 1e-9))];
  const reading = cursor >= 0;
  const title = reading ? labels[cursor] : `${labels[begin]} to ${labels[end - 1]}`;
  readout.replaceChildren(make('strong', {}, title), ' ', ...(reading ? bucketFacts(cursor) : stretchFacts(begin, end)));
  range.textContent = `${labels[begin]} to ${labels[end - 1]}`;
  figure.dataset.shown = `${begin}-${end}`;
  const whole = view.to - view.from >= count;
  const disable = { out: whole, in: view.to - view.from <= leastSpan, back: view.from <= 0, on: view.to >= count, all: whole };
  for (const [key, off] of Object.entries(disable)) buttons[key].setAttribute('aria-disabled', off);
}

let due = false;
function refresh() {
  if (due) return;
  due = true;
  requestAnimationFrame(() => {
    due = false;
    paint();
    tell();
  });
}

// ---- Moving about

function show(from, to) {
  const span = Math.min(count, Math.max(leastSpan, to - from));
  const middle = (from + to) / 2;
  view.from = Math.min(count - span, Math.max(0, middle - span / 2));
  view.to = view.from + span;
  refresh();
}
const span = () => view.to - view.from;
const pan = (buckets) => show(view.from + buckets, view.to + buckets);
function zoom(factor, around = cursor >= view.from && cursor < view.to ? cursor + .5 : (view.from + view.to) / 2) {
  const wide = Math.min(count, Math.max(leastSpan, span() * factor));
  const from = around - (around - view.from) * wide / span();
  const clamped = Math.min(count - wide, Math.max(0, from));
  show(clamped, clamped + wide);
}
const all = () => show(0, count);

function read(bucket, byKeyboard) {
  readout.setAttribute('aria-live', byKeyboard ? 'polite' : 'off');
  cursor = Math.min(count - 1, Math.max(0, bucket));
  if (byKeyboard && cursor < view.from) pan(cursor - view.from);
  if (byKeyboard && cursor + 1 > view.to) pan(cursor + 1 - view.to);
  refresh();
}
function readNothing() {
  cursor = -1;
  refresh();
}

// ---- Controls

const button = (text, label, act) => {
  const element = make('button', { type: 'button', 'aria-label': label, title: label }, text);
  element.addEventListener('click', () => element.getAttribute('aria-disabled') !== 'true' && act());
  return element;
};
const buttons = {
  out: button('\u2212', 'Zoom out', () => zoom(2)),
  in: button('+', 'Zoom in', () => zoom(.5)),
  back: button('\u2190', 'Earlier', () => pan(-span() / 2)),
  on: button('\u2192', 'Later', () => pan(span() / 2)),
  all: button('All', 'All of the period', all),
};
const recent = Number(figure.dataset.window);
if (figure.dataset.scroll === 'true' && recent < count)
  buttons.recent = button(`Last ${recent}`, `Last ${recent} buckets`, () => show(count - recent, count));

// From failure to failure, and round again: each stretch of failed buckets counts once.
function readFailure() {
  const begins = Array.from(second.keys()).filter((i) => second[i] > 0 && !(second[i - 1] > 0));
  read(begins.find((i) => i > cursor) ?? begins[0], true);
}
if (state && second.some((failed) => failed > 0)) buttons.failure = button('Next failure', 'Next failure', readFailure);

const legend = make('div', { class: 'legend', role: 'group', 'aria-label': 'Series' });
for (const one of series) {
  const key = make('button', { type: 'button', 'aria-pressed': 'true' });
  key.append(make('span', { class: `swatch ${one.key}` }), one.name);
  key.addEventListener('click', () => {
    one.on = !one.on;
    key.setAttribute('aria-pressed', one.on);
    refresh();
  });
  legend.append(key);
}
const range = make('span', { class: 'range note' });
const tools = make('div', { class: 'tools', role: 'group', 'aria-label': 'Zoom' });
tools.append(...Object.values(buttons), range);
const readout = make('p', { class: 'readout', role: 'status', 'aria-live': 'off' });
const unitMark = make('p', { class: 'note unit' });
const screen = make('div', { class: 'view', tabindex: '0', role: 'application',
  'aria-label': 'Chart. Left and right arrow keys read the values, with Shift they move the stretch that is shown; plus and minus zoom, zero shows all.' });
const hint = make('figcaption', { class: 'note' });
hint.append(make('span', { class: 'fine' }, 'Drag over a stretch or turn the wheel to zoom, drag with Shift to move. Keyboard: arrows read values, + and \u2212 zoom, 0 shows all.'),
  make('span', { class: 'coarse' }, 'Tap to read a value, pinch to zoom, drag to move.'));

function bucketAt(event) {
  return view.from + (event.clientX - screen.getBoundingClientRect().left - size.left) / size.width * span();
}
const onOverview = (event) => event.clientY - screen.getBoundingClientRect().top > size.top + size.height + 22;

// One pointer reads, selects or pans; two fingers pinch: what is under a finger stays under it.
const pointers = new Map();
let drag = null;

function pinch() {
  const [a, b] = [...pointers.values()];
  const wide = (b.bucket - a.bucket) / (b.x - a.x) * size.width;
  if (!Number.isFinite(wide) || wide <= 0) return;
  const left = screen.getBoundingClientRect().left + size.left;
  const from = a.bucket - (a.x - left) / size.width * wide;
  show(from, from + wide);
}

screen.addEventListener('pointerdown', (event) => {
  if (event.button !== 0) return;
  try { screen.setPointerCapture(event.pointerId); } catch { /* the pointer is gone already */ }
  pointers.set(event.pointerId, { x: event.clientX, bucket: bucketAt(event) });
  const touch = event.pointerType === 'touch';
  const kind = onOverview(event) ? 'overview' : touch || event.shiftKey ? 'pan' : 'select';
  drag = pointers.size > 1 ? null : { kind, x: event.clientX, bucket: bucketAt(event), far: false };
  if (kind === 'overview') slide(event);
});

function slide(event) {
  const middle = (event.clientX - screen.getBoundingClientRect().left - size.left) / size.width * count;
  show(middle - span() / 2, middle + span() / 2);
}

screen.addEventListener('pointermove', (event) => {
  const pointer = pointers.get(event.pointerId);
  if (pointer) pointer.x = event.clientX;
  if (pointers.size === 2) return pinch();
  if (drag && Math.abs(event.clientX - drag.x) > 4) drag.far = true;
  if (drag?.kind === 'overview') return slide(event);
  if (drag?.kind === 'pan' && drag.far && span() < count) return pan(drag.bucket - bucketAt(event));
  if (drag?.kind === 'select' && drag.far) {
    const [a, b] = [drag.bucket, bucketAt(event)].map((bucket) => round(x(bucket)));
    selection.setAttribute('d', `M${a} 0H${b}V${size.height}H${a}Z`);
  }
  if (onOverview(event)) return;
  read(Math.floor(bucketAt(event)), false);
});

function letGo(event) {
  pointers.delete(event.pointerId);
  selection.setAttribute('d', '');
  const done = drag;
  drag = null;
  if (event.type !== 'pointerup' || !done || done.kind === 'overview') return;
  if (done.kind === 'select' && done.far) {
    const ends = [done.bucket, bucketAt(event)].sort((a, b) => a - b);
    show(Math.max(0, Math.floor(ends[0])), Math.min(count, Math.ceil(ends[1])));
  } else if (!done.far) {
    read(Math.floor(bucketAt(event)), false);
  }
}
screen.addEventListener('pointerup', letGo);
screen.addEventListener('pointercancel', letGo);
screen.addEventListener('pointerleave', (event) => { if (event.pointerType !== 'touch') readNothing(); });
screen.addEventListener('dblclick', all);

// The wheel zooms; but while the page is being scrolled, or when there is nothing left to zoom
// out of, it goes on scrolling the page.
let scrolled = -Infinity;
addEventListener('scroll', (event) => { scrolled = event.timeStamp; }, { passive: true });
screen.addEventListener('wheel', (event) => {
  const sideways = Math.abs(event.deltaX) > Math.abs(event.deltaY);
  const passes = !event.ctrlKey && event.timeStamp - scrolled < 250;
  if (passes || (span() >= count && (sideways || event.deltaY > 0))) return;
  event.preventDefault();
  const pixels = (sideways ? event.deltaX : event.deltaY) * (event.deltaMode === 1 ? 16 : 1);
  if (sideways) pan(pixels / size.width * span());
  else zoom(Math.exp(Math.max(-200, Math.min(200, pixels)) * .0025), bucketAt(event));
}, { passive: false });

screen.addEventListener('keydown', (event) => {
  if (event.ctrlKey || event.altKey || event.metaKey) return;
  const step = (by) => (event.shiftKey ? pan(by * Math.max(1, span() / 8))
    : read(cursor < 0 ? (by > 0 ? Math.ceil(view.from) : Math.ceil(view.to) - 1) : cursor + by, true));
  const keys = {
    ArrowLeft: () => step(-1), ArrowRight: () => step(1),
    PageUp: () => pan(-span()), PageDown: () => pan(span()),
    Home: () => read(0, true), End: () => read(count - 1, true),
    '+': () => zoom(.5), '=': () => zoom(.5), '-': () => zoom(2), '_': () => zoom(2),
    0: all, Escape: () => { all(); readNothing(); },
  };
  if (!keys[event.key]) return;
  event.preventDefault();
  keys[event.key]();
});
screen.addEventListener('blur', readNothing);

// ---- Start

function fit() {
  const [width, height] = [screen.clientWidth, screen.clientHeight];
  size.width = width - size.left - size.right;
  size.height = height - size.top - size.overview - 28;
  if (size.width <= 0 || size.height <= 0) return; // not laid out, as on paper
  drawing.setAttribute('width', width);
  drawing.setAttribute('height', height);
  const place = (element, top, tall) => {
    for (const [key, value] of Object.entries({ x: size.left, y: top, width: size.width, height: tall })) element.setAttribute(key, value);
  };
  place(inner, size.top, size.height);
  place(overview, height - size.overview, size.overview);
  drawOverview();
  paint();
  tell();
}

document.querySelector('.raw').hidden = true;
fillTable();
const silent = third.every(Number.isNaN);
if (silent) {
  figure.append(make('figcaption', {}, 'No data in this period'));
} else {
  screen.append(drawing);
  figure.append(tools, legend, readout, unitMark, screen, hint);
}
figure.hidden = false;
document.querySelector('.still').classList.add('paper');
if (!silent) {
  fit(); // before the page is seen, so that it does not jump
  new ResizeObserver(fit).observe(screen);
}
}
