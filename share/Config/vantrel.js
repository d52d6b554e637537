// Vantrel reports: search boxes, sortable tables and a jump list.
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
  for (const item of items) {
    const link = make('a', { href: `#${item.id}` }, item.querySelector('h2').innerText);
    if (Number(item.dataset.failed) > 0) link.append(make('b', {}, ` ${item.dataset.failed} failed`));
    jump.append(link);
  }

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
  const sortBy = (head, column, down) => {
    for (const other of heads) other.removeAttribute('aria-sort');
    head.setAttribute('aria-sort', down ? 'descending' : 'ascending');
    body.append(...keyed.sort(compare(column, down ? -1 : 1)).map(({ row }) => row));
    if (total) body.append(total);
  };
  const keyed = rows.map((row, order) => ({ row, order, name: row.cells[0].textContent }));

  heads.forEach((head, column) => {
    const button = make('button', { type: 'button' });
    button.append(...head.childNodes);
    head.append(button);
    button.addEventListener('click', () => sortBy(head, column, head.getAttribute('aria-sort') === 'ascending'));
  });
  // Of devices, what is wrong comes first: the lowest rate.
  if (!byTime) sortBy(heads.at(-1), heads.length - 1, false);
}

document.querySelectorAll('table.sortable').forEach(makeSortable);
